#include "views/navigation/FolderDisplay.h"

#include "prompts/ShownGauge.h"
#include "prompts/UserPrompts.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileListModel.h"
#include "views/navigation/ContentsReader.h"
#include "views/navigation/DisplayRequests.h"
#include "views/navigation/FlushClock.h"
#include "views/navigation/FolderTreeBuilder.h"
#include "views/navigation/ListFiller.h"
#include "views/navigation/NavigatorListener.h"
#include "views/navigation/TreeBatch.h"
#include "views/tree/FolderTreeModel.h"

namespace trevane {

void FolderDisplay::Show(FolderNode& node) {
  parts_.list.Clear();
  parts_.listener.EnableDisconnect(IsController(node.Tag()));
  const auto contents = parts_.reader.Read(node);
  if (!contents || contents->entries.empty()) {
    return;
  }
  const auto count = static_cast<int>(contents->entries.size());
  parts_.list.Reserve(count);
  const TreeBatch batch(parts_.tree, node);
  if (count >= kGaugeFrom) {
    AddEntriesWithGauge(node, *contents);
  } else {
    AddEntries(node, *contents);
  }
}

void FolderDisplay::FlushViews() {
  parts_.tree.FlushBatch();
  parts_.list.FlushStaged();
}

void FolderDisplay::AddEntries(FolderNode& node, const FolderContents& contents) {
  for (const FileEntry& entry : contents.entries) {
    AddEntry(node, entry, contents);
  }
  FlushViews();
}

void FolderDisplay::AddEntriesWithGauge(FolderNode& node, const FolderContents& contents) {
  UserPrompts& prompts = parts_.files.Prompts();
  ProgressGauge& gauge = prompts.Gauge();
  const ShownGauge shown(gauge);
  gauge.ShowGage(QStringLiteral("Display Folder:") + contents.name);
  gauge.SetGageMax(static_cast<qint32>(contents.entries.size()));
  gauge.CancelEnable(true);
  FlushClock clock;
  for (const FileEntry& entry : contents.entries) {
    AddEntry(node, entry, contents);
    gauge.IncrementGageValue(QStringLiteral("Display ") + entry.name);
    if (clock.IsDue()) {
      FlushViews();
      clock.Flushed();
    }
    parts_.listener.LetEventsRun();
    if (parts_.requests.IsCancelled() || prompts.IsCancelled()) {
      break;
    }
  }
  FlushViews();
}

void FolderDisplay::AddEntry(FolderNode& node, const FileEntry& entry, const FolderContents& contents) {
  if (entry.IsFolder()) {
    parts_.builder.UpdateFolderNode(node, entry, contents.onController, contents.entries);
  }
  if (!IsShownInList(entry.attributes)) {
    return;
  }
  if (entry.IsFolder() || !parts_.listener.IsFilteredOut(entry.name)) {
    parts_.filler.AddFileItem(entry, contents.onController);
  }
}

}  // namespace trevane
