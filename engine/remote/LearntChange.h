#pragma once

#include "engine/remote/LearntMemory.h"

#include <QString>

namespace trevane {

/// Lives during a call that changes an item; forgets what was known around it when the call ends, also by an
/// error.
class LearntChange final {
 public:
  LearntChange(LearntMemory& memory, const QString& path) : memory_(memory), path_(path) {}
  ~LearntChange() { memory_.ForgetAround(path_); }
  LearntChange(const LearntChange&) = delete;
  LearntChange& operator=(const LearntChange&) = delete;

 private:
  LearntMemory& memory_;
  const QString path_;
};

}  // namespace trevane
