#pragma once

#include "fileops/clsClipBrds.h"

#include <QtGlobal>

namespace trevane {

/// What the commands on files share for the whole run. The application makes one.
struct OperationState {
  static constexpr qint32 kCopy = 1;
  /// The later paste moves.
  static constexpr qint32 kCut = 2;
  static constexpr qint32 kDelete = 3;

  /// Which operation the next transfer or delete stands for, 0 before the first. A paste performs the one
  /// that the last Copy or Cut chose.
  qint32 nFileOpMode = 0;
  clsClipBrds clipboard;
};

}  // namespace trevane
