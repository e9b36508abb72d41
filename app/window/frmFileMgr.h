#pragma once

#include "app/session/AppServices.h"
#include "app/window/LateFailures.h"
#include "app/window/WindowGeometry.h"
#include "app/window/WindowSettings.h"
#include "base/DateFormatter.h"
#include "dialogs/WaitHost.h"
#include "engine/items/FileAccess.h"
#include "fileops/CommandHost.h"
#include "fileops/OperationHost.h"
#include "fileops/OperationState.h"
#include "fileops/commands/CommandId.h"
#include "fileops/commands/CommandPlace.h"
#include "prompts/UserPrompts.h"
#include "views/list/FileListModel.h"
#include "views/navigation/NavigatorListener.h"

#include <QMainWindow>
#include <QTimer>

#include <memory>

class QLabel;

namespace trevane {

class ActiveView;
class AddressBar;
class CommandBars;
class CommandDispatcher;
class CommandStates;
class Connections;
class DriveTable;
class EngineSession;
class FetchedFiles;
class FetchedQuestions;
class FileCommands;
class FileListView;
class FileTypes;
class FilterBar;
class FolderTreeModel;
class FolderTreeView;
class HistoryBox;
class ImageList;
class ListLanding;
class MainArea;
class MainWindowCommands;
class Navigator;
class OperationGuard;
class StatusLine;
class ViewCommands;
class ViewEvents;
class WorkspaceFile;
class modLogEvent;

/// The main window. It puts its parts together and passes on what they report. It is loaded once, hidden;
/// closing it ends the program in order.
class frmFileMgr final : public QMainWindow,
                         private NavigatorListener,
                         private OperationHost,
                         private CommandHost,
                         private WaitHost {
  Q_OBJECT

 public:
  /// `session`, `drives` and `log` outlive the window.
  frmFileMgr(AppServices& services, EngineSession& session, DriveTable& drives, modLogEvent& log);
  ~frmFileMgr() override;

  /// The load handler. False when the engine session cannot be created; the window is unusable then.
  [[nodiscard]] bool Load();

  /// Shows the window in the state that the settings file asked for.
  void ShowModeless();
  void FocusTree();

  /// Ends the program on the system's demand, without any further question or message. A running operation
  /// ends first; `Unloaded` is emitted at the end.
  void CloseUnattended();

  /// The system reports later that a file could not be opened. The failure is shown as soon as nothing else
  /// runs or is open.
  void RunFailedLate(const QString& path, const QString& reason);

  /// The unload handler. It runs once, when the window closes or the start of the program fails.
  void Unload();

  [[nodiscard]] Navigator& Navigation() { return *navigator_; }
  [[nodiscard]] CommandBars& Bars() { return *bars_; }
  [[nodiscard]] FolderTreeModel& TreeModel() { return *treeModel_; }
  [[nodiscard]] FileListModel& ListModel() { return *listModel_; }
  [[nodiscard]] FolderTreeView& Tree() { return *treFile_; }
  [[nodiscard]] FileListView& List() { return *lstFile_; }

  [[nodiscard]] OperationState& Operations() { return operations_; }

  [[nodiscard]] WorkspaceFile& Workspace();

  /// Executes a command as if it had been chosen at that place. A key counts as a toolbar's button.
  void Dispatch(CommandId id, CommandPlace from = CommandPlace::MainToolbar);

 Q_SIGNALS:
  /// The unload handler has run.
  void Unloaded();

 protected:
  void closeEvent(QCloseEvent* event) override;
  bool event(QEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void BuildControls();
  /// For files that have to be fetched to be run; null where they cannot be.
  [[nodiscard]] std::unique_ptr<FetchedFiles> MakeFetchedFiles() const;
  void SetTabOrder();
  /// True for the editor of a label and for a box that can be typed into.
  [[nodiscard]] static bool IsTextBox(const QWidget* control);
  /// True for a key of the window that works while a box has the focus.
  [[nodiscard]] bool IsForTheWindow(const QKeyEvent& key) const;
  void BeginEnding(UserPrompts::Ending how);
  /// A display, an operation or a question is on the stack; the window must outlive it.
  [[nodiscard]] bool IsBusy() const;
  void CloseIfWanted();
  /// A message box would disturb neither an operation nor an editor or menu.
  [[nodiscard]] bool MayOpenBox() const;

  void ShowStatus(const QString& text) override;
  void ShowAddress(const QString& address) override;
  void ShowCurrentNode(FolderNode& node) override;
  void UpdateCommandStates(qint32 tag, bool entry) override;
  void EnableDisconnect(bool enabled) override;
  bool IsFilteredOut(const QString& fileName) override;
  void DisplayGivenUp() override;
  void DisplayEnded() override;

  void LetEventsRun() override;
  [[nodiscard]] std::shared_ptr<void> BeginCommand() override;
  [[nodiscard]] bool IsWaiting() const override;
  void SetMainWindowEnabled(bool enabled) override;
  void LetPaintingRun() override;
  void SetBusyPointer(bool busy) override;
  void ShowReason(const QString& line) override;
  void EndGestures() override;
  [[nodiscard]] bool ChoosesAnotherPlace(const QWidget& widget, const QPoint& globalPosition) const override;
  [[nodiscard]] bool TakesAnotherAddress(const QWidget& widget) const override;
  [[nodiscard]] bool ChoosesAnotherPlace(const QWidget& widget, const QKeyEvent& key) const override;
  [[nodiscard]] bool IsInCommand() const override;
  /// Must be called when a command may have ended.
  void NoteEndOfCommand();
  /// A command that may fail is on the stack.
  [[nodiscard]] bool IsOperating() const;
  /// A folder is being displayed, and the user may choose another one.
  [[nodiscard]] bool IsDisplayAlone() const;
  /// The text of the address box is not the one that it had when the display began.
  [[nodiscard]] bool IsAddressEntered() const;

  [[nodiscard]] ActiveSide Active() const override;
  void FocusActiveView() override;
  void EnablePasteButton(bool enabled) override;
  void EnableDisconnectButton(bool enabled) override;
  void EnableDisconnectItem(bool enabled) override;

  AppServices& services_;
  FileAccess files_;
  modLogEvent& log_;
  WindowGeometry geometry_;
  WindowSettings settings_;
  LateFailures lateFailures_;

  std::unique_ptr<ImageList> images_;
  std::unique_ptr<FileTypes> fileTypes_;
  DateFormatter dates_;
  std::unique_ptr<FolderTreeModel> treeModel_;
  std::unique_ptr<FileListModel> listModel_;
  std::unique_ptr<CommandBars> bars_;
  std::unique_ptr<Navigator> navigator_;
  OperationState operations_;
  std::unique_ptr<ActiveView> activeView_;
  std::unique_ptr<CommandStates> states_;
  std::unique_ptr<OperationGuard> guard_;
  std::unique_ptr<FetchedFiles> fetched_;
  std::unique_ptr<FetchedQuestions> fetchedQuestions_;
  std::unique_ptr<FileCommands> fileCommands_;
  std::unique_ptr<Connections> connections_;
  std::unique_ptr<ListLanding> landing_;
  std::unique_ptr<AddressBar> addressBar_;
  std::unique_ptr<FilterBar> filterBar_;
  std::unique_ptr<ViewCommands> viewCommands_;
  std::unique_ptr<MainWindowCommands> windowCommands_;
  std::unique_ptr<CommandDispatcher> dispatcher_;
  std::unique_ptr<ViewEvents> viewEvents_;

  MainArea* area_ = nullptr;
  FolderTreeView* treFile_ = nullptr;
  FileListView* lstFile_ = nullptr;
  QLabel* lblAddress_ = nullptr;
  HistoryBox* cmbAddress_ = nullptr;
  HistoryBox* cmbFilter_ = nullptr;
  StatusLine* sbarMain_ = nullptr;
  /// The text of the address box when the display began, to recognise what is typed during it.
  QString textWhenDisplayBegan_;
  /// Commands on the stack.
  int dispatching_ = 0;
  bool unloaded_ = false;
  /// The window was closed while a display or an operation was running.
  bool closeWanted_ = false;
  QTimer closeAgain_;
};

}  // namespace trevane
