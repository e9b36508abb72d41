#include "base/RunTimeError.h"
#include "engine/files/FileSystem.h"
#include "engine/files/WholeFile.h"
#include "tests/engine/providers/ftp/FakeFtpServer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace trevane::test {
namespace {

using Kind = FakeFtpFault::Kind;

constexpr int kFiles = 9;
constexpr qint64 kDate = 1600000000000;

QString T(const char* text) {
  return QString::fromUtf8(text);
}

QByteArray ContentOf(int number) {
  return "new content " + QByteArray::number(number);
}

/// "/0" and so on, each with a date.
std::vector<NewContent> Files(int count = kFiles) {
  std::vector<NewContent> files;
  files.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    files.push_back({QString::number(i), ContentOf(i), {}});
    files.back().request.traits.modified.msecs = kDate;
  }
  return files;
}

/// The commands of a segment without what they are for, but "RNTO /3".
QByteArray WordsOf(const QByteArrayList& segment) {
  QByteArrayList words;
  for (const QByteArray& command : segment) {
    words << (command.startsWith("RNTO") ? command : command.split(' ').first());
  }
  return words.join(", ");
}

/// A server that is known to rename, to set dates and to take commands together.
class PlacesTogether : public ::testing::Test {
 protected:
  static std::shared_ptr<FileSystem> OpenKnown(FakeFtpServer& server, const QString& host) {
    server.vices.takesTogether = true;
    const auto files = server.Open({.host = host});
    NewContent first{T("first"), "learns", {}};
    first.request.traits.modified.msecs = kDate;
    EXPECT_TRUE(files->WriteMany({first}).front().item);
    server.log.clear();
    return files;
  }

  static int CountPlaced(const FakeFtpServer& server) {
    int placed = 0;
    for (int i = 0; i < kFiles; ++i) {
      placed += server.ContentOf('/' + QByteArray::number(i)) == ContentOf(i) ? 1 : 0;
    }
    return placed;
  }

  static bool HoldsTemporary(const FakeFtpServer& server) {
    return server.Tree().join(u' ').contains(T("<temporary>"));
  }
};

TEST_F(PlacesTogether, SendTheNextWithTheLast) {
  FakeFtpServer server;
  const auto files = OpenKnown(server, T("together"));
  for (const WriteResult& result : files->WriteMany(Files())) {
    ASSERT_TRUE(result.item);
  }
  ASSERT_EQ(server.segments.size(), kFiles + 1);
  EXPECT_EQ(WordsOf(server.segments.front()), "MFMT, MLST, SIZE, RNFR");
  for (int i = 1; i < kFiles; ++i) {
    EXPECT_EQ(WordsOf(server.segments[i]), "RNTO /" + QByteArray::number(i - 1) + ", MFMT, MLST, SIZE, RNFR");
  }
  EXPECT_EQ(WordsOf(server.segments.back()), "RNTO /8");
  for (int i = 0; i < kFiles; ++i) {
    const QByteArray path = '/' + QByteArray::number(i);
    EXPECT_EQ(server.ContentOf(path), ContentOf(i));
    EXPECT_EQ(server.items.at(path).modified, kDate);
  }
}

TEST_F(PlacesTogether, AskForTheSizeWhereFactsAreMissing) {
  FakeFtpServer server;
  server.vices.missing = {"MLSD", "MLST"};
  server.vices.features = {"SIZE", "MDTM", "MFMT"};
  const auto files = OpenKnown(server, T("together, lines"));
  for (const WriteResult& result : files->WriteMany(Files())) {
    ASSERT_TRUE(result.item);
  }
  ASSERT_EQ(server.segments.size(), kFiles + 1);
  EXPECT_EQ(WordsOf(server.segments[1]), "RNTO /0, MFMT, SIZE, RNFR");
  EXPECT_EQ(CountPlaced(server), kFiles);
}

TEST_F(PlacesTogether, AreNotForFewFiles) {
  FakeFtpServer server;
  const auto files = OpenKnown(server, T("together, few"));
  for (const WriteResult& result : files->WriteMany(Files(7))) {
    ASSERT_TRUE(result.item);
  }
  EXPECT_TRUE(server.segments.isEmpty());
}

TEST_F(PlacesTogether, AreNotForReplacedFiles) {
  FakeFtpServer server;
  for (const char* name : {"/0", "/4", "/5"}) {
    server.AddFile(name, "old");
  }
  const auto files = OpenKnown(server, T("together, replaced"));
  std::vector<NewContent> many = Files();
  for (const int each : {0, 4, 5}) {
    many[static_cast<std::size_t>(each)].request.mode = SinkRequest::Mode::Replace;
  }
  for (const WriteResult& result : files->WriteMany(many)) {
    ASSERT_TRUE(result.item);
  }
  EXPECT_EQ(CountPlaced(server), kFiles);
  for (const auto& [path, item] : server.items) {
    EXPECT_TRUE(item.kind != FakeFtpItem::Kind::File || item.modified == kDate) << path.toStdString();
  }
  QByteArrayList together;
  for (const QByteArrayList& segment : server.segments) {
    if (segment.front().startsWith("RNTO")) {
      together << segment.front().sliced(5);
    }
  }
  EXPECT_EQ(together, QByteArrayList({"/1", "/2", "/3", "/6", "/7", "/8"}));
}

