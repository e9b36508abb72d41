#include "dialogs/frmGage.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWindow>

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace trevane {
namespace {

class PaintCounter : public QObject {
 public:
  int paints = 0;

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    paints += event->type() == QEvent::Paint ? 1 : 0;
    return false;
  }
};

class LayoutCounter : public QObject {
 public:
  int layouts = 0;

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    layouts += event->type() == QEvent::LayoutRequest ? 1 : 0;
    return false;
  }
};

bool WaitUntil(const std::function<bool()>& condition) {
  QDeadlineTimer deadline(30'000);
  while (!condition() && !deadline.hasExpired()) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 50);
  }
  return condition();
}

void PressEscape(QWidget* where) {
  QKeyEvent press(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
  QApplication::sendEvent(where, &press);
}

struct GageTest : testing::Test {
  frmGage gage;
  QProgressBar* bar = gage.findChild<QProgressBar*>(QStringLiteral("prgState"));
  QLabel* label = gage.findChild<QLabel*>(QStringLiteral("lblInfo"));
  QPushButton* cancel = gage.findChild<QPushButton*>(QStringLiteral("cmdCancel"));
};

TEST_F(GageTest, IsLoadedHiddenEmptyAndWithCancelDisabled) {
  EXPECT_FALSE(gage.isVisible());
  EXPECT_FALSE(gage.IsClickedCancel());
  EXPECT_EQ(label->text(), QString());
  EXPECT_EQ(bar->minimum(), 0);
  EXPECT_EQ(gage.GageMax(), 100);
  EXPECT_EQ(gage.GageValue(), 0);
  EXPECT_FALSE(cancel->isEnabled());
}

TEST_F(GageTest, IsShownModelessWithTheCaptionAsItsTitle) {
  gage.ShowGage(QStringLiteral("COPY Files/Directories"));
  EXPECT_TRUE(gage.isVisible());
  EXPECT_FALSE(gage.isModal());
  EXPECT_EQ(gage.windowTitle(), QStringLiteral("COPY Files/Directories"));
}

TEST_F(GageTest, IncrementOnAHiddenWindowChangesNeitherLabelNorBar) {
  gage.SetGageLabel(QStringLiteral("before"));
  gage.IncrementGageValue(QStringLiteral("after"));
  EXPECT_EQ(gage.GageValue(), 0);
  EXPECT_EQ(gage.GageLabel(), QStringLiteral("before"));

  gage.ShowGage(QStringLiteral("x"));
  gage.IncrementGageValue(QStringLiteral("shown"));
  gage.hide();
  gage.IncrementGageValue(QStringLiteral("hidden"));
  EXPECT_EQ(gage.GageValue(), 1);
  EXPECT_EQ(gage.GageLabel(), QStringLiteral("shown"));
}

TEST_F(GageTest, IncrementWithAnEmptyLabelKeepsTheLabel) {
  gage.ShowGage(QStringLiteral("x"));
  gage.IncrementGageValue(QStringLiteral("first.txt"));
  gage.IncrementGageValue(QString());
  EXPECT_EQ(bar->value(), 2);
  EXPECT_EQ(label->text(), QStringLiteral("first.txt"));
}

TEST_F(GageTest, ACountOfZeroGivesAMaximumOfOneAndTheBarStaysEmpty) {
  gage.SetGageMax(0);
  gage.ShowGage(QStringLiteral("x"));
  EXPECT_EQ(gage.GageMax(), 1);
  EXPECT_EQ(bar->maximum(), 1);
  EXPECT_EQ(gage.GageValue(), 0);
}

TEST_F(GageTest, TheMaximumIsReadBackOneMoreThanWritten) {
  gage.SetGageMax(40);
  EXPECT_EQ(gage.GageMax(), 41);
}

TEST_F(GageTest, ABarAdvancedOnceAnEntryNeverReachesItsEnd) {
  gage.SetGageMax(5);
  gage.ShowGage(QStringLiteral("x"));
  for (int i = 0; i < 5; ++i) {
    gage.IncrementGageValue(QStringLiteral("entry"));
  }
  EXPECT_EQ(gage.GageValue(), 5);
  EXPECT_LT(gage.GageValue(), gage.GageMax());
}

TEST_F(GageTest, TheValueStopsAtTheMaximumAndTheLabelChanges) {
  gage.SetGageMax(0);
  gage.ShowGage(QStringLiteral("x"));
  gage.IncrementGageValue(QStringLiteral("one"));
  gage.IncrementGageValue(QStringLiteral("two"));
  EXPECT_EQ(gage.GageValue(), 1);
  EXPECT_EQ(gage.GageLabel(), QStringLiteral("two"));
}

TEST_F(GageTest, TheLargestCountDoesNotOverflow) {
  gage.SetGageMax(std::numeric_limits<qint32>::max());
  EXPECT_EQ(gage.GageMax(), std::numeric_limits<qint32>::max());
}

TEST_F(GageTest, ASmallerMaximumTakesTheValueWithIt) {
  gage.ShowGage(QStringLiteral("x"));
  for (int i = 0; i < 10; ++i) {
    gage.IncrementGageValue(QString());
  }
  gage.SetGageMax(3);
  EXPECT_EQ(gage.GageValue(), 4);
}

TEST_F(GageTest, ClearSetsTheValueToZeroAndLeavesTheRest) {
  gage.SetGageMax(9);
  gage.ShowGage(QStringLiteral("x"));
  gage.IncrementGageValue(QStringLiteral("entry"));
  gage.GageClear();
  EXPECT_EQ(gage.GageValue(), 0);
  EXPECT_EQ(gage.GageMax(), 10);
  EXPECT_EQ(gage.GageLabel(), QStringLiteral("entry"));
}

TEST_F(GageTest, LabelsAreShownAsTheyStandNeverAsMarkup) {
  gage.SetGageLabel(QStringLiteral("<b>bold</b>&amp;"));
  EXPECT_EQ(label->text(), QStringLiteral("<b>bold</b>&amp;"));
  EXPECT_EQ(label->textFormat(), Qt::PlainText);
}

TEST_F(GageTest, TheWindowKeepsItsSizeWithoutButtonOrBar) {
  gage.ShowGage(QStringLiteral("x"));
  const QSize size = gage.size();
  gage.SetCancelVisible(false);
  gage.SetGageBarVisible(false);
  EXPECT_FALSE(cancel->isVisible());
  EXPECT_FALSE(bar->isVisible());
  QCoreApplication::processEvents();
  EXPECT_EQ(gage.size(), size);
  gage.GageFormInit();
  EXPECT_TRUE(cancel->isVisible());
  EXPECT_TRUE(bar->isVisible());
  EXPECT_EQ(gage.minimumSize(), gage.maximumSize());
}

TEST_F(GageTest, AClickOnCancelIsRememberedAndTheWindowStays) {
  gage.ShowGage(QStringLiteral("x"));
  gage.CancelEnable(true);
  EXPECT_FALSE(gage.IsClickedCancel());
  cancel->click();
  EXPECT_TRUE(gage.IsClickedCancel());
  EXPECT_EQ(cancel->text(), QStringLiteral("Cancelling"));
  EXPECT_TRUE(gage.isVisible());
  gage.GageClear();
  gage.GageFormInit();
  gage.ShowGage(QStringLiteral("y"));
  EXPECT_TRUE(gage.IsClickedCancel());
}

TEST_F(GageTest, ClosingTheFrameIsCancelAndDoesNotClose) {
  gage.ShowGage(QStringLiteral("x"));
  gage.CancelEnable(true);
  EXPECT_FALSE(gage.close());
  EXPECT_TRUE(gage.IsClickedCancel());
  EXPECT_TRUE(gage.isVisible());
}

TEST_F(GageTest, ClosingTheFrameDoesNothingWhileCancelIsDisabled) {
  gage.ShowGage(QStringLiteral("x"));
  EXPECT_FALSE(gage.close());
  EXPECT_FALSE(gage.IsClickedCancel());
  EXPECT_TRUE(gage.isVisible());
}

TEST_F(GageTest, EscIsCancelWhenEnabledOnly) {
  gage.ShowGage(QStringLiteral("x"));
  PressEscape(&gage);
  EXPECT_FALSE(gage.IsClickedCancel());
  EXPECT_TRUE(gage.isVisible());
  gage.CancelEnable(true);
  PressEscape(&gage);
  EXPECT_TRUE(gage.IsClickedCancel());
  EXPECT_TRUE(gage.isVisible());
}

TEST_F(GageTest, AHiddenCancelTakesNeitherEscNorTheCloseBox) {
  gage.ShowGage(QStringLiteral("x"));
  gage.CancelEnable(true);
  gage.SetCancelVisible(false);
  PressEscape(&gage);
  gage.close();
  EXPECT_FALSE(gage.IsClickedCancel());
}

TEST_F(GageTest, ManyIncrementsPaintAFewTimesAndLayOutNever) {
  constexpr int kCount = 100000;
  gage.SetGageMax(kCount);
  gage.ShowGage(QStringLiteral("Display Folder:x"));
  ASSERT_TRUE(WaitUntil([this] { return gage.windowHandle()->isExposed(); }));
  QCoreApplication::processEvents();
  PaintCounter ofBar;
  PaintCounter ofLabel;
  LayoutCounter layouts;
  bar->installEventFilter(&ofBar);
  label->installEventFilter(&ofLabel);
  gage.installEventFilter(&layouts);
  QElapsedTimer clock;
  clock.start();
  for (int i = 1; i <= kCount; ++i) {
    gage.IncrementGageValue(QString::number(i) + QStringLiteral(".txt"));
    ASSERT_EQ(bar->value(), i);
    QCoreApplication::processEvents();
  }
  // One painting a period, and one for the first increment.
  const qint64 atMost = clock.elapsed() / frmGage::kRepaintMilliseconds + 2;
  EXPECT_LE(ofBar.paints, atMost);
  EXPECT_LE(ofLabel.paints, atMost);
  // Within the first period a fast machine has done with all of them.
  EXPECT_TRUE(WaitUntil([&ofBar] { return ofBar.paints > 0; }));
  EXPECT_EQ(layouts.layouts, 0);
  EXPECT_EQ(label->text(), QStringLiteral("100000.txt"));
  RecordProperty("paints of the bar", ofBar.paints);
}

TEST_F(GageTest, AGrowingMaximumPaintsAFewTimes) {
  gage.ShowGage(QStringLiteral("Display Folder:x"));
  ASSERT_TRUE(WaitUntil([this] { return gage.windowHandle()->isExposed(); }));
  QCoreApplication::processEvents();
  PaintCounter ofBar;
  bar->installEventFilter(&ofBar);
  QElapsedTimer clock;
  clock.start();
  for (int i = 1; i <= 20000; ++i) {
    gage.SetGageMax(i);
    QCoreApplication::processEvents();
  }
  EXPECT_LE(ofBar.paints, clock.elapsed() / frmGage::kRepaintMilliseconds + 2);
  EXPECT_TRUE(WaitUntil([&ofBar] { return ofBar.paints > 0; }));
  EXPECT_EQ(gage.GageMax(), 20001);
}

TEST_F(GageTest, TheLastStateIsPaintedWithoutAnotherIncrement) {
  gage.ShowGage(QStringLiteral("x"));
  ASSERT_TRUE(WaitUntil([this] { return gage.windowHandle()->isExposed(); }));
  gage.IncrementGageValue(QStringLiteral("first"));
  QCoreApplication::processEvents();
  PaintCounter painted;
  label->installEventFilter(&painted);
  gage.IncrementGageValue(QStringLiteral("last"));
  EXPECT_EQ(painted.paints, 0);
  EXPECT_TRUE(WaitUntil([&painted] { return painted.paints > 0; }));
}

TEST_F(GageTest, EachChangeIsPaintedWhenItComesAfterAPause) {
  gage.ShowGage(QStringLiteral("x"));
  ASSERT_TRUE(WaitUntil([this] { return gage.windowHandle()->isExposed(); }));
  gage.IncrementGageValue(QStringLiteral("gripper.pac"));
  const auto expectPainted = [](QWidget& widget, const std::function<void()>& change) {
    // Otherwise it would be painted with the one before.
    QElapsedTimer pause;
    pause.start();
    ASSERT_TRUE(WaitUntil([&pause] { return pause.hasExpired(3 * frmGage::kRepaintMilliseconds); }));
    PaintCounter painted;
    widget.installEventFilter(&painted);
    change();
    EXPECT_TRUE(WaitUntil([&painted] { return painted.paints > 0; }));
  };
  expectPainted(*label, [this] { gage.SetGageLabel(QStringLiteral("gripper.pac: 34 of 95 MiB")); });
  expectPainted(*bar, [this] { gage.GageClear(); });
  expectPainted(*label, [this] { gage.IncrementGageValue(QStringLiteral("main.pac")); });
  expectPainted(*bar, [this] { gage.SetGageMax(7); });
}

TEST_F(GageTest, PaintsAtOnceWhenAskedToBeforeTheOperationBlocks) {
  gage.ShowGage(QStringLiteral("x"));
  ASSERT_TRUE(WaitUntil([this] { return gage.windowHandle()->isExposed(); }));
  gage.IncrementGageValue(QStringLiteral("first"));
  QCoreApplication::processEvents();
  PaintCounter painted;
  label->installEventFilter(&painted);
  gage.IncrementGageValue(QStringLiteral("last"));
  gage.PaintNow();
  EXPECT_EQ(painted.paints, 1);
}

struct GageAboveAWindow : testing::Test {
  GageAboveAWindow() {
    auto* column = new QVBoxLayout(&main);
    column->addWidget(edit);
    main.show();
    main.activateWindow();
    edit->setFocus();
    EXPECT_TRUE(WaitUntil([this] { return edit->hasFocus(); }));
    gage = new frmGage(&main);
  }

  QWidget main;
  QLineEdit* edit = new QLineEdit;
  frmGage* gage = nullptr;
};

TEST_F(GageAboveAWindow, StaysAboveItWithoutAPlaceOfItsOwnAmongTheWindows) {
  gage->ShowGage(QStringLiteral("x"));
  EXPECT_TRUE(gage->isWindow());
  EXPECT_EQ(gage->windowHandle()->transientParent(), main.windowHandle());
}

TEST_F(GageAboveAWindow, LeavesTheKeyboardWhereItIs) {
  gage->ShowGage(QStringLiteral("x"));
  QCoreApplication::processEvents();
  EXPECT_TRUE(gage->testAttribute(Qt::WA_ShowWithoutActivating));
  EXPECT_EQ(main.focusWidget(), edit);
}

TEST_F(GageAboveAWindow, TakesEscFromTheWindowBelowWhileCancelIsEnabledOnly) {
  gage->ShowGage(QStringLiteral("x"));
  PressEscape(edit);
  EXPECT_FALSE(gage->IsClickedCancel());
  gage->CancelEnable(true);
  PressEscape(edit);
  EXPECT_TRUE(gage->IsClickedCancel());
}

TEST_F(GageAboveAWindow, LeavesEscToOtherWindows) {
  QDialog question(&main);
  question.show();
  gage->ShowGage(QStringLiteral("x"));
  gage->CancelEnable(true);
  PressEscape(&question);
  EXPECT_FALSE(gage->IsClickedCancel());
  EXPECT_FALSE(question.isVisible());
}

TEST_F(GageAboveAWindow, StaysUsableWhileTheWindowBelowIsDisabled) {
  gage->ShowGage(QStringLiteral("x"));
  gage->CancelEnable(true);
  main.setEnabled(false);
  auto* cancel = gage->findChild<QPushButton*>(QStringLiteral("cmdCancel"));
  EXPECT_TRUE(gage->isEnabled());
  EXPECT_TRUE(cancel->isEnabled());
  EXPECT_EQ(gage->focusWidget(), cancel);
  cancel->click();
  EXPECT_TRUE(gage->IsClickedCancel());
}

TEST_F(GageAboveAWindow, IsUsableWhenTheWindowBelowIsDisabledAlready) {
  main.setEnabled(false);
  gage->ShowGage(QStringLiteral("x"));
  gage->CancelEnable(true);
  EXPECT_TRUE(gage->isEnabled());
  PressEscape(&main);
  EXPECT_TRUE(gage->IsClickedCancel());
}

}  // namespace
}  // namespace trevane
