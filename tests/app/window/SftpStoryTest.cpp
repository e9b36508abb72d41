// Controllers over SFTP from the connect dialog to the workspace file that brings them back: the real window
// and the shipped providers, over two SSH servers of this computer.
#include "tests/app/window/NetworkStory.h"
#include "tests/support/Sshd.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <optional>

namespace trevane::test {
namespace {

class SftpStoryTest : public NetworkStory {
 protected:
  SftpStoryTest() {
    PutOnDisk("laptop/prog/a.pac", "program a");
    PutOnDisk("laptop/prog/sub/b.pac", "program b");
    PutOnDisk("cell1/config", "one");
    PutOnDisk("cell2/config", "two");
  }

  void SetUp() override {
    if (!Sshd::IsAvailable()) {
      GTEST_SKIP() << "the SSH servers were not fetched: see CONTRIBUTING";
    }
    first_.emplace();
    second_.emplace();
    ASSERT_TRUE(QDir(home_.path()).mkpath(QStringLiteral(".ssh")));
    ASSERT_TRUE(QFile::copy(first_->KeyFile(), home_.filePath(QStringLiteral(".ssh/id_ed25519"))));
  }

  void Connect(const QString& name, const Sshd& sshd, const QString& option, const char* root) {
    NetworkStory::Connect(QStringLiteral("IxoProv.Sftp"), name, sshd.Machine(), option,
                          disk_.filePath(QString::fromLatin1(root)));
  }
  void ExpectUnknownKey(const Sshd& sshd, int answer) {
    prompts_.ExpectChoice(
        QStringLiteral("The host key of %1 is not known. Connect to it?").arg(sshd.Machine()), answer);
  }

  std::optional<Sshd> first_;
  std::optional<Sshd> second_;
};

TEST_F(SftpStoryTest, FromTheLaptopToACellFromCellToCellAndBothComeBack) {
  Run();
  const QString keyOption = QStringLiteral("KeyFile=%1").arg(second_->KeyFile());
  ExpectUnknownKey(*first_, 0);
  Connect(QStringLiteral("Cell1"), *first_, {}, "cell1");
  EXPECT_EQ(Nav().CurrentAddress(), QStringLiteral("Workspace\\Cell1"));
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("config")});
  ExpectUnknownKey(*second_, 0);
  Connect(QStringLiteral("Cell2"), *second_, keyOption, "cell2");
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("config")});

  // From the disk to the first cell, and browse what has arrived.
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:\\laptop"));
  ClickItem(QStringLiteral("prog"));
  Trigger(CommandPlace::MainToolbar, CommandId::Copy);
  ClickNode(QStringLiteral("Workspace\\Cell1"));
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("config"), QStringLiteral("prog")}));
  DoubleClickItem(QStringLiteral("prog"));
  EXPECT_EQ(Nav().CurrentAddress(), QStringLiteral("Workspace\\Cell1\\prog"));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("a.pac"), QStringLiteral("sub")}));
  EXPECT_EQ(OnDisk("cell1/prog/sub/b.pac"), "program b");
  EXPECT_EQ(QFileInfo(disk_.filePath(QStringLiteral("cell1/prog/a.pac"))).lastModified().toSecsSinceEpoch(),
            QFileInfo(disk_.filePath(QStringLiteral("laptop/prog/a.pac"))).lastModified().toSecsSinceEpoch());

  // From the first cell to the second, and once more onto a copy that is another one now: kept, then
  // replaced.
  ClickNode(QStringLiteral("Workspace\\Cell1"));
  ClickItem(QStringLiteral("prog"));
  Trigger(CommandPlace::MainToolbar, CommandId::Copy);
  ClickNode(QStringLiteral("Workspace\\Cell2"));
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_EQ(OnDisk("cell2/prog/a.pac"), "program a");
  PutOnDisk("cell2/prog/a.pac", "older");
  const QString overwrite = QStringLiteral("'prog' already existed.\r\nOverwrite?");
  prompts_.ExpectChoice(overwrite, 2);
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_EQ(OnDisk("cell2/prog/a.pac"), "older");
  prompts_.ExpectChoice(overwrite, 1);
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_EQ(OnDisk("cell2/prog/a.pac"), "program a");
  EXPECT_EQ(OnDisk("cell2/prog/sub/b.pac"), "program b");

  // Both come back from the file without a question: their keys are known now.
  const QString workspace = disk_.filePath(QStringLiteral("cells.fmg"));
  prompts_.ExpectFile(workspace);
  Trigger(CommandPlace::FileMenu, CommandId::SaveWorkspace);
  Quit();
  prompts_.VerifyAllAsked();
  Run(u'"' + workspace + u'"');
  EXPECT_EQ(ListTexts(),
            (QStringList{QStringLiteral("Cell1"), QStringLiteral("Cell2"), QStringLiteral("My Computer")}));
  ClickNode(QStringLiteral("Workspace\\Cell1"));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("config"), QStringLiteral("prog")}));
  ClickNode(QStringLiteral("Workspace\\Cell2"));
  ClickNode(QStringLiteral("Workspace\\Cell2\\prog"));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("a.pac"), QStringLiteral("sub")}));
}

TEST_F(SftpStoryTest, AFileThatIsRunIsChangedHereAndPutBackOnItsServer) {
  const auto now = std::make_shared<qint64>(0);
  fetchedFolder_ = InFolder("fetched");
  fetchedClock_ = [now] { return *now; };
  // The program appends to what it opens.
  openWithProgram_ = [](const QString& path) {
    WriteFile(path, ContentOf(path) + " and more");
    return OpenOutcome{};
  };
  Run();
  ExpectUnknownKey(*first_, 0);
  Connect(QStringLiteral("Cell1"), *first_, {}, "cell1");
  prompts_.ExpectBox(QStringLiteral("'config' of 'Cell1' was changed on this computer. Put it back?"),
                     PromptAnswer::Yes);
  DoubleClickItem(QStringLiteral("config"));
  EXPECT_TRUE(QTest::qWaitFor(
      [&] {
        *now += 500;
        return OnDisk("cell1/config") == "one and more";
      },
      20'000));
  EXPECT_EQ(OnDisk("cell2/config"), "two");
  Quit();
  prompts_.VerifyAllAsked();
  EXPECT_EQ(EntriesOf(InFolder("fetched")), QStringList());
}

TEST_F(SftpStoryTest, AKeyThatIsNotAcceptedLeavesNoControllerAndNoKnownHost) {
  Run();
  ExpectUnknownKey(*first_, 1);
  prompts_.AnswerAllBoxes(PromptAnswer::Ok);
  Connect(QStringLiteral("Cell1"), *first_, {}, "cell1");
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("My Computer")});
  EXPECT_FALSE(QFile::exists(home_.filePath(QStringLiteral(".ssh/known_hosts"))));
  EXPECT_FALSE(first_->Log().contains("Accepted publickey"));
}

}  // namespace
}  // namespace trevane::test
