#pragma once

#include "base/Variant.h"

#include <QString>

#include <vector>

namespace trevane {

/// Attribute bits as the engine reports them ("File Attribute Constants" of the Windows API).
namespace attribute {
inline constexpr qint32 kReadOnly = 0x1;
inline constexpr qint32 kHidden = 0x2;
inline constexpr qint32 kSystem = 0x4;
inline constexpr qint32 kFolder = 0x10;
inline constexpr qint32 kArchive = 0x20;
/// A socket, pipe or device: it has no content and is never opened.
inline constexpr qint32 kDevice = 0x40;
inline constexpr qint32 kLink = 0x400;
}  // namespace attribute

/// All that is known of one file or folder, from one look-up.
struct FileEntry {
  QString name;
  qint32 attributes = 0;
  /// A link whose target does not exist. False where the target could not be asked about.
  bool leadsNowhere = false;
  /// Bytes; 0 for a folder, -1 when the file system does not know.
  qint64 size = 0;
  Date created;
  Date accessed;
  Date modified;

  [[nodiscard]] bool IsFolder() const noexcept { return (attributes & attribute::kFolder) != 0; }
  [[nodiscard]] bool IsLink() const noexcept { return (attributes & attribute::kLink) != 0; }
  friend bool operator==(const FileEntry&, const FileEntry&) = default;
};

using Listing = std::vector<FileEntry>;

}  // namespace trevane
