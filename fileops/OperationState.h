#pragma once

#include "fileops/clsClipBrds.h"

#include <QtGlobal>

namespace trevane {

/// The state that the commands on files share while the program runs. The application owns the only one.
struct OperationState {
  static constexpr qint32 kCopy = 1;
  /// The later paste moves.
  static constexpr qint32 kCut = 2;
  static constexpr qint32 kDelete = 3;

  /// The operation of the next transfer or delete; 0 before the first. A paste executes the one that the last
  /// Copy or Cut chose.
  qint32 nFileOpMode = 0;
  clsClipBrds clipboard;
};

}  // namespace trevane
