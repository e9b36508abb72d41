#include "base/RunTimeError.h"
#include "tests/fileops/TransferWorld.h"

#include <gtest/gtest.h>

#include <functional>

namespace trevane::test {
namespace {

const QString kC = QStringLiteral("Workspace\\My Computer\\C:");
const QString kOne = QStringLiteral("Workspace\\Ctrl1\\in");

/// Files of one folder that are selected together, which go in batches.
class TransferSetTest : public testing::Test {
 protected:
  TransferSetTest() { target().AddFolder(QStringLiteral("in")); }

  MemoryFileSystem& source() { return *world_.local.memory; }
  MemoryFileSystem& target() { return *world_.one.memory; }
  static QString Name(int i) { return QStringLiteral("f%1").arg(i, 3, 10, QLatin1Char('0')); }
  static QString At(int i) { return QStringLiteral("C:\\set\\") + Name(i); }
  static QString Arrived(int i) { return QStringLiteral("in\\") + Name(i); }
  void AddFiles(int count) {
    for (int i = 0; i < count; ++i) {
      source().AddFile(At(i), "content");
      world_.Select(kC + QStringLiteral("\\set"), Name(i));
    }
  }
  /// The first call of that kind fails.
  static std::function<void(const FileSystemCall&)> FailOnce(FileSystemOperation operation,
                                                             const QString& end, qint32 number) {
    return [operation, end, number, done = false](const FileSystemCall& call) mutable {
      if (!done && call.operation == operation && call.path.endsWith(end)) {
        done = true;
        throw RunTimeError(number, QStringLiteral("No"));
      }
    };
  }

