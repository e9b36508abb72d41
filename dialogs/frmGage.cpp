#include "dialogs/frmGage.h"

#include "dialogs/ElidedLabel.h"
#include "dialogs/QuietUpdate.h"
#include "engine/remote/NestedCall.h"

#include <QApplication>
#include <QCloseEvent>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QStyleOptionProgressBar>
#include <QThread>
#include <QVBoxLayout>
#include <QWindow>

#include <algorithm>
#include <limits>

namespace trevane {

namespace {

constexpr int kWidth = 400;
constexpr int kMargin = 16;
/// A window that is minimised with its parent is never shown.
constexpr qint64 kLongestWaitToStand = 200;  // milliseconds

/// A bar without text that claims to have one: for a bar that shows its value Qt does not ask the style, for
/// every new value, whether the change is wide enough to be seen. That question was most of what an increment
/// cost.
class GageBar final : public QProgressBar {
 public:
  explicit GageBar(QWidget* parent) : QProgressBar(parent) { setFormat(QStringLiteral("%v")); }

 protected:
  void initStyleOption(QStyleOptionProgressBar* option) const override {
    QProgressBar::initStyleOption(option);
    option->textVisible = false;
  }
};

void KeepPlaceWhenHidden(QWidget* widget) {
  QSizePolicy policy = widget->sizePolicy();
  policy.setRetainSizeWhenHidden(true);
  widget->setSizePolicy(policy);
}

}  // namespace

frmGage::frmGage(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      prgState_(new GageBar(this)),
      lblInfo_(new ElidedLabel(this)),
      cmdCancel_(new QPushButton(QStringLiteral("Cancel"), this)) {
  setObjectName(QStringLiteral("frmGage"));
  setAttribute(Qt::WA_ShowWithoutActivating);

  prgState_->setObjectName(QStringLiteral("prgState"));
  prgState_->setAccessibleName(QStringLiteral("Progress"));
  prgState_->setRange(0, kFreshMaximum);
  prgState_->setValue(0);
  lblInfo_->setObjectName(QStringLiteral("lblInfo"));
  cmdCancel_->setObjectName(QStringLiteral("cmdCancel"));
  cmdCancel_->setEnabled(false);
  connect(cmdCancel_, &QPushButton::clicked, this, [this] {
    cancelled_ = true;
    // What has to be cleaned up on a controller may take seconds.
    cmdCancel_->setText(QStringLiteral("Cancelling"));
    Q_EMIT Cancelled();
  });

  KeepPlaceWhenHidden(prgState_);
  KeepPlaceWhenHidden(cmdCancel_);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(cmdCancel_);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  column->setSpacing(kMargin / 2);
  column->addWidget(prgState_);
  column->addWidget(lblInfo_);
  column->addSpacing(kMargin / 2);
  column->addLayout(buttons);
  setFixedSize(kWidth, column->heightForWidth(kWidth) > 0 ? column->heightForWidth(kWidth)
                                                          : column->sizeHint().height());
  column->activate();
  // With a fixed size of its own a new text does not even ask for a layout.
  lblInfo_->setFixedSize(lblInfo_->size());

  // A coarse timer fires up to 5 % early, which adds up.
  pace_.setTimerType(Qt::PreciseTimer);
  pace_.setInterval(kRepaintMilliseconds);
  connect(&pace_, &QTimer::timeout, this, [this] {
    if (unpainted_) {
      AskForPainting();
    } else {
      pace_.stop();
    }
  });
}

frmGage::~frmGage() = default;

void frmGage::ShowGage(const QString& caption) {
  setWindowTitle(caption);
  show();
}

void frmGage::GageClear() {
  {
    const QuietUpdate quiet(*prgState_);
    prgState_->setValue(0);
  }
  Changed();
}

void frmGage::SetGageMax(qint32 n) {
  const qint32 maximum = std::min(std::max(n, 0), std::numeric_limits<qint32>::max() - 1) + 1;
  if (maximum == prgState_->maximum()) {
    return;
  }
  {
    const QuietUpdate quiet(*prgState_);
    // A bar whose value lies outside its range forgets the value.
    prgState_->setValue(std::min(prgState_->value(), maximum));
    prgState_->setMaximum(maximum);
  }
  Changed();
}

qint32 frmGage::GageMax() const {
  return prgState_->maximum();
}

qint32 frmGage::GageValue() const {
  return prgState_->value();
}

void frmGage::IncrementGageValue(const QString& label) {
  if (!isVisible()) {
    return;
  }
  if (!label.isEmpty()) {
    const QuietUpdate quiet(*lblInfo_);
    lblInfo_->setText(label);
  }
  if (prgState_->value() < prgState_->maximum()) {
    const QuietUpdate quiet(*prgState_);
    prgState_->setValue(prgState_->value() + 1);
  }
  Changed();
}

void frmGage::SetGageLabel(const QString& label) {
  {
    const QuietUpdate quiet(*lblInfo_);
    lblInfo_->setText(label);
  }
  Changed();
}

QString frmGage::GageLabel() const {
  return lblInfo_->text();
}

void frmGage::CancelEnable(bool enabled) {
  cmdCancel_->setEnabled(enabled);
}

bool frmGage::CanCancel() const {
  return cmdCancel_->isVisible() && cmdCancel_->isEnabled();
}

void frmGage::SetCancelVisible(bool visible) {
  cmdCancel_->setVisible(visible);
}

void frmGage::SetGageBarVisible(bool visible) {
  prgState_->setVisible(visible);
}

void frmGage::GageFormInit() {
  SetCancelVisible(true);
  SetGageBarVisible(true);
}

void frmGage::PaintNow() {
  if (!isVisible()) {
    return;
  }
  if (!stands_) {
    if (WaitUntilItStands()) {
      unpainted_ = false;
      repaint();
      Q_EMIT Progressed(prgState_->value(), prgState_->maximum());
    }
    return;
  }
  unpainted_ = false;
  prgState_->repaint();
  lblInfo_->repaint();
  Q_EMIT Progressed(prgState_->value(), prgState_->maximum());
}

bool frmGage::WaitUntilItStands() {
  // Painting before the window system shows the window is lost. No command may begin meanwhile.
  const WithinCall within;
  const QPointer<frmGage> alive(this);
  QElapsedTimer waited;
  waited.start();
  while (alive != nullptr && isVisible() && !windowHandle()->isExposed() &&
         !waited.hasExpired(kLongestWaitToStand)) {
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    QThread::msleep(1);
  }
  if (alive != nullptr) {
    stands_ = true;
  }
  return alive != nullptr && isVisible();
}

void frmGage::reject() {
  if (cmdCancel_->isVisible()) {
    cmdCancel_->click();
  }
}

void frmGage::changeEvent(QEvent* event) {
  QDialog::changeEvent(event);
  // A disabled window disables the windows above it, too; this one is shown to be used in just that time.
  if (event->type() == QEvent::EnabledChange && !isEnabled()) {
    setEnabled(true);
  }
}

void frmGage::closeEvent(QCloseEvent* event) {
  // Only the operation closes its gauge, when it has come to a halt.
  event->ignore();
  reject();
}

void frmGage::showEvent(QShowEvent* event) {
  qApp->installEventFilter(this);
  QDialog::showEvent(event);
  Q_EMIT Progressed(prgState_->value(), prgState_->maximum());
}

void frmGage::hideEvent(QHideEvent* event) {
  qApp->removeEventFilter(this);
  pace_.stop();
  QDialog::hideEvent(event);
}

bool frmGage::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::KeyPress: {
      const auto* key = static_cast<QKeyEvent*>(event);
      if (key->key() == Qt::Key_Escape && key->modifiers() == Qt::NoModifier && cmdCancel_->isEnabled() &&
          cmdCancel_->isVisible() && BelongsToUs(watched)) {
        reject();
        return true;
      }
      break;
    }
    case QEvent::EnabledChange:
      if (watched == parentWidget() && !parentWidget()->isEnabled()) {
        // Not activated: that would arrive late and take the keyboard from a question that the operation asks
        // meanwhile. Keys of the window below come here by the event filter.
        cmdCancel_->setFocus();
      }
      break;
    default:
      break;
  }
  return false;
}

void frmGage::Changed() {
  if (pace_.isActive()) {
    unpainted_ = true;
  } else {
    AskForPainting();
    pace_.start();
  }
}

void frmGage::AskForPainting() {
  unpainted_ = false;
  prgState_->update();
  lblInfo_->update();
  if (isVisible()) {
    Q_EMIT Progressed(prgState_->value(), prgState_->maximum());
  }
}

bool frmGage::BelongsToUs(const QObject* watched) const {
  const auto* widget = qobject_cast<const QWidget*>(watched);
  return widget != nullptr && parentWidget() != nullptr && widget->window() == parentWidget()->window();
}

}  // namespace trevane
