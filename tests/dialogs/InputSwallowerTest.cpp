#include "dialogs/InputSwallower.h"

#include <QApplication>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QShortcut>
#include <QTest>
#include <QWheelEvent>
#include <QWindow>

#include <gtest/gtest.h>

namespace trevane {
namespace {

constexpr QPoint kPlace(20, 20);
/// Far enough from the one before for two clicks to be no double click.
constexpr QPoint kStep(40, 0);

class RecordingWindow final : public QWidget {
 public:
  RecordingWindow() { setAcceptDrops(true); }
  QStringList seen;
  [[nodiscard]] QString TakeSeen() { return std::exchange(seen, {}).join(u' '); }

 protected:
  void mousePressEvent(QMouseEvent* /*event*/) override { seen += QStringLiteral("press"); }
  void mouseDoubleClickEvent(QMouseEvent* /*event*/) override { seen += QStringLiteral("double"); }
  void mouseReleaseEvent(QMouseEvent* /*event*/) override { seen += QStringLiteral("release"); }
  void mouseMoveEvent(QMouseEvent* /*event*/) override { seen += QStringLiteral("move"); }
  void wheelEvent(QWheelEvent* /*event*/) override { seen += QStringLiteral("wheel"); }
  void contextMenuEvent(QContextMenuEvent* /*event*/) override { seen += QStringLiteral("menu"); }
  void keyPressEvent(QKeyEvent* event) override {
    seen += event->isAutoRepeat() ? QStringLiteral("repeat") : QStringLiteral("down");
  }
  void keyReleaseEvent(QKeyEvent* event) override {
    seen += event->isAutoRepeat() ? QStringLiteral("repeat-up") : QStringLiteral("up");
  }
  void dragEnterEvent(QDragEnterEvent* event) override {
    event->accept();
    seen += QStringLiteral("drag");
  }
  void dropEvent(QDropEvent* /*event*/) override { seen += QStringLiteral("drop"); }
};

class InputSwallowerTest : public testing::Test {
 protected:
  InputSwallowerTest() {
    window_.resize(200, 200);
    window_.show();
    window_.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
    window_.seen.clear();
  }

  void Press(Qt::MouseButton button = Qt::LeftButton) {
    static int presses = 0;
    place_ = kPlace + kStep * (++presses % 4);
    QTest::mousePress(window_.windowHandle(), button, {}, place_);
  }
  void Release(Qt::MouseButton button = Qt::LeftButton) {
    QTest::mouseRelease(window_.windowHandle(), button, {}, place_);
  }
  /// As the system sends it.
  void Key(QEvent::Type type, int key, bool repeat = false) {
    QKeyEvent event(type, key, Qt::NoModifier, QString(), repeat);
    QApplication::sendEvent(window_.windowHandle(), &event);
  }