  TransferWorld world_;
};

TEST_F(TransferSetTest, NothingBeginsWhenOpeningIsCancelled) {
  AddFiles(5);
  world_.one.faulty->SetHook(FailOnce(FileSystemOperation::List, QStringLiteral("in"), error::kCancelled));
  EXPECT_TRUE(world_.Move(kOne));
  EXPECT_TRUE(source().Exists(At(0)));
  EXPECT_FALSE(target().Exists(Arrived(0)));
}

TEST_F(TransferSetTest, AFileWhoseNameAppearsMeanwhileIsAskedForInItsPlace) {
  for (const bool move : {false, true}) {
    for (const int answer : {0, 2, 3}) {
      SCOPED_TRACE(testing::Message() << move << " answer " << answer);
      TransferWorld world;
      world.one.memory->AddFolder(QStringLiteral("in"));
      for (int i = 0; i < 5; ++i) {
        world.local.memory->AddFile(At(i), "content");
        world.Select(kC + QStringLiteral("\\set"), Name(i));
      }
      // While the last one of the batch is read.
      world.local.faulty->SetHook([&, done = false](const FileSystemCall& call) mutable {
        if (call.operation == FileSystemOperation::Read && call.path == At(4) && !done) {
          done = true;
          world.one.memory->AddFile(Arrived(2), "another program's");
        }
      });
      world.prompts.ExpectChoice(QStringLiteral("'f002' already existed.\r\nOverwrite?"), answer);
      EXPECT_TRUE(move ? world.Move(kOne) : world.Copy(kOne));
      EXPECT_EQ(world.one.memory->Content(Arrived(2)), answer == 0 ? "content" : "another program's");
      EXPECT_EQ(world.local.memory->Exists(At(2)), !move || answer != 0);
      for (const int i : {0, 1}) {
        EXPECT_EQ(world.one.memory->Content(Arrived(i)), "content");
        EXPECT_EQ(world.local.memory->Exists(At(i)), !move);
      }
      for (const int i : {3, 4}) {
        EXPECT_EQ(world.one.memory->Exists(Arrived(i)), answer != 3) << "nothing begins after Cancel";
        EXPECT_EQ(world.local.memory->Exists(At(i)), !move || answer == 3);
      }
      EXPECT_EQ(world.Log().size(), answer == 0 ? 5 : answer == 2 ? 4 : 2);
    }
  }
}

TEST_F(TransferSetTest, FilesBehindOneThatIsAskedForStayInBatches) {
  for (const bool move : {false, true}) {
    SCOPED_TRACE(move);
    TransferWorld world;
    world.one.memory->AddFolder(QStringLiteral("in"));
    for (int i = 0; i < 100; ++i) {
      world.local.memory->AddFile(At(i), "content");
      world.Select(kC + QStringLiteral("\\set"), Name(i));
    }
    world.local.faulty->SetHook([&](const FileSystemCall& call) {
      if (call.operation == FileSystemOperation::Read && call.path == At(0)) {
        world.one.memory->AddFile(Arrived(10), "another program's");
      }
    });
    world.prompts.ExpectChoice(QStringLiteral("'f010' already existed.\r\nOverwrite?"), 2);
    world.engine->ClearCalls();
    EXPECT_TRUE(move ? world.Move(kOne) : world.Copy(kOne));
    EXPECT_EQ(world.engine->Calls().count(QStringLiteral("IxoFile.WriteMany")), 3);
    EXPECT_EQ(world.engine->Calls().count(QStringLiteral("IxoFile.OpenSink")), 0);
    EXPECT_EQ(world.Log().size(), 99);
    EXPECT_EQ(world.one.memory->Content(Arrived(10)), "another program's");
    EXPECT_EQ(world.one.memory->Content(Arrived(99)), "content");
    for (const int i : {0, 10, 11, 99}) {
      EXPECT_EQ(world.local.memory->Exists(At(i)), !move || i == 10) << i;
    }
  }
}

TEST_F(TransferSetTest, AFileThatGrewIsMovedAsItIs) {
  AddFiles(4);
  world_.local.faulty->SetHook([&, done = false](const FileSystemCall& call) mutable {
    if (call.operation == FileSystemOperation::Read && call.path == At(0) && !done) {
      done = true;
      source().AddFile(At(1), "more content than it had");
    }
  });
  EXPECT_TRUE(world_.Move(kOne));
  EXPECT_EQ(target().Content(Arrived(1)), "more content than it had");
  EXPECT_FALSE(source().Exists(At(1)));
  EXPECT_FALSE(source().Exists(At(3)));
  EXPECT_EQ(world_.Log().size(), 4);
}

TEST_F(TransferSetTest, ACopyIsNotToldOfAFileThatIsOnlyClaimed) {
  // So many files are listed once; more of them in a large folder are looked at one by one.
  for (const int there : {0, 600}) {
    SCOPED_TRACE(there);
    TransferWorld world;
    world.one.memory->AddFolder(QStringLiteral("in"));
    for (int i = 0; i < there; ++i) {
      world.one.memory->AddFile(QStringLiteral("in\\other%1").arg(i));
    }
    for (int i = 0; i < 3; ++i) {
      world.local.memory->AddFile(At(i), "content");
      world.Select(kC + QStringLiteral("\\set"), Name(i));
    }
    // The second sink drops a half and claims the whole.
    int sinks = 0;
    world.one.faulty->SetHook([&](const FileSystemCall& call) {
      if (call.operation == FileSystemOperation::OpenSink && ++sinks == 1) {
        world.one.faulty->Arm(4, FaultSpan::Once, 0, Fault::LieAndReckon);
      }
    });
    world.prompts.ExpectBox();
    EXPECT_FALSE(world.Copy(kOne));
    EXPECT_EQ(world.one.faulty->FaultCount(), 1);
    EXPECT_EQ(world.one.memory->Content(Arrived(0)), "content");
    EXPECT_FALSE(world.one.memory->Exists(Arrived(1)));
    EXPECT_EQ(world.one.memory->Content(Arrived(2)), "content");
    EXPECT_EQ(world.Log().size(), 2);
  }
}

TEST_F(TransferSetTest, TheGaugeCountsTheFilesOfTheSet) {
  for (const bool move : {false, true}) {
    for (const QString& into : {kOne, QStringLiteral("Workspace\\My Computer\\D:\\in")}) {
      SCOPED_TRACE(testing::Message() << move << into.toStdString());
      TransferWorld world;
      world.one.memory->AddFolder(QStringLiteral("in"));
      world.local.memory->AddFolder(QStringLiteral("D:\\in"));
      for (int i = 0; i < 5; ++i) {
        // Sizes of 0 have no speed, which depends on the time.
        world.local.memory->AddFile(At(i), {});
        world.Select(kC + QStringLiteral("\\set"), Name(i));
      }
      QStringList labels;
      world.host.onEvents = [&] { labels.append(world.Gauge().GageLabel()); };
      EXPECT_TRUE(move ? world.Move(into) : world.Copy(into));
      ASSERT_FALSE(labels.isEmpty());
      for (const QString& label : labels) {
        EXPECT_TRUE(label.endsWith(QStringLiteral(" of 5 files"))) << label.toStdString();
      }
      EXPECT_EQ(labels.back(), QStringLiteral("f004: 5 of 5 files"));
      EXPECT_EQ(world.Gauge().Labels().size(), 5);
      EXPECT_EQ(world.Gauge().Labels().back(), QStringLiteral("f004"));
    }
  }
}

TEST_F(TransferSetTest, NothingBeginsWhenOpeningTimesOut) {
  AddFiles(5);
  world_.one.faulty->SetHook(FailOnce(FileSystemOperation::List, QStringLiteral("in"), error::kTimeOut));
  world_.prompts.ExpectBox();
  EXPECT_FALSE(world_.Move(kOne));
  EXPECT_TRUE(source().Exists(At(0)));
  EXPECT_FALSE(target().Exists(Arrived(0)));
}

TEST_F(TransferSetTest, NoSourceIsDeletedAfterACancelledDelete) {
  AddFiles(5);
  world_.local.faulty->SetHook(FailOnce(FileSystemOperation::Remove, Name(1), error::kCancelled));
  EXPECT_TRUE(world_.Move(kOne));
  EXPECT_FALSE(source().Exists(At(0)));
  for (int i = 1; i < 5; ++i) {
    EXPECT_TRUE(source().Exists(At(i))) << i;
  }
}

TEST_F(TransferSetTest, NoSourceIsDeletedAfterTheLineIsLost) {
  for (const qint32 number : {error::kTimeOut, error::kWin32Error + 64, error::kDeviceNotReady}) {
    world_.state.clipboard.Clear();
    AddFiles(5);
    world_.local.faulty->SetHook(FailOnce(FileSystemOperation::Remove, Name(1), number));
    world_.prompts.ExpectBox();
    EXPECT_FALSE(world_.Move(kOne));
    for (int i = 1; i < 5; ++i) {
      EXPECT_TRUE(source().Exists(At(i))) << i;
    }
    for (int i = 0; i < 5; ++i) {
      target().Remove(Arrived(i), {});
    }
  }
}

TEST_F(TransferSetTest, EachDeletedSourceIsLoggedAtOnce) {
  AddFiles(5);
  qsizetype removed = 0;
  world_.local.faulty->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Remove) {
      EXPECT_EQ(world_.Log().size(), removed) << "those before it are in the log";
      ++removed;
    }
  });
  EXPECT_TRUE(world_.Move(kOne));
  EXPECT_EQ(removed, 5);
  EXPECT_EQ(world_.Log().size(), 5);
}

