#include "tests/support/EngineWorld.h"

#include <condition_variable>

namespace trevane::test {

EngineWorld::Machine EngineWorld::MakeMachine(const MemoryFileSystemOptions& options) {
  Machine machine;
  machine.memory = std::make_shared<MemoryFileSystem>(options);
  machine.faulty = std::make_shared<FaultyFileSystem>(machine.memory);
  return machine;
}

/// Lets one connection at a time work at a file system, as long as its sources and sinks live: these end on
/// threads that were given up, too.
class EngineWorld::Gate final : public std::enable_shared_from_this<Gate> {
 public:
  [[nodiscard]] std::shared_ptr<FileSystem> Enter(const std::shared_ptr<FileSystem>& files) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !isTaken_; });
    isTaken_ = true;
    return {files.get(), [gate = shared_from_this(), files](FileSystem*) { gate->Leave(); }};
  }

 private:
  void Leave() {
    const std::lock_guard lock(mutex_);
    isTaken_ = false;
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  bool isTaken_ = false;
};

EngineWorld::EngineWorld(bool caseSensitive, Threads threads) : threads_(threads) {
  MemoryFileSystemOptions options;
  options.caseSensitive = caseSensitive;
  one = MakeMachine(options);
  two = MakeMachine(options);
  options.drives = {QStringLiteral("C:"), QStringLiteral("D:")};
  local = MakeMachine(options);

  const QString localKey = QStringLiteral("the local one");
  Put(localKey, local);
  Provider localProvider{QStringLiteral("IxoProv.LocalFile"),
                         [this, localKey](const FileSystemRequest&) { return Opened(localKey); }};
  Provider memoryProvider{QStringLiteral("IxoProv.Memory"),
                          [this](const FileSystemRequest& request) { return Opened(request.option); }};
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
  Put(option, machine);
  return Register(name, QStringLiteral("IxoProv.Memory"), root, option);
}

void EngineWorld::Put(const QString& option, const Machine& machine) {
  const std::lock_guard lock(mutex_);
  opened_[option] = {machine.faulty, std::make_shared<Gate>()};
}

std::shared_ptr<FileSystem> EngineWorld::Opened(const QString& option) {
  std::unique_lock lock(mutex_);
  const auto [files, gate] = opened_.at(option);
  lock.unlock();
  return threads_ == Threads::None ? files : gate->Enter(files);
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
