#include "base/RunTimeError.h"
#include "engine/files/TemporaryName.h"
#include "engine/files/WholeFile.h"
#include "tests/fileops/TransferWorld.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace trevane::test {
namespace {

const QString kC = QStringLiteral("Workspace\\My Computer\\C:");
const QString kD = QStringLiteral("Workspace\\My Computer\\D:");
const QString kIn = QStringLiteral("Workspace\\My Computer\\D:\\in");
const QString kOne = QStringLiteral("Workspace\\Ctrl1\\in");
const QString kTwo = QStringLiteral("Workspace\\Ctrl2\\in");
const QString kCopyFailed = QStringLiteral("Failed in copy operation.");
const QString kMoveFailed = QStringLiteral("Failed in move operation.");

class TransferTest : public testing::Test {
 protected:
  TransferTest() {
    world.local.memory->AddFile(QStringLiteral("C:\\f"), "file");
    world.local.memory->AddFile(QStringLiteral("C:\\tree\\a"), "aa");
    world.local.memory->AddFile(QStringLiteral("C:\\tree\\sub\\b"), "bbb");
    world.local.memory->AddFolder(QStringLiteral("C:\\tree\\empty"));
    world.local.memory->AddFolder(QStringLiteral("D:\\in"));
    world.one.memory->AddFolder(QStringLiteral("in"));
    world.two.memory->AddFolder(QStringLiteral("in"));
  }
  ~TransferTest() override {
    EXPECT_TRUE(world.host.IsEnabled());
    EXPECT_FALSE(world.Gauge().IsLoaded());
    EXPECT_EQ(world.engine->HeldFiles(), 0);
    EXPECT_EQ(world.engine->LiveFileNames(), QStringList());
  }

  TransferWorld world;
};

TEST_F(TransferTest, CopiesAFileWithinOneControllerAndLogsEnginePaths) {
  world.Select(kC, QStringLiteral("f"));
  bool enabledMeanwhile = true;
  world.host.onEvents = [&] { enabledMeanwhile = world.host.IsEnabled(); };
  EXPECT_TRUE(world.Copy(kIn));
  EXPECT_FALSE(enabledMeanwhile);
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("D:\\in\\f")), "file");
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("C:\\f")), "file");
  EXPECT_EQ(world.Log(), QStringList(QStringLiteral("COPY|C:\\f|D:\\in\\f")));
  EXPECT_TRUE(world.operations.GoneAddresses().isEmpty());
}

TEST_F(TransferTest, ACopyResolvesTwoAddressesHoweverDeep) {
  for (const QString& folder : {QStringLiteral("C:\\a"), QStringLiteral("C:\\a\\b\\c\\d\\e\\g")}) {
    world.local.memory->AddFile(folder + QStringLiteral("\\deep"), "deep");
    world.state.clipboard.Clear();
    world.Select(QStringLiteral("Workspace\\My Computer\\") + folder, QStringLiteral("deep"));
    // The folder of a controller is looked for when it is held.
    for (const auto& [into, opened] : {std::pair(kIn, 2), std::pair(kOne, 1)}) {
      SCOPED_TRACE((folder + QStringLiteral(" > ") + into).toStdString());
      world.local.memory->Vanish(QStringLiteral("D:\\in\\deep"));
      world.engine->ClearCalls();
      EXPECT_TRUE(world.Copy(into));
      EXPECT_EQ(world.engine->Calls().count(QStringLiteral("IxoController.OpenFile")), opened);
      world.one.memory->Vanish(QStringLiteral("in\\deep"));
    }
  }
}

TEST_F(TransferTest, AMoveLooksAnewBeforeAndAfterDeleting) {
  world.local.memory->AddFile(QStringLiteral("C:\\a\\b\\c\\d\\deep"), "deep");
  world.Select(kC + QStringLiteral("\\a\\b\\c\\d"), QStringLiteral("deep"));
  world.engine->ClearCalls();
  EXPECT_TRUE(world.Move(kIn));
  EXPECT_FALSE(world.local.memory->Exists(QStringLiteral("C:\\a\\b\\c\\d\\deep")));
  // Source and destination, the source once more, and after that its folder tells that it has gone.
  EXPECT_EQ(world.engine->Calls().count(QStringLiteral("IxoController.OpenFile")), 5);
}

TEST_F(TransferTest, ShowsTheGaugeWithTheWordTheCountAndEachName) {
  world.Select(kC, QStringLiteral("f"));
  world.SelectFolder(kC, QStringLiteral("tree"));
  QStringList labels;
  qint32 maximum = 0;
  bool cancelEnabled = false;
  world.Gauge().onIncrement = [&] {
    labels.append(world.Gauge().GageLabel());
    maximum = world.Gauge().GageMax();
    cancelEnabled = world.Gauge().IsCancelEnabled();
  };
  EXPECT_TRUE(world.Move(kIn));
  EXPECT_EQ(world.Gauge().Captions(), QStringList(QStringLiteral("MOVE Files/Directories")));
  EXPECT_EQ(labels, QStringList({QStringLiteral("f"), QStringLiteral("tree")}));
  EXPECT_EQ(maximum, 3);
  EXPECT_TRUE(cancelEnabled);
  EXPECT_EQ(world.Gauge().Unloads(), 1);
  EXPECT_EQ(world.Gauge().WaitedMilliseconds(), 30);
}

