#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

/// The files that the program keeps for itself: settings, workspace files, other settings-style files, the
/// log. They are read whole, and replaced in one step. Nothing here waits for a pipe or touches a device.
/// Paths are the operating system's own; names that are no text have their bytes.
namespace trevane::ownfile {

/// More is no file of ours; reading it would only cost time and memory.
constexpr qint64 kLargestFile = 16LL * 1024 * 1024;  // bytes

enum class State {
  /// Read; what it holds is known.
  Read,
  /// No file of that name, or a link to none.
  Missing,
  /// It is there but is no plain file, is larger than kLargestFile, or cannot be read.
  Unreadable,
};

struct Content {
  State state = State::Unreadable;
  QByteArray bytes = {};
  /// Why it is unreadable.
  QString reason = {};
};

/// An empty name is unreadable.
[[nodiscard]] Content Read(const QString& path);

/// Whether anything at all has that name, also a link to nothing.
[[nodiscard]] bool Exists(const QString& path);

struct ReplaceOptions {
  /// Only this user can read a new file, whatever the system's mask allows. A file that is
  /// replaced keeps its permissions in any case.
  bool isPrivate = false;
  /// A writable file in a read-only folder is written in place: its space is reserved first, and after a
  /// failure its old content is restored.
  bool inPlaceInClosedFolder = false;
  /// The folder in which the new file is built first. If that is no folder, is full or is on another volume,
  /// or if this is empty, the file is built beside the old one.
  QString firstFolder = {};
};

/// How a replacement ended.
struct Outcome {
  bool done = false;
  /// Why it failed, in the system's words where it has any.
  QString reason = {};

  [[nodiscard]] explicit operator bool() const noexcept { return done; }
};

/// Whether this user may replace the file, or make it when it is missing. On Linux a file or a folder without
/// any write permission is closed to everybody, the superuser included.
[[nodiscard]] bool IsWritable(const QString& path, const ReplaceOptions& options = {});

/// Builds the new file under a name of its own, readable by this user alone, and once all of it is on the
/// disk gives it the other's permissions and name. A link stays, and its target is what is replaced. When
/// that fails at any point the old file is as it was, and nothing else is left.
[[nodiscard]] Outcome Replace(const QString& path, const QByteArray& bytes,
                              const ReplaceOptions& options = {});

/// Gives a file of whatever kind another name in one step, in place of what has that name. A link is moved
/// itself. False when that fails; both are as they were then.
[[nodiscard]] bool MoveOver(const QString& from, const QString& to);

/// Makes the folder and those above it that are missing, for this user alone. True when it is there.
bool MakePrivateFolder(const QString& path);

/// Makes a new folder for this user alone, in one that exists. False also when anything has that name.
[[nodiscard]] bool MakeNewPrivateFolder(const QString& path);

/// Opens a plain file to append to it, unbuffered; a new one is for this user alone. False when it is
/// something else, cannot be opened or is closed as for IsWritable.
[[nodiscard]] bool OpenForAppending(QFile& file, const QString& path);

}  // namespace trevane::ownfile
