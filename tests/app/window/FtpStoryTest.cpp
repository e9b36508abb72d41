// Controllers over FTP from the connect dialog to the workspace file that brings them back: the real window
// and the shipped providers, over a scripted controller and an SSH server of this computer.
#include "tests/app/window/NetworkStory.h"
#include "tests/support/Sshd.h"
#include "tests/support/ftp/FtpDaemon.h"
#include "tests/support/ftp/FtpTestServer.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <utility>

namespace trevane::test {
namespace {

const QString kFtp = QStringLiteral("IxoProv.Ftp");
const QString kOverTls = QStringLiteral("User=joe, Tls=Explicit");
const QString kCell = QStringLiteral("Workspace\\Cell2");

FtpVices OverTls() {
  FtpVices vices;
  vices.tls = FtpVices::Tls::Explicit;
  return vices;
}

class FtpStoryTest : public NetworkStory {
 protected:
  FtpStoryTest() {
    PutOnDisk("laptop/prog/a.pac", "program a");
    PutOnDisk("laptop/prog/sub/b.pac", "program b");
    cell_.Tree().AddFile("/config", "two");
  }

  void ConnectCell(const QString& option) {
    Connect(kFtp, QStringLiteral("Cell2"), cell_.Machine(), option, QStringLiteral("/"));
  }
  void ExpectPassword() {
    prompts_.ExpectSecret(QStringLiteral("Password of joe on %1").arg(cell_.Machine()),
                          QStringLiteral("secret"));
  }
  void ExpectUnknownCertificate(int answer) {
    prompts_.ExpectChoice(
        QStringLiteral("The certificate of %1 is not known. Trust it, and connect?").arg(cell_.Machine()),
        answer);
  }
  /// Copies "prog" of that folder to the cell.
  void CopyFrom(const QString& folder) {
    ClickNode(folder);
    ClickItem(QStringLiteral("prog"));
    Trigger(CommandPlace::MainToolbar, CommandId::Copy);
    ClickNode(kCell);
    Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  }
  /// Once more onto a copy that is another one now: kept, then replaced.
  void CopyAgain() {
    cell_.Tree().AddFile("/prog/a.pac", "older");
    const QString overwrite = QStringLiteral("'prog' already existed.\r\nOverwrite?");
    prompts_.ExpectChoice(overwrite, 2);
    Trigger(CommandPlace::MainToolbar, CommandId::Paste);
    EXPECT_EQ(cell_.Tree().ContentOf("/prog/a.pac"), "older");
    prompts_.ExpectChoice(overwrite, 1);
    Trigger(CommandPlace::MainToolbar, CommandId::Paste);
    EXPECT_EQ(cell_.Tree().ContentOf("/prog/a.pac"), "program a");
    EXPECT_EQ(cell_.Tree().ContentOf("/prog/sub/b.pac"), "program b");
  }
  /// Ends the program and starts it with what was saved.
  void SaveAndReopen() {
    const QString workspace = disk_.filePath(QStringLiteral("cells.fmg"));
    prompts_.ExpectFile(workspace);
    Trigger(CommandPlace::FileMenu, CommandId::SaveWorkspace);
    EXPECT_FALSE(ContentOf(workspace).contains("secret"));
    Quit();
    prompts_.VerifyAllAsked();
    ExpectPassword();
    Run(u'"' + workspace + u'"');
  }

  FtpTestServer cell_{OverTls()};
};

TEST_F(FtpStoryTest, FromTheLaptopToACellOverTlsThatComesBack) {
  Run();
  ExpectPassword();
  ExpectUnknownCertificate(0);
  ConnectCell(kOverTls);
  EXPECT_EQ(Nav().CurrentAddress(), kCell);
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("config")});
  CopyFrom(QStringLiteral("Workspace\\My Computer\\C:\\laptop"));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("config"), QStringLiteral("prog")}));
  CopyAgain();

  // The password is asked for anew, the certificate is known.
  SaveAndReopen();
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("Cell2"), QStringLiteral("My Computer")}));
  ClickNode(kCell);
  ClickNode(kCell + QStringLiteral("\\prog"));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("a.pac"), QStringLiteral("sub")}));
  const QByteArrayList lines = cell_.Counts().lines;
  EXPECT_FALSE(std::any_of(lines.begin(), lines.end(),
                           [](const QByteArray& line) { return line.contains("secret"); }));
}

