#include "app/window/frmFileMgr.h"

#include "app/log/modLogEvent.h"
#include "app/session/CreateEngineSession.h"
#include "app/settings/KeptLooks.h"
#include "app/settings/SettingsPlace.h"
#include "app/window/CommandBars.h"
#include "app/window/Connections.h"
#include "app/window/MainArea.h"
#include "app/window/MainWindowCommands.h"
#include "app/window/ToolBar.h"
#include "app/window/WindowLayout.h"
#include "base/DisplayText.h"
#include "dialogs/ElidedLabel.h"
#include "engine/controllers/EngineSession.h"
#include "fileops/FileCommands.h"
#include "fileops/OperationGuard.h"
#include "fileops/ViewCommands.h"
#include "fileops/commands/CommandDispatcher.h"
#include "fileops/commands/CommandTable.h"
#include "platform/AppInfo.h"
#include "prompts/ShowFailure.h"
#include "prompts/UserPrompts.h"
#include "views/ImageList.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/NodeTags.h"
#include "views/bars/AddressBar.h"
#include "views/bars/FilterBar.h"
#include "views/bars/HistoryBox.h"
#include "views/drag/RightDrag.h"
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
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QShortcut>
#include <QStatusBar>
#include <QToolButton>
#include <QWindow>

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

namespace trevane {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize kDesignedSize(1120, 680);  // logical pixels
constexpr std::chrono::milliseconds kCloseAgain(50);
constexpr std::chrono::milliseconds kTellLate(50);
constexpr std::chrono::milliseconds kFitEvery(20);
constexpr int kFitTries = 50;
/// Settings of a smaller window, or of none, are read as this.
constexpr int kSmallestExtent = 200;  // logical pixels

/// For as long as it lives.
class Hourglass {
 public:
  explicit Hourglass(QWidget& window) : window_(window) { window_.setCursor(Qt::WaitCursor); }
  ~Hourglass() { window_.unsetCursor(); }
  Hourglass(const Hourglass&) = delete;
  Hourglass& operator=(const Hourglass&) = delete;

 private:
  QWidget& window_;
};

/// No screen is larger: a size beyond it is an error of the file and not one of another machine's.
constexpr int kLargestExtent = 16384;  // logical pixels

/// In logical pixels, of a width or height in twips on a screen of that extent.
int UsableExtent(qint32 twips, int screenExtent) {
  return std::clamp(ToPixels(twips), kSmallestExtent, std::max(kSmallestExtent, screenExtent));
}

/// The box of a settings file that could not be read or written.
Message SettingsFailure(const QString& text, const QString& file, const QString& reason) {
  return FailureMessage(text, {.item = QFileInfo(file).fileName(), .reason = reason + u": "_s + file});
}

}  // namespace

frmFileMgr::frmFileMgr(AppServices& services, EngineSession& session, DriveTable& drives, modLogEvent& log)
    : services_(services), session_(session), drives_(drives), log_(log) {
  setObjectName(u"frmFileMgr"_s);
  setWindowTitle(u"Trevane"_s);
  resize(kDesignedSize);
  KeptLooks::Install();
  setPalette(KeptLooks::PaletteFor(palette()));
  // A box that belongs to no command tells nobody when its caller has returned.
  closeAgain_.setInterval(kCloseAgain);
  connect(&closeAgain_, &QTimer::timeout, this, &frmFileMgr::CloseIfWanted);
  tellLate_.setInterval(kTellLate);
  connect(&tellLate_, &QTimer::timeout, this, &frmFileMgr::TellLateFailures);
  fit_.setInterval(kFitEvery);
  connect(&fit_, &QTimer::timeout, this, &frmFileMgr::FitOntoScreen);
}

frmFileMgr::~frmFileMgr() {
  // The views first: they look at the models. What looks at the views goes before them.
  rightDrag_.reset();
  addressBar_.reset();
  landing_.reset();
  filterBar_.reset();
  delete area_;
}

