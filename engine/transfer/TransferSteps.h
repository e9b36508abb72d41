#pragma once

#include "base/RunTimeError.h"
#include "engine/model/IxoFile.h"

#include <QString>

#include <memory>

namespace trevane {

/// The steps that the copy of one item between controllers consists of. Every failure is a RunTimeError.

/// After this failure further calls would fail as well, or must not be made: the user has cancelled, or the
/// other side does not answer.
[[nodiscard]] bool EndsCalls(const RunTimeError& failure) noexcept;

/// The child of that name, looked for anew; null when it is known not to be there.
[[nodiscard]] std::shared_ptr<IxoFile> FindChild(IxoFile& folder, const QString& name);

/// A new child. When it cannot be created the number of the error is -1, as for everything that could not be
/// created; a cancelled call keeps its number.
[[nodiscard]] std::shared_ptr<IxoFile> CreateNewFile(IxoFile& folder, const QString& name);
/// `wasSeen` is set where the folder was looked for after it was made.
[[nodiscard]] std::shared_ptr<IxoFile> CreateNewFolder(IxoFile& folder, const QString& name, bool closed,
                                                       bool& wasSeen);

/// The failure as that of an item that was not created.
[[nodiscard]] RunTimeError NotCreated(const RunTimeError& failure);

/// Deletes a new item whose content could not be written, unless another program has replaced it.
void Discard(IxoFile& created) noexcept;

/// Deletes a new file that is not what was written, unless another program has replaced it: it is known by
/// its size and date.
void RemovePlaced(const std::shared_ptr<IxoFile>& folder, const QString& name, qint64 size,
                  Date modified) noexcept;

/// Fails unless so many bytes came as the file had.
void RequireRead(qint64 bytes, qint64 size, const QString& name);
[[nodiscard]] RunTimeError NotArrived(const QString& name, qint64 size, qint64 written);
/// Fails unless as many bytes stand there as were written. `folder` is asked where `placed` knows no size.
void RequireArrived(IxoFile& folder, const QString& name, const SeenItem& placed, qint64 written);

/// Fails where a link, or nothing, has taken the place of the folder since something was written into it: the
/// content may be elsewhere. Where there are identities the file system itself has looked.
void RequireInPlace(IxoFile& folder);

/// Fails with error::kExists unless an item that is there may be replaced by one of the same kind. A link is
/// an item of its own: written through, it would replace an item elsewhere.
void RequireSameKind(IxoFile& existing, bool isFolder, const QString& name);

}  // namespace trevane
