#pragma once

#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QSize>

class QDialog;

namespace trevane {

class frmGage;

/// While a question stands the gauge of the operation that asks it can be reached, and the question stands
/// beside it. Without a gauge on the screen nothing is done. To be made before the question is shown, and to
/// live as long as it stands.
class BesideGauge final : public QObject {
  Q_OBJECT

 public:
  BesideGauge(QDialog& question, frmGage* gauge);
  ~BesideGauge() override;

  /// Where a window of that size, frame included, stands so that it covers nothing of the gauge: below it,
  /// above it, or at its side, within the screen. Where none of them is free it is the one that covers least.
  [[nodiscard]] static QPoint PlaceFor(const QSize& question, const QRect& gauge, const QRect& screen);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QDialog& question_;
  QPointer<frmGage> gauge_;
};

}  // namespace trevane
