#pragma once

#include "base/KeyIndex.h"

#include <QString>

#include <deque>
#include <vector>

namespace trevane {

class ImageList;
class ShellIcons;
struct ShellIcon;

/// How files of a type, or folders, are shown.
struct FileTypeRecord {
  /// Position of the record in FileTypes; lets an entry of the list carry its type in four bytes.
  quint32 id = 0;
  QString imageKey;
  /// Of an open folder; empty for files.
  QString openImageKey;
  QString typeName;
};

/// Icons and type names of the system, asked for once an extension. No file is touched. Both arguments
/// outlive the object.
class FileTypes {
 public:
  FileTypes(ShellIcons& shellIcons, ImageList& images);
  FileTypes(const FileTypes&) = delete;
  FileTypes& operator=(const FileTypes&) = delete;

  /// By the extension of the name, without regard to case. An icon that cannot be turned into an image leaves
  /// the default picture but keeps the system's name of the type: the name is worth more than the picture.
  /// References stay valid for the life of the object.
  [[nodiscard]] const FileTypeRecord& GetFileType(const QString& name);

  /// The record of folders with both images, asked for once.
  [[nodiscard]] const FileTypeRecord& GetFolderImages();

  [[nodiscard]] const FileTypeRecord& Record(quint32 id) const;
  [[nodiscard]] quint32 Count() const noexcept { return static_cast<quint32>(records_.size()); }

 private:
  /// The image key of a system icon, which enters the image list on first use; empty when the icon cannot be
  /// turned into a picture.
  [[nodiscard]] QString ImageKeyOf(const ShellIcon& icon);
  [[nodiscard]] const FileTypeRecord& Add(const QString& imageKey, const QString& openImageKey,
                                          const QString& typeName);

  ShellIcons& shellIcons_;
  ImageList& images_;
  /// Record 0 is the default of files. A deque, so that references stay.
  std::deque<FileTypeRecord> records_;
  /// Extensions that were asked for, and their records.
  std::vector<std::pair<QString, const FileTypeRecord*>> extensions_;
  KeyIndex byExtension_;
  const FileTypeRecord* folder_ = nullptr;
};

}  // namespace trevane
