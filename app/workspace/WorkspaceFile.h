#pragma once

#include "app/workspace/WorkspaceConnector.h"
#include "app/workspace/WorkspaceDialogs.h"
#include "app/workspace/WorkspaceFormat.h"
#include "app/workspace/WorkspaceTitle.h"
#include "engine/controllers/ControllerConnector.h"
#include "engine/items/FileAccess.h"

#include <QString>

#include <functional>
#include <vector>

namespace trevane {

class FolderTreeModel;
class Navigator;
class OperationHost;
class Volumes;

/// Workspace files: the set of connected controllers, to be connected again later with one command. One
/// section a controller, named as the engine calls it.
class WorkspaceFile {
 public:
  struct Parts {
    ControllerConnector& connector;
    const Volumes& volumes;
    FileAccess files;
    Navigator& navigator;
    FolderTreeModel& tree;
    OperationHost& host;
    /// Where the file dialogs begin.
    QString programFolder;
    /// The main window's title, as it is to be read.
    std::function<void(const QString&)> setCaption;
    /// Gives the toolbar's save button its picture again.
    std::function<void()> resetSaveImage;
  };

  explicit WorkspaceFile(Parts parts);
  WorkspaceFile(const WorkspaceFile&) = delete;
  WorkspaceFile& operator=(const WorkspaceFile&) = delete;

  /// Connects the controllers of the file in place of those that are connected now, which it asks about.
  /// False when the file cannot be read, or not all that are connected could be disconnected; true also when
  /// the user did not want to, or a controller could not be connected, which has been reported. The name may
  /// be relative to the current directory.
  bool OpenWorkspace(const QString& fileName);

  /// Writes the connected controllers, but for the local one. The new content is kept beside the old until
  /// all of it is written; after a failure the old one is there as it was.
  bool SaveWorkspace(const QString& fileName);

  /// Stores the name as the current one and puts it into the window's title.
  void SetWorkspaceCaption(const QString& fileName) { title_.SetFile(fileName); }
  /// Empty before a workspace was opened or saved.
  [[nodiscard]] const QString& CurrentFile() const noexcept { return title_.File(); }

  /// The commands of the File menu.
  void Open();
  void Save();
  void SaveAs();

  /// A workspace is being opened: the window is not to be taken down under it.
  [[nodiscard]] bool IsOpening() const noexcept { return opening_; }

 private:
  /// Connects what the file holds in place of what is connected. False when not all that are connected could
  /// be disconnected.
  [[nodiscard]] bool Replace(const WorkspaceContent& content);
  /// False when an item of that name must not be replaced.
  [[nodiscard]] bool IsReplaceable(const QString& file);
  [[nodiscard]] std::vector<WorkspaceSection> ConnectedSections() const;
  [[nodiscard]] bool HasControllers();
  void SaveUnderNewName();

  Parts parts_;
  WorkspaceTitle title_;
  WorkspaceDialogs dialogs_;
  WorkspaceConnector connector_;
  /// Why the last opening or saving failed.
  QString reason_;
  bool opening_ = false;
};

}  // namespace trevane
