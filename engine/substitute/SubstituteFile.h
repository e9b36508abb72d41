#pragma once

#include "engine/model/IxoFile.h"
#include "engine/substitute/ContentPrint.h"
#include "engine/substitute/FileOptions.h"
#include "engine/substitute/FileSystemSession.h"

#include <memory>

namespace trevane {

class SubstituteFiles;

/// One file or folder, known by its path. It holds all that it needs, so that it stays usable after its
/// collection has been cleared and after its controller has been removed. Its entry comes from its parent's
/// listing and is asked anew only after a change.
class SubstituteFile final : public IxoFile {
 public:
  /// `parent` is the collection that caches this under `index`; nothing for an object that is not cached.
  SubstituteFile(std::shared_ptr<FileSystemSession> session, std::weak_ptr<SubstituteFiles> parent,
                 FolderReference folder, const SeenItem& seen, qint32 index);
  ~SubstituteFile() override;
  SubstituteFile(const SubstituteFile&) = delete;
  SubstituteFile& operator=(const SubstituteFile&) = delete;

  /// The item at a path of the file system, not cached anywhere. Fails with error::kNotFound.
  [[nodiscard]] static std::shared_ptr<SubstituteFile> At(const std::shared_ptr<FileSystemSession>& session,
                                                          const QString& path);

  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(qint64 offset = 0) override;
  [[nodiscard]] std::unique_ptr<ContentSink> OpenSink(const SinkRequest& request) override;
  [[nodiscard]] std::vector<ReadResult> ReadMany(const QStringList& names) override;
  /// Nothing is left of a file that failed.
  [[nodiscard]] std::vector<WriteResult> WriteMany(const std::vector<NewContent>& files) override;
  [[nodiscard]] std::optional<QString> LinkText() override;
  void CreateLink(const QString& name, const QString& text) override;
  void ForgetLearnt() override;
  /// These move the content as one value.
  /// A folder that was seen there, not cached anywhere. It is asked for only when its entry is needed.
  [[nodiscard]] static std::shared_ptr<SubstituteFile> KnownAt(
      const std::shared_ptr<FileSystemSession>& session, const QString& path);

  [[nodiscard]] Variant Value() override;
  void PutValue(const Variant& value) override;
  void PutNewValue(const Variant& value, const FileTraits& traits) override;
  [[nodiscard]] FileTraits Traits() override;
  [[nodiscard]] FileTraits TraitsOf(const FileEntry& child) override;
  [[nodiscard]] qint64 DateStep() override { return session_->Capabilities().dateStep; }
  [[nodiscard]] bool HasTemporaryNames() override { return session_->Capabilities().temporaryNames; }
  [[nodiscard]] bool TakesFreshNames() override {
    const FileSystemCapabilities can = session_->Capabilities();
    return can.temporaryNames || can.freshNames;
  }
  [[nodiscard]] bool HasLostLine() noexcept override;
  [[nodiscard]] bool KeepsTraits() override { return session_->Capabilities().traits; }
  [[nodiscard]] bool CanHoldFolders() override { return session_->Capabilities().folders; }
  void SetTraits(const FileTraits& traits) override;
  void TakeBack() override;
  [[nodiscard]] qint32 Attribute() override;
  [[nodiscard]] Variant DateCreated() override;
  [[nodiscard]] Variant DateLastAccessed() override;
  [[nodiscard]] Variant DateLastModified() override;
  [[nodiscard]] Variant FileNames(const QString& option) override;
  [[nodiscard]] Listing List() override;
  void ListInBatches(const ListingReceiver& receive) override;
  [[nodiscard]] std::shared_ptr<IxoFiles> Files() override;
  [[nodiscard]] qint32 Index() override;
  [[nodiscard]] QString Name() override;
  [[nodiscard]] QString Path() override;
  [[nodiscard]] qint32 Size() override;
  [[nodiscard]] qint64 Size64() override;
  [[nodiscard]] QString Type() override;
  [[nodiscard]] QStringList Details() override;
  [[nodiscard]] std::optional<QString> Identity() override;
  [[nodiscard]] QStringList FolderIdentities() override;
  [[nodiscard]] QString IdentityScope() override;
  [[nodiscard]] std::shared_ptr<IxoFile> OpenFile(const QString& name, const QString& option) override;
  [[nodiscard]] std::shared_ptr<IxoFile> CreateNewFile(const QString& name) override;
  [[nodiscard]] std::shared_ptr<IxoFile> CreateClosedFolder(const QString& name) override;
  void Hold() override;
  void LetGo() noexcept override;
  [[nodiscard]] bool LeadsNowhere() override;
  [[nodiscard]] QStringList RefusedNames() override;
  [[nodiscard]] bool IsKnownAbsent(const QString& name) override;
  [[nodiscard]] std::optional<std::shared_ptr<IxoFile>> LookFor(const QString& name) override;
  [[nodiscard]] std::shared_ptr<IxoFile> MakeFolder(const QString& name, bool closed) override;
  [[nodiscard]] std::shared_ptr<IxoFile> OpenListed(const FileEntry& child) override;
  [[nodiscard]] bool ListingTellsAll() override;
  /// Only while it is held.
  [[nodiscard]] bool SeesArrivals() override;
  void DeleteSeen(const Listing& children) override;
  void Flush() override;
  void Copy(const QString& destination, const QString& option, const ItemObserver& observer = {}) override;
  void Delete(const QString& option, const ItemObserver& observer = {}) override;
  void DeleteAlone() override;
  [[nodiscard]] std::vector<Leftover> TakeLeftovers() override;
  [[nodiscard]] bool CanRun() override;
  Variant Execute(const QString& command, const Variant& parameter) override;
  void Move(const QString& destination, const QString& option) override;
  Variant Run(const QString& option) override;

