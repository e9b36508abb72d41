#include "base/RunTimeError.h"
#include "engine/files/RootedFileSystem.h"
#include "tests/engine/transfer/BatchCopyFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace trevane::test {
namespace {

/// What stands at the destination already, what appears there while a batch is under way, and what changes
/// at the source meanwhile.
class CopyClashTest : public BatchCopyTest {
 protected:
  void AddBothSides(int count) {
    for (int i = 0; i < count; ++i) {
      const QString name = QStringLiteral("f%1").arg(i, 3, 10, QLatin1Char('0'));
      source().AddFile(QStringLiteral("C:\\tree\\") + name, "new");
      target().AddFile(QStringLiteral("in\\tree\\") + name, "old");
    }
  }
  /// Runs once, when the content of the source file of that name is read.
  void WhenRead(const QString& name, std::function<void()> act) {
    world_.local.faulty->SetHook(
        [name, act = std::move(act), done = false](const FileSystemCall& call) mutable {
          if (call.operation == FileSystemOperation::Read && call.path.endsWith(u'\\' + name) &&
              !std::exchange(done, true)) {
            act();
          }
        });
  }
  /// A controller whose items have no identities.
  EngineWorld::Machine ConnectFlat() {
    MemoryFileSystemOptions options;
    options.identity = false;
    const auto flat = EngineWorld::MakeMachine(options);
    world_.Connect(QStringLiteral("Flat"), flat);
    return flat;
  }
  QStringList Names() const {
    QStringList names;
    for (const AskedQuestion& question : world_.prompts.Asked()) {
      names.append(question.text.section(u'\'', 1, 1));
    }
    return names;
  }
};

TEST_F(CopyClashTest, AfterYesAllFilesAreReplacedInBatches) {
  AddBothSides(100);
  source().AddFile(QStringLiteral("C:\\tree\\z"), "z");
  world_.prompts.ExpectChoice(1);
  world_.engine->ClearCalls();
  EXPECT_EQ(Copy(), 0) << text_.toStdString();
  EXPECT_EQ(arrived_, Arrival::Everything);
  EXPECT_EQ(items_, 102);
  EXPECT_EQ(world_.engine->Calls().count(QStringLiteral("IxoFile.WriteMany")), 2);
  EXPECT_EQ(world_.engine->Calls().count(QStringLiteral("IxoFile.OpenSink")), 0);
  for (const QString& line : target().Tree()) {
    EXPECT_FALSE(line.endsWith(u"old")) << line.toStdString();
  }
}

TEST_F(CopyClashTest, AnEngineWithoutBatchesReplacesAfterYesAll) {
  AddBothSides(5);
  world_.engine->SetKnowsContent(false);
  world_.prompts.ExpectChoice(1);
  EXPECT_EQ(Copy(), 0) << text_.toStdString();
  EXPECT_EQ(items_, 6);
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\f004")), "new");
}

TEST_F(CopyClashTest, AReplacedFileKeepsItsPermissionsAndGetsTheDateOfTheSource) {
  const Date made{1'000'000'000'000};
  AddBothSides(3);
  source().SetTimes(QStringLiteral("C:\\tree\\f001"), made, made, made);
  source().SetPermissions(QStringLiteral("C:\\tree\\f001"), 0755);
  target().SetPermissions(QStringLiteral("in\\tree\\f001"), 0640);
  world_.prompts.ExpectChoice(1);
  EXPECT_EQ(Copy(), 0);
  EXPECT_EQ(target().Stat(QStringLiteral("in\\tree\\f001")).modified, made);
  EXPECT_EQ(target().Permissions(QStringLiteral("in\\tree\\f001")), 0640U);
}

TEST_F(CopyClashTest, AnOldContentThatIsStillThereIsFound) {
  // Neither sizes nor dates show it.
  for (const bool hasIdentities : {true, false}) {
    SCOPED_TRACE(hasIdentities);
    EngineWorld world;
    MemoryFileSystemOptions options;
    options.identity = hasIdentities;
    const auto place = EngineWorld::MakeMachine(options);
    world.Connect(QStringLiteral("Place"), place);
    for (const char* name : {"a", "b", "c", "d", "e"}) {
      const QString file = QLatin1String(name);
      world.local.memory->AddFile(QStringLiteral("C:\\tree\\") + file, "new");
      place.memory->AddFile(QStringLiteral("tree\\") + file, "old");
      const Date made{1'000'000'000'000};
      world.local.memory->SetTimes(QStringLiteral("C:\\tree\\") + file, made, made, made);
      place.memory->SetTimes(QStringLiteral("tree\\") + file, made, made, made);
    }
    world.prompts.AnswerAllChoices(1);
    // One file is not put in place, and the provider claims that it was.
    place.faulty->SetHook([&](const FileSystemCall& call) {
      if (call.operation == FileSystemOperation::Write && call.path.endsWith(u"\\c")) {
        place.faulty->Arm(1, FaultSpan::Once, error::kTimeOut, Fault::LieAndReckon);
      }
    });
    const auto file = world.File(kTree);
    EXPECT_NE(file->CopyDiffCtrl(QStringLiteral("Workspace\\Place"), {}), 0);
    EXPECT_TRUE(file->ResultText().contains(QStringLiteral("is still there")))
        << file->ResultText().toStdString();
    EXPECT_EQ(place.memory->Content(QStringLiteral("tree\\c")), "old");
    EXPECT_EQ(place.memory->Content(QStringLiteral("tree\\e")), "new");
    EXPECT_EQ(file->ArrivedItems(), 5);
  }
}

TEST_F(CopyClashTest, EachFaultLeavesTheOldContentOrTheNewOne) {
  for (const Fault fault : {Fault::Refuse, Fault::DoAndFail, Fault::Lie, Fault::LieAndReckon}) {
    for (int call = 1;; ++call) {
      SCOPED_TRACE(testing::Message() << static_cast<int>(fault) << " at " << call);
      EngineWorld world;
      for (const char* name : {"a", "b", "c"}) {
        world.local.memory->AddFile(QStringLiteral("C:\\tree\\") + QLatin1String(name), "new content");
        world.one.memory->AddFile(QStringLiteral("in\\tree\\") + QLatin1String(name), "old content");
      }
      world.prompts.AnswerAllChoices(1);
      world.one.faulty->Arm(call, FaultSpan::Once, error::kAccessDenied, fault);
      const auto file = world.File(QStringLiteral("Workspace\\My Computer\\C:\\tree"));
      const qint32 result = file->CopyDiffCtrl(QStringLiteral("Workspace\\Ctrl1\\in"), {});
      const bool wentWrong = world.one.faulty->FaultCount() > 0;
      world.one.faulty->Disarm();
      for (const char* name : {"a", "b", "c"}) {
        const QByteArray there =
            world.one.memory->Content(QStringLiteral("in\\tree\\") + QLatin1String(name));
        // A provider that stores half of what it is given can only be found out afterwards.
        const bool isHalf = fault == Fault::Lie || fault == Fault::LieAndReckon;
        EXPECT_TRUE(there == "new content" || there == "old content" || (isHalf && there == "new c"))
            << there.toStdString();
        EXPECT_TRUE(result != 0 || there == "new content") << name << " was told to have arrived";
      }
      EXPECT_EQ(world.one.memory->Tree().size(), 5) << "nothing else is left";
      if (!wentWrong || HasFailure()) {
        EXPECT_GT(call, 10);
        break;
      }
    }
  }
}

TEST_F(CopyClashTest, ALinkThatTookTheNameOfAReplacedFileIsNotWrittenThrough) {
  for (const int count : {2, 10}) {
    SCOPED_TRACE(count);
    const auto flat = ConnectFlat();
    flat.memory->AddFile(QStringLiteral("elsewhere\\kept"), "kept");
    for (int i = 0; i < count; ++i) {
      const QString name = QStringLiteral("f%1").arg(i);
      source().AddFile(QStringLiteral("C:\\tree\\") + name, "new");
      flat.memory->AddFile(QStringLiteral("in\\tree\\") + name, "old");
    }
    WhenRead(QStringLiteral("f1"), [&] {
      flat.memory->Vanish(QStringLiteral("in\\tree\\f1"));
      flat.memory->AddLink(QStringLiteral("in\\tree\\f1"), QStringLiteral("elsewhere\\kept"));
    });
    world_.prompts.ExpectChoice(1);
    EXPECT_EQ(Copy(kTree, QStringLiteral("Workspace\\Flat\\in")), error::kExists);
    EXPECT_EQ(flat.memory->Content(QStringLiteral("elsewhere\\kept")), "kept");
    EXPECT_EQ(flat.memory->Content(QStringLiteral("in\\tree\\f0")), "new");
    static_cast<void>(world_.session.gIxoControllers->Remove(Variant(QStringLiteral("Flat"))));
    world_.session.gIxoCtrls().Remove(world_.session.gIxoCtrls().Count());
  }
}

TEST_F(CopyClashTest, ANameThatAppearsMeanwhileIsAskedForInItsPlace) {
  for (const int answer : {0, 2, 3}) {
    SCOPED_TRACE(answer);
    EngineWorld world;
    world.one.memory->AddFolder(QStringLiteral("in"));
    for (const char* name : {"a", "b", "c"}) {
      world.local.memory->AddFile(QStringLiteral("C:\\tree\\") + QLatin1String(name), "new");
    }
    bool done = false;
    world.local.faulty->SetHook([&](const FileSystemCall& call) {
      if (call.operation == FileSystemOperation::Read && call.path.endsWith(u"\\c") &&
          !std::exchange(done, true)) {
        world.one.memory->AddFile(QStringLiteral("in\\tree\\b"), "another program's");
      }
    });
    world.prompts.onQuestion = [&](const AskedQuestion&) {
      EXPECT_EQ(world.one.memory->Content(QStringLiteral("in\\tree\\a")), "new");
      EXPECT_EQ(world.one.memory->Content(QStringLiteral("in\\tree\\b")), "another program's");
    };
    world.prompts.ExpectChoice(QStringLiteral("'b' already existed.\r\nOverwrite?"), answer);
    const auto file = world.File(kTree);
    EXPECT_EQ(file->CopyDiffCtrl(kIn, {}), 0) << file->ResultText().toStdString();
    world.prompts.onQuestion = {};
    EXPECT_EQ(file->Arrived(), answer == 0   ? Arrival::Everything
                               : answer == 2 ? Arrival::Skipped
                                             : Arrival::Cancelled);
    EXPECT_EQ(world.one.memory->Content(QStringLiteral("in\\tree\\b")),
              answer == 0 ? "new" : "another program's");
    EXPECT_EQ(world.one.memory->Exists(QStringLiteral("in\\tree\\c")), answer != 3);
    EXPECT_EQ(file->ArrivedItems(), answer == 0 ? 4 : answer == 2 ? 3 : 2);
  }
}

TEST_F(CopyClashTest, FilesBehindOneThatGoesAloneStayInBatches) {
  for (const bool isClash : {false, true}) {
    SCOPED_TRACE(isClash);
    EngineWorld world;
    world.one.memory->AddFolder(QStringLiteral("in"));
    const auto nameOf = [](int i) { return QStringLiteral("f%1").arg(i, 3, 10, QLatin1Char('0')); };
    for (int i = 0; i < 100; ++i) {
      world.local.memory->AddFile(QStringLiteral("C:\\tree\\") + nameOf(i), "new");
    }
    world.local.faulty->SetHook([&, done = false](const FileSystemCall& call) mutable {
      if (call.operation == FileSystemOperation::Read && call.path.endsWith(u"\\f000") &&
          !std::exchange(done, true)) {
        if (isClash) {
          world.one.memory->AddFile(QStringLiteral("in\\tree\\f010"), "another program's");
        } else {
          world.local.memory->AddFile(QStringLiteral("C:\\tree\\f010"), "more than it was");
        }
      }
    });
    if (isClash) {
      world.prompts.onQuestion = [&](const AskedQuestion&) {
        EXPECT_EQ(world.one.memory->Content(QStringLiteral("in\\tree\\f009")), "new");
        EXPECT_FALSE(world.one.memory->Exists(QStringLiteral("in\\tree\\f011")));
      };
      world.prompts.ExpectChoice(QStringLiteral("'f010' already existed.\r\nOverwrite?"), 2);
    }
    world.engine->ClearCalls();
    const auto file = world.File(kTree);
    EXPECT_EQ(file->CopyDiffCtrl(kIn, {}), 0) << file->ResultText().toStdString();
    world.prompts.onQuestion = {};
    EXPECT_EQ(file->ArrivedItems(), isClash ? 100 : 101);
    EXPECT_EQ(world.one.memory->Content(QStringLiteral("in\\tree\\f010")),
              isClash ? "another program's" : "more than it was");
    EXPECT_EQ(world.one.memory->Content(QStringLiteral("in\\tree\\f099")), "new");
    // One alone, where it is copied at all.
    EXPECT_EQ(world.engine->Calls().count(QStringLiteral("IxoFile.OpenSink")), isClash ? 0 : 1);
    EXPECT_EQ(world.engine->Calls().count(QStringLiteral("IxoFile.WriteMany")), isClash ? 3 : 2);
  }
}

TEST_F(CopyClashTest, ANameThatALargeFileLosesIsAskedFor) {
  for (const int answer : {0, 2, 3}) {
    SCOPED_TRACE(answer);
    EngineWorld world;
    world.one.memory->AddFolder(QStringLiteral("in"));
    const QByteArray large(content::kMostBytes + 1, 'x');
    world.local.memory->AddFile(QStringLiteral("C:\\tree\\a"), "a");
    world.local.memory->AddFile(QStringLiteral("C:\\tree\\large"), large);
    world.local.memory->AddFile(QStringLiteral("C:\\tree\\z"), "z");
    world.local.faulty->SetHook([&, done = false](const FileSystemCall& call) mutable {
      if (call.operation == FileSystemOperation::Read && call.path.endsWith(u"\\large") &&
          !std::exchange(done, true)) {
        world.one.memory->AddFile(QStringLiteral("in\\tree\\large"), "another program's");
      }
    });
    world.prompts.onQuestion = [&](const AskedQuestion&) {
      EXPECT_EQ(world.one.memory->Content(QStringLiteral("in\\tree\\large")), "another program's");
    };
    world.prompts.ExpectChoice(QStringLiteral("'large' already existed.\r\nOverwrite?"), answer);
    const auto file = world.File(kTree);
    EXPECT_EQ(file->CopyDiffCtrl(kIn, {}), 0) << file->ResultText().toStdString();
    world.prompts.onQuestion = {};
    EXPECT_EQ(file->Arrived(), answer == 0   ? Arrival::Everything
                               : answer == 2 ? Arrival::Skipped
                                             : Arrival::Cancelled);
    EXPECT_EQ(world.one.memory->Content(QStringLiteral("in\\tree\\large")),
              answer == 0 ? large : QByteArray("another program's"));
    EXPECT_EQ(world.one.memory->Exists(QStringLiteral("in\\tree\\z")), answer != 3);
    EXPECT_EQ(file->ArrivedItems(), answer == 0 ? 4 : answer == 2 ? 3 : 2);
  }
}

TEST_F(CopyClashTest, ANameThatIsTakenAgainAndAgainFailsWithAReason) {
  source().AddFile(QStringLiteral("C:\\file"), "mine");
  // It is there whenever the file is to get its name, and never when it is looked for.
  world_.one.faulty->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Write && call.path == u"in\\file") {
      throw RunTimeError(error::kExists, QStringLiteral("Taken: in\\file"));
    }
  });
  EXPECT_EQ(Copy(QStringLiteral("Workspace\\My Computer\\C:\\file")), error::kExists);
  EXPECT_EQ(text_, QStringLiteral("Taken: in\\file"));
  EXPECT_FALSE(target().Exists(QStringLiteral("in\\file")));
}

