#include "engine/items/clsIxoFile.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "engine/providers/share/OpenShare.h"
#include "fileops/modIxoFile.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SessionWorld.h"
#include "tests/support/TestFiles.h"
#include "views/addresses/NodeTags.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

const QString kCell = QStringLiteral("Workspace\\My Computer\\C:\\cell");
const QString kShare = QStringLiteral("Workspace\\Share");

/// The folder "cell" of C: is shared, and the controller "Share" leads to it.
class TransferShareTest : public testing::Test {
 protected:
  TransferShareTest() {
    QDir(folder_.path()).mkpath(QStringLiteral("cell/tree/sub"));
    WriteFile(folder_.filePath(QStringLiteral("cell/tree/a")), "a");
    WriteFile(folder_.filePath(QStringLiteral("cell/only")), "the only one");
    world_.volumes.Set({{QStringLiteral("C:"), folder_.path() + u'/', drivetype::kFixed}});
    const auto local = std::make_shared<LocalFileSystem>(world_.volumes);
    const QString shared = folder_.filePath(QStringLiteral("cell"));
    world_.Open({{QStringLiteral("IxoProv.LocalFile"), [local](const FileSystemRequest&) { return local; }},
                 {QStringLiteral("IxoProv.Share"), [shared](const FileSystemRequest&) {
                    return OpenShare({.machine = shared, .option = {}});
                  }}});
    world_.Register(QStringLiteral("Share"), QStringLiteral("IxoProv.Share"), QStringLiteral("/"));
    world_.drives.RefreshDrives();
  }

  QTemporaryDir folder_;
  SessionWorld world_;
};

TEST_F(TransferShareTest, AFolderIsNotCopiedIntoItselfByAShare) {
  clsIxoFile file = world_.files.FileAt(kCell + QStringLiteral("\\tree"));
  int seen = 0;
  EXPECT_EQ(file.CopyDiffCtrl(kShare + QStringLiteral("\\tree\\sub"), {},
                              [&seen](const ItemProgress&) { return ++seen < 100; }),
            error::kInvalidParameter);
  EXPECT_EQ(QDir(folder_.filePath(QStringLiteral("cell/tree/sub")))
                .entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
            QStringList());
}

TEST_F(TransferShareTest, AFileIsNotMovedOntoItselfByAShare) {
  RecordingLog log;
  RecordingHost host;
  OperationState state;
  modIxoFile operations{{world_.files, log, host, state}};
  state.nFileOpMode = OperationState::kCut;
  state.clipboard.Add(ClipBrdOfItem(world_.session.gIxoCtrls(), kCell, QStringLiteral("only"), 0), {});
  world_.prompts.ExpectBox();
  EXPECT_FALSE(
      operations.Transfer(ClipBrdOfNode(world_.session.gIxoCtrls(), kShare, kFolderBit | TAG_CONTROLLER)));
  EXPECT_EQ(world_.prompts.Asked().size(), 1U) << "told, and not asked whether to replace it";
  EXPECT_EQ(ContentOf(folder_.filePath(QStringLiteral("cell/only"))), "the only one");
}

}  // namespace
}  // namespace trevane::test
