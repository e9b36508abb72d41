#pragma once

#include "engine/files/HeldFolder.h"
#include "engine/remote/LearntMemory.h"

#include <memory>
#include <utility>

namespace trevane {

/// A held folder that is asked anew each time, and whose changes forget what was learnt of it.
class LearntHeldFolder final : public HeldFolder {
 public:
  LearntHeldFolder(std::shared_ptr<HeldFolder> behind, std::shared_ptr<LearntMemory> memory)
      : memory_(std::move(memory)), behind_(std::move(behind)) {}

  [[nodiscard]] QString Path() const override { return behind_->Path(); }
  [[nodiscard]] std::optional<FileIdentity> KnownIdentity() const override {
    return behind_->KnownIdentity();
  }
  [[nodiscard]] qint64 DateStep() const override { return behind_->DateStep(); }
  [[nodiscard]] std::shared_ptr<HeldFolder> Enter(const QString& name) override {
    return std::make_shared<LearntHeldFolder>(behind_->Enter(name), memory_);
  }
  [[nodiscard]] std::shared_ptr<HeldFolder> EnterSeen(const QString& name, const SeenItem& seen) override {
    return std::make_shared<LearntHeldFolder>(behind_->EnterSeen(name, seen), memory_);
  }
  [[nodiscard]] Listing List() override { return behind_->List(); }
  [[nodiscard]] std::optional<SeenItem> Find(const QString& name) override { return behind_->Find(name); }
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& name, qint64 offset = 0) override {
    return behind_->OpenSource(name, offset);
  }
  [[nodiscard]] std::unique_ptr<ContentSink> OpenSink(const QString& name, const SinkRequest& request,
                                                      const std::optional<SeenItem>& seen) override;
  [[nodiscard]] std::vector<ReadResult> ReadMany(const QStringList& names) override {
    return behind_->ReadMany(names);
  }
  [[nodiscard]] std::vector<WriteResult> WriteMany(const std::vector<NewContent>& files) override;
  [[nodiscard]] std::optional<QString> ReadLink(const QString& name) override {
    return behind_->ReadLink(name);
  }
  void CreateLink(const QString& name, const QString& target) override;
  void ListInBatches(const ListingReceiver& receive) override { behind_->ListInBatches(receive); }
  [[nodiscard]] FileTraits Traits(const QString& name) override { return behind_->Traits(name); }
  void SetTraits(const QString& name, const FileTraits& traits) override;
  void SetTraitsOf(const SeenItem& seen, const FileTraits& traits) override;
  void CreateFolder(const QString& name, bool closed) override;
  [[nodiscard]] std::optional<SeenItem> MakeFolder(const QString& name, bool closed) override;
  void RemoveAlone(const QString& name, const SeenItem& seen) override;
  void RemoveMany(const std::vector<SeenItem>& items) override;
  void Flush(const QString& name) override { behind_->Flush(name); }

 private:
  [[nodiscard]] QString PathOf(const QString& name) const;

  const std::shared_ptr<LearntMemory> memory_;
  const std::shared_ptr<HeldFolder> behind_;
};

}  // namespace trevane
