#pragma once

#include "engine/files/HeldFolder.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "platform/linux/FileDescriptor.h"

#include <QByteArray>

#include <memory>
#include <vector>

#include <sys/stat.h>

namespace trevane {

/// A folder of the disk that is held open. Of a long path only the lowest levels stay open: a higher one is
/// opened again from below when it is needed, and its identity is checked.
class LocalFileSystem::Folder final : public HeldFolder, public std::enable_shared_from_this<Folder> {
 public:
  /// `fd` is open for *at calls, `path` the provider's form with its drive in front.
  Folder(Native& native, local::FileDescriptor fd, QString path);
  ~Folder() override;

  [[nodiscard]] QString Path() const override;
  [[nodiscard]] std::optional<FileIdentity> KnownIdentity() const override;
  [[nodiscard]] std::shared_ptr<HeldFolder> Enter(const QString& name) override;
  [[nodiscard]] Listing List() override;
  [[nodiscard]] std::optional<SeenItem> Find(const QString& name) override;
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& name, qint64 offset = 0) override;
  [[nodiscard]] std::unique_ptr<ContentSink> OpenSink(const QString& name, const SinkRequest& request,
                                                      const std::optional<SeenItem>& seen) override;
  [[nodiscard]] std::vector<ReadResult> ReadMany(const QStringList& names) override;
  [[nodiscard]] std::vector<WriteResult> WriteMany(const std::vector<NewContent>& files) override;
  [[nodiscard]] bool SeesArrivals() override;
  [[nodiscard]] std::optional<QString> ReadLink(const QString& name) override;
  void CreateLink(const QString& name, const QString& target) override;
  void ListInBatches(const ListingReceiver& receive) override;
  [[nodiscard]] FileTraits Traits(const QString& name) override;
  void SetTraits(const QString& name, const FileTraits& traits) override;
  void CreateFolder(const QString& name, bool closed) override;
  void RemoveAlone(const QString& name, const SeenItem& seen) override;
  void Flush(const QString& name) override;

 private:
  Folder(std::shared_ptr<Folder> above, QByteArray name, local::FileDescriptor fd);

  /// Opens the folder again if necessary. Fails when it cannot be found any more.
  [[nodiscard]] int Fd();
  void OpenFromBelow();
  [[nodiscard]] local::FileDescriptor OpenForListing();
  [[nodiscard]] QString TextOf(const QString& name) const;
  [[nodiscard]] QByteArray NativeName(const QString& name) const;
  /// For the folder `name` in this one.
  [[nodiscard]] bool IsMountPoint(const QByteArray& name, const struct statx& status);
  /// Fails with providererror::kChanged when another folder or a link has taken its place.
  void RequireInPlace();
  /// Called before the first content is written.
  void SearchLeftovers();

  Native& native_;
  std::shared_ptr<Folder> above_;
  /// The path of the first one.
  QString path_;
  QByteArray name_;
  local::FileDescriptor fd_;
  /// The folder that was entered last, while it exists.
  Folder* below_ = nullptr;
  struct statx status_ {};
  bool searched_ = false;
};

}  // namespace trevane
