#include "engine/providers/curl/LineWatch.h"

#include "base/RunTimeError.h"
#include "engine/providers/curl/LineFailures.h"
#include "engine/remote/CallControl.h"

#include <QString>

#include <algorithm>
#include <utility>

namespace trevane::curl {
namespace {

using namespace std::chrono_literals;

/// As long as a limit of its own runs, a silence is none for the window.
constexpr std::chrono::milliseconds kBeat = 1000ms;

}  // namespace

LineWatch::LineWatch(const FtpSettings& settings, std::shared_ptr<CallControl> control)
    : settings_(settings), control_(std::move(control)), longest_(std::chrono::seconds(settings.timeout)) {}

void LineWatch::Begin() noexcept {
  allowance_ = Milliseconds(0);
  moved_ = 0;
  begun_ = lastByte_ = Clock::now();
}

void LineWatch::BeginCommand() noexcept {
  lastByte_ = Clock::now();
  // What a transfer before was given more is no matter of a command.
  allowance_ = Milliseconds(0);
}

void LineWatch::Touch() {
  lastByte_ = Clock::now();
  TellAlive();
}

void LineWatch::TellAlive() {
  if (control_) {
    control_->Alive();
  }
}

void LineWatch::NoteMoved(qint64 bytes) {
  if (moved_ != bytes) {
    moved_ = bytes;
    Touch();
  }
}

void LineWatch::AllowForWhatIsHeld() {
  // So much may be in the system's own buffers, and goes no faster than what has gone before.
  constexpr qint64 kMostHeld = qint64(4) * 1024 * 1024;
  constexpr Milliseconds kMost = 5min;
  if (moved_ > 0) {
    const double share = double(std::min(moved_, kMostHeld)) / double(moved_);
    const auto elapsed = std::chrono::duration<double, std::milli>(Clock::now() - begun_);
    allowance_ = std::min(kMost, Milliseconds(qint64(elapsed.count() * share)));
  }
}

void LineWatch::BeginMoment(Milliseconds most) {
  lastByte_ = Clock::now();
  moment_ = lastByte_ + most;
}

bool LineWatch::IsCancelled() const {
  return control_ && putBacks_ == 0 && control_->IsCancelled();
}

bool LineWatch::IsSilentTooLong() const {
  const Clock::time_point now = Clock::now();
  return now - lastByte_ > longest_ + allowance_ || (moment_ && now > *moment_);
}

void LineWatch::RequireNotCancelled() const {
  if (IsCancelled()) {
    throw RunTimeError(error::kCancelled, QStringLiteral("Cancelled"));
  }
}

void LineWatch::RequireGoesOn() const {
  RequireNotCancelled();
  if (IsSilentTooLong()) {
    FailSilent(settings_);
  }
}

std::shared_ptr<void> LineWatch::OnCancel(std::function<void()> wake) {
  if (!control_ || putBacks_ > 0) {
    return nullptr;
  }
  return control_->OnCancel(std::move(wake));
}

LineWatch::Milliseconds LineWatch::Beat() const noexcept {
  return std::min(kBeat, longest_);
}

}  // namespace trevane::curl
