#pragma once

#include "base/RunTimeError.h"
#include "engine/files/TemporaryName.h"

#include <QHash>
#include <QString>

#include <mutex>
#include <utility>

namespace trevane {

/// Where new content is built until it gets its place. A server that refuses a rung is tried with the next.
enum class NameRung {
  /// Beside the file, under a name of the forms of TemporaryForm.
  Long,
  Short,
  OwnExtension,
  /// Under its own name: the server takes no other.
  InPlace
};

namespace nameladder {

/// Whether a refusal is about the name itself, so that it is the same in each folder.
[[nodiscard]] bool IsOfName(const RunTimeError& failure);

/// The form of the names on a rung, which is not InPlace.
[[nodiscard]] TemporaryForm FormOf(NameRung rung);

/// The rung to try when a name was refused: the next one where the failure speaks of the name, of rights or
/// of what the server can do, and the same one for all others, such as a lost line or a full disk: another
/// name does not help there.
[[nodiscard]] NameRung After(NameRung rung, const RunTimeError& failure);

}  // namespace nameladder

/// What was learnt of the names that servers take, for the life of the program: one for all threads. A server
/// is known by a text, which names no folder. What may lie in one folder, such as rights, is learnt for that
/// folder alone, and that files are written in place always is.
class LearntNaming {
 public:
  /// The first rung that is not known to be refused there.
  [[nodiscard]] NameRung FirstRung(const QString& server, const QString& folder) const;
  /// Whether a file got its place from the first rung, so that the next will, too.
  [[nodiscard]] bool IsProved(const QString& server, const QString& folder) const;

  /// A file got its place from this rung; those between it and the first one were refused. `isOfServer`: for
  /// their names, as in any other folder.
  void Accept(const QString& server, const QString& folder, NameRung rung, bool isOfServer);
  /// A name on a rung that was proved was refused: it is not proved any more, but is tried again.
  void Doubt(const QString& server, const QString& folder);

 private:
  struct Known {
    NameRung first = NameRung::Long;
    bool isProved = false;
  };

  [[nodiscard]] Known KnownOf(const QString& server, const QString& folder) const;

  mutable std::mutex mutex_;
  QHash<QString, Known> servers_;
  /// Server and folder. Only where a folder differs from its server.
  QHash<std::pair<QString, QString>, Known> folders_;
};

}  // namespace trevane
