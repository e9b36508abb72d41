#pragma once

#include "engine/items/LookUp.h"

#include <QString>

namespace trevane {

class DriveTable;
class EngineSession;
class UserPrompts;
class clsIxoFile;

/// Opens files and folders by their addresses: the engine session, the drives and the prompts, which are
/// needed together wherever that is done. Cheap to copy; all three outlive every copy.
class FileAccess final {
 public:
  FileAccess(EngineSession& session, DriveTable& drives, UserPrompts& prompts) noexcept
      : session_(session), drives_(drives), prompts_(prompts) {}

  /// The item at the address. Its `Result` is not 0 when there is none.
  [[nodiscard]] clsIxoFile FileAt(const QString& address, LookUp lookUp = LookUp::Exact) const;

  [[nodiscard]] EngineSession& Session() const noexcept { return session_; }
  [[nodiscard]] DriveTable& Drives() const noexcept { return drives_; }
  [[nodiscard]] UserPrompts& Prompts() const noexcept { return prompts_; }

 private:
  EngineSession& session_;
  DriveTable& drives_;
  UserPrompts& prompts_;
};

}  // namespace trevane
