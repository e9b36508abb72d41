#pragma once

#include "engine/files/FileSystem.h"
#include "engine/remote/LearntMemory.h"

#include <memory>

namespace trevane {

/// Answers List, Find, Stat and Details from what was just learnt of a slow file system; all else is asked of
/// it. Each call that changes something forgets the folder it touches, also one that failed: it may have
/// happened. Held folders and what sinks return are never answered from memory.
class LearntFileSystem final : public FileSystem {
 public:
  LearntFileSystem(std::shared_ptr<FileSystem> behind, std::shared_ptr<LearntClock> clock);
  LearntFileSystem(const LearntFileSystem&) = delete;
  LearntFileSystem& operator=(const LearntFileSystem&) = delete;

  [[nodiscard]] FileSystemCapabilities Capabilities() const override { return behind_->Capabilities(); }
  [[nodiscard]] Listing List(const QString& folder) override;
  void ListInBatches(const QString& folder, const ListingReceiver& receive) override;
  [[nodiscard]] FileEntry Stat(const QString& path) override;
  [[nodiscard]] std::optional<FileEntry> Find(const QString& path) override;
  [[nodiscard]] bool HasLostLine(const QString& path) const override { return behind_->HasLostLine(path); }
  void ForgetLearnt() override;
  /// What Find has told before this object was there.
  void Learn(const QString& path, const std::optional<FileEntry>& entry) { memory_->LearnItem(path, entry); }

  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& path, qint64 offset = 0) override {
    return behind_->OpenSource(path, offset);
  }
  [[nodiscard]] std::unique_ptr<ContentSink> OpenSink(const QString& path,
                                                      const SinkRequest& request) override;
  [[nodiscard]] std::vector<ReadResult> ReadMany(const QStringList& paths) override {
    return behind_->ReadMany(paths);
  }
  [[nodiscard]] std::vector<WriteResult> WriteMany(const std::vector<NewContent>& files) override;
  [[nodiscard]] std::optional<QString> ReadLink(const QString& path) override {
    return behind_->ReadLink(path);
  }
  void CreateLink(const QString& path, const QString& target) override;
  [[nodiscard]] FileTraits Traits(const QString& path) override { return behind_->Traits(path); }
  void SetTraits(const QString& path, const FileTraits& traits) override;
  void Flush(const QString& path) override { behind_->Flush(path); }
  void CreateFile(const QString& path) override;
  void CreateFolder(const QString& path) override;
  void CreateClosedFolder(const QString& path) override;
  [[nodiscard]] std::shared_ptr<HeldFolder> Hold(const QString& folder) override;
  void Copy(const QString& from, const QString& to, bool overwrite,
            const ItemObserver& observer = {}) override;
  void Rename(const QString& from, const QString& to, bool overwrite) override;
  void Remove(const QString& path, const ItemObserver& observer = {}) override;
  void RemoveAlone(const QString& path) override;
  [[nodiscard]] std::vector<Leftover> TakeLeftovers() override;
  /// Forgets all: a command may do anything.
  Variant Execute(const QString& path, const QString& command, const Variant& parameter) override;
  [[nodiscard]] std::optional<FileIdentity> Identity(const QString& path) override {
    return behind_->Identity(path);
  }
  [[nodiscard]] std::vector<FileIdentity> FolderIdentities(const QString& folder) override {
    return behind_->FolderIdentities(folder);
  }
  [[nodiscard]] QStringList Details(const QString& path) override;
  [[nodiscard]] QString PathFromText(const QString& text) override { return behind_->PathFromText(text); }
  [[nodiscard]] QString TypeName(const FileEntry& entry) override { return behind_->TypeName(entry); }

 private:
  const std::shared_ptr<FileSystem> behind_;
  const std::shared_ptr<LearntMemory> memory_;
};

}  // namespace trevane
