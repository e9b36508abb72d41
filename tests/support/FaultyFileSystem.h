#pragma once

#include "engine/files/FileSystem.h"
#include "engine/providers/memory/FileSystemCall.h"

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace trevane::test {

/// How a call fails.
enum class Fault {
  /// Fails and does nothing.
  Refuse,
  /// Does its work and then fails, like a remote file system whose answer is lost.
  DoAndFail,
  /// Reports success, but a source gives only the first half of a piece and then ends, a sink drops the
  /// second
  /// half of one, and calls without a result do nothing. Commit tells what stands there.
  Lie,
  /// As Lie, but Commit claims that all of the content stands there; it is such a call itself, and then
  /// nothing
  /// stands there.
  LieAndReckon
};

/// Which calls fail.
enum class FaultSpan { Once, FromThenOn };

/// Wraps any file system, records its calls and makes the Nth of them fail. Each piece that a source reads or
/// a sink writes is a call of its own, Read or Write. Capabilities and TypeName never fail and are not
/// counted.
class FaultyFileSystem final : public FileSystem {
 public:
  explicit FaultyFileSystem(std::shared_ptr<FileSystem> inner) : inner_(std::move(inner)) {}

  /// Counts from here: the `call`th call (1 is the next) fails with the error `number`.
  void Arm(int call, FaultSpan span = FaultSpan::Once, qint32 number = error::kTimeOut,
           Fault fault = Fault::Refuse);
  void Disarm() { armedAt_ = 0; }
  /// How many calls failed since Arm.
  [[nodiscard]] int FaultCount() const { return faults_; }

  /// Runs before each call reaches the file system, to act as another program or to stall.
  void SetHook(std::function<void(const FileSystemCall&)> hook) { hook_ = std::move(hook); }

  /// From now on listings come in batches of so many entries. Before each of them, and once more at the end,
  /// `before` is called with the number of entries that were given. It may raise an error.
  void SetBatches(size_t size, std::function<void(size_t)> before = {}) {
    batchSize_ = size;
    beforeBatch_ = std::move(before);
  }

  /// From now on a batch is handed on whole, as one call that never fails. Without this each of its files is
  /// calls of its own.
  void PassBatches() { passesBatches_ = true; }

  /// The number of calls that had been made when ForgetLearnt was called last; nothing before that.
  [[nodiscard]] std::optional<int> ForgotAt() const { return forgotAt_; }
  [[nodiscard]] bool HasLostLine(const QString& path) const override { return inner_->HasLostLine(path); }
  void ForgetLearnt() override {
    forgotAt_ = CallCount();
    inner_->ForgetLearnt();
  }

  /// The result of the next TakeLeftovers.
  void SetLeftovers(std::vector<Leftover> leftovers) { leftovers_ = std::move(leftovers); }

  [[nodiscard]] const std::vector<FileSystemCall>& Calls() const { return calls_; }
  [[nodiscard]] int CallCount() const { return static_cast<int>(calls_.size()); }
  void ClearCalls() { calls_.clear(); }

  [[nodiscard]] FileSystemCapabilities Capabilities() const override { return inner_->Capabilities(); }
  [[nodiscard]] Listing List(const QString& folder) override;
  /// Counted and recorded as List.
  void ListInBatches(const QString& folder, const ListingReceiver& receive) override;
  [[nodiscard]] FileEntry Stat(const QString& path) override;
  /// Counted and recorded as Stat.
  [[nodiscard]] std::optional<FileEntry> Find(const QString& path) override;
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& path, qint64 offset = 0) override;
  [[nodiscard]] std::unique_ptr<ContentSink> OpenSink(const QString& path,
                                                      const SinkRequest& request) override;
  [[nodiscard]] std::vector<ReadResult> ReadMany(const QStringList& paths) override {
    return passesBatches_ ? inner_->ReadMany(paths) : FileSystem::ReadMany(paths);
  }
  [[nodiscard]] std::vector<WriteResult> WriteMany(const std::vector<NewContent>& files) override {
    return passesBatches_ ? inner_->WriteMany(files) : FileSystem::WriteMany(files);
  }
  [[nodiscard]] std::optional<QString> ReadLink(const QString& path) override;
  void CreateLink(const QString& path, const QString& target) override;
  /// Counted and recorded as Stat.
  [[nodiscard]] FileTraits Traits(const QString& path) override;
  /// Counted and recorded as Write.
  void SetTraits(const QString& path, const FileTraits& traits) override;
  void Flush(const QString& path) override;
  void CreateFile(const QString& path) override;
  void CreateFolder(const QString& path) override;
  /// Counted and recorded as CreateFolder.
  void CreateClosedFolder(const QString& path) override;
  void Copy(const QString& from, const QString& to, bool overwrite,
            const ItemObserver& observer = {}) override;
  void Rename(const QString& from, const QString& to, bool overwrite) override;
  void Remove(const QString& path, const ItemObserver& observer = {}) override;
  /// Counted and recorded as Remove.
  void RemoveAlone(const QString& path) override;
  [[nodiscard]] std::vector<Leftover> TakeLeftovers() override {
    return leftovers_.empty() ? inner_->TakeLeftovers() : std::exchange(leftovers_, {});
  }
  Variant Execute(const QString& path, const QString& command, const Variant& parameter) override;
  [[nodiscard]] std::optional<FileIdentity> Identity(const QString& path) override;
  [[nodiscard]] QStringList Details(const QString& path) override { return inner_->Details(path); }
  /// Counted and recorded as Identity.
  [[nodiscard]] std::vector<FileIdentity> FolderIdentities(const QString& folder) override;
  [[nodiscard]] QString TypeName(const FileEntry& entry) override { return inner_->TypeName(entry); }

 private:
  class Source;
  class Sink;

  /// Nothing when the call succeeds; throws for Fault::Refuse.
  [[nodiscard]] std::optional<Fault> Enter(FileSystemOperation operation, const QString& path,
                                           const QString& destination = {},
                                           const Variant& parameter = Missing{});
  /// For calls without a result.
  void Change(FileSystemOperation operation, const QString& path, const QString& destination,
              const std::function<void()>& work, const Variant& parameter = Missing{});
  [[noreturn]] void FailAt(const QString& path) const;

  std::shared_ptr<FileSystem> inner_;
  std::vector<FileSystemCall> calls_;
  std::vector<Leftover> leftovers_;
  std::optional<int> forgotAt_;
  size_t batchSize_ = 0;
  std::function<void(size_t)> beforeBatch_;
  std::function<void(const FileSystemCall&)> hook_;
  bool passesBatches_ = false;
  int armedAt_ = 0;
  int count_ = 0;
  int faults_ = 0;
  FaultSpan span_ = FaultSpan::Once;
  qint32 number_ = 0;
  Fault fault_ = Fault::Refuse;
};

}  // namespace trevane::test
