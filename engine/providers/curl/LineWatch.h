#pragma once

#include "engine/providers/ftp/FtpSettings.h"

#include <QtGlobal>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace trevane {

class CallControl;

namespace curl {

/// What ends the waits of one line: the running call is cancelled, or the server is silent for longer than
/// the settings allow. It only counts and tells; whoever waits asks it. One thread's alone.
class LineWatch final {
 public:
  using Milliseconds = std::chrono::milliseconds;

  /// `settings` outlives it; `control` may be null.
  LineWatch(const FtpSettings& settings, std::shared_ptr<CallControl> control);

  /// Silence is counted from now, and is allowed no longer than the settings say.
  void Begin() noexcept;
  /// Likewise, for a command beside the transfers; what was measured of the last one stays.
  void BeginCommand() noexcept;
  /// Silence is counted from now.
  void BeginWait() noexcept { lastByte_ = Clock::now(); }
  /// Bytes have come or gone: likewise, and the window that waits is told.
  void Touch();
  /// The window that waits is told that somebody looks at the clock here.
  void TellAlive();
  /// So many bytes of the transfer have gone or come by now: bytes, from its beginning.
  void NoteMoved(qint64 bytes);
  /// All of an upload was given to the system, whose buffers may hold a part of it: silence may last longer
  /// for the rest of the transfer, by the time that such a part has taken so far.
  void AllowForWhatIsHeld();

  /// Something that ends on its own is given no more than this from now, until EndMoment.
  void BeginMoment(Milliseconds most);
  [[nodiscard]] bool IsInMoment() const { return moment_ && Clock::now() < *moment_; }
  void EndMoment() noexcept { moment_.reset(); }

  /// False while content is put back, which nothing cancels.
  [[nodiscard]] bool IsCancelled() const;
  [[nodiscard]] bool IsSilentTooLong() const;
  /// Fails with error::kCancelled.
  void RequireNotCancelled() const;
  /// Fails with error::kCancelled or error::kTimeOut.
  void RequireGoesOn() const;
  /// Calls `wake` on another thread when the running call is cancelled, as long as the result lives; null
  /// where nothing can cancel it.
  [[nodiscard]] std::shared_ptr<void> OnCancel(std::function<void()> wake);
  /// The longest wait without looking at the clock.
  [[nodiscard]] Milliseconds Beat() const noexcept;

  /// While content is put back, cancelling is of no effect. They may be nested.
  void BeginPutBack() noexcept { ++putBacks_; }
  void EndPutBack() noexcept { --putBacks_; }

 private:
  using Clock = std::chrono::steady_clock;

  const FtpSettings& settings_;
  const std::shared_ptr<CallControl> control_;
  const Milliseconds longest_;
  Clock::time_point lastByte_;
  Clock::time_point begun_;
  std::optional<Clock::time_point> moment_;
  /// Beyond the longest silence: what this computer still holds may take as long to arrive.
  Milliseconds allowance_{0};
  qint64 moved_ = 0;
  int putBacks_ = 0;
};

}  // namespace curl
}  // namespace trevane
