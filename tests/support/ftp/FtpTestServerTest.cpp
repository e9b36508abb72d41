#include "tests/support/ftp/FtpTestServer.h"
#include "tests/support/ftp/PlainFtpClient.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

/// Longer than some blocks.
QByteArray Long() {
  return QByteArray("0123456789abcdef").repeated(5000);
}

/// What STOR, LIST and the rest do where there is no vice.
TEST(FtpTestServer, StoresListsRenamesAndRemoves) {
  FtpTestServer server;
  PlainFtpClient client(server.Port());
  EXPECT_EQ(client.Greeting(), "220 Controller ready");
  EXPECT_EQ(client.Ask("PWD"), "530 Please log in with USER and PASS.");
  client.LogOn();
  EXPECT_EQ(client.Ask("MKD /a b").first(3), "257");
  EXPECT_EQ(client.Store("/a b/f", Long()).first(3), "226");
  EXPECT_EQ(server.Tree().ContentOf("/a b/f"), Long());
  EXPECT_EQ(client.Fetch("RETR /a b/f"), Long());
  EXPECT_EQ(client.Ask("SIZE /a b/f"), "213 80000");
  EXPECT_EQ(client.Ask("REST 79990").first(3), "350");
  EXPECT_EQ(client.Fetch("RETR /a b/f"), "6789abcdef");
  EXPECT_EQ(client.Ask("MFMT 20200102030405 /a b/f").first(3), "213");
  EXPECT_EQ(client.Ask("MDTM /a b/f"), "213 20200102030405");
  EXPECT_EQ(client.Ask("SITE CHMOD 600 /a b/f").first(3), "200");
  EXPECT_TRUE(
      client.Fetch("LIST /a b").startsWith("-rw-------   1 robot    cell         80000 Jan  2  2020 f"));
  EXPECT_TRUE(client.Fetch("MLSD /a b").contains("type=file;size=80000;modify=20200102030405;"));
  EXPECT_EQ(client.Ask("RNFR /a b").first(3), "350");
  EXPECT_EQ(client.Ask("RNTO /c").first(3), "250");
  EXPECT_EQ(client.Ask("RMD /c"), "550 /c: Directory not empty");
  EXPECT_EQ(server.Tree().Paths(), (QByteArrayList{"/c/", "/c/f"}));
  EXPECT_EQ(client.Ask("DELE /c/f").first(3), "250");
  EXPECT_EQ(client.Ask("RMD /c").first(3), "250");
  EXPECT_TRUE(server.Tree().Paths().isEmpty());
  EXPECT_EQ(client.Ask("QUIT"), "221 Goodbye.");
}

TEST(FtpTestServer, CountsCommandsDataAndRoundTrips) {
  FtpTestServer server;
  PlainFtpClient client(server.Port());
  client.LogOn();
  server.Script().ClearCounts();
  client.Store("/f", "x");
  client.Ask("SIZE /f");
  const FtpTestCounts counts = server.Counts();
  EXPECT_EQ(counts.lines, (QByteArrayList{"EPSV", "STOR /f", "SIZE /f"}));
  EXPECT_EQ(counts.dataConnections, 1);
  EXPECT_EQ(counts.roundTrips, 4);
  EXPECT_EQ(counts.clients, 1);
  EXPECT_EQ(server.Count("STOR"), 1);
}

TEST(FtpTestServer, RefusesASecondClientInEachWay) {
  for (const QByteArray reply : {"421 Too many users", "221 Only one", "530 Too many users"}) {
    SCOPED_TRACE(reply.toStdString());
    FtpTestServer server({.mostClients = 1, .tooMany = reply});
    PlainFtpClient first(server.Port());
    PlainFtpClient second(server.Port());
    if (reply.startsWith("530")) {
      EXPECT_EQ(second.Ask("USER joe"), reply);
    } else {
      EXPECT_EQ(second.Greeting(), reply);
      EXPECT_EQ(second.Reply(), "<none>");
    }
    first.LogOn();
  }
}