TEST_F(FtpStoryTest, FromACellOverSshToOneOverFtp) {
  if (!Sshd::IsAvailable()) {
    GTEST_SKIP() << "the SSH servers were not fetched: see CONTRIBUTING";
  }
  const Sshd sshd;
  ASSERT_TRUE(QDir(home_.path()).mkpath(QStringLiteral(".ssh")));
  ASSERT_TRUE(QFile::copy(sshd.KeyFile(), home_.filePath(QStringLiteral(".ssh/id_ed25519"))));
  Run();
  prompts_.ExpectChoice(QStringLiteral("The host key of %1 is not known. Connect to it?").arg(sshd.Machine()),
                        0);
  Connect(QStringLiteral("IxoProv.Sftp"), QStringLiteral("Cell1"), sshd.Machine(), {},
          disk_.filePath(QStringLiteral("laptop")));
  ExpectPassword();
  ExpectUnknownCertificate(0);
  ConnectCell(kOverTls);
  CopyFrom(QStringLiteral("Workspace\\Cell1"));
  CopyAgain();
  SaveAndReopen();
  ClickNode(QStringLiteral("Workspace\\Cell1"));
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("prog")});
  ClickNode(kCell);
  ClickNode(kCell + QStringLiteral("\\prog"));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("a.pac"), QStringLiteral("sub")}));
}

TEST_F(FtpStoryTest, ACertificateThatIsNotAcceptedLeavesNoController) {
  Run();
  ExpectPassword();
  ExpectUnknownCertificate(1);
  prompts_.AnswerAllBoxes(PromptAnswer::Ok);
  ConnectCell(kOverTls);
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("My Computer")});
  EXPECT_FALSE(QFile::exists(TrustFile()));
  EXPECT_EQ(cell_.Count("PASS"), 0);
  EXPECT_EQ(cell_.Count("USER"), 0);
}

TEST_F(FtpStoryTest, AChangedCertificateIsTakenByNobody) {
  Run();
  ExpectPassword();
  ExpectUnknownCertificate(0);
  ConnectCell(kOverTls);
  EXPECT_EQ(cell_.Counts().logOns, 1);
  Quit();
  prompts_.VerifyAllAsked();
  cell_.ChangeCertificate();
  Run();
  ExpectPassword();
  prompts_.ExpectBox();
  ConnectCell(kOverTls);
  const QString text = prompts_.Asked().back().text + prompts_.Asked().back().informativeText;
  EXPECT_TRUE(text.contains(QStringLiteral("The certificate of %1 has changed").arg(cell_.Machine())))
      << text.toStdString();
  EXPECT_TRUE(text.contains(QStringLiteral("line 2 of ") + TrustFile())) << text.toStdString();
  EXPECT_EQ(cell_.Counts().logOns, 1);
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("My Computer")});

  ASSERT_TRUE(QFile::remove(TrustFile()));
  ExpectPassword();
  ExpectUnknownCertificate(0);
  ConnectCell(kOverTls);
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("config")});
}

/// A server of the old kind, whose listings tell the text of a link and no more.
class FtpLinkStory : public FtpStoryTest {
 protected:
  FtpLinkStory() {
    fetchedFolder_ = InFolder("fetched");
    openWithProgram_ = [this](const QString& path) {
      opened_ += ContentOf(path);
      return OpenOutcome{};
    };
    old_.Tree().AddFile("/released/v2/main.pac", "two");
    AddLink("/newest", "/released/v2");
    AddLink("/main.pac", "released/v2/main.pac");
    AddLink("/gone", "/released/v3");
  }

  void AddLink(const QByteArray& path, const QByteArray& target) {
    old_.Tree().Add(path, {.kind = FtpTestItem::Kind::Link, .target = target});
  }
  void ShowOldCell() {
    Run();
    prompts_.ExpectSecret(QStringLiteral("Password of joe on %1").arg(old_.Machine()),
                          QStringLiteral("secret"));
    Connect(kFtp, QStringLiteral("Cell2"), old_.Machine(), QStringLiteral("User=joe"), QStringLiteral("/"));
    EXPECT_EQ(ListTexts(), kShown);
  }
  void EnterItem(const QString& text) {
    ClickItem(text);
    QTest::keyClick(&List(), Qt::Key_Return);
    QCoreApplication::processEvents();
  }

