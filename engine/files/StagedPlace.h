#pragma once

#include "engine/files/NameLadder.h"
#include "engine/files/RawFiles.h"

#include <QString>

#include <functional>

namespace trevane {

/// The server that staged contents are written to. What it refers to must outlive them.
struct StagedPlace {
  RawFiles& files;
  LearntNaming& learnt;
  /// The key of the server in `learnt`.
  QString server;
  /// A folder of this computer for private temporary files; empty for the system's own.
  QString privateFolder = {};
  /// Called with the path of each temporary item that could not be removed; it may call nothing of the
  /// server.
  std::function<void(const QString& path)> leaveBehind = {};
};

}  // namespace trevane
