#pragma once

#include "engine/items/FileAccess.h"

namespace trevane {

class EventLog;
class FetchedFiles;
class FileListModel;
class FileListView;
class FileTypes;
class FolderTreeModel;
class FolderTreeView;
class Navigator;
class OperationHost;

/// The views, models and log that the file commands use. All of it outlives them.
struct OperationParts {
  FileAccess files;
  EventLog& log;
  Navigator& navigator;
  FileTypes& fileTypes;
  FolderTreeModel& tree;
  FileListModel& list;
  FolderTreeView& treeView;
  FileListView& listView;
  OperationHost& host;
  /// Where files are fetched to that cannot run on their controllers; null where there is no such place.
  FetchedFiles* fetched = nullptr;
};

}  // namespace trevane
