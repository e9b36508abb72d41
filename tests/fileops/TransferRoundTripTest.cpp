#include "tests/fileops/TransferWorld.h"
#include "tests/support/ScriptedServer.h"

#include <gtest/gtest.h>

#include <utility>

namespace trevane::test {
namespace {

const QString kC = QStringLiteral("Workspace\\My Computer\\C:");

/// What transfers to a slow controller cost that keeps nothing in memory and overlaps nothing.
class TransferRoundTripTest : public testing::Test {
 protected:
  TransferRoundTripTest() {
    device_.memory->AddFolder(QStringLiteral("in"));
    device_.faulty = std::make_shared<FaultyFileSystem>(server_->Open());
    world_.Connect(QStringLiteral("Device"), device_);
  }

  /// Without listings.
  qsizetype Cost() {
    QStringList calls = server_->Calls();
    server_->ClearCalls();
    calls.removeIf([](const QString& call) { return call.startsWith(QStringLiteral("List ")); });
    calls_ = calls.join(QStringLiteral(", ")).toStdString();
    return calls.size();
  }

  TransferWorld world_;
  EngineWorld::Machine device_ = EngineWorld::MakeMachine({});
  std::shared_ptr<ScriptedServer> server_ = std::make_shared<ScriptedServer>(
      device_.memory, ScriptedOptions{.identities = ScriptedOptions::Identities::None});
  const QString into_ = QStringLiteral("Workspace\\Device\\in");
  std::string calls_;
};

TEST_F(TransferRoundTripTest, AFileOfAFolderCostsSixCalls) {
  for (int i = 0; i < 100; ++i) {
    world_.local.memory->AddFile(QStringLiteral("C:\\tree\\f%1").arg(i), QByteArray(4096, 'x'));
  }
  world_.SelectFolder(kC, QStringLiteral("tree"));
  static_cast<void>(Cost());
  EXPECT_TRUE(world_.Copy(into_));
  EXPECT_LE(Cost(), 600) << calls_.substr(0, 2000);
}

TEST_F(TransferRoundTripTest, AFileOfTheSetCostsSixCalls) {
  for (int i = 0; i < 100; ++i) {
    const QString name = QStringLiteral("f%1").arg(i);
    world_.local.memory->AddFile(QStringLiteral("C:\\set\\") + name, QByteArray(4096, 'x'));
    world_.Select(kC + QStringLiteral("\\set"), name);
  }
  static_cast<void>(Cost());
  EXPECT_TRUE(world_.Copy(into_));
  EXPECT_LE(Cost(), 600) << calls_.substr(0, 2000);
}

/// Two slow controllers, whose identities are texts, or that have none.
class SlowTransferTest : public testing::TestWithParam<std::pair<ScriptedOptions::Identities, bool>> {
 protected:
  explicit SlowTransferTest(bool targetKeepsTraits = false) {
    const auto [identities, overlapping] = GetParam();
    for (EngineWorld::Machine* machine : {&from_, &into_}) {
      servers_.push_back(std::make_shared<ScriptedServer>(
          machine->memory, ScriptedOptions{.identities = identities,
                                           .traits = targetKeepsTraits && machine == &into_,
                                           .overlapping = overlapping}));
      machine->faulty = std::make_shared<FaultyFileSystem>(servers_.back()->Open());
      machine->faulty->PassBatches();
    }
    into_.memory->AddFolder(QStringLiteral("in"));
    world_.Connect(QStringLiteral("A"), from_);
    world_.Connect(QStringLiteral("B"), into_);
  }

  /// A listing takes three round trips on most devices.
  int Cost() {
    int trips = 0;
    calls_.clear();
    for (const auto& server : servers_) {
      for (const QString& call : server->Calls()) {
        calls_ += call.toStdString() + '\n';
        trips += call.startsWith(QStringLiteral("List ")) ? 3 : 1;
      }
      server->ClearCalls();
    }
    return trips;
  }
  /// A probe shows whether both are one place: once for a folder, however much is in it.
  static constexpr int kProbe = 8;
  [[nodiscard]] bool Overlaps() const { return GetParam().second; }
  void AddNineteen(bool asTree) {
    for (int i = 0; i < 19; ++i) {
      const QString below = i < 7 || !asTree ? QString()
                            : i < 13         ? QStringLiteral("one\\")
                                             : QStringLiteral("two\\");
      from_.memory->AddFile(QStringLiteral("tree\\%1file%2").arg(below).arg(i), QByteArray(4096, 'x'));
    }
  }

