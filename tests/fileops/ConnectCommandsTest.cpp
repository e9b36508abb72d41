#include "fileops/CommandHost.h"
#include "fileops/ConnectCommands.h"
#include "tests/support/ConnectWorld.h"
#include "views/list/FileListView.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

class ConnectCommandsTest : public testing::Test, private CommandHost {
 protected:
  ConnectCommandsTest() {
    world_.log.Clear();
    listView_.SetFiles(&world_.list);
  }

  bool IsButtonOn() const { return button_; }
  bool IsItemOn() const { return item_; }

  void DisconnectFromTree() {
    active_ = ActiveSide::Tree;
    commands_.Disconnect();
  }
  void DisconnectFromList(const QStringList& names) {
    active_ = ActiveSide::List;
    listView_.clearSelection();
    for (const QString& name : names) {
      listView_.selectionModel()->select(world_.list.IndexOf(world_.list.FindByText(name)),
                                         QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    ASSERT_EQ(listView_.SelectedItems().size(), static_cast<std::size_t>(names.size()));
    commands_.Disconnect();
  }

  ConnectWorld world_;
  FileListView listView_{nullptr};
  ActiveSide active_ = ActiveSide::Neither;
  /// What the dialog does and answers.
  std::function<qint32()> dialog_;
  bool button_ = false;
  bool item_ = false;

 private:
  [[nodiscard]] ActiveSide Active() const override { return active_; }
  void FocusActiveView() override {}
  void EnablePasteButton(bool /*enabled*/) override {}
  void EnableDisconnectButton(bool enabled) override { button_ = enabled; }
  void EnableDisconnectItem(bool enabled) override { item_ = enabled; }
  void ShowStatus(const QString& /*text*/) override {}

 protected:
  ConnectCommands commands_{{.connector = world_.connector,
                             .prompts = world_.prompts,
                             .navigator = world_.navigator,
                             .tree = world_.tree,
                             .listView = listView_,
                             .host = *this,
                             .showConnectDialog = [this] { return dialog_(); }}};
};

const QString kOne = u"Disconnect Selected Controller. Are you sure?"_s;
const QString kSome = u"Disconnect Selected Controllers. Are you sure?"_s;
const QString kAll = u"Disconnect All IxoControllers. Are you sure?"_s;

TEST_F(ConnectCommandsTest, TheControllerThatWasConnectedIsDisplayed) {
  world_.Connect(u"Z"_s);
  dialog_ = [this] { return world_.connector.ConnectController(ConnectWorld::Record(u"A"_s)).number; };
  commands_.Connect();
  EXPECT_EQ(world_.navigator.CurrentAddress(), u"Workspace\\A"_s);
  EXPECT_EQ(world_.Items(), QStringList{u"prog"_s});
  EXPECT_TRUE(IsButtonOn());
  world_.ExpectConsistent();
}

TEST_F(ConnectCommandsTest, TheControllerThatTookAnErrorNodesPlaceIsDisplayed) {
  world_.AddErrorNode(u"A"_s);
  world_.Connect(u"Z"_s);
  world_.Display(u"Workspace\\Z"_s);
  dialog_ = [this] { return world_.connector.ConnectController(ConnectWorld::Record(u"A"_s)).number; };
  commands_.Connect();
  EXPECT_EQ(world_.navigator.CurrentAddress(), u"Workspace\\A"_s);
  EXPECT_EQ(world_.Nodes(), (QStringList{u"Z"_s, u"A"_s}));
}

TEST_F(ConnectCommandsTest, AfterACancelAndAfterAnErrorNothingIsSelected) {
  world_.Connect(u"Z"_s);
  for (const qint32 result : {qint32{-1}, error::kLogonFailure}) {
    dialog_ = [result] { return result; };
    commands_.Connect();
    EXPECT_EQ(world_.navigator.CurrentAddress(), u"Workspace"_s);
    EXPECT_FALSE(IsButtonOn());
  }
}

TEST_F(ConnectCommandsTest, DisconnectingFromTheTreeAsksAndShowsTheWorkspace) {
  world_.Connect(u"A"_s);
  world_.Connect(u"B"_s);
  world_.Display(u"Workspace\\A"_s);
  button_ = item_ = true;
  world_.prompts.ExpectBox(kOne, PromptAnswer::Ok);
  DisconnectFromTree();
  EXPECT_EQ(world_.prompts.Asked().front().icon, PromptIcon::Question);
  EXPECT_EQ(world_.prompts.Asked().front().buttons, PromptButtons::OkCancel);
  EXPECT_EQ(world_.prompts.Asked().front().title, QString());
  EXPECT_EQ(world_.Registered(), QStringList{u"B"_s});
  EXPECT_EQ(world_.navigator.CurrentAddress(), u"Workspace"_s);
  EXPECT_EQ(world_.Items(), (QStringList{u"My Computer"_s, u"B"_s}));
  EXPECT_EQ(world_.log.Lines(), QStringList{u"DISCONNECT|A"_s});
  EXPECT_FALSE(IsButtonOn());
  EXPECT_FALSE(IsItemOn());
  world_.ExpectConsistent();
}

TEST_F(ConnectCommandsTest, FromTheTreeOnlyAControllerIsDisconnected) {
  world_.Connect(u"A"_s);
  world_.Display(u"Workspace\\A"_s);
  for (const QString& place : {u"Workspace"_s, u"Workspace\\My Computer"_s, u"Workspace\\My Computer\\C:"_s,
                               u"Workspace\\A\\prog"_s}) {
    world_.Display(place);
    DisconnectFromTree();  // Nobody is asked.
    EXPECT_EQ(world_.navigator.CurrentAddress(), place);
  }
  EXPECT_EQ(world_.Registered(), QStringList{u"A"_s});
}

TEST_F(ConnectCommandsTest, CancellingEitherQuestionChangesNothing) {
  world_.Connect(u"A"_s);
  world_.Display(u"Workspace"_s);
  world_.prompts.ExpectBox(kSome, PromptAnswer::Cancel);
  DisconnectFromList({u"A"_s});
  world_.prompts.ExpectBox(kAll, PromptAnswer::Cancel);
  commands_.DisconnectAll();
  world_.Display(u"Workspace\\A"_s);
  button_ = item_ = true;
  world_.prompts.ExpectBox(kOne, PromptAnswer::Cancel);
  DisconnectFromTree();
  EXPECT_EQ(world_.navigator.CurrentAddress(), u"Workspace\\A"_s);
  EXPECT_EQ(world_.Registered(), QStringList{u"A"_s});
  EXPECT_TRUE(world_.log.Lines().isEmpty());
  EXPECT_TRUE(IsButtonOn());
  EXPECT_TRUE(IsItemOn());
}

TEST_F(ConnectCommandsTest, ThreeControllersOfTheListAreDisconnectedInListOrder) {
  for (const QString& name : {u"C"_s, u"A"_s, u"B"_s, u"D"_s}) {
    world_.Connect(name);
  }
  world_.Display(u"Workspace"_s);
  world_.prompts.ExpectBox(kSome, PromptAnswer::Ok);
  DisconnectFromList({u"A"_s, u"My Computer"_s, u"B"_s, u"C"_s});
  EXPECT_EQ(world_.log.Lines(), (QStringList{u"DISCONNECT|C"_s, u"DISCONNECT|A"_s, u"DISCONNECT|B"_s}));
  EXPECT_EQ(world_.Items(), (QStringList{u"My Computer"_s, u"D"_s}));
  world_.ExpectConsistent();
}

TEST_F(ConnectCommandsTest, AFailedDisconnectionStopsTheOthers) {
  for (const QString& name : {u"A"_s, u"B"_s, u"C"_s})
    world_.Connect(name);
  world_.Display(u"Workspace"_s);
  world_.engine->Arm(2);
  world_.prompts.ExpectBox(kSome, PromptAnswer::Ok);
  DisconnectFromList({u"A"_s, u"B"_s, u"C"_s});
  world_.engine->Disarm();
  EXPECT_EQ(world_.Registered(), (QStringList{u"B"_s, u"C"_s}));
  EXPECT_EQ(world_.log.Lines(), QStringList{u"DISCONNECT|A"_s});
  world_.ExpectConsistent();
}

TEST_F(ConnectCommandsTest, AnErrorNodeIsTakenAwayAndNothingElse) {
  world_.Connect(u"A"_s);
  world_.AddErrorNode(u"Bad"_s);
  world_.Display(u"Workspace"_s);
  world_.prompts.ExpectBox(kSome, PromptAnswer::Ok);
  DisconnectFromList({u"Bad"_s});
  EXPECT_EQ(world_.Nodes(), QStringList{u"A"_s});
  EXPECT_TRUE(world_.log.Lines().isEmpty());
  world_.ExpectConsistent();
}

TEST_F(ConnectCommandsTest, WhatIsDisconnectedIsFixedBeforeTheQuestion) {
  world_.Connect(u"A"_s);
  world_.Connect(u"B"_s);
  world_.Display(u"Workspace\\A"_s);
  world_.prompts.onQuestion = [this](const AskedQuestion&) { world_.Display(u"Workspace\\B"_s); };
  world_.prompts.ExpectBox(kOne, PromptAnswer::Ok);
  DisconnectFromTree();
  EXPECT_EQ(world_.Registered(), QStringList{u"B"_s});
}

TEST_F(ConnectCommandsTest, DisconnectAllLeavesTheLocalControllerAndShowsTheWorkspace) {
  world_.Connect(u"A"_s);
  world_.Connect(u"B"_s);
  world_.AddErrorNode(u"Bad"_s);
  world_.Display(u"Workspace\\B"_s);
  world_.prompts.ExpectBox(kAll, PromptAnswer::Ok);
  commands_.DisconnectAll();
  EXPECT_EQ(world_.log.Lines(), (QStringList{u"DISCONNECT|A"_s, u"DISCONNECT|B"_s}));
  EXPECT_TRUE(world_.Nodes().isEmpty());
  EXPECT_EQ(world_.Items(), QStringList{u"My Computer"_s});
  world_.ExpectConsistent();
  world_.Display(u"Workspace\\My Computer\\C:"_s);
  EXPECT_EQ(world_.Items(), QStringList{u"Programs"_s});
}

TEST_F(ConnectCommandsTest, EveryFailingCallLeavesAUsableWindow) {
  world_.prompts.AnswerAllBoxes(PromptAnswer::Ok);
  for (const FaultSpan span : {FaultSpan::Once, FaultSpan::FromThenOn}) {
    bool wentWrong = true;
    for (int call = 1; wentWrong; ++call) {
      SCOPED_TRACE(call);
      ASSERT_LT(call, 100);
      world_.prompts.ForgetAsked();
      world_.log.Clear();
      qint32 result = -1;
      dialog_ = [&] {
        return result = world_.connector.ConnectController(ConnectWorld::Record(u"N%1"_s.arg(call))).number;
      };
      world_.engine->Arm(call, span);
      commands_.Connect();
      wentWrong = world_.engine->FaultCount() > 0;
      world_.ExpectConsistent();
      EXPECT_EQ(world_.log.Lines().size(), result == 0 ? 1 : 0);
      world_.engine->Disarm();
      commands_.DisconnectAll();
      world_.ExpectConsistent();
      EXPECT_TRUE(world_.Registered().isEmpty());
    }
  }
}

}  // namespace
}  // namespace trevane::test
