#include "base/RunTimeError.h"
#include "engine/files/FileSystem.h"
#include "engine/files/TemporaryName.h"
#include "engine/files/WholeFile.h"
#include "engine/model/BatchWatch.h"
#include "tests/engine/providers/ftp/FakeFtpServer.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <vector>

namespace trevane::test {
namespace {

using Kind = FakeFtpFault::Kind;

QString T(const char* text) {
  return QString::fromUtf8(text);
}

/// One thing fails at each call of a piece of work in turn.
class FtpFaults : public ::testing::TestWithParam<Kind> {
 protected:
  using Prepare = std::function<void(FakeFtpServer&)>;
  using Work = std::function<void(FileSystem&)>;
  using Check = std::function<void(const FakeFtpServer&, const std::optional<RunTimeError>& failure)>;

  static void FailAtEach(const Prepare& prepare, const Work& work, const Check& check) {
    for (int at = 0;; ++at) {
      FakeFtpServer server;
      prepare(server);
      const auto files = server.Open({.host = QStringLiteral("faults %1").arg(at)});
      server.faultAt = server.calls + at;
      server.fault.kind = GetParam();
      std::optional<RunTimeError> failure;
      try {
        work(*files);
      } catch (const RunTimeError& error) {
        failure = error;
      }
      const bool wasReached = server.calls > server.faultAt;
      server.faultAt = -1;
      static_cast<void>(files->TakeLeftovers());
      SCOPED_TRACE(testing::Message() << "call " << at << ": " << server.Tree().join(u' ').toStdString()
                                      << " " << (failure ? failure->what() : "done"));
      check(server, failure);
      if (!wasReached) {
        EXPECT_FALSE(failure);
        EXPECT_GT(at, 3);
        return;
      }
      if (testing::Test::HasFailure()) {
        return;
      }
    }
  }

