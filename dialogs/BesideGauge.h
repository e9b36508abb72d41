#pragma once

#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QSize>

class QDialog;

namespace trevane {

class frmGage;

/// While a question is shown, the gauge of the operation that asks it stays usable and the question is placed
/// beside it. Without a gauge on the screen nothing is done. Created before the question is shown, and lives
/// as long as it is shown.
class BesideGauge final : public QObject {
  Q_OBJECT

 public:
  BesideGauge(QDialog& question, frmGage* gauge);
  ~BesideGauge() override;

  /// The position of a window of that size, frame included, that covers nothing of the gauge: below it, above
  /// it, or at its side, within the screen. If none of them is free, it is the one that covers least.
  [[nodiscard]] static QPoint PlaceFor(const QSize& question, const QRect& gauge, const QRect& screen);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QDialog& question_;
  QPointer<frmGage> gauge_;
};

}  // namespace trevane
