#include "tests/engine/remote/RemoteWorld.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace trevane::test {
namespace {

/// What a file system was asked in its pauses, and what it answers.
class IdleRecord final {
 public:
  struct Call {
    qint64 milliseconds = 0;
    std::thread::id thread;
  };

  /// Answers in their order; 0 after the last one.
  explicit IdleRecord(std::vector<qint64> answers) : answers_(std::move(answers)) {}

  qint64 Idle(qint64 milliseconds) {
    const std::lock_guard lock(mutex_);
    calls_.push_back({milliseconds, std::this_thread::get_id()});
    changed_.notify_all();
    return calls_.size() <= answers_.size() ? answers_[calls_.size() - 1] : 0;
  }
  /// Waits until there are so many.
  [[nodiscard]] std::vector<Call> Calls(size_t count) {
    std::unique_lock lock(mutex_);
    EXPECT_TRUE(changed_.wait_for(lock, std::chrono::seconds(20), [&] { return calls_.size() >= count; }));
    return calls_;
  }

  std::atomic<std::thread::id> lister;

 private:
  const std::vector<qint64> answers_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Call> calls_;
};

/// A file system in memory that records its pauses.
class IdleFiles final : public FileSystem {
 public:
  explicit IdleFiles(std::shared_ptr<IdleRecord> record) : record_(std::move(record)) {}

  [[nodiscard]] FileSystemCapabilities Capabilities() const override { return memory_.Capabilities(); }
  [[nodiscard]] Listing List(const QString& folder) override {
    record_->lister = std::this_thread::get_id();
    return memory_.List(folder);
  }
  [[nodiscard]] std::optional<FileEntry> Find(const QString& path) override { return memory_.Find(path); }
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& path, qint64 offset) override {
    return memory_.OpenSource(path, offset);
  }
  [[nodiscard]] std::unique_ptr<ContentSink> OpenSink(const QString& path,
                                                      const SinkRequest& request) override {
    return memory_.OpenSink(path, request);
  }
  void CreateFolder(const QString& path) override { memory_.CreateFolder(path); }
  void Rename(const QString& from, const QString& to, bool overwrite) override {
    memory_.Rename(from, to, overwrite);
  }
  void RemoveAlone(const QString& path) override { memory_.RemoveAlone(path); }
  [[nodiscard]] qint64 Idle(qint64 milliseconds) noexcept override { return record_->Idle(milliseconds); }

 private:
  const std::shared_ptr<IdleRecord> record_;
  MemoryFileSystem memory_;
};

struct IdleWorld {
  explicit IdleWorld(std::vector<qint64> answers)
      : record(std::make_shared<IdleRecord>(std::move(answers))) {}
  ~IdleWorld() { EXPECT_TRUE(context.controllers->StopAll(std::chrono::seconds(20))); }
  IdleWorld(const IdleWorld&) = delete;
  IdleWorld& operator=(const IdleWorld&) = delete;

  [[nodiscard]] std::unique_ptr<RemoteFileSystem> Connect() {
    return std::make_unique<RemoteFileSystem>(
        context, RemoteConnection::Opening{QStringLiteral("Robot"),
                                           [record = record](const FileSystemRequest&) {
                                             return std::make_shared<IdleFiles>(record);
                                           },
                                           {}});
  }

  std::shared_ptr<IdleRecord> record;
  WindowQueue queue;
  ScriptedWaiter waiter;
  RemoteContext context{queue, waiter};
};

TEST(IdlePauseTest, CallsAFileSystemWhenItAskedForThat) {
  IdleWorld world({20, 50, 0});
  const auto files = world.Connect();
  const std::vector<IdleRecord::Call> calls = world.record->Calls(3);
  ASSERT_EQ(calls.size(), 3U);
  EXPECT_EQ(calls[0].milliseconds, 0);
  EXPECT_GE(calls[1].milliseconds, 20);
  EXPECT_GE(calls[2].milliseconds, 50);
  static_cast<void>(files->List(QString()));
  EXPECT_EQ(calls[2].thread, world.record->lister.load());
}

TEST(IdlePauseTest, BeginsAnewAfterEachCall) {
  IdleWorld world({100'000, 20, 0});
  const auto files = world.Connect();
  static_cast<void>(world.record->Calls(1));
  // The long pause that was asked for keeps no call waiting.
  static_cast<void>(files->List(QString()));
  const std::vector<IdleRecord::Call> calls = world.record->Calls(3);
  EXPECT_EQ(calls[0].milliseconds, 0);
  EXPECT_EQ(calls[1].milliseconds, 0);
  EXPECT_GE(calls[2].milliseconds, 20);
  EXPECT_LT(calls[2].milliseconds, 100'000);
}

TEST(IdlePauseTest, IsCalledNoMoreForATimeThatIsOver) {
  IdleWorld world({20, 20, 20, 20});
  const auto files = world.Connect();
  static_cast<void>(world.record->Calls(2));
  static_cast<void>(files->List(QString()));
  // Two of the first pause, and the beginning of the next.
  const std::vector<IdleRecord::Call> calls = world.record->Calls(3);
  EXPECT_EQ(calls[2].milliseconds, 0);
}

}  // namespace
}  // namespace trevane::test
