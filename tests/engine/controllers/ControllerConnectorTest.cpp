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

/// Controllers in the views, as names in order; "!" before one that failed to connect.
class RecordingViews final : public ControllerDisplay {
 public:
  bool AddControllerNode(const clsIxoCtrl& ctrl, bool failed) override {
    if (refuse) {
      return false;
    }
    nodes += (failed ? QStringLiteral("!") : QString()) + ctrl.RealCtrlName();
    return true;
  }
  bool AddControllerItem(const clsIxoCtrl& ctrl, bool failed) override {
    items += (failed ? QStringLiteral("!") : QString()) + ctrl.RealCtrlName();
    return true;
  }
  void RemoveControllerNode(const QString& nodePath) override {
    const QString name = nodePath.section(u'\\', 1);
    if (!nodes.removeOne(name) && !nodes.removeOne(u'!' + name)) {
      throw RunTimeError(error::kNoSuchKey, QStringLiteral("no node"));
    }
  }
  void RemoveControllerItem(const QString& ctrlName) override {
    if (!items.removeOne(ctrlName)) {
      throw RunTimeError(error::kNoSuchKey, QStringLiteral("no item"));
    }
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
    cell_->AddFolder(QStringLiteral("first\\second"));
    cell_->AddFolder(QStringLiteral("a/b"));
    world_.Open({ProviderOf(QStringLiteral("IxoProv.LocalFile"), local_),
                 ProviderOf(QStringLiteral("IxoProv.Cell"), cell_)});
  }

  static std::shared_ptr<clsIxoCtrl> Record(const QString& name, const QString& root = QStringLiteral("/")) {
    auto record = std::make_shared<clsIxoCtrl>();
    record->SetCtrlName(name);
    record->SetProvName(QStringLiteral("IxoProv.Cell"));
    record->SetMachineName(QStringLiteral("machine"));
    record->SetCtrlOption(QStringLiteral("option"));
    record->SetRoot(root);
    return record;
  }

  qint32 Connect(const std::shared_ptr<clsIxoCtrl>& record) {
    const ConnectOutcome result = connector_.ConnectController(record);
    reason_ = result.reason;
    return result.number;
  }
  bool Disconnect(const QString& name, DisconnectFrom from = DisconnectFrom::Tree) {
    const ConnectOutcome result =
        connector_.DisconnectController(QStringLiteral("Workspace\\") + name, name, from);
    reason_ = result.reason;
    return bool(result);
  }

