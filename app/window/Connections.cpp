#include "app/window/Connections.h"

#include "app/session/AppServices.h"
#include "fileops/OperationHost.h"

#include <QWidget>

namespace trevane {

Connections::Connections(AppServices& services, const OperationParts& parts, NavigatorListener& listener,
                         CommandHost& host, QWidget& mainWindow)
    : prompts_(parts.files.Prompts()),
      host_(parts.host),
      mainWindow_(mainWindow),
      entries_(parts.tree, parts.list, parts.navigator, listener),
      connector_(parts.files.Session(), entries_, parts.log),
      commands_({.connector = connector_,
                 .prompts = parts.files.Prompts(),
                 .navigator = parts.navigator,
                 .tree = parts.tree,
                 .listView = parts.listView,
                 .host = host,
                 .showConnectDialog = [this] { return Dialog().ShowConnect(); }}),
      workspace_({.connector = connector_,
                  .volumes = services.volumes,
                  .files = parts.files,
                  .navigator = parts.navigator,
                  .tree = parts.tree,
                  .host = parts.host,
                  .programFolder = services.programFolder,
                  .setCaption =
                      [this](QString caption) {
                        // The toolkit takes a single "[*]" for the place of its own mark.
                        mainWindow_.setWindowTitle(
                            caption.replace(QStringLiteral("[*]"), QStringLiteral("[*][*]")));
                      },
                  // The button's picture never leaves it here.
                  .resetSaveImage = [] {}}) {}

Connections::~Connections() = default;

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
            .session = connector_.Session(),
            .prompts = prompts_,
            .reasonLine = host_,
            .connectController = [this](const auto& ctrl) { return connector_.ConnectController(ctrl); },
            .setBusyPointer = [this](bool busy) { host_.SetBusyPointer(busy); }},
        &mainWindow_);
  }
  return *dialog_;
}

}  // namespace trevane