bool frmFileMgr::Load() {
  if (!CreateEngineSession(session_, services_))
    return false;
  BuildControls();

  navigator_->RebuildTree();
  treFile_->expand(treeModel_->IndexOf(treeModel_->FindByIndex(1)));
  treFile_->expand(treeModel_->IndexOf(treeModel_->FindByIndex(2)));
  SortByName(*listModel_);
  navigator_->DisplayNode(*treeModel_->FindByIndex(1));

  log_.SetFailureListener([this] { logFailure_->show(); });
  log_.OpenLog(services_.programFolder, services_.userLogFolder);
  connections_->LoadDialog();

  loaded_ = true;
  settingsFile_ = Settings().ToRead();
  const ownfile::Outcome read = LoadSettings(settingsFile_, *this, session_);
  settingsRead_ = read.done;
  if (!settingsRead_) {
    services_.prompts.ShowMessage(SettingsFailure(u"Failed Read Ini File."_s, settingsFile_, read.reason));
  }
  return true;
}

void frmFileMgr::BuildControls() {
  images_ = std::make_unique<ImageList>();
  fileTypes_ = std::make_unique<FileTypes>(services_.shellIcons, *images_);
  treeModel_ = std::make_unique<FolderTreeModel>(images_.get());
  listModel_ = std::make_unique<FileListModel>(images_.get(), fileTypes_.get(), &dates_);

  const auto driveToolTip = [this](const QString& root) { return DriveToolTip(drives_, root); };
  treeModel_->SetDriveToolTip(driveToolTip);
  listModel_->SetDriveToolTip(driveToolTip);

  area_ = new MainArea(this);
  setCentralWidget(area_);
  bars_ = std::make_unique<CommandBars>(*menuBar(), area_, *images_);

  auto* lblAddress = new QLabel(u"&Address"_s, area_);
  lblAddress->setObjectName(u"lblAddress"_s);
  cmbAddress_ = new HistoryBox(area_);
  cmbAddress_->setObjectName(u"cmbAddress"_s);
  cmbAddress_->SetSpokenName(u"Address"_s);
  cmbAddress_->setToolTip(u"The address of what is shown; type another one and press Enter to go there"_s);
  lblAddress->setBuddy(cmbAddress_);
  cmbFilter_ = new HistoryBox(area_);
  cmbFilter_->setObjectName(u"cmbFilter"_s);
  cmbFilter_->SetSpokenName(u"Filter"_s);
  cmbFilter_->setToolTip(u"Patterns of file names, with \";\" between them; Enter filters (Alt+I)"_s);
  // The box has no label that could hold an access key.
  connect(new QShortcut(QKeySequence(Qt::ALT | Qt::Key_I), this), &QShortcut::activated, cmbFilter_, [this] {
    cmbFilter_->setFocus(Qt::ShortcutFocusReason);
    cmbFilter_->lineEdit()->selectAll();
  });

  treFile_ = new FolderTreeView(images_.get(), area_);
  treFile_->SetFolders(treeModel_.get());
  lstFile_ = new FileListView(images_.get(), area_);
  lstFile_->SetFiles(listModel_.get());

  sbarMain_ = new QStatusBar(area_);
  sbarMain_->setObjectName(u"sbarMain"_s);
  statusText_ = new ElidedLabel(sbarMain_);
  statusText_->setObjectName(u"sbarMainText"_s);
  sbarMain_->addWidget(statusText_, 1);
  logFailure_ = new QLabel(u"The operation log cannot be written."_s, sbarMain_);
  logFailure_->setObjectName(u"sbarMainLog"_s);
  sbarMain_->addPermanentWidget(logFailure_);
  logFailure_->hide();
  sbarMain_->setSizeGripEnabled(true);

  area_->SetParts({.mainToolBar = &bars_->MainToolBar(),
                   .addressToolBar = &bars_->AddressToolBar(),
                   .addressBox = cmbAddress_,
                   .filterBox = cmbFilter_,
                   .addressLabel = lblAddress,
                   .tree = treFile_,
                   .list = lstFile_,
                   .statusBar = sbarMain_});
  cmbFilter_->setEditText(u"*.*"_s);
  cmbAddress_->setEditText(kWorkspaceAddress.toString());

  navigator_ = std::make_unique<Navigator>(Navigator::Parts{.session = session_,
                                                            .drives = drives_,
                                                            .prompts = services_.prompts,
                                                            .fileTypes = *fileTypes_,
                                                            .tree = *treeModel_,
                                                            .list = *listModel_,
                                                            .listener = *this});
  const OperationParts parts{.session = session_,
                             .drives = drives_,
                             .prompts = services_.prompts,
                             .log = log_,
                             .navigator = *navigator_,
                             .fileTypes = *fileTypes_,
                             .tree = *treeModel_,
                             .list = *listModel_,
                             .treeView = *treFile_,
                             .listView = *lstFile_,
                             .host = *this};
  // The bases are private.
  NavigatorListener& listener = *this;
  OperationHost& host = *this;
  CommandHost& commandHost = *this;
  guard_ = std::make_unique<OperationGuard>(*navigator_, services_.prompts);
  fileCommands_ = std::make_unique<FileCommands>(parts, operations_, *guard_, commandHost);
  connections_ = std::make_unique<Connections>(services_, parts, listener, commandHost, *this);
  landing_ = std::make_unique<ListLanding>(*lstFile_);
  addressBar_ = std::make_unique<AddressBar>(*cmbAddress_, *lstFile_,
                                             AddressNavigation::Parts{.session = session_,
                                                                      .drives = drives_,
                                                                      .prompts = services_.prompts,
                                                                      .tree = *treeModel_,
                                                                      .navigator = *navigator_,
                                                                      .reasonLine = host});
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
    bars_->SetChecked(CommandId::FilterOnOff, true);
    Dispatch(CommandId::FilterOnOff);
  });
  connect(bars_.get(), &CommandBars::Triggered, this, &frmFileMgr::Dispatch);
  ConnectViews();
  ConnectFileCommands();
  SetTabOrder();
}

