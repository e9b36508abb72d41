#include "app/workspace/WorkspaceDialogs.h"

#include "app/workspace/ShowFileDialog.h"
#include "prompts/ShowFailure.h"
#include "prompts/UserPrompts.h"

#include <QFileInfo>

#include <utility>

namespace trevane {

namespace {

const QString kFilter = QStringLiteral("FileMgr File (*.fmg)|*.fmg|All Files (*.*)|*.*");

}  // namespace

WorkspaceDialogs::WorkspaceDialogs(UserPrompts& prompts, ReasonLine& reasonLine, QString programFolder)
    : prompts_(prompts), reasonLine_(reasonLine), programFolder_(std::move(programFolder)) {}

QString WorkspaceDialogs::AskFileToOpen() {
  return ShowFileDialog(prompts_, kFilter, FileQuestion::Mode::Open, {}, programFolder_);
}

QString WorkspaceDialogs::AskFileToSave(const QString& currentFile) {
  return ShowFileDialog(prompts_, kFilter, FileQuestion::Mode::Save, currentFile, programFolder_);
}

void WorkspaceDialogs::ShowNoController() {
  prompts_.MessageBox(QStringLiteral("No controller is connecting."), PromptIcon::Exclamation);
}

void WorkspaceDialogs::ShowNotOpened(const QString& file, const QString& reason) {
  Warn(QStringLiteral("Couldn't open the file."), file, reason);
}

void WorkspaceDialogs::ShowNotSaved(const QString& file, const QString& reason) {
  Warn(QStringLiteral("Couldn't save the file."), file, reason);
}

void WorkspaceDialogs::ShowNotOverwritten(const QString& file, const QString& reason) {
  Warn(QStringLiteral("Can't overwrite the file."), file, reason);
}

void WorkspaceDialogs::Warn(const QString& text, const QString& file, const QString& reason) {
  ShowFailure(prompts_, reasonLine_, text, {.item = QFileInfo(file).fileName(), .reason = reason});
}

}  // namespace trevane
