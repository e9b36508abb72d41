#pragma once

#include "dialogs/frmGage.h"
#include "prompts/ProgressGauge.h"

#include <QPointer>

#include <functional>
#include <utility>

namespace trevane {

/// The gauge on the screen: at most one frmGage at a time, loaded by the first call that changes
/// it and destroyed by UnloadGage. It is destroyed with its parent, too, and the next use loads a fresh one.
class WindowGauge final : public ProgressGauge {
 public:
  /// `sleep` blocks the calling thread for so many milliseconds.
  explicit WindowGauge(std::function<void(qint32)> sleep);
  ~WindowGauge() override;
  WindowGauge(const WindowGauge&) = delete;
  WindowGauge& operator=(const WindowGauge&) = delete;

  /// The window that the gauge is shown above, from the next one on; may be null.
  void SetParentWindow(QWidget* parent) { parent_ = parent; }
  /// Is called when Cancel is pressed.
  void SetCancelListener(std::function<void()> listener) { cancelListener_ = std::move(listener); }
  /// Is told the bar's value and maximum as often as the bar is painted, and two zeros when the gauge is
  /// gone.
  void SetProgressListener(std::function<void(qint32 value, qint32 maximum)> listener) {
    progressListener_ = std::move(listener);
  }
  /// Null while none is loaded.
  [[nodiscard]] frmGage* Window() const { return window_; }

  void ShowGage(const QString& caption) override;
  void SetGageMax(qint32 n) override;
  void IncrementGageValue(const QString& label) override;
  void SetGageLabel(const QString& label) override;
  void CancelEnable(bool enabled) override;
  [[nodiscard]] bool IsClickedCancel() const override;
  void PaintGage() override;
  void WaitGage(qint32 milliseconds) override;
  void UnloadGage() override;

 private:
  [[nodiscard]] frmGage& Loaded();

  std::function<void(qint32)> sleep_;
  std::function<void()> cancelListener_;
  std::function<void(qint32, qint32)> progressListener_;
  QPointer<QWidget> parent_;
  QPointer<frmGage> window_;
};

}  // namespace trevane
