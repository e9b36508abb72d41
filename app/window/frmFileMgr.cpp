#include "app/window/frmFileMgr.h"

#include "app/log/modLogEvent.h"
#include "app/session/CreateEngineSession.h"
#include "app/settings/KeptLooks.h"
#include "app/window/ActiveView.h"
#include "app/window/CommandBars.h"
#include "app/window/CommandStates.h"
#include "app/window/Connections.h"
#include "app/window/MainArea.h"
#include "app/window/MainWindowCommands.h"
#include "app/window/StatusLine.h"
#include "app/window/ToolBar.h"
#include "app/window/ViewEvents.h"
#include "dialogs/WindowWaiter.h"
#include "engine/controllers/EngineSession.h"
#include "engine/controllers/FindControllerOfAddress.h"
#include "engine/fetched/FetchedFiles.h"
#include "engine/remote/LearntClock.h"
#include "engine/remote/NestedCall.h"
#include "fileops/FetchedQuestions.h"
#include "fileops/FileCommands.h"
#include "fileops/OperationGuard.h"
#include "fileops/ViewCommands.h"
#include "fileops/commands/CommandDispatcher.h"
#include "fileops/commands/CommandTable.h"
#include "prompts/UserPrompts.h"
#include "views/ImageList.h"
#include "views/ViewKeys.h"
#include "views/addresses/Addresses.h"
#include "views/bars/AddressBar.h"
#include "views/bars/FilterBar.h"
#include "views/bars/HistoryBox.h"
#include "views/list/FileListModel.h"
#include "views/list/FileListView.h"
#include "views/list/FileTypes.h"
#include "views/list/ListLanding.h"
#include "views/list/ListSorting.h"
#include "views/navigation/Navigator.h"
#include "views/tree/DriveToolTip.h"
#include "views/tree/FolderTreeModel.h"
#include "views/tree/FolderTreeView.h"

#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QShortcut>
#include <QToolButton>

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>
#include <vector>

namespace trevane {

namespace {

constexpr QSize kDesignedSize(1120, 680);  // logical pixels
constexpr std::chrono::milliseconds kCloseAgain(50);

/// Shows the hourglass during its lifetime.
class Hourglass {
 public:
  explicit Hourglass(QWidget& window) : window_(window) { window_.setCursor(Qt::WaitCursor); }
  ~Hourglass() { window_.unsetCursor(); }
  Hourglass(const Hourglass&) = delete;
  Hourglass& operator=(const Hourglass&) = delete;

