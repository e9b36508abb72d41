#pragma once

#include "engine/files/FileSystem.h"
#include "engine/providers/local/linux/FileStatus.h"
#include "platform/linux/FileDescriptor.h"

#include <QByteArray>
#include <QString>

#include <functional>

#include <sys/stat.h>

/// Content and traits of the items of an open folder.
namespace trevane::local {

/// Returns the path of an item for the text of a failure. It is a function, since the path may cost more than
/// the call.
using TextOf = std::function<QString()>;

/// An open folder (for *at calls at least) and the name of an item in it, which may be missing.
struct FilePlace {
  /// Not open where the caller keeps the folder open.
  FileDescriptor holder;
  int folder = -1;
  QByteArray name;
  bool exists = false;
  struct statx status {};
};

/// Replaces the whole content of a file in one step. Only the item that was seen before is replaced, not one
/// that appeared meanwhile.
FileStamp PutInPlace(const FilePlace& place, const QByteArray& content, const FileTraits& traits,
                     const Credentials& user, const TextOf& text);

/// Fails unless the item is missing or a file that may be written.
void RequireWritable(const FilePlace& place, const Credentials& user, const TextOf& text);

/// Follows a link.
[[nodiscard]] QByteArray ReadContent(int folder, const QByteArray& name, const TextOf& text);

/// Follows a link.
[[nodiscard]] FileTraits ReadTraits(int folder, const QByteArray& name, const TextOf& text);
void WriteTraits(int folder, const QByteArray& name, const FileTraits& traits, const TextOf& text);

/// Flushes a file and the folder that holds it, or the whole volume of a folder.
void FlushItem(int folder, const QByteArray& name, const TextOf& text);

}  // namespace trevane::local