TEST_F(TransferTest, MovesAFolderWithinOneControllerAsACopyAndDeletes) {
  world.SelectFolder(kC, QStringLiteral("tree"));
  EXPECT_TRUE(world.Move(kIn));
  EXPECT_EQ(world.local.memory->Tree(),
            QStringList({QStringLiteral("C:\\"), QStringLiteral("C:\\f=file"), QStringLiteral("D:\\"),
                         QStringLiteral("D:\\in\\"), QStringLiteral("D:\\in\\tree\\"),
                         QStringLiteral("D:\\in\\tree\\a=aa"), QStringLiteral("D:\\in\\tree\\empty\\"),
                         QStringLiteral("D:\\in\\tree\\sub\\"), QStringLiteral("D:\\in\\tree\\sub\\b=bbb")}));
  EXPECT_EQ(world.local.memory->CallCount(FileSystemOperation::Rename), 0);
  // A folder's own name stands in no path of the log: its target is the folder it went into.
  EXPECT_EQ(world.Log(), QStringList(QStringLiteral("MOVE|C:\\tree|D:\\in")));
  EXPECT_EQ(world.operations.GoneAddresses(), QStringList(kC + QStringLiteral("\\tree")));
}

TEST_F(TransferTest, MovesAFolderToAnotherController) {
  world.SelectFolder(kC, QStringLiteral("tree"));
  EXPECT_TRUE(world.Move(kOne));
  EXPECT_EQ(world.one.memory->Tree(),
            QStringList({QStringLiteral("in\\"), QStringLiteral("in\\tree\\"),
                         QStringLiteral("in\\tree\\a=aa"), QStringLiteral("in\\tree\\empty\\"),
                         QStringLiteral("in\\tree\\sub\\"), QStringLiteral("in\\tree\\sub\\b=bbb")}));
  EXPECT_FALSE(world.local.memory->Exists(QStringLiteral("C:\\tree")));
  EXPECT_EQ(world.Log(), QStringList(QStringLiteral("MOVE|C:\\tree|Ctrl1\\in")));
}

TEST_F(TransferTest, PastingACopiedFileIntoItsOwnFolderFails) {
  world.Select(kC, QStringLiteral("f"));
  world.prompts.ExpectBox(kCopyFailed);
  const QStringList before = world.local.memory->Tree();
  EXPECT_FALSE(world.Copy(kC.toUpper()));
  EXPECT_EQ(world.local.memory->Tree(), before);
  ASSERT_EQ(world.prompts.Asked().size(), 1U);
  EXPECT_EQ(world.prompts.Asked()[0].icon, PromptIcon::Exclamation);
  EXPECT_EQ(world.prompts.Asked()[0].buttons, PromptButtons::Ok);
  EXPECT_EQ(world.Gauge().WaitedMilliseconds(), 0);
}

TEST_F(TransferTest, PastingAFolderIntoItsParentFails) {
  world.SelectFolder(kC, QStringLiteral("tree"));
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(kC));
  EXPECT_TRUE(world.local.memory->Exists(QStringLiteral("C:\\tree\\a")));
}

TEST_F(TransferTest, AFolderIntoItselfOrASubfolderFails) {
  for (const QString& into : {kC + QStringLiteral("\\tree"), kC + QStringLiteral("\\Tree\\SUB")}) {
    world.state.clipboard.Clear();
    world.SelectFolder(kC, QStringLiteral("tree"));
    world.prompts.ExpectBox(kCopyFailed);
    EXPECT_FALSE(world.Copy(into));
  }
  EXPECT_EQ(world.local.memory->CallCount(FileSystemOperation::Copy), 0);
}

TEST_F(TransferTest, AFolderIntoASiblingWithItsPrefixFails) {
  world.local.memory->AddFolder(QStringLiteral("C:\\treeAB"));
  world.SelectFolder(kC, QStringLiteral("tree"));
  world.prompts.ExpectBox(kCopyFailed);
  EXPECT_FALSE(world.Copy(kC + QStringLiteral("\\treeAB")));
  EXPECT_EQ(world.local.memory->CallCount(FileSystemOperation::Copy), 0);
}

TEST_F(TransferTest, AsksWithTheTargetPathAndOverwrites) {
  world.local.memory->AddFile(QStringLiteral("D:\\in\\f"), "old");
  world.Select(kC, QStringLiteral("f"));
  world.prompts.ExpectChoice(
      QStringLiteral("'") + kIn + QStringLiteral("\\f' already existed.\r\nOverwrite?"), 0);
  EXPECT_TRUE(world.Copy(kIn));
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("D:\\in\\f")), "file");
  const AskedQuestion& asked = world.prompts.Asked().at(0);
  EXPECT_EQ(asked.title, QStringLiteral("OverWrite"));
  EXPECT_EQ(asked.icon, PromptIcon::Information);
  EXPECT_EQ(asked.captions, QStringList({QStringLiteral("Yes(&Y)"), QStringLiteral("Yes All(&A)"),
                                         QStringLiteral("No(&N)"), QStringLiteral("Cancel")}));
  EXPECT_EQ(asked.defaultButton, 0);
  EXPECT_EQ(asked.cancelButton, 1);
}

TEST_F(TransferTest, YesAllIsNotRememberedForTheNextClash) {
  world.local.memory->AddFile(QStringLiteral("C:\\g"), "new g");
  world.local.memory->AddFile(QStringLiteral("D:\\in\\f"), "old");
  world.local.memory->AddFile(QStringLiteral("D:\\in\\g"), "old");
  world.Select(kC, QStringLiteral("f"));
  world.Select(kC, QStringLiteral("g"));
  world.prompts.ExpectChoice(1);
  world.prompts.ExpectChoice(1);
  EXPECT_TRUE(world.Copy(kIn));
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("D:\\in\\g")), "new g");
}