TEST_F(CopyClashTest, AFileThatGrewOrShrankIsCopiedAsItIs) {
  AddFiles(4);
  WhenRead(QStringLiteral("f0000"), [&] {
    source().AddFile(QStringLiteral("C:\\tree\\f0001"), "longer than it was listed");
    source().AddFile(QStringLiteral("C:\\tree\\f0002"), "short");
  });
  EXPECT_EQ(Copy(), 0) << text_.toStdString();
  EXPECT_EQ(arrived_, Arrival::Everything);
  EXPECT_EQ(items_, 5);
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\f0001")), "longer than it was listed");
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\f0002")), "short");
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\f0003")), "content");
}

TEST_F(CopyClashTest, AFileThatGrewIsNotReadWhole) {
  AddFiles(3);
  const QByteArray large(40 * 1024 * 1024, 'x');
  WhenRead(QStringLiteral("f0000"), [&] { source().AddFile(QStringLiteral("C:\\tree\\f0001"), large); });
  // The pieces that are read before anything of that file is written.
  qint64 pieces = 0;
  world_.one.faulty->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::OpenSink && pieces == 0) {
      pieces = Calls(world_.local, FileSystemOperation::Read);
    }
  });
  EXPECT_EQ(Copy(), 0) << text_.toStdString();
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\f0001")), large);
  EXPECT_LE(pieces, content::kMostBytes / content::kLargestPiece + 1 + 2 * 2);
}

