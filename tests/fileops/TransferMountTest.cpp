#include "base/RunTimeError.h"
#include "tests/fileops/TransferWorld.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <utility>

namespace trevane::test {
namespace {

/// Gives what was put in place the identity that its mount has for it.
class MountSink final : public ContentSink {
 public:
  MountSink(std::unique_ptr<ContentSink> behind, const std::optional<FileIdentity>& identity)
      : behind_(std::move(behind)), identity_(identity) {}

  void Write(const QByteArray& piece) override { behind_->Write(piece); }
  [[nodiscard]] std::optional<QString> TemporaryName() const override { return behind_->TemporaryName(); }
  [[nodiscard]] SeenItem Commit() override { return {behind_->Commit().entry, identity_}; }

 private:
  std::unique_ptr<ContentSink> behind_;
  std::optional<FileIdentity> identity_;
};

/// The folders "a" and "b" are two mounts of one share, whose server has no numbers for its items: each mount
/// is a volume of its own, and numbers items by their paths.
class TwoMounts final : public FileSystem {
 public:
  explicit TwoMounts(std::shared_ptr<MemoryFileSystem> share) : share_(std::move(share)) {}

  [[nodiscard]] FileSystemCapabilities Capabilities() const override { return share_->Capabilities(); }
  [[nodiscard]] Listing List(const QString& folder) override { return share_->List(Shared(folder)); }
  [[nodiscard]] std::optional<FileEntry> Find(const QString& path) override {
    return share_->Find(Shared(path));
  }
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& path, qint64 offset) override {
    return share_->OpenSource(Shared(path), offset);
  }
  [[nodiscard]] std::unique_ptr<ContentSink> OpenSink(const QString& path,
                                                      const SinkRequest& request) override {
    return std::make_unique<MountSink>(share_->OpenSink(Shared(path), request), Identity(path));
  }
  void CreateFolder(const QString& path) override { share_->CreateFolder(Shared(path)); }
  void Rename(const QString& from, const QString& to, bool overwrite) override {
    share_->Rename(Shared(from), Shared(to), overwrite);
  }
  void RemoveAlone(const QString& path) override { share_->RemoveAlone(Shared(path)); }
  [[nodiscard]] std::optional<FileIdentity> Identity(const QString& path) override {
    return FileIdentity{path.startsWith(u'a') ? 1U : 2U, qHash(path.mid(1))};
  }

 private:
  /// The memory has a folder for the share, so that the top holds nothing else.
  [[nodiscard]] static QString Shared(const QString& path) {
    return path.isEmpty() ? path : QStringLiteral("share") + path.mid(1);
  }

  std::shared_ptr<MemoryFileSystem> share_;
};

class TransferMountTest : public testing::Test {
 protected:
  TransferMountTest() {
    EngineWorld::Machine nas = EngineWorld::MakeMachine({});
    share_ = nas.memory;
    share_->AddFile(QStringLiteral("share\\only"), "the only one");
    share_->AddFile(QStringLiteral("share\\tree\\sub\\only"), "the only one");
    share_->AddFolder(QStringLiteral("share\\other"));
    nas.faulty = std::make_shared<FaultyFileSystem>(std::make_shared<TwoMounts>(share_));
    world_.Connect(QStringLiteral("Nas"), nas);
  }

  static QString At(const QString& path) { return QStringLiteral("Workspace\\Nas\\") + path; }

  TransferWorld world_;
  std::shared_ptr<MemoryFileSystem> share_;
};

TEST_F(TransferMountTest, AFileIsNotMovedOntoItselfByTheOtherMount) {
  const QStringList before = share_->Tree();
  world_.Select(At(QStringLiteral("a")), QStringLiteral("only"));
  world_.prompts.ExpectChoice(0);
  world_.prompts.ExpectBox();
  EXPECT_FALSE(world_.Move(At(QStringLiteral("b"))));
  EXPECT_TRUE(world_.prompts.Asked().back().informativeText.contains(QStringLiteral("same place")));
  EXPECT_EQ(share_->Tree(), before);
}

TEST_F(TransferMountTest, AFolderIsNotMovedOntoItselfByTheOtherMount) {
  const QStringList before = share_->Tree();
  world_.SelectFolder(At(QStringLiteral("a")), QStringLiteral("tree"));
  world_.prompts.ExpectChoice(0);
  world_.prompts.ExpectBox();
  EXPECT_FALSE(world_.Move(At(QStringLiteral("b"))));
  EXPECT_EQ(share_->Tree(), before);
}

TEST_F(TransferMountTest, AnotherFolderOfTheOtherMountGetsTheFile) {
  share_->AddFile(QStringLiteral("share\\other\\only"), "old");
  world_.Select(At(QStringLiteral("a")), QStringLiteral("only"));
  world_.prompts.ExpectChoice(0);
  EXPECT_TRUE(world_.Move(At(QStringLiteral("b\\other"))));
  EXPECT_EQ(share_->Content(QStringLiteral("share\\other\\only")), "the only one");
  EXPECT_FALSE(share_->Exists(QStringLiteral("share\\only")));
}

}  // namespace
}  // namespace trevane::test