 private:
  QWidget& window_;
};

}  // namespace

frmFileMgr::frmFileMgr(AppServices& services, EngineSession& session, DriveTable& drives, modLogEvent& log)
    : services_(services),
      files_(session, drives, services.prompts),
      log_(log),
      geometry_(*this),
      settings_(services, session, geometry_),
      lateFailures_(services.prompts, *this, [this] { return !MayOpenBox(); }) {
  setObjectName(QStringLiteral("frmFileMgr"));
  setWindowTitle(QStringLiteral("Trevane"));
  resize(kDesignedSize);
  KeptLooks::Install();
  setPalette(KeptLooks::PaletteFor(palette()));
  // The end of a box that belongs to no command is not reported.
  closeAgain_.setInterval(kCloseAgain);
  connect(&closeAgain_, &QTimer::timeout, this, &frmFileMgr::CloseIfWanted);
  if (services_.waiter != nullptr) {
    services_.waiter->SetMainWindow(this, this);
  }
}

frmFileMgr::~frmFileMgr() {
  if (services_.waiter != nullptr) {
    services_.waiter->SetMainWindow(nullptr, nullptr);
  }
  // The views use the models, and these parts use the views.
  viewEvents_.reset();
  addressBar_.reset();
  landing_.reset();
  filterBar_.reset();
  delete area_;
}

bool frmFileMgr::Load() {
  if (!CreateEngineSession(files_.Session(), services_)) {
    return false;
  }
  BuildControls();

  navigator_->Builder().RebuildTree();
  treFile_->expand(treeModel_->IndexOf(treeModel_->FindByIndex(1)));
  treFile_->expand(treeModel_->IndexOf(treeModel_->FindByIndex(2)));
  SortByName(*listModel_);
  navigator_->DisplayNode(*treeModel_->FindByIndex(1));

  log_.SetFailureListener([this] { sbarMain_->ShowLogFailure(); });
  log_.OpenLog(services_.programFolder, services_.userLogFolder);
  connections_->LoadDialog();

  settings_.Load();
  return true;
}

void frmFileMgr::BuildControls() {
  images_ = std::make_unique<ImageList>();
  fileTypes_ = std::make_unique<FileTypes>(services_.shellIcons, *images_);
  treeModel_ = std::make_unique<FolderTreeModel>(images_.get());
  listModel_ = std::make_unique<FileListModel>(images_.get(), fileTypes_.get(), &dates_);

  const auto driveToolTip = [this](const QString& root) { return DriveToolTip(files_.Drives(), root); };
  treeModel_->SetDriveToolTip(driveToolTip);
  listModel_->SetDriveToolTip(driveToolTip);

  area_ = new MainArea(this);
  setCentralWidget(area_);
  bars_ = std::make_unique<CommandBars>(*menuBar(), area_, *images_);

  lblAddress_ = new QLabel(QStringLiteral("&Address"), area_);
  lblAddress_->setObjectName(QStringLiteral("lblAddress"));
  cmbAddress_ = new HistoryBox(area_);
  cmbAddress_->setObjectName(QStringLiteral("cmbAddress"));
  cmbAddress_->SetSpokenName(QStringLiteral("Address"));
  cmbAddress_->setToolTip(
      QStringLiteral("The address of what is shown; type another one and press Enter to go there"));
  lblAddress_->setBuddy(cmbAddress_);
  cmbFilter_ = new HistoryBox(area_);
  cmbFilter_->setObjectName(QStringLiteral("cmbFilter"));
  cmbFilter_->SetSpokenName(QStringLiteral("Filter"));
  cmbFilter_->setToolTip(
      QStringLiteral("Patterns of file names, with \";\" between them; Enter filters (Alt+I)"));
  // The box has no label that could hold an access key.
  connect(new QShortcut(QKeySequence(Qt::ALT | Qt::Key_I), this), &QShortcut::activated, cmbFilter_, [this] {
    cmbFilter_->setFocus(Qt::ShortcutFocusReason);
    cmbFilter_->lineEdit()->selectAll();
  });

  treFile_ = new FolderTreeView(images_.get(), area_);
  treFile_->SetFolders(treeModel_.get());
  lstFile_ = new FileListView(images_.get(), area_);
  lstFile_->SetFiles(listModel_.get());

  sbarMain_ = new StatusLine(area_);
  activeView_ = std::make_unique<ActiveView>(*this, *treFile_, *lstFile_, *bars_);

  area_->SetParts({.mainToolBar = &bars_->MainToolBar(),
                   .addressToolBar = &bars_->AddressToolBar(),
                   .addressBox = cmbAddress_,
                   .filterBox = cmbFilter_,
                   .addressLabel = lblAddress_,
                   .tree = treFile_,
                   .list = lstFile_,
                   .statusBar = sbarMain_});
  cmbFilter_->setEditText(QStringLiteral("*.*"));
  cmbAddress_->setEditText(kWorkspaceAddress.toString());

  navigator_ = std::make_unique<Navigator>(Navigator::Parts{.files = files_,
                                                            .fileTypes = *fileTypes_,
                                                            .tree = *treeModel_,
                                                            .list = *listModel_,
                                                            .listener = *this});
  fetched_ = MakeFetchedFiles();
  const OperationParts parts{.files = files_,
                             .log = log_,
                             .navigator = *navigator_,
                             .fileTypes = *fileTypes_,
                             .tree = *treeModel_,
                             .list = *listModel_,
                             .treeView = *treFile_,
                             .listView = *lstFile_,
                             .host = *this,
                             .fetched = fetched_.get()};
  // The bases are private.
  NavigatorListener& listener = *this;
  OperationHost& host = *this;
  CommandHost& commandHost = *this;
  states_ = std::make_unique<CommandStates>(*bars_, *navigator_, *lstFile_, operations_);
  guard_ = std::make_unique<OperationGuard>(*navigator_, services_.prompts, [this] { return IsWaiting(); });
  if (fetched_) {
    fetchedQuestions_ = std::make_unique<FetchedQuestions>(
        parts, *guard_, *fetched_, [this] { return !MayOpenBox(); }, [this] { viewCommands_->Refresh(); });
    fetched_->Recover();
  }
  fileCommands_ = std::make_unique<FileCommands>(parts, operations_, *guard_, commandHost);
  connections_ = std::make_unique<Connections>(services_, parts, listener, commandHost, *this);
  landing_ = std::make_unique<ListLanding>(*lstFile_);
  addressBar_ = std::make_unique<AddressBar>(
      *cmbAddress_, *lstFile_,
      AddressNavigation::Parts{
          .files = files_, .tree = *treeModel_, .navigator = *navigator_, .reasonLine = host});
  addressBar_->SetRefusal(
      [this] { return IsWaiting() && !(navigator_->IsDisplaying() && IsAddressEntered()); });
  addressBar_->SetCommand([this] { return BeginCommand(); });
  filterBar_ = std::make_unique<FilterBar>(*cmbFilter_, *navigator_, [this] { viewCommands_->Refresh(); });
  viewCommands_ = std::make_unique<ViewCommands>(ViewCommands::Parts{.navigator = *navigator_,
                                                                     .list = *listModel_,
                                                                     .listView = *lstFile_,
                                                                     .landing = *landing_,
                                                                     .addressBar = *addressBar_,
                                                                     .filterBar = *filterBar_,
                                                                     .host = commandHost});
  windowCommands_ =
      std::make_unique<MainWindowCommands>(MainWindowCommands::Parts{.services = services_,
                                                                     .operations = parts,
                                                                     .dates = dates_,
                                                                     .host = commandHost,
                                                                     .workspace = connections_->Workspace(),
                                                                     .window = *this});
  dispatcher_ = std::make_unique<CommandDispatcher>(CommandTargets{.files = fileCommands_.get(),
                                                                   .connections = &connections_->Commands(),
                                                                   .views = viewCommands_.get(),
                                                                   .window = windowCommands_.get(),
                                                                   .marks = bars_.get()},
                                                    *guard_);
  connect(filterBar_.get(), &FilterBar::SwitchWanted, this, [this] {
    if (dispatcher_->IsRefused(CommandId::FilterOnOff)) {
      return;
    }
    bars_->SetChecked(CommandId::FilterOnOff, true);
    Dispatch(CommandId::FilterOnOff);
  });
  connect(bars_.get(), &CommandBars::Triggered, this, [this](CommandId id, CommandPlace from) {
    if (id == CommandId::GoToAddress && IsDisplayAlone()) {
      addressBar_->Go();
      return;
    }
    if (dispatcher_->IsRefused(id) && FindCommand(id).checkMark != CheckMark::None) {
      // The button or the item has changed by itself.
      bars_->SetChecked(id, !bars_->IsChecked(id));
    }
    Dispatch(id, from);
  });
  for (const HistoryBox* box : {cmbAddress_, cmbFilter_}) {
    connect(box, &HistoryBox::ParentKeyPressed, this, [this] { Dispatch(CommandId::Parent); });
  }
  viewEvents_ =
      std::make_unique<ViewEvents>(ViewEvents::Parts{.views = parts,
                                                     .files = *fileCommands_,
                                                     .host = commandHost,
                                                     .bars = *bars_,
                                                     .states = *states_,
                                                     .activeView = *activeView_,
                                                     .execute = [this](CommandId id) { Dispatch(id); },
                                                     .beginCommand = [this] { return BeginCommand(); }});
  SetTabOrder();
}

std::unique_ptr<FetchedFiles> frmFileMgr::MakeFetchedFiles() const {
  if (services_.fetchedFolder.isEmpty()) {
    return nullptr;
  }
  return std::make_unique<FetchedFiles>(FetchedFiles::Parts{.files = files_,
                                                            .place = services_.fetchedFolder,
                                                            .open = services_.openWithProgram,
                                                            .now = services_.fetchedClock});
}

void frmFileMgr::SetTabOrder() {
  const std::vector<QToolButton*> buttons = bars_->MainToolBar().Buttons();
  QWidget* last = nullptr;
  const auto follow = [&last](QWidget* next) {
    if (last) {
      QWidget::setTabOrder(last, next);
    }
    last = next;
  };
  // Each box comes before its own buttons. The other tool buttons are last: all of them have keys, and they
  // are not passed on the way from the list to the filter.
  follow(cmbAddress_);
  for (QToolButton* button : bars_->AddressToolBar().Buttons()) {
    follow(button);
  }
  follow(treFile_);
  follow(lstFile_);
  follow(cmbFilter_);
  const auto firstOfFilter = std::ranges::find(buttons, bars_->Button(CommandId::FilterOnOff));
  std::for_each(firstOfFilter, buttons.end(), follow);
  std::for_each(buttons.begin(), firstOfFilter, follow);
}

void frmFileMgr::ShowModeless() {
  geometry_.ShowWindow();
}

WorkspaceFile& frmFileMgr::Workspace() {
  return connections_->Workspace();
}

void frmFileMgr::FocusTree() {
  treFile_->setFocus();
}

void frmFileMgr::closeEvent(QCloseEvent* event) {
  BeginEnding(UserPrompts::Ending::ByUser);
  if (IsBusy()) {
    // The operation is on the stack below this call. It ends first, and the window closes then.
    closeWanted_ = true;
    closeAgain_.start();
    event->ignore();
    return;
  }
  Unload();
  event->accept();
}

void frmFileMgr::CloseUnattended() {
  BeginEnding(UserPrompts::Ending::BySystem);
  close();
}

void frmFileMgr::BeginEnding(UserPrompts::Ending how) {
  // A label editor would rename its item when it loses the focus.
  if (treFile_) {
    treFile_->CancelLabelEdit();
  }
  if (lstFile_) {
    lstFile_->CancelLabelEdit();
  }
  services_.prompts.End(how);
  if (navigator_) {
    navigator_->CancelDisplay();
  }
}

bool frmFileMgr::IsBusy() const {
  return IsWaiting() || services_.prompts.IsAsking() || (navigator_ && navigator_->IsDisplaying()) ||
         (fileCommands_ && connections_ && IsOperating());
}

void frmFileMgr::Unload() {
  if (std::exchange(unloaded_, true)) {
    return;
  }
  BeginEnding(UserPrompts::Ending::ByUser);
  closeAgain_.stop();
  services_.prompts.Gauge().UnloadGage();
  services_.prompts.UnloadWindows();
  if (connections_) {
    connections_->UnloadDialog();
  }
  if (fetchedQuestions_) {
    fetchedQuestions_->End();
  }
  services_.stopControllers();
  ReleaseEngine(files_.Session());
  settings_.Save();
  log_.CloseLog();
  if (fetchedQuestions_) {
    fetchedQuestions_->NameKept();
  }
  Q_EMIT Unloaded();
}

bool frmFileMgr::IsTextBox(const QWidget* control) {
  const auto* box = qobject_cast<const QComboBox*>(control);
  return (box && box->isEditable()) || qobject_cast<const QLineEdit*>(control);
}

bool frmFileMgr::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride && IsTextBox(focusWidget())) {
    // While a label or a box is edited, a menu's key belongs to the editor, even when the editor ignores it.
    const auto* key = static_cast<QKeyEvent*>(event);
    if (bars_ && bars_->IsShortcut(key->keyCombination()) && !IsForTheWindow(*key)) {
      event->accept();
      return true;
    }
  }
  return QMainWindow::event(event);
}

