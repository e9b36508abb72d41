#pragma once

#include <QApplication>

#include <utility>

namespace trevane {

/// The pointer of a wait. It lies over the pointers that the windows have, which stay as they are.
class WaitPointer final {
 public:
  WaitPointer() = default;
  ~WaitPointer() { Hide(); }
  WaitPointer(const WaitPointer&) = delete;
  WaitPointer& operator=(const WaitPointer&) = delete;

  void Show() {
    if (!std::exchange(shown_, true)) {
      QApplication::setOverrideCursor(Qt::WaitCursor);
    }
  }
  void Hide() {
    if (std::exchange(shown_, false)) {
      QApplication::restoreOverrideCursor();
    }
  }

 private:
  bool shown_ = false;
};

}  // namespace trevane
