#pragma once

#include <QtGlobal>

namespace trevane {

/// The state that decides which commands are enabled.
struct CommandState {
  /// The tag of the entry in question.
  qint32 tag = 0;
  /// True when the entry itself was clicked, false when the displayed folder is meant.
  bool entry = false;
  /// The number of entries in the clipboard set.
  int clipboardCount = 0;
  int selectedListItems = 0;
  /// The current folder can be left towards its parent.
  bool hasParent = false;
};

}  // namespace trevane
