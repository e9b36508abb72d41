#pragma once

#include "base/Variant.h"

#include <QString>

namespace trevane {

/// One item of the file list. The texts of its columns are made when they are needed.
struct FileListItem {
  static constexpr qint32 kNoRow = -1;

  QString text;
  /// Bytes; negative for a folder, and where the file system does not know it.
  qint64 size = -1;
  Date modified;
  Date accessed;
  Date created;
  qint32 tag = 0;
  /// A hint while it is not negative.
  qint32 row = kNoRow;
  /// FileTypeRecord::id.
  quint32 fileType = 0;
  quint16 image = 0;
  bool hasDetails = false;
  bool ghosted = false;
};

}  // namespace trevane
