#pragma once

#include "engine/files/FileSystem.h"

#include <functional>
#include <map>
#include <memory>

namespace trevane {

/// What a controller's thread works with: the file system behind one connection, and the objects of it that
/// the window's side has named by numbers. All of them live and end on that thread.
class Workbench final {
 public:
  using Opener = std::function<std::shared_ptr<FileSystem>()>;

  explicit Workbench(Opener open) : open_(std::move(open)) {}
  ~Workbench() { Clear(); }
  Workbench(const Workbench&) = delete;
  Workbench& operator=(const Workbench&) = delete;

  /// Connects first where that has not been done.
  [[nodiscard]] FileSystem& Files();

  /// Null where none has been opened.
  [[nodiscard]] FileSystem* FilesIfOpen() const noexcept { return files_.get(); }

  void Keep(quint64 number, std::shared_ptr<void> object) { objects_[number] = std::move(object); }
  void Drop(quint64 number) { objects_.erase(number); }
  /// Null when it was dropped, or never made because its call failed.
  template <class Object>
  [[nodiscard]] std::shared_ptr<Object> Kept(quint64 number) const {
    const auto found = objects_.find(number);
    return found == objects_.end() ? nullptr : std::static_pointer_cast<Object>(found->second);
  }
  /// Objects can stand on one another: the youngest ends first.
  void Clear();

 private:
  Opener open_;
  std::shared_ptr<FileSystem> files_;
  std::map<quint64, std::shared_ptr<void>> objects_;
};

}  // namespace trevane
