#include "base/RunTimeError.h"
#include "engine/files/FileSystem.h"
#include "engine/files/HeldFolder.h"
#include "engine/files/ProviderError.h"
#include "engine/files/WholeFile.h"
#include "engine/model/ContentSteps.h"
#include "engine/model/ItemName.h"
#include "engine/providers/ftp/AbandonedItems.h"
#include "engine/providers/ftp/FtpErrors.h"
#include "tests/engine/providers/ftp/FakeFtpServer.h"

#include <QDate>
#include <QDateTime>
#include <QTime>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

namespace trevane::test {
namespace {

QString T(const char* text) {
  return QString::fromUtf8(text);
}

QStringList NamesIn(const Listing& listing) {
  QStringList names;
  for (const FileEntry& entry : listing) {
    names += entry.name;
  }
  names.sort();
  return names;
}

/// The number of the failure of a call; 0 for none.
template <class Work>
qint32 NumberOf(const Work& work) {
  try {
    work();
  } catch (const RunTimeError& failure) {
    return failure.Number();
  }
  return 0;
}

class FtpFiles : public ::testing::Test {
 protected:
  void NoFacts() {
    server_.vices.features = {"SIZE", "MDTM", "MFMT"};
    server_.vices.missing += {"MLSD", "MLST"};
  }
  void NothingButBasics() {
    server_.vices.features.clear();
    server_.vices.missing += {"MLSD", "MLST", "SIZE", "MDTM", "MFMT", "SITE"};
  }
  FakeFtpServer server_;
};

TEST_F(FtpFiles, ListsByFacts) {
  server_.AddFile("/a.tp", "hello");
  server_.AddFolder("/sub");
  server_.AddFile("/sub/.hidden", "x");
  const auto files = server_.Open();
  server_.log.clear();
  const Listing listing = files->List(QString());
  ASSERT_EQ(listing.size(), 2U);
  EXPECT_EQ(listing[0].name, T("a.tp"));
  EXPECT_EQ(listing[0].size, 5);
  EXPECT_EQ(listing[0].modified.msecs, 1700000000000);
  EXPECT_TRUE(listing[1].IsFolder());
  EXPECT_EQ(NamesIn(files->List(T("sub"))), QStringList{T(".hidden")});
  EXPECT_EQ(server_.Count("MLSD"), 2);
  EXPECT_EQ(server_.log.size(), 2);
}

TEST_F(FtpFiles, FallsBackToLinesForGood) {
  server_.vices.missing = {"MLSD"};
  server_.AddFile("/a.tp", "hello");
  const auto files = server_.Open();
  EXPECT_EQ(NamesIn(files->List(QString())), QStringList{T("a.tp")});
  static_cast<void>(files->List(QString()));
  EXPECT_EQ(server_.Count("MLSD"), 1);
}

TEST_F(FtpFiles, ListsByLinesWithHiddenNames) {
  NoFacts();
  server_.AddFile("/a.tp", "hello");
  server_.AddFile("/.cfg", "x");
  const auto files = server_.Open();
  EXPECT_EQ(NamesIn(files->List(QString())), (QStringList{T(".cfg"), T("a.tp")}));
}

TEST_F(FtpFiles, GivesNoOptionWhereItIsAName) {
  NoFacts();
  server_.vices.takesOptionForName = true;
  server_.AddFile("/a.tp", "hello");
  const auto files = server_.Open();
  EXPECT_EQ(NamesIn(files->List(QString())), QStringList{T("a.tp")});
  server_.log.clear();
  EXPECT_EQ(NamesIn(files->List(QString())), QStringList{T("a.tp")});
  EXPECT_EQ(server_.log, QByteArrayList{"LIST /"});
}

TEST_F(FtpFiles, CountsLinesThatCannotBeRead) {
  NoFacts();
  server_.vices.garbage = {"?? this is no line", "!! nor is this"};
  server_.AddFile("/a.tp", "hello");
  const Listing listing = server_.Open()->List(QString());
  ASSERT_EQ(listing.size(), 3U);
  EXPECT_EQ(std::count_if(listing.begin(), listing.end(),
                          [](const FileEntry& entry) { return !IsValidItemName(entry.name); }),
            2);
}

TEST_F(FtpFiles, FailsForAListingThatCannotBeRead) {
  NoFacts();
  server_.vices.garbage = {"?? this is no line"};
  const auto files = server_.Open();
  EXPECT_EQ(NumberOf([&] { static_cast<void>(files->List(QString())); }), ftp::kUnreadable);
}

TEST_F(FtpFiles, ListsFromInsideWhereAPathListsNothing) {
  NoFacts();
  server_.vices.listsNothingByPath = true;
  server_.AddFolder("/sub");
  server_.AddFile("/sub/a", "x");
  server_.AddFolder("/sub/empty");
  const auto files = server_.Open();
  EXPECT_EQ(NamesIn(files->List(T("sub\\empty"))), QStringList());
  EXPECT_EQ(NamesIn(files->List(T("sub"))), (QStringList{T("a"), T("empty")}));
  EXPECT_TRUE(files->Find(T("sub\\a")));
  EXPECT_EQ(NumberOf([&] { static_cast<void>(files->List(T("missing"))); }), error::kNotFound);
}

TEST_F(FtpFiles, CopiesWithinAServerThatCannotRename) {
  server_.vices.missing += {"RNFR", "RNTO"};
  server_.AddFolder("/sub");
  server_.AddFile("/sub/a", "x");
  const auto files = server_.Open({.host = T("without rename")});
  EXPECT_FALSE(files->Capabilities().temporaryNames);
  files->Copy(T("sub"), T("copy"), false);
  EXPECT_EQ(server_.ContentOf("/copy/a"), "x");
}

TEST_F(FtpFiles, ReplacesNoFileThatNothingTellsOf) {
  NothingButBasics();
  server_.vices.takesOptionForName = true;
  server_.AddFile("/a", "x");
  server_.AddFile("/.cfg", "precious");
  server_.AddFile("/.long", QByteArray(3 * 1024 * 1024, 'x'));
  const auto files = server_.Open({.host = T("hidden")});
  EXPECT_EQ(NamesIn(files->List(QString())), QStringList{T("a")});
  EXPECT_EQ(NumberOf([&] { WriteNewFile(*files, T(".cfg"), "new"); }), error::kExists);
  EXPECT_EQ(NumberOf([&] { WriteNewFile(*files, T(".long"), "new"); }), error::kExists);
  EXPECT_EQ(NumberOf([&] { files->Rename(T("a"), T(".cfg"), false); }), error::kExists);
  EXPECT_EQ(server_.ContentOf("/.cfg"), "precious");
  EXPECT_EQ(server_.ContentOf("/.long").size(), 3 * 1024 * 1024);
  EXPECT_FALSE(files->Find(T(".missing")));
  WriteNewFile(*files, T(".new"), "new");
  EXPECT_EQ(server_.ContentOf("/.new"), "new");
  EXPECT_EQ(server_.Tree().filter(T("<temporary>")), QStringList());
}

TEST_F(FtpFiles, AnUnreadableLineKeepsItsName) {
  NothingButBasics();
  server_.vices.garbage = {"?? 12 b.src", "?? no.src ??"};
  server_.AddFile("/a", "x");
  const auto files = server_.Open({.host = T("unreadable lines")});
  EXPECT_EQ(NumberOf([&] { WriteNewFile(*files, T("b.src"), "new"); }), error::kExists);
  WriteNewFile(*files, T("src"), "new");
  EXPECT_EQ(server_.Tree(), (QStringList{T("/a=x"), T("/src=new")}));
}

TEST_F(FtpFiles, RefusesTransfersOfControlCharactersAtOnce) {
  for (const bool facts : {true, false}) {
    if (!facts) {
      NoFacts();
    }
    server_.AddFile("/bell\a.src", "old");
    server_.AddFile("/tab\tname", "x");
    server_.AddFolder("/esc\033");
    const auto files = server_.Open({.host = T("control characters")});
    EXPECT_EQ(NamesIn(files->List(QString())), (QStringList{T("bell\a.src"), T("esc\033"), T("tab\tname")}));
    server_.log.clear();
    const auto expectRefused = [&](const std::function<void()>& work, const char* shown) {
      try {
        work();
        FAIL() << shown;
      } catch (const RunTimeError& failure) {
        EXPECT_EQ(failure.Number(), error::kInvalidName);
        EXPECT_TRUE(failure.Description().contains(QString::fromUtf8(shown))) << failure.what();
        EXPECT_TRUE(failure.Description().contains(T("control characters"))) << failure.what();
      }
      EXPECT_EQ(server_.log, QByteArrayList());
    };
    expectRefused([&] { static_cast<void>(ReadFile(*files, T("bell\a.src"))); }, "bell\u2407.src");
    expectRefused([&] { WriteNewFile(*files, T("esc\033\\a"), "new"); }, "esc\u241b\\a");
    try {
      WriteNewFile(*files, T("two\nlines"), "new");
      FAIL() << "A line break was sent";
    } catch (const RunTimeError& failure) {
      EXPECT_EQ(failure.Number(), error::kInvalidName);
      EXPECT_TRUE(failure.Description().contains(T("two"))) << failure.what();
    }
    EXPECT_EQ(server_.log, QByteArrayList());
    // Only their contents cannot pass.
    WriteFile(*files, T("bell\a.src"), "new");
    EXPECT_EQ(server_.ContentOf("/bell\a.src"), "new");
    files->Rename(T("tab\tname"), T("other"), false);
    files->Remove(T("bell\a.src"));
    files->Remove(T("other"));
    EXPECT_EQ(server_.Tree(), QStringList{T("/esc\033/")});
  }
}

/// A zone with summers for this computer, as long as it lives.
class OwnZone {
 public:
  explicit OwnZone(const QByteArray& zone)
      : before_(qgetenv("TZ")), wasSet_(qEnvironmentVariableIsSet("TZ")) {
    qputenv("TZ", zone);
  }
  ~OwnZone() {
    if (wasSet_) {
      qputenv("TZ", before_);
    } else {
      qunsetenv("TZ");
    }
  }
  OwnZone(const OwnZone&) = delete;
  OwnZone& operator=(const OwnZone&) = delete;

