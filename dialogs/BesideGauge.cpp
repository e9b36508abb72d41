#include "dialogs/BesideGauge.h"

#include "dialogs/frmGage.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <array>

namespace trevane {

namespace {

constexpr int kGap = 8;  // logical pixels

int Covered(const QRect& one, const QRect& other) {
  const QRect both = one & other;
  return both.isEmpty() ? 0 : both.width() * both.height();
}

/// As near to `wanted` as the screen allows.
int Within(int wanted, int extent, int from, int to) {
  return std::max(from, std::min(wanted, to - extent));
}

/// The frame that the window manager adds to a window: to the gauge, or to the window below it.
QSize FrameOf(const QWidget& gauge) {
  QSize frame = gauge.frameGeometry().size() - gauge.size();
  if (frame.isNull() && gauge.parentWidget() != nullptr) {
    const QWidget& parent = *gauge.parentWidget()->window();
    frame = parent.frameGeometry().size() - parent.size();
  }
  return frame;
}

}  // namespace

BesideGauge::BesideGauge(QDialog& question, frmGage* gauge) : question_(question) {
  if (gauge == nullptr || !gauge->isVisible()) {
    return;
  }
  gauge_ = gauge;
  // A modal window blocks every other one but its own children: the gauge is one as long as it is shown.
  question_.winId();
  gauge_->windowHandle()->setTransientParent(question_.windowHandle());
  question_.installEventFilter(this);
}

BesideGauge::~BesideGauge() {
  if (gauge_ == nullptr || gauge_->windowHandle() == nullptr) {
    return;
  }
  const QWidget* const parent = gauge_->parentWidget();
  gauge_->windowHandle()->setTransientParent(parent != nullptr ? parent->window()->windowHandle() : nullptr);
}

QPoint BesideGauge::PlaceFor(const QSize& question, const QRect& gauge, const QRect& screen) {
  const int left = Within(gauge.left() + (gauge.width() - question.width()) / 2, question.width(),
                          screen.left(), screen.right() + 1);
  const int top = Within(gauge.top() + (gauge.height() - question.height()) / 2, question.height(),
                         screen.top(), screen.bottom() + 1);
  const std::array places{
      QPoint(left, gauge.bottom() + 1 + kGap), QPoint(left, gauge.top() - kGap - question.height()),
      QPoint(gauge.right() + 1 + kGap, top), QPoint(gauge.left() - kGap - question.width(), top)};
  QPoint best;
  int covered = -1;
  for (const QPoint& place : places) {
    const QPoint inside(Within(place.x(), question.width(), screen.left(), screen.right() + 1),
                        Within(place.y(), question.height(), screen.top(), screen.bottom() + 1));
    const int covers = Covered(QRect(inside, question), gauge);
    if (covered < 0 || covers < covered) {
      best = inside;
      covered = covers;
    }
  }
  return best;
}

bool BesideGauge::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Show && !event->spontaneous() && gauge_ != nullptr) {
    // Some boxes take their size only now.
    QEvent layout(QEvent::LayoutRequest);
    QApplication::sendEvent(&question_, &layout);
    // Its own frame is not known before it is shown; it equals that of the windows that are shown.
    const QSize frame = FrameOf(*gauge_);
    // A window manager reports the position and the frame of a window later: until then the gauge may be
    // lower or higher by its frame.
    const QRect taken = gauge_->frameGeometry().adjusted(0, -frame.height(), 0, frame.height());
    question_.move(PlaceFor(question_.size() + frame, taken, gauge_->screen()->availableGeometry()));
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace trevane
