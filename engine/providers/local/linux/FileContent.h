#pragma once

#include "engine/files/FileSystem.h"
#include "engine/providers/local/linux/FileDescriptor.h"
#include "engine/providers/local/linux/FileStatus.h"

#include <QByteArray>
#include <QString>

#include <functional>

#include <sys/stat.h>

/// Content and traits of the items of an open folder.
namespace trevane::local {

/// The path of an item in the provider's form, for the text of a failure; it may cost more than the call.
using TextOf = std::function<QString()>;

/// A folder that is open (for *at calls at least) and the name of an item in it that may be missing.
struct FilePlace {
  /// Empty where somebody else keeps the folder open.
  FileDescriptor holder;
  int folder = -1;
  QByteArray name;
  bool exists = false;
  struct statx status {};
};

/// Puts the whole content of a file in one step. Only what was seen there before may give way, not what
/// another program has put there meanwhile.
FileStamp PutInPlace(const FilePlace& place, const QByteArray& content, const FileTraits& traits,
                     const Credentials& user, const TextOf& text);

/// Whether content may be put under that name: fails for what is neither absent nor a file that may be
/// written.
void RequireWritable(const FilePlace& place, const Credentials& user, const TextOf& text);

/// Follows a link.
[[nodiscard]] QByteArray ReadContent(int folder, const QByteArray& name, const TextOf& text);

/// Follows a link.
[[nodiscard]] FileTraits ReadTraits(int folder, const QByteArray& name, const TextOf& text);
void WriteTraits(int folder, const QByteArray& name, const FileTraits& traits, const TextOf& text);

/// Of a file the file and the folder that holds it, of a folder its whole volume.
void FlushItem(int folder, const QByteArray& name, const TextOf& text);

}  // namespace trevane::local