TEST_F(TransferTest, ASecondFailureAfterYesEndsTheTransfer) {
  world.local.memory->AddFolder(QStringLiteral("D:\\in\\f"));
  world.Select(kC, QStringLiteral("f"));
  world.SelectFolder(kC, QStringLiteral("tree"));
  world.prompts.ExpectChoice(0);
  world.prompts.ExpectBox(kCopyFailed);
  EXPECT_FALSE(world.Copy(kIn));
  EXPECT_FALSE(world.local.memory->Exists(QStringLiteral("D:\\in\\tree")));
  EXPECT_TRUE(world.Log().isEmpty());
}

TEST_F(TransferTest, AFailureNamesTheItemAndTheReason) {
  world.local.faulty->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Read && call.path.endsWith(QStringLiteral("sub\\b"))) {
      throw RunTimeError(error::kAccessDenied, QStringLiteral("b is locked\nby another program"));
    }
  });
  world.Select(kC, QStringLiteral("f"));
  world.SelectFolder(kC, QStringLiteral("tree"));
  world.prompts.ExpectBox(kCopyFailed);
  EXPECT_FALSE(world.Copy(kOne));
  EXPECT_EQ(world.prompts.Asked().at(0).informativeText,
            QStringLiteral("tree\nb is locked\nby another program"));
  EXPECT_EQ(world.host.reasons, QStringList{QStringLiteral("b is locked")});
}

TEST_F(TransferTest, AFailingSecondCopyGivesItsOwnReason) {
  world.local.memory->AddFile(QStringLiteral("D:\\in\\f"), "old");
  int copies = 0;
  world.local.faulty->SetHook([&copies](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Copy && ++copies == 2) {
      throw RunTimeError(error::kDiskFull, QStringLiteral("The disk is full"));
    }
  });
  world.Select(kC, QStringLiteral("f"));
  world.prompts.ExpectChoice(0);
  world.prompts.ExpectBox(kCopyFailed);
  EXPECT_FALSE(world.Copy(kIn));
  EXPECT_EQ(world.prompts.Asked().back().informativeText, QStringLiteral("f\nThe disk is full"));
}

TEST_F(TransferTest, AMoveThatKeepsItsSourceGivesTheReason) {
  world.local.faulty->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Remove) {
      throw RunTimeError(error::kAccessDenied, QStringLiteral("f may not be removed"));
    }
  });
  world.Select(kC, QStringLiteral("f"));
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(kOne));
  EXPECT_EQ(world.prompts.Asked().at(0).informativeText, QStringLiteral("f\nf may not be removed"));
}

/// The rules that refuse a paste before the engine is asked have reasons, too.
TEST_F(TransferTest, EveryRefusedPasteGivesAReason) {
  world.SelectFolder(kC, QStringLiteral("tree"));
  world.local.memory->AddFolder(QStringLiteral("C:\\treeAB"));
  for (const QString& into : {kC, kC + QStringLiteral("\\tree\\sub"), kC + QStringLiteral("\\treeAB")}) {
    world.prompts.ForgetAsked();
    world.prompts.ExpectBox(kCopyFailed);
    EXPECT_FALSE(world.Copy(into));
    const QStringList lines = world.prompts.Asked().at(0).informativeText.split(u'\n');
    ASSERT_EQ(lines.size(), 2) << into.toStdString();
    EXPECT_EQ(lines[0], QStringLiteral("tree"));
    EXPECT_TRUE(lines[1].endsWith(into)) << lines[1].toStdString();
  }
  EXPECT_EQ(world.host.reasons.size(), 3);
}

TEST_F(TransferTest, AMovedFileThatIsAnsweredNoIsKeptOnBothSides) {
  for (int i = 1; i <= 5; ++i) {
    world.local.memory->AddFile(QStringLiteral("C:\\five\\%1").arg(i), "new" + QByteArray::number(i));
    world.Select(kC + QStringLiteral("\\five"), QString::number(i));
  }
  world.local.memory->AddFile(QStringLiteral("D:\\in\\3"), "old3");
  world.prompts.ExpectChoice(2);
  EXPECT_TRUE(world.Move(kIn));
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("C:\\five\\3")), "new3");
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("D:\\in\\3")), "old3");
  for (const int i : {1, 2, 4, 5}) {
    EXPECT_FALSE(world.local.memory->Exists(QStringLiteral("C:\\five\\%1").arg(i)));
    EXPECT_EQ(world.local.memory->Content(QStringLiteral("D:\\in\\%1").arg(i)),
              "new" + QByteArray::number(i));
  }
  // What was skipped writes no line.
  EXPECT_EQ(world.Log().size(), 4);
  EXPECT_EQ(world.operations.GoneAddresses().size(), 4);
}

TEST_F(TransferTest, CancelOfTheOverwriteQuestionEndsSilently) {
  world.local.memory->AddFile(QStringLiteral("D:\\in\\f"), "old");
  world.Select(kC, QStringLiteral("f"));
  world.SelectFolder(kC, QStringLiteral("tree"));
  world.prompts.ExpectChoice(3);
  EXPECT_TRUE(world.Move(kIn));
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("C:\\f")), "file");
  EXPECT_TRUE(world.local.memory->Exists(QStringLiteral("C:\\tree")));
  EXPECT_TRUE(world.Log().isEmpty());
  EXPECT_EQ(world.Gauge().Unloads(), 1);
  EXPECT_EQ(world.Gauge().WaitedMilliseconds(), 0);
}

