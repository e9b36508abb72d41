#include "app/window/Connections.h"

#include "app/session/AppServices.h"
#include "app/window/CommandBars.h"
#include "fileops/OperationHost.h"
#include "views/addresses/NodeTags.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderNode.h"

#include <QScopedValueRollback>
#include <QWidget>

namespace trevane {

using namespace Qt::StringLiterals;

namespace {
constexpr int kDisconnectButton = 13;
constexpr int kDisconnectItem = 5;
}  // namespace

Connections::Connections(const Parts& parts)
    : parts_(parts),
      nodes_(parts.tree, parts.list, parts.navigator, parts.listener),
      connection_{.session = parts.session, .views = nodes_, .log = parts.log},
      commands_(
          {.connection = connection_,
           .prompts = parts.services.prompts,
           .navigator = parts.navigator,
           .tree = parts.tree,
           .showConnectDialog = [this] { return Dialog().ShowConnect(); },
           .enableDisconnectButton =
               [this](bool enabled) { parts_.bars.SetEnabled(Place::Toolbar, kDisconnectButton, enabled); },
           .enableDisconnectItem =
               [this](bool enabled) { parts_.bars.SetEnabled(Place::File, kDisconnectItem, enabled); }}),
      workspace_({.connection = connection_,
                  .drives = parts.drives,
                  .volumes = parts.services.volumes,
                  .prompts = parts.services.prompts,
                  .navigator = parts.navigator,
                  .tree = parts.tree,
                  .host = parts.host,
                  .programFolder = parts.services.programFolder,
                  .setCaption =
                      [this](QString caption) {
                        // The toolkit takes a single "[*]" for the place of its own mark.
                        parts_.mainWindow.setWindowTitle(caption.replace(u"[*]"_s, u"[*][*]"_s));
                      },
                  // The button's picture never leaves it here.
                  .resetSaveImage = [] {}}) {}

Connections::~Connections() = default;

bool Connections::Carry(Command command) {
  switch (command) {
    case Command::OpenWorkspace:
    case Command::SaveWorkspace:
    case Command::SaveWorkspaceAs:
    case Command::Connect:
    case Command::Disconnect:
    case Command::DisconnectAll:
      break;
    default:
      return false;
  }
  // What one of them waits for lets window events through: no second one starts inside it, nor inside a
  // display.
  if (running_ || parts_.navigator.IsDisplaying() || parts_.services.prompts.IsEnding())
    return true;
  const QScopedValueRollback running(running_, true);
  switch (command) {
    case Command::OpenWorkspace:
      workspace_.Open();
      break;
    case Command::SaveWorkspace:
      workspace_.Save();
      break;
    case Command::SaveWorkspaceAs:
      workspace_.SaveAs();
      break;
    case Command::Connect:
      commands_.Connect();
      break;
    case Command::Disconnect:
      Disconnect();
      break;
    default:
      commands_.DisconnectAll();
      break;
  }
  return true;
}

void Connections::LoadDialog() {
  Dialog().Load();
}

void Connections::UnloadDialog() {
  static_cast<void>(Dialog());
  dialog_.reset();
}

frmConnIxoCtrl& Connections::Dialog() {
  if (!dialog_) {
    dialog_ = std::make_unique<frmConnIxoCtrl>(
        frmConnIxoCtrl::Parts{
            .session = parts_.session,
            .prompts = parts_.services.prompts,
            .reasonLine = parts_.host,
            .connectController = [this](const auto& ctrl) { return ConnectController(connection_, ctrl); },
            .setBusyPointer = [this](bool busy) { parts_.host.SetBusyPointer(busy); }},
        &parts_.mainWindow);
  }
  return *dialog_;
}

void Connections::Disconnect() {
  const FolderNode* current = parts_.navigator.CurrentNode();
  // Controllers stand in the list only while it shows the workspace; elsewhere the current place is meant.
  if (current && IsWorkspace(current->Tag()) && parts_.window.Active() == ActiveSide::List)
    commands_.DisconnectFromList(SelectedItemsOf(parts_.listView));
  else
    commands_.DisconnectFromTree();
}

}  // namespace trevane
