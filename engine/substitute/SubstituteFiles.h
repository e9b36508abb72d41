#pragma once

#include "engine/model/IxoFiles.h"
#include "engine/substitute/FileSystemSession.h"
#include "engine/substitute/FolderListing.h"

#include <QHash>
#include <QStringList>

#include <map>
#include <memory>
#include <optional>

namespace trevane {

class SubstituteFile;

/// The children of a folder, or the items at a controller's top. The folder is listed once, when a child is
/// first asked for; the listing is dropped by Clear, with the collection, and by any change that is made
/// through the controller.
class SubstituteFiles final : public IxoFiles, public std::enable_shared_from_this<SubstituteFiles> {
 public:
  enum class Kind {
    /// One item: the top folder.
    TopFolder,
    /// The drives, asked for anew each time, so that they are always those of the moment.
    Drives,
    Folder
  };

  /// `folder` has an empty path for the other kinds than Folder.
  SubstituteFiles(std::shared_ptr<FileSystemSession> session, Kind kind, FolderReference folder);
  ~SubstituteFiles() override;
  SubstituteFiles(const SubstituteFiles&) = delete;
  SubstituteFiles& operator=(const SubstituteFiles&) = delete;

  [[nodiscard]] std::shared_ptr<IxoFile> Item(const Variant& index) override;
  void Remove(const Variant& index) override;
  void Clear() override;

  /// The names in order, listed anew.
  [[nodiscard]] QStringList Names();
  /// The children in order, listed anew. Nothing is kept of the listing.
  [[nodiscard]] Listing List();
  /// As List, in batches as they are read, of which none is empty. The receiver calls nothing of the engine.
  void ListInBatches(const ListingReceiver& receive);

  /// The names that the last listing left out.
  [[nodiscard]] const QStringList& Refused() const noexcept { return refused_; }

  /// The cached child of that name, brought up to date with `entry`, or a new one.
  [[nodiscard]] std::shared_ptr<SubstituteFile> Adopt(const SeenItem& seen);
  /// The cached child that waits for its content under that name, or a new one.
  [[nodiscard]] std::shared_ptr<SubstituteFile> AdoptPending(const QString& name);

  /// Drops a cached child by its Index. No such child is no error.
  void Forget(qint32 index) noexcept;

 private:
  [[nodiscard]] const FolderListing& Listed();
  [[nodiscard]] FolderListing ListAnew();
  [[nodiscard]] std::shared_ptr<SubstituteFile> FindCached(const QString& name) const;
  std::shared_ptr<SubstituteFile> Cache(const std::shared_ptr<SubstituteFile>& child);

  std::shared_ptr<FileSystemSession> session_;
  Kind kind_;
  FolderReference folder_;
  QStringList refused_;
  std::optional<FolderListing> listing_;
  quint64 listedAt_ = 0;
  std::map<qint32, std::shared_ptr<SubstituteFile>> children_;
  QHash<QString, qint32> byName_;
  qint32 lastIndex_ = 0;
};

}  // namespace trevane
