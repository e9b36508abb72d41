#include "engine/files/HeldFolder.h"
#include "engine/files/WholeFile.h"
#include "engine/model/ContentSteps.h"
#include "tests/engine/remote/RemoteWorld.h"

#include <QSet>

#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace trevane::test {
namespace {

using Drop = ScriptedServer::Drop;

/// A member of a file system, or of a folder that is held there.
struct Member {
  const char* name;
  /// It changes nothing, and fails unless its answer is the right one.
  bool reads;
  std::function<void(FileSystem& files, HeldFolder& folder)> call;
};

void Require(bool isRight) {
  if (!isRight) {
    throw RunTimeError(-1, QStringLiteral("A wrong answer"));
  }
}

void RequireWritten(const std::vector<WriteResult>& results) {
  for (const WriteResult& result : results) {
    if (result.failure) {
      throw *result.failure;
    }
    Require(result.item.has_value());
  }
}

void RequireRead(const std::vector<ReadResult>& results) {
  Require(results.size() == 2);
  for (const ReadResult& result : results) {
    if (result.failure) {
      throw *result.failure;
    }
    Require(result.content == "content");
  }
}

void Put(ContentSink& sink) {
  sink.Write("pie");
  sink.Write("ces");
  static_cast<void>(sink.Commit());
}

QString At(const char* name) {
  return QStringLiteral("dir\\") + QLatin1String(name);
}

QString Named(const char* name) {
  return QLatin1String(name);
}

std::vector<NewContent> Batch(const QString& above) {
  return {{above + QStringLiteral("new 1"), "1", {}},
          {above + QStringLiteral("f"), "2", {.mode = SinkRequest::Mode::Replace}},
          {above + QStringLiteral("new 3"), "3", {}}};
}

FileTraits SomeDate() {
  FileTraits traits;
  traits.modified = Date{1'000'000'000'000};
  return traits;
}

std::vector<Member> Members() {
  return {
      {"List", true, [](FileSystem& files, HeldFolder&) { Require(files.List(Named("dir")).size() == 4); }},
      {"ListInBatches", true,
       [](FileSystem& files, HeldFolder&) {
         size_t count = 0;
         files.ListInBatches(Named("dir"), [&](Listing&& entries) {
           count += entries.size();
           return true;
         });
         Require(count == 4);
       }},
      {"Stat", true, [](FileSystem& files, HeldFolder&) { Require(files.Stat(At("f")).size == 7); }},
      {"Find", true, [](FileSystem& files, HeldFolder&) { Require(files.Find(At("f")).has_value()); }},
      {"OpenSource", true,
       [](FileSystem& files, HeldFolder&) {
         const auto source = files.OpenSource(At("f"));
         QByteArray all;
         for (QByteArray piece = source->Read(3); !piece.isEmpty(); piece = source->Read(3)) {
           all += piece;
         }
         Require(all == "content");
       }},
      {"ReadMany", true,
       [](FileSystem& files, HeldFolder&) {
         RequireRead(files.ReadMany({At("f"), At("sub\\g")}));
       }},
      {"ReadLink", true,
       [](FileSystem& files, HeldFolder&) { Require(files.ReadLink(At("link")) == Named("f")); }},
      {"Traits", true,
       [](FileSystem& files, HeldFolder&) { Require(files.Traits(At("f")).modified.IsPresent()); }},
      {"Identity", true,
       [](FileSystem& files, HeldFolder&) { Require(files.Identity(At("f")).has_value()); }},
      {"FolderIdentities", true,
       [](FileSystem& files, HeldFolder&) { Require(!files.FolderIdentities(At("sub")).empty()); }},
      {"Hold", true,
       [](FileSystem& files, HeldFolder&) { Require(files.Hold(Named("dir"))->List().size() == 4); }},
      {"HeldEnter", true,
       [](FileSystem&, HeldFolder& folder) { Require(folder.Enter(Named("sub"))->List().size() == 1); }},
      {"HeldEnterSeen", true,
       [](FileSystem&, HeldFolder& folder) {
         const auto seen = folder.Find(Named("sub"));
         Require(seen && folder.EnterSeen(Named("sub"), *seen)->List().size() == 1);
       }},
      {"HeldList", true, [](FileSystem&, HeldFolder& folder) { Require(folder.List().size() == 4); }},
      {"HeldListInBatches", true,
       [](FileSystem&, HeldFolder& folder) {
         size_t count = 0;
         folder.ListInBatches([&](Listing&& entries) {
           count += entries.size();
           return true;
         });
         Require(count == 4);
       }},
      {"HeldFind", true,
       [](FileSystem&, HeldFolder& folder) { Require(folder.Find(Named("f")).has_value()); }},
      {"HeldOpenSource", true,
       [](FileSystem&, HeldFolder& folder) {
         Require(ReadAll(*folder.OpenSource(Named("f"))) == "content");
       }},
      {"HeldReadMany", true,
       [](FileSystem&, HeldFolder& folder) {
         RequireRead(folder.ReadMany({Named("f"), Named("h")}));
       }},
      {"HeldReadLink", true,
       [](FileSystem&, HeldFolder& folder) { Require(folder.ReadLink(Named("link")) == Named("f")); }},
      {"HeldTraits", true,
       [](FileSystem&, HeldFolder& folder) { Require(folder.Traits(Named("f")).modified.IsPresent()); }},

      {"OpenSinkNew", false, [](FileSystem& files, HeldFolder&) { Put(*files.OpenSink(At("new"), {})); }},
      {"OpenSinkReplace", false,
       [](FileSystem& files, HeldFolder&) {
         Put(*files.OpenSink(At("f"), {.mode = SinkRequest::Mode::Replace}));
       }},
      {"WriteMany", false,
       [](FileSystem& files, HeldFolder&) { RequireWritten(files.WriteMany(Batch(Named("dir\\")))); }},
      {"CreateLink", false, [](FileSystem& files, HeldFolder&) { files.CreateLink(At("new"), Named("f")); }},
      {"SetTraits", false, [](FileSystem& files, HeldFolder&) { files.SetTraits(At("f"), SomeDate()); }},
      {"CreateFile", false, [](FileSystem& files, HeldFolder&) { files.CreateFile(At("new")); }},
      {"CreateFolder", false, [](FileSystem& files, HeldFolder&) { files.CreateFolder(At("new")); }},
      {"CreateClosedFolder", false,
       [](FileSystem& files, HeldFolder&) { files.CreateClosedFolder(At("new")); }},
      {"Copy", false, [](FileSystem& files, HeldFolder&) { files.Copy(At("sub"), Named("new"), false); }},
      {"Rename", false, [](FileSystem& files, HeldFolder&) { files.Rename(At("sub"), Named("new"), false); }},
      {"Remove", false, [](FileSystem& files, HeldFolder&) { files.Remove(At("sub")); }},
      {"RemoveAlone", false, [](FileSystem& files, HeldFolder&) { files.RemoveAlone(At("f")); }},
      {"Execute", false,
       [](FileSystem& files, HeldFolder&) {
         static_cast<void>(files.Execute(At("f"), Named("open"), Missing{}));
       }},
      {"HeldOpenSinkNew", false,
       [](FileSystem&, HeldFolder& folder) { Put(*folder.OpenSink(Named("new"), {}, std::nullopt)); }},
      {"HeldOpenSinkReplace", false,
       [](FileSystem&, HeldFolder& folder) {
         const auto seen = folder.Find(Named("f"));
         Put(*folder.OpenSink(Named("f"), {.mode = SinkRequest::Mode::Replace}, seen));
       }},
      {"HeldWriteMany", false,
       [](FileSystem&, HeldFolder& folder) { RequireWritten(folder.WriteMany(Batch({}))); }},
      {"HeldCreateLink", false,
       [](FileSystem&, HeldFolder& folder) { folder.CreateLink(Named("new"), Named("f")); }},
      {"HeldSetTraits", false,
       [](FileSystem&, HeldFolder& folder) { folder.SetTraits(Named("f"), SomeDate()); }},
      {"HeldCreateFolder", false,
       [](FileSystem&, HeldFolder& folder) { folder.CreateFolder(Named("new"), true); }},
      {"HeldRemoveAlone", false,
       [](FileSystem&, HeldFolder& folder) { folder.RemoveAlone(Named("f"), *folder.Find(Named("f"))); }},
      {"HeldRemoveMany", false,
       [](FileSystem&, HeldFolder& folder) {
         folder.RemoveMany({*folder.Find(Named("f")), *folder.Find(Named("h"))});
       }},
  };
}

/// Every member while the line drops at each of its round trips.
class RemoteDropTest : public testing::TestWithParam<std::tuple<size_t, Drop>> {
 protected:
  static Member Tested() { return Members()[std::get<0>(GetParam())]; }