void frmFileMgr::SetTabOrder() {
  const std::vector<QToolButton*> buttons = bars_->MainToolBar().Buttons();
  QWidget* last = nullptr;
  const auto follow = [&last](QWidget* next) {
    if (last)
      QWidget::setTabOrder(last, next);
    last = next;
  };
  // Each box stands before its own buttons; the tool buttons are last, since all of them have a key of their
  // own and nobody is to pass them on the way from the list to the filter.
  follow(cmbAddress_);
  for (QToolButton* button : bars_->AddressToolBar().Buttons())
    follow(button);
  follow(treFile_);
  follow(lstFile_);
  follow(cmbFilter_);
  const auto firstOfFilter = std::ranges::find(buttons, bars_->Button(CommandId::FilterOnOff));
  std::for_each(firstOfFilter, buttons.end(), follow);
  std::for_each(buttons.begin(), firstOfFilter, follow);
}

void frmFileMgr::ConnectViews() {
  connect(treFile_, &FolderTreeView::NodeClicked, this, [this](FolderNode* node) {
    if (services_.prompts.IsEnding())
      return;
    navigator_->DisplayNode(*node);
    // The node itself was pointed at, which is more than that its place is displayed.
    if (const FolderNode* current = navigator_->CurrentNode(); current && !navigator_->IsDisplaying())
      UpdateCommandStates(current->Tag(), true);
  });
  connect(treFile_, &FolderTreeView::ContextMenuRequested, this,
          [this](FolderNode* /*node*/, const QPoint& position) { PopUpTreeMenu(position); });
  connect(treFile_, &FolderTreeView::GotFocus, this, [this] { ViewGotFocus(treFile_->objectName()); });
  connect(lstFile_, &FileListView::GotFocus, this, [this] { ViewGotFocus(lstFile_->objectName()); });
  connect(lstFile_, &FileListView::ItemActivated, this, [this](FileListModel::Handle item) {
    const qint32 tag = listModel_->Tag(item);
    fileCommands_->OpenItem(item);
    if (!navigator_->IsDisplaying() && !services_.prompts.IsEnding())
      UpdateCommandStates(tag, true);
  });
  connect(lstFile_, &FileListView::ContextMenuRequested, this, &frmFileMgr::PopUpListMenu);
  connect(lstFile_, &FileListView::EmptySpaceReleased, this, &frmFileMgr::ListSpaceReleased);
  connect(lstFile_, &FileListView::SelectionChanged, this, &frmFileMgr::ListSelectionChanged);
  connect(listModel_.get(), &FileListModel::dataChanged, this,
          [this](const QModelIndex& first, const QModelIndex& /*last*/, const QList<int>& roles) {
            // Another name, and not only another look.
            if (roles.isEmpty() && activeView_ == lstFile_->objectName() &&
                lstFile_->selectionModel()->isRowSelected(first.row(), QModelIndex()))
              ShowListSelection();
          });
}

