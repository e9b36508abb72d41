#include "dialogs/WindowGauge.h"

#include <utility>

namespace trevane {

WindowGauge::WindowGauge(std::function<void(qint32)> sleep) : sleep_(std::move(sleep)) {}

WindowGauge::~WindowGauge() {
  delete window_;
}

frmGage& WindowGauge::Loaded() {
  if (window_ == nullptr) {
    window_ = new frmGage(parent_);
    if (cancelListener_) {
      QObject::connect(window_, &frmGage::Cancelled, window_, cancelListener_);
    }
    if (progressListener_) {
      QObject::connect(window_, &frmGage::Progressed, window_, progressListener_);
      QObject::connect(window_, &QObject::destroyed, window_,
                       [listener = progressListener_] { listener(0, 0); });
    }
  }
  return *window_;
}

void WindowGauge::ShowGage(const QString& caption) {
  Loaded().ShowGage(caption);
}

void WindowGauge::SetGageMax(qint32 n) {
  Loaded().SetGageMax(n);
}

void WindowGauge::IncrementGageValue(const QString& label) {
  // One that is not loaded is not visible either.
  if (window_ != nullptr) {
    window_->IncrementGageValue(label);
  }
}

void WindowGauge::SetGageLabel(const QString& label) {
  Loaded().SetGageLabel(label);
}

void WindowGauge::CancelEnable(bool enabled) {
  Loaded().CancelEnable(enabled);
}

bool WindowGauge::IsClickedCancel() const {
  return window_ != nullptr && window_->IsClickedCancel();
}

void WindowGauge::PaintGage() {
  if (window_ != nullptr) {
    window_->PaintNow();
  }
}

void WindowGauge::WaitGage(qint32 milliseconds) {
  PaintGage();
  if (milliseconds > 0) {
    sleep_(milliseconds);
  }
}

void WindowGauge::UnloadGage() {
  delete window_;
}

}  // namespace trevane