  RecordingWindow window_;
  QPoint place_;
  bool takesInput_ = false;
  bool choosesAnotherPlace_ = false;
  bool takesText_ = false;
  int takenKey_ = 0;
  int escapes_ = 0;
  InputSwallower swallower_{
      {.takesInput = [this](const QWidget&) { return takesInput_; },
       .choosesAnotherPlace = [this](const QWidget&, const QPoint&) { return choosesAnotherPlace_; },
       .takesText = [this](const QWidget&) { return takesText_; },
       .takesKey = [this](const QWidget&, const QKeyEvent& key) { return key.key() == takenKey_; },
       .escPressed = [this] { ++escapes_; }}};
};

TEST_F(InputSwallowerTest, OutsideAWaitEverythingPasses) {
  Press();
  Release();
  Key(QEvent::KeyPress, Qt::Key_A);
  Key(QEvent::KeyPress, Qt::Key_A, true);
  Key(QEvent::KeyRelease, Qt::Key_A);
  EXPECT_EQ(window_.TakeSeen(), QStringLiteral("press release down repeat up"));
}

TEST_F(InputSwallowerTest, AClickOfTheWaitIsDropped) {
  swallower_.Begin();
  Press();
  Release();
  Press(Qt::RightButton);
  Release(Qt::RightButton);
  swallower_.End();
  EXPECT_EQ(window_.TakeSeen(), QString());
  Press();
  Release();
  EXPECT_TRUE(window_.TakeSeen().endsWith(QStringLiteral("release")));
}

TEST_F(InputSwallowerTest, ARestOfAClickFromBeforeIsDelivered) {
  Press();
  swallower_.Begin();
  Release();
  swallower_.End();
  EXPECT_EQ(window_.TakeSeen(), QStringLiteral("press release"));
}

TEST_F(InputSwallowerTest, ADroppedPressHasNoReleaseAfterwards) {
  swallower_.Begin();
  Press();
  swallower_.End();
  Release();
  EXPECT_EQ(window_.TakeSeen(), QString());
}

TEST_F(InputSwallowerTest, ADroppedPressIsNoHalfOfADoubleClick) {
  swallower_.Begin();
  Press();
  Release();
  swallower_.End();
  QMouseEvent second(QEvent::MouseButtonDblClick, kPlace, window_.mapToGlobal(kPlace), Qt::LeftButton,
                     Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&window_, &second);
  EXPECT_EQ(window_.TakeSeen(), QString());
}

TEST_F(InputSwallowerTest, MovesWithAButtonAreDropped) {
  Press();
  swallower_.Begin();
  QMouseEvent move(QEvent::MouseMove, kPlace, window_.mapToGlobal(kPlace), Qt::NoButton, Qt::LeftButton,
                   Qt::NoModifier);
  QApplication::sendEvent(&window_, &move);
  EXPECT_EQ(window_.TakeSeen(), QStringLiteral("press"));
  swallower_.End();
  QApplication::sendEvent(&window_, &move);
  EXPECT_EQ(window_.TakeSeen(), QStringLiteral("move"));
}

TEST_F(InputSwallowerTest, ADroppedPressHasNoMovesAfterwards) {
  swallower_.Begin();
  Press();
  swallower_.End();
  QMouseEvent move(QEvent::MouseMove, kPlace, window_.mapToGlobal(kPlace), Qt::NoButton, Qt::LeftButton,
                   Qt::NoModifier);
  QApplication::sendEvent(&window_, &move);
  EXPECT_EQ(window_.TakeSeen(), QString());
  Release();
  QApplication::sendEvent(&window_, &move);
  EXPECT_EQ(window_.TakeSeen(), QStringLiteral("move"));
}

TEST_F(InputSwallowerTest, TheKeysThatCloseAreLeftToTheSystem) {
  swallower_.Begin();
  QKeyEvent f4(QEvent::KeyPress, Qt::Key_F4, Qt::AltModifier);
  QApplication::sendEvent(window_.windowHandle(), &f4);
  EXPECT_FALSE(f4.isAccepted());
  QKeyEvent alone(QEvent::KeyPress, Qt::Key_F4, Qt::NoModifier);
  QApplication::sendEvent(window_.windowHandle(), &alone);
  EXPECT_TRUE(alone.isAccepted());
  EXPECT_EQ(window_.TakeSeen(), QString());
}

TEST_F(InputSwallowerTest, WheelMenuAndDropsAreDropped) {
  const QMimeData data;
  const auto all = [&] {
    QWheelEvent wheel(kPlace, window_.mapToGlobal(kPlace), {}, QPoint(0, 120), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(&window_, &wheel);
    QContextMenuEvent menu(QContextMenuEvent::Keyboard, kPlace, window_.mapToGlobal(kPlace));
    QApplication::sendEvent(&window_, &menu);
    QDragEnterEvent drag(kPlace, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window_, &drag);
    QDropEvent drop(kPlace, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window_, &drop);
    return drag.isAccepted();
  };
  EXPECT_TRUE(all());
  EXPECT_EQ(window_.TakeSeen(), QStringLiteral("wheel menu drag drop"));
  swallower_.Begin();
  EXPECT_FALSE(all());
  EXPECT_EQ(window_.TakeSeen(), QString());
}

TEST_F(InputSwallowerTest, AKeyOfTheWaitIsDeadUntilItIsReleased) {
  swallower_.Begin();
  Key(QEvent::KeyPress, Qt::Key_Down);
  Key(QEvent::KeyPress, Qt::Key_Down, true);
  swallower_.End();
  Key(QEvent::KeyPress, Qt::Key_Down, true);
  Key(QEvent::KeyRelease, Qt::Key_Down, true);
  Key(QEvent::KeyRelease, Qt::Key_Down);
  EXPECT_EQ(window_.TakeSeen(), QString());
  Key(QEvent::KeyPress, Qt::Key_Down);
  Key(QEvent::KeyPress, Qt::Key_Down, true);
  Key(QEvent::KeyRelease, Qt::Key_Down);
  EXPECT_EQ(window_.TakeSeen(), QStringLiteral("down repeat up"));
}

TEST_F(InputSwallowerTest, AKeyFromBeforeIsDeadUntilItIsReleased) {
  Key(QEvent::KeyPress, Qt::Key_Down);
  swallower_.Begin();
  swallower_.End();
  Key(QEvent::KeyPress, Qt::Key_Down, true);
  EXPECT_EQ(window_.TakeSeen(), QStringLiteral("down"));
  // Its release is that of a press that was delivered.
  Key(QEvent::KeyRelease, Qt::Key_Down);
  EXPECT_EQ(window_.TakeSeen(), QStringLiteral("up"));
}

TEST_F(InputSwallowerTest, AKeyWhoseReleaseIsMissedWorksAgain) {
  swallower_.Begin();
  Key(QEvent::KeyPress, Qt::Key_A);
  swallower_.End();
  Key(QEvent::KeyPress, Qt::Key_A);
  EXPECT_EQ(window_.TakeSeen(), QStringLiteral("down"));
}

TEST_F(InputSwallowerTest, ShortcutsAreDropped) {
  int activated = 0;
  QShortcut shortcut(QKeySequence(Qt::Key_F5), &window_);
  QObject::connect(&shortcut, &QShortcut::activated, &window_, [&] { ++activated; });
  QTest::keyClick(window_.windowHandle(), Qt::Key_F5);
  EXPECT_EQ(activated, 1);
  window_.seen.clear();
  swallower_.Begin();
  QTest::keyClick(window_.windowHandle(), Qt::Key_F5);
  EXPECT_EQ(activated, 1);
  EXPECT_EQ(window_.TakeSeen(), QString());
}

TEST_F(InputSwallowerTest, EscIsReportedOnce) {
  swallower_.Begin();
  Key(QEvent::ShortcutOverride, Qt::Key_Escape);
  Key(QEvent::KeyPress, Qt::Key_Escape);
  Key(QEvent::KeyPress, Qt::Key_Escape, true);
  EXPECT_EQ(escapes_, 1);
  EXPECT_EQ(window_.TakeSeen(), QString());
}

TEST_F(InputSwallowerTest, AWindowOfTheWaitTakesInput) {
  takesInput_ = true;
  swallower_.Begin();
  Press();
  Release();
  Key(QEvent::KeyPress, Qt::Key_Escape);
  Key(QEvent::KeyRelease, Qt::Key_Escape);
  EXPECT_EQ(window_.TakeSeen(), QStringLiteral("press release down up"));
  EXPECT_EQ(escapes_, 0);
}

TEST_F(InputSwallowerTest, AClickOnAnotherPlaceIsDelivered) {
  choosesAnotherPlace_ = true;
  swallower_.Begin();
  Press();
  Release();
  EXPECT_EQ(window_.TakeSeen(), QStringLiteral("press release"));
  Press(Qt::RightButton);
  Release(Qt::RightButton);
  EXPECT_EQ(window_.TakeSeen(), QString());
}

TEST_F(InputSwallowerTest, TextIsSelectedWithTheLeftButtonOnly) {
  takesText_ = true;
  QMouseEvent move(QEvent::MouseMove, kPlace, window_.mapToGlobal(kPlace), Qt::NoButton, Qt::LeftButton,
                   Qt::NoModifier);
  swallower_.Begin();
  QApplication::sendEvent(&window_, &move);
  EXPECT_EQ(window_.TakeSeen(), QString());
  Press();
  QApplication::sendEvent(&window_, &move);
  Release();
  EXPECT_EQ(window_.TakeSeen(), QStringLiteral("press move release"));
  Press(Qt::RightButton);
  Release(Qt::RightButton);
  QApplication::sendEvent(&window_, &move);
  EXPECT_EQ(window_.TakeSeen(), QString());
}

TEST_F(InputSwallowerTest, AKeyThatIsTakenIsDelivered) {
  takenKey_ = Qt::Key_Return;
  swallower_.Begin();
  Key(QEvent::KeyPress, Qt::Key_Return);
  Key(QEvent::KeyPress, Qt::Key_Return, true);
  Key(QEvent::KeyRelease, Qt::Key_Return, true);
  Key(QEvent::KeyRelease, Qt::Key_Return);
  EXPECT_EQ(window_.TakeSeen(), QStringLiteral("down repeat repeat-up up"));
  Key(QEvent::KeyPress, Qt::Key_Down);
  Key(QEvent::KeyRelease, Qt::Key_Down);
  EXPECT_EQ(window_.TakeSeen(), QString());
}

TEST_F(InputSwallowerTest, AKeyThatWasDownBeforeIsNotTaken) {
  takenKey_ = Qt::Key_Return;
  Key(QEvent::KeyPress, Qt::Key_Return);
  EXPECT_EQ(window_.TakeSeen(), QStringLiteral("down"));
  swallower_.Begin();
  Key(QEvent::KeyRelease, Qt::Key_Return, true);
  Key(QEvent::KeyPress, Qt::Key_Return, true);
  EXPECT_EQ(window_.TakeSeen(), QString());
  Key(QEvent::KeyRelease, Qt::Key_Return);
  Key(QEvent::KeyPress, Qt::Key_Return);
  EXPECT_EQ(window_.TakeSeen(), QStringLiteral("up down"));
}

}  // namespace
}  // namespace trevane