  /// Runs it with a drop at that round trip, 0 for none.
  struct Run {
    explicit Run(int at, Drop drop) : world({.traits = true}) {
      world.memory->AddFile(QStringLiteral("dir\\f"), "content");
      world.memory->AddFile(QStringLiteral("dir\\h"), "content");
      world.memory->AddFile(QStringLiteral("dir\\sub\\g"), "content");
      world.memory->CreateLink(QStringLiteral("dir\\link"), QStringLiteral("f"));
      before = world.memory->Tree();
      const auto files = world.Connect();
      const auto folder = files->Hold(QStringLiteral("dir"));
      world.server->ClearCalls();
      if (at > 0) {
        world.server->DropAt(at, drop);
      }
      failure = FailureOf([&] { Tested().call(*files, *folder); });
      calls = world.server->Calls();
      openings = world.server->Openings();
      // Whatever has happened: the next call has a line.
      stillAnswers = FailureOf([&] { static_cast<void>(files->List(QString())); }).Number() == 0;
      EXPECT_TRUE(world.context.controllers->StopAll(std::chrono::seconds(20)));
      after = world.memory->Tree();
    }

    RemoteWorld world;
    RunTimeError failure{0, QString()};
    QStringList calls;
    QStringList before;
    QStringList after;
    int openings = 0;
    bool stillAnswers = false;
  };
};

TEST_P(RemoteDropTest, ReadsAreRepeatedAndWritesNever) {
  const Drop drop = std::get<1>(GetParam());
  const Run whole(0, drop);
  ASSERT_EQ(whole.failure.Number(), 0) << whole.failure.Description().toStdString();
  ASSERT_GT(whole.calls.size(), 0);
  const QSet<QString> before(whole.before.begin(), whole.before.end());
  const QSet<QString> done(whole.after.begin(), whole.after.end());
  if (Tested().reads) {
    EXPECT_EQ(before, done);
  }
  int failures = 0;
  for (int at = 1; at <= whole.calls.size(); ++at) {
    SCOPED_TRACE(at);
    const Run run(at, drop);
    EXPECT_TRUE(run.stillAnswers);
    if (run.failure.Number() == 0) {
      // The drop met a part that only reads.
      EXPECT_EQ(run.openings, 2);
      EXPECT_EQ(run.after, whole.after);
      continue;
    }
    ++failures;
    EXPECT_FALSE(Tested().reads) << run.failure.Description().toStdString();
    EXPECT_EQ(run.failure.Number(), error::kWin32Error + 64) << run.failure.Description().toStdString();
    EXPECT_EQ(run.openings, 1) << run.calls.join(u'\n').toStdString();
    // Each item is as it was, or as it is when all is done.
    const QSet<QString> now(run.after.begin(), run.after.end());
    EXPECT_TRUE((before | done).contains(now)) << run.after.join(u'\n').toStdString();
    EXPECT_TRUE(now.contains(before & done)) << run.after.join(u'\n').toStdString();
  }
  EXPECT_EQ(failures > 0, !Tested().reads);
}

INSTANTIATE_TEST_SUITE_P(Members, RemoteDropTest,
                         testing::Combine(testing::Range<size_t>(0, Members().size()),
                                          testing::Values(Drop::BeforeTheCall, Drop::AfterTheCall)),
                         [](const auto& info) {
                           const bool after = std::get<1>(info.param) == Drop::AfterTheCall;
                           return std::string(Members()[std::get<0>(info.param)].name) +
                                  (after ? "DroppedAfter" : "DroppedBefore");
                         });

}  // namespace
}  // namespace trevane::test