  /// Whether a whole content is there, under any name.
  static bool Holds(const FakeFtpServer& server, const QByteArray& content) {
    for (const auto& [path, item] : server.items) {
      if (item.kind == FakeFtpItem::Kind::File && item.content == content) {
        return true;
      }
    }
    return false;
  }
};

INSTANTIATE_TEST_SUITE_P(Kinds, FtpFaults,
                         testing::Values(Kind::LoseBefore, Kind::LoseAfter, Kind::Cancel, Kind::Refuse,
                                         Kind::EndAfter),
                         [](const auto& kind) { return NameOf(kind.param); });

TEST_P(FtpFaults, KeepTheOldContentOrTheNew) {
  for (const bool replaces : {true, false}) {
    FailAtEach(
        [&](FakeFtpServer& server) {
          server.vices.renameReplaces = replaces;
          server.AddFile("/a", "old content");
        },
        [](FileSystem& files) { WriteFile(files, T("a"), "new content, longer"); },
        [](const FakeFtpServer& server, const std::optional<RunTimeError>& failure) {
          const QByteArray now = server.ContentOf("/a");
          if (!failure) {
            EXPECT_EQ(now, QByteArray("new content, longer"));
          } else if (now == "<none>") {
            EXPECT_TRUE(Holds(server, "old content"));
          } else {
            EXPECT_TRUE(now == "old content" || now == "new content, longer");
          }
        });
  }
}

TEST_P(FtpFaults, LeaveNoHalfNewFile) {
  FailAtEach([](FakeFtpServer&) {}, [](FileSystem& files) { WriteNewFile(files, T("a"), "new content"); },
             [](const FakeFtpServer& server, const std::optional<RunTimeError>& failure) {
               const QByteArray now = server.ContentOf("/a");
               EXPECT_TRUE(now == "new content" || (failure && now == "<none>"));
             });
}

TEST_P(FtpFaults, KeepContentsWithoutRename) {
  FailAtEach(
      [](FakeFtpServer& server) {
        server.vices.missing = {"RNFR", "RNTO"};
        server.AddFile("/a", "old content");
      },
      [](FileSystem& files) { WriteFile(files, T("a"), "new content, longer"); },
      [](const FakeFtpServer& server, const std::optional<RunTimeError>& failure) {
        const QByteArray now = server.ContentOf("/a");
        const bool isWhole = now == "old content" || now == "new content, longer";
        EXPECT_TRUE(isWhole || (failure && failure->Description().contains(T("of this computer"))));
      });
}

TEST_P(FtpFaults, KeepContentsOfABatch) {
  FailAtEach(
      [](FakeFtpServer& server) {
        for (const char* name : {"/a", "/b", "/c", "/d"}) {
          server.AddFile(name, QByteArray("old ") + name);
        }
      },
      [](FileSystem& files) {
        std::vector<NewContent> many;
        for (const char* name : {"a", "b", "c", "d", "e"}) {
          many.push_back({T(name), QByteArray("new content ") + name, {.mode = SinkRequest::Mode::Replace}});
        }
        for (const WriteResult& result : files.WriteMany(many)) {
          if (result.failure) {
            throw *result.failure;
          }
        }
      },
      [](const FakeFtpServer& server, const std::optional<RunTimeError>& failure) {
        for (const char* name : {"/a", "/b", "/c", "/d"}) {
          const QByteArray now = server.ContentOf(name);
          const QByteArray old = QByteArray("old ") + name;
          const QByteArray wanted = QByteArray("new content ") + (name + 1);
          EXPECT_TRUE(now == wanted || (failure && (now == old || Holds(server, old))));
        }
      });
}

TEST_P(FtpFaults, TellNoItemForMissing) {
  FailAtEach([](FakeFtpServer& server) { server.AddFile("/a", "x"); },
             [](FileSystem& files) {
               for (int i = 0; i < 5; ++i) {
                 if (!files.Find(T("a"))) {
                   FAIL() << "It was there";
                 }
               }
             },
             [](const FakeFtpServer&, const std::optional<RunTimeError>& failure) {
               EXPECT_TRUE(!failure || failure->Number() != error::kNotFound);
             });
}

TEST_P(FtpFaults, KeepATreeThatIsRenamed) {
  FailAtEach(
      [](FakeFtpServer& server) {
        server.AddFolder("/tree");
        server.AddFile("/tree/a", "precious");
      },
      [](FileSystem& files) { files.Rename(T("tree"), T("other"), false); },
      [](const FakeFtpServer& server, const std::optional<RunTimeError>&) {
        EXPECT_TRUE(Holds(server, "precious"));
      });
}

TEST_P(FtpFaults, RemoveNothingBehindALink) {
  for (const auto follows : {FakeFtpVices::Follows::Everywhere, FakeFtpVices::Follows::InOneItem}) {
    FailAtEach(
        [&](FakeFtpServer& server) {
          server.vices.factsFollow = follows;
          server.AddFolder("/other");
          server.AddFile("/other/a", "precious");
          server.AddFolder("/tree");
          server.AddFile("/tree/a", "a");
          server.AddLink("/tree/link", "/other");
        },
        [](FileSystem& files) { files.Remove(T("tree")); },
        [](const FakeFtpServer& server, const std::optional<RunTimeError>& failure) {
          EXPECT_EQ(server.ContentOf("/other/a"), "precious");
          EXPECT_TRUE(failure || server.Tree() == QStringList({T("/other/"), T("/other/a=precious")}));
        });
  }
}

TEST(FtpHiddenNames, RemoveNothingBehindALink) {
  for (const bool isAlone : {true, false}) {
    FakeFtpServer server;
    server.vices.factsFollow = FakeFtpVices::Follows::Everywhere;
    // Lines never show hidden names.
    server.vices.takesOptionForName = true;
    server.AddFolder("/other");
    server.AddFile("/other/a", "precious");
    server.AddFolder("/tree");
    server.AddLink("/tree/.link", "/other");
    if (!isAlone) {
      server.AddFile("/tree/a", "a");
    }
    const auto files = server.Open({.host = T("hidden links")});
    files->Remove(T("tree"));
    EXPECT_EQ(server.Tree(), (QStringList{T("/other/"), T("/other/a=precious")}));
    // A folder may be one: it stays.
    server.AddFolder("/tree");
    server.AddFolder("/tree/.folder");
    server.AddFile("/tree/.folder/a", "a");
    EXPECT_THROW(files->Remove(T("tree")), RunTimeError);
    EXPECT_EQ(server.ContentOf("/tree/.folder/a"), "a");
  }
}

TEST(FtpBatches, CostFewRoundTrips) {
  FakeFtpServer server;
  const auto files = server.Open({.host = T("batches")});
  std::vector<NewContent> many;
  many.reserve(60);
  for (int i = 0; i < 60; ++i) {
    many.push_back({QString::number(i), QByteArray::number(i), {}});
  }
  WriteNewFile(*files, T("first"), "learns");
  server.log.clear();
  for (const WriteResult& result : files->WriteMany(many)) {
    ASSERT_TRUE(result.item);
  }
  EXPECT_EQ(server.Count("STOR"), 60);
  EXPECT_EQ(server.Count("MLSD"), 2);
  // The date, what stands there now, and two for the name.
  EXPECT_EQ(server.log.size(), 4 * 60 + 2);
  QStringList paths;
  for (const NewContent& file : many) {
    paths += file.name;
  }
  server.log.clear();
  const std::vector<ReadResult> read = files->ReadMany(paths);
  for (int i = 0; i < 60; ++i) {
    EXPECT_EQ(read[static_cast<std::size_t>(i)].content, QByteArray::number(i));
  }
  EXPECT_LE(server.log.size(), 61);
}

TEST(FtpBatches, TellEachFile) {
  FakeFtpServer server;
  const auto files = server.Open({.host = T("told batches")});
  std::vector<NewContent> many;
  QStringList paths;
  many.reserve(5);
  for (int i = 0; i < 5; ++i) {
    paths += QString::number(i);
    many.push_back({paths.back(), QByteArray(1000, 'x'), {}});
  }
  std::vector<int> storedBefore;
  qint64 bytes = 0;
  const BatchWatch watch([&](const BatchStep& step) {
    EXPECT_EQ(step.files, 1);
    bytes += step.bytes;
    storedBefore.push_back(server.Count("STOR"));
  });
  EXPECT_TRUE(files->WriteMany(many).back().item);
  // Each one before the next is begun.
  EXPECT_EQ(storedBefore, (std::vector<int>{1, 2, 3, 4, 5}));
  EXPECT_EQ(bytes, 5000);
  EXPECT_TRUE(files->ReadMany(paths).back().content);
  EXPECT_EQ(storedBefore.size(), 10U);
  EXPECT_EQ(bytes, 10000);
}

TEST(FtpBatches, BeginNothingAfterACancel) {
  for (const Kind kind : {Kind::Cancel, Kind::LoseBefore}) {
    FakeFtpServer server;
    const auto files = server.Open({.host = T("cancelled batches")});
    WriteNewFile(*files, T("first"), "learns");
    for (const char* name : {"r0", "r1", "r2", "r3"}) {
      server.AddFile(QByteArray("/") + name, "content");
    }
    server.fault.kind = kind;
    const auto failAfterTwo = [&server](int& files) {
      return [&server, &files](const BatchStep&) {
        if (++files == 2) {
          server.log.clear();
          server.faultAt = server.calls;
        }
      };
    };
    int told = 0;
    {
      const BatchWatch watch(failAfterTwo(told));
      const std::vector<WriteResult> results =
          files->WriteMany({{T("a"), "a", {}}, {T("b"), "b", {}}, {T("c"), "c", {}}, {T("d"), "d", {}}});
      for (const WriteResult& result : results) {
        EXPECT_FALSE(result.item);
      }
      EXPECT_TRUE(results[0].failure && results[2].failure);
      EXPECT_FALSE(results[3].failure);
    }
    EXPECT_EQ(told, 2);
    EXPECT_EQ(server.Count("STOR"), 0);
    EXPECT_EQ(server.Count("RNTO"), 0);
    EXPECT_EQ(server.Tree().filter(T("<temporary>")), QStringList());
    told = 0;
    const BatchWatch watch(failAfterTwo(told));
    const std::vector<ReadResult> read = files->ReadMany({T("r0"), T("r1"), T("r2"), T("r3")});
    EXPECT_TRUE(read[1].content && read[2].failure);
    EXPECT_FALSE(read[3].content || read[3].failure);
    EXPECT_EQ(server.Count("RETR"), 0);
  }
}

TEST(FtpBatches, LeaveATakenNameAlone) {
  FakeFtpServer server;
  const auto files = server.Open({.host = T("batches")});
  WriteNewFile(*files, T("first"), "learns");
  server.AddFile("/b", "precious");
  const std::vector<WriteResult> results =
      files->WriteMany({{T("a"), "a", {}}, {T("b"), "b", {}}, {T("c"), "c", {}}, {T("d"), "d", {}}});
  EXPECT_TRUE(results[0].item);
  ASSERT_TRUE(results[1].failure);
  EXPECT_EQ(results[1].failure->Number(), error::kExists);
  EXPECT_FALSE(results[2].item || results[2].failure);
  EXPECT_EQ(server.Tree(), (QStringList{T("/a=a"), T("/b=precious"), T("/first=learns")}));
}

TEST(FtpBatches, LeaveWhatCameMeanwhileAlone) {
  for (const bool hasFacts : {true, false}) {
    FakeFtpServer server;
    if (!hasFacts) {
      server.vices.missing = {"MLSD", "MLST"};
      server.vices.features = {"SIZE", "MDTM", "MFMT"};
    }
    const auto files = server.Open({.host = T(hasFacts ? "meanwhile, facts" : "meanwhile, lines")});
    WriteNewFile(*files, T("first"), "learns");
    server.before = [&server](const QByteArray& command) {
      if (command == "RNTO /a") {
        server.AddFile("/d", "precious");
      }
    };
    const std::vector<WriteResult> results =
        files->WriteMany({{T("a"), "a", {}}, {T("b"), "b", {}}, {T("c"), "c", {}}, {T("d"), "d", {}}});
    ASSERT_TRUE(results[3].failure);
    EXPECT_EQ(results[3].failure->Number(), error::kExists);
    EXPECT_EQ(server.Tree(),
              (QStringList{T("/a=a"), T("/b=b"), T("/c=c"), T("/d=precious"), T("/first=learns")}));
  }
}

TEST(FtpBatches, BuildNoTwoFilesUnderOneName) {
  constexpr int kFiles = 64;
  // Of two files of so many batches the short names were the same once in 23 batches.
  constexpr int kBatches = 150;
  FakeFtpServer server;
  server.vices.longestName = 12;
  server.vices.refusesDotNames = true;
  const auto files = server.Open({.host = T("short names")});
  WriteNewFile(*files, T("FIRST.SRC"), "learns");
  for (int batch = 0; batch < kBatches; ++batch) {
    std::vector<NewContent> many;
    many.reserve(kFiles);
    for (int i = 0; i < kFiles; ++i) {
      const QString name = QStringLiteral("P%1.SRC").arg(i);
      many.push_back({name,
                      QByteArray::number(batch * kFiles + i + 10000),
                      {.mode = batch == 0 ? SinkRequest::Mode::New : SinkRequest::Mode::Replace}});
    }
    server.log.clear();
    const std::vector<WriteResult> results = files->WriteMany(many);
    for (int i = 0; i < kFiles; ++i) {
      const auto at = static_cast<std::size_t>(i);
      ASSERT_TRUE(results[at].item) << "batch " << batch << ", file " << i;
      ASSERT_EQ(server.ContentOf('/' + many[at].name.toLatin1()), many[at].content);
    }
  }
}

TEST(FtpBatches, ReplaceNoLink) {
  FakeFtpServer server;
  const auto files = server.Open({.host = T("links")});
  WriteNewFile(*files, T("first"), "learns");
  server.AddFile("/precious", "precious");
  server.AddLink("/b", "/precious");
  const SinkRequest replace{.mode = SinkRequest::Mode::Replace};
  const std::vector<WriteResult> results =
      files->WriteMany({{T("a"), "a", replace}, {T("b"), "b", replace}, {T("c"), "c", replace}});
  ASSERT_TRUE(results[1].failure);
  EXPECT_EQ(results[1].failure->Number(), error::kAccessDenied);
  EXPECT_EQ(server.Tree(),
            (QStringList{T("/a=a"), T("/b->/precious"), T("/first=learns"), T("/precious=precious")}));
}

/// The words of a failure that tells of a rename in words only.
void ExpectNotRenamed(const std::optional<RunTimeError>& failure) {
  ASSERT_TRUE(failure);
  EXPECT_TRUE(failure->Description().contains(T("The server tells that"))) << failure->what();
}

std::optional<RunTimeError> FailureOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const RunTimeError& failure) {
    return failure;
  }
  return std::nullopt;
}

