// Both controllers of a copy ask the user something.
#include "tests/app/window/WaitingWorld.h"

#include <atomic>

namespace trevane::test {
namespace {

const QString kCell = QStringLiteral("Workspace\\Cell");

class TwoQuestionsTest : public testing::Test {
 protected:
  TwoQuestionsTest() {
    // Pieces are read ahead and written behind.
    world_.robot->AddFile(QStringLiteral("large.dat"), QByteArray(3 * 1024 * 1024, 'x'));
    world_.ShowRobot("both.fmg");
    world_.ClickItem(QStringLiteral("large.dat"));
    world_.Window()->Dispatch(CommandId::Copy);
    world_.ClickNode(kCell);
    world_.prompts_.AnswerAllBoxes(PromptAnswer::Ok);
    world_.prompts_.onQuestion = [this](const AskedQuestion& question) {
      // The call that shows the place anew may ask, too.
      if (!question.text.startsWith(QStringLiteral("Certificate")) ||
          !world_.prompts_.RecordedGauge().IsVisible()) {
        return;
      }
      EXPECT_EQ(open_++, 0);
      EXPECT_TRUE(world_.shippedWaiter.IsWaiting());
      ++asked_;
      if (act_) {
        act_();
      }
      --open_;
    };
  }

  /// `call` counts the round trips of each controller.
  void AskBothAt(int robot, int cell) {
    const auto ask = [](UserPrompts& prompts) {
      static_cast<void>(prompts.MessageBox(QStringLiteral("Certificate?"), PromptIcon::Question));
    };
    world_.server->AskAt(robot, ask);
    world_.cellServer->AskAt(cell, ask);
  }
  /// The round trip of the first piece of each.
  void AskBothAtPieces() {
    WaitingWorld trial;
    trial.robot->AddFile(QStringLiteral("large.dat"), QByteArray(3 * 1024 * 1024, 'x'));
    trial.ShowRobot("both.fmg");
    trial.ClickItem(QStringLiteral("large.dat"));
    trial.Window()->Dispatch(CommandId::Copy);
    trial.ClickNode(kCell);
    trial.server->ClearCalls();
    trial.cellServer->ClearCalls();
    trial.Window()->Dispatch(CommandId::Paste);
    const auto first = [](const QStringList& calls, const QString& what) {
      for (qsizetype i = 0; i < calls.size(); ++i) {
        if (calls[i].contains(what)) {
          return static_cast<int>(i) + 1;
        }
      }
      ADD_FAILURE() << calls.join(u'\n').toStdString();
      return 1;
    };
    AskBothAt(first(trial.server->Calls(), QStringLiteral("ReadPiece")) + 1,
              first(trial.cellServer->Calls(), QStringLiteral("WritePiece")));
  }
  void Paste() {
    world_.Window()->Dispatch(CommandId::Paste);
    world_.Settle();
  }
  [[nodiscard]] bool HasArrived() { return world_.cell->Find(QStringLiteral("large.dat")).has_value(); }
  /// Nothing is left of the copy.
  void ExpectNothingArrived() { EXPECT_EQ(world_.cell->Tree(), QStringList()); }

  WaitingWorld world_;
  std::function<void()> act_;
  int open_ = 0;
  int asked_ = 0;
};

TEST_F(TwoQuestionsTest, StandOneAfterTheOther) {
  AskBothAtPieces();
  Paste();
  EXPECT_EQ(asked_, 2);
  EXPECT_TRUE(HasArrived());
  EXPECT_EQ(world_.server->Answered(), true);
  EXPECT_EQ(world_.cellServer->Answered(), true);
}

TEST_F(TwoQuestionsTest, ComeInTheFirstMomentOfTheirCalls) {
  // No event has run when the first call of each side asks.
  AskBothAt(1, 1);
  Paste();
  EXPECT_EQ(asked_, 2);
  EXPECT_TRUE(HasArrived());
}

TEST_F(TwoQuestionsTest, CancelOfTheGaugeAnswersTheOther) {
  AskBothAtPieces();
  act_ = [this] { world_.prompts_.RecordedGauge().ClickCancel(); };
  Paste();
  EXPECT_EQ(asked_, 1);
  ExpectNothingArrived();
}

TEST_F(TwoQuestionsTest, ClosingAnswersTheOther) {
  AskBothAtPieces();
  bool unloaded = false;
  QObject::connect(world_.Window(), &frmFileMgr::Unloaded, world_.Window(), [&] { unloaded = true; });
  act_ = [this] { EXPECT_FALSE(world_.Window()->close()); };
  Paste();
  EXPECT_TRUE(QTest::qWaitFor([&] { return unloaded; }, 30'000));
  EXPECT_EQ(asked_, 1);
  EXPECT_TRUE(world_.stoppedAll);
  ExpectNothingArrived();
}

TEST_F(TwoQuestionsTest, DisconnectIsRefusedMeanwhile) {
  AskBothAtPieces();
  act_ = [this] {
    world_.Window()->Dispatch(CommandId::Disconnect);
    world_.Window()->Dispatch(CommandId::Connect);
  };
  Paste();
  EXPECT_EQ(asked_, 2);
  EXPECT_TRUE(HasArrived());
  EXPECT_EQ(world_.program_->Session().gIxoCtrls().Count(), 3);
}

}  // namespace
}  // namespace trevane::test
