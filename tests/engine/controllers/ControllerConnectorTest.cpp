#include "base/RunTimeError.h"
#include "engine/controllers/ControllerConnector.h"
#include "engine/model/IxoController.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SessionWorld.h"

#include <gtest/gtest.h>

#include <memory>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

/// Controllers in the views, as names in order; "!" before one that failed to connect.
class RecordingViews final : public ControllerDisplay {
 public:
  bool AddControllerNode(const clsIxoCtrl& ctrl, bool failed) override {
    if (refuse)
      return false;
    nodes += (failed ? u"!"_s : QString()) + ctrl.RealCtrlName();
    return true;
  }
  bool AddControllerItem(const clsIxoCtrl& ctrl, bool failed) override {
    items += (failed ? u"!"_s : QString()) + ctrl.RealCtrlName();
    return true;
  }
  void RemoveControllerNode(const QString& nodePath) override {
    const QString name = nodePath.section(u'\\', 1);
    if (!nodes.removeOne(name) && !nodes.removeOne(u'!' + name))
      throw RunTimeError(error::kNoSuchKey, u"no node"_s);
  }
  void RemoveControllerItem(const QString& ctrlName) override {
    if (!items.removeOne(ctrlName))
      throw RunTimeError(error::kNoSuchKey, u"no item"_s);
  }
  bool IsErrorNode(const QString& nodePath) const override {
    return nodes.contains(u'!' + nodePath.section(u'\\', 1));
  }
  void RemoveErrorNodes() override {
    nodes.removeIf([](const QString& name) { return name.startsWith(u'!'); });
  }
  void ClearProgressText() override { ++cleared; }

  QStringList nodes;
  QStringList items;
  bool refuse = false;
  int cleared = 0;
};

class ControllerConnectorTest : public testing::Test {
 protected:
  ControllerConnectorTest() {
    cell_->AddFolder(u"first\\second"_s);
    cell_->AddFolder(u"a/b"_s);
    world_.Open({ProviderOf(u"IxoProv.LocalFile"_s, local_), ProviderOf(u"IxoProv.Cell"_s, cell_)});
  }

  static std::shared_ptr<clsIxoCtrl> Record(const QString& name, const QString& root = u"/"_s) {
    auto record = std::make_shared<clsIxoCtrl>();
    record->SetCtrlName(name);
    record->SetProvName(u"IxoProv.Cell"_s);
    record->SetMachineName(u"machine"_s);
    record->SetCtrlOption(u"option"_s);
    record->SetRoot(root);
    return record;
  }

  qint32 Connect(const std::shared_ptr<clsIxoCtrl>& record) {
    const ConnectOutcome result = connector_.ConnectController(record);
    reason_ = result.reason;
    return result.number;
  }
  bool Disconnect(const QString& name, DisconnectFrom from = DisconnectFrom::Tree) {
    const ConnectOutcome result = connector_.DisconnectController(u"Workspace\\"_s + name, name, from);
    reason_ = result.reason;
    return bool(result);
  }

  QStringList Registered() {
    QStringList names;
    for (const auto& record : session_.gIxoCtrls())
      names += record->RealCtrlName();
    return names;
  }
  bool IsOpenInEngine(const QString& name) {
    try {
      return session_.gIxoControllers->Item(name) != nullptr;
    } catch (const RunTimeError&) {
      return false;
    }
  }

  std::shared_ptr<MemoryFileSystem> local_ =
      std::make_shared<MemoryFileSystem>(MemoryFileSystemOptions{.drives = {u"C:"_s}});
  std::shared_ptr<MemoryFileSystem> cell_ = std::make_shared<MemoryFileSystem>();
  SessionWorld world_;
  std::shared_ptr<FailingEngine>& engine_ = world_.engine;
  EngineSession& session_ = world_.session;
  RecordingViews views_;
  RecordingLog log_;
  ControllerConnector connector_{session_, views_, log_};
  /// Of the last Connect or Disconnect that failed.
  QString reason_;
};

TEST_F(ControllerConnectorTest, AControllerIsRegisteredShownAndLogged) {
  const auto record = Record(u"Cell7"_s);
  EXPECT_EQ(Connect(record), 0);
  EXPECT_EQ(record->RealCtrlName(), u"Cell7"_s);
  EXPECT_EQ(record->CtrlIdx(), 2);
  EXPECT_EQ(session_.gIxoCtrls().Item(u"Cell7"_s), record);
  EXPECT_EQ(views_.nodes, QStringList{u"Cell7"_s});
  EXPECT_EQ(log_.Lines(), QStringList{u"CONNECT|Cell7|IxoProv.Cell|machine|option"_s});
  EXPECT_EQ(views_.cleared, 1);
  EXPECT_EQ(engine_->LiveFileNames(), QStringList());
}

