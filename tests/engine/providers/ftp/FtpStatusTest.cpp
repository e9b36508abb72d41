// Folders on the way to an address, found by STAT where a server tells no facts.
#include "engine/files/FileSystem.h"
#include "engine/files/ProviderError.h"
#include "tests/engine/providers/ftp/FakeFtpServer.h"

#include <QDateTime>

#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace trevane::test {
namespace {

using ftp::Reply;

QString T(const char* text) {
  return QString::fromUtf8(text);
}

/// A server without facts whose STAT shows a folder.
class FtpStatus : public ::testing::Test {
 protected:
  FtpStatus() {
    server_.vices.features = {"SIZE", "MDTM", "MFMT"};
    server_.vices.missing += {"MLSD", "MLST"};
    server_.vices.status = [](const Reply& reply) { return reply; };
    for (const char* folder : {"/a", "/a/b", "/a/b/c", "/a/b/c/d", "/a/b/c/d/e", "/a/b/c/d/e/f"}) {
      server_.AddFolder(folder);
      server_.AddFile(QByteArray(folder) + "/MAIN.SRC", "content");
    }
  }

  void Open() {
    files_ = server_.Open();
    server_.log.clear();
  }
  [[nodiscard]] int Listings() const { return server_.Count("LIST"); }
  [[nodiscard]] int Asked() const { return server_.Count("STAT"); }
  /// As it is without STAT; the server is asked by another connection.
  [[nodiscard]] std::optional<FileEntry> Listed(const char* path) {
    const auto status = server_.vices.status;
    server_.vices.status = nullptr;
    std::optional<FileEntry> entry = server_.Open()->Find(T(path));
    server_.vices.status = status;
    return entry;
  }

