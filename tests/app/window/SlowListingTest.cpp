// The listing of a large folder of a slow controller in the window.
#include "app/window/CommandBars.h"
#include "tests/app/window/WaitingWorld.h"
#include "views/bars/HistoryBox.h"

#include <QAbstractItemView>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>

namespace trevane::test {
namespace {

constexpr int kFolders = 2000;
/// Of the scripted controller.
constexpr int kBatch = 64;

class SlowListingTest : public testing::Test {
 protected:
  SlowListingTest() {
    for (int i = 0; i < kFolders; ++i) {
      world_.robot->AddFolder(QStringLiteral("parts\\part%1").arg(i));
    }
    // The list is in natural order: this one is seen in the first batch.
    world_.robot->AddFile(QStringLiteral("parts\\main.pac"));
    world_.ShowRobot();
    world_.prompts_.AnswerAllBoxes(PromptAnswer::Ok);
    world_.server->HangAtBatch(2);
  }
  [[nodiscard]] RecordingGauge& Gauge() { return world_.prompts_.RecordedGauge(); }
  [[nodiscard]] HistoryBox& AddressBox() {
    return *world_.Window()->findChild<HistoryBox*>(QStringLiteral("cmbAddress"));
  }
  void ClickInAddressBox() {
    QLineEdit& field = *AddressBox().lineEdit();
    world_.ClickAt(field, field.rect().center());
  }
  /// As the user types it, in a box that has the focus.
  void TypeAddress(const QString& address) {
    world_.PressKey(Qt::Key_A, Qt::ControlModifier);
    for (const QChar character : address) {
      const auto key = static_cast<Qt::Key>(character.toUpper().unicode());
      QTest::simulateEvent(world_.Window()->windowHandle(), true, key, {}, QString(character), false);
      QTest::simulateEvent(world_.Window()->windowHandle(), false, key, {}, QString(character), false);
    }
  }
  void ClickItem(const QString& name) { world_.ClickAt(*world_.List().viewport(), world_.PointOfItem(name)); }
  void DoubleClickItem(const QString& name) {
    ClickItem(name);
    QTest::mouseDClick(world_.Window()->windowHandle(), Qt::LeftButton, {},
                       world_.List().viewport()->mapTo(world_.Window(), world_.PointOfItem(name)));
  }
  void ExpectAllShown() {
    EXPECT_EQ(world_.Nav().CurrentAddress(), parts_);
    EXPECT_EQ(world_.Window()->ListModel().rowCount(), kFolders + 1);
  }
  void LetGo() {
    world_.server->HangAtBatch(0);
    world_.server->Release();
  }

