#include "tests/support/EngineWorld.h"

#include "engine/model/IxoController.h"
#include "engine/model/IxoWorkspaces.h"

namespace trevane::test {

EngineWorld::Machine EngineWorld::MakeMachine(const MemoryFileSystemOptions& options) {
  Machine machine;
  machine.memory = std::make_shared<MemoryFileSystem>(options);
  machine.faulty = std::make_shared<FaultyFileSystem>(machine.memory);
  return machine;
}

EngineWorld::EngineWorld(bool caseSensitive) {
  MemoryFileSystemOptions options;
  options.caseSensitive = caseSensitive;
  one = MakeMachine(options);
  two = MakeMachine(options);
  options.drives = {QStringLiteral("C:"), QStringLiteral("D:")};
  local = MakeMachine(options);

  ProviderTable providers;
  providers.push_back({QStringLiteral("IxoProv.LocalFile"), [this](const FileSystemRequest&) {
                         return std::static_pointer_cast<FileSystem>(local.faulty);
                       }});
  providers.push_back(
      {QStringLiteral("IxoProv.Memory"), [this](const FileSystemRequest&) { return opening_; }});
  engine = std::make_shared<FailingEngine>(std::make_shared<SubstituteEngine>(std::move(providers)));

  session.gIxoEngine = engine;
  session.gIxoWorkspace = engine->Workspaces()->Item(qint16(0));
  session.gIxoControllers = session.gIxoWorkspace->Controllers();
  const auto controller = session.gIxoWorkspace->AddController(QString(), QStringLiteral("IxoProv.LocalFile"),
                                                               QString(), QString());
  session.gLocalCtrlName = controller->Name();
  const auto record = std::make_shared<clsIxoCtrl>();
  record->SetCtrlIdx(controller->Index());
  record->SetProvName(QStringLiteral("IxoProv.LocalFile"));
  record->SetRealCtrlName(session.gLocalCtrlName);
  session.gIxoCtrls().Add(record);
  Connect(QStringLiteral("Ctrl1"), one);
  Connect(QStringLiteral("Ctrl2"), two);

  volumes.Set({{QStringLiteral("C:"), QString(), drivetype::kFixed},
               {QStringLiteral("D:"), QString(), drivetype::kFixed}});
  drives.RefreshDrives();
}

std::shared_ptr<clsIxoCtrl> EngineWorld::Connect(const QString& name, const Machine& machine,
                                                 const QString& root) {
  opening_ = machine.faulty;
  const auto controller =
      session.gIxoWorkspace->AddController(name, QStringLiteral("IxoProv.Memory"), QString(), QString());
  const auto record = std::make_shared<clsIxoCtrl>();
  record->SetCtrlName(name);
  record->SetCtrlIdx(controller->Index());
  record->SetProvName(QStringLiteral("IxoProv.Memory"));
  record->SetRealCtrlName(controller->Name());
  record->SetRoot(root);
  session.gIxoCtrls().Add(record);
  return record;
}

std::unique_ptr<clsIxoFile> EngineWorld::File() {
  return std::make_unique<clsIxoFile>(session, drives, prompts);
}

std::unique_ptr<clsIxoFile> EngineWorld::File(const QString& address, LookUp lookUp) {
  auto file = File();
  file->SetPath(address, lookUp);
  return file;
}

}  // namespace trevane::test
