#pragma once

#include "engine/items/FileAccess.h"

namespace trevane {

class EventLog;
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
};

}  // namespace trevane
