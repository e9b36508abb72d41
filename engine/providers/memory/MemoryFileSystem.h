#pragma once

#include "engine/files/FileSystem.h"
#include "engine/providers/memory/FileSystemCall.h"

#include <QStringList>

#include <map>
#include <memory>
#include <vector>

namespace trevane {

struct MemoryFileSystemOptions {
  bool caseSensitive = true;
  /// With drives, `List("")` lists them, and a path without a drive starts at the first one.
  QStringList drives = {};
  bool identity = true;
  bool execute = true;
  /// Bytes of content it can hold; negative is no limit. While content is replaced, the old and the new both
  /// count.
  qint64 capacity = -1;
  /// Without, no folder can be made.
  bool folders = true;
  /// All dates are rounded down to this, in milliseconds; 0 where they are exact.
  qint64 dateStep = 0;
};

/// A complete file system in memory: folders, files, links and devices. Its clock advances by a second with
/// each change. It records the calls of the members of FileSystem, since many tests count them without a
/// wrapper: Find as Stat, a source as one Read and a sink as one Write when they are opened. Calls of the
/// other members, by which tests set it up and inspect it, are not recorded. It is never among the shipped
/// providers.
class MemoryFileSystem final : public FileSystem {
 public:
  explicit MemoryFileSystem(MemoryFileSystemOptions options = {});
  ~MemoryFileSystem() override;
  MemoryFileSystem(const MemoryFileSystem&) = delete;
  MemoryFileSystem& operator=(const MemoryFileSystem&) = delete;

  [[nodiscard]] FileSystemCapabilities Capabilities() const override;
  [[nodiscard]] Listing List(const QString& folder) override;
  /// In batches of 64 and more.
  void ListInBatches(const QString& folder, const ListingReceiver& receive) override;
  [[nodiscard]] std::optional<FileEntry> Find(const QString& path) override;
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& path, qint64 offset = 0) override;
  /// The capacity is checked with each piece.
  [[nodiscard]] std::unique_ptr<ContentSink> OpenSink(const QString& path,
                                                      const SinkRequest& request) override;
  [[nodiscard]] std::optional<QString> ReadLink(const QString& path) override;
  void CreateLink(const QString& path, const QString& target) override;
  void CreateFile(const QString& path) override;
  void CreateFolder(const QString& path) override;
  void CreateClosedFolder(const QString& path) override;
  void Copy(const QString& from, const QString& to, bool overwrite,
            const ItemObserver& observer = {}) override;
  void Rename(const QString& from, const QString& to, bool overwrite) override;
  void Remove(const QString& path, const ItemObserver& observer = {}) override;
  /// Recorded as Remove.
  void RemoveAlone(const QString& path) override;
  /// The empty command returns nothing, any other its own text.
  Variant Execute(const QString& path, const QString& command, const Variant& parameter) override;
  /// The date, and the permissions that SetPermissions or a copy has set.
  [[nodiscard]] FileTraits Traits(const QString& path) override;
  void SetTraits(const QString& path, const FileTraits& traits) override;
  [[nodiscard]] std::optional<FileIdentity> Identity(const QString& path) override;
  [[nodiscard]] std::vector<FileIdentity> FolderIdentities(const QString& folder) override;

