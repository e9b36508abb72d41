#pragma once

#include <QString>

#include <memory>

namespace trevane {

/// The progress of a long operation beside the program's icon, where the desktop has a place for it: the
/// taskbar button of Windows; on Linux launchers that listen to the signal Update of
/// com.canonical.Unity.LauncherEntry on the session's bus. Where there is none, nothing happens. No member
/// waits for the desktop, and none raises an error.
class TaskbarProgress final {
 public:
  /// `desktopFile` names the program's desktop file, without its ending. Only Linux asks for it.
  explicit TaskbarProgress(const QString& desktopFile);
  /// Takes the progress away.
  ~TaskbarProgress();
  TaskbarProgress(const TaskbarProgress&) = delete;
  TaskbarProgress& operator=(const TaskbarProgress&) = delete;

  /// The main window, as QWidget::winId gives it; nothing is shown on Windows before it is known.
  void SetWindow(quintptr window);

  /// `whole` is above 0.
  void Show(qint64 done, qint64 whole);
  void Hide();

 private:
  class Native;
  std::shared_ptr<Native> native_;
};

}  // namespace trevane
