#include "tests/support/RecordingGauge.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace trevane {

RecordingGauge::Window& RecordingGauge::Loaded() {
  if (!loaded_) {
    window_ = Window{};
    loaded_ = true;
  }
  return window_;
}

void RecordingGauge::ShowGage(const QString& caption) {
  Loaded().visible = true;
  captions_.append(caption);
}

void RecordingGauge::SetGageMax(qint32 n) {
  Loaded().maximum = n + 1;
}

void RecordingGauge::IncrementGageValue(const QString& label) {
  if (!IsVisible()) {
    return;
  }
  if (!label.isEmpty()) {
    window_.label = label;
  }
  window_.value = std::min(window_.value + 1, window_.maximum);
  labels_.append(label);
  if (cancelAt_ > 0 && --cancelAt_ == 0) {
    ClickCancel();
  }
  if (onIncrement) {
    onIncrement();
  }
}

void RecordingGauge::SetGageLabel(const QString& label) {
  Loaded().label = label;
}

void RecordingGauge::CancelEnable(bool enabled) {
  Loaded().cancelEnabled = enabled;
}

bool RecordingGauge::IsClickedCancel() const {
  return loaded_ && window_.cancelled;
}

void RecordingGauge::PaintGage() {
  if (IsVisible()) {
    paintedLabels_.append(window_.label);
  }
}

void RecordingGauge::WaitGage(qint32 milliseconds) {
  waited_ += milliseconds;
}

void RecordingGauge::UnloadGage() {
  if (loaded_) {
    loaded_ = false;
    ++unloads_;
  }
}

void RecordingGauge::ClickCancel() {
  const bool takesClicks = IsVisible() && window_.cancelEnabled;
  EXPECT_TRUE(takesClicks) << "the gauge's Cancel button is disabled or not shown";
  window_.cancelled = window_.cancelled || takesClicks;
}

void RecordingGauge::CancelAtIncrement(int n) {
  cancelAt_ = n;
}

}  // namespace trevane
