#include "fileops/CommandHost.h"
#include "fileops/ConnectCommands.h"
#include "tests/support/ConnectWorld.h"
#include "views/list/FileListView.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

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
  /// Stands in for the connect dialog and returns its result.
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

const QString kOne = QStringLiteral("Disconnect Selected Controller. Are you sure?");
const QString kSome = QStringLiteral("Disconnect Selected Controllers. Are you sure?");
const QString kAll = QStringLiteral("Disconnect All IxoControllers. Are you sure?");

TEST_F(ConnectCommandsTest, TheControllerThatWasConnectedIsDisplayed) {
  world_.Connect(QStringLiteral("Z"));
  dialog_ = [this] {
    return world_.connector.ConnectController(ConnectWorld::Record(QStringLiteral("A"))).number;
  };
  commands_.Connect();
  EXPECT_EQ(world_.navigator.CurrentAddress(), QStringLiteral("Workspace\\A"));
  EXPECT_EQ(world_.Items(), QStringList{QStringLiteral("prog")});
  EXPECT_TRUE(IsButtonOn());
  world_.ExpectConsistent();
}

TEST_F(ConnectCommandsTest, ConnectingReplacesAnErrorNode) {
  world_.AddErrorNode(QStringLiteral("A"));
  world_.Connect(QStringLiteral("Z"));
  world_.Display(QStringLiteral("Workspace\\Z"));
  dialog_ = [this] {
    return world_.connector.ConnectController(ConnectWorld::Record(QStringLiteral("A"))).number;
  };
  commands_.Connect();
  EXPECT_EQ(world_.navigator.CurrentAddress(), QStringLiteral("Workspace\\A"));
  EXPECT_EQ(world_.Nodes(), (QStringList{QStringLiteral("Z"), QStringLiteral("A")}));
}

TEST_F(ConnectCommandsTest, FailedConnectsSelectNothing) {
  world_.Connect(QStringLiteral("Z"));
  for (const qint32 result : {qint32{-1}, error::kLogonFailure}) {
    dialog_ = [result] { return result; };
    commands_.Connect();
    EXPECT_EQ(world_.navigator.CurrentAddress(), QStringLiteral("Workspace"));
    EXPECT_FALSE(IsButtonOn());
  }
}

TEST_F(ConnectCommandsTest, DisconnectFromTheTreeShowsTheWorkspace) {
  world_.Connect(QStringLiteral("A"));
  world_.Connect(QStringLiteral("B"));
  world_.Display(QStringLiteral("Workspace\\A"));
  button_ = item_ = true;
  world_.prompts.ExpectBox(kOne, PromptAnswer::Ok);
  DisconnectFromTree();
  EXPECT_EQ(world_.prompts.Asked().front().icon, PromptIcon::Question);
  EXPECT_EQ(world_.prompts.Asked().front().buttons, PromptButtons::OkCancel);
  EXPECT_EQ(world_.prompts.Asked().front().title, QString());
  EXPECT_EQ(world_.Registered(), QStringList{QStringLiteral("B")});
  EXPECT_EQ(world_.navigator.CurrentAddress(), QStringLiteral("Workspace"));
  EXPECT_EQ(world_.Items(), (QStringList{QStringLiteral("My Computer"), QStringLiteral("B")}));
  EXPECT_EQ(world_.log.Lines(), QStringList{QStringLiteral("DISCONNECT|A")});
  EXPECT_FALSE(IsButtonOn());
  EXPECT_FALSE(IsItemOn());
  world_.ExpectConsistent();
}

TEST_F(ConnectCommandsTest, FromTheTreeOnlyAControllerIsDisconnected) {
  world_.Connect(QStringLiteral("A"));
  world_.Display(QStringLiteral("Workspace\\A"));
  for (const QString& place :
       {QStringLiteral("Workspace"), QStringLiteral("Workspace\\My Computer"),
        QStringLiteral("Workspace\\My Computer\\C:"), QStringLiteral("Workspace\\A\\prog")}) {
    world_.Display(place);
    DisconnectFromTree();  // Without a question.
    EXPECT_EQ(world_.navigator.CurrentAddress(), place);
  }
  EXPECT_EQ(world_.Registered(), QStringList{QStringLiteral("A")});
}