TEST_F(ControllerConnectorTest, TheSameNameTwiceIsRegisteredUnderTheNameThatTheEngineGives) {
  EXPECT_EQ(Connect(Record(u"Cell7"_s)), 0);
  const auto second = Record(u"Cell7"_s);
  EXPECT_EQ(Connect(second), 0);
  EXPECT_NE(second->RealCtrlName(), u"Cell7"_s);
  EXPECT_EQ(views_.nodes, (QStringList{u"Cell7"_s, second->RealCtrlName()}));
  EXPECT_EQ(log_.Lines().size(), 2);
}

TEST_F(ControllerConnectorTest, ANameThatIsRegisteredAlreadyFailsWithTheDuplicateKeyAndStaysOpenInTheEngine) {
  const auto stale = Record(u"Cell7"_s);
  stale->SetRealCtrlName(u"Cell7"_s);
  stale->SetCtrlIdx(99);
  session_.gIxoCtrls().Add(stale);
  EXPECT_EQ(Connect(Record(u"cell7"_s)), error::kKeyAlreadyThere);
  EXPECT_TRUE(IsOpenInEngine(u"cell7"_s));
  EXPECT_EQ(session_.gIxoCtrls().Item(u"Cell7"_s), stale);
  EXPECT_TRUE(views_.nodes.isEmpty());
  EXPECT_TRUE(log_.Lines().isEmpty());
  EXPECT_EQ(views_.cleared, 1);
}

TEST_F(ControllerConnectorTest, AnUnknownProviderGivesTheEnginesNumber) {
  const auto record = Record(u"Cell7"_s);
  record->SetProvName(u"IxoProv.None"_s);
  EXPECT_NE(Connect(record), 0);
  EXPECT_EQ(Registered(), QStringList{session_.gLocalCtrlName});
  EXPECT_TRUE(log_.Lines().isEmpty());
}

TEST_F(ControllerConnectorTest, ARootThatCannotBeOpenedFailsAndLeavesTheControllerOpenInTheEngine) {
  EXPECT_NE(Connect(Record(u"Cell7"_s, u"/nowhere/at all"_s)), 0);
  EXPECT_TRUE(IsOpenInEngine(u"Cell7"_s));
  EXPECT_EQ(Registered(), QStringList{session_.gLocalCtrlName});
  EXPECT_TRUE(views_.nodes.isEmpty());
  EXPECT_TRUE(log_.Lines().isEmpty());
}

TEST_F(ControllerConnectorTest, EveryFailureGivesItsReason) {
  const auto unknown = Record(u"Cell7"_s);
  unknown->SetProvName(u"IxoProv.None"_s);
  EXPECT_NE(Connect(unknown), 0);
  EXPECT_EQ(reason_, u"There is no provider with the name 'IxoProv.None'"_s);
  EXPECT_NE(Connect(Record(u"Cell8"_s, u"/nowhere/at all"_s)), 0);
  EXPECT_TRUE(reason_.contains(u"nowhere"_s)) << reason_.toStdString();
  views_.refuse = true;
  EXPECT_NE(Connect(Record(u"Cell9"_s)), 0);
  EXPECT_EQ(reason_, u"The controller cannot be shown: Cell9"_s);
  EXPECT_FALSE(Disconnect(u"Gone"_s));
  EXPECT_EQ(reason_, u"There is no controller with the name 'Gone'"_s);
  session_.gIxoWorkspace.reset();
  EXPECT_NE(Connect(Record(u"Cell10"_s)), 0);
  EXPECT_EQ(reason_, u"There is no engine session"_s);
}

TEST_F(ControllerConnectorTest, AfterAMistypedRootTheNextOfThatNameHasTheName) {
  ASSERT_NE(Connect(Record(u"Cell A"_s, u"/nowhere"_s)), 0);
  const auto second = Record(u"cell a"_s);
  EXPECT_EQ(Connect(second), 0);
  EXPECT_EQ(second->RealCtrlName(), u"cell a"_s);
  EXPECT_EQ(views_.nodes, QStringList{u"cell a"_s});
  // Connected, it keeps its name against the next one.
  const auto third = Record(u"Cell A"_s);
  EXPECT_EQ(Connect(third), 0);
  EXPECT_EQ(third->RealCtrlName(), u"Cell A (2)"_s);
  EXPECT_TRUE(IsOpenInEngine(u"cell a"_s));
}