TEST(FtpTestServer, LogOnsDifferInDriveAndRights) {
  FtpTestServer server(
      {.users = {{"joe", {.password = "secret", .drive = "/MD", .writable = {"src"}}}}, .account = "cell"});
  server.Tree().AddFile("/MD/f", "1");
  PlainFtpClient client(server.Port());
  client.Ask("USER joe");
  EXPECT_EQ(client.Ask("PASS wrong"), "530 Login incorrect.");
  client.Ask("USER joe");
  EXPECT_EQ(client.Ask("PASS secret").first(3), "332");
  EXPECT_EQ(client.Ask("ACCT cell").first(3), "230");
  EXPECT_EQ(client.Fetch("RETR /f"), "1");
  EXPECT_EQ(client.Store("/a.dat", "2"), "550 Permission denied.");
  EXPECT_EQ(client.Store("/a.SRC", "2").first(3), "226");
  EXPECT_EQ(server.Tree().ContentOf("/MD/a.SRC"), "2");
}

TEST(FtpTestServer, NamesAreLimited) {
  FtpTestServer server({.longestCommand = 30, .shortNames = true, .capitalNames = true});
  PlainFtpClient client(server.Port());
  client.LogOn();
  EXPECT_EQ(client.Store("/toolongname.txt", "1"), "553 File name not allowed");
  EXPECT_EQ(client.Store("/a b.txt", "1"), "553 File name not allowed");
  EXPECT_EQ(client.Store("/short.txt", "1").first(3), "226");
  EXPECT_EQ(server.Tree().Paths(), QByteArrayList{"/SHORT.TXT"});
  EXPECT_EQ(client.Ask("SIZE /" + QByteArray(40, 'a')), "500 Command line too long");
  server.Script().Change([](FtpVices& vices) { vices.refusesNewNames = true; });
  EXPECT_EQ(client.Store("/other.txt", "1"), "553 File name not allowed");
  EXPECT_EQ(client.Store("/short.txt", "2").first(3), "226");
}

TEST(FtpTestServer, RenameOntoAFileFollowsTheVice) {
  FtpTestServer server;
  PlainFtpClient client(server.Port());
  client.LogOn();
  const auto rename = [&](FtpVices::Onto onto) {
    server.Tree().AddFile("/a", "new");
    server.Tree().AddFile("/b", "old");
    server.Script().Change([&](FtpVices& vices) { vices.renameOnto = onto; });
    client.Ask("RNFR /a");
    return client.Ask("RNTO /b");
  };
  EXPECT_EQ(rename(FtpVices::Onto::Refuses), "553 /b: File exists");
  EXPECT_EQ(rename(FtpVices::Onto::RefusesMisleading), "550 Requested action not taken: file unavailable");
  EXPECT_EQ(server.Tree().ContentOf("/b"), "old");
  EXPECT_EQ(rename(FtpVices::Onto::Replaces), "250 Rename successful.");
  EXPECT_EQ(server.Tree().ContentOf("/b"), "new");
}

TEST(FtpTestServer, ListingsHaveTheirForms) {
  FtpTestServer server({.zoneMinutes = 120});
  server.Tree().AddFile("/a b", "12345");
  server.Tree().AddFolder("/d");
  PlainFtpClient client(server.Port());
  client.LogOn();
  // 2023-11-14 22:13:20 UTC.
  EXPECT_EQ(client.Fetch("LIST"),
            "-rw-r--r--   1 robot    cell             5 Nov 15  2023 a b\r\n"
            "drwxr-xr-x   2 robot    cell             0 Nov 15  2023 d\r\n");
  server.Script().Change([](FtpVices& vices) { vices.list = FtpVices::List::EightColumns; });
  EXPECT_EQ(client.Fetch("LIST -al").split('\n').first(),
            "-rw-r--r--   1 robot            5 Nov 15  2023 a b\r");
  server.Script().Change([](FtpVices& vices) { vices.list = FtpVices::List::Dos; });
  EXPECT_EQ(client.Fetch("LIST"),
            "11-15-23  12:13AM                    5 a b\r\n"
            "11-15-23  12:13AM       <DIR>          d\r\n");
  EXPECT_EQ(client.Fetch("LIST /nothing").first(3), "550");
  server.Script().Change([](FtpVices& vices) {
    vices.listOfMissing = FtpVices::Odd::EmptyDone;
    vices.listCutsAtBlank = true;
    vices.missing = {"MLSD"};
  });
  EXPECT_EQ(client.Fetch("LIST /nothing"), "");
  EXPECT_EQ(client.Fetch("LIST /a b"), "");
  EXPECT_EQ(client.Fetch("MLSD /d"), "500 Unknown command");
  EXPECT_FALSE(client.Ask("FEAT").contains("MLST"));
}