void frmFileMgr::ConnectFileCommands() {
  treFile_->SetLabelEditHandler(&fileCommands_->Labels());
  lstFile_->SetLabelEditHandler(&fileCommands_->Labels());
  connect(lstFile_, &FileListView::CopyKeyPressed, this, [this] { Dispatch(CommandId::Copy); });
  connect(lstFile_, &FileListView::CutKeyPressed, this, [this] { Dispatch(CommandId::Cut); });
  connect(lstFile_, &FileListView::PasteKeyPressed, this, &frmFileMgr::PasteByKey);
  connect(lstFile_, &FileListView::ParentKeyPressed, this, [this] { Dispatch(CommandId::Parent); });
  connect(treFile_, &FolderTreeView::ParentKeyPressed, this, [this] { Dispatch(CommandId::Parent); });
  for (HistoryBox* box : {cmbAddress_, cmbFilter_})
    connect(box, &HistoryBox::ParentKeyPressed, this, [this] { Dispatch(CommandId::Parent); });
  connect(lstFile_, &FileListView::PropertiesKeyPressed, this, [this] { Dispatch(CommandId::Properties); });
  connect(treFile_, &FolderTreeView::PropertiesKeyPressed, this, [this] { Dispatch(CommandId::Properties); });
  rightDrag_ = std::make_unique<RightDrag>(*treFile_, *lstFile_, *fileCommands_);
  connect(rightDrag_.get(), &RightDrag::Dropped, this,
          [this](const QPoint& position) { bars_->PopupMenu(CommandPlace::DragPopup).popup(position); });
}

void frmFileMgr::ShowModeless() {
  shown_ = true;
  switch (state_) {
    case WindowState::Normal:
      show();
      break;
    case WindowState::Minimised:
      showMinimized();
      break;
    case WindowState::Maximised:
      showMaximized();
      break;
  }
  fit_.start();
}

void frmFileMgr::FitOntoScreen() {
  // Another time, when it is restored.
  if (!isVisible() || isMinimized() || isMaximized()) {
    fit_.stop();
    return;
  }
  // The window system puts the frame around it in its own time; there may be none.
  const QMargins frame = windowHandle()->frameMargins();
  if (++fitTries_ < kFitTries && frame.isNull())
    return;
  fit_.stop();
  const QRect fitting = FitToScreen(geometry(), frame, screen()->availableGeometry());
  if (fitting == geometry())
    return;
  narrowed_ = Narrowed{.asked = size(), .given = fitting.size()};
  setGeometry(fitting);
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
    // What runs is on the stack below this: it ends first, and the window closes then.
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
  // Losing the focus would rename what a label editor stands on.
  if (treFile_)
    treFile_->CancelLabelEdit();
  if (lstFile_)
    lstFile_->CancelLabelEdit();
  services_.prompts.End(how);
  if (navigator_)
    navigator_->CancelDisplay();
}

bool frmFileMgr::IsBusy() const {
  return services_.prompts.IsAsking() || (navigator_ && navigator_->IsDisplaying()) ||
         (fileCommands_ && connections_ && IsOperating());
}

void frmFileMgr::Unload() {
  if (std::exchange(unloaded_, true))
    return;
  BeginEnding(UserPrompts::Ending::ByUser);
  closeAgain_.stop();
  services_.prompts.Gauge().UnloadGage();
  services_.prompts.UnloadWindows();
  if (connections_)
    connections_->UnloadDialog();
  ReleaseEngine(session_);
  // A window that was not loaded to its end knows no settings: those in the file are left as they are.
  if (loaded_)
    SaveAllSettings();
  log_.CloseLog();
  Q_EMIT Unloaded();
}

void frmFileMgr::SaveAllSettings() {
  const SettingsPlace place = Settings();
  // What could not be read is not lost with the file that replaces it.
  const bool isFree = settingsRead_ || place.PutAway(settingsFile_);
  const QString file = place.ToWrite();
  ownfile::MakePrivateFolder(QFileInfo(file).path());
  ownfile::Outcome written;
  if (isFree || file != settingsFile_) {
    written = SaveSettings(file, *this, session_, QDir::currentPath());
  } else {
    written.reason = u"The old file could be neither read nor renamed"_s;
  }
  if (!written) {
    Message message = SettingsFailure(u"Failed Save Ini File."_s, file, written.reason);
    message.isLastWord = true;
    services_.prompts.ShowMessage(message);
  }
}