  /// Set-up. Parents are created as needed; an existing item is replaced.
  void AddFolder(const QString& path);
  void AddFile(const QString& path, const QByteArray& content = {});
  /// `target` is a path of this file system; it need not exist. With a dot in front ("..\\f") it begins in
  /// the folder of the link.
  void AddLink(const QString& path, const QString& target);
  void AddDevice(const QString& path);
  /// Removes an item as another program would.
  void Vanish(const QString& path);
  void SetTimes(const QString& path, Date created, Date accessed, Date modified);
  /// Further attribute bits: hidden, system, read-only. The content of a read-only file cannot be replaced.
  void SetAttributes(const QString& path, qint32 bits);
  void SetPermissions(const QString& path, quint32 permissions);
  [[nodiscard]] std::optional<quint32> Permissions(const QString& path) const;
  /// Adds a name to the listing of a folder that cannot be opened.
  void AddHostileName(const QString& folder, const QString& name);
  /// Refuses every change of the drive (of the whole file system where there are no drives).
  void SetWriteProtected(const QString& drive, bool on);
  void SetCapacity(qint64 bytes) { options_.capacity = bytes; }
  void AddDrive(const QString& name);
  void RemoveDrive(const QString& name);
  void SetNow(Date now) { now_ = now; }
  [[nodiscard]] Date Now() const { return now_; }

  [[nodiscard]] bool Exists(const QString& path) const;
  [[nodiscard]] QByteArray Content(const QString& path) const;
  /// The whole tree, sorted, with a line for each item: "C:\a\" for a folder, "C:\a\f=content",
  /// "C:\a\l->target", "C:\a\d!" for a device.
  [[nodiscard]] QStringList Tree() const;

  [[nodiscard]] int CallCount() const { return static_cast<int>(calls_.size()); }
  [[nodiscard]] int CallCount(FileSystemOperation operation) const;
  [[nodiscard]] const std::vector<FileSystemCall>& Calls() const { return calls_; }
  void ClearCalls() { calls_.clear(); }

 private:
  struct Node;
  class Source;
  class Sink;
  using NodePtr = std::shared_ptr<Node>;
  /// The target of a path: its folder, the item if it exists, and the drive.
  struct Place {
    NodePtr parent;
    NodePtr node;
    NodePtr drive;
    QString name;
    QStringList pieces;
  };

  [[nodiscard]] QString Key(const QString& name) const;
  [[nodiscard]] QStringList Pieces(const QString& path) const;
  /// Every folder on the way must exist; the item itself need not.
  [[nodiscard]] Place Locate(const QString& path, bool followLast, int depth = 0) const;
  [[nodiscard]] Place FindExisting(const QString& path, bool followLast) const;
  void RequireWritable(const Place& place, const QString& path) const;
  /// Fails where no item can be created.
  void RequireCreatable(const Place& place, const QString& path) const;
  static void RefuseInside(const Place& source, const Place& target, const QString& path);
  void RequireRoom(qint64 bytes, const QString& path) const;
  [[nodiscard]] FileEntry EntryOf(const Place& place, const QString& path) const;
  [[nodiscard]] SeenItem SeenAt(const Place& place, const QString& path) const;
  [[nodiscard]] Date Rounded(const Date& date) const;
  /// The path that a link leads to.
  [[nodiscard]] QString TargetPath(const Node& link) const;
  [[nodiscard]] QString PathOf(const Node& node) const;
  [[nodiscard]] qint64 Used(const Node& node) const;
  [[nodiscard]] FileEntry Describe(const Node& node, const NodePtr& drive, const QString& path) const;
  NodePtr NewNode(const QString& name);
  static void ReportBelow(const Node& node, const ItemObserver& observer);
  void Attach(const NodePtr& parent, const NodePtr& node);
  void Detach(const NodePtr& parent, const QString& name);
  NodePtr MakePath(const QString& path);
  NodePtr Clone(const Node& node, const QString& name, const ItemObserver& observer);
  void CopyInto(const Node& source, const NodePtr& parent, const QString& name, const QString& path,
                const ItemObserver& observer);
  void Record(FileSystemOperation operation, const QString& path, const QString& destination = {});
  Date Tick();
  void AppendTree(const Node& node, const QString& path, QStringList& lines) const;

  MemoryFileSystemOptions options_;
  NodePtr root_;
  quint64 nextId_ = 1;
  /// No two file systems share a volume.
  quint64 volume_;
  Date now_;
  std::vector<FileSystemCall> calls_;
};

}  // namespace trevane
