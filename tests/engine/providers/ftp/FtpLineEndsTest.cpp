#include "base/RunTimeError.h"
#include "engine/files/FileSystem.h"
#include "engine/files/WholeFile.h"
#include "tests/engine/providers/ftp/FakeFtpServer.h"

#include <gtest/gtest.h>

#include <vector>

namespace trevane::test {
namespace {

using Kind = FakeFtpFault::Kind;

QString T(const char* text) {
  return QString::fromUtf8(text);
}

std::vector<NewContent> FourFiles() {
  return {{T("a"), "a", {}}, {T("b"), "b", {}}, {T("c"), "c", {}}, {T("d"), "d", {}}};
}

TEST(FtpLineEnds, WhileAFolderIsLookedForThatHasGone) {
  FakeFtpServer server;
  server.AddFolder("/tree");
  server.AddFolder("/tree/inner");
  const auto files = server.Open({.host = T("ends, folder")});
  server.before = [&server](const QByteArray& command) {
    if (command.startsWith("LIST") && command.endsWith("/tree")) {
      server.items.erase("/tree/inner");
      server.items.erase("/tree");
    }
    server.endsLine = command == "CWD /tree";
  };
  EXPECT_THROW(files->Remove(T("tree")), RunTimeError);
  EXPECT_EQ(server.connected, 2);
  EXPECT_EQ(server.Tree(), QStringList());
}

TEST(FtpLineEnds, WhileLeftoversAreRemoved) {
  FakeFtpServer server;
  const auto files = server.Open({.host = T("ends, leftovers")});
  WriteNewFile(*files, T("first"), "learns");
  server.asksUser = true;
  server.before = [&server](const QByteArray& command) {
    if (command.startsWith("RNFR") && server.faultAt < 0) {
      server.fault.kind = Kind::LoseBefore;
      server.faultAt = server.calls;
    }
  };
  EXPECT_TRUE(files->WriteMany(FourFiles()).front().failure);
  const qsizetype left = server.Tree().filter(T("<temporary>")).size();
  EXPECT_EQ(left, 4);
  // The first one is refused, and then the server is no more.
  server.asksUser = false;
  server.before = [&server](const QByteArray& command) {
    if (command.startsWith("DELE")) {
      server.items.clear();
      server.AddFolder("/");
      server.endsLine = server.isGone = true;
    }
  };
  EXPECT_EQ(qsizetype(files->TakeLeftovers().size()), left);
  EXPECT_THROW(static_cast<void>(files->List(QString())), RunTimeError);
  server.before = {};
  server.isGone = false;
  EXPECT_TRUE(files->List(QString()).empty());
}

TEST(FtpRenames, OntoALockedFileProveNothing) {
  FakeFtpServer server;
  server.AddFile("/locked", "old content");
  const auto files = server.Open({.host = T("locked")});
  // Whatever its reason is.
  server.vices.renameReplaces = false;
  WriteFile(*files, T("locked"), "new content");
  EXPECT_EQ(server.ContentOf("/locked"), "new content");
  // The file is free again.
  server.vices.renameReplaces = true;
  server.before = [&server](const QByteArray& command) {
    if (command == "RNTO /a") {
      server.AddFile("/d", "precious");
    }
  };
  const std::vector<WriteResult> results = files->WriteMany(FourFiles());
  EXPECT_TRUE(results[2].item);
  ASSERT_TRUE(results[3].failure);
  EXPECT_EQ(results[3].failure->Number(), error::kExists);
  EXPECT_EQ(server.ContentOf("/d"), "precious");
}

}  // namespace
}  // namespace trevane::test