bool frmFileMgr::IsForTheWindow(const QKeyEvent& key) const {
  const QWidget* control = focusWidget();
  return (control == cmbAddress_ || control == cmbFilter_) && key.key() == Qt::Key_F5;
}

void frmFileMgr::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() == QEvent::WindowStateChange && !isMinimized()) {
    if (area_) {
      area_->Arrange();
    }
    geometry_.WindowRestored();
  }
  if (event->type() == QEvent::PaletteChange) {
    // The colours of the desktop have changed.
    if (const QPalette kept = KeptLooks::PaletteFor(palette()); kept != palette()) {
      setPalette(kept);
    }
  }
}

void frmFileMgr::Dispatch(CommandId id, CommandPlace from) {
  if (dispatcher_->IsRefused(id)) {
    return;
  }
  const std::shared_ptr<void> command = BeginCommand();
  // A tool button takes no focus, and an editor would lose its text when the view is filled anew. Closing the
  // window discards the text.
  if (id != CommandId::Close) {
    treFile_->CommitLabel();
    lstFile_->CommitLabel();
  }
  if (!IsOperating()) {
    sbarMain_->DropReason();
  }
  // A paste sets the pointer itself; one of its exits keeps the hourglass.
  std::optional<Hourglass> hourglass;
  if (from == CommandPlace::MainToolbar && id != CommandId::Paste && !IsOperating()) {
    hourglass.emplace(*this);
  }
  dispatcher_->Execute(id);
  if (RunsAlone(FindCommand(id).kind)) {
    CloseIfWanted();
  }
}

