#pragma once

#include "base/RunTimeError.h"
#include "engine/model/IxoFile.h"

#include <QString>

#include <memory>
#include <optional>

namespace trevane {

/// Whether a link in a folder that is `depth` folders below the top of what is copied leads to something that
/// is copied, too: its text is relative and does not lead above the top. With a link that was selected by
/// itself, at depth -1, nothing else is copied.
[[nodiscard]] bool StaysInside(const QString& text, qsizetype depth);

/// Makes a link in a folder of another controller that is like one here, and verifies it. Every failure is a
/// RunTimeError.
class LinkCopy final {
 public:
  enum class Outcome {
    /// It is there, or was there before.
    Made,
    /// Reason tells why.
    LeftOut,
    /// A link with another text has the name, and nothing was done.
    OtherLink
  };

  /// `depth` as for StaysInside.
  LinkCopy(IxoFile& source, std::shared_ptr<IxoFile> folder, const QString& name, qsizetype depth);

  [[nodiscard]] Outcome Make();
  /// After OtherLink: puts the link in the place of the one that has the name now. When that fails the old
  /// one is made again, or the failure names its text.
  [[nodiscard]] Outcome Replace();
  /// It was not there before.
  [[nodiscard]] bool IsNew() const noexcept { return isNew_; }
  [[nodiscard]] const QString& Text() const noexcept { return text_; }
  /// A sentence without a full stop.
  [[nodiscard]] const QString& Reason() const noexcept { return reason_; }

 private:
  [[nodiscard]] Outcome LeaveOut(const QString& reason);
  [[nodiscard]] Outcome Create();
  void RequireMade();
  void PutBack(const QString& text, const RunTimeError& failure);

  IxoFile& source_;
  std::shared_ptr<IxoFile> folder_;
  QString name_;
  qsizetype depth_;
  QString text_;
  QString reason_;
  bool isNew_ = false;
};

}  // namespace trevane
