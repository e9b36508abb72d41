#include "engine/providers/local/LocalFileSystem.h"
#include "engine/providers/sftp/SftpFileSystem.h"
#include "fileops/modIxoFile.h"
#include "tests/engine/providers/sftp/PipeChannel.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SessionWorld.h"
#include "tests/support/TestFiles.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/NodeTags.h"

#include <QDir>
#include <QDirIterator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace trevane::test {
namespace {

const QString kDisk = QStringLiteral("Workspace\\My Computer\\C:\\cell");
const QString kOne = QStringLiteral("Workspace\\One");
const QString kSameKey = QStringLiteral("Workspace\\SameKey");
const QString kOtherKey = QStringLiteral("Workspace\\OtherKey");

class KeyedConnector final : public PipeConnector {
 public:
  explicit KeyedConnector(QString key) : PipeConnector(Wrap{}), key_(std::move(key)) {}
  [[nodiscard]] QString ServerKey() const override { return key_; }

 private:
  QString key_;
};

/// One folder of this computer: on its disk, and over servers of one host key and of two.
class OnePlaceOverSftp : public testing::TestWithParam<std::pair<QString, QString>> {
 protected:
  void SetUp() override {
    if (SftpServerProgram().isEmpty()) {
      GTEST_SKIP() << NoSftpServerText().toStdString();
    }
    ASSERT_TRUE(QDir(folder_.path()).mkpath(QStringLiteral("cell/tree/sub")));
    WriteFile(folder_.filePath(QStringLiteral("cell/tree/a")), "a");
    WriteFile(folder_.filePath(QStringLiteral("cell/tree/sub/b")), "b");
    WriteFile(folder_.filePath(QStringLiteral("cell/only")), "the only one");
    world_.volumes.Set({{QStringLiteral("C:"), folder_.path() + u'/', drivetype::kFixed}});
    const auto local = std::make_shared<LocalFileSystem>(world_.volumes);
    const QString sftp = QStringLiteral("IxoProv.Sftp");
    world_.Open({{QStringLiteral("IxoProv.LocalFile"), [local](const FileSystemRequest&) { return local; }},
                 {sftp, [](const FileSystemRequest& request) {
                    return OpenSftpFileSystem(std::make_unique<KeyedConnector>(request.option),
                                              {.host = QStringLiteral("cell"), .user = QStringLiteral("u")},
                                              nullptr);
                  }}});
    const QString root = folder_.path() + QStringLiteral("/cell");
    world_.Register(QStringLiteral("One"), sftp, root, QStringLiteral("key"));
    world_.Register(QStringLiteral("SameKey"), sftp, root, QStringLiteral("key"));
    world_.Register(QStringLiteral("OtherKey"), sftp, root, QStringLiteral("other"));
    world_.drives.RefreshDrives();
    world_.prompts.AnswerAllChoices(1);
    world_.prompts.AnswerAllBoxes(PromptAnswer::Ok);
  }
  bool Move(const QString& from, const QString& name, qint32 bits, const QString& into) {
    const auto& controllers = world_.session.gIxoCtrls();
    const auto tag = [](const QString& address) { return IsLocalAddress(address) ? 0 : TAG_CONTROLLER; };
    OperationState state;
    state.nFileOpMode = OperationState::kCut;
    state.clipboard.Add(ClipBrdOfItem(controllers, from, name, bits | tag(from)), {});
    modIxoFile operations{{world_.files, log_, host_, state}};
    return operations.Transfer(ClipBrdOfNode(controllers, into, kFolderBit | tag(into)));
  }
  [[nodiscard]] QStringList Tree() const {
    QStringList names;
    QDirIterator items(folder_.path(), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                       QDirIterator::Subdirectories);
    while (items.hasNext()) {
      names += items.next();
    }
    names.sort();
    return names;
  }
  void ExpectRefused(const QString& name, qint32 bits, const QString& below = {}) {
    const QStringList before = Tree();
    EXPECT_FALSE(Move(GetParam().first, name, bits, GetParam().second + below));
    EXPECT_EQ(Tree(), before);
    EXPECT_EQ(ContentOf(folder_.filePath(QStringLiteral("cell/only"))), "the only one");
    EXPECT_EQ(ContentOf(folder_.filePath(QStringLiteral("cell/tree/a"))), "a");
    EXPECT_EQ(ContentOf(folder_.filePath(QStringLiteral("cell/tree/sub/b"))), "b");
  }

  QTemporaryDir folder_;
  RecordingLog log_;
  RecordingHost host_;
  SessionWorld world_;
};

TEST_P(OnePlaceOverSftp, AMovedFileIsNotReplacedByItself) {
  ExpectRefused(QStringLiteral("only"), 0);
}

TEST_P(OnePlaceOverSftp, AMovedTreeIsNotReplacedByItself) {
  ExpectRefused(QStringLiteral("tree"), kFolderBit);
}

TEST_P(OnePlaceOverSftp, ATreeIsNotMovedIntoItself) {
  ExpectRefused(QStringLiteral("tree"), kFolderBit, QStringLiteral("\\tree\\sub"));
}

INSTANTIATE_TEST_SUITE_P(Controllers, OnePlaceOverSftp,
                         testing::Values(std::pair(kOne, kDisk), std::pair(kDisk, kOne),
                                         std::pair(kOne, kOtherKey), std::pair(kOne, kSameKey)));

}  // namespace
}  // namespace trevane::test