  FakeFtpServer server_;
  std::shared_ptr<FileSystem> files_;
};

TEST_F(FtpStatus, FindsAPathSixDeepInSixCommands) {
  Open();
  for (const char* path : {"a", "a\\b", "a\\b\\c", "a\\b\\c\\d", "a\\b\\c\\d\\e", "a\\b\\c\\d\\e\\f"}) {
    SCOPED_TRACE(path);
    const std::optional<FileEntry> entry = files_->Find(T(path));
    ASSERT_TRUE(entry);
    EXPECT_TRUE(entry->IsFolder());
    EXPECT_EQ(entry->name, T(path).section(u'\\', -1));
  }
  EXPECT_EQ(server_.log.size(), 6) << server_.log.join('\n').toStdString();
  EXPECT_EQ(Asked(), 6);
}

TEST_F(FtpStatus, TellsOfAFolderWhatAListingTells) {
  server_.AddFolder("/a/b of mine");
  for (const char* path : {"a\\b", "a\\b of mine"}) {
    SCOPED_TRACE(path);
    const std::optional<FileEntry> listed = Listed(path);
    Open();
    // The zone is learnt there.
    ASSERT_EQ(files_->List(T("a\\b\\c")).size(), 2U);
    server_.log.clear();
    const std::optional<FileEntry> entry = files_->Find(T(path));
    ASSERT_TRUE(entry);
    EXPECT_EQ(Listings(), 0);
    EXPECT_EQ(entry->name, listed->name);
    EXPECT_EQ(entry->attributes, listed->attributes);
    EXPECT_EQ(entry->modified.msecs, listed->modified.msecs);
  }
}

TEST_F(FtpStatus, TellsNoDateInAZoneThatIsNotKnown) {
  constexpr qint64 kMinute = 60000;
  constexpr qint64 kDay = 1440 * kMinute;
  const qint64 now = QDateTime::currentMSecsSinceEpoch();
  const qint64 yesterday = now - now % kMinute - kDay;
  server_.vices.zone = 540;
  for (auto& [path, item] : server_.items) {
    item.modified = yesterday;
  }
  Open();
  EXPECT_FALSE(files_->Stat(T("a\\b")).modified.IsPresent());
  ASSERT_EQ(files_->List(T("a\\b\\c")).size(), 2U);
  EXPECT_EQ(files_->Stat(T("a\\b")).modified.msecs, yesterday);
  EXPECT_EQ(Asked(), 2);
}

TEST_F(FtpStatus, ShowsALinkOnTheWayAsALink) {
  server_.AddLink("/a/short", "/a/b/c");
  server_.AddLink("/a/nowhere", "/missing");
  Open();
  const std::optional<FileEntry> entry = files_->Find(T("a\\short"));
  ASSERT_TRUE(entry);
  EXPECT_TRUE(entry->IsFolder());
  EXPECT_NE(entry->attributes & attribute::kLink, 0U);
  EXPECT_TRUE(files_->Find(T("a\\short\\d"))->IsFolder());
  EXPECT_TRUE(files_->Find(T("a\\nowhere"))->leadsNowhere);
  EXPECT_EQ(Listings(), 0);
}

TEST_F(FtpStatus, AMissingNameIsLookedForInAListing) {
  Open();
  EXPECT_FALSE(files_->Find(T("a\\none")));
  EXPECT_EQ(Asked(), 1);
  EXPECT_GT(Listings(), 0);
  // Once: it has not helped.
  EXPECT_FALSE(files_->Find(T("a\\b\\none")));
  EXPECT_TRUE(files_->Find(T("a\\b\\c\\d")));
  EXPECT_EQ(Asked(), 1);
}

TEST_F(FtpStatus, AFileIsAsItsListingTells) {
  Open();
  EXPECT_EQ(files_->Stat(T("a\\MAIN.SRC")).size, 7);
  EXPECT_GT(Listings(), 0);
}

TEST_F(FtpStatus, ARefusalOrGarbageIsNotAskedAgain) {
  const QByteArrayList answers{"502 Unknown command", "211 OK", "211 Status of joe\nLogged in\nEnd",
                               "213 Status\n\x01\xff\x7f\n\n%%%\nEnd", "213 ", "550 No such file", "450 Busy",
                               "250 Status\ndrwxr-xr-x   1 joe users 0 Jan 01 00:00 ghost\nEnd",
                               // Nothing but the folder itself.
                               "213 Status\ndrwxr-xr-x   1 joe users 0 Jan 01 00:00 a\nEnd"};
  for (const QByteArray& answer : answers) {
    SCOPED_TRACE(answer.toStdString());
    server_.vices.status = [&](const Reply&) { return Reply{answer.first(3).toInt(), answer.sliced(4)}; };
    Open();
    EXPECT_FALSE(files_->Find(T("a\\a")));
    EXPECT_FALSE(files_->Find(T("a\\ghost")));
    EXPECT_TRUE(files_->Find(T("a\\b"))->IsFolder());
    EXPECT_TRUE(files_->Find(T("a\\b\\c"))->IsFolder());
    EXPECT_EQ(Asked(), 1);
  }
}

TEST_F(FtpStatus, AnAnswerThatIsCutProvesNothing) {
  // The beginning is of another answer, or the end is missing.
  for (const bool isBeginning : {true, false}) {
    server_.vices.status = [&](Reply reply) {
      const qsizetype at = isBeginning ? reply.text.indexOf('\n') + 1 : 0;
      reply.text = reply.text.sliced(at, isBeginning ? reply.text.size() - at : reply.text.lastIndexOf('\n'));
      return reply;
    };
    Open();
    EXPECT_TRUE(files_->Find(T("a\\b"))->IsFolder());
    EXPECT_GT(Listings(), 0);
    EXPECT_TRUE(files_->Find(T("a\\b\\c\\d"))->IsFolder());
    EXPECT_EQ(Asked(), 1);
  }
}

TEST_F(FtpStatus, TheFolderOfAFileOfThatNameIsNotFound) {
  // STAT of a file shows the file.
  server_.AddFile("/a/x", "content");
  Open();
  EXPECT_FALSE(files_->Find(T("a\\x\\x")));
  EXPECT_FALSE(files_->Find(T("a\\x\\y")));
}

TEST_F(FtpStatus, AsksNoPathThatMayBeAPattern) {
  for (const char* folder : {"-l", "*", "x?", "[ab]", "{a,b}", "~joe", "my files", "\xc3\xbc"}) {
    SCOPED_TRACE(folder);
    server_.AddFolder(QByteArray("/") + folder);
    server_.AddFolder(QByteArray("/") + folder + "/in");
    Open();
    EXPECT_TRUE(files_->Find(QString::fromUtf8(folder) + T("\\in"))->IsFolder());
    EXPECT_EQ(Asked(), 0);
  }
}

TEST_F(FtpStatus, AsksForNoNameThatMayBeHidden) {
  server_.AddFolder("/.config");
  server_.AddFolder("/ blank");
  for (const char* name : {".config", " blank"}) {
    Open();
    EXPECT_TRUE(files_->Find(QString::fromUtf8(name))->IsFolder());
    EXPECT_EQ(Asked(), 0);
  }
}

TEST_F(FtpStatus, AsksNothingInAFolderThatIsShown) {
  Open();
  ASSERT_EQ(files_->List(T("a")).size(), 2U);
  EXPECT_FALSE(files_->Find(T("a\\none")));
  EXPECT_EQ(Asked(), 0);
  EXPECT_TRUE(files_->Find(T("a\\b\\c"))->IsFolder());
  EXPECT_EQ(Asked(), 1);
}

TEST_F(FtpStatus, ALineThatStatusCostsIsMadeAnewOnce) {
  Open();
  server_.fault.kind = FakeFtpFault::Kind::LoseBefore;
  server_.faultAt = server_.calls;
  EXPECT_TRUE(files_->Find(T("a\\b"))->IsFolder());
  EXPECT_EQ(server_.connected, 2);
  EXPECT_TRUE(files_->Find(T("a\\b\\c\\d"))->IsFolder());
  EXPECT_EQ(Asked(), 0);
}

TEST_F(FtpStatus, ALostLineThatNeedsAQuestionIsToldAtOnce) {
  Open();
  server_.asksUser = true;
  server_.fault.kind = FakeFtpFault::Kind::LoseBefore;
  server_.faultAt = server_.calls;
  try {
    static_cast<void>(files_->Find(T("a\\b")));
    FAIL();
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kWin32Error + 64);
  }
  EXPECT_EQ(server_.connected, 1);
}

TEST_F(FtpStatus, ACancelIsHeard) {
  Open();
  server_.fault.kind = FakeFtpFault::Kind::Cancel;
  server_.faultAt = server_.calls;
  EXPECT_THROW(static_cast<void>(files_->Find(T("a\\b"))), RunTimeError);
  EXPECT_EQ(Listings(), 0);
}

}  // namespace
}  // namespace trevane::test
