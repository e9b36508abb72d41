#pragma once

#include <QString>

namespace trevane {

/// The progress gauge of a long operation. It does no work itself: the operation advances it and polls
/// UserPrompts::IsCancelled once an entry, after it has let window events run.
class ProgressGauge {
 public:
  virtual ~ProgressGauge() = default;

  /// Loads a fresh gauge where there is none, and shows it.
  virtual void ShowGage(const QString& caption) = 0;
  /// The bar's maximum becomes n + 1, so that a bar advanced once an entry never reaches its end.
  virtual void SetGageMax(qint32 n) = 0;
  /// Advances by one, only while the gauge is visible; an empty label keeps the one that is shown.
  virtual void IncrementGageValue(const QString& label) = 0;
  virtual void SetGageLabel(const QString& label) = 0;
  virtual void CancelEnable(bool enabled) = 0;
  [[nodiscard]] virtual bool IsClickedCancel() const = 0;
  /// Paints what it shows, before work that lets no events run.
  virtual void PaintGage() = 0;
  virtual void WaitGage(qint32 milliseconds) = 0;
  /// Closes the gauge; the next ShowGage loads a fresh one. No gauge is no error.
  virtual void UnloadGage() = 0;
};

}  // namespace trevane
