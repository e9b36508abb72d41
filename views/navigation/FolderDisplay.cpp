#include "views/navigation/FolderDisplay.h"

#include "base/RunTimeError.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileListModel.h"
#include "views/navigation/ContentsReader.h"
#include "views/navigation/FolderFilling.h"
#include "views/navigation/NavigatorListener.h"
#include "views/tree/FolderTreeModel.h"

namespace trevane {

void FolderDisplay::Show(FolderNode& node) {
  parts_.list.Clear();
  parts_.listener.EnableDisconnect(IsController(node.Tag()));
  FolderFilling filling(parts_, node);
  try {
    if (parts_.reader.Read(node, filling)) {
      filling.Finish();
    } else {
      FlushViews();
    }
  } catch (const RunTimeError&) {
    FlushViews();
    filling.ShowMessages();
    throw;
  }
  filling.ShowMessages();
}

void FolderDisplay::FlushViews() {
  parts_.tree.FlushBatch();
  parts_.list.FlushStaged();
}

}  // namespace trevane
