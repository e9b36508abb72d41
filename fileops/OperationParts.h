#pragma once

namespace trevane {

class DriveTable;
class EngineSession;
class EventLog;
class FileListModel;
class FileListView;
class FileTypes;
class FolderTreeModel;
class FolderTreeView;
class Navigator;
class OperationHost;
class UserPrompts;

/// What the commands on files and folders work with: what is shown, and where what they do is told. All of it
/// outlives them.
struct OperationParts {
  EngineSession& session;
  const DriveTable& drives;
  UserPrompts& prompts;
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