SettingsPlace frmFileMgr::Settings() const {
  const QString name = services_.baseName + u".ini"_s;
  const QString& own = services_.userSettingsFolder;
  return {services_.programFolder + appinfo::PathSeparator() + name,
          own.isEmpty() ? QString() : own + appinfo::PathSeparator() + name};
}

bool frmFileMgr::IsTextBox(const QWidget* control) {
  const auto* box = qobject_cast<const QComboBox*>(control);
  return (box && box->isEditable()) || qobject_cast<const QLineEdit*>(control);
}

bool frmFileMgr::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride && IsTextBox(focusWidget())) {
    // While a label or a box is edited a menu's key is the editor's, also one that it makes nothing of.
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
    if (area_)
      area_->Arrange();
    if (shown_ && fitTries_ == 0)
      fit_.start();
  }
  if (event->type() == QEvent::PaletteChange) {
    // The desktop has other colours now.
    if (const QPalette kept = KeptLooks::PaletteFor(palette()); kept != palette())
      setPalette(kept);
  }
}

void frmFileMgr::Dispatch(CommandId id, CommandPlace from) {
  if (services_.prompts.IsEnding()) {
    return;
  }
  // A tool button takes no focus, so that an editor would lose what has been typed when the view is filled
  // anew. Closing discards it.
  if (id != CommandId::Close) {
    treFile_->CommitLabel();
    lstFile_->CommitLabel();
  }
  if (!IsOperating()) {
    reasonShown_ = false;
  }
  // A paste takes care of the pointer itself: one of its ways out keeps the hourglass.
  std::optional<Hourglass> hourglass;
  if (from == CommandPlace::MainToolbar && id != CommandId::Paste && !IsOperating()) {
    hourglass.emplace(*this);
  }
  dispatcher_->Execute(id);
  if (FindCommand(id).kind == CommandKind::Operation) {
    CloseIfWanted();
  }
}

void frmFileMgr::PopUpTreeMenu(const QPoint& position) {
  FolderNode* current = navigator_->CurrentNode();
  if (!current)
    return;
  if (IsWorkspace(current->Tag())) {
    bars_->PopupMenu(CommandPlace::WorkspacePopup).popup(position);
    return;
  }
  UpdateCommandStates(current->Tag(), true);
  bars_->PopupMenu(CommandPlace::EntryPopup).popup(position);
}

void frmFileMgr::PopUpListMenu(FileListModel::Handle item, const QPoint& position) {
  UpdateCommandStates(listModel_->Tag(item), true);
  bars_->PopupMenu(CommandPlace::EntryPopup).popup(position);
}

void frmFileMgr::ListSpaceReleased(Qt::MouseButton button, const QPoint& position) {
  ShowStatus(QString::number(listModel_->Count()) + u" Objects."_s);
  if (const FolderNode* current = navigator_->CurrentNode())
    UpdateCommandStates(current->Tag(), false);
  if (button == Qt::RightButton)
    bars_->PopupMenu(CommandPlace::EntryPopup).popup(position);
}

void frmFileMgr::ListSelectionChanged() {
  ShowListSelection();
  UpdateStatesOfListSelection();
}

void frmFileMgr::ShowListSelection() {
  const auto selected = lstFile_->SelectedItems();
  if (selected.empty())
    ShowStatus(QString::number(listModel_->Count()) + u" Objects."_s);
  else if (selected.size() == 1)
    ShowStatus(u"Selected "_s + listModel_->Text(selected.front()));
  else
    ShowStatus(QString::number(selected.size()) + u" objects selected"_s);
}

void frmFileMgr::UpdateStatesOfListSelection() {
  const auto selected = lstFile_->SelectedItems();
  // Of several items the first stands for all; a controller among others can be disconnected, though.
  if (!selected.empty()) {
    const qint32 tag = listModel_->Tag(selected.front());
    UpdateCommandStates(tag, true);
    EnableDisconnect(std::any_of(selected.begin(), selected.end(), [this](FileListModel::Handle item) {
      return IsController(listModel_->Tag(item));
    }));
  } else if (const FolderNode* current = navigator_->CurrentNode()) {
    UpdateCommandStates(current->Tag(), false);
    EnableDisconnect(IsController(current->Tag()));
  }
}

