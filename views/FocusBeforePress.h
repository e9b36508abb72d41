#pragma once

#include <QElapsedTimer>
#include <QWidget>

#include <utility>

namespace trevane {

/// Finds out whether a view had the focus before a button was pressed in it. The press that gives it the
/// focus, or that brings its window to the front, only chooses the pane.
class FocusBeforePress {
 public:
  /// Must be called whenever the view gets the focus.
  void FocusCame(Qt::FocusReason reason) {
    byPress_ = reason == Qt::MouseFocusReason;
    if (reason == Qt::ActiveWindowFocusReason) {
      sinceWindowCame_.start();
    }
  }

  /// Must be called once for each press.
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
