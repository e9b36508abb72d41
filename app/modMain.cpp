#include "app/modMain.h"

#include "app/ParseCommandLine.h"
#include "app/log/modLogEvent.h"
#include "app/window/frmFileMgr.h"
#include "app/workspace/WorkspaceFile.h"
#include "base/RunTimeError.h"
#include "engine/controllers/EngineSession.h"
#include "prompts/ShowFailure.h"
#include "prompts/UserPrompts.h"
#include "views/addresses/DriveTable.h"

namespace trevane {

modMain::modMain(AppServices services)
    : services_(std::move(services)),
      session_(std::make_unique<EngineSession>()),
      drives_(std::make_unique<DriveTable>(services_.volumes)),
      log_(std::make_unique<modLogEvent>(services_.baseName)) {}

modMain::~modMain() = default;

void modMain::Start(const QString& commandLine) {
  ArgumentBuffer arguments;
  StartWith(ParseCommandLine(commandLine, arguments) >= 1 ? arguments[0] : QString());
}

void modMain::StartWith(const QString& argument) {
  if (!services_.isFirstInstance()) {
    return;
  }
  try {
    LoadWindow();
    if (EndedMeanwhile()) {
      return;
    }
    if (!argument.isEmpty()) {
      ReferToWindow().Workspace().OpenWorkspace(argument);
    }
    if (EndedMeanwhile()) {
      return;
    }
    ReferToWindow().ShowModeless();
    ReferToWindow().FocusTree();
  } catch (const RunTimeError& failure) {
    services_.prompts.ShowMessage(FailureMessage(QStringLiteral("Failed to start an application."),
                                                 {.item = {}, .reason = failure.Description()}));
    if (window_) {
      window_->Unload();
      window_.reset();
    }
  }
}

bool modMain::EndedMeanwhile() {
  if (!services_.prompts.IsEnding()) {
    return false;
  }
  if (window_) {
    window_->Unload();
  }
  window_.reset();
  return true;
}

bool modMain::LoadWindow() {
  window_ = std::make_unique<frmFileMgr>(services_, *session_, *drives_, *log_);
  if (window_->Load()) {
    return true;
  }
  window_.reset();
  return false;
}

frmFileMgr& modMain::ReferToWindow() {
  if (!window_ && !LoadWindow()) {
    throw RunTimeError(-1, QStringLiteral("The main window could not be loaded."));
  }
  return *window_;
}

}  // namespace trevane