TEST_F(ControllerConnectorTest, AnUnnamedOneThatFailedLeavesItsNumberToTheNext) {
  const auto first = Record(QString(), u"/nowhere"_s);
  ASSERT_NE(Connect(first), 0);
  EXPECT_EQ(first->RealCtrlName(), u"Cell1"_s);
  const auto second = Record(QString());
  EXPECT_EQ(Connect(second), 0);
  EXPECT_EQ(second->RealCtrlName(), u"Cell1"_s);
}

TEST_F(ControllerConnectorTest, ALeftOneThatTheEngineKeepsStopsNothing) {
  ASSERT_NE(Connect(Record(u"Cell7"_s, u"/nowhere"_s)), 0);
  engine_->Arm(1);
  const auto second = Record(u"Cell7"_s);
  EXPECT_EQ(Connect(second), 0);
  EXPECT_EQ(engine_->FaultCount(), 1);
  engine_->Disarm();
  EXPECT_EQ(second->RealCtrlName(), u"Cell7 (2)"_s);
  EXPECT_TRUE(IsOpenInEngine(u"Cell7"_s));
  // It is tried again.
  const auto third = Record(u"Cell7"_s);
  EXPECT_EQ(Connect(third), 0);
  EXPECT_EQ(third->RealCtrlName(), u"Cell7"_s);
}

TEST_F(ControllerConnectorTest, AFailedOneThatARecordHasStaysInTheEngine) {
  const auto stale = Record(u"Cell7"_s);
  stale->SetRealCtrlName(u"Cell7"_s);
  stale->SetCtrlIdx(99);
  session_.gIxoCtrls().Add(stale);
  ASSERT_EQ(Connect(Record(u"Cell7"_s)), error::kKeyAlreadyThere);
  const auto second = Record(u"Cell7"_s);
  EXPECT_EQ(Connect(second), 0);
  EXPECT_EQ(second->RealCtrlName(), u"Cell7 (2)"_s);
  EXPECT_TRUE(IsOpenInEngine(u"Cell7"_s));
}

TEST_F(ControllerConnectorTest, DisconnectingAllTakesWhatFailedOutOfTheEngine) {
  ASSERT_EQ(Connect(Record(u"A"_s)), 0);
  ASSERT_NE(Connect(Record(u"B"_s, u"/nowhere"_s)), 0);
  ASSERT_NE(Connect(Record(u"C/D"_s, u"/nowhere"_s)), 0);
  ASSERT_TRUE(IsOpenInEngine(u"CD"_s));
  log_.Clear();
  EXPECT_TRUE(connector_.DisconnectAllControllers());
  EXPECT_FALSE(IsOpenInEngine(u"B"_s));
  EXPECT_FALSE(IsOpenInEngine(u"CD"_s));
  EXPECT_TRUE(IsOpenInEngine(session_.gLocalCtrlName));
  EXPECT_EQ(log_.Lines(), QStringList{u"DISCONNECT|A"_s});
}

TEST_F(ControllerConnectorTest, ALeftOneThatTheEngineKeepsIsNoFailureOfDisconnectingAll) {
  ASSERT_NE(Connect(Record(u"B"_s, u"/nowhere"_s)), 0);
  engine_->Arm(1);
  EXPECT_TRUE(connector_.DisconnectAllControllers());
  EXPECT_EQ(engine_->FaultCount(), 1);
  engine_->Disarm();
  EXPECT_TRUE(IsOpenInEngine(u"B"_s));
  EXPECT_TRUE(connector_.DisconnectAllControllers());
  EXPECT_FALSE(IsOpenInEngine(u"B"_s));
}

TEST_F(ControllerConnectorTest, ARootThatIsAFileIsRefused) {
  cell_->AddFile(u"first\\main.pac"_s, "program");
  EXPECT_EQ(Connect(Record(u"Cell7"_s, u"/first/main.pac"_s)), error::kWin32Error + 267);
  EXPECT_EQ(reason_, u"The root is no folder: /first/main.pac"_s);
  EXPECT_EQ(Registered(), QStringList{session_.gLocalCtrlName});
  EXPECT_TRUE(views_.nodes.isEmpty());
  EXPECT_TRUE(log_.Lines().isEmpty());
  EXPECT_EQ(engine_->HeldFiles(), 0);
}

TEST_F(ControllerConnectorTest, ARootThatHasGoneIsNotFoundAlsoWithASeparatorAtItsEnd) {
  EXPECT_EQ(Connect(Record(u"Cell7"_s, u"/gone/"_s)), error::kNotFound);
  EXPECT_TRUE(reason_.contains(u"gone"_s)) << reason_.toStdString();
}