TEST(FtpRenameInWordsOnly, IsNotBelievedTheFirstTime) {
  for (const bool hasFacts : {true, false}) {
    FakeFtpServer server;
    server.vices.trueRenames = 0;
    if (!hasFacts) {
      server.vices.missing = {"MLSD", "MLST", "SIZE", "MDTM", "MFMT"};
      server.vices.features.clear();
    }
    server.AddFile("/a", "old content");
    const auto files = server.Open({.host = T(hasFacts ? "words, facts" : "words, lines")});
    ExpectNotRenamed(FailureOf([&] { WriteFile(*files, T("a"), "new content"); }));
    EXPECT_EQ(server.Tree(), QStringList{T("/a=old content")});
    ExpectNotRenamed(FailureOf([&] { files->Rename(T("a"), T("b"), false); }));
    EXPECT_EQ(server.Tree(), QStringList{T("/a=old content")});
    // As on a server without rename.
    server.log.clear();
    WriteFile(*files, T("a"), "new content");
    WriteNewFile(*files, T("b"), "other content");
    EXPECT_EQ(server.Tree(), (QStringList{T("/a=new content"), T("/b=other content")}));
    EXPECT_EQ(server.Count("RNTO"), 0);
  }
}

TEST(FtpRenameInWordsOnly, OntoAFileGivesWayToTwo) {
  FakeFtpServer server;
  server.vices.replacesInWordsOnly = true;
  server.AddFile("/a", "old content");
  const auto files = server.Open({.host = T("replaces in words")});
  WriteFile(*files, T("a"), "new content");
  EXPECT_EQ(server.Tree(), QStringList{T("/a=new content")});
  server.log.clear();
  WriteFile(*files, T("a"), "newer content");
  EXPECT_EQ(server.Tree(), QStringList{T("/a=newer content")});
  EXPECT_EQ(server.Count("RNTO"), 2);
}