void frmFileMgr::FocusActiveView() {
  activeView_->Focus();
}

void frmFileMgr::ShowStatus(const QString& text) {
  // The reason of a failure matters more than what the failed operation displays at its end.
  if (!sbarMain_->HasReason() || !IsOperating()) {
    sbarMain_->ShowText(text);
  }
}

void frmFileMgr::ShowReason(const QString& line) {
  sbarMain_->ShowReason(line);
}

bool frmFileMgr::IsOperating() const {
  return guard_->IsRunning() || connections_->Workspace().IsOpening();
}

void frmFileMgr::ShowAddress(const QString& address) {
  // An address that the user typed during a long display is kept.
  const bool typed = cmbAddress_->hasFocus() && cmbAddress_->lineEdit()->isModified() && IsAddressEntered();
  if (!typed) {
    cmbAddress_->setEditText(address);
  }
  const auto controller = FindControllerOfAddress(files_.Session().gIxoCtrls(), address);
  sbarMain_->ShowNotice(controller ? controller->Notice() : QString());
  if (!navigator_->IsDisplaying()) {
    landing_->AddressChanged(address);
  }
}

void frmFileMgr::ShowCurrentNode(FolderNode& node) {
  landing_->BeginDisplay(node.FullPath());
  textWhenDisplayBegan_ = cmbAddress_->currentText();
  filterBar_->BeginDisplay();
  treFile_->SelectNode(&node);
}