TEST_F(ConnectCommandsTest, CancellingEitherQuestionChangesNothing) {
  world_.Connect(QStringLiteral("A"));
  world_.Display(QStringLiteral("Workspace"));
  world_.prompts.ExpectBox(kSome, PromptAnswer::Cancel);
  DisconnectFromList({QStringLiteral("A")});
  world_.prompts.ExpectBox(kAll, PromptAnswer::Cancel);
  commands_.DisconnectAll();
  world_.Display(QStringLiteral("Workspace\\A"));
  button_ = item_ = true;
  world_.prompts.ExpectBox(kOne, PromptAnswer::Cancel);
  DisconnectFromTree();
  EXPECT_EQ(world_.navigator.CurrentAddress(), QStringLiteral("Workspace\\A"));
  EXPECT_EQ(world_.Registered(), QStringList{QStringLiteral("A")});
  EXPECT_TRUE(world_.log.Lines().isEmpty());
  EXPECT_TRUE(IsButtonOn());
  EXPECT_TRUE(IsItemOn());
}

TEST_F(ConnectCommandsTest, ControllersAreDisconnectedInListOrder) {
  for (const QString& name :
       {QStringLiteral("C"), QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("D")}) {
    world_.Connect(name);
  }
  world_.Display(QStringLiteral("Workspace"));
  world_.prompts.ExpectBox(kSome, PromptAnswer::Ok);
  DisconnectFromList(
      {QStringLiteral("A"), QStringLiteral("My Computer"), QStringLiteral("B"), QStringLiteral("C")});
  EXPECT_EQ(world_.log.Lines(), (QStringList{QStringLiteral("DISCONNECT|C"), QStringLiteral("DISCONNECT|A"),
                                             QStringLiteral("DISCONNECT|B")}));
  EXPECT_EQ(world_.Items(), (QStringList{QStringLiteral("My Computer"), QStringLiteral("D")}));
  world_.ExpectConsistent();
}

TEST_F(ConnectCommandsTest, AFailedDisconnectionStopsTheOthers) {
  for (const QString& name : {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}) {
    world_.Connect(name);
  }
  world_.Display(QStringLiteral("Workspace"));
  world_.engine->Arm(2);
  world_.prompts.ExpectBox(kSome, PromptAnswer::Ok);
  DisconnectFromList({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")});
  world_.engine->Disarm();
  EXPECT_EQ(world_.Registered(), (QStringList{QStringLiteral("B"), QStringLiteral("C")}));
  EXPECT_EQ(world_.log.Lines(), QStringList{QStringLiteral("DISCONNECT|A")});
  world_.ExpectConsistent();
}

TEST_F(ConnectCommandsTest, DisconnectingAnErrorNodeRemovesIt) {
  world_.Connect(QStringLiteral("A"));
  world_.AddErrorNode(QStringLiteral("Bad"));
  world_.Display(QStringLiteral("Workspace"));
  world_.prompts.ExpectBox(kSome, PromptAnswer::Ok);
  DisconnectFromList({QStringLiteral("Bad")});
  EXPECT_EQ(world_.Nodes(), QStringList{QStringLiteral("A")});
  EXPECT_TRUE(world_.log.Lines().isEmpty());
  world_.ExpectConsistent();
}

TEST_F(ConnectCommandsTest, TheSelectionIsReadBeforeTheQuestion) {
  world_.Connect(QStringLiteral("A"));
  world_.Connect(QStringLiteral("B"));
  world_.Display(QStringLiteral("Workspace\\A"));
  world_.prompts.onQuestion = [this](const AskedQuestion&) {
    world_.Display(QStringLiteral("Workspace\\B"));
  };
  world_.prompts.ExpectBox(kOne, PromptAnswer::Ok);
  DisconnectFromTree();
  EXPECT_EQ(world_.Registered(), QStringList{QStringLiteral("B")});
}

TEST_F(ConnectCommandsTest, DisconnectAllKeepsTheLocalController) {
  world_.Connect(QStringLiteral("A"));
  world_.Connect(QStringLiteral("B"));
  world_.AddErrorNode(QStringLiteral("Bad"));
  world_.Display(QStringLiteral("Workspace\\B"));
  world_.prompts.ExpectBox(kAll, PromptAnswer::Ok);
  commands_.DisconnectAll();
  EXPECT_EQ(world_.log.Lines(),
            (QStringList{QStringLiteral("DISCONNECT|A"), QStringLiteral("DISCONNECT|B")}));
  EXPECT_TRUE(world_.Nodes().isEmpty());
  EXPECT_EQ(world_.Items(), QStringList{QStringLiteral("My Computer")});
  world_.ExpectConsistent();
  world_.Display(QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_EQ(world_.Items(), QStringList{QStringLiteral("Programs")});
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
        return result =
                   world_.connector.ConnectController(ConnectWorld::Record(QStringLiteral("N%1").arg(call)))
                       .number;
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
