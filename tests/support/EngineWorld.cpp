#include "tests/support/EngineWorld.h"

namespace trevane::test {

EngineWorld::Machine EngineWorld::MakeMachine(const MemoryFileSystemOptions& options) {
  Machine machine;
  machine.memory = std::make_shared<MemoryFileSystem>(options);
  machine.faulty = std::make_shared<FaultyFileSystem>(machine.memory);
  return machine;
}

EngineWorld::EngineWorld(bool caseSensitive, Threads threads) : threads_(threads) {
  MemoryFileSystemOptions options;
  options.caseSensitive = caseSensitive;
  one = MakeMachine(options);
  two = MakeMachine(options);
  options.drives = {QStringLiteral("C:"), QStringLiteral("D:")};
  local = MakeMachine(options);

  Provider localProvider = ProviderOf(QStringLiteral("IxoProv.LocalFile"), local.faulty);
  Provider memoryProvider{QStringLiteral("IxoProv.Memory"),
                          [this](const FileSystemRequest& request) { return opened_[request.option]; }};
  localProvider.isSlow = memoryProvider.isSlow = threads == Threads::OnePerController;
  Open({localProvider, memoryProvider});
  Connect(QStringLiteral("Ctrl1"), one);
  Connect(QStringLiteral("Ctrl2"), two);

  volumes.Set({{QStringLiteral("C:"), QString(), drivetype::kFixed},
               {QStringLiteral("D:"), QString(), drivetype::kFixed}});
  drives.RefreshDrives();
}

std::shared_ptr<clsIxoCtrl> EngineWorld::Connect(const QString& name, const Machine& machine,
                                                 const QString& root) {
  // Without threads no controller is opened twice.
  const QString option = threads_ == Threads::None ? QString() : name;
  opened_[option] = machine.faulty;
  return Register(name, QStringLiteral("IxoProv.Memory"), root, option);
}

std::unique_ptr<clsIxoFile> EngineWorld::File() {
  return std::make_unique<clsIxoFile>(files);
}

std::unique_ptr<clsIxoFile> EngineWorld::File(const QString& address, LookUp lookUp) {
  auto file = File();
  file->SetPath(address, lookUp);
  return file;
}

}  // namespace trevane::test
