#include "engine/remote/Workbench.h"

#include <iterator>

namespace trevane {

FileSystem& Workbench::Files() {
  if (!files_) {
    files_ = open_();
    if (!files_) {
      throw RunTimeError(error::kDeviceNotReady, QStringLiteral("The controller could not be connected"));
    }
  }
  return *files_;
}

void Workbench::Clear() {
  while (!objects_.empty()) {
    objects_.erase(std::prev(objects_.end()));
  }
  files_.reset();
}

}  // namespace trevane
