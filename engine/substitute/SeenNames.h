#pragma once

#include "engine/model/FileEntry.h"

#include <QString>

#include <vector>

namespace trevane {

/// The names of a folder that is read in batches. The cost of a name does not grow with the folder.
class SeenNames final {
 public:
  /// Takes those entries out whose very name came before, in this call or in an earlier one.
  void DropRepeated(Listing& entries);

 private:
  static constexpr quint32 kFree = 0xFFFFFFFF;
  struct Slot {
    quint32 name = kFree;
    quint32 hash = 0;
  };

  /// False when the name is there already.
  [[nodiscard]] bool Add(const QString& name);
  void MakeRoom(size_t names);

  std::vector<QString> names_;
  /// Open addressing; a slot holds the position of a name.
  std::vector<Slot> slots_;
};

}  // namespace trevane
