#pragma once

#include "engine/files/RawFiles.h"

namespace trevane {

/// While one exists calls of the server are not cancelled.
class RawPutBack final {
 public:
  explicit RawPutBack(RawFiles& files) noexcept : files_(files) { files_.BeginPutBack(); }
  ~RawPutBack() { files_.EndPutBack(); }
  RawPutBack(const RawPutBack&) = delete;
  RawPutBack& operator=(const RawPutBack&) = delete;

 private:
  RawFiles& files_;
};

}  // namespace trevane
