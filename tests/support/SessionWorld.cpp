#include "tests/support/SessionWorld.h"

#include "engine/model/IxoController.h"
#include "engine/model/IxoWorkspaces.h"
#include "engine/substitute/SubstituteEngine.h"

#include <utility>

namespace trevane::test {

void SessionWorld::Open(ProviderTable providers, RemoteContext* context) {
  const bool hasLocal = !providers.empty() && providers.front().open;
  const QString localProvider = hasLocal ? providers.front().name : QString();
  engine = std::make_shared<FailingEngine>(std::make_shared<SubstituteEngine>(
      std::move(providers), context != nullptr ? context : &remote.Context()));
  session.gIxoEngine = engine;
  session.gIxoWorkspace = engine->Workspaces()->Item(qint16{0});
  session.gIxoControllers = session.gIxoWorkspace->Controllers();
  if (hasLocal) {
    session.gLocalCtrlName = Register({}, localProvider)->RealCtrlName();
  }
}

std::shared_ptr<clsIxoCtrl> SessionWorld::Register(const QString& name, const QString& provider,
                                                   const QString& root, const QString& option) {
  const auto controller = session.gIxoWorkspace->AddController(name, provider, QString(), option);
  const auto record = std::make_shared<clsIxoCtrl>();
  record->SetCtrlName(name);
  record->SetCtrlIdx(controller->Index());
  record->SetProvName(provider);
  record->SetRealCtrlName(controller->Name());
  record->SetCtrlOption(option);
  record->SetRoot(root);
  session.gIxoCtrls().Add(record);
  return record;
}

Provider ProviderOf(const QString& name, std::shared_ptr<FileSystem> fileSystem) {
  return {name, [fileSystem = std::move(fileSystem)](const FileSystemRequest&) { return fileSystem; }};
}

}  // namespace trevane::test