TEST_F(ControllerConnectorTest, ARootTwoFoldersDeepAndAnEmptyOneAreOpened) {
  EXPECT_EQ(Connect(Record(u"Deep"_s, u"/first/second"_s)), 0);
  EXPECT_EQ(Connect(Record(u"Top"_s, QString())), 0);
  EXPECT_EQ(views_.nodes, (QStringList{u"Deep"_s, u"Top"_s}));
}

TEST_F(ControllerConnectorTest, AFailureWhileTheNameIsReadLeavesNothingRegisteredAndTheLocalRecordAlone) {
  for (int call = 2; call <= 3; ++call) {  // After AddController: Name, Index.
    engine_->Arm(call);
    EXPECT_EQ(Connect(Record(u"Cell7"_s)), error::kTimeOut);
    engine_->Disarm();
    EXPECT_EQ(Registered(), QStringList{session_.gLocalCtrlName});
    EXPECT_TRUE(views_.nodes.isEmpty());
    EXPECT_TRUE(log_.Lines().isEmpty());
  }
}

TEST_F(ControllerConnectorTest, ANodeThatCannotBeAddedTakesTheRecordAtThePositionOfTheIndexBackOut) {
  views_.refuse = true;
  EXPECT_EQ(Connect(Record(u"Cell7"_s)), -1);
  EXPECT_EQ(Registered(), QStringList{session_.gLocalCtrlName});
  EXPECT_TRUE(IsOpenInEngine(u"Cell7"_s));
  EXPECT_TRUE(log_.Lines().isEmpty());
  // The next index is one beyond the position: nothing stands there, and nobody else's record goes.
  EXPECT_EQ(Connect(Record(u"Cell8"_s)), -1);
  EXPECT_EQ(Registered(), (QStringList{session_.gLocalCtrlName, u"Cell8"_s}));
}

TEST_F(ControllerConnectorTest, WithoutAnEngineSessionConnectingAndDisconnectingFail) {
  ASSERT_EQ(Connect(Record(u"Cell7"_s)), 0);
  session_.gIxoWorkspace.reset();
  EXPECT_EQ(Connect(Record(u"Cell8"_s)), -1);
  session_.gIxoControllers.reset();
  EXPECT_FALSE(Disconnect(u"Cell7"_s));
}

TEST_F(ControllerConnectorTest, DisconnectingTakesTheControllerOutEverywhere) {
  ASSERT_EQ(Connect(Record(u"Cell7"_s)), 0);
  log_.Clear();
  EXPECT_TRUE(Disconnect(u"Cell7"_s));
  EXPECT_FALSE(IsOpenInEngine(u"Cell7"_s));
  EXPECT_EQ(Registered(), QStringList{session_.gLocalCtrlName});
  EXPECT_TRUE(views_.nodes.isEmpty());
  EXPECT_EQ(log_.Lines(), QStringList{u"DISCONNECT|Cell7"_s});
}

TEST_F(ControllerConnectorTest, DisconnectingFromTheListTakesTheItemOutToo) {
  ASSERT_EQ(Connect(Record(u"Cell7"_s)), 0);
  views_.items = {u"My Computer"_s, u"Cell7"_s};
  EXPECT_TRUE(Disconnect(u"Cell7"_s, DisconnectFrom::List));
  EXPECT_EQ(views_.items, QStringList{u"My Computer"_s});
}

TEST_F(ControllerConnectorTest, AFailedStepOfDisconnectingLeavesTheLaterOnesUndone) {
  ASSERT_EQ(Connect(Record(u"Cell7"_s)), 0);
  log_.Clear();
  engine_->Arm(1);
  EXPECT_FALSE(Disconnect(u"Cell7"_s));
  engine_->Disarm();
  EXPECT_TRUE(Registered().contains(u"Cell7"_s));
  EXPECT_EQ(views_.nodes, QStringList{u"Cell7"_s});

  views_.nodes.clear();
  EXPECT_FALSE(Disconnect(u"Cell7"_s));
  EXPECT_FALSE(IsOpenInEngine(u"Cell7"_s));
  EXPECT_FALSE(Registered().contains(u"Cell7"_s));
  EXPECT_TRUE(log_.Lines().isEmpty());
}