  // For the collection that caches it.
  [[nodiscard]] const QString& CachedName() const noexcept { return entry_.name; }
  [[nodiscard]] qint32 CachedIndex() const noexcept { return index_; }
  [[nodiscard]] bool IsThere() const noexcept { return state_ == State::There; }
  [[nodiscard]] bool IsPending() const noexcept { return state_ == State::Pending; }
  void AwaitContent() noexcept { state_ = State::Pending; }
  void Update(const SeenItem& seen);

  /// For its sink: puts the content in place that `print` was made of.
  [[nodiscard]] SeenItem Commit(ContentSink& sink, const ContentPrint& print);
  void ContentFailed() noexcept { knownAt_ = 0; }

 private:
  enum class State {
    There,
    /// Created, and waiting for its content: nothing has its name yet.
    Pending,
    /// Its content could not be put in place: nothing of it should be left.
    Failed,
    /// Given up before it was made, or its name was taken meanwhile.
    GivenUp
  };

  [[nodiscard]] QString FullPath() const;
  /// The entry, asked anew when something has changed since.
  const FileEntry& Entry();
  [[nodiscard]] SubstituteFiles& Children();
  void RequireFolder() const;
  [[nodiscard]] std::shared_ptr<IxoFile> MakeFile(const QString& name);
  [[nodiscard]] std::shared_ptr<IxoFile> OpenChild(const QString& name, FileOptions::Create create,
                                                   bool closed = false);
  /// As the folder that holds the children; entered when that has not been done yet.
  [[nodiscard]] FolderReference Inside();
  /// Where it is looked for in a held folder; nothing where it is known by its path.
  [[nodiscard]] HeldFolder* Holder() const noexcept { return folder_.Held().get(); }
  [[nodiscard]] SeenItem Seen() const { return {entry_, identity_}; }
  [[nodiscard]] bool IsWhatWasMade();
  /// Of a file without content that this object has made.
  void RemoveEmpty();
  [[nodiscard]] bool HoldsStartOf(const ContentPrint& print);
  /// It is what a call of this object has just made.
  void Made(const SeenItem& seen, const ContentPrint& print);
  void TakeBackQuietly() noexcept;
  void RequireThere() const;
  [[nodiscard]] QString IdentityText(const FileIdentity& identity) const;
  void RequireNoTop(const QString& path) const;
  void RemoveAlone();
  void LeaveParent() noexcept;

  std::shared_ptr<FileSystemSession> session_;
  std::weak_ptr<SubstituteFiles> parent_;
  FolderReference folder_;
  FileEntry entry_;
  /// Learnt together with the entry, in a held folder only.
  std::optional<FileIdentity> identity_;
  quint64 knownAt_;
  qint32 index_;
  State state_ = State::There;
  /// Of a file that this object created: its content, and the stamp that it is recognised by.
  std::optional<ContentPrint> made_;
  std::optional<SeenItem> stamp_;
  std::shared_ptr<SubstituteFiles> files_;
  /// Of a held folder itself.
  std::shared_ptr<HeldFolder> own_;
  int holds_ = 0;
  /// The folder's path, while Hold has replaced it by a held folder.
  std::optional<QString> heldFrom_;
};

}  // namespace trevane
