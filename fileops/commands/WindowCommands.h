#pragma once

namespace trevane {

/// The commands that only the application can execute; it implements this.
class WindowCommands {
 public:
  virtual ~WindowCommands() = default;

  virtual void OpenWorkspace() = 0;
  virtual void SaveWorkspace() = 0;
  virtual void SaveWorkspaceAs() = 0;
  virtual void ShowProperties() = 0;
  virtual void ShowSettings() = 0;
  virtual void ShowVersion() = 0;
  virtual void Close() = 0;
};

}  // namespace trevane