TEST_F(ControllerConnectorTest, DisconnectingAnErrorNodeRemovesItAndNothingElse) {
  // Left open in the engine under the very name.
  ASSERT_NE(Connect(Record(u"Cell7"_s, u"/nowhere"_s)), 0);
  views_.nodes = {u"!Cell7"_s};
  EXPECT_TRUE(Disconnect(u"Cell7"_s));
  EXPECT_TRUE(views_.nodes.isEmpty());
  EXPECT_TRUE(IsOpenInEngine(u"Cell7"_s));
  EXPECT_TRUE(log_.Lines().isEmpty());
}

TEST_F(ControllerConnectorTest, DisconnectingAllLeavesTheLocalControllerOnly) {
  ASSERT_EQ(Connect(Record(u"A"_s)), 0);
  ASSERT_EQ(Connect(Record(u"B"_s)), 0);
  views_.nodes += u"!C"_s;
  log_.Clear();
  EXPECT_TRUE(connector_.DisconnectAllControllers());
  EXPECT_EQ(Registered(), QStringList{session_.gLocalCtrlName});
  EXPECT_TRUE(IsOpenInEngine(session_.gLocalCtrlName));
  EXPECT_TRUE(views_.nodes.isEmpty());
  EXPECT_EQ(log_.Lines(), (QStringList{u"DISCONNECT|A"_s, u"DISCONNECT|B"_s}));
}

TEST_F(ControllerConnectorTest, DisconnectingAllStopsAtTheFirstThatFails) {
  ASSERT_EQ(Connect(Record(u"A"_s)), 0);
  ASSERT_EQ(Connect(Record(u"B"_s)), 0);
  ASSERT_EQ(Connect(Record(u"C"_s)), 0);
  log_.Clear();
  engine_->Arm(2);
  EXPECT_FALSE(connector_.DisconnectAllControllers());
  EXPECT_EQ(Registered(), (QStringList{session_.gLocalCtrlName, u"B"_s, u"C"_s}));
  EXPECT_EQ(views_.nodes, (QStringList{u"B"_s, u"C"_s}));
  EXPECT_EQ(log_.Lines(), QStringList{u"DISCONNECT|A"_s});
}

/// Whichever call of the engine fails, a controller is wholly connected or not at all outside the engine.
TEST_F(ControllerConnectorTest, EveryFailingCallLeavesRegistryTreeAndLogInAgreement) {
  for (const FaultSpan span : {FaultSpan::Once, FaultSpan::FromThenOn}) {
    for (const EngineFault fault : {EngineFault::Raise, EngineFault::YieldNothing}) {
      bool wentWrong = true;
      for (int call = 1; wentWrong; ++call) {
        SCOPED_TRACE(call);
        ASSERT_LT(call, 100);
        const QString name = u"N%1"_s.arg(call);
        views_.nodes.clear();
        log_.Clear();
        engine_->Arm(call, span, error::kTimeOut, fault);
        const auto record = Record(name);
        const qint32 result = Connect(record);
        wentWrong = engine_->FaultCount() > 0;
        engine_->Disarm();
        EXPECT_TRUE(wentWrong || result == 0);
        const bool connected = result == 0;
        EXPECT_EQ(views_.nodes, connected ? QStringList{record->RealCtrlName()} : QStringList());
        EXPECT_EQ(log_.Lines().size(), connected ? 1 : 0);
        EXPECT_EQ(Registered().size(), connected ? 2 : 1);
        EXPECT_EQ(engine_->HeldFiles(), 0);
        if (connected) {
          log_.Clear();
          EXPECT_TRUE(Disconnect(record->RealCtrlName()));
        }
        EXPECT_EQ(Registered(), QStringList{session_.gLocalCtrlName});
      }
    }
  }
}

TEST_F(ControllerConnectorTest, EveryFailingCallOfDisconnectingAllLeavesRegistryTreeAndLogInAgreement) {
  for (const FaultSpan span : {FaultSpan::Once, FaultSpan::FromThenOn}) {
    for (int call = 1; call <= 4; ++call) {
      SCOPED_TRACE(call);
      views_.nodes.clear();
      for (const QString& name : {u"A"_s, u"B"_s, u"C"_s})
        ASSERT_EQ(Connect(Record(name)), 0);
      log_.Clear();
      engine_->Arm(call, span);
      EXPECT_EQ(bool(connector_.DisconnectAllControllers()), call > 3);
      engine_->Disarm();
      EXPECT_EQ(views_.nodes, Registered().mid(1));
      EXPECT_EQ(log_.Lines().size(), 3 - views_.nodes.size());
      EXPECT_TRUE(connector_.DisconnectAllControllers());
      EXPECT_EQ(Registered().size(), 1);
    }
  }
}

}  // namespace
}  // namespace trevane::test