TEST(FtpTestServer, VirtualFilesAreMadeWhileTheyAreRead) {
  FtpTestServer server;
  FtpTestItem item;
  item.shownSize = 0;
  item.make = [] { return QByteArray("made"); };
  server.Tree().Add("/errors.txt", item);
  PlainFtpClient client(server.Port());
  client.LogOn();
  EXPECT_EQ(client.Ask("SIZE /errors.txt"), "213 0");
  EXPECT_EQ(client.Fetch("RETR /errors.txt"), "made");
}

TEST(FtpTestServer, FullDiskLeavesHalfAFile) {
  FtpTestServer server({.room = 50000});
  PlainFtpClient client(server.Port());
  client.LogOn();
  EXPECT_EQ(client.Store("/f", Long()), "452 Insufficient storage space");
  EXPECT_EQ(server.Tree().ContentOf("/f"), Long().first(50000));
}

TEST(FtpTestServer, FaultsStrikeAtACommand) {
  FtpTestServer server;
  const auto suffer = [&](FtpFault::Kind kind) {
    server.Tree().Clear();
    PlainFtpClient client(server.Port());
    client.LogOn();
    server.Script().ArmCommand(2, {kind, "450 Busy"});
    EXPECT_EQ(client.Ask("NOOP"), "200 OK");
    const QByteArray reply = client.Ask("MKD /d");
    EXPECT_EQ(server.Script().FaultCount(), 1);
    return reply;
  };
  EXPECT_EQ(suffer(FtpFault::Kind::Refuse), "450 Busy");
  EXPECT_TRUE(server.Tree().Paths().isEmpty());
  EXPECT_EQ(suffer(FtpFault::Kind::DoAndRefuse), "450 Busy");
  EXPECT_EQ(server.Tree().Paths(), QByteArrayList{"/d/"});
  EXPECT_EQ(suffer(FtpFault::Kind::LoseCommand), "<none>");
  EXPECT_TRUE(server.Tree().Paths().isEmpty());
  EXPECT_EQ(suffer(FtpFault::Kind::LoseAnswer), "<none>");
  EXPECT_EQ(server.Tree().Paths(), QByteArrayList{"/d/"});
}

TEST(FtpTestServer, FaultsStrikeAtABlock) {
  FtpTestServer server;
  server.Tree().AddFile("/f", Long());
  PlainFtpClient client(server.Port());
  client.LogOn();
  QByteArray end;
  server.Script().ArmBlock(3, {FtpFault::Kind::Refuse, "451 Read error"});
  EXPECT_EQ(client.Fetch("RETR /f", &end), Long().first(2 * 16384));
  EXPECT_EQ(end, "451 Read error");
  server.Script().ArmBlock(2, {FtpFault::Kind::LoseData, "426 Aborted"});
  EXPECT_EQ(client.Store("/g", Long()), "426 Aborted");
  EXPECT_EQ(server.Tree().ContentOf("/g"), Long().first(16384));
  server.Script().ArmBlock(2, {FtpFault::Kind::LoseCommand, {}});
  EXPECT_TRUE(client.Fetch("RETR /f", &end).endsWith("<broken>"));
  EXPECT_EQ(end, "<none>");
}

TEST(FtpTestServer, AStallEndsWithTheServerOrTheClient) {
  auto server = std::make_unique<FtpTestServer>();
  server->Script().SetHook([](const QByteArray& name, const QByteArray& /*argument*/) {
    return name == "NOOP" ? std::optional(FtpFault{FtpFault::Kind::Stall, {}}) : std::nullopt;
  });
  {
    PlainFtpClient impatient(server->Port());
    impatient.LogOn();
    impatient.Send("NOOP");
  }
  PlainFtpClient client(server->Port());
  client.LogOn();
  client.Send("NOOP");
  server.reset();
  EXPECT_EQ(client.Reply(), "<none>");
}

