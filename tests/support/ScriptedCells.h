#pragma once

#include "base/RunTimeError.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "tests/support/ScriptedServer.h"

#include <QString>
#include <QStringList>

#include <map>
#include <memory>
#include <mutex>

namespace trevane::test {

/// Several slow controllers of one provider, known by their machine names. May be used on any thread.
class ScriptedCells final : public std::enable_shared_from_this<ScriptedCells> {
 public:
  ScriptedCells() = default;
  ScriptedCells(const ScriptedCells&) = delete;
  ScriptedCells& operator=(const ScriptedCells&) = delete;

  /// Made by the first use.
  [[nodiscard]] ScriptedServer& At(const QString& machine) { return *Find(machine).server; }
  [[nodiscard]] MemoryFileSystem& FilesAt(const QString& machine) { return *Find(machine).files; }

  [[nodiscard]] Provider AsProvider(const QString& name) {
    return {name,
            [self = shared_from_this()](const FileSystemRequest& request) {
              return self->Find(request.machine).server->Open(request.control);
            },
            true};
  }

  /// The machines that were asked for a connection.
  [[nodiscard]] QStringList Asked() {
    QStringList names;
    for (const auto& [name, cell] : All()) {
      if (cell.server->Openings() > 0) {
        names += name;
      }
    }
    return names;
  }
  [[nodiscard]] int LiveConnections() {
    int live = 0;
    for (const auto& [name, cell] : All()) {
      live += cell.server->LiveConnections();
    }
    return live;
  }
  /// How many of them hang.
  [[nodiscard]] int HangingConnections() {
    int hanging = 0;
    for (const auto& [name, cell] : All()) {
      hanging += cell.server->IsHanging() ? 1 : 0;
    }
    return hanging;
  }
  void ReleaseAll() {
    for (const auto& [name, cell] : All()) {
      cell.server->Release();
    }
  }

 private:
  struct Cell {
    std::shared_ptr<MemoryFileSystem> files = std::make_shared<MemoryFileSystem>();
    std::shared_ptr<ScriptedServer> server = std::make_shared<ScriptedServer>(files);
  };

  [[nodiscard]] Cell Find(const QString& machine) {
    const std::lock_guard lock(mutex_);
    return cells_[machine];
  }
  [[nodiscard]] std::map<QString, Cell> All() {
    const std::lock_guard lock(mutex_);
    return cells_;
  }

  std::mutex mutex_;
  std::map<QString, Cell> cells_;
};

}  // namespace trevane::test