TEST(FtpRenameInWordsOnly, IsSeenLaterToo) {
  FakeFtpServer server;
  server.vices.trueRenames = 2;
  server.AddFile("/a", "old content");
  const auto files = server.Open({.host = T("later in words")});
  WriteFile(*files, T("a"), "new content");
  WriteNewFile(*files, T("b"), "other");
  const QStringList before{T("/a=new content"), T("/b=other")};
  ExpectNotRenamed(FailureOf([&] { WriteNewFile(*files, T("c"), "third"); }));
  EXPECT_EQ(server.Tree(), before);
  ExpectNotRenamed(FailureOf([&] { WriteFile(*files, T("a"), "longer new content"); }));
  EXPECT_EQ(server.Tree(), before);
}

TEST(FtpRenameInWordsOnly, LeavesNothingOfABatch) {
  FakeFtpServer server;
  server.vices.trueRenames = 2;
  const auto files = server.Open({.host = T("batch in words")});
  WriteNewFile(*files, T("first"), "learns");
  const std::vector<WriteResult> results =
      files->WriteMany({{T("a"), "a", {}}, {T("b"), "b", {}}, {T("c"), "c", {}}, {T("d"), "d", {}}});
  EXPECT_TRUE(results[0].item);
  for (const std::size_t at : {1U, 2U, 3U}) {
    EXPECT_FALSE(results[at].item);
    ExpectNotRenamed(results[at].failure);
  }
  EXPECT_EQ(server.Tree(), (QStringList{T("/a=a"), T("/first=learns")}));
}

