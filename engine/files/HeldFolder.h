#pragma once

#include "engine/files/FileSystem.h"

namespace trevane {

/// What was seen under a name, in one look.
struct SeenItem {
  FileEntry entry;
  /// Nothing when the file system cannot tell.
  std::optional<FileIdentity> identity;
  /// Changes with everything that is done to the item; nothing when the file system has no such.
  std::optional<qint64> stateStamp = std::nullopt;
  /// A folder that a whole drive is mounted at.
  bool isMountPoint = false;

  /// Whether `now` is still this: the same item of the same kind, and with a file the same size and date.
  [[nodiscard]] bool IsStill(const SeenItem& now) const;
};

/// A folder that somebody works in for a while. Names are looked for in this very folder: when another one,
/// or a link, comes to stand in its place meanwhile, nothing is changed any more and every change fails with
/// providererror::kChanged. Unlike with a path the last name is never followed where something is written or
/// removed, and where the file system can work in an open folder a call costs no more for standing deeper.
/// Names are valid ones. Failures are those of the members of FileSystem with the same names. It lives no
/// longer than its file system.
class HeldFolder {
 public:
  HeldFolder() = default;
  virtual ~HeldFolder() = default;
  HeldFolder(const HeldFolder&) = delete;
  HeldFolder& operator=(const HeldFolder&) = delete;

  /// Where it was found, for texts.
  [[nodiscard]] virtual QString Path() const = 0;

  /// The folder `name` in this one, which it keeps alive. A link to a folder is refused as what is no folder
  /// is.
  [[nodiscard]] virtual std::shared_ptr<HeldFolder> Enter(const QString& name) = 0;

  [[nodiscard]] virtual Listing List() = 0;
  /// As it is now, and not as a listing may remember it. Nothing when it is missing.
  [[nodiscard]] virtual std::optional<SeenItem> Find(const QString& name) = 0;
  /// Follows a link.
  [[nodiscard]] virtual QByteArray Read(const QString& name) = 0;
  /// Follows a link.
  [[nodiscard]] virtual FileTraits Traits(const QString& name) = 0;

  virtual void SetTraits(const QString& name, const FileTraits& traits) = 0;
  virtual std::optional<FileStamp> WriteNew(const QString& name, const QByteArray& content,
                                            const FileTraits& traits) = 0;
  /// Puts the content of a file that was seen. Fails with providererror::kChanged when another item has its
  /// name now; its content may have changed.
  virtual void Replace(const QString& name, const SeenItem& seen, const QByteArray& content) = 0;
  /// As FileSystem::CreateFolder, or as CreateClosedFolder.
  virtual void CreateFolder(const QString& name, bool closed) = 0;
  /// Deletes what was seen. Fails with providererror::kChanged when it is not still that.
  virtual void RemoveAlone(const QString& name, const SeenItem& seen) = 0;
  virtual void Flush(const QString& name) = 0;
};

}  // namespace trevane