TEST_F(CopyClashTest, ABatchReadsNoMoreThanItsLimit) {
  source().AddFile(QStringLiteral("C:\\a"), QByteArray(content::kMostBytes - 3, 'x'));
  source().AddFile(QStringLiteral("C:\\b"), "four");
  source().AddFile(QStringLiteral("C:\\c"), "two");
  const auto read =
      source().ReadMany({QStringLiteral("C:\\a"), QStringLiteral("C:\\b"), QStringLiteral("C:\\c")});
  ASSERT_EQ(read.size(), 3U);
  EXPECT_TRUE(read[0].content);
  EXPECT_TRUE(read[1].isTooLarge);
  EXPECT_FALSE(read[1].content || read[1].failure);
  EXPECT_EQ(read[2].content, "two");
}

TEST_F(CopyClashTest, ALinkWhoseNameAnotherLinkHasIsAskedFor) {
  for (const int answer : {0, 1, 2, 3}) {
    SCOPED_TRACE(answer);
    EngineWorld world;
    world.local.memory->AddFile(QStringLiteral("C:\\tree\\a"), "a");
    world.local.memory->CreateLink(QStringLiteral("C:\\tree\\link"), QStringLiteral("a"));
    world.local.memory->AddFile(QStringLiteral("C:\\tree\\z"), "z");
    world.one.memory->AddFolder(QStringLiteral("in\\tree"));
    world.one.memory->CreateLink(QStringLiteral("in\\tree\\link"), QStringLiteral("z"));
    world.prompts.ExpectChoice(0);
    world.prompts.ExpectChoice(QStringLiteral("'link' already existed.\r\nOverwrite?"), answer);
    const auto file = world.File(kTree);
    EXPECT_EQ(file->CopyDiffCtrl(kIn, {}), 0) << file->ResultText().toStdString();
    EXPECT_EQ(file->Arrived(), answer < 2    ? Arrival::Everything
                               : answer == 2 ? Arrival::Skipped
                                             : Arrival::Cancelled);
    EXPECT_EQ(world.one.memory->ReadLink(QStringLiteral("in\\tree\\link")),
              answer < 2 ? QStringLiteral("a") : QStringLiteral("z"));
    EXPECT_EQ(world.one.memory->Exists(QStringLiteral("in\\tree\\z")), answer != 3);
  }
}