void frmFileMgr::PasteByKey() {
  // As of now: a Copy changes no state of the menu.
  UpdateStatesOfListSelection();
  if (bars_->IsEnabled(CommandPlace::EditMenu, CommandId::Paste))
    Dispatch(CommandId::Paste);
}

void frmFileMgr::ViewGotFocus(const QString& name) {
  const QString before = std::exchange(activeView_, name);
  // At the start the window has said what it shows.
  const bool isOther = !before.isEmpty() && before != name;
  const FolderNode* current = navigator_->CurrentNode();
  if (name == treFile_->objectName()) {
    EnableDisconnect(current && IsController(current->Tag()));
    if (isOther && current)
      ShowStatus(u"Selected "_s + current->Text());
  } else if (isOther && lstFile_->selectionModel()->hasSelection()) {
    ShowListSelection();
  }
}

void frmFileMgr::FocusActiveView() {
  if (activeView_ == lstFile_->objectName())
    lstFile_->setFocus();
  else
    treFile_->setFocus();
}

void frmFileMgr::ShowStatus(const QString& text) {
  // What an operation that failed displays at its end is no news; the reason is.
  if (reasonShown_ && IsOperating())
    return;
  reasonShown_ = false;
  statusText_->setText(DisplayText(text));
}

void frmFileMgr::ShowReason(const QString& line) {
  reasonShown_ = true;
  statusText_->setText(DisplayText(line));
}

bool frmFileMgr::IsOperating() const {
  return guard_->IsRunning() || connections_->Workspace().IsOpening();
}

void frmFileMgr::ShowAddress(const QString& address) {
  // What the user has typed while a long display came to its end is the next place to go to.
  const bool typed = cmbAddress_->hasFocus() && cmbAddress_->lineEdit()->isModified() &&
                     cmbAddress_->currentText() != textWhenDisplayBegan_;
  if (!typed)
    cmbAddress_->setEditText(address);
  if (!navigator_->IsDisplaying())
    landing_->PlaceRenamed(address);
}

void frmFileMgr::ShowCurrentNode(FolderNode& node) {
  landing_->BeginDisplay(node.FullPath());
  textWhenDisplayBegan_ = cmbAddress_->currentText();
  filterBar_->BeginDisplay();
  treFile_->SelectNode(&node);
}

void frmFileMgr::UpdateCommandStates(qint32 tag, bool entry) {
  const FolderNode* current = navigator_->CurrentNode();
  bars_->ApplyState({.tag = tag,
                     .entry = entry,
                     .clipboardCount = operations_.clipboard.Count(),
                     .selectedListItems = static_cast<int>(lstFile_->selectionModel()->selectedRows().size()),
                     .hasParent = current && !IsWorkspace(current->Tag())});
}

void frmFileMgr::EnableDisconnect(bool enabled) {
  EnableDisconnectButton(enabled);
  EnableDisconnectItem(enabled);
}

bool frmFileMgr::IsFilteredOut(const QString& fileName) {
  return filterBar_->IsFilteredOut(fileName);
}

void frmFileMgr::LetEventsRun() {
  QCoreApplication::processEvents();
}

void frmFileMgr::DisplayEnded() {
  landing_->EndDisplay(navigator_->ListTag());
  fileCommands_->DisplayEnded();
  addressBar_->DisplayEnded();
  CloseIfWanted();
}

void frmFileMgr::CloseIfWanted() {
  if (std::exchange(closeWanted_, false))
    QMetaObject::invokeMethod(this, &QWidget::close, Qt::QueuedConnection);
}

void frmFileMgr::RunFailedLate(const QString& path, const QString& reason) {
  lateFailures_.push_back({.item = path.mid(path.lastIndexOf(u'/') + 1), .reason = reason});
  tellLate_.start();
}