TEST_F(TransferTest, BetweenControllersEachItemIsAskedForOnce) {
  world.one.memory->AddFile(QStringLiteral("in\\tree\\a"), "old");
  world.SelectFolder(kC, QStringLiteral("tree"));
  world.prompts.ExpectChoice(QStringLiteral("'tree' already existed.\r\nOverwrite?"), 0);
  world.prompts.ExpectChoice(QStringLiteral("'a' already existed.\r\nOverwrite?"), 0);
  EXPECT_TRUE(world.Copy(kOne));
  EXPECT_EQ(world.one.memory->Content(QStringLiteral("in\\tree\\a")), "aa");
}

TEST_F(TransferTest, APartialMoveIsLoggedAsACopy) {
  world.one.memory->AddFile(QStringLiteral("in\\tree\\a"), "old");
  world.SelectFolder(kC, QStringLiteral("tree"));
  world.prompts.ExpectChoice(0);
  world.prompts.ExpectChoice(2);
  EXPECT_TRUE(world.Move(kOne));
  EXPECT_EQ(world.one.memory->Content(QStringLiteral("in\\tree\\a")), "old");
  EXPECT_EQ(world.one.memory->Content(QStringLiteral("in\\tree\\sub\\b")), "bbb");
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("C:\\tree\\sub\\b")), "bbb");
  EXPECT_EQ(world.Log(), QStringList(QStringLiteral("COPY|C:\\tree|Ctrl1\\in")));
  EXPECT_TRUE(world.operations.GoneAddresses().isEmpty());
}

class SetBatchTest : public TransferTest {
 protected:
  void AddFiles(int count) {
    for (int i = 0; i < count; ++i) {
      const QString name = Name(i);
      world.local.memory->AddFile(QStringLiteral("C:\\set\\") + name, "content");
      world.Select(kC + QStringLiteral("\\set"), name);
    }
  }
  static QString Name(int i) { return QStringLiteral("f%1").arg(i, 3, 10, QLatin1Char('0')); }
  [[nodiscard]] qsizetype Flushes() const {
    return std::ranges::count_if(world.one.faulty->Calls(), [](const FileSystemCall& call) {
      return call.operation == FileSystemOperation::Flush;
    });
  }
};

TEST_F(SetBatchTest, FilesThatFollowEachOtherAreFlushedOnce) {
  AddFiles(100);
  EXPECT_TRUE(world.Move(kOne));
  EXPECT_EQ(Flushes(), 2) << "two batches";
  EXPECT_EQ(world.Log().size(), 100);
  EXPECT_EQ(world.Log()[0], QStringLiteral("MOVE|C:\\set\\f000|Ctrl1\\in\\f000"));
  EXPECT_EQ(world.operations.GoneAddresses().size(), 100);
  EXPECT_TRUE(world.operations.HasMoved());
  EXPECT_FALSE(world.local.memory->Exists(QStringLiteral("C:\\set\\f099")));
}

TEST_F(SetBatchTest, AFailureIsToldOnceAfterThoseThatArrived) {
  AddFiles(5);
  world.one.faulty->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Commit && call.path.endsWith(u"f003")) {
      throw RunTimeError(error::kDiskFull, QStringLiteral("The disk is full"));
    }
  });
  world.prompts.ExpectBox(QStringLiteral("Failed in move operation."));
  EXPECT_FALSE(world.Move(kOne));
  EXPECT_EQ(world.Log().size(), 3);
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(world.local.memory->Exists(QStringLiteral("C:\\set\\") + Name(i)), i > 2) << i;
    EXPECT_EQ(world.one.memory->Exists(QStringLiteral("in\\") + Name(i)), i < 3) << i;
  }
}

TEST_F(SetBatchTest, ASourceThatChangedMeanwhileIsKept) {
  AddFiles(3);
  world.one.faulty->SetHook([this](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Flush) {
      world.local.memory->AddFile(QStringLiteral("C:\\set\\f001"), "another content");
    }
  });
  world.prompts.ExpectBox(QStringLiteral("Failed in move operation."));
  EXPECT_FALSE(world.Move(kOne));
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("C:\\set\\f001")), "another content");
  EXPECT_FALSE(world.local.memory->Exists(QStringLiteral("C:\\set\\f000")));
  EXPECT_FALSE(world.local.memory->Exists(QStringLiteral("C:\\set\\f002")));
  EXPECT_EQ(world.Log().size(), 2);
}

TEST_F(SetBatchTest, AClashEndsTheBatchBeforeItsQuestion) {
  AddFiles(4);
  world.one.memory->AddFile(QStringLiteral("in\\f002"), "old");
  world.prompts.onQuestion = [this](const AskedQuestion&) {
    EXPECT_FALSE(world.local.memory->Exists(QStringLiteral("C:\\set\\f001")));
    EXPECT_EQ(world.Log().size(), 2);
    EXPECT_TRUE(world.local.memory->Exists(QStringLiteral("C:\\set\\f003")));
  };
  world.prompts.ExpectChoice(2);
  EXPECT_TRUE(world.Move(kOne));
  world.prompts.onQuestion = {};
  EXPECT_EQ(world.one.memory->Content(QStringLiteral("in\\f002")), "old");
  EXPECT_TRUE(world.local.memory->Exists(QStringLiteral("C:\\set\\f002")));
  EXPECT_FALSE(world.local.memory->Exists(QStringLiteral("C:\\set\\f003")));
}

