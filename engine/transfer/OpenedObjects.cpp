#include "engine/transfer/OpenedObjects.h"

#include "engine/model/IxoFiles.h"

namespace trevane {

namespace {

/// A failure to release cannot be reported, but a temporary one must not leave an object cached. `work`
/// returns false when it could not get the collection.
template <class Work>
void TryTwice(const Work& work) noexcept {
  for (int attempt = 0; attempt < 2; ++attempt) {
    try {
      if (work()) {
        return;
      }
    } catch (const std::exception&) {
      continue;
    }
  }
}

}  // namespace

void OpenedObjects::Remember(const std::shared_ptr<IxoFile>& parent, const std::shared_ptr<IxoFile>& child) {
  opened_.push_back({nullptr, parent, child});
}

void OpenedObjects::Remember(const std::shared_ptr<IxoController>& controller,
                             const std::shared_ptr<IxoFile>& top) {
  opened_.push_back({controller, nullptr, top});
}

void OpenedObjects::Borrow(IxoFile& parent, const std::shared_ptr<IxoFile>& child) {
  // An owner of nothing, which only points at the folder.
  Remember(std::shared_ptr<IxoFile>(std::shared_ptr<IxoFile>(), &parent), child);
}

void OpenedObjects::Release() noexcept {
  while (!opened_.empty()) {
    const Opened opened = std::move(opened_.back());
    opened_.pop_back();
    if (opened.parent) {
      ReleaseObject(opened.parent, opened.child);
    } else {
      TryTwice([&opened] {
        const auto files = opened.controller->Files();
        if (files) {
          files->Remove(opened.child->Index());
        }
        return files != nullptr;
      });
    }
  }
}

void ReleaseObject(const std::shared_ptr<IxoFile>& parent, const std::shared_ptr<IxoFile>& child) noexcept {
  TryTwice([&] {
    const auto files = parent->Files();
    if (files) {
      files->Remove(child->Index());
    }
    return files != nullptr;
  });
}

void ClearChildren(const std::shared_ptr<IxoFile>& folder) noexcept {
  if (!folder) {
    return;
  }
  TryTwice([&folder] {
    const auto files = folder->Files();
    if (files) {
      files->Clear();
    }
    return files != nullptr;
  });
}

}  // namespace trevane