TEST_F(PlacesTogether, AskForTheSizeWhereFactsTellTooLittle) {
  FakeFtpServer server;
  server.vices.missingFacts = "It cannot be listed";
  const auto files = OpenKnown(server, T("together, few words"));
  for (const WriteResult& result : files->WriteMany(Files())) {
    ASSERT_TRUE(result.item);
  }
  EXPECT_EQ(server.segments.size(), kFiles + 1);
  EXPECT_EQ(CountPlaced(server), kFiles);
}

TEST_F(PlacesTogether, LeaveANameThatWasTakenMeanwhile) {
  for (const char* kind : {"facts", "lines", "few words"}) {
    SCOPED_TRACE(kind);
    FakeFtpServer server;
    server.vices.insistsOnRename = true;
    if (kind == QByteArray("lines")) {
      server.vices.missing = {"MLSD", "MLST"};
      server.vices.features = {"SIZE", "MDTM", "MFMT"};
    } else if (kind == QByteArray("few words")) {
      server.vices.missingFacts = "It cannot be listed";
    }
    const auto files = OpenKnown(server, T("together, taken, ") + T(kind));
    server.before = [&server](const QByteArray& command) {
      if (command == "RNTO /3") {
        server.AddFile("/4", "precious");
      }
    };
    const std::vector<WriteResult> results = files->WriteMany(Files());
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_TRUE(results[i].item);
    }
    ASSERT_TRUE(results[4].failure);
    EXPECT_EQ(results[4].failure->Number(), error::kExists);
    EXPECT_FALSE(results[5].item || results[5].failure);
    EXPECT_EQ(server.ContentOf("/4"), "precious");
    EXPECT_EQ(CountPlaced(server), 4);
    EXPECT_FALSE(HoldsTemporary(server));
    EXPECT_EQ(server.Count("RNTO /4"), 0);
  }
}

TEST_F(PlacesTogether, AskAnewWhatIsNotPlain) {
  FakeFtpServer server;
  server.vices.insistsOnRename = true;
  const auto files = OpenKnown(server, T("together, once refused"));
  for (const char* refused : {"MLST /3", "RNTO /6"}) {
    server.AddFolder("/");
    server.faultAt = -1;
    bool isOver = false;
    server.before = [&](const QByteArray& command) {
      if (!isOver && command == refused) {
        // The one that follows.
        server.faultAt = server.calls;
        isOver = true;
      }
    };
    server.fault = {.kind = Kind::Refuse, .reply = "450 Not now"};
    for (const WriteResult& result : files->WriteMany(Files())) {
      EXPECT_TRUE(result.item) << (result.failure ? result.failure->what() : "not begun");
    }
    EXPECT_TRUE(isOver);
    EXPECT_EQ(CountPlaced(server), kFiles);
    EXPECT_FALSE(HoldsTemporary(server));
    for (int i = 0; i < kFiles; ++i) {
      server.items.erase('/' + QByteArray::number(i));
    }
  }
}

/// One thing fails at each call in turn.
class PlacesTogetherFaults : public PlacesTogether, public ::testing::WithParamInterface<Kind> {};

TEST_P(PlacesTogetherFaults, LeaveWholeFilesOrNone) {
  for (int at = 0;; ++at) {
    SCOPED_TRACE(at);
    FakeFtpServer server;
    const auto files =
        OpenKnown(server, QStringLiteral("together, fault %1 %2").arg(int(GetParam())).arg(at));
    server.faultAt = server.calls + at;
    server.fault.kind = GetParam();
    const std::vector<WriteResult> results = files->WriteMany(Files());
    const bool wasReached = server.calls > server.faultAt;
    server.faultAt = -1;
    static_cast<void>(files->TakeLeftovers());
    SCOPED_TRACE(server.Tree().join(u' ').toStdString() + " " + server.log.join("; ").toStdString());
    ASSERT_EQ(results.size(), std::size_t{kFiles});
    int failures = 0;
    for (int i = 0; i < kFiles; ++i) {
      const WriteResult& result = results[static_cast<std::size_t>(i)];
      const QByteArray now = server.ContentOf('/' + QByteArray::number(i));
      EXPECT_TRUE(now == ContentOf(i) || now == "<none>");
      EXPECT_TRUE(!result.item || now == ContentOf(i));
      EXPECT_FALSE(result.item && result.failure);
      failures += result.failure ? 1 : 0;
      // None is done behind one that was not begun.
      EXPECT_TRUE(!result.item || failures == 0);
    }
    EXPECT_FALSE(HoldsTemporary(server));
    if (!wasReached) {
      EXPECT_EQ(failures, 0);
      EXPECT_GT(at, 5 * kFiles);
      return;
    }
    if (testing::Test::HasFailure()) {
      return;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, PlacesTogetherFaults,
                         testing::Values(Kind::LoseBefore, Kind::LoseAfter, Kind::Cancel, Kind::Refuse,
                                         Kind::EndAfter),
                         [](const auto& kind) { return NameOf(kind.param); });

}  // namespace
}  // namespace trevane::test
