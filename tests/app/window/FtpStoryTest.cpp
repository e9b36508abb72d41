// Controllers over FTP from the connect dialog to the workspace file that brings them back: the real window
// and the shipped providers, over a scripted controller and an SSH server of this computer.
#include "tests/app/window/NetworkStory.h"
#include "tests/support/Sshd.h"
#include "tests/support/ftp/FtpTestServer.h"

#include <QDir>
#include <QFile>

#include <algorithm>

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

TEST_F(FtpStoryTest, AFolderOpensThroughALinkToIt) {
  FtpVices vices;
  vices.missing = {"MLSD", "MLST", "FEAT"};
  FtpTestServer old(vices);
  old.Tree().AddFile("/released/v2/main.pac", "two");
  old.Tree().Add("/newest", {.kind = FtpTestItem::Kind::Link, .target = "/released/v2"});
  Run();
  prompts_.ExpectSecret(QStringLiteral("Password of joe on %1").arg(old.Machine()), QStringLiteral("secret"));
  Connect(kFtp, QStringLiteral("Cell2"), old.Machine(), QStringLiteral("User=joe"), QStringLiteral("/"));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("newest"), QStringLiteral("released")}));
  DoubleClickItem(QStringLiteral("newest"));
  EXPECT_EQ(Nav().CurrentAddress(), kCell + QStringLiteral("\\newest"));
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("main.pac")});
}

}  // namespace
}  // namespace trevane::test
