#pragma once

#include "prompts/ProgressGauge.h"

#include <QStringList>

#include <functional>

namespace trevane {

/// A progress gauge without a window that behaves as the window does: loaded fresh by the first use after an
/// unload, advanced only while it is visible, its cancel flag reset only by loading it again.
class RecordingGauge final : public ProgressGauge {
 public:
  RecordingGauge() = default;
  RecordingGauge(const RecordingGauge&) = delete;
  RecordingGauge& operator=(const RecordingGauge&) = delete;

  void ShowGage(const QString& caption) override;
  void SetGageMax(qint32 n) override;
  void IncrementGageValue(const QString& label) override;
  void SetGageLabel(const QString& label) override;
  void CancelEnable(bool enabled) override;
  [[nodiscard]] bool IsClickedCancel() const override;
  void PaintGage() override;
  void WaitGage(qint32 milliseconds) override;
  void UnloadGage() override;

  /// Clicks Cancel; a hidden or disabled button takes no click, and the test fails.
  void ClickCancel();

  /// Clicks Cancel right after the nth increment from now, counted from 1.
  void CancelAtIncrement(int n);

  /// Called after each increment, with the gauge as it is then.
  std::function<void()> onIncrement;

  [[nodiscard]] qint32 GageMax() const { return loaded_ ? window_.maximum : Window{}.maximum; }
  [[nodiscard]] QString GageLabel() const { return loaded_ ? window_.label : QString(); }
  [[nodiscard]] bool IsLoaded() const noexcept { return loaded_; }
  [[nodiscard]] bool IsVisible() const noexcept { return loaded_ && window_.visible; }
  [[nodiscard]] bool IsCancelEnabled() const noexcept { return loaded_ && window_.cancelEnabled; }

  /// The calls of the gauge over its whole life.
  [[nodiscard]] const QStringList& Captions() const noexcept { return captions_; }
  [[nodiscard]] const QStringList& Labels() const noexcept { return labels_; }
  /// The labels that were painted.
  [[nodiscard]] const QStringList& PaintedLabels() const noexcept { return paintedLabels_; }
  [[nodiscard]] int Unloads() const noexcept { return unloads_; }
  [[nodiscard]] qint64 WaitedMilliseconds() const noexcept { return waited_; }

 private:
  struct Window {
    qint32 maximum = 100;
    qint32 value = 0;
    QString label;
    bool visible = false;
    bool cancelEnabled = false;
    bool cancelled = false;
  };

  Window& Loaded();

  Window window_;
  bool loaded_ = false;
  int cancelAt_ = 0;
  QStringList captions_;
  QStringList labels_;
  QStringList paintedLabels_;
  int unloads_ = 0;
  qint64 waited_ = 0;
};

}  // namespace trevane
