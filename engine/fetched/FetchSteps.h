#pragma once

#include "engine/fetched/FetchedRecord.h"

#include <QByteArray>
#include <QString>

namespace trevane {

class FileAccess;
class clsIxoFile;

/// The calls of the engine with which a file is fetched and put back, in pieces. Every failure is a
/// RunTimeError.
namespace fetchsteps {

/// A file of a controller as a look-up shows it.
struct Shown {
  qint64 size = -1;
  Date modified = {};
  /// As FetchedRecord has it.
  QString server = {};
  friend bool operator==(const Shown&, const Shown&) = default;
};

/// What tells the machine of this item from all others; empty where nothing does.
[[nodiscard]] QString ServerOf(clsIxoFile& file);

/// Asked anew. Fails where there is no file any more, or a link or folder instead.
[[nodiscard]] Shown LookAt(const FileAccess& files, const QString& address);

/// Writes the content into a new file of this computer, for this user alone and not executable. Sets size,
/// date, hash and server of `record`. After a failure, a Cancel among them, nothing is left.
void Fetch(clsIxoFile& file, const QString& path, FetchedRecord& record);

/// Whether nothing but size and date is needed to know that the controller's file is the one that was
/// fetched.
[[nodiscard]] bool IsShownUnchanged(clsIxoFile& file, const FetchedRecord& record);

enum class Compared {
  /// The content that was fetched.
  Unchanged,
  /// The content that is to be put back is there already.
  IsThere,
  Changed
};

/// What stands on the controller now; its content is read where size and date do not tell. `local` is the
/// hash of the content that is to be put back, and `localSize` its bytes.
[[nodiscard]] Compared Compare(const FileAccess& files, const QString& address, const FetchedRecord& record,
                               const QByteArray& local, qint64 localSize);

/// Replaces the controller's file by the one at `path`, if its content is still `local` and the controller's
/// file still `shown`; sets size, date and hash of `record`. False when the local one is being written to:
/// nothing was done then.
[[nodiscard]] bool PutBack(const FileAccess& files, const QString& address, const QString& path,
                           const QByteArray& local, const Shown& shown, FetchedRecord& record);

}  // namespace fetchsteps
}  // namespace trevane
