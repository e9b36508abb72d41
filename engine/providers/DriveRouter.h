#pragma once

#include "engine/files/FileSystem.h"
#include "engine/files/Provider.h"
#include "platform/Volumes.h"

#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace trevane {

class RemoteFileSystem;
struct RemoteContext;

/// The files of this machine, where drives of the kinds remote and removable, and shares that a path names,
/// may stall: the calls for each of them run on a thread of its own. All else is asked on the window's thread
/// and costs no more than looking up the drive. A call with two paths is that of the slower drive. The top is
/// listed from the table of drives alone.
///
/// A drive that was replaced by another one, or has become slow or fast, is asked anew: the table of now
/// counts. What was opened before stays on its thread, and fails when its drive is gone.
class DriveRouter final : public FileSystem {
 public:
  /// Opens the files of the drives. For those of a thread of its own, `drives` are the drives of that moment,
  /// and it is called there; `drives` outlive what it returns.
  using Open = std::function<std::shared_ptr<FileSystem>(Volumes& drives, const FileSystemRequest& request)>;

  /// `context` and `drives` must outlive this.
  DriveRouter(RemoteContext& context, Volumes& drives, Open open);
  ~DriveRouter() override;
  DriveRouter(const DriveRouter&) = delete;
  DriveRouter& operator=(const DriveRouter&) = delete;

  [[nodiscard]] FileSystemCapabilities Capabilities() const override { return capabilities_; }
  [[nodiscard]] Listing List(const QString& folder) override;
  void ListInBatches(const QString& folder, const ListingReceiver& receive) override;
  [[nodiscard]] FileEntry Stat(const QString& path) override;
  [[nodiscard]] std::optional<FileEntry> Find(const QString& path) override;
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& path, qint64 offset = 0) override;
  [[nodiscard]] std::unique_ptr<ContentSink> OpenSink(const QString& path,
                                                      const SinkRequest& request) override;
  [[nodiscard]] std::vector<ReadResult> ReadMany(const QStringList& paths) override;
  [[nodiscard]] std::vector<WriteResult> WriteMany(const std::vector<NewContent>& files) override;
  [[nodiscard]] std::optional<QString> ReadLink(const QString& path) override;
  void CreateLink(const QString& path, const QString& target) override;
  [[nodiscard]] bool HasLostLine(const QString& path) const override;
  void ForgetLearnt() override;
  [[nodiscard]] FileTraits Traits(const QString& path) override;
  void SetTraits(const QString& path, const FileTraits& traits) override;
  void Flush(const QString& path) override;
  void CreateFile(const QString& path) override;
  void CreateFolder(const QString& path) override;
  void CreateClosedFolder(const QString& path) override;
  [[nodiscard]] std::shared_ptr<HeldFolder> Hold(const QString& folder) override;
  void Copy(const QString& from, const QString& to, bool overwrite,
            const ItemObserver& observer = {}) override;
  void Rename(const QString& from, const QString& to, bool overwrite) override;
  void Remove(const QString& path, const ItemObserver& observer = {}) override;
  void RemoveAlone(const QString& path) override;
  /// Of slow drives only those that were worked in since.
  [[nodiscard]] std::vector<Leftover> TakeLeftovers() override;
  Variant Execute(const QString& path, const QString& command, const Variant& parameter) override;
  [[nodiscard]] std::optional<FileIdentity> Identity(const QString& path) override;
  [[nodiscard]] std::vector<FileIdentity> FolderIdentities(const QString& folder) override;
  [[nodiscard]] QStringList Details(const QString& path) override;
  [[nodiscard]] QString PathFromText(const QString& text) override { return direct_->PathFromText(text); }
  [[nodiscard]] QString TypeName(const FileEntry& entry) override { return direct_->TypeName(entry); }

 private:
  /// Slower ones last.
  enum class Speed { Fixed, Removable, Remote };

  /// Where a path leads.
  struct Place {
    Speed speed = Speed::Fixed;
    /// In the table of now; null for a share and where there is no such drive.
    const Volume* drive = nullptr;
    /// The key of a slow drive or share.
    QString key;
  };

  /// A drive or share that has a thread of its own.
  struct Slow {
    /// The drives that its thread knows.
    std::vector<Volume> drives;
    std::shared_ptr<RemoteFileSystem> files;
    /// Something may have been written since its leftovers were taken.
    bool isWorkedIn = false;
  };

  [[nodiscard]] Place PlaceOf(const QString& path) const;
  [[nodiscard]] static Speed SpeedOf(const Volume& drive);
  /// The file system for `place`; `other` is of the same call.
  [[nodiscard]] FileSystem& FilesAt(const Place& place, const Place& other, bool changes);
  [[nodiscard]] FileSystem& Reading(const QString& path);
  [[nodiscard]] FileSystem& Changing(const QString& path);
  [[nodiscard]] FileSystem& Changing(const QString& from, const QString& to);
  [[nodiscard]] Slow Start(const QString& key);
  /// All drives that a call for it needs are for its thread what they are now.
  [[nodiscard]] bool StillHolds(const Slow& slow, const Place& place, const Place& other) const;
  void DropVanished();

  RemoteContext& context_;
  Volumes& drives_;
  const Open open_;
  const std::shared_ptr<FileSystem> direct_;
  const FileSystemCapabilities capabilities_;
  std::map<QString, Slow> slow_;
};

}  // namespace trevane