 private:
  const QByteArray before_;
  const bool wasSet_;
};

/// Noon of a day in the last year, in this month or the one before, that a listing without a year tells.
qint64 NoonNearLast(int month) {
  const QDate today = QDateTime::currentDateTimeUtc().date();
  const QDate first(today.year(), month, 15);
  for (const QDate& date : {first, first.addMonths(-1), first.addYears(-1)}) {
    const qint64 days = date.daysTo(today);
    if (days > 10 && days < 360) {
      return QDateTime(date, QTime(12, 0), Qt::UTC).toMSecsSinceEpoch();
    }
  }
  return QDateTime(first.addMonths(-13), QTime(12, 0), Qt::UTC).toMSecsSinceEpoch();
}

TEST_F(FtpFiles, DatesOfBothSeasonsAreRight) {
  const OwnZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
  const qint64 winter = NoonNearLast(1);
  const qint64 summer = NoonNearLast(7);
  const auto ahead = [](qint64 at) { return QDateTime::fromMSecsSinceEpoch(at).offsetFromUtc() / 60; };
  if (ahead(winter) != 60 || ahead(summer) != 120) {
    GTEST_SKIP() << "This system takes no zone for one program.";
  }
  NoFacts();
  struct Case {
    const char* host;
    int zone;
    bool isOwn;
    int asked;
  };
  // A server of the same zone, some that add one hour or two the whole year, and one of UTC.
  for (const Case& server : {Case{"own", 0, true, 2}, Case{"one", 60, false, 2}, Case{"two", 120, false, 1},
                             Case{"none", 0, false, 1}}) {
    SCOPED_TRACE(server.host);
    server_.vices.zone = server.zone;
    server_.vices.zoneIsOwn = server.isOwn;
    server_.items.clear();
    server_.AddFolder("/");
    server_.AddFile("/a-winter", "x");
    server_.AddFile("/b-summer", "x");
    server_.items["/a-winter"].modified = winter;
    server_.items["/b-summer"].modified = summer;
    server_.log.clear();
    const auto files = server_.Open({.host = T(server.host)});
    for (int i = 0; i < 2; ++i) {
      const Listing listing = files->List(QString());
      ASSERT_EQ(listing.size(), 2U);
      EXPECT_EQ(listing[0].modified.msecs, winter);
      EXPECT_EQ(listing[1].modified.msecs, summer);
    }
    EXPECT_EQ(server_.Count("MDTM"), server.asked);
  }
}

TEST_F(FtpFiles, NeverShowsAMissingFolderAsEmpty) {
  server_.vices.listsMissingAsEmpty = true;
  server_.AddFolder("/empty");
  for (const bool facts : {true, false}) {
    if (!facts) {
      NoFacts();
    }
    const auto files = server_.Open();
    EXPECT_TRUE(files->List(T("empty")).empty());
    EXPECT_EQ(NumberOf([&] { static_cast<void>(files->List(T("missing"))); }), error::kNotFound);
  }
}

TEST_F(FtpFiles, TellsAFileFromAFolder) {
  server_.AddFile("/a.tp", "hello");
  for (const bool facts : {true, false}) {
    if (!facts) {
      NoFacts();
    }
    const auto files = server_.Open();
    EXPECT_EQ(NumberOf([&] { static_cast<void>(files->List(T("a.tp"))); }), providererror::kNotAFolder);
    EXPECT_EQ(NumberOf([&] { static_cast<void>(files->OpenSource(T("missing"))); }), error::kNotFound);
  }
}

TEST_F(FtpFiles, ListsAnEmptyFolderThatIsRefused) {
  NoFacts();
  server_.vices.refusesEmptyFolders = true;
  server_.AddFolder("/empty");
  EXPECT_TRUE(server_.Open()->List(T("empty")).empty());
}

TEST_F(FtpFiles, LearnsTheZoneOnce) {
  NoFacts();
  server_.vices.zone = 570;
  const qint64 now = QDateTime::currentMSecsSinceEpoch();
  const qint64 minute = now - now % 60000 - 86400000;
  server_.AddFile("/a.tp", "hello");
  server_.items["/a.tp"].modified = minute;
  const auto files = server_.Open();
  EXPECT_EQ(files->List(QString())[0].modified.msecs, minute);
  EXPECT_EQ(files->List(QString())[0].modified.msecs, minute);
  EXPECT_EQ(server_.Count("MDTM"), 1);
}

TEST_F(FtpFiles, FindsOneItem) {
  server_.AddFolder("/sub");
  server_.AddFile("/sub/a.tp", "hello");
  server_.AddFile("/sub/.b", "12");
  for (const int kind : {0, 1, 2}) {
    if (kind == 1) {
      NoFacts();
    } else if (kind == 2) {
      NothingButBasics();
    }
    const auto files = server_.Open();
    EXPECT_EQ(files->Stat(T("sub\\a.tp")).size, 5);
    EXPECT_TRUE(files->Stat(T("sub")).IsFolder());
    EXPECT_TRUE(files->Find(T("sub\\.b")));
    EXPECT_FALSE(files->Find(T("sub\\none")));
    EXPECT_FALSE(files->Find(T("none\\none")));
    EXPECT_TRUE(files->Find(QString())->IsFolder());
  }
}

TEST_F(FtpFiles, ReadsAndWrites) {
  server_.AddFolder("/sub");
  for (const int kind : {0, 1, 2}) {
    if (kind == 1) {
      NoFacts();
    } else if (kind == 2) {
      NothingButBasics();
    }
    const auto files = server_.Open();
    const SeenItem made = WriteNewFile(*files, T("sub\\a.tp"), "hello");
    EXPECT_EQ(made.entry.size, 5);
    EXPECT_EQ(ReadFile(*files, T("sub\\a.tp")), QByteArray("hello"));
    WriteFile(*files, T("sub\\a.tp"), "other content");
    EXPECT_EQ(ReadFile(*files, T("sub\\a.tp")), QByteArray("other content"));
    EXPECT_EQ(NumberOf([&] { WriteNewFile(*files, T("sub\\a.tp"), "x"); }), error::kExists);
    EXPECT_EQ(server_.Tree(), (QStringList{T("/sub/"), T("/sub/a.tp=other content")}));
    files->RemoveAlone(T("sub\\a.tp"));
  }
}

TEST_F(FtpFiles, ReadsFromAnOffset) {
  server_.AddFile("/a", "0123456789");
  for (const bool rest : {true, false}) {
    if (!rest) {
      server_.vices.missing = {"REST"};
    }
    const auto files = server_.Open();
    EXPECT_EQ(ReadAll(*files->OpenSource(T("a"), 4)), QByteArray("456789"));
    EXPECT_EQ(ReadAll(*files->OpenSource(T("a"), 10)), QByteArray());
    EXPECT_EQ(ReadAll(*files->OpenSource(T("a"), 12)), QByteArray());
  }
}

TEST_F(FtpFiles, KeepsTheRestOfASourceForAnotherCall) {
  const QByteArray large(3 * 1024 * 1024, 'x');
  server_.AddFile("/a", large);
  server_.AddFile("/b", "small content");
  const auto files = server_.Open();
  const auto source = files->OpenSource(T("a"));
  const auto other = files->OpenSource(T("b"));
  QByteArray read = source->Read(1000);
  EXPECT_TRUE(files->Find(T("b")));
  read += ReadAll(*source);
  EXPECT_EQ(read, large);
  EXPECT_EQ(ReadAll(*other), QByteArray("small content"));
}

TEST_F(FtpFiles, AnIdleLineIsClosedAndComesBackOnDemand) {
  server_.AddFile("/a", "content");
  const auto files = server_.Open({.host = T("idle")});
  EXPECT_EQ(files->Idle(0), 60000);
  // What is open keeps it open.
  auto source = files->OpenSource(T("a"));
  EXPECT_GT(files->Idle(60000), 60000);
  EXPECT_EQ(source->Read(100), "content");
  EXPECT_EQ(source->Read(100), QByteArray());
  source.reset();
  EXPECT_EQ(server_.connected, 1);
  EXPECT_EQ(files->Idle(60000), 0);
  EXPECT_EQ(files->Idle(90000), 0);
  EXPECT_EQ(server_.connected, 1);
  EXPECT_EQ(ReadFile(*files, T("a")), QByteArray("content"));
  EXPECT_EQ(server_.connected, 2);
  EXPECT_EQ(server_.Count("NOOP"), 0);
}

TEST_F(FtpFiles, ALineThatNeedsAQuestionIsKeptAlive) {
  server_.asksUser = true;
  server_.AddFile("/a", "content");
  const auto files = server_.Open({.host = T("kept alive")});
  EXPECT_EQ(files->Idle(0), 30000);
  EXPECT_EQ(server_.Count("NOOP"), 0);
  EXPECT_EQ(files->Idle(30000), 60000);
  EXPECT_EQ(files->Idle(60000), 90000);
  EXPECT_EQ(server_.Count("NOOP"), 2);
  const auto source = files->OpenSource(T("a"));
  EXPECT_EQ(files->Idle(90000), 120000);
  EXPECT_EQ(server_.Count("NOOP"), 2) << "in the middle of a transfer";
  EXPECT_EQ(server_.connected, 1);
}

TEST_F(FtpFiles, AServerWithoutNoopIsAskedOnce) {
  server_.asksUser = true;
  server_.vices.missing += "NOOP";
  const auto files = server_.Open({.host = T("without NOOP")});
  EXPECT_GT(files->Idle(30000), 30000);
  EXPECT_EQ(files->Idle(60000), 0);
  EXPECT_EQ(server_.Count("NOOP"), 1);
}

TEST_F(FtpFiles, SendsASinkAnewWhereAnotherCallCame) {
  server_.AddFile("/b", "small content");
  const auto files = server_.Open();
  const auto sink = files->OpenSink(T("a"), {});
  sink->Write("one ");
  EXPECT_TRUE(files->Find(T("b")));
  sink->Write("two ");
  EXPECT_EQ(ReadFile(*files, T("b")), QByteArray("small content"));
  sink->Write("three");
  EXPECT_EQ(sink->Commit().entry.size, 13);
  EXPECT_EQ(server_.Tree(), (QStringList{T("/a=one two three"), T("/b=small content")}));
}

TEST_F(FtpFiles, CopiesWithinOneServer) {
  server_.AddFolder("/from");
  server_.AddFile("/from/a", QByteArray(2 * 1024 * 1024, 'a'));
  server_.AddFolder("/from/sub");
  server_.AddFile("/from/sub/b", "b");
  const auto files = server_.Open();
  files->Copy(T("from"), T("to"), false);
  EXPECT_EQ(server_.ContentOf("/to/a"), QByteArray(2 * 1024 * 1024, 'a'));
  EXPECT_EQ(server_.ContentOf("/to/sub/b"), QByteArray("b"));
  EXPECT_EQ(server_.items.size(), 9U);
}

TEST_F(FtpFiles, NeverTakesAShortDownloadForWhole) {
  server_.AddFile("/a", "0123456789");
  const auto files = server_.Open();
  server_.items["/a"].make = [n = 0]() mutable { return QByteArray(++n, '1'); };
  EXPECT_EQ(NumberOf([&] { static_cast<void>(ReadFile(*files, T("a"))); }), providererror::kChanged);
}

TEST_F(FtpFiles, TakesAFileMadeWhileItIsRead) {
  server_.AddFile("/a", {});
  server_.items["/a"].shownSize = 0;
  server_.items["/a"].make = [] { return QByteArray("always the same"); };
  const auto files = server_.Open();
  EXPECT_EQ(ReadFile(*files, T("a")), QByteArray("always the same"));
  EXPECT_EQ(server_.Count("RETR"), 2);
}

TEST_F(FtpFiles, KeepsTheOldContentWhereNotAllArrives) {
  server_.AddFile("/a", "old");
  const auto files = server_.Open();
  server_.vices.loses = 1;
  EXPECT_EQ(NumberOf([&] { WriteFile(*files, T("a"), "new content"); }), providererror::kChanged);
  EXPECT_EQ(server_.Tree(), QStringList{T("/a=old")});
}

TEST_F(FtpFiles, ReadsBackWhereNothingTellsTheSize) {
  NothingButBasics();
  server_.AddFile("/a", "old");
  server_.before = [this](const QByteArray& /*command*/) {
    for (auto& [path, item] : server_.items) {
      item.shownSize = -1;
    }
  };
  const auto files = server_.Open();
  WriteFile(*files, T("a"), "new content");
  EXPECT_EQ(server_.Tree(), QStringList{T("/a=new content")});
  server_.vices.loses = 1;
  EXPECT_EQ(NumberOf([&] { WriteFile(*files, T("a"), "newer content"); }), providererror::kChanged);
  std::vector<NewContent> many;
  many.reserve(4);
  for (const char* name : {"b", "c", "d", "e"}) {
    many.push_back({T(name), "some bytes", {}});
  }
  for (const WriteResult& result : files->WriteMany(many)) {
    EXPECT_FALSE(result.item);
  }
  EXPECT_EQ(server_.Tree(), QStringList{T("/a=new content")});
}

TEST_F(FtpFiles, APassingRefusalOfTheTopGivesNoOtherTop) {
  server_.vices.start = "/home";
  server_.AddFolder("/home");
  server_.AddFile("/a", "at the top");
  server_.fault = {.kind = FakeFtpFault::Kind::Refuse, .reply = "425 No data connection"};
  server_.faultAt = 0;
  EXPECT_NE(NumberOf([&] { static_cast<void>(server_.Open()); }), 0);
  server_.faultAt = -1;
  EXPECT_EQ(NamesIn(server_.Open()->List(QString())), (QStringList{T("a"), T("home")}));
}

TEST_F(FtpFiles, AFolderThatHoldsAnythingIsNotTriedToRemove) {
  server_.AddFolder("/sub");
  server_.AddFile("/sub/a", "x");
  const auto files = server_.Open();
  EXPECT_EQ(NumberOf([&] { files->RemoveAlone(T("sub")); }), error::kDirectoryNotEmpty);
  EXPECT_EQ(server_.Count("RMD"), 0);
}

TEST_F(FtpFiles, LeavesNothingOnAFullDisk) {
  server_.AddFile("/a", "old");
  const auto files = server_.Open();
  server_.vices.room = 5;
  EXPECT_EQ(NumberOf([&] { WriteFile(*files, T("a"), "new content"); }), error::kDiskFull);
  EXPECT_EQ(server_.Tree(), QStringList{T("/a=old")});
}

TEST_F(FtpFiles, RenamesOntoAFileWithShortNames) {
  server_.vices.renameReplaces = false;
  server_.vices.longestName = 12;
  server_.vices.refusesDotNames = true;
  server_.AddFile("/A.SRC", "a");
  server_.AddFile("/B.SRC", "b");
  server_.AddFile("/C.SRC", "c");
  const auto files = server_.Open({.host = T("rename, short names")});
  files->Rename(T("A.SRC"), T("B.SRC"), true);
  EXPECT_EQ(server_.Tree(), (QStringList{T("/B.SRC=a"), T("/C.SRC=c")}));
  // What uploads have learnt is used.
  WriteNewFile(*files, T("D.SRC"), "d");
  server_.log.clear();
  files->Rename(T("B.SRC"), T("C.SRC"), true);
  EXPECT_EQ(server_.Tree(), (QStringList{T("/C.SRC=a"), T("/D.SRC=d")}));
  EXPECT_EQ(server_.Count("RNTO"), 2);
}

TEST_F(FtpFiles, AFullDiskIsToldOfTheFileThatPeopleKnow) {
  server_.AddFolder("/prog");
  const auto files = server_.Open();
  WriteNewFile(*files, T("prog\\proved"), "x");
  server_.vices.room = 5;
  const auto told = [](const std::function<void()>& act) {
    try {
      act();
    } catch (const RunTimeError& failure) {
      return failure.Description();
    }
    return QString();
  };
  const QString alone = told([&] { WriteNewFile(*files, T("prog\\alone"), "new content"); });
  EXPECT_TRUE(alone.endsWith(T(": prog\\alone"))) << alone.toStdString();
  const std::vector<WriteResult> batch =
      files->WriteMany({{.name = T("prog\\one"), .content = "new content", .request = {}},
                        {.name = T("prog\\two"), .content = "new content", .request = {}}});
  ASSERT_TRUE(batch.front().failure);
  const QString inBatch = batch.front().failure->Description();
  EXPECT_TRUE(inBatch.endsWith(T(": prog\\one"))) << inBatch.toStdString();
}

TEST_F(FtpFiles, ReplacesWhereRenameRefuses) {
  server_.vices.renameReplaces = false;
  server_.AddFile("/a", "old");
  const auto files = server_.Open();
  WriteFile(*files, T("a"), "new content");
  EXPECT_EQ(server_.Tree(), QStringList{T("/a=new content")});
}

TEST_F(FtpFiles, WritesInPlaceWhereThereIsNoRename) {
  server_.vices.missing = {"RNFR", "RNTO"};
  server_.AddFile("/a", "old");
  const auto files = server_.Open({.host = T("no rename")});
  WriteFile(*files, T("a"), "new content");
  WriteNewFile(*files, T("b"), "b");
  EXPECT_EQ(server_.Tree(), (QStringList{T("/a=new content"), T("/b=b")}));
  EXPECT_EQ(NumberOf([&] { files->Rename(T("a"), T("c"), false); }), error::kNotSupported);
}

TEST_F(FtpFiles, PutsTheOldContentBackWhereThereIsNoRename) {
  server_.vices.missing = {"RNFR", "RNTO"};
  server_.AddFile("/a", "old");
  const auto files = server_.Open({.host = T("no rename, small disk")});
  server_.vices.room = 5;
  EXPECT_EQ(NumberOf([&] { WriteFile(*files, T("a"), "new content"); }), error::kDiskFull);
  EXPECT_EQ(server_.Tree(), QStringList{T("/a=old")});
}

TEST_F(FtpFiles, RenamesNeverOntoAnItem) {
  server_.AddFile("/a", "a");
  server_.AddFile("/b", "b");
  server_.AddFolder("/sub");
  const auto files = server_.Open();
  EXPECT_EQ(NumberOf([&] { files->Rename(T("a"), T("b"), false); }), error::kExists);
  EXPECT_EQ(NumberOf([&] { files->Rename(T("a"), T("sub"), true); }), error::kExists);
  EXPECT_EQ(NumberOf([&] { files->Rename(T("none"), T("c"), true); }), error::kNotFound);
  EXPECT_EQ(NumberOf([&] { files->Rename(T("sub"), T("sub\\x"), true); }), error::kInvalidParameter);
  files->Rename(T("a"), T("b"), true);
  files->Rename(T("b"), T("sub\\c"), false);
  EXPECT_EQ(server_.Tree(), (QStringList{T("/sub/"), T("/sub/c=a")}));
}

TEST_F(FtpFiles, ChangesTheCaseOfAName) {
  server_.vices.caseInsensitive = true;
  server_.AddFile("/prog.tp", "a");
  const auto files = server_.Open();
  files->Rename(T("prog.tp"), T("PROG.TP"), false);
  EXPECT_EQ(server_.Tree(), QStringList{T("/PROG.TP=a")});
}

TEST_F(FtpFiles, TakesANameInOtherCaseForTaken) {
  NoFacts();
  server_.vices.caseInsensitive = true;
  server_.AddFile("/PROG.TP", "precious");
  const auto files = server_.Open();
  EXPECT_EQ(NumberOf([&] { WriteNewFile(*files, T("prog.tp"), "x"); }), error::kExists);
  EXPECT_EQ(server_.Tree(), QStringList{T("/PROG.TP=precious")});
}

TEST_F(FtpFiles, MakesANameInOtherCaseWhereItIsAnother) {
  NoFacts();
  server_.AddFile("/PROG.TP", "precious");
  const auto files = server_.Open();
  WriteNewFile(*files, T("prog.tp"), "x");
  EXPECT_EQ(server_.Tree(), (QStringList{T("/PROG.TP=precious"), T("/prog.tp=x")}));
}

TEST_F(FtpFiles, RemovesATreeAndNoTargetOfALink) {
  for (const bool facts : {true, false}) {
    server_.AddFolder("/keep");
    server_.AddFile("/keep/precious", "x");
    server_.AddFolder("/tree");
    server_.AddFile("/tree/a", "a");
    server_.AddLink("/tree/link", "/keep");
    server_.AddFolder("/tree/sub");
    server_.AddFile("/tree/sub/b", "b");
    if (!facts) {
      NoFacts();
    }
    const auto files = server_.Open();
    files->Remove(T("tree"));
    EXPECT_EQ(server_.Tree(), (QStringList{T("/keep/"), T("/keep/precious=x")}));
  }
}

TEST_F(FtpFiles, WritesNeverThroughALink) {
  server_.AddFile("/precious", "x");
  server_.AddLink("/link", "/precious");
  for (const bool facts : {true, false}) {
    if (!facts) {
      NoFacts();
    }
    const auto files = server_.Open();
    EXPECT_EQ(NumberOf([&] { WriteFile(*files, T("link"), "new"); }), error::kAccessDenied);
    EXPECT_EQ(NumberOf([&] { WriteNewFile(*files, T("link"), "new"); }), error::kExists);
    EXPECT_EQ(server_.ContentOf("/precious"), QByteArray("x"));
    EXPECT_EQ(ReadFile(*files, T("link")), QByteArray("x"));
    EXPECT_EQ(files->ReadLink(T("link")), T("/precious"));
  }
}

TEST_F(FtpFiles, RefusesToRemoveAFolderThatHoldsAnything) {
  server_.AddFolder("/sub");
  server_.AddFile("/sub/a", "a");
  const auto files = server_.Open();
  EXPECT_EQ(NumberOf([&] { files->RemoveAlone(T("sub")); }), error::kDirectoryNotEmpty);
  EXPECT_EQ(NumberOf([&] { files->RemoveAlone(T("none")); }), error::kNotFound);
  EXPECT_EQ(NumberOf([&] { files->RemoveAlone(QString()); }), error::kAccessDenied);
  EXPECT_EQ(NumberOf([&] { files->CreateFolder(T("sub")); }), error::kExists);
}

TEST_F(FtpFiles, ShowsTheDriveOfTheSettings) {
  server_.AddFolder("/MMC");
  server_.AddFile("/MMC/a", "a");
  FtpSettings settings{.host = T("fake")};
  settings.drive = T("/MMC/");
  EXPECT_EQ(NamesIn(server_.Open(settings)->List(QString())), QStringList{T("a")});
  settings.drive = T("/none");
  EXPECT_EQ(NumberOf([&] { static_cast<void>(server_.Open(settings)); }), error::kNotFound);
}

TEST_F(FtpFiles, ShowsTheFolderOfTheLogOnWhereTheTopIsEmpty) {
  server_.vices.start = "/home";
  server_.AddFolder("/home");
  server_.AddFile("/home/a", "a");
  const auto files = server_.Open();
  EXPECT_EQ(NamesIn(files->List(QString())), QStringList{T("home")});
  EXPECT_EQ(files->PathFromText(T("~/a")), T("home\\a"));
}

TEST_F(FtpFiles, KeepsTheDateOfANewFile) {
  const auto files = server_.Open();
  WriteNewFile(*files, T("a"), "x", {.modified = Date{1600000000000}});
  EXPECT_EQ(server_.items["/a"].modified, 1600000000000);
}

TEST_F(FtpFiles, RemovesWhatACancelledCallHadToLeave) {
  server_.AddFile("/a", "old");
  const auto files = server_.Open();
  {
    const auto sink = files->OpenSink(T("a"), {.mode = SinkRequest::Mode::Replace});
    sink->Write("half of it");
    server_.faultAt = server_.calls;
    server_.fault = {.kind = FakeFtpFault::Kind::Cancel};
    EXPECT_EQ(NumberOf([&] { sink->Write("more"); }), error::kCancelled);
  }
  EXPECT_TRUE(files->TakeLeftovers().empty());
  EXPECT_EQ(server_.Tree(), QStringList{T("/a=old")});
}

TEST_F(FtpFiles, TheNextConnectionRemovesWhatALostOneLeft) {
  const auto abandoned = std::make_shared<ftp::AbandonedItems>();
  {
    const auto files = server_.Open({.host = T("fake")}, abandoned);
    const auto sink = files->OpenSink(T("a"), {.mode = SinkRequest::Mode::New});
    sink->Write("half of it");
    server_.isGone = true;
    server_.faultAt = server_.calls;
    server_.fault = {.kind = FakeFtpFault::Kind::LoseBefore};
    EXPECT_EQ(NumberOf([&] { sink->Write("more"); }), ftp::kConnectionLost);
  }
  EXPECT_EQ(server_.Tree().size(), 1);
  server_.isGone = false;
  const auto again = server_.Open({.host = T("fake")}, abandoned);
  EXPECT_EQ(server_.Tree(), QStringList());
  EXPECT_TRUE(again->TakeLeftovers().empty());
}

TEST_F(FtpFiles, RefusesANameThatDoesNotFitBeforeItIsSent) {
  server_.vices.longestName = 12;
  server_.vices.refusesDotNames = true;
  const auto files = server_.Open({.host = T("short names")});
  EXPECT_EQ(NumberOf([&] { WriteNewFile(*files, T("averylongname.tp"), "x"); }), error::kInvalidName);
  WriteNewFile(*files, T("short.tp"), "x");
  server_.log.clear();
  EXPECT_EQ(NumberOf([&] { WriteNewFile(*files, T("anotherlongname.tp"), "x"); }), error::kInvalidName);
  EXPECT_EQ(NumberOf([&] { files->CreateFolder(T("anotherlongname.tp")); }), error::kInvalidName);
  EXPECT_EQ(server_.Count("STOR") + server_.Count("MKD"), 0);
  EXPECT_EQ(server_.Tree(), QStringList{T("/short.tp=x")});
}

}  // namespace
}  // namespace trevane::test