TEST_F(SetBatchTest, ACallThatIsCancelledEndsItWithoutAMessage) {
  AddFiles(3);
  world.one.faulty->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Commit && call.path.endsWith(u"f001")) {
      throw RunTimeError(error::kCancelled, QStringLiteral("Cancelled."));
    }
  });
  EXPECT_TRUE(world.Move(kOne));
  EXPECT_TRUE(world.one.memory->Exists(QStringLiteral("in\\f000")));
  EXPECT_TRUE(world.local.memory->Exists(QStringLiteral("C:\\set\\f000"))) << "nothing is deleted after it";
  EXPECT_TRUE(world.local.memory->Exists(QStringLiteral("C:\\set\\f001")));
  EXPECT_TRUE(world.local.memory->Exists(QStringLiteral("C:\\set\\f002")));
}

TEST_F(TransferTest, CuttingTheOnlyCopyOntoItselfLosesNothing) {
  MemoryFileSystemOptions options;
  options.identity = false;
  options.dateStep = 2000;
  const auto place = EngineWorld::MakeMachine(options);
  place.memory->AddFile(QStringLiteral("only"), "the only copy");
  world.Connect(QStringLiteral("Here"), place);
  world.Connect(QStringLiteral("There"), place);
  world.Select(QStringLiteral("Workspace\\Here"), QStringLiteral("only"));
  world.prompts.ExpectChoice(0);
  world.prompts.ExpectBox(QStringLiteral("Failed in move operation."));
  EXPECT_FALSE(world.Move(QStringLiteral("Workspace\\There")));
  EXPECT_EQ(place.memory->Tree(), QStringList{QStringLiteral("only=the only copy")});
}

class LeftOutTest : public TransferTest {
 protected:
  void ExpectTold(const QString& text) {
    world.prompts.onQuestion = [this](const AskedQuestion& asked) {
      if (asked.kind == AskedQuestion::Kind::MessageBox) {
        EXPECT_FALSE(world.Gauge().IsLoaded());
        EXPECT_TRUE(world.host.IsEnabled());
      }
    };
    world.prompts.ExpectBox(text);
  }
};

TEST_F(LeftOutTest, LinksThatCannotBeCopiedAreReportedAtTheEnd) {
  MemoryFileSystem& local = *world.local.memory;
  local.AddLink(QStringLiteral("C:\\tree\\lost"), QStringLiteral("C:\\nowhere"));
  local.AddLink(QStringLiteral("C:\\tree\\sub\\up"), QStringLiteral("C:\\tree"));
  local.AddLink(QStringLiteral("C:\\folder link"), QStringLiteral("C:\\tree"));
  world.SelectFolder(kC, QStringLiteral("tree"));
  world.SelectFolder(kC, QStringLiteral("folder link"));
  ExpectTold(QStringLiteral("3 items were left out."));
  EXPECT_TRUE(world.Move(kOne));
  const AskedQuestion asked = world.prompts.Asked().back();
  EXPECT_EQ(asked.icon, PromptIcon::Exclamation);
  EXPECT_EQ(asked.buttons, PromptButtons::Ok);
  EXPECT_EQ(asked.informativeText, QStringLiteral("lost: The link leads out of what is copied\n"
                                                  "up: The link leads out of what is copied\n"
                                                  "folder link: The link leads out of what is copied"));
  EXPECT_EQ(world.Log().size(), 1);
  EXPECT_TRUE(local.Exists(QStringLiteral("C:\\tree\\a")))
      << "a move of which something was left out stays a copy";
}

TEST_F(LeftOutTest, RefusedNamesAreCountedAndFiveItemsNamed) {
  for (const QString& name : {QStringLiteral(".."), QStringLiteral("x/y"), QStringLiteral("x\\y"),
                              QStringLiteral(""), QStringLiteral("w\n/w"), QStringLiteral("v/v")}) {
    world.local.memory->AddHostileName(QStringLiteral("C:\\tree"), name);
  }
  world.SelectFolder(kC, QStringLiteral("tree"));
  ExpectTold(QStringLiteral("6 items were left out."));
  EXPECT_TRUE(world.Copy(kOne));
  const QStringList lines = world.prompts.Asked().back().informativeText.split(u'\n');
  EXPECT_EQ(lines.size(), 5);
  EXPECT_EQ(lines.first(), QStringLiteral("..: The name is not valid"));
  EXPECT_EQ(lines.last(), QStringLiteral("w\u240A/w: The name is not valid"));
}

TEST_F(LeftOutTest, OneItemIsSingularAndANoIsNotCounted) {
  world.local.memory->AddLink(QStringLiteral("C:\\tree\\lost"), QStringLiteral("C:\\nowhere"));
  world.one.memory->AddFile(QStringLiteral("in\\tree\\a"), "old");
  world.SelectFolder(kC, QStringLiteral("tree"));
  world.prompts.ExpectChoice(0);
  world.prompts.ExpectChoice(2);
  ExpectTold(QStringLiteral("1 item was left out."));
  EXPECT_TRUE(world.Copy(kOne));
}