  TransferWorld world_;
  EngineWorld::Machine from_ = EngineWorld::MakeMachine({});
  EngineWorld::Machine into_ = EngineWorld::MakeMachine({});
  std::vector<std::shared_ptr<ScriptedServer>> servers_;
  const QString target_ = QStringLiteral("Workspace\\B\\in");
  std::string calls_;
};

TEST_P(SlowTransferTest, AMovedTreeCostsFewRoundTrips) {
  AddNineteen(true);
  world_.SelectFolder(QStringLiteral("Workspace\\A"), QStringLiteral("tree"));
  static_cast<void>(Cost());
  EXPECT_TRUE(world_.Move(target_));
  // The display is refreshed by one listing.
  const int cost = Cost() + 3;
  RecordProperty("roundTrips", cost);
  EXPECT_LE(cost, Overlaps() ? 120 : 200) << calls_;
  EXPECT_FALSE(from_.memory->Find(QStringLiteral("tree")));
  EXPECT_TRUE(into_.memory->Find(QStringLiteral("in\\tree\\two\\file18")));
}

TEST_P(SlowTransferTest, MovedSelectedFilesCostFewRoundTrips) {
  AddNineteen(false);
  for (int i = 0; i < 19; ++i) {
    world_.Select(QStringLiteral("Workspace\\A\\tree"), QStringLiteral("file%1").arg(i));
  }
  static_cast<void>(Cost());
  EXPECT_TRUE(world_.Move(target_));
  EXPECT_LE(Cost() + 3, Overlaps() ? 120 : 200) << calls_;
  EXPECT_FALSE(from_.memory->Find(QStringLiteral("tree\\file0")));
  EXPECT_TRUE(into_.memory->Find(QStringLiteral("in\\file18")));
  EXPECT_EQ(world_.Log().size(), 19);
}

TEST_P(SlowTransferTest, ACopiedFolderCostsFewRoundTripsABatch) {
  for (int i = 0; i < 100; ++i) {
    from_.memory->AddFile(QStringLiteral("tree\\file%1").arg(i), QByteArray(4096, 'x'));
  }
  world_.SelectFolder(QStringLiteral("Workspace\\A"), QStringLiteral("tree"));
  static_cast<void>(Cost());
  EXPECT_TRUE(world_.Copy(target_));
  // The folder itself is looked for, made and listed, and the copy listed at its end.
  EXPECT_LE(Cost(), (Overlaps() ? 2 * 5 : 600) + 16 + 3 + kProbe) << calls_;
}

TEST_P(SlowTransferTest, ReplacedFilesCostFewRoundTripsABatch) {
  for (int i = 0; i < 100; ++i) {
    from_.memory->AddFile(QStringLiteral("tree\\file%1").arg(i), QByteArray(4096, 'x'));
    into_.memory->AddFile(QStringLiteral("in\\tree\\file%1").arg(i), "old");
  }
  world_.SelectFolder(QStringLiteral("Workspace\\A"), QStringLiteral("tree"));
  static_cast<void>(Cost());
  world_.prompts.ExpectChoice(1);
  EXPECT_TRUE(world_.Copy(target_));
  // Both folders are listed after the question, and the target before and after each batch.
  const int cost = Cost();
  RecordProperty("roundTrips", cost);
  EXPECT_LE(cost, (Overlaps() ? 2 * 5 : 600) + 2 * 2 * 3 + 16 + 3 * 3 + kProbe) << calls_;
  EXPECT_EQ(into_.memory->Content(QStringLiteral("in\\tree\\file99")), QByteArray(4096, 'x'));
}

TEST_P(SlowTransferTest, CopiedSelectedFilesCostFewRoundTripsABatch) {
  for (int i = 0; i < 100; ++i) {
    from_.memory->AddFile(QStringLiteral("tree\\file%1").arg(i), QByteArray(4096, 'x'));
    world_.Select(QStringLiteral("Workspace\\A\\tree"), QStringLiteral("file%1").arg(i));
  }
  static_cast<void>(Cost());
  EXPECT_TRUE(world_.Copy(target_));
  // Both folders are looked for and listed, and the copies listed after each batch.
  EXPECT_LE(Cost(), (Overlaps() ? 2 * 5 : 600) + 16 + 2 * 3) << calls_;
}

TEST_P(SlowTransferTest, OneMoreUploadedFileCostsFiveRoundTrips) {
  const auto upload = [&](const QString& folder, int files) {
    for (int i = 0; i < files; ++i) {
      world_.local.memory->AddFile(QStringLiteral("C:\\%1\\file%2").arg(folder).arg(i), "x");
    }
    world_.state.clipboard.Clear();
    world_.SelectFolder(kC, folder);
    static_cast<void>(Cost());
    EXPECT_TRUE(world_.Copy(target_));
    return Cost();
  };
  const int one = upload(QStringLiteral("one"), 1);
  EXPECT_LE(upload(QStringLiteral("two"), 2) - one, 5) << calls_;
}

TEST_P(SlowTransferTest, AMovedFileThatChangedIsKept) {
  AddNineteen(true);
  world_.SelectFolder(QStringLiteral("Workspace\\A"), QStringLiteral("tree"));
  // After the tree was verified, while the first of its files are deleted.
  bool written = false;
  from_.faulty->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Remove && !std::exchange(written, true)) {
      from_.memory->AddFile(QStringLiteral("tree\\two\\file15"), "written meanwhile");
    }
  });
  world_.prompts.AnswerAllBoxes(PromptAnswer::Ok);
  EXPECT_FALSE(world_.Move(target_));
  EXPECT_FALSE(from_.memory->Find(QStringLiteral("tree\\one")));
  EXPECT_TRUE(from_.memory->Find(QStringLiteral("tree\\two\\file15")));
}

