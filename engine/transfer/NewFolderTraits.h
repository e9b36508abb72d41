#pragma once

#include "engine/model/FileTraits.h"
#include "engine/model/IxoFile.h"

#include <exception>
#include <memory>
#include <utility>

namespace trevane {

/// Sets the traits of a new folder after it was filled, because they may forbid writing into it, and filling
/// it changes its date. They are set also when the copy ends early, unless the line was lost.
class NewFolderTraits {
 public:
  NewFolderTraits() = default;
  ~NewFolderTraits() {
    try {
      if (folder_ && !folder_->HasLostLine()) {
        Apply();
      }
    } catch (const std::exception&) {
      // The folder stays closed; the failure that ends the copy is reported.
    }
  }
  NewFolderTraits(const NewFolderTraits&) = delete;
  NewFolderTraits& operator=(const NewFolderTraits&) = delete;

  void Await(const std::shared_ptr<IxoFile>& folder, const FileTraits& traits) {
    folder_ = folder;
    traits_ = traits;
  }
  void Forget() noexcept { folder_.reset(); }
  void Apply() {
    const auto folder = std::exchange(folder_, nullptr);
    const bool tells =
        traits_.permissions || traits_.marks || traits_.created.IsPresent() || traits_.modified.IsPresent();
    if (folder && tells) {
      folder->SetTraits(traits_);
    }
  }

 private:
  std::shared_ptr<IxoFile> folder_;
  FileTraits traits_;
};

}  // namespace trevane