  const QStringList kShown{QStringLiteral("gone"), QStringLiteral("main.pac"), QStringLiteral("newest"),
                           QStringLiteral("released")};
  QByteArrayList opened_;
  FtpTestServer old_{[] {
    FtpVices vices;
    vices.missing = {"MLSD", "MLST"};
    return vices;
  }()};
};

TEST_F(FtpLinkStory, AFolderOpensThroughALinkToIt) {
  for (const bool byKey : {false, true}) {
    SCOPED_TRACE(byKey);
    ShowOldCell();
    if (byKey) {
      EnterItem(QStringLiteral("newest"));
    } else {
      DoubleClickItem(QStringLiteral("newest"));
    }
    EXPECT_EQ(Nav().CurrentAddress(), kCell + QStringLiteral("\\newest"));
    EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("main.pac")});
    DoubleClickItem(QStringLiteral("main.pac"));
    EXPECT_EQ(opened_, QByteArrayList{"two"});
    opened_.clear();
    // It is known to be a folder by now.
    ClickNode(kCell);
    EXPECT_EQ(ListTexts().size(), kShown.size());
    DoubleClickItem(QStringLiteral("newest"));
    EXPECT_EQ(Nav().CurrentAddress(), kCell + QStringLiteral("\\newest"));
    Quit();
  }
  EXPECT_TRUE(opened_.isEmpty());
}

TEST_F(FtpLinkStory, AFileOpensThroughALinkToIt) {
  ShowOldCell();
  DoubleClickItem(QStringLiteral("main.pac"));
  EXPECT_EQ(opened_, QByteArrayList{"two"});
  EnterItem(QStringLiteral("main.pac"));
  EXPECT_EQ(opened_, (QByteArrayList{"two", "two"}));
  EXPECT_EQ(Nav().CurrentAddress(), kCell);
  EXPECT_EQ(ListTexts(), kShown);
}

TEST_F(FtpLinkStory, ALinkThatLeadsNowhereSaysSo) {
  ShowOldCell();
  // The server is known to tell sizes by now.
  DoubleClickItem(QStringLiteral("main.pac"));
  prompts_.ExpectBox(QStringLiteral("Failed in the Run() method."));
  DoubleClickItem(QStringLiteral("gone"));
  const QString text = prompts_.Asked().back().informativeText;
  EXPECT_TRUE(text.startsWith(QStringLiteral("gone\nThe link leads nowhere (550 Failed to open file.)")))
      << text.toStdString();
  EXPECT_EQ(Nav().CurrentAddress(), kCell);
  EXPECT_EQ(ListTexts(), kShown);
  EXPECT_EQ(opened_, QByteArrayList{"two"});
}

TEST_F(FtpLinkStory, LinksOpenOnAServerWithoutFacts) {
  if (!FtpDaemon::IsAvailable()) {
    GTEST_SKIP() << FtpDaemon::MissingText().toStdString();
  }
  const FtpDaemon daemon({.program = FtpDaemon::Options::Program::Vsftpd});
  const QDir served(daemon.Folder());
  ASSERT_TRUE(served.mkpath(QStringLiteral("released/v2")));
  WriteFile(served.filePath(QStringLiteral("released/v2/main.pac")), "two");
  for (const auto& [name, target] : {std::pair(QStringLiteral("newest"), QStringLiteral("released/v2")),
                                     {QStringLiteral("main.pac"), QStringLiteral("released/v2/main.pac")},
                                     {QStringLiteral("gone"), QStringLiteral("released/v3")}}) {
    ASSERT_TRUE(QFile::link(target, served.filePath(name)));
  }
  Run();
  Connect(kFtp, QStringLiteral("Cell2"), daemon.Machine(), {}, daemon.ClientFolder());
  EXPECT_EQ(ListTexts(), kShown);
  DoubleClickItem(QStringLiteral("main.pac"));
  EXPECT_EQ(opened_, QByteArrayList{"two"});
  prompts_.ExpectBox(QStringLiteral("Failed in the Run() method."));
  EnterItem(QStringLiteral("gone"));
  EXPECT_TRUE(
      prompts_.Asked().back().informativeText.startsWith(QStringLiteral("gone\nThe link leads nowhere")))
      << prompts_.Asked().back().informativeText.toStdString();
  EnterItem(QStringLiteral("newest"));
  EXPECT_EQ(Nav().CurrentAddress(), kCell + QStringLiteral("\\newest"));
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("main.pac")});
}

}  // namespace
}  // namespace trevane::test