TEST(FtpInPlace, LeavesARefusedFileAlone) {
  FakeFtpServer server;
  server.vices.missing = {"RNFR", "RNTO"};
  server.vices.refusesToOverwrite = true;
  server.AddFile("/a", "old content");
  const auto files = server.Open({.host = T("in place, refused")});
  try {
    WriteFile(*files, T("a"), "new content");
    FAIL() << "It was refused";
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kAccessDenied);
    EXPECT_FALSE(failure.Description().contains(T("of this computer"))) << failure.what();
  }
  EXPECT_EQ(server.Count("STOR"), 1);
  EXPECT_EQ(server.Tree(), QStringList{T("/a=old content")});
}

TEST(FtpInPlace, RemovesNoFileThatCameMeanwhile) {
  FakeFtpServer server;
  server.vices.missing = {"RNFR", "RNTO"};
  server.vices.refusesToOverwrite = true;
  server.before = [&server](const QByteArray& command) {
    if (command == "STOR /a") {
      server.AddFile("/a", "precious");
    }
  };
  const auto files = server.Open({.host = T("in place, meanwhile")});
  EXPECT_THROW(WriteNewFile(*files, T("a"), "new content"), RunTimeError);
  EXPECT_EQ(server.Tree(), QStringList{T("/a=precious")});
}

TEST(FtpInPlace, WritesThroughNoLinkThatCameMeanwhile) {
  FakeFtpServer server;
  server.vices.missing = {"RNFR", "RNTO"};
  server.AddFile("/a", "old content");
  server.AddFile("/precious", "precious");
  const auto files = server.Open({.host = T("in place, link")});
  const std::unique_ptr<ContentSink> sink = files->OpenSink(T("a"), {.mode = SinkRequest::Mode::Replace});
  sink->Write("new content");
  server.AddLink("/a", "/precious");
  EXPECT_THROW(static_cast<void>(sink->Commit()), RunTimeError);
  EXPECT_EQ(server.ContentOf("/precious"), "precious");
}

}  // namespace
}  // namespace trevane::test
