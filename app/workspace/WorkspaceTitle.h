#pragma once

#include <QString>

#include <functional>
#include <utility>

namespace trevane {

/// The name of the current workspace file, and the window's title that shows it.
class WorkspaceTitle {
 public:
  /// `setCaption` puts a text into the title, as it is to be read.
  explicit WorkspaceTitle(std::function<void(const QString&)> setCaption)
      : setCaption_(std::move(setCaption)) {}
  WorkspaceTitle(const WorkspaceTitle&) = delete;
  WorkspaceTitle& operator=(const WorkspaceTitle&) = delete;

  void SetFile(const QString& fileName) {
    file_ = fileName;
    setCaption_(QStringLiteral("Trevane - (") + fileName + u')');
  }
  /// Empty before a workspace was opened or saved.
  [[nodiscard]] const QString& File() const noexcept { return file_; }

 private:
  std::function<void(const QString&)> setCaption_;
  QString file_;
};

}  // namespace trevane
