#pragma once

#include "engine/remote/Workbench.h"

#include <QtGlobal>

#include <chrono>
#include <optional>

namespace trevane {

/// The time between two calls of a controller's thread, and when its file system is to be called in it.
class IdlePause final {
 public:
  using Clock = std::chrono::steady_clock;

  explicit IdlePause(Workbench& bench) : bench_(bench) {}
  IdlePause(const IdlePause&) = delete;
  IdlePause& operator=(const IdlePause&) = delete;

  /// A call has ended.
  void Begin() {
    began_ = Clock::now();
    // Where calls follow each other closely there is no pause.
    next_ = bench_.FilesIfOpen() != nullptr ? kBeginning : kNone;
  }

  /// When Idle is to be called, if no call comes before; nothing for not at all.
  [[nodiscard]] std::optional<Clock::time_point> Next() const {
    return next_ != kNone ? std::optional(began_ + next_) : std::nullopt;
  }

  void Idle() {
    FileSystem* const files = bench_.FilesIfOpen();
    if (files == nullptr) {
      next_ = kNone;
      return;
    }
    const bool isFirst = next_ == kBeginning;
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - began_);
    const std::chrono::milliseconds next(files->Idle(isFirst ? 0 : passed.count()));
    // A time that is over already would be called without end.
    next_ = next > next_ ? next : kNone;
  }

 private:
  static constexpr std::chrono::milliseconds kBeginning{10};
  static constexpr std::chrono::milliseconds kNone{-1};

  Workbench& bench_;
  Clock::time_point began_ = Clock::now();
  std::chrono::milliseconds next_ = kNone;
};

}  // namespace trevane
