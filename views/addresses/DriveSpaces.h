#pragma once

#include "platform/Volumes.h"

#include <memory>
#include <optional>

namespace trevane {

/// The free space of drives. Fixed ones are asked at once. Any other may hang for as long as its medium or
/// its line likes: a thread asks it, one at a time for each drive, and the last answer is given meanwhile. A
/// thread that hangs is left behind.
class DriveSpaces final {
 public:
  /// How long the answer of a drive that may hang is waited for, in milliseconds: most come at once.
  static constexpr int kPatience = 20;

  DriveSpaces();
  ~DriveSpaces();
  DriveSpaces(const DriveSpaces&) = delete;
  DriveSpaces& operator=(const DriveSpaces&) = delete;

  /// Nothing where it is not known, or not yet.
  [[nodiscard]] std::optional<VolumeSpace> SpaceOf(const Volumes& volumes, const Volume& volume);

 private:
  struct Answers;
  std::shared_ptr<Answers> answers_;
};

}  // namespace trevane
