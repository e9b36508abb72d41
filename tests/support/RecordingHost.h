#pragma once

#include "fileops/OperationHost.h"

#include <QStringList>

#include <functional>

namespace trevane::test {

/// A main window of which only the state is there.
class RecordingHost final : public OperationHost {
 public:
  void SetMainWindowEnabled(bool enabled) override { enabled_ = enabled; }
  [[nodiscard]] bool IsWaiting() const override { return waiting; }
  /// A controller is waited for.
  bool waiting = false;
  void LetEventsRun() override {
    ++turns_;
    if (onEvents) {
      onEvents();
    }
  }
  void LetPaintingRun() override {
    ++paints_;
    if (onPainting) {
      onPainting();
    }
  }
  void SetBusyPointer(bool busy) override {
    busy_ = busy;
    wasBusy_ = wasBusy_ || busy;
  }

  void ShowReason(const QString& line) override { reasons.append(line); }
  /// The lines that reported failures.
  QStringList reasons;

  /// Called while events or painting run, in place of the user or another program.
  std::function<void()> onEvents;
  std::function<void()> onPainting;

  [[nodiscard]] bool IsEnabled() const { return enabled_; }
  [[nodiscard]] bool IsBusy() const { return busy_; }
  [[nodiscard]] bool WasBusy() const { return wasBusy_; }
  [[nodiscard]] int Turns() const { return turns_; }
  [[nodiscard]] int Paints() const { return paints_; }

 private:
  bool enabled_ = true;
  bool busy_ = false;
  bool wasBusy_ = false;
  int turns_ = 0;
  int paints_ = 0;
};

}  // namespace trevane::test
