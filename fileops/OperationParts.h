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

/// What the commands on files and folders work with: what is shown, and where what they do is told. All of it
/// outlives them.
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
