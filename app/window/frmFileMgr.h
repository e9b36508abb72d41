#pragma once

#include "app/session/AppServices.h"
#include "app/settings/Settings.h"
#include "fileops/CommandHost.h"
#include "fileops/OperationHost.h"
#include "fileops/OperationState.h"
#include "fileops/commands/CommandId.h"
#include "fileops/commands/CommandPlace.h"
#include "prompts/UserPrompts.h"
#include "views/list/DateFormatter.h"
#include "views/list/FileListModel.h"
#include "views/navigation/NavigatorListener.h"

#include <QMainWindow>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

class QLabel;
class QStatusBar;

namespace trevane {

class AddressBar;
class CommandBars;
class CommandDispatcher;
class Connections;
class DriveTable;
class ElidedLabel;
class EngineSession;
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
class RightDrag;
class SettingsPlace;
class ViewCommands;
class WorkspaceFile;
class modLogEvent;

/// The main window, as the place where its parts are put together. It is loaded once, hidden; closing it
/// takes the program down in order.
class frmFileMgr final : public QMainWindow,
                         private NavigatorListener,
                         private OperationHost,
                         private CommandHost,
                         private SettingsWindow {
  Q_OBJECT

 public:
  /// `session`, `drives` and `log` outlive the window.
  frmFileMgr(AppServices& services, EngineSession& session, DriveTable& drives, modLogEvent& log);
  ~frmFileMgr() override;

  /// The load handler. False when the engine session cannot be created; the window has nothing to show then
  /// and is to be dropped.
  [[nodiscard]] bool Load();

  /// Shows the window in the state that the settings file asked for.
  void ShowModeless();
  void FocusTree();

  /// Ends the program on the system's demand: nobody is asked or told anything any more. Not before what runs
  /// has come to its end; `Unloaded` tells.
  void CloseUnattended();

  /// A file that was started to be opened could not be, as the system tells later. It is told as soon as
  /// nothing else runs or stands on the screen.
  void RunFailedLate(const QString& path, const QString& reason);

  /// The unload handler: runs once, when the window closes or the program gives up.
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
  void SetTabOrder();
  void ConnectViews();
  void ConnectFileCommands();

  void SaveAllSettings();
  void PopUpTreeMenu(const QPoint& position);
  void PopUpListMenu(FileListModel::Handle item, const QPoint& position);
  void ListSpaceReleased(Qt::MouseButton button, const QPoint& position);
  void ListSelectionChanged();
  /// The status bar says what is selected in the list.
  void ShowListSelection();
  void UpdateStatesOfListSelection();
  void PasteByKey();
  void ViewGotFocus(const QString& name);
  /// The label or box that takes what is typed.
  [[nodiscard]] static bool IsTextBox(const QWidget* control);
  /// One of the window's own keys that the box with the focus leaves alone.
  [[nodiscard]] bool IsForTheWindow(const QKeyEvent& key) const;
  void BeginEnding(UserPrompts::Ending how);
  /// Something is on the stack that the window must outlive.
  [[nodiscard]] bool IsBusy() const;
  void CloseIfWanted();
  void TellLateFailures();

  void ShowStatus(const QString& text) override;
  void ShowAddress(const QString& address) override;
  void ShowCurrentNode(FolderNode& node) override;
  void UpdateCommandStates(qint32 tag, bool entry) override;
  void EnableDisconnect(bool enabled) override;
  bool IsFilteredOut(const QString& fileName) override;
  void DisplayEnded() override;

  /// For displays and operations.
  void LetEventsRun() override;
  void SetMainWindowEnabled(bool enabled) override;
  void LetPaintingRun() override;
  void SetBusyPointer(bool busy) override;
  void ShowReason(const QString& line) override;
  /// A command that may fail is on the stack.
  [[nodiscard]] bool IsOperating() const;

  [[nodiscard]] ActiveSide Active() const override;
  void FocusActiveView() override;
  void EnablePasteButton(bool enabled) override;
  void EnableDisconnectButton(bool enabled) override;
  void EnableDisconnectItem(bool enabled) override;

  /// Beside the executable, of its name.
  [[nodiscard]] SettingsPlace Settings() const;
  /// Brings a window that is larger than the screen onto it, as soon as its frame is known.
  void FitOntoScreen();
  /// The size that the window has when it is neither minimised nor maximised.
  [[nodiscard]] QSize NormalSize() const;
  [[nodiscard]] qint32 WidthTwips() const override;
  [[nodiscard]] qint32 HeightTwips() const override;
  void SetWidthTwips(qint32 width) override;
  void SetHeightTwips(qint32 height) override;
  [[nodiscard]] WindowState State() const override;
  void SetState(WindowState state) override;
  void HideWindow() override;

  AppServices& services_;
  EngineSession& session_;
  DriveTable& drives_;
  modLogEvent& log_;

  std::unique_ptr<ImageList> images_;
  std::unique_ptr<FileTypes> fileTypes_;
  DateFormatter dates_;
  std::unique_ptr<FolderTreeModel> treeModel_;
  std::unique_ptr<FileListModel> listModel_;
  std::unique_ptr<CommandBars> bars_;
  std::unique_ptr<Navigator> navigator_;
  OperationState operations_;
  std::unique_ptr<OperationGuard> guard_;
  std::unique_ptr<FileCommands> fileCommands_;
  std::unique_ptr<Connections> connections_;
  std::unique_ptr<RightDrag> rightDrag_;
  std::unique_ptr<ListLanding> landing_;
  std::unique_ptr<AddressBar> addressBar_;
  std::unique_ptr<FilterBar> filterBar_;
  std::unique_ptr<ViewCommands> viewCommands_;
  std::unique_ptr<MainWindowCommands> windowCommands_;
  std::unique_ptr<CommandDispatcher> dispatcher_;

  MainArea* area_ = nullptr;
  FolderTreeView* treFile_ = nullptr;
  FileListView* lstFile_ = nullptr;
  HistoryBox* cmbAddress_ = nullptr;
  HistoryBox* cmbFilter_ = nullptr;
  QStatusBar* sbarMain_ = nullptr;
  ElidedLabel* statusText_ = nullptr;
  /// Shown from the first line on that the log did not take.
  QLabel* logFailure_ = nullptr;
  /// Of the address box, so that what is typed during a display is told from what stood there before.
  QString textWhenDisplayBegan_;
  /// The status bar shows why something failed.
  bool reasonShown_ = false;
  /// The view that had the focus last.
  QString activeView_;
  /// The state that the window is shown in, and after it has been shown the one that it was last seen in.
  WindowState state_ = WindowState::Normal;
  /// Kept when the window is hidden for good.
  QSize normalSize_;
  /// What the screen made of a size that it had no room for.
  struct Narrowed {
    QSize asked;
    QSize given;
  };
  std::optional<Narrowed> narrowed_;
  /// The width and height of the settings where no screen is that large, and what they became.
  struct Clamped {
    int asked = 0;
    int given = 0;
  };
  Clamped clampedWidth_;
  Clamped clampedHeight_;
  /// Runs until the window has been fitted onto the screen.
  QTimer fit_;
  int fitTries_ = 0;
  bool shown_ = false;
  bool loaded_ = false;
  bool settingsRead_ = true;
  /// The file that they were read from.
  QString settingsFile_;
  bool unloaded_ = false;
  /// The window was closed while a display or an operation was running.
  bool closeWanted_ = false;
  QTimer closeAgain_;
  std::vector<Failure> lateFailures_;
  /// Runs as long as there are some.
  QTimer tellLate_;
};

}  // namespace trevane