TEST_F(LeftOutTest, AMoveThatNothingShowsToBeSafeIsToldAsACopy) {
  MemoryFileSystemOptions options;
  options.identity = false;
  const auto from = EngineWorld::MakeMachine(options);
  const auto into = EngineWorld::MakeMachine(options);
  from.memory->AddFile(QStringLiteral("f"), "new");
  into.memory->AddFile(QStringLiteral("f"), "old");
  world.Connect(QStringLiteral("From"), from);
  world.Connect(QStringLiteral("Into"), into);
  from.faulty->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Stat && IsTemporaryName(call.path)) {
      throw RunTimeError(error::kAccessDenied, QStringLiteral("No"));
    }
  });
  world.Select(QStringLiteral("Workspace\\From"), QStringLiteral("f"));
  world.prompts.ExpectChoice(0);
  ExpectTold(QStringLiteral("1 item was copied and not moved."));
  EXPECT_TRUE(world.Move(QStringLiteral("Workspace\\Into")));
  EXPECT_TRUE(world.prompts.Asked().back().informativeText.startsWith(QStringLiteral("f: It was copied")));
  EXPECT_EQ(into.memory->Content(QStringLiteral("f")), "new");
  EXPECT_TRUE(from.memory->Exists(QStringLiteral("f")));
  ASSERT_EQ(world.Log().size(), 1);
  EXPECT_TRUE(world.Log().front().contains(QStringLiteral("COPY")));
}

TEST_F(TransferTest, SkippedItemsAreNotLogged) {
  world.one.memory->AddFile(QStringLiteral("in\\f"), "old");
  world.Select(kC, QStringLiteral("f"));
  world.prompts.ExpectChoice(2);
  EXPECT_TRUE(world.Move(kOne));
  EXPECT_TRUE(world.Log().isEmpty());
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("C:\\f")), "file");
}

TEST_F(TransferTest, CancelOfAnItemsQuestionEndsSilently) {
  world.one.memory->AddFile(QStringLiteral("in\\f"), "old");
  world.Select(kC, QStringLiteral("f"));
  world.SelectFolder(kC, QStringLiteral("tree"));
  world.prompts.ExpectChoice(3);
  EXPECT_TRUE(world.Move(kOne));
  EXPECT_FALSE(world.one.memory->Exists(QStringLiteral("in\\tree")));
  EXPECT_TRUE(world.Log().isEmpty());
}

TEST_F(TransferTest, CancelOfTheGaugeEndsAfterTheCurrentEntry) {
  world.Select(kC, QStringLiteral("f"));
  world.SelectFolder(kC, QStringLiteral("tree"));
  world.Gauge().CancelAtIncrement(1);
  EXPECT_TRUE(world.Copy(kIn));
  EXPECT_EQ(world.Log(), QStringList(QStringLiteral("COPY|C:\\f|D:\\in\\f")));
  EXPECT_FALSE(world.local.memory->Exists(QStringLiteral("D:\\in\\tree")));
  EXPECT_EQ(world.Gauge().WaitedMilliseconds(), 30);
}

TEST_F(TransferTest, CancelEndsAFolderCopyWithinOneController) {
  world.SelectFolder(kC, QStringLiteral("tree"));
  world.Select(kC, QStringLiteral("f"));
  QStringList labels;
  world.host.onEvents = [&] {
    labels.append(world.Gauge().GageLabel());
    world.Gauge().ClickCancel();
  };
  EXPECT_TRUE(world.Copy(kIn));
  EXPECT_EQ(labels, QStringList(QStringLiteral("a")));
  EXPECT_FALSE(world.local.memory->Exists(QStringLiteral("D:\\in\\tree")));
  EXPECT_FALSE(world.local.memory->Exists(QStringLiteral("D:\\in\\f")));
  EXPECT_TRUE(world.Log().isEmpty());
}

TEST_F(TransferTest, CancelEndsAFolderCopyBetweenControllers) {
  world.SelectFolder(kC, QStringLiteral("tree"));
  int turns = 0;
  world.host.onEvents = [&] {
    ++turns;
    world.Gauge().ClickCancel();
  };
  EXPECT_TRUE(world.Move(kOne));
  EXPECT_EQ(turns, 1);
  EXPECT_TRUE(world.Log().isEmpty());
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("C:\\tree\\a")), "aa");
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("C:\\tree\\sub\\b")), "bbb");
}

TEST_F(TransferTest, EntriesAddedDuringAPasteAreNotPasted) {
  world.Select(kC, QStringLiteral("f"));
  world.host.onEvents = [&] {
    world.state.clipboard.Clear();
    world.SelectFolder(kC, QStringLiteral("tree"));
    world.state.nFileOpMode = OperationState::kCut;
  };
  EXPECT_TRUE(world.Copy(kIn));
  EXPECT_EQ(world.Log(), QStringList(QStringLiteral("COPY|C:\\f|D:\\in\\f")));
  EXPECT_FALSE(world.local.memory->Exists(QStringLiteral("D:\\in\\tree")));
}

TEST_F(TransferTest, ASecondOperationWhileOneRunsDoesNothing) {
  world.Select(kC, QStringLiteral("f"));
  bool nested = false;
  world.host.onEvents = [&] {
    world.host.onEvents = nullptr;
    nested = world.operations.Transfer(world.Destination(kOne));
    EXPECT_TRUE(world.DeleteNode(kC + QStringLiteral("\\tree"), kFolderBit));
  };
  EXPECT_TRUE(world.Copy(kIn));
  EXPECT_TRUE(nested);
  EXPECT_FALSE(world.one.memory->Exists(QStringLiteral("in\\f")));
  EXPECT_TRUE(world.local.memory->Exists(QStringLiteral("C:\\tree")));
}

TEST_F(TransferTest, AnEntryThatWasRenamedSinceFails) {
  world.Select(kC, QStringLiteral("missing"));
  world.Select(kC, QStringLiteral("f"));
  world.prompts.ExpectBox(kMoveFailed);
  const QStringList before = world.local.memory->Tree();
  EXPECT_FALSE(world.Move(kIn));
  EXPECT_EQ(world.local.memory->Tree(), before);
}