TEST(FtpTestServer, PipelinedAndIdleClientsAreEnded) {
  FtpTestServer server({.closesPipelined = true});
  {
    PlainFtpClient client(server.Port());
    client.LogOn();
    client.Send("NOOP\r\nNOOP");
    EXPECT_EQ(client.Reply(), "<none>");
  }
  server.Script().Change([](FtpVices& vices) { vices.idleMs = 30; });
  PlainFtpClient client(server.Port());
  EXPECT_EQ(client.Reply(), "421 Timeout");
  EXPECT_EQ(client.Reply(), "<none>");
}

TEST(FtpTestServer, PipelinedCommandsAreDroppedOrPutOff) {
  FtpTestServer server({.dropsPipelined = true});
  {
    PlainFtpClient client(server.Port());
    client.LogOn();
    client.Send("NOOP\r\nPWD");
    EXPECT_EQ(client.Reply(), "200 OK");
    EXPECT_TRUE(client.Ask("SYST").startsWith("215"));
  }
  server.Script().Change([](FtpVices& vices) { vices = {.answersOncePerSegment = true}; });
  PlainFtpClient client(server.Port());
  client.LogOn();
  client.Send("NOOP\r\nPWD");
  EXPECT_EQ(client.Reply(), "200 OK");
  EXPECT_TRUE(client.Ask("SYST").startsWith("257"));
  EXPECT_TRUE(client.Ask("NOOP").startsWith("215"));
}

TEST(FtpTestServer, DataConnectionsHaveTheirVices) {
  FtpTestServer server({.repliesInManyLines = true, .passiveAddress = "10,0,0,1"});
  server.Tree().AddFile("/f", "1");
  PlainFtpClient client(server.Port());
  client.LogOn();
  EXPECT_TRUE(client.Ask("PASV").contains("(10,0,0,1,"));
  EXPECT_EQ(client.Ask("NOOP"), "200-First of all\n 500 is no code here\n200 OK");
  server.Script().Change([](FtpVices& vices) {
    vices = {};
    vices.endsEarly = true;
  });
  QByteArray end;
  EXPECT_EQ(client.Fetch("RETR /f", &end), "1");
  EXPECT_EQ(end.first(3), "226");
  EXPECT_EQ(client.Ask("NOOP"), "200 OK");
  server.Script().Change([](FtpVices& vices) {
    vices = {};
    vices.refusesData = true;
  });
  EXPECT_EQ(client.Fetch("RETR /f"), "425 Can't open data connection.");
}

TEST(FtpTestServer, TlsDemandsTheSessionOfTheControlLine) {
  FtpTestServer server({.tls = FtpVices::Tls::Explicit,
                        .demandsTls = true,
                        .upToTls12 = true,
                        .reuse = FtpVices::Reuse::Demanded});
  server.Tree().AddFile("/f", "1");
  PlainFtpClient client(server.Port());
  EXPECT_EQ(client.Ask("USER joe"), "530 TLS is required.");
  ASSERT_TRUE(client.StartTls(TLS1_3_VERSION));
  EXPECT_EQ(client.TlsVersion(), "TLSv1.2");
  EXPECT_EQ(client.Fingerprint(), server.Fingerprint());
  client.LogOn();
  QByteArray end;
  EXPECT_EQ(client.Fetch("RETR /f", &end), "1");
  client.SetResumes(false);
  EXPECT_EQ(client.Fetch("RETR /f", &end), "");
  EXPECT_EQ(end, "522 SSL connection failed: session reuse required");
}

TEST(FtpTestServer, TlsWithoutSessionsOrItsEndAndAnotherCertificate) {
  FtpTestServer server(
      {.tls = FtpVices::Tls::Explicit, .reuse = FtpVices::Reuse::Impossible, .endsTlsAbruptly = true});
  server.Tree().AddFile("/f", "1");
  PlainFtpClient client(server.Port());
  ASSERT_TRUE(client.StartTls());
  client.LogOn();
  EXPECT_EQ(client.Fetch("RETR /f"), "1<broken>");
  const QByteArray before = server.Fingerprint();
  server.ChangeCertificate();
  PlainFtpClient other(server.Port());
  ASSERT_TRUE(other.StartTls());
  EXPECT_NE(other.Fingerprint(), before);
  EXPECT_EQ(other.Fingerprint(), server.Fingerprint());
}

}  // namespace
}  // namespace trevane::test