TEST_P(SlowTransferTest, NothingIsDeletedBehindALinkThatTookAFoldersPlace) {
  AddNineteen(true);
  world_.SelectFolder(QStringLiteral("Workspace\\A"), QStringLiteral("tree"));
  // After the tree was verified, while the first of its files are deleted.
  bool replaced = false;
  from_.faulty->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Remove && !std::exchange(replaced, true)) {
      from_.memory->Rename(QStringLiteral("tree\\one"), QStringLiteral("other"), false);
      from_.memory->AddLink(QStringLiteral("tree\\one"), QStringLiteral("other"));
    }
  });
  world_.prompts.AnswerAllBoxes(PromptAnswer::Ok);
  EXPECT_FALSE(world_.Move(target_));
  EXPECT_TRUE(replaced);
  for (int i = 7; i < 13; ++i) {
    EXPECT_TRUE(from_.memory->Find(QStringLiteral("other\\file%1").arg(i))) << i;
  }
  EXPECT_TRUE(from_.memory->Find(QStringLiteral("tree\\one")));
}

TEST_P(SlowTransferTest, ASelectedFileThatChangedIsKept) {
  AddNineteen(false);
  for (int i = 0; i < 19; ++i) {
    world_.Select(QStringLiteral("Workspace\\A\\tree"), QStringLiteral("file%1").arg(i));
  }
  // Between the copy and the deletion.
  into_.faulty->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Flush) {
      from_.memory->AddFile(QStringLiteral("tree\\file15"), "written meanwhile");
    }
  });
  world_.prompts.AnswerAllBoxes(PromptAnswer::Ok);
  EXPECT_FALSE(world_.Move(target_));
  EXPECT_TRUE(from_.memory->Find(QStringLiteral("tree\\file15")));
  // The others have arrived and are told.
  EXPECT_FALSE(from_.memory->Find(QStringLiteral("tree\\file18")));
  EXPECT_EQ(world_.Log().size(), 18);
}

/// The same where the target keeps dates: those of folders are set at their end.
class DatedTransferTest : public SlowTransferTest {
 protected:
  DatedTransferTest() : SlowTransferTest(true) {}
};

TEST_P(DatedTransferTest, AMovedTreeCostsFewRoundTrips) {
  AddNineteen(true);
  const Date made{1'000'000'000'000};
  for (const QString& folder :
       {QStringLiteral("tree\\one"), QStringLiteral("tree\\two"), QStringLiteral("tree")}) {
    from_.memory->SetTimes(folder, made, made, made);
  }
  world_.SelectFolder(QStringLiteral("Workspace\\A"), QStringLiteral("tree"));
  static_cast<void>(Cost());
  EXPECT_TRUE(world_.Move(target_));
  const int cost = Cost() + 3;
  RecordProperty("roundTrips", cost);
  EXPECT_LE(cost, Overlaps() ? 120 : 200) << calls_;
  EXPECT_EQ(into_.memory->Stat(QStringLiteral("in\\tree")).modified, made);
  EXPECT_EQ(into_.memory->Stat(QStringLiteral("in\\tree\\two")).modified, made);
}

INSTANTIATE_TEST_SUITE_P(Controllers, DatedTransferTest,
                         testing::Values(std::pair(ScriptedOptions::Identities::Texts, true),
                                         std::pair(ScriptedOptions::Identities::Texts, false),
                                         std::pair(ScriptedOptions::Identities::None, true),
                                         std::pair(ScriptedOptions::Identities::None, false)));

INSTANTIATE_TEST_SUITE_P(Controllers, SlowTransferTest,
                         testing::Values(std::pair(ScriptedOptions::Identities::Texts, true),
                                         std::pair(ScriptedOptions::Identities::Texts, false),
                                         std::pair(ScriptedOptions::Identities::None, true),
                                         std::pair(ScriptedOptions::Identities::None, false)),
                         [](const auto& tested) {
                           const bool texts = tested.param.first == ScriptedOptions::Identities::Texts;
                           return std::string(texts ? "Texts" : "NoIdentities") +
                                  (tested.param.second ? "Overlapping" : "OneByOne");
                         });

}  // namespace
}  // namespace trevane::test
