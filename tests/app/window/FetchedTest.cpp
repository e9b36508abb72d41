// Running files of a slow controller without programs of its own, and putting them back, in the real window.
#include "tests/app/window/WaitingWorld.h"

#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QTimer>

#include <string>

namespace trevane::test {
namespace {

using Hearing = ScriptedServer::Hearing;

const QString kFile = QStringLiteral("readme.txt");
const QString kAsked = QStringLiteral("'readme.txt' of 'Robot' was changed on this computer. Put it back?");
const QString kOffered = QStringLiteral(
    "'readme.txt' of 'Robot' was changed on this computer and is not put back yet. Put it back now?");
const QString kKept = QStringLiteral("Files that were changed on this computer are not put back.");

class FetchedWindow : public WaitingWorld {
 public:
  FetchedWindow() : WaitingWorld({}, {.execute = false}) { ShowRobot(); }

  /// Opens the file as a double click does; the copy.
  QString Run(const QString& name = kFile) {
    DoubleClickItem(name);
    EXPECT_FALSE(opened.isEmpty());
    return opened.value(opened.size() - 1);
  }
  /// A program writes to the copy, and is done with it.
  void Write(const QString& path, const QByteArray& content) {
    WriteFile(path, content);
    LookAgain();
    now += 1000;
  }
  /// The window has looked at the copies.
  void LookAgain(int times = 3) {
    QTimer timer;
    int turns = 0;
    QObject::connect(&timer, &QTimer::timeout, Window(), [&] { ++turns; });
    timer.start(260);
    EXPECT_TRUE(QTest::qWaitFor([&] { return turns >= times; }, 20'000));
  }
  [[nodiscard]] bool IsAsked(int times = 1) {
    return QTest::qWaitFor([&] { return prompts_.Asked().size() >= size_t(times) && !prompts_.IsAsking(); },
                           20'000);
  }
  [[nodiscard]] QStringList Kept() const {
    QStringList names;
    QDir place(InFolder("fetched"));
    for (const QString& run : place.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
      for (const QString& item : QDir(place.filePath(run)).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        names += EntriesOf(place.filePath(run) + u'/' + item);
      }
    }
    return names;
  }
  [[nodiscard]] QByteArray OnRobot(const QString& path = kFile) const { return robot->Content(path); }
  void CloseAndEnd() {
    EXPECT_TRUE(Window()->close());
    program_.reset();
  }
};

TEST(FetchedTest, AFileIsFetchedAndOpenedHere) {
  FetchedWindow world;
  const QString path = world.Run();
  EXPECT_EQ(ContentOf(path), "12345");
  EXPECT_EQ(QFileInfo(path).fileName(), kFile);
  world.CloseAndEnd();
  EXPECT_EQ(EntriesOf(world.InFolder("fetched")), QStringList());
  EXPECT_TRUE(world.prompts_.Asked().empty());
}

TEST(FetchedTest, AChangedFileIsPutBackAndShownAnew) {
  FetchedWindow world;
  const QString path = world.Run();
  world.prompts_.ExpectBox(kAsked, PromptAnswer::Yes);
  world.server->ClearCalls();
  world.Write(path, "changed");
  ASSERT_TRUE(world.IsAsked());
  EXPECT_EQ(world.prompts_.Asked().front().buttons, PromptButtons::YesNo);
  EXPECT_EQ(world.prompts_.Asked().front().defaultAnswer, PromptAnswer::No);
  EXPECT_EQ(world.OnRobot(), "changed");
  EXPECT_TRUE(world.server->Calls().contains(QStringLiteral("List ")));
  EXPECT_EQ(world.List().SelectedItems().size(), 1U);
  EXPECT_TRUE(world.Content("Trevane.log").contains("COPY"));
  world.LookAgain();
  EXPECT_EQ(world.prompts_.Asked().size(), 1U);
  world.CloseAndEnd();
  EXPECT_EQ(EntriesOf(world.InFolder("fetched")), QStringList());
}

TEST(FetchedTest, AnotherPlaceThatIsShownStays) {
  FetchedWindow world;
  const QString path = world.Run();
  world.ClickNode(WaitingWorld::Robot(QStringLiteral("programs")));
  world.prompts_.ExpectBox(kAsked, PromptAnswer::Yes);
  world.server->ClearCalls();
  world.Write(path, "changed");
  ASSERT_TRUE(world.IsAsked());
  EXPECT_EQ(world.OnRobot(), "changed");
  EXPECT_TRUE(world.server->Calls().filter(QStringLiteral("List")).isEmpty());
}

TEST(FetchedTest, NoKeepsItAndTheEndNamesIt) {
  FetchedWindow world;
  const QString path = world.Run();
  world.prompts_.ExpectBox(kAsked, PromptAnswer::No);
  world.Write(path, "changed");
  ASSERT_TRUE(world.IsAsked());
  world.LookAgain();
  EXPECT_EQ(world.prompts_.Asked().size(), 1U);
  EXPECT_EQ(world.OnRobot(), "12345");
  world.prompts_.ExpectBox(kKept);
  world.CloseAndEnd();
  ASSERT_EQ(world.prompts_.Asked().size(), 2U);
  const QString text = world.prompts_.Asked().back().informativeText;
  EXPECT_TRUE(text.contains(kFile));
  EXPECT_TRUE(text.contains(QDir::toNativeSeparators(QFileInfo(path).path()))) << text.toStdString();
  EXPECT_EQ(ContentOf(path), "changed");
}

TEST(FetchedTest, UnsavedEditsAreNamedAtTheEnd) {
  FetchedWindow world;
  const QString path = world.Run();
  WriteFile(QFileInfo(path).path() + QStringLiteral("/.readme.txt.swp"), "edits");
  world.prompts_.ExpectBox(QStringLiteral("Files that may hold changes are still on this computer."));
  world.CloseAndEnd();
  ASSERT_EQ(world.prompts_.Asked().size(), 1U);
  const QString text = world.prompts_.Asked().back().informativeText;
  EXPECT_TRUE(text.contains(QStringLiteral("unsaved work: .readme.txt.swp"))) << text.toStdString();
  EXPECT_TRUE(text.contains(QDir::toNativeSeparators(QFileInfo(path).path()))) << text.toStdString();
  EXPECT_EQ(ContentOf(path), "12345");
}

TEST(FetchedTest, ASignalNamesNothingAndKeepsIt) {
  FetchedWindow world;
  const QString path = world.Run();
  WriteFile(path, "changed");
  world.Window()->CloseUnattended();
  world.program_.reset();
  EXPECT_TRUE(world.prompts_.Asked().empty());
  EXPECT_EQ(ContentOf(path), "changed");
}

TEST(FetchedTest, TheNextConnectionOffersIt) {
  FetchedWindow world;
  const QString path = world.Run();
  WriteFile(path, "changed");
  world.Window()->CloseUnattended();
  world.program_.reset();
  // The threads of the first program have ended for good.
  world.context.controllers = std::make_shared<RemoteControllers>();
  world.Start();
  world.LookAgain();
  EXPECT_TRUE(world.prompts_.Asked().empty());
  world.prompts_.ExpectBox(kOffered, PromptAnswer::Yes);
  world.ShowRobot();
  ASSERT_TRUE(world.IsAsked());
  EXPECT_EQ(world.OnRobot(), "changed");
  world.LookAgain();
  EXPECT_EQ(world.Kept(), QStringList());
}

TEST(FetchedTest, NothingIsAskedDuringAWait) {
  FetchedWindow world;
  const QString path = world.Run();
  world.server->ClearCalls();
  world.server->HangAt(1, Hearing::ObeysCancel);
  world.WhenHanging([&] {
    world.Write(path, "changed");
    world.LookAgain();
    EXPECT_TRUE(world.prompts_.Asked().empty());
    world.prompts_.ExpectBox(kAsked, PromptAnswer::No);
    world.server->Release();
  });
  world.ClickNode(WaitingWorld::Robot(QStringLiteral("programs")));
  EXPECT_TRUE(world.acted);
  EXPECT_TRUE(world.IsAsked());
  world.prompts_.ExpectBox(kKept);
  world.CloseAndEnd();
}

TEST(FetchedTest, NothingIsAskedDuringAnotherQuestion) {
  FetchedWindow world;
  const QString path = world.Run();
  world.ClickItem(kFile);
  world.prompts_.onQuestion = [&](const AskedQuestion&) {
    world.prompts_.onQuestion = {};
    world.Write(path, "changed");
    world.LookAgain();
    EXPECT_EQ(world.prompts_.Asked().size(), 1U);
    world.prompts_.ExpectBox(kAsked, PromptAnswer::No);
  };
  world.prompts_.ExpectChoice(3);
  world.Window()->Dispatch(CommandId::Delete);
  EXPECT_TRUE(world.IsAsked(2));
  world.prompts_.ExpectBox(kKept);
  world.CloseAndEnd();
}

TEST(FetchedTest, NothingIsAskedWhileALabelIsEdited) {
  FetchedWindow world;
  const QString path = world.Run();
  world.Window()->Dispatch(CommandId::Rename);
  auto* const editor = world.List().findChild<QLineEdit*>(QStringLiteral("txtLabel"));
  ASSERT_NE(editor, nullptr);
  editor->setFocus();
  world.Write(path, "changed");
  world.LookAgain();
  EXPECT_TRUE(world.prompts_.Asked().empty());
  world.prompts_.ExpectBox(kAsked, PromptAnswer::No);
  QTest::keyClick(editor, Qt::Key_Escape);
  EXPECT_TRUE(world.IsAsked());
  world.prompts_.ExpectBox(kKept);
  world.CloseAndEnd();
}

TEST(FetchedTest, CancelAtAnyCallLeavesNothing) {
  int call = 1;
  for (bool acted = true; acted; ++call) {
    FetchedWindow world;
    world.server->HangAt(call, Hearing::ObeysCancel);
    world.WhenHanging([&] { world.PressKey(Qt::Key_Escape); });
    world.prompts_.AnswerAllBoxes(PromptAnswer::Ok);
    world.DoubleClickItem(kFile);
    acted = world.acted;
    if (acted) {
      ASSERT_EQ(world.prompts_.Texts(), QStringList{QStringLiteral("Failed in the Run() method.")}) << call;
      EXPECT_TRUE(world.prompts_.Asked().back().informativeText.endsWith(QStringLiteral("Cancelled.")));
      EXPECT_EQ(world.Kept(), QStringList());
      EXPECT_TRUE(world.opened.isEmpty());
    }
  }
  EXPECT_GT(call, 3);
}

TEST(FetchedTest, ALineThatDiesIsMadeAnewForReading) {
  FetchedWindow world;
  world.server->DropAt(3);
  EXPECT_EQ(ContentOf(world.Run()), "12345");
}

TEST(FetchedTest, ALineThatStaysDeadLeavesNothing) {
  FetchedWindow world;
  world.server->DropAt(3);
  world.server->RefuseOpening(error::kWin32Error + 1225);
  world.prompts_.ExpectBox(QStringLiteral("Failed in the Run() method."));
  world.DoubleClickItem(kFile);
  EXPECT_EQ(world.Kept(), QStringList());
}

TEST(FetchedTest, ALineThatDiesWhilePuttingBackKeepsBoth) {
  int call = 1;
  for (bool failed = true; failed; ++call) {
    FetchedWindow world;
    const QString path = world.Run();
    world.prompts_.ExpectBox(kAsked, PromptAnswer::Yes);
    world.prompts_.AnswerAllBoxes(PromptAnswer::Ok);
    world.server->ClearCalls();
    world.server->DropAt(
        call, call % 2 == 0 ? ScriptedServer::Drop::AfterTheCall : ScriptedServer::Drop::BeforeTheCall);
    world.Write(path, "changed");
    ASSERT_TRUE(world.IsAsked());
    EXPECT_EQ(ContentOf(path), "changed");
    const QByteArray there = world.OnRobot();
    EXPECT_TRUE(there == "12345" || there == "changed") << there.toStdString();
    const QStringList texts = world.prompts_.Texts();
    const bool isDropped = world.server->RoundTrips() >= call;
    if (texts.contains(QStringLiteral("Failed to put the file back."))) {
      EXPECT_TRUE(world.prompts_.Asked().back().informativeText.contains(QDir::toNativeSeparators(path)));
    } else {
      EXPECT_EQ(there, "changed") << call;
    }
    failed = isDropped && call < 40;
  }
  EXPECT_GT(call, 5);
}

TEST(FetchedTest, PuttingBackCanBeCancelled) {
  FetchedWindow world;
  const QString path = world.Run();
  world.server->ClearCalls();
  world.server->HangAt(4, Hearing::ObeysCancel);
  world.WhenHanging([&] { world.PressKey(Qt::Key_Escape); });
  world.prompts_.ExpectBox(kAsked, PromptAnswer::Yes);
  world.prompts_.ExpectBox(QStringLiteral("Failed to put the file back."));
  world.Write(path, "changed");
  ASSERT_TRUE(world.IsAsked(2));
  EXPECT_TRUE(world.acted);
  EXPECT_EQ(world.OnRobot(), "12345");
  EXPECT_EQ(ContentOf(path), "changed");
  world.prompts_.ExpectBox(kKept);
  world.CloseAndEnd();
}

TEST(FetchedTest, ClosingWhilePuttingBackCloses) {
  FetchedWindow world;
  const QString path = world.Run();
  bool unloaded = false;
  QObject::connect(world.Window(), &frmFileMgr::Unloaded, world.Window(), [&] { unloaded = true; });
  world.server->ClearCalls();
  world.server->HangAt(4, Hearing::ObeysCancel);
  world.prompts_.ExpectBox(kAsked, PromptAnswer::Yes);
  world.WhenHanging([&] {
    world.prompts_.ExpectBox(kKept);
    EXPECT_FALSE(world.Window()->close());
  });
  world.Write(path, "changed");
  EXPECT_TRUE(QTest::qWaitFor([&] { return unloaded; }, 20'000));
  EXPECT_TRUE(world.acted);
  EXPECT_EQ(world.OnRobot(), "12345");
  EXPECT_EQ(ContentOf(path), "changed");
}

TEST(FetchedTest, AChangeOnBothSidesIsSaidFirst) {
  for (const PromptAnswer answer : {PromptAnswer::No, PromptAnswer::Yes}) {
    FetchedWindow world;
    const QString path = world.Run();
    world.robot->AddFile(kFile, "by somebody else");
    world.prompts_.ExpectBox(kAsked, PromptAnswer::Yes);
    world.prompts_.ExpectBox(
        QStringLiteral("'readme.txt' was changed on 'Robot', too, since it was fetched. Replace it?"),
        answer);
    world.Write(path, "changed");
    ASSERT_TRUE(world.IsAsked(2));
    const bool isReplaced = answer == PromptAnswer::Yes;
    EXPECT_EQ(world.OnRobot(), isReplaced ? "changed" : "by somebody else");
    if (!isReplaced) {
      world.prompts_.ExpectBox(kKept);
    }
    world.CloseAndEnd();
  }
}

TEST(FetchedTest, ADisconnectedControllerIsSaid) {
  FetchedWindow world;
  const QString path = world.Run();
  world.prompts_.ExpectBox(PromptAnswer::Ok);
  world.ClickNode(WaitingWorld::Robot());
  world.Window()->Dispatch(CommandId::Disconnect);
  world.prompts_.ForgetAsked();
  world.prompts_.ExpectBox(kAsked, PromptAnswer::Yes);
  world.prompts_.ExpectBox(QStringLiteral("Failed to put the file back."));
  world.Write(path, "changed");
  ASSERT_TRUE(world.IsAsked(2));
  EXPECT_EQ(ContentOf(path), "changed");
  EXPECT_TRUE(world.prompts_.Asked().back().informativeText.contains(QStringLiteral("not connected")));
  // And it is offered when it is back.
  world.prompts_.ForgetAsked();
  world.prompts_.ExpectBox(kOffered, PromptAnswer::Yes);
  world.Connect();
  ASSERT_TRUE(world.IsAsked());
  EXPECT_EQ(world.OnRobot(), "changed");
}

TEST(FetchedTest, RunningAChangedFileAsksWhichOne) {
  FetchedWindow world;
  const QString question = QStringLiteral(
      "'readme.txt' was changed on this computer and is not put back. Open the changed file? No opens the "
      "one on "
      "the controller.");
  const QString path = world.Run();
  WriteFile(path, "changed");
  world.prompts_.ExpectBox(question, PromptAnswer::Yes);
  EXPECT_EQ(world.Run(), path);
  world.prompts_.ExpectBox(question, PromptAnswer::No);
  const QString other = world.Run();
  EXPECT_NE(other, path);
  EXPECT_EQ(ContentOf(other), "12345");
  EXPECT_EQ(ContentOf(path), "changed");
  world.prompts_.ExpectBox(kKept);
  world.CloseAndEnd();
}

TEST(FetchedTest, TheRunCommandOpensAllThatAreSelected) {
  FetchedWindow world;
  world.robot->AddFile(QStringLiteral("second.txt"), "67");
  world.Window()->Dispatch(CommandId::Refresh);
  world.ClickItem(kFile);
  world.ClickItem(QStringLiteral("second.txt"), Qt::LeftButton, Qt::ControlModifier);
  world.Window()->Dispatch(CommandId::Run);
  EXPECT_EQ(world.opened.size(), 2);
}

TEST(FetchedTest, AFolderIsNotFetched) {
  FetchedWindow world;
  world.ClickNode(WaitingWorld::Robot(QStringLiteral("logs")));
  world.prompts_.ExpectBox(QStringLiteral("Failed in the Run() method."));
  world.Tree().setFocus();
  world.Window()->Dispatch(CommandId::Run);
  EXPECT_TRUE(world.opened.isEmpty());
  EXPECT_EQ(world.Kept(), QStringList());
}

}  // namespace
}  // namespace trevane::test
