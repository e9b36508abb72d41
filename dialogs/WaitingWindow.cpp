#include "dialogs/WaitingWindow.h"

#include "base/ShownText.h"
#include "dialogs/ElidedLabel.h"

#include <QAccessible>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>

namespace trevane {

namespace {

// As the gauge, which it stands in for.
constexpr int kWidth = 400;
constexpr int kMargin = 16;

}  // namespace

WaitingWindow::WaitingWindow(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      lblController_(new ElidedLabel(this)),
      lblWhat_(new ElidedLabel(this)),
      cmdCancel_(new QPushButton(QStringLiteral("Cancel"), this)) {
  setObjectName(QStringLiteral("frmWaiting"));
  setWindowTitle(QStringLiteral("Waiting"));
  setAttribute(Qt::WA_ShowWithoutActivating);

  lblController_->setObjectName(QStringLiteral("lblController"));
  QFont bold = lblController_->font();
  bold.setBold(true);
  lblController_->setFont(bold);
  lblWhat_->setObjectName(QStringLiteral("lblWhat"));
  cmdCancel_->setObjectName(QStringLiteral("cmdCancel"));
  cmdCancel_->setAccessibleName(QStringLiteral("Cancel"));
  connect(cmdCancel_, &QPushButton::clicked, this, &WaitingWindow::Cancelled);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(cmdCancel_);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  column->setSpacing(kMargin / 4);
  column->addWidget(lblController_);
  column->addWidget(lblWhat_);
  column->addSpacing(kMargin / 2);
  column->addLayout(buttons);
  setFixedSize(kWidth, column->sizeHint().height());
}

void WaitingWindow::ShowWaiting(const QString& controller, const QString& what, bool canCancel) {
  const auto set = [](QLabel& label, const QString& text) {
    if (label.text() != text) {
      label.setText(text);
      label.setAccessibleName(text);
    }
  };
  set(*lblController_, WithReadableNames(controller));
  set(*lblWhat_, WithReadableNames(what));
  setAccessibleDescription(
      QStringLiteral("%1: %2. Esc cancels.").arg(lblController_->text(), lblWhat_->text()));
  cmdCancel_->setEnabled(canCancel);
  if (!isVisible()) {
    StandInTheMiddle();
    show();
    // It takes no focus, from which a screen reader would learn of it.
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
  }
}

void WaitingWindow::ShowCancelling() {
  cmdCancel_->setEnabled(false);
}

void WaitingWindow::StandInTheMiddle() {
  if (parentWidget() == nullptr) {
    return;
  }
  const QRect frame = parentWidget()->window()->frameGeometry();
  const QRect screen = parentWidget()->screen()->availableGeometry();
  // Its own frame is not known before it is shown; it equals that of the window below.
  const QSize own = size() + frame.size() - parentWidget()->window()->size();
  const auto within = [](int wanted, int extent, int from, int to) {
    return std::max(from, std::min(wanted, to - extent));
  };
  move(within(frame.left() + (frame.width() - own.width()) / 2, own.width(), screen.left(),
              screen.right() + 1),
       within(frame.top() + (frame.height() - own.height()) / 2, own.height(), screen.top(),
              screen.bottom() + 1));
}

void WaitingWindow::reject() {
  cmdCancel_->click();
}

void WaitingWindow::changeEvent(QEvent* event) {
  QDialog::changeEvent(event);
  // A disabled window disables the windows above it, too; this one is shown to be used in just that time.
  if (event->type() == QEvent::EnabledChange && !isEnabled()) {
    setEnabled(true);
  }
}

void WaitingWindow::closeEvent(QCloseEvent* event) {
  // Only the end of the wait closes it.
  event->ignore();
  reject();
}

}  // namespace trevane