TEST_F(TransferTest, EntriesDoneBeforeAFailureStayDone) {
  world.Select(kC, QStringLiteral("f"));
  world.Select(kC, QStringLiteral("missing"));
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(kIn));
  EXPECT_EQ(world.Log(), QStringList(QStringLiteral("MOVE|C:\\f|D:\\in\\f")));
  EXPECT_EQ(world.operations.GoneAddresses(), QStringList(kC + QStringLiteral("\\f")));
}

TEST_F(TransferTest, ADriveIsNeverPasted) {
  clsClipBrd drive = ClipBrdOfNode(world.session.gIxoCtrls(), kC, TAG_DRIVE | TAG_HDD);
  world.state.clipboard.Add(drive, {});
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(kOne));
  EXPECT_TRUE(world.local.memory->Exists(QStringLiteral("C:\\f")));
  EXPECT_EQ(world.one.memory->Tree(), QStringList(QStringLiteral("in\\")));
}

// One place under two addresses

class OnePlaceTwiceTest : public TransferTest {
 protected:
  OnePlaceTwiceTest() {
    world.one.memory->AddFile(QStringLiteral("in\\f"), "on one");
    world.one.memory->AddFile(QStringLiteral("in\\sub\\g"), "below");
    world.Connect(QStringLiteral("Again"), world.one);
    before_ = world.one.memory->Tree();
  }
  ~OnePlaceTwiceTest() override {
    EXPECT_EQ(world.one.memory->Tree(), before_);
    for (const auto change :
         {FileSystemOperation::Write, FileSystemOperation::CreateFile, FileSystemOperation::CreateFolder,
          FileSystemOperation::Copy, FileSystemOperation::Remove}) {
      EXPECT_EQ(world.one.memory->CallCount(change), 0);
    }
    EXPECT_EQ(world.prompts.Texts(), QStringList(kMoveFailed));
    EXPECT_TRUE(world.Log().isEmpty());
  }

 private:
  QStringList before_;
};

TEST_F(OnePlaceTwiceTest, AFileIntoItsOwnFolderFails) {
  world.Select(kOne, QStringLiteral("f"));
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(QStringLiteral("Workspace\\Again\\in")));
}

TEST_F(OnePlaceTwiceTest, AFolderIntoItselfFails) {
  world.SelectFolder(QStringLiteral("Workspace\\Ctrl1"), QStringLiteral("in"));
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(QStringLiteral("Workspace\\Again\\in")));
}

TEST_F(OnePlaceTwiceTest, AFolderBelowItselfFails) {
  world.SelectFolder(QStringLiteral("Workspace\\Ctrl1"), QStringLiteral("in"));
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(QStringLiteral("Workspace\\Again\\in\\sub")));
}

TEST_F(OnePlaceTwiceTest, AFolderIntoItsParentFails) {
  world.SelectFolder(kOne, QStringLiteral("sub"));
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(QStringLiteral("Workspace\\Again\\in")));
}

TEST_F(TransferTest, AFolderBelowItselfThroughALinkFails) {
  world.local.memory->AddLink(QStringLiteral("D:\\link"), QStringLiteral("C:\\tree\\sub"));
  world.one.memory->AddFolder(QStringLiteral("other"));
  world.SelectFolder(kC, QStringLiteral("tree"));
  world.prompts.ExpectBox(kCopyFailed);
  EXPECT_FALSE(world.Copy(kD + QStringLiteral("\\link")));
  EXPECT_EQ(world.local.memory->CallCount(FileSystemOperation::Copy), 0);
}

TEST_F(TransferTest, AFileIntoItsOwnFolderThroughALinkFails) {
  world.local.memory->AddLink(QStringLiteral("D:\\link"), QStringLiteral("C:\\tree"));
  world.Select(kC + QStringLiteral("\\tree"), QStringLiteral("a"));
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(kD + QStringLiteral("\\link")));
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("C:\\tree\\a")), "aa");
}

TEST(TransferCaseTest, TheSecondOfTwoClashingNamesIsKept) {
  TransferWorld world;
  MemoryFileSystemOptions options;
  options.caseSensitive = false;
  const auto machine = EngineWorld::MakeMachine(options);
  world.Connect(QStringLiteral("Folding"), machine);
  machine.memory->AddFolder(QStringLiteral("in"));
  world.local.memory->AddFile(QStringLiteral("C:\\two\\A"), "upper");
  world.local.memory->AddFile(QStringLiteral("C:\\two\\a"), "lower");
  world.Select(kC + QStringLiteral("\\two"), QStringLiteral("A"));
  world.Select(kC + QStringLiteral("\\two"), QStringLiteral("a"));
  world.prompts.ExpectChoice(2);
  EXPECT_TRUE(world.Move(QStringLiteral("Workspace\\Folding\\in")));
  EXPECT_EQ(machine.memory->Content(QStringLiteral("in\\a")), "upper");
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("C:\\two\\a")), "lower");
  EXPECT_FALSE(world.local.memory->Exists(QStringLiteral("C:\\two\\A")));
}