  WaitingWorld world_;
  const QString parts_ = WaitingWorld::Robot(QStringLiteral("parts"));
};

TEST_F(SlowListingTest, RowsAndGaugeComeWithTheFirstBatch) {
  world_.WhenHanging([this] {
    EXPECT_EQ(world_.Window()->ListModel().rowCount(), kBatch);
    EXPECT_GE(world_.Node(parts_)->Children().size(), static_cast<size_t>(kBatch - 1));
    EXPECT_TRUE(Gauge().IsVisible());
    EXPECT_TRUE(Gauge().IsCancelEnabled());
    EXPECT_EQ(Gauge().GageMax(), kBatch + 1);
    LetGo();
  });
  world_.ClickNode(parts_);
  EXPECT_TRUE(world_.acted);
  ExpectAllShown();
  EXPECT_FALSE(Gauge().IsVisible());
}

TEST_F(SlowListingTest, CancelOfTheGaugeEndsIt) {
  world_.WhenHanging([this] { Gauge().ClickCancel(); });
  world_.ClickNode(parts_);
  EXPECT_TRUE(world_.acted);
  EXPECT_EQ(world_.Nav().CurrentAddress(), parts_);
  EXPECT_EQ(world_.Window()->ListModel().rowCount(), kBatch);
  EXPECT_TRUE(world_.prompts_.Asked().empty());
  EXPECT_FALSE(Gauge().IsVisible());
}

TEST_F(SlowListingTest, AClickOnAnotherPlaceGoesThere) {
  world_.WhenHanging(
      [this] { world_.ClickAt(*world_.Tree().viewport(), world_.PointOf(QStringLiteral("Workspace"))); });
  world_.ClickNode(parts_);
  EXPECT_TRUE(world_.acted);
  EXPECT_EQ(world_.Nav().CurrentAddress(), QStringLiteral("Workspace"));
  EXPECT_TRUE(world_.prompts_.Asked().empty());
}

TEST_F(SlowListingTest, ADoubleClickOnAFolderOfTheListGoesThere) {
  world_.robot->AddFile(QStringLiteral("parts\\part0\\gripper.pac"));
  world_.WhenHanging([this] {
    world_.server->HangAtBatch(0);
    DoubleClickItem(QStringLiteral("part0"));
  });
  world_.ClickNode(parts_);
  EXPECT_TRUE(world_.acted);
  EXPECT_EQ(world_.Nav().CurrentAddress(), parts_ + QStringLiteral("\\part0"));
  EXPECT_EQ(world_.ListTexts(), QStringList(QStringLiteral("gripper.pac")));
  EXPECT_TRUE(world_.prompts_.Asked().empty());
}

TEST_F(SlowListingTest, EnterOnAFolderOfTheListGoesThere) {
  world_.WhenHanging([this] {
    world_.server->HangAtBatch(0);
    ClickItem(QStringLiteral("part0"));
    EXPECT_EQ(world_.List().SelectedItems().size(), 1U);
    world_.PressKey(Qt::Key_Return);
  });
  world_.ClickNode(parts_);
  EXPECT_EQ(world_.Nav().CurrentAddress(), parts_ + QStringLiteral("\\part0"));
  EXPECT_TRUE(world_.prompts_.Asked().empty());
}

TEST_F(SlowListingTest, AFileOfTheListIsNoPlace) {
  world_.WhenHanging([this] {
    DoubleClickItem(QStringLiteral("main.pac"));
    EXPECT_TRUE(world_.List().SelectedItems().empty());
    world_.List().setCurrentIndex(world_.Window()->ListModel().IndexOf(
        world_.Window()->ListModel().FindByText(QStringLiteral("main.pac"))));
    world_.List().setFocus();
    world_.PressKey(Qt::Key_Return);
    // Other keys of the list do nothing, on a folder neither.
    ClickItem(QStringLiteral("part0"));
    world_.PressKey(Qt::Key_Down);
    world_.PressKey(Qt::Key_Delete);
    world_.PressKey(Qt::Key_F2);
    EXPECT_EQ(world_.List().SelectedItems().size(), 1U);
    LetGo();
  });
  world_.ClickNode(parts_);
  EXPECT_TRUE(world_.acted);
  ExpectAllShown();
  EXPECT_TRUE(world_.prompts_.Asked().empty());
  EXPECT_EQ(world_.robot->Tree().filter(QStringLiteral("main.pac")).size(), 2);
}

TEST_F(SlowListingTest, TwoClicksOnAFolderOpenNoEditorAfterwards) {
  world_.WhenHanging([this] {
    world_.List().setFocus();
    world_.ClickTwice(QStringLiteral("part0"));
    EXPECT_TRUE(world_.WaitsForEditor());
    LetGo();
  });
  world_.ClickNode(parts_);
  ExpectAllShown();
  EXPECT_FALSE(world_.WaitsForEditor());
}

TEST_F(SlowListingTest, AnAddressThatIsEnteredGoesThere) {
  world_.WhenHanging([this] {
    ClickInAddressBox();
    EXPECT_TRUE(AddressBox().lineEdit()->hasFocus());
    TypeAddress(QStringLiteral("Workspace\\My Computer"));
    EXPECT_EQ(AddressBox().currentText(), QStringLiteral("Workspace\\My Computer"));
    EXPECT_TRUE(world_.server->IsHanging());
    world_.PressKey(Qt::Key_Return);
  });
  world_.ClickNode(parts_);
  EXPECT_TRUE(world_.acted);
  EXPECT_EQ(world_.Nav().CurrentAddress(), QStringLiteral("Workspace\\My Computer"));
  EXPECT_EQ(AddressBox().currentText(), QStringLiteral("Workspace\\My Computer"));
  EXPECT_TRUE(world_.List().hasFocus());
  EXPECT_TRUE(world_.prompts_.Asked().empty());
}

TEST_F(SlowListingTest, TheButtonBesideTheAddressGoesThere) {
  QToolButton& go = *world_.Window()->Bars().Button(CommandId::GoToAddress);
  world_.WhenHanging([&] {
    // The address that is shown is not entered.
    world_.ClickAt(go, go.rect().center());
    EXPECT_TRUE(world_.server->IsHanging());
    ClickInAddressBox();
    TypeAddress(QStringLiteral("Workspace"));
    world_.ClickAt(go, go.rect().center());
  });
  world_.ClickNode(parts_);
  EXPECT_EQ(world_.Nav().CurrentAddress(), QStringLiteral("Workspace"));
}

TEST_F(SlowListingTest, TheAccessKeyLeadsToTheAddress) {
  world_.WhenHanging([this] {
    world_.PressKey(Qt::Key_A, Qt::AltModifier);
    EXPECT_TRUE(AddressBox().hasFocus());
    TypeAddress(QStringLiteral("Workspace"));
    // No menu opens, and nothing moves the focus.
    for (const int key : {Qt::Key_Tab, Qt::Key_F5, Qt::Key_F10, Qt::Key_Menu}) {
      world_.PressKey(key);
    }
    world_.PressKey(Qt::Key_F, Qt::AltModifier);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    EXPECT_TRUE(AddressBox().hasFocus());
    EXPECT_TRUE(world_.server->IsHanging());
    world_.PressKey(Qt::Key_Return);
  });
  world_.ClickNode(parts_);
  EXPECT_EQ(world_.Nav().CurrentAddress(), QStringLiteral("Workspace"));
}

TEST_F(SlowListingTest, AnAddressOfTheHistoryGoesThere) {
  AddressBox().AddToHistory(QStringLiteral("Workspace"));
  world_.WhenHanging([this] {
    ClickInAddressBox();
    AddressBox().showPopup();
    QWidget* const popup = QApplication::activePopupWidget();
    ASSERT_NE(popup, nullptr);
    QAbstractItemView& entries = *AddressBox().view();
    const QPoint at = entries.visualRect(entries.model()->index(0, 0)).center();
    QTest::mouseMove(popup->windowHandle(), entries.viewport()->mapTo(popup, at));
    QTest::keyClick(popup->windowHandle(), Qt::Key_Return);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    EXPECT_EQ(AddressBox().currentText(), QStringLiteral("Workspace"));
    world_.PressKey(Qt::Key_Return);
  });
  world_.ClickNode(parts_);
  EXPECT_TRUE(world_.acted);
  EXPECT_EQ(world_.Nav().CurrentAddress(), QStringLiteral("Workspace"));
}

TEST_F(SlowListingTest, AWrongAddressShowsTheFolderAnew) {
  const QString wrong = QStringLiteral("Workspace\\Robot\\nowhere");
  world_.WhenHanging([&] {
    world_.server->HangAtBatch(0);
    ClickInAddressBox();
    TypeAddress(wrong);
    world_.PressKey(Qt::Key_Return);
  });
  world_.ClickNode(parts_);
  EXPECT_TRUE(world_.acted);
  ASSERT_EQ(world_.prompts_.Texts(), QStringList(QStringLiteral("Failed Move to a specified address.")));
  ExpectAllShown();
  // It is there to be corrected.
  EXPECT_EQ(AddressBox().currentText(), wrong);
  EXPECT_TRUE(AddressBox().hasFocus());
}

TEST_F(SlowListingTest, TheLastChoiceCounts) {
  world_.WhenHanging([this] {
    ClickInAddressBox();
    TypeAddress(QStringLiteral("Workspace\\My Computer"));
    world_.PressKey(Qt::Key_Return);
    world_.ClickAt(*world_.Tree().viewport(), world_.PointOf(QStringLiteral("Workspace")));
  });
  world_.ClickNode(parts_);
  EXPECT_EQ(world_.Nav().CurrentAddress(), QStringLiteral("Workspace"));
  EXPECT_TRUE(world_.prompts_.Asked().empty());
}

TEST_F(SlowListingTest, ClosingCloses) {
  bool unloaded = false;
  QObject::connect(world_.Window(), &frmFileMgr::Unloaded, world_.Window(), [&] { unloaded = true; });
  world_.WhenHanging([this] { EXPECT_FALSE(world_.Window()->close()); });
  world_.ClickNode(parts_);
  EXPECT_TRUE(QTest::qWaitFor([&] { return unloaded; }, 30'000));
  EXPECT_TRUE(world_.prompts_.Asked().empty());
}

TEST(SlowListingNamesTest, DoubleNamesAreReportedAfterTheListing) {
  WaitingWorld world;
  world.robot->AddFile(QStringLiteral("parts\\Main.pac"));
  world.robot->AddFile(QStringLiteral("parts\\main.PAC"));
  world.ShowRobot();
  world.prompts_.AnswerAllBoxes(PromptAnswer::Ok);
  bool asked = false;
  world.prompts_.onQuestion = [&](const AskedQuestion& question) {
    asked = true;
    EXPECT_TRUE(question.text.startsWith(QStringLiteral("Can't display ")));
    EXPECT_FALSE(world.shippedWaiter.IsWaiting());
    // The rows are there already.
    EXPECT_EQ(world.Window()->ListModel().rowCount(), 1);
  };
  world.ClickNode(WaitingWorld::Robot(QStringLiteral("parts")));
  EXPECT_TRUE(asked);
  EXPECT_EQ(world.prompts_.Asked().size(), 1U);
}

}  // namespace
}  // namespace trevane::test
