#pragma once

#include "engine/items/clsIxoFile.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/SessionWorld.h"

#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace trevane::test {

/// A session over file systems in memory: the local one with the drives C: and D:, and the controllers
/// "Ctrl1" and "Ctrl2", whose top is a folder. Every call of a file system passes through its faulty wrapper.
struct EngineWorld : SessionWorld {
  struct Machine {
    std::shared_ptr<MemoryFileSystem> memory;
    std::shared_ptr<FaultyFileSystem> faulty;
  };

  enum class Threads {
    None,
    /// Each controller has a thread of its own and the memory of what was just learnt.
    OnePerController
  };

  explicit EngineWorld(bool caseSensitive = true, Threads threads = Threads::None);

  /// Connects a further controller and registers it.
  std::shared_ptr<clsIxoCtrl> Connect(const QString& name, const Machine& machine,
                                      const QString& root = QStringLiteral("/"));
  [[nodiscard]] static Machine MakeMachine(const MemoryFileSystemOptions& options);

  [[nodiscard]] std::unique_ptr<clsIxoFile> File();
  [[nodiscard]] std::unique_ptr<clsIxoFile> File(const QString& address, LookUp lookUp = LookUp::Exact);

  Machine local;
  Machine one;
  Machine two;

 private:
  class Gate;

  void Put(const QString& option, const Machine& machine);
  /// Any thread.
  [[nodiscard]] std::shared_ptr<FileSystem> Opened(const QString& option);

  std::mutex mutex_;
  /// By the option with which they are opened, also after a line died.
  std::map<QString, std::pair<std::shared_ptr<FileSystem>, std::shared_ptr<Gate>>> opened_;
  Threads threads_;
};

}  // namespace trevane::test
