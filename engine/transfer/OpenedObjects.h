#pragma once

#include "engine/model/IxoController.h"
#include "engine/model/IxoFile.h"

#include <memory>
#include <utility>
#include <vector>

namespace trevane {

/// The engine objects that an operation has opened. The engine drops them when the operation ends, whatever
/// the reason.
class OpenedObjects {
 public:
  OpenedObjects() = default;
  ~OpenedObjects() { Release(); }
  OpenedObjects(const OpenedObjects&) = delete;
  OpenedObjects& operator=(const OpenedObjects&) = delete;
  OpenedObjects(OpenedObjects&& other) noexcept : opened_(std::exchange(other.opened_, {})) {}
  OpenedObjects& operator=(OpenedObjects&&) = delete;

  /// `child` was opened through the folder `parent`, or is a top of `controller`.
  void Remember(const std::shared_ptr<IxoFile>& parent, const std::shared_ptr<IxoFile>& child);
  void Remember(const std::shared_ptr<IxoController>& controller, const std::shared_ptr<IxoFile>& top);

  /// The same for a folder that outlives this.
  void Borrow(IxoFile& parent, const std::shared_ptr<IxoFile>& child);

  /// Removes each object from the collection it is in by its Index, from the last remembered to the first. A
  /// call that fails is tried once more; then the object is given up.
  void Release() noexcept;

 private:
  struct Opened {
    std::shared_ptr<IxoController> controller;
    std::shared_ptr<IxoFile> parent;
    std::shared_ptr<IxoFile> child;
  };
  std::vector<Opened> opened_;
};

/// Lets the engine drop one child of a folder; a call that fails is tried once more, too.
void ReleaseObject(const std::shared_ptr<IxoFile>& parent, const std::shared_ptr<IxoFile>& child) noexcept;

/// Drops what the engine has cached below a folder. A null folder, or one whose controller is not connected
/// any more, is no error.
void ClearChildren(const std::shared_ptr<IxoFile>& folder) noexcept;

}  // namespace trevane