TEST_F(TransferSetTest, AnothersFileIsNotTakenBack) {
  for (const QByteArray& foreign : {QByteArray(), QByteArray("con")}) {
    world_.state.clipboard.Clear();
    AddFiles(5);
    world_.one.faulty->SetHook([&](const FileSystemCall& call) {
      if (call.operation == FileSystemOperation::Write && call.path.endsWith(Name(1))) {
        target().AddFile(Arrived(1), foreign);
        throw RunTimeError(error::kDiskFull, QStringLiteral("Full"));
      }
    });
    world_.prompts.ExpectBox();
    EXPECT_FALSE(world_.Copy(kOne));
    ASSERT_TRUE(target().Exists(Arrived(1)));
    EXPECT_EQ(target().Content(Arrived(1)), foreign);
    target().Remove(Arrived(0), {});
    target().Remove(Arrived(1), {});
  }
}

/// Its dates are those of full minutes, or it has none that are exact.
class CoarseSourceTest : public TransferSetTest, public testing::WithParamInterface<int> {
 protected:
  /// Moves so many files and changes one, keeping its size, while they are flushed.
  void MoveAndChange(int count) {
    MemoryFileSystemOptions options;
    options.dateStep = 60000;
    const auto place = EngineWorld::MakeMachine(options);
    world_.Connect(QStringLiteral("Coarse"), place);
    for (int i = 0; i < count; ++i) {
      place.memory->AddFile(Name(i), "content");
      world_.Select(QStringLiteral("Workspace\\Coarse"), Name(i));
    }
    world_.one.faulty->SetHook([&](const FileSystemCall& call) {
      if (call.operation == FileSystemOperation::Flush) {
        place.memory->AddFile(Name(0), "CHANGED");
      }
    });
    world_.prompts.ExpectBox();
    EXPECT_FALSE(world_.Move(kOne));
    world_.one.faulty->SetHook({});
    ASSERT_TRUE(place.memory->Exists(Name(0)));
    EXPECT_EQ(place.memory->Content(Name(0)), "CHANGED");
  }
};

TEST_P(CoarseSourceTest, AChangeThatNoDateShowsKeepsTheSource) {
  MoveAndChange(GetParam());
}

INSTANTIATE_TEST_SUITE_P(OneAndMany, CoarseSourceTest, testing::Values(1, 3));

}  // namespace
}  // namespace trevane::test
