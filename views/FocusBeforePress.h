#pragma once

#include <QElapsedTimer>
#include <QWidget>

#include <utility>

namespace trevane {

/// Tells whether a view had the focus before a button was pressed in it. The press that gives it the focus,
/// or that brings its window to the front, only says which pane is meant.
class FocusBeforePress {
 public:
  /// To be told of every focus that comes.
  void FocusCame(Qt::FocusReason reason) {
    byPress_ = reason == Qt::MouseFocusReason;
    if (reason == Qt::ActiveWindowFocusReason) {
      sinceWindowCame_.start();
    }
  }

  /// To be asked once a press.
  [[nodiscard]] bool AtPress(const QWidget& view) {
    const bool byPress = std::exchange(byPress_, false);
    const bool withWindow = sinceWindowCame_.isValid() && sinceWindowCame_.elapsed() < kOneClick;
    return view.hasFocus() && !byPress && !withWindow;
  }

 private:
  /// Milliseconds in which the window and the press that brings it reach the program.
  static constexpr qint64 kOneClick = 250;

  bool byPress_ = false;
  QElapsedTimer sinceWindowCame_;
};

}  // namespace trevane