TEST_F(CopyClashTest, ALinkWhoseNameAFileHasIsLeftOutAndTold) {
  source().AddFile(QStringLiteral("C:\\tree\\a"), "a");
  source().CreateLink(QStringLiteral("C:\\tree\\link"), QStringLiteral("a"));
  source().AddFile(QStringLiteral("C:\\tree\\z"), "z");
  target().AddFile(QStringLiteral("in\\tree\\link"), "a file");
  world_.prompts.ExpectChoice(1);
  EXPECT_EQ(Copy(), 0) << text_.toStdString();
  EXPECT_EQ(arrived_, Arrival::Skipped);
  ASSERT_EQ(leftOut_.size(), 1U);
  EXPECT_EQ(leftOut_[0].name, QStringLiteral("link"));
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\link")), "a file");
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\z")), "z");
}

TEST_F(CopyClashTest, ALinkThatCannotBeReplacedIsPutBack) {
  source().AddFolder(QStringLiteral("C:\\tree"));
  source().CreateLink(QStringLiteral("C:\\tree\\link"), QStringLiteral("a"));
  target().AddFolder(QStringLiteral("in\\tree"));
  target().CreateLink(QStringLiteral("in\\tree\\link"), QStringLiteral("z"));
  // The first one finds that the name is taken, the second one comes after the old link was removed.
  int made = 0;
  world_.one.faulty->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::CreateLink && ++made == 2) {
      throw RunTimeError(error::kDiskFull, QStringLiteral("Full"));
    }
  });
  world_.prompts.ExpectChoice(1);
  EXPECT_EQ(Copy(), error::kDiskFull);
  EXPECT_EQ(target().ReadLink(QStringLiteral("in\\tree\\link")), QStringLiteral("z"));
}

