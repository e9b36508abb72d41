#pragma once

#include "base/Variant.h"
#include "engine/model/Content.h"
#include "engine/model/FileEntry.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace trevane {

/// A tree that TreeRecord walks, with a current folder and the item in it that was looked for last. No link
/// is followed on the way. Every failure is a RunTimeError.
class MovableTree {
 public:
  MovableTree() = default;
  virtual ~MovableTree() = default;
  MovableTree(const MovableTree&) = delete;
  MovableTree& operator=(const MovableTree&) = delete;

  /// Looks for an item of the current folder, first for the top; the questions below are about it. Answers
  /// false, or fails, when it is missing.
  [[nodiscard]] virtual bool Find(const QString& name) = 0;

  /// As Find, for a folder of the current one where ListingTellsAll. It need not be looked for when
  /// RemoveRecorded is the next call within it, since that looks whether it still is a folder, and no link.
  [[nodiscard]] virtual bool FindRecorded(const FileEntry& folder) { return Find(folder.name); }

  /// Bits as in FileEntry.
  [[nodiscard]] virtual qint32 Attributes() = 0;
  /// Bytes; -1 when it is not known.
  [[nodiscard]] virtual qint64 Size() = 0;
  /// Missing where the file system knows none.
  [[nodiscard]] virtual Variant Modified() = 0;
  /// Equal for two that are one item; nothing when the file system cannot tell.
  [[nodiscard]] virtual std::optional<QString> Identity() = 0;
  /// Changes with every change of the item; nothing when the file system has none.
  [[nodiscard]] virtual std::optional<qint64> StateStamp() { return std::nullopt; }
  [[nodiscard]] virtual std::unique_ptr<ContentSource> OpenSource() = 0;
  /// The text of a link; nothing where it cannot be read.
  [[nodiscard]] virtual std::optional<QString> LinkText() { return std::nullopt; }
  /// Dates that differ by less than this, in milliseconds, prove nothing; 0 where they are exact.
  [[nodiscard]] virtual qint64 DateStep() { return 0; }
  /// Fails for an item that is never moved.
  virtual void RequireMovable() {}

  /// Deletes a file, a link or an empty folder.
  virtual void Remove() = 0;
  /// Directly after FindLeft: Remove itself looks whether the folder is still the one that was found, so that
  /// it need not be asked before.
  [[nodiscard]] virtual bool RemovesOnlyTheSame() { return false; }
  /// Whether one listing tells all that is known of the items in the current folder, so that RemoveRecorded
  /// can delete many after one look.
  [[nodiscard]] virtual bool ListingTellsAll() { return false; }
  /// Deletes files and links of the current folder that are still as they were recorded, which is asked anew.
  virtual void RemoveRecorded(const Listing& files) { Q_UNUSED(files); }

  /// Makes the folder that was found the current one.
  virtual void Enter() = 0;
  /// Back to the folder above.
  virtual void Leave() = 0;
  /// Directly after Leave: looks again at the folder that was left. As Find.
  [[nodiscard]] virtual bool FindLeft() = 0;
  /// Of the items in the current folder.
  [[nodiscard]] virtual QStringList Names() = 0;

  /// These fail with the text for an item of the current folder: it is missing, it is not what it was when it
  /// was recorded, or nothing proves that its copy is whole.
  [[noreturn]] virtual void FailMissing(const QString& name) = 0;
  [[noreturn]] virtual void FailChanged(const QString& name) = 0;
  [[noreturn]] virtual void FailNotVerified(const QString& name) = 0;
};

}  // namespace trevane