  QStringList Registered() {
    QStringList names;
    for (const auto& record : session_.gIxoCtrls()) {
      names += record->RealCtrlName();
    }
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
      std::make_shared<MemoryFileSystem>(MemoryFileSystemOptions{.drives = {QStringLiteral("C:")}});
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
  const auto record = Record(QStringLiteral("Cell7"));
  EXPECT_EQ(Connect(record), 0);
  EXPECT_EQ(record->RealCtrlName(), QStringLiteral("Cell7"));
  EXPECT_EQ(record->CtrlIdx(), 2);
  EXPECT_EQ(session_.gIxoCtrls().Item(QStringLiteral("Cell7")), record);
  EXPECT_EQ(views_.nodes, QStringList{QStringLiteral("Cell7")});
  EXPECT_EQ(log_.Lines(), QStringList{QStringLiteral("CONNECT|Cell7|IxoProv.Cell|machine|option")});
  EXPECT_EQ(views_.cleared, 1);
  EXPECT_EQ(engine_->LiveFileNames(), QStringList());
}

TEST_F(ControllerConnectorTest, ATakenNameIsRegisteredAsTheEngineNamesIt) {
  EXPECT_EQ(Connect(Record(QStringLiteral("Cell7"))), 0);
  const auto second = Record(QStringLiteral("Cell7"));
  EXPECT_EQ(Connect(second), 0);
  EXPECT_NE(second->RealCtrlName(), QStringLiteral("Cell7"));
  EXPECT_EQ(views_.nodes, (QStringList{QStringLiteral("Cell7"), second->RealCtrlName()}));
  EXPECT_EQ(log_.Lines().size(), 2);
}

TEST_F(ControllerConnectorTest, ADuplicateNameFailsAndStaysOpenInTheEngine) {
  const auto stale = Record(QStringLiteral("Cell7"));
  stale->SetRealCtrlName(QStringLiteral("Cell7"));
  stale->SetCtrlIdx(99);
  session_.gIxoCtrls().Add(stale);
  EXPECT_EQ(Connect(Record(QStringLiteral("cell7"))), error::kKeyAlreadyThere);
  EXPECT_TRUE(IsOpenInEngine(QStringLiteral("cell7")));
  EXPECT_EQ(session_.gIxoCtrls().Item(QStringLiteral("Cell7")), stale);
  EXPECT_TRUE(views_.nodes.isEmpty());
  EXPECT_TRUE(log_.Lines().isEmpty());
  EXPECT_EQ(views_.cleared, 1);
}

TEST_F(ControllerConnectorTest, AnUnknownProviderGivesTheEnginesNumber) {
  const auto record = Record(QStringLiteral("Cell7"));
  record->SetProvName(QStringLiteral("IxoProv.None"));
  EXPECT_NE(Connect(record), 0);
  EXPECT_EQ(Registered(), QStringList{session_.gLocalCtrlName});
  EXPECT_TRUE(log_.Lines().isEmpty());
}

TEST_F(ControllerConnectorTest, AnUnreadableRootLeavesTheControllerOpen) {
  EXPECT_NE(Connect(Record(QStringLiteral("Cell7"), QStringLiteral("/nowhere/at all"))), 0);
  EXPECT_TRUE(IsOpenInEngine(QStringLiteral("Cell7")));
  EXPECT_EQ(Registered(), QStringList{session_.gLocalCtrlName});
  EXPECT_TRUE(views_.nodes.isEmpty());
  EXPECT_TRUE(log_.Lines().isEmpty());
}

TEST_F(ControllerConnectorTest, EveryFailureGivesItsReason) {
  const auto unknown = Record(QStringLiteral("Cell7"));
  unknown->SetProvName(QStringLiteral("IxoProv.None"));
  EXPECT_NE(Connect(unknown), 0);
  EXPECT_EQ(reason_, QStringLiteral("There is no provider with the name 'IxoProv.None'"));
  EXPECT_NE(Connect(Record(QStringLiteral("Cell8"), QStringLiteral("/nowhere/at all"))), 0);
  EXPECT_TRUE(reason_.contains(QStringLiteral("nowhere"))) << reason_.toStdString();
  views_.refuse = true;
  EXPECT_NE(Connect(Record(QStringLiteral("Cell9"))), 0);
  EXPECT_EQ(reason_, QStringLiteral("The controller cannot be shown: Cell9"));
  EXPECT_FALSE(Disconnect(QStringLiteral("Gone")));
  EXPECT_EQ(reason_, QStringLiteral("There is no controller with the name 'Gone'"));
  session_.gIxoWorkspace.reset();
  EXPECT_NE(Connect(Record(QStringLiteral("Cell10"))), 0);
  EXPECT_EQ(reason_, QStringLiteral("There is no engine session"));
}

TEST_F(ControllerConnectorTest, AfterAMistypedRootTheNextOfThatNameHasTheName) {
  ASSERT_NE(Connect(Record(QStringLiteral("Cell A"), QStringLiteral("/nowhere"))), 0);
  const auto second = Record(QStringLiteral("cell a"));
  EXPECT_EQ(Connect(second), 0);
  EXPECT_EQ(second->RealCtrlName(), QStringLiteral("cell a"));
  EXPECT_EQ(views_.nodes, QStringList{QStringLiteral("cell a")});
  // Connected, it keeps its name against the next one.
  const auto third = Record(QStringLiteral("Cell A"));
  EXPECT_EQ(Connect(third), 0);
  EXPECT_EQ(third->RealCtrlName(), QStringLiteral("Cell A (2)"));
  EXPECT_TRUE(IsOpenInEngine(QStringLiteral("cell a")));
}

TEST_F(ControllerConnectorTest, AnUnnamedOneThatFailedLeavesItsNumberToTheNext) {
  const auto first = Record(QString(), QStringLiteral("/nowhere"));
  ASSERT_NE(Connect(first), 0);
  EXPECT_EQ(first->RealCtrlName(), QStringLiteral("Cell1"));
  const auto second = Record(QString());
  EXPECT_EQ(Connect(second), 0);
  EXPECT_EQ(second->RealCtrlName(), QStringLiteral("Cell1"));
}

TEST_F(ControllerConnectorTest, ALeftOneThatTheEngineKeepsStopsNothing) {
  ASSERT_NE(Connect(Record(QStringLiteral("Cell7"), QStringLiteral("/nowhere"))), 0);
  engine_->Arm(1);
  const auto second = Record(QStringLiteral("Cell7"));
  EXPECT_EQ(Connect(second), 0);
  EXPECT_EQ(engine_->FaultCount(), 1);
  engine_->Disarm();
  EXPECT_EQ(second->RealCtrlName(), QStringLiteral("Cell7 (2)"));
  EXPECT_TRUE(IsOpenInEngine(QStringLiteral("Cell7")));
  // It is tried again.
  const auto third = Record(QStringLiteral("Cell7"));
  EXPECT_EQ(Connect(third), 0);
  EXPECT_EQ(third->RealCtrlName(), QStringLiteral("Cell7"));
}

TEST_F(ControllerConnectorTest, AFailedOneThatARecordHasStaysInTheEngine) {
  const auto stale = Record(QStringLiteral("Cell7"));
  stale->SetRealCtrlName(QStringLiteral("Cell7"));
  stale->SetCtrlIdx(99);
  session_.gIxoCtrls().Add(stale);
  ASSERT_EQ(Connect(Record(QStringLiteral("Cell7"))), error::kKeyAlreadyThere);
  const auto second = Record(QStringLiteral("Cell7"));
  EXPECT_EQ(Connect(second), 0);
  EXPECT_EQ(second->RealCtrlName(), QStringLiteral("Cell7 (2)"));
  EXPECT_TRUE(IsOpenInEngine(QStringLiteral("Cell7")));
}

TEST_F(ControllerConnectorTest, DisconnectingAllTakesWhatFailedOutOfTheEngine) {
  ASSERT_EQ(Connect(Record(QStringLiteral("A"))), 0);
  ASSERT_NE(Connect(Record(QStringLiteral("B"), QStringLiteral("/nowhere"))), 0);
  ASSERT_NE(Connect(Record(QStringLiteral("C/D"), QStringLiteral("/nowhere"))), 0);
  ASSERT_TRUE(IsOpenInEngine(QStringLiteral("CD")));
  log_.Clear();
  EXPECT_TRUE(connector_.DisconnectAllControllers());
  EXPECT_FALSE(IsOpenInEngine(QStringLiteral("B")));
  EXPECT_FALSE(IsOpenInEngine(QStringLiteral("CD")));
  EXPECT_TRUE(IsOpenInEngine(session_.gLocalCtrlName));
  EXPECT_EQ(log_.Lines(), QStringList{QStringLiteral("DISCONNECT|A")});
}

TEST_F(ControllerConnectorTest, DisconnectAllIgnoresALeftControllerThatStays) {
  ASSERT_NE(Connect(Record(QStringLiteral("B"), QStringLiteral("/nowhere"))), 0);
  engine_->Arm(1);
  EXPECT_TRUE(connector_.DisconnectAllControllers());
  EXPECT_EQ(engine_->FaultCount(), 1);
  engine_->Disarm();
  EXPECT_TRUE(IsOpenInEngine(QStringLiteral("B")));
  EXPECT_TRUE(connector_.DisconnectAllControllers());
  EXPECT_FALSE(IsOpenInEngine(QStringLiteral("B")));
}

TEST_F(ControllerConnectorTest, ARootThatIsAFileIsRefused) {
  cell_->AddFile(QStringLiteral("first\\main.pac"), "program");
  EXPECT_EQ(Connect(Record(QStringLiteral("Cell7"), QStringLiteral("/first/main.pac"))),
            error::kWin32Error + 267);
  EXPECT_EQ(reason_, QStringLiteral("The root is no folder: /first/main.pac"));
  EXPECT_EQ(Registered(), QStringList{session_.gLocalCtrlName});
  EXPECT_TRUE(views_.nodes.isEmpty());
  EXPECT_TRUE(log_.Lines().isEmpty());
  EXPECT_EQ(engine_->HeldFiles(), 0);
}

TEST_F(ControllerConnectorTest, AVanishedRootIsNotFoundWithASeparatorAtItsEnd) {
  EXPECT_EQ(Connect(Record(QStringLiteral("Cell7"), QStringLiteral("/gone/"))), error::kNotFound);
  EXPECT_TRUE(reason_.contains(QStringLiteral("gone"))) << reason_.toStdString();
}

TEST_F(ControllerConnectorTest, ARootTwoFoldersDeepAndAnEmptyOneAreOpened) {
  EXPECT_EQ(Connect(Record(QStringLiteral("Deep"), QStringLiteral("/first/second"))), 0);
  EXPECT_EQ(Connect(Record(QStringLiteral("Top"), QString())), 0);
  EXPECT_EQ(views_.nodes, (QStringList{QStringLiteral("Deep"), QStringLiteral("Top")}));
}

TEST_F(ControllerConnectorTest, AFailureToReadTheNameRegistersNothing) {
  for (int call = 2; call <= 3; ++call) {  // After AddController: Name, Index.
    engine_->Arm(call);
    EXPECT_EQ(Connect(Record(QStringLiteral("Cell7"))), error::kTimeOut);
    engine_->Disarm();
    EXPECT_EQ(Registered(), QStringList{session_.gLocalCtrlName});
    EXPECT_TRUE(views_.nodes.isEmpty());
    EXPECT_TRUE(log_.Lines().isEmpty());
  }
}

TEST_F(ControllerConnectorTest, ANodeThatCannotBeAddedUnregistersTheRecord) {
  views_.refuse = true;
  EXPECT_EQ(Connect(Record(QStringLiteral("Cell7"))), -1);
  EXPECT_EQ(Registered(), QStringList{session_.gLocalCtrlName});
  EXPECT_TRUE(IsOpenInEngine(QStringLiteral("Cell7")));
  EXPECT_TRUE(log_.Lines().isEmpty());
  // The next index is one beyond the position: no record is there, and no other is removed.
  EXPECT_EQ(Connect(Record(QStringLiteral("Cell8"))), -1);
  EXPECT_EQ(Registered(), (QStringList{session_.gLocalCtrlName, QStringLiteral("Cell8")}));
}

TEST_F(ControllerConnectorTest, WithoutASessionConnectingAndDisconnectingFail) {
  ASSERT_EQ(Connect(Record(QStringLiteral("Cell7"))), 0);
  session_.gIxoWorkspace.reset();
  EXPECT_EQ(Connect(Record(QStringLiteral("Cell8"))), -1);
  session_.gIxoControllers.reset();
  EXPECT_FALSE(Disconnect(QStringLiteral("Cell7")));
}

TEST_F(ControllerConnectorTest, DisconnectingTakesTheControllerOutEverywhere) {
  ASSERT_EQ(Connect(Record(QStringLiteral("Cell7"))), 0);
  log_.Clear();
  EXPECT_TRUE(Disconnect(QStringLiteral("Cell7")));
  EXPECT_FALSE(IsOpenInEngine(QStringLiteral("Cell7")));
  EXPECT_EQ(Registered(), QStringList{session_.gLocalCtrlName});
  EXPECT_TRUE(views_.nodes.isEmpty());
  EXPECT_EQ(log_.Lines(), QStringList{QStringLiteral("DISCONNECT|Cell7")});
}

TEST_F(ControllerConnectorTest, DisconnectingFromTheListTakesTheItemOutToo) {
  ASSERT_EQ(Connect(Record(QStringLiteral("Cell7"))), 0);
  views_.items = {QStringLiteral("My Computer"), QStringLiteral("Cell7")};
  EXPECT_TRUE(Disconnect(QStringLiteral("Cell7"), DisconnectFrom::List));
  EXPECT_EQ(views_.items, QStringList{QStringLiteral("My Computer")});
}

TEST_F(ControllerConnectorTest, AFailedStepOfDisconnectingLeavesTheLaterOnesUndone) {
  ASSERT_EQ(Connect(Record(QStringLiteral("Cell7"))), 0);
  log_.Clear();
  engine_->Arm(1);
  EXPECT_FALSE(Disconnect(QStringLiteral("Cell7")));
  engine_->Disarm();
  EXPECT_TRUE(Registered().contains(QStringLiteral("Cell7")));
  EXPECT_EQ(views_.nodes, QStringList{QStringLiteral("Cell7")});

  views_.nodes.clear();
  EXPECT_FALSE(Disconnect(QStringLiteral("Cell7")));
  EXPECT_FALSE(IsOpenInEngine(QStringLiteral("Cell7")));
  EXPECT_FALSE(Registered().contains(QStringLiteral("Cell7")));
  EXPECT_TRUE(log_.Lines().isEmpty());
}

TEST_F(ControllerConnectorTest, DisconnectingAnErrorNodeRemovesItAndNothingElse) {
  // Left open in the engine under the very name.
  ASSERT_NE(Connect(Record(QStringLiteral("Cell7"), QStringLiteral("/nowhere"))), 0);
  views_.nodes = {QStringLiteral("!Cell7")};
  EXPECT_TRUE(Disconnect(QStringLiteral("Cell7")));
  EXPECT_TRUE(views_.nodes.isEmpty());
  EXPECT_TRUE(IsOpenInEngine(QStringLiteral("Cell7")));
  EXPECT_TRUE(log_.Lines().isEmpty());
}

TEST_F(ControllerConnectorTest, DisconnectingAllLeavesTheLocalControllerOnly) {
  ASSERT_EQ(Connect(Record(QStringLiteral("A"))), 0);
  ASSERT_EQ(Connect(Record(QStringLiteral("B"))), 0);
  views_.nodes += QStringLiteral("!C");
  log_.Clear();
  EXPECT_TRUE(connector_.DisconnectAllControllers());
  EXPECT_EQ(Registered(), QStringList{session_.gLocalCtrlName});
  EXPECT_TRUE(IsOpenInEngine(session_.gLocalCtrlName));
  EXPECT_TRUE(views_.nodes.isEmpty());
  EXPECT_EQ(log_.Lines(), (QStringList{QStringLiteral("DISCONNECT|A"), QStringLiteral("DISCONNECT|B")}));
}

TEST_F(ControllerConnectorTest, DisconnectingAllStopsAtTheFirstThatFails) {
  ASSERT_EQ(Connect(Record(QStringLiteral("A"))), 0);
  ASSERT_EQ(Connect(Record(QStringLiteral("B"))), 0);
  ASSERT_EQ(Connect(Record(QStringLiteral("C"))), 0);
  log_.Clear();
  engine_->Arm(2);
  EXPECT_FALSE(connector_.DisconnectAllControllers());
  EXPECT_EQ(Registered(), (QStringList{session_.gLocalCtrlName, QStringLiteral("B"), QStringLiteral("C")}));
  EXPECT_EQ(views_.nodes, (QStringList{QStringLiteral("B"), QStringLiteral("C")}));
  EXPECT_EQ(log_.Lines(), QStringList{QStringLiteral("DISCONNECT|A")});
}

/// Outside the engine a controller is either wholly connected or not at all, whichever call fails.
TEST_F(ControllerConnectorTest, AFailedConnectKeepsEverythingConsistent) {
  for (const FaultSpan span : {FaultSpan::Once, FaultSpan::FromThenOn}) {
    for (const EngineFault fault : {EngineFault::Raise, EngineFault::YieldNothing}) {
      bool wentWrong = true;
      for (int call = 1; wentWrong; ++call) {
        SCOPED_TRACE(call);
        ASSERT_LT(call, 100);
        const QString name = QStringLiteral("N%1").arg(call);
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

TEST_F(ControllerConnectorTest, AFailedDisconnectAllKeepsEverythingConsistent) {
  for (const FaultSpan span : {FaultSpan::Once, FaultSpan::FromThenOn}) {
    for (int call = 1; call <= 4; ++call) {
      SCOPED_TRACE(call);
      views_.nodes.clear();
      for (const QString& name : {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}) {
        ASSERT_EQ(Connect(Record(name)), 0);
      }
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
