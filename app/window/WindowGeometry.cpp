#include "app/window/WindowGeometry.h"

#include "app/window/WindowLayout.h"

#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <chrono>

namespace trevane {

namespace {

constexpr std::chrono::milliseconds kFitEvery(20);
constexpr int kFitTries = 50;
/// Settings of a smaller window, or of none, are read as this.
constexpr int kSmallestExtent = 200;  // logical pixels
/// No screen is larger: a size beyond it is an error of the file and not a size of another machine.
constexpr int kLargestExtent = 16384;  // logical pixels

/// In logical pixels, of a width or height in twips on a screen of that extent.
int UsableExtent(qint32 twips, int screenExtent) {
  return std::clamp(ToPixels(twips), kSmallestExtent, std::max(kSmallestExtent, screenExtent));
}

/// The extent that the settings keep where `given` is what the screen has room for.
int KeptExtent(qint32 twips, int given) {
  return ToPixels(twips) > kLargestExtent ? given : std::max(ToPixels(twips), given);
}

}  // namespace

WindowGeometry::WindowGeometry(QWidget& window) : window_(window) {
  fit_.setInterval(kFitEvery);
  connect(&fit_, &QTimer::timeout, this, &WindowGeometry::FitOntoScreen);
}

void WindowGeometry::ShowWindow() {
  shown_ = true;
  switch (state_) {
    case WindowState::Normal:
      window_.show();
      break;
    case WindowState::Minimised:
      window_.showMinimized();
      break;
    case WindowState::Maximised:
      window_.showMaximized();
      break;
  }
  fit_.start();
}

void WindowGeometry::WindowRestored() {
  if (shown_ && fitTries_ == 0) {
    fit_.start();
  }
}

void WindowGeometry::FitOntoScreen() {
  // A window that is not in its normal state is fitted when it is restored.
  if (!window_.isVisible() || window_.isMinimized() || window_.isMaximized()) {
    fit_.stop();
    return;
  }
  // The window system puts the frame around it in its own time; there may be none.
  const QMargins frame = window_.windowHandle()->frameMargins();
  if (++fitTries_ < kFitTries && frame.isNull()) {
    return;
  }
  fit_.stop();
  const QRect fitting = FitToScreen(window_.geometry(), frame, window_.screen()->availableGeometry());
  if (fitting == window_.geometry()) {
    return;
  }
  narrowed_ = Narrowed{.asked = window_.size(), .given = fitting.size()};
  window_.setGeometry(fitting);
}

qint32 WindowGeometry::WidthTwips() const {
  return ToTwips(NormalSize().width());
}

qint32 WindowGeometry::HeightTwips() const {
  return ToTwips(NormalSize().height());
}

void WindowGeometry::SetWidthTwips(qint32 width) {
  const QScreen* screen = window_.screen();
  const int given = UsableExtent(width, screen ? screen->virtualSize().width() : 0);
  clampedWidth_ = {.asked = KeptExtent(width, given), .given = given};
  window_.resize(given, window_.height());
}

void WindowGeometry::SetHeightTwips(qint32 height) {
  const QScreen* screen = window_.screen();
  const int given = UsableExtent(height, screen ? screen->virtualSize().height() : 0);
  clampedHeight_ = {.asked = KeptExtent(height, given), .given = given};
  window_.resize(window_.width(), given);
}

WindowState WindowGeometry::State() const {
  if (!shown_) {
    return state_;
  }
  if (window_.isMinimized()) {
    return WindowState::Minimised;
  }
  return window_.isMaximized() ? WindowState::Maximised : WindowState::Normal;
}

void WindowGeometry::SetState(WindowState state) {
  state_ = state;
}

void WindowGeometry::HideWindow() {
  normalSize_ = NormalSize();
  window_.hide();
}

QSize WindowGeometry::NormalSize() const {
  if (!normalSize_.isEmpty()) {
    return normalSize_;
  }
  const bool elsewhere =
      shown_ && (window_.isMaximized() || window_.isMinimized()) && window_.normalGeometry().isValid();
  const QSize normal = elsewhere ? window_.normalGeometry().size() : window_.size();
  // On a larger screen, or on one of another scale, the window gets the size back that was asked for.
  QSize asked = narrowed_ && narrowed_->given == normal ? narrowed_->asked : normal;
  if (asked.width() == clampedWidth_.given) {
    asked.setWidth(clampedWidth_.asked);
  }
  if (asked.height() == clampedHeight_.given) {
    asked.setHeight(clampedHeight_.asked);
  }
  return asked;
}

}  // namespace trevane
