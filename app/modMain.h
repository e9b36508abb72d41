#pragma once

#include "app/session/AppServices.h"

#include <QObject>

#include <memory>

namespace trevane {

class DriveTable;
class EngineSession;
class frmFileMgr;
class modLogEvent;

/// The start-up routine and what lives for the whole run: the engine session, the drive table, the log and
/// the main window.
class modMain final : public QObject {
  Q_OBJECT

 public:
  explicit modMain(AppServices services);
  ~modMain() override;

  /// Starts the program; `commandLine` is the text after the program's own path. Returns with a window on the
  /// screen, or without one when there is nothing to run. From here on window events drive the program.
  void Start(const QString& commandLine);
  /// The same with the argument as it is; empty for none.
  void StartWith(const QString& argument);

  /// Null when there is none (any more).
  [[nodiscard]] frmFileMgr* Window() const { return window_.get(); }
  [[nodiscard]] EngineSession& Session() { return *session_; }

 private:
  bool LoadWindow();
  /// Before it was shown the program was asked to end: it does so in order.
  bool EndedMeanwhile();
  /// The main window; one is created and loaded if there is none.
  frmFileMgr& ReferToWindow();

  AppServices services_;
  std::unique_ptr<EngineSession> session_;
  std::unique_ptr<DriveTable> drives_;
  std::unique_ptr<modLogEvent> log_;
  std::unique_ptr<frmFileMgr> window_;
};

}  // namespace trevane