void frmFileMgr::UpdateCommandStates(qint32 tag, bool entry) {
  states_->Update(tag, entry);
}

void frmFileMgr::EnableDisconnect(bool enabled) {
  states_->EnableDisconnect(enabled);
}

bool frmFileMgr::IsFilteredOut(const QString& fileName) {
  return filterBar_->IsFilteredOut(fileName);
}

void frmFileMgr::LetEventsRun() {
  const WithinCall within;
  QCoreApplication::processEvents();
}

bool frmFileMgr::IsWaiting() const {
  // A local call that lets events run is like a wait.
  return WithinCall::IsAny() || (services_.waiter != nullptr && services_.waiter->IsWaiting());
}

std::shared_ptr<void> frmFileMgr::BeginCommand() {
  struct Running {
    explicit Running(frmFileMgr& window) : window(window) {
      ++window.dispatching_;
      if (window.services_.learnt != nullptr) {
        scope.emplace(*window.services_.learnt);
      }
    }
    ~Running() {
      scope.reset();
      --window.dispatching_;
      window.NoteEndOfCommand();
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    frmFileMgr& window;
    std::optional<LearntScope> scope;
  };
  return std::make_shared<Running>(*this);
}

void frmFileMgr::EndGestures() {
  if (treFile_) {
    treFile_->EndGestures();
  }
  if (lstFile_) {
    lstFile_->EndGestures();
  }
  if (viewEvents_) {
    viewEvents_->EndGestures();
  }
}

bool frmFileMgr::IsDisplayAlone() const {
  return navigator_ && navigator_->IsDisplaying() && isEnabled() && !services_.prompts.IsEnding();
}

bool frmFileMgr::IsAddressEntered() const {
  return cmbAddress_->currentText() != textWhenDisplayBegan_;
}

bool frmFileMgr::ChoosesAnotherPlace(const QWidget& widget, const QPoint& globalPosition) const {
  if (!IsDisplayAlone()) {
    return false;
  }
  if (&widget == treFile_->viewport()) {
    const FolderNode* node = treeModel_->NodeAt(treFile_->indexAt(widget.mapFromGlobal(globalPosition)));
    return node != nullptr && node != navigator_->CurrentNode();
  }
  if (&widget == lstFile_->viewport()) {
    // A double click opens it; a single one selects it, for Enter.
    const QModelIndex index = lstFile_->indexAt(widget.mapFromGlobal(globalPosition));
    return fileCommands_->IsAnotherPlace(listModel_->HandleAt(index));
  }
  return &widget == bars_->Button(CommandId::GoToAddress) && IsAddressEntered();
}

bool frmFileMgr::TakesAnotherAddress(const QWidget& widget) const {
  return IsDisplayAlone() &&
         (&widget == cmbAddress_ || cmbAddress_->isAncestorOf(&widget) || &widget == lblAddress_);
}

bool frmFileMgr::ChoosesAnotherPlace(const QWidget& widget, const QKeyEvent& key) const {
  if (!IsDisplayAlone() || widget.window() != this) {
    return false;
  }
  if (key.keyCombination() == QKeySequence::mnemonic(lblAddress_->text())[0]) {
    return true;
  }
  const QWidget* const focus = focusWidget();
  if (focus == lstFile_) {
    return ViewKeyOf(key) == ViewKey::Open && fileCommands_->IsAnotherPlace(lstFile_->FocusedItem());
  }
  return focus != nullptr && TakesAnotherAddress(*focus) && HistoryBox::IsTyping(key);
}

bool frmFileMgr::IsInCommand() const {
  return dispatching_ > 0 || (navigator_ && navigator_->IsDisplaying()) ||
         (guard_ && connections_ && IsOperating());
}

void frmFileMgr::NoteEndOfCommand() {
  if (services_.waiter != nullptr && !IsInCommand()) {
    services_.waiter->CommandEnded();
  }
}

void frmFileMgr::DisplayGivenUp() {
  addressBar_->DisplayGivenUp();
  if (services_.waiter != nullptr && services_.waiter->IsWaiting()) {
    services_.waiter->Cancel();
  }
}

void frmFileMgr::DisplayEnded() {
  lstFile_->EndDelayBeforeEdit();
  landing_->EndDisplay(navigator_->CurrentAddress());
  fileCommands_->DisplayEnded();
  addressBar_->DisplayEnded();
  NoteEndOfCommand();
  CloseIfWanted();
}

void frmFileMgr::CloseIfWanted() {
  if (std::exchange(closeWanted_, false)) {
    QMetaObject::invokeMethod(this, &QWidget::close, Qt::QueuedConnection);
  }
}

void frmFileMgr::RunFailedLate(const QString& path, const QString& reason) {
  lateFailures_.Add({.item = path.mid(path.lastIndexOf(u'/') + 1), .reason = reason});
}

bool frmFileMgr::MayOpenBox() const {
  // A box would take the keyboard from a menu, and from a label whose editor renames as it loses it.
  return !IsBusy() && !QApplication::activeModalWidget() && !QApplication::activePopupWidget() &&
         !qobject_cast<QLineEdit*>(focusWidget());
}

void frmFileMgr::LetPaintingRun() {
  const WithinCall within;
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void frmFileMgr::SetMainWindowEnabled(bool enabled) {
  if (services_.waiter != nullptr) {
    // Input to a disabled window is lost anyway, but not what is still queued when it is enabled.
    if (enabled) {
      services_.waiter->EndOperation();
    } else {
      services_.waiter->BeginOperation();
    }
  }
  setEnabled(enabled);
  // A disabled window loses its focus.
  if (enabled && !focusWidget()) {
    FocusActiveView();
  }
}

void frmFileMgr::SetBusyPointer(bool busy) {
  if (busy) {
    setCursor(Qt::WaitCursor);
  } else {
    unsetCursor();
  }
}

ActiveSide frmFileMgr::Active() const {
  return activeView_->Active();
}

void frmFileMgr::EnablePasteButton(bool enabled) {
  states_->EnablePasteButton(enabled);
}

void frmFileMgr::EnableDisconnectButton(bool enabled) {
  states_->EnableDisconnectButton(enabled);
}

void frmFileMgr::EnableDisconnectItem(bool enabled) {
  states_->EnableDisconnectItem(enabled);
}

}  // namespace trevane