TEST(TransferCaseTest, ClashingNamesInOneFolderAreBothKept) {
  TransferWorld world;
  MemoryFileSystemOptions options;
  options.caseSensitive = false;
  const auto machine = EngineWorld::MakeMachine(options);
  world.Connect(QStringLiteral("Folding"), machine);
  machine.memory->AddFolder(QStringLiteral("in"));
  world.local.memory->AddFile(QStringLiteral("C:\\two\\A"), "upper");
  world.local.memory->AddFile(QStringLiteral("C:\\two\\a"), "lower");
  world.SelectFolder(kC, QStringLiteral("two"));
  world.prompts.ExpectChoice(0);
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(QStringLiteral("Workspace\\Folding\\in")));
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("C:\\two\\A")), "upper");
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("C:\\two\\a")), "lower");
}

// A source that changes

class ChangingSourceTest : public TransferTest, public testing::WithParamInterface<bool> {
 protected:
  [[nodiscard]] static QString Into() { return GetParam() ? kOne : kIn; }
};

TEST_P(ChangingSourceTest, AFileThatChangesAfterTheCopyIsKept) {
  world.SelectFolder(kC, QStringLiteral("tree"));
  bool changed = false;
  world.local.faulty->SetHook([&](const FileSystemCall& call) {
    if (!changed && call.operation == FileSystemOperation::Remove) {
      ADD_FAILURE() << "deleted before it was seen";
    }
    const bool copied = world.one.memory->Exists(QStringLiteral("in\\tree\\sub\\b")) ||
                        world.local.memory->Exists(QStringLiteral("D:\\in\\tree\\sub\\b"));
    if (!changed && copied) {
      changed = true;
      // In place, by another program: of the same size, but later.
      world.local.memory->SetNow({world.local.memory->Now().msecs + 1});
      WriteFile(*world.local.memory, QStringLiteral("C:\\tree\\sub\\b"), "BBB");
    }
  });
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(Into()));
  EXPECT_TRUE(changed);
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("C:\\tree\\sub\\b")), "BBB");
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("C:\\tree\\a")), "aa");
  EXPECT_TRUE(world.Log().isEmpty());
}

TEST_P(ChangingSourceTest, AFileMadeDuringTheDeletionIsKept) {
  world.SelectFolder(kC, QStringLiteral("tree"));
  bool changed = false;
  world.local.faulty->SetHook([&](const FileSystemCall& call) {
    if (!changed && call.operation == FileSystemOperation::Remove) {
      changed = true;
      world.local.memory->AddFile(QStringLiteral("C:\\tree\\late"), "late");
    }
  });
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(Into()));
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("C:\\tree\\late")), "late");
}

TEST_P(ChangingSourceTest, AFileThatChangesDuringTheFlushIsKept) {
  const QString file = QStringLiteral("C:\\tree\\a");
  for (const QByteArray& changed : {QByteArray("aa and a line more"), QByteArray("AA")}) {
    world.local.memory->AddFile(file, "aa");
    world.state.clipboard.Clear();
    world.Select(kC + QStringLiteral("\\tree"), QStringLiteral("a"));
    world.local.memory->Vanish(QStringLiteral("D:\\in\\a"));
    world.one.memory->Vanish(QStringLiteral("in\\a"));
    bool flushed = false;
    const auto append = [&](const FileSystemCall& call) {
      if (!flushed && call.operation == FileSystemOperation::Flush) {
        flushed = true;
        world.local.memory->SetNow({world.local.memory->Now().msecs + 1});
        WriteFile(*world.local.memory, file, changed);
      }
    };
    world.local.faulty->SetHook(append);
    world.one.faulty->SetHook(append);
    world.prompts.ExpectBox(kMoveFailed);
    EXPECT_FALSE(world.Move(Into()));
    EXPECT_TRUE(flushed);
    EXPECT_EQ(world.local.memory->Content(file), changed);
  }
  EXPECT_TRUE(world.Log().isEmpty());
}

INSTANTIATE_TEST_SUITE_P(All, ChangingSourceTest, testing::Bool(), [](const auto& info) {
  return std::string(info.param ? "BetweenControllers" : "WithinOneController");
});

TEST_F(TransferTest, TheGaugeTellsTheFilesOfAFolder) {
  world.SelectFolder(kC, QStringLiteral("tree"));
  QStringList labels;
  world.one.faulty->SetHook([&](const FileSystemCall&) { labels.append(world.Gauge().GageLabel()); });
  EXPECT_TRUE(world.Copy(kOne));
  const QString within = QStringLiteral("tree\\");
  EXPECT_TRUE(std::any_of(labels.cbegin(), labels.cend(), [&within](const QString& label) {
    return label.startsWith(within) && label.contains(QStringLiteral(" of ")) &&
           (label.endsWith(QStringLiteral(" files")) || label.endsWith(QStringLiteral(" file")));
  })) << labels.join(QStringLiteral(", ")).toStdString();
  // When the bar advances, the label is the entry's name.
  EXPECT_EQ(world.Gauge().Labels().back(), QStringLiteral("tree"));
}

TEST_F(TransferTest, TheGaugeIsPaintedBeforeEachEntry) {
  world.Select(kC, QStringLiteral("f"));
  world.SelectFolder(kC, QStringLiteral("tree"));
  std::vector<qsizetype> painted;
  world.local.faulty->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Copy) {
      painted.push_back(world.Gauge().PaintedLabels().size());
    }
  });
  EXPECT_TRUE(world.Copy(kIn));
  EXPECT_EQ(painted, (std::vector<qsizetype>{1, 2}));
  EXPECT_EQ(world.Gauge().PaintedLabels(), (QStringList{QStringLiteral("f"), QStringLiteral("tree")}));
}

}  // namespace
}  // namespace trevane::test