/// Gives up in the middle of a batch.
class StoppedBatches final : public RootedFileSystem {
 public:
  StoppedBatches(std::shared_ptr<FileSystem> inner, qint32 number)
      : RootedFileSystem(std::move(inner), QString(), QString()), number_(number) {}

  [[nodiscard]] std::shared_ptr<HeldFolder> Hold(const QString& folder) override {
    // By its path, so that every batch comes through here.
    return FileSystem::Hold(folder);  // NOLINT(bugprone-parent-virtual-call)
  }
  [[nodiscard]] std::vector<WriteResult> WriteMany(const std::vector<NewContent>& files) override {
    static_cast<void>(RootedFileSystem::WriteMany({files.begin(), files.begin() + 2}));
    throw RunTimeError(number_, QStringLiteral("Given up"));
  }

 private:
  qint32 number_;
};

TEST_F(CopyClashTest, WhatArrivedOfABatchThatWasGivenUpIsCounted) {
  AddFiles(4);
  for (const qint32 number : {error::kWin32Error + 170, error::kCancelled, error::kWin32Error + 64}) {
    SCOPED_TRACE(number);
    EngineWorld::Machine machine = EngineWorld::MakeMachine({});
    machine.memory->AddFile(QStringLiteral("in\\tree\\f0003"), "other's");
    machine.faulty =
        std::make_shared<FaultyFileSystem>(std::make_shared<StoppedBatches>(machine.memory, number));
    machine.faulty->PassBatches();
    const QString name = QStringLiteral("Stops%1").arg(number & 0xffff);
    world_.Connect(name, machine);
    int lists = 0;
    machine.faulty->SetHook(
        [&](const FileSystemCall& call) { lists += call.operation == FileSystemOperation::List ? 1 : 0; });
    world_.prompts.ExpectChoice(0);
    EXPECT_EQ(Copy(kTree, QStringLiteral("Workspace\\") + name + QStringLiteral("\\in")),
              number == error::kCancelled ? 0 : -1);
    const bool isLost = number == error::kWin32Error + 64;
    EXPECT_EQ(items_, isLost ? 1 : 3) << "the folder, and what arrived";
    EXPECT_EQ(machine.memory->Content(QStringLiteral("in\\tree\\f0003")), "other's");
  }
}