void frmFileMgr::TellLateFailures() {
  if (services_.prompts.IsEnding())
    lateFailures_.clear();
  if (lateFailures_.empty()) {
    tellLate_.stop();
    return;
  }
  // A box would take the keyboard from a menu, and from a label whose editor renames as it loses it.
  if (IsBusy() || QApplication::activeModalWidget() || QApplication::activePopupWidget() ||
      qobject_cast<QLineEdit*>(focusWidget()))
    return;
  const Failure failure = lateFailures_.front();
  lateFailures_.erase(lateFailures_.begin());
  ShowFailure(services_.prompts, *this, u"Failed in the Run() method."_s, failure);
}

void frmFileMgr::LetPaintingRun() {
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void frmFileMgr::SetMainWindowEnabled(bool enabled) {
  setEnabled(enabled);
  // A window that was disabled has lost its focus.
  if (enabled && !focusWidget())
    FocusActiveView();
}

void frmFileMgr::SetBusyPointer(bool busy) {
  if (busy)
    setCursor(Qt::WaitCursor);
  else
    unsetCursor();
}

ActiveSide frmFileMgr::Active() const {
  const QWidget* control = focusWidget();
  // An editor of a label stands in its view.
  const auto has = [control](const QWidget* view) { return control == view || view->isAncestorOf(control); };
  // A button of a bar acts on the view that was used last, pressed by mouse or by key.
  const bool onBar = control && (bars_->MainToolBar().isAncestorOf(control) ||
                                 bars_->AddressToolBar().isAncestorOf(control));
  if (control && !onBar)
    return has(treFile_) ? ActiveSide::Tree : has(lstFile_) ? ActiveSide::List : ActiveSide::Neither;
  return activeView_ == treFile_->objectName()   ? ActiveSide::Tree
         : activeView_ == lstFile_->objectName() ? ActiveSide::List
                                                 : ActiveSide::Neither;
}

void frmFileMgr::EnablePasteButton(bool enabled) {
  bars_->SetEnabled(CommandPlace::MainToolbar, CommandId::Paste, enabled);
}

void frmFileMgr::EnableDisconnectButton(bool enabled) {
  bars_->SetEnabled(CommandPlace::MainToolbar, CommandId::Disconnect, enabled);
}

void frmFileMgr::EnableDisconnectItem(bool enabled) {
  bars_->SetEnabled(CommandPlace::FileMenu, CommandId::Disconnect, enabled);
}

qint32 frmFileMgr::WidthTwips() const {
  return ToTwips(NormalSize().width());
}

qint32 frmFileMgr::HeightTwips() const {
  return ToTwips(NormalSize().height());
}

void frmFileMgr::SetWidthTwips(qint32 width) {
  const int given = UsableExtent(width, screen() ? screen()->virtualSize().width() : 0);
  clampedWidth_ = {.asked = ToPixels(width) > kLargestExtent ? given : std::max(ToPixels(width), given),
                   .given = given};
  resize(given, this->height());
}

void frmFileMgr::SetHeightTwips(qint32 height) {
  const int given = UsableExtent(height, screen() ? screen()->virtualSize().height() : 0);
  clampedHeight_ = {.asked = ToPixels(height) > kLargestExtent ? given : std::max(ToPixels(height), given),
                    .given = given};
  resize(this->width(), given);
}

WindowState frmFileMgr::State() const {
  if (!shown_)
    return state_;
  if (isMinimized())
    return WindowState::Minimised;
  return isMaximized() ? WindowState::Maximised : WindowState::Normal;
}

void frmFileMgr::SetState(WindowState state) {
  state_ = state;
}

void frmFileMgr::HideWindow() {
  normalSize_ = NormalSize();
  hide();
}

QSize frmFileMgr::NormalSize() const {
  if (!normalSize_.isEmpty())
    return normalSize_;
  const bool elsewhere = shown_ && (isMaximized() || isMinimized()) && normalGeometry().isValid();
  const QSize normal = elsewhere ? normalGeometry().size() : size();
  // On a larger screen, or on one of another scale, it is to have its size again.
  QSize asked = narrowed_ && narrowed_->given == normal ? narrowed_->asked : normal;
  if (asked.width() == clampedWidth_.given)
    asked.setWidth(clampedWidth_.asked);
  if (asked.height() == clampedHeight_.given)
    asked.setHeight(clampedHeight_.asked);
  return asked;
}

}  // namespace trevane
