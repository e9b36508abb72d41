#pragma once

#include <QString>

namespace trevane {

class ReasonLine;
class UserPrompts;

/// The questions and messages of the workspace commands.
class WorkspaceDialogs {
 public:
  /// The file dialogs begin in `programFolder`.
  WorkspaceDialogs(UserPrompts& prompts, ReasonLine& reasonLine, QString programFolder);
  WorkspaceDialogs(const WorkspaceDialogs&) = delete;
  WorkspaceDialogs& operator=(const WorkspaceDialogs&) = delete;

  /// The chosen file; empty when the user cancelled.
  [[nodiscard]] QString AskFileToOpen();
  [[nodiscard]] QString AskFileToSave(const QString& currentFile);

  void ShowNoController();
  void ShowNotOpened(const QString& file, const QString& reason);
  void ShowNotSaved(const QString& file, const QString& reason);
  void ShowNotOverwritten(const QString& file, const QString& reason);

 private:
  void Warn(const QString& text, const QString& file, const QString& reason);

  UserPrompts& prompts_;
  ReasonLine& reasonLine_;
  QString programFolder_;
};

}  // namespace trevane