TEST_F(CopyClashTest, AFolderThatALinkReplacedBeforeABatchIsNotWrittenThrough) {
  // Paths are all that is known: the folder is looked at right before each batch, and at its end.
  for (const bool duringTheBatch : {false, true}) {
    SCOPED_TRACE(duringTheBatch);
    EngineWorld world;
    MemoryFileSystemOptions options;
    options.identity = false;
    const auto flat = EngineWorld::MakeMachine(options);
    flat.faulty->PassBatches();
    world.Connect(QStringLiteral("Flat"), flat);
    flat.memory->AddFile(QStringLiteral("elsewhere\\kept"), "kept");
    world.local.memory->AddFile(QStringLiteral("C:\\tree\\a"), "a");
    world.local.memory->AddFile(QStringLiteral("C:\\tree\\b"), "b");
    bool done = false;
    const auto swap = [&] {
      if (!std::exchange(done, true)) {
        flat.memory->Vanish(QStringLiteral("tree"));
        flat.memory->AddLink(QStringLiteral("tree"), QStringLiteral("elsewhere"));
      }
    };
    if (!duringTheBatch) {
      world.local.faulty->SetHook([&](const FileSystemCall& call) {
        if (call.operation == FileSystemOperation::Read) {
          swap();
        }
      });
    }
    const auto file = world.File(kTree);
    int finds = 0;
    flat.faulty->SetHook([&](const FileSystemCall& call) {
      // After the batch the folder is looked at by its own name.
      if (duringTheBatch && call.operation == FileSystemOperation::Stat && call.path == u"tree" &&
          flat.memory->Exists(QStringLiteral("tree\\b")) && ++finds == 1) {
        swap();
      }
    });
    EXPECT_NE(file->CopyDiffCtrl(QStringLiteral("Workspace\\Flat"), {}), 0);
    EXPECT_TRUE(done);
    EXPECT_EQ(file->Arrived(), Arrival::Failed);
    QStringList outside = flat.memory->Tree().filter(QStringLiteral("elsewhere\\"));
    EXPECT_EQ(outside, (QStringList{QStringLiteral("elsewhere\\"), QStringLiteral("elsewhere\\kept=kept")}));
  }
}

}  // namespace
}  // namespace trevane::test
