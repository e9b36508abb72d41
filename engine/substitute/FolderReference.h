#pragma once

#include "engine/files/HeldFolder.h"
#include "engine/files/ProviderPath.h"

#include <QString>

#include <memory>
#include <utility>

namespace trevane {

/// A folder that the objects of a controller refer to: by its path, or held while an operation works in it.
/// The path of a held one is composed only when a text needs it, since it can be long.
class FolderReference {
 public:
  explicit FolderReference(const QString& path) : path_(path) {}
  explicit FolderReference(std::shared_ptr<HeldFolder> held) : held_(std::move(held)) {}

  /// Nothing for a folder that is known by its path.
  [[nodiscard]] const std::shared_ptr<HeldFolder>& Held() const noexcept { return held_; }
  [[nodiscard]] QString Path() const { return held_ ? held_->Path() : path_; }
  [[nodiscard]] QString PathOf(const QString& name) const { return providerpath::Child(Path(), name); }

 private:
  QString path_;
  std::shared_ptr<HeldFolder> held_;
};

}  // namespace trevane
