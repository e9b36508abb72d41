#pragma once

#include <QByteArray>
#include <QSet>
#include <QString>

#include <limits>

namespace trevane::ftp {

/// What was learnt of the names that a device takes, from those that it refused: so that a name that does not
/// fit is refused before anything is sent. Only a name that breaks one rule alone teaches anything, and a
/// name in a listing that breaks it takes it back.
class NameRules final {
 public:
  /// A new item of that name was refused for its name, although another new name was taken in its folder.
  void Refused(const QByteArray& name);
  /// An item has that name.
  void Seen(const QByteArray& name);
  /// Why the device will not take the name, a sentence without a full stop; empty where nothing is known
  /// against it.
  [[nodiscard]] QString Objection(const QByteArray& name) const;

 private:
  bool refusesBlanks_ = false;
  bool refusesLeadingDots_ = false;
  /// Names that have at least so many bytes are refused.
  qsizetype tooLong_ = std::numeric_limits<qsizetype>::max();
  /// The same of what is behind the dot.
  qsizetype tooLongExtension_ = std::numeric_limits<qsizetype>::max();
  /// In small letters.
  QSet<QByteArray> extensions_;
};

}  // namespace trevane::ftp
