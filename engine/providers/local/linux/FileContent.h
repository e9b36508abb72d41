#pragma once

#include "engine/files/FileSystem.h"
#include "engine/providers/local/linux/FileStatus.h"
#include "platform/linux/FileDescriptor.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

#include <sys/stat.h>

/// Content and traits of the items of an open folder.
namespace trevane::local {

/// Returns the path of an item for the text of a failure. It is a function, since the path may cost more than
/// the call.
using TextOf = std::function<QString()>;

/// An open folder (for *at calls at least) and the name of an item in it, which may be missing.
struct FilePlace {
  FileDescriptor holder;
  int folder = -1;
  QByteArray name;
  bool exists = false;
  struct statx status {};
};

/// Copies the permissions of the old file, but not those that let a program run as another user: they were
/// granted to the old content. 0, or an errno.
[[nodiscard]] int CopyPermissions(int from, int to, const struct statx& old, const Credentials& user);

/// 0, or an errno. `kept` are bits besides the permissions.
[[nodiscard]] int SetPermissions(int fd, quint32 permissions, mode_t kept = 0);

/// The date of the last change, where one is given; a refusal of the file system is no failure. 0, or an
/// errno.
[[nodiscard]] int SetModified(int fd, const Date& modified);

/// Fails unless the item is missing or a file that may be written.
void RequireWritable(const FilePlace& place, const Credentials& user, const TextOf& text);

/// The text of a symbolic link, nothing for another item. "/" separates its names.
[[nodiscard]] std::optional<QString> ReadLinkText(int folder, const QByteArray& name, const TextOf& text);
/// Both "/" and "\\" separate the names of `target`.
void MakeLink(int folder, const QByteArray& name, const QString& target, const TextOf& text);

/// Follows a link.
[[nodiscard]] FileTraits ReadTraits(int folder, const QByteArray& name, const TextOf& text);
/// Those of an open file or folder; negative where it is not open.
[[nodiscard]] FileTraits TraitsOf(const struct statx& status, int opened);
void WriteTraits(int folder, const QByteArray& name, const FileTraits& traits, const TextOf& text);

/// Flushes a file and the folder that holds it, or the whole volume of a folder.
void FlushItem(int folder, const QByteArray& name, const TextOf& text);

}  // namespace trevane::local
