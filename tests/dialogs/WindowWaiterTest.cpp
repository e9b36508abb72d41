#include "dialogs/Prompts.h"
#include "dialogs/WaitHost.h"
#include "dialogs/WaitingWindow.h"
#include "dialogs/WindowWaiter.h"
#include "engine/remote/RunningCall.h"
#include "tests/support/ScriptedWaitClock.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QWindow>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <thread>

namespace trevane::test {
namespace {

class PaintedWindow final : public QWidget {
 public:
  int paints = 0;
  int presses = 0;

 protected:
  void paintEvent(QPaintEvent* /*event*/) override { ++paints; }
  void mousePressEvent(QMouseEvent* /*event*/) override { ++presses; }
};

struct Host final : WaitHost {
  void EndGestures() override { ++gesturesEnded; }
  [[nodiscard]] bool ChoosesAnotherPlace(const QWidget& /*widget*/,
                                         const QPoint& /*position*/) const override {
    return false;
  }
  [[nodiscard]] bool TakesAnotherAddress(const QWidget& /*widget*/) const override { return false; }
  [[nodiscard]] bool ChoosesAnotherPlace(const QWidget& /*widget*/, const QKeyEvent& /*key*/) const override {
    return false;
  }
  [[nodiscard]] bool IsInCommand() const override { return inCommand; }

  int gesturesEnded = 0;
  bool inCommand = false;
};

class WindowWaiterTest : public testing::Test {
 protected:
  WindowWaiterTest() {
    main_.resize(800, 500);
    main_.show();
    prompts_.SetMainWindow(&main_);
    waiter_.SetMainWindow(&main_, &host_);
    QCoreApplication::processEvents();
  }

  [[nodiscard]] static WaitingWindow* Shown() {
    for (QWidget* const window : QApplication::topLevelWidgets()) {
      auto* const waiting = qobject_cast<WaitingWindow*>(window);
      if (waiting != nullptr && waiting->isVisible()) {
        return waiting;
      }
    }
    return nullptr;
  }
  [[nodiscard]] static QPushButton* CancelOf(QWidget& window) {
    return window.findChild<QPushButton*>(QStringLiteral("cmdCancel"));
  }
  static void Click(QWidget& widget) {
    QTest::mouseClick(widget.window()->windowHandle(), Qt::LeftButton, {},
                      widget.mapTo(widget.window(), widget.rect().center()));
  }
  /// Waits for a call that ends in that turn.
  void WaitForTurns(int turns) {
    RunningCall call(queue_, QStringLiteral("Robot 1"), QStringLiteral("Reading programs"));
    const int last = clock_.Turns() + turns;
    clock_.afterTurn = [&] {
      if (clock_.Turns() == last) {
        call.Finish();
      }
    };
    waiter_.Wait(call);
    clock_.afterTurn = {};
  }

  WindowQueue queue_;
  PaintedWindow main_;
  Host host_;
  ScriptedWaitClock clock_;
  Prompts prompts_{[](qint32) {}, [](qint32) {}};
  WindowWaiter waiter_{queue_, prompts_, clock_};
  RunningCall call_{queue_, QStringLiteral("Robot 1"), QStringLiteral("Reading programs")};
};

TEST_F(WindowWaiterTest, AQuickCallCostsNoEventLoop) {
  bool ran = false;
  QMetaObject::invokeMethod(
      &main_, [&] { ran = true; }, Qt::QueuedConnection);
  clock_.BlocksTake(15);
  clock_.onBlock = [&] { call_.Finish(); };
  waiter_.Wait(call_);
  EXPECT_FALSE(ran);
  EXPECT_EQ(clock_.Turns(), 0);
  EXPECT_EQ(host_.gesturesEnded, 0);
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
  EXPECT_FALSE(waiter_.IsWaiting());
}

TEST_F(WindowWaiterTest, QuickCallsInARowLetEventsRunAtLast) {
  int ran = 0;
  QMetaObject::invokeMethod(
      &main_, [&] { ++ran; }, Qt::QueuedConnection);
  clock_.BlocksTake(15);
  for (int i = 0; i < 4; ++i) {
    RunningCall call(queue_, {}, {});
    clock_.onBlock = [&] { call.Finish(); };
    waiter_.Wait(call);
    EXPECT_EQ(ran, 0) << i;
  }
  // 60 ms have passed without an event.
  const int blocks = clock_.Blocks();
  WaitForTurns(1);
  EXPECT_EQ(ran, 1);
  EXPECT_EQ(clock_.Blocks(), blocks);
}

TEST_F(WindowWaiterTest, ALongerCallEntersTheLoopAfter20Ms) {
  clock_.onTurn = [&] { EXPECT_EQ(clock_.Now(), 20); };
  clock_.afterTurn = [&] { call_.Finish(); };
  waiter_.Wait(call_);
  EXPECT_EQ(clock_.Turns(), 1);
  EXPECT_EQ(host_.gesturesEnded, 1);
}

TEST_F(WindowWaiterTest, BetweenTwoTicksThereWasAPaint) {
  int before = 0;
  clock_.onTurn = [&] {
    before = main_.paints;
    main_.update();
  };
  clock_.afterTurn = [&] {
    EXPECT_GT(main_.paints, before) << clock_.Now();
    if (clock_.Turns() == 20) {
      call_.Finish();
    }
  };
  waiter_.Wait(call_);
  EXPECT_EQ(clock_.Turns(), 20);
}

TEST_F(WindowWaiterTest, TheWindowComesAfterHalfASecond) {
  clock_.onTurn = [&] {
    EXPECT_EQ(Shown() != nullptr, clock_.Now() >= WindowWaiter::kShowAfter) << clock_.Now();
    if (clock_.Turns() == 8) {
      call_.Finish();
    }
  };
  waiter_.Wait(call_);
  EXPECT_EQ(clock_.Turns(), 8);
  clock_.onTurn = {};
  QCoreApplication::processEvents();
  EXPECT_EQ(Shown(), nullptr);
}

TEST_F(WindowWaiterTest, NothingStandsAboveAMinimisedWindow) {
  main_.showMinimized();
  clock_.afterTurn = [&] {
    if (clock_.Turns() == 10) {
      EXPECT_EQ(Shown(), nullptr);
      main_.showNormal();
    } else if (clock_.Turns() == 12) {
      EXPECT_NE(Shown(), nullptr);
      call_.Finish();
    }
  };
  waiter_.Wait(call_);
  EXPECT_EQ(clock_.Turns(), 12);
}

TEST_F(WindowWaiterTest, TheWindowNamesWhatIsWaitedFor) {
  clock_.onTurn = [&] {
    if (WaitingWindow* const window = Shown()) {
      EXPECT_EQ(window->windowTitle(), QStringLiteral("Waiting"));
      EXPECT_EQ(window->findChild<QLabel*>(QStringLiteral("lblController"))->text(),
                QStringLiteral("Robot 1"));
      EXPECT_EQ(window->findChild<QLabel*>(QStringLiteral("lblWhat"))->text(),
                QStringLiteral("Reading programs"));
      EXPECT_EQ(window->accessibleDescription(), QStringLiteral("Robot 1: Reading programs. Esc cancels."));
      EXPECT_EQ(window->parentWidget(), &main_);
      const QPoint off = window->geometry().center() - main_.geometry().center();
      EXPECT_LE(off.manhattanLength(), 40);
      call_.Finish();
    }
  };
  waiter_.Wait(call_);
}

TEST_F(WindowWaiterTest, AnEarlyEscShowsTheWindowItsButtonOff) {
  clock_.onTurn = [&] {
    if (clock_.Turns() == 1) {
      QTest::keyClick(main_.windowHandle(), Qt::Key_Escape);
      EXPECT_TRUE(call_.IsCancelled());
    }
    EXPECT_EQ(Shown() != nullptr, clock_.Now() >= WindowWaiter::kShowAfter) << clock_.Now();
    if (WaitingWindow* const window = Shown()) {
      EXPECT_FALSE(CancelOf(*window)->isEnabled());
    }
  };
  waiter_.Wait(call_);
  EXPECT_TRUE(call_.IsAbandoned());
  EXPECT_GT(clock_.Turns(), 10);
}

TEST_F(WindowWaiterTest, CancelReachesTheWorkerInItsTurn) {
  int turn = 0;
  clock_.onTurn = [&] {
    if (WaitingWindow* const window = Shown(); window != nullptr && turn == 0) {
      turn = clock_.Turns();
      Click(*CancelOf(*window));
    }
  };
  clock_.afterTurn = [&] {
    EXPECT_EQ(call_.IsCancelled(), turn != 0) << clock_.Turns();
    if (call_.IsCancelled()) {
      EXPECT_EQ(clock_.Turns(), turn);
      call_.Finish();
    }
  };
  waiter_.Wait(call_);
  EXPECT_NE(turn, 0);
  EXPECT_FALSE(call_.IsAbandoned());
}

TEST_F(WindowWaiterTest, AHangingWorkerIsAbandonedAfter2000Ms) {
  qint64 cancelled = 0;
  clock_.onTurn = [&] {
    if (cancelled == 0 && Shown() != nullptr) {
      waiter_.Cancel();
      call_.Advance(clock_.Now());
      cancelled = clock_.Now();
    }
  };
  waiter_.Wait(call_);
  EXPECT_TRUE(call_.IsAbandoned());
  EXPECT_EQ(clock_.Now() - cancelled, 2000);
}

TEST_F(WindowWaiterTest, SilenceEndsTheWait) {
  waiter_.Wait(call_);
  EXPECT_TRUE(call_.IsTimedOut());
  EXPECT_TRUE(call_.IsAbandoned());
}

TEST_F(WindowWaiterTest, EscCancelsInTheMainWindow) {
  clock_.onTurn = [&] {
    QTest::keyClick(main_.windowHandle(), Qt::Key_Escape);
    EXPECT_TRUE(call_.IsCancelled());
    call_.Finish();
  };
  waiter_.Wait(call_);
  EXPECT_EQ(clock_.Turns(), 1);
}

TEST_F(WindowWaiterTest, TheOperationsGaugeServesTheWait) {
  prompts_.Gauge().ShowGage(QStringLiteral("COPY Files/Directories"));
  prompts_.Gauge().CancelEnable(true);
  prompts_.Gauge().SetGageLabel(QStringLiteral("a.pac"));
  QWidget* gauge = nullptr;
  for (QWidget* const window : QApplication::topLevelWidgets()) {
    gauge = window->objectName() == QStringLiteral("frmGage") ? window : gauge;
  }
  ASSERT_NE(gauge, nullptr);
  clock_.onTurn = [&] {
    EXPECT_EQ(Shown(), nullptr);
    EXPECT_EQ(gauge->findChild<QLabel*>(QStringLiteral("lblInfo"))->text(), QStringLiteral("a.pac"));
    if (clock_.Turns() == 8) {
      Click(*CancelOf(*gauge));
      EXPECT_TRUE(call_.IsCancelled());
      EXPECT_TRUE(prompts_.IsCancelled());
      call_.Finish();
    }
  };
  waiter_.Wait(call_);
  EXPECT_EQ(clock_.Turns(), 8);

  // What is cleaned up after the Cancel is not cancelled with it.
  clock_.onTurn = {};
  RunningCall next(queue_, {}, {});
  clock_.afterTurn = [&] { next.Finish(); };
  waiter_.Wait(next);
  EXPECT_FALSE(next.IsCancelled());
  prompts_.Gauge().UnloadGage();
}

TEST_F(WindowWaiterTest, TheGaugeShowsWhatTheWorkerTells) {
  prompts_.Gauge().ShowGage(QStringLiteral("Open Controllers"));
  prompts_.Gauge().CancelEnable(true);
  prompts_.Gauge().SetGageLabel(QStringLiteral("Connecting"));
  const auto label = [] {
    for (QWidget* const window : QApplication::topLevelWidgets()) {
      if (window->objectName() == QStringLiteral("frmGage")) {
        return window->findChild<QLabel*>(QStringLiteral("lblInfo"))->text();
      }
    }
    return QString();
  };
  QStringList labels;
  clock_.afterTurn = [&] {
    labels += label();
    if (clock_.Turns() == 1) {
      call_.Tell(QStringLiteral("Busy"));
    } else if (clock_.Turns() == 2) {
      call_.Tell(QString());
    } else if (clock_.Turns() == 3) {
      call_.Tell(QStringLiteral("Busy again"));
    } else {
      call_.Finish();
    }
  };
  waiter_.Wait(call_);
  EXPECT_EQ(labels, (QStringList{QStringLiteral("Connecting"), QStringLiteral("Robot 1: Busy"),
                                 QStringLiteral("Connecting"), QStringLiteral("Robot 1: Busy again")}));
  EXPECT_EQ(label(), QStringLiteral("Connecting"));
  prompts_.Gauge().UnloadGage();
}

TEST_F(WindowWaiterTest, AGaugesCancelBetweenCallsLeavesTheRefresh) {
  host_.inCommand = true;
  prompts_.Gauge().ShowGage(QStringLiteral("COPY Files/Directories"));
  prompts_.Gauge().CancelEnable(true);
  WaitForTurns(3);
  for (QWidget* const window : QApplication::topLevelWidgets()) {
    if (window->objectName() == QStringLiteral("frmGage")) {
      Click(*CancelOf(*window));
    }
  }
  EXPECT_TRUE(prompts_.IsCancelled());
  prompts_.Gauge().UnloadGage();
  RunningCall refresh(queue_, {}, {});
  clock_.afterTurn = [&] { refresh.Finish(); };
  waiter_.Wait(refresh);
  EXPECT_FALSE(refresh.IsCancelled());
}

TEST_F(WindowWaiterTest, EscPressesTheGaugesCancel) {
  prompts_.Gauge().ShowGage(QStringLiteral("COPY Files/Directories"));
  prompts_.Gauge().CancelEnable(true);
  clock_.onTurn = [&] {
    QTest::keyClick(main_.windowHandle(), Qt::Key_Escape);
    EXPECT_TRUE(call_.IsCancelled());
    EXPECT_TRUE(prompts_.IsCancelled());
    call_.Finish();
  };
  waiter_.Wait(call_);
  prompts_.Gauge().UnloadGage();
}

TEST_F(WindowWaiterTest, TheEndOfTheProgramCancelsAtOnce) {
  qint64 ended = 0;
  clock_.onTurn = [&] {
    if (clock_.Turns() == 2) {
      prompts_.End(UserPrompts::Ending::BySystem);
      ended = clock_.Now();
    } else if (clock_.Turns() == 3) {
      EXPECT_TRUE(call_.IsCancelled());
    }
  };
  waiter_.Wait(call_);
  EXPECT_TRUE(call_.IsAbandoned());
  // The turn in which it was seen, and the limit for all calls.
  EXPECT_EQ(clock_.Now() - ended, ScriptedWaitClock::kTick + WindowWaiter::kLongestAtEnd);

  // A call that comes after that has no time left.
  RunningCall next(queue_, {}, {});
  const qint64 now = clock_.Now();
  waiter_.Wait(next);
  EXPECT_TRUE(next.IsAbandoned());
  EXPECT_LE(clock_.Now() - now, ScriptedWaitClock::kTick);
}

TEST_F(WindowWaiterTest, ThePointerLiesOverTheWindowsOwn) {
  main_.setCursor(Qt::CrossCursor);
  clock_.onTurn = [&] {
    ASSERT_NE(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
    EXPECT_EQ(main_.cursor().shape(), Qt::CrossCursor);
    call_.Finish();
  };
  waiter_.Wait(call_);
  QCoreApplication::processEvents();
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(WindowWaiterTest, CallsThatFollowKeepTheWindow) {
  WaitForTurns(8);
  WaitingWindow* const window = Shown();
  ASSERT_NE(window, nullptr);
  clock_.onTurn = [&] {
    EXPECT_EQ(Shown(), window);
    EXPECT_NE(QApplication::overrideCursor(), nullptr);
  };
  WaitForTurns(2);
  clock_.onTurn = {};
  QCoreApplication::processEvents();
  EXPECT_EQ(Shown(), nullptr);
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(WindowWaiterTest, ACancelBetweenTwoCallsIsKept) {
  host_.inCommand = true;
  WaitForTurns(8);
  QCoreApplication::processEvents();
  WaitingWindow* const window = Shown();
  ASSERT_NE(window, nullptr);
  CancelOf(*window)->click();
  RunningCall next(queue_, {}, {});
  clock_.onTurn = [&] {
    EXPECT_TRUE(next.IsCancelled());
    next.Finish();
  };
  waiter_.Wait(next);
  clock_.onTurn = {};
  host_.inCommand = false;
  EXPECT_TRUE(QTest::qWaitFor([] { return Shown() == nullptr; }, 30'000));
  RunningCall later(queue_, {}, {});
  clock_.afterTurn = [&] { later.Finish(); };
  waiter_.Wait(later);
  EXPECT_FALSE(later.IsCancelled());
}

TEST_F(WindowWaiterTest, OpenMenusAreClosedFirst) {
  QMenu menu(&main_);
  menu.addAction(QStringLiteral("Delete"));
  menu.popup(main_.mapToGlobal(QPoint(10, 10)));
  ASSERT_TRUE(menu.isVisible());
  clock_.onTurn = [&] {
    EXPECT_FALSE(menu.isVisible());
    call_.Finish();
  };
  waiter_.Wait(call_);
}

TEST_F(WindowWaiterTest, ClicksOfTheWaitActOnNothing) {
  const auto click = [&] { QTest::mouseClick(main_.windowHandle(), Qt::LeftButton, {}, QPoint(50, 50)); };
  clock_.onTurn = [&] {
    click();
    call_.Finish();
  };
  waiter_.Wait(call_);
  QCoreApplication::processEvents();
  EXPECT_EQ(main_.presses, 0);
  click();
  EXPECT_EQ(main_.presses, 1);
}

TEST_F(WindowWaiterTest, WhatIsQueuedAtTheEndIsSwallowed) {
  clock_.afterTurn = [&] {
    QMetaObject::invokeMethod(
        &main_, [&] { QTest::mousePress(main_.windowHandle(), Qt::LeftButton, {}, QPoint(50, 50)); },
        Qt::QueuedConnection);
    call_.Finish();
  };
  waiter_.Wait(call_);
  QTest::mouseRelease(main_.windowHandle(), Qt::LeftButton, {}, QPoint(50, 50));
  EXPECT_EQ(main_.presses, 0);
}

TEST_F(WindowWaiterTest, PostedWorkRunsInItsOrder) {
  QString order;
  queue_.Post([&] { order += u'a'; });
  clock_.onTurn = [&] {
    queue_.Post([&] { order += u'b'; });
    // Before the end, as a worker does it.
    queue_.Post([&] { order += u'c'; });
    call_.Finish();
  };
  waiter_.Wait(call_);
  EXPECT_EQ(order, QStringLiteral("abc"));
}

TEST_F(WindowWaiterTest, WorkOfAQuickCallRunsWithInputSwallowed) {
  clock_.onBlock = [&] {
    queue_.Post([&] { QTest::mouseClick(main_.windowHandle(), Qt::LeftButton, {}, QPoint(50, 50)); });
    call_.Finish();
  };
  waiter_.Wait(call_);
  EXPECT_EQ(clock_.Turns(), 0);
  EXPECT_EQ(main_.presses, 0);
}

TEST_F(WindowWaiterTest, AQuickListingDisturbsNothing) {
  QMenu menu(&main_);
  menu.addAction(QStringLiteral("Delete"));
  menu.popup(main_.mapToGlobal(QPoint(10, 10)));
  bool ran = false;
  QMetaObject::invokeMethod(
      &main_, [&] { ran = true; }, Qt::QueuedConnection);
  clock_.BlocksTake(5);
  int batches = 0;
  clock_.onBlock = [&] {
    queue_.Post([&] {
      ++batches;
      EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    });
    if (clock_.Blocks() == 3) {
      call_.Finish();
    }
  };
  waiter_.Wait(call_);
  EXPECT_EQ(batches, 3);
  EXPECT_EQ(clock_.Turns(), 0);
  EXPECT_EQ(host_.gesturesEnded, 0);
  EXPECT_TRUE(menu.isVisible());
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
  // What is queued comes later, and is delivered.
  EXPECT_FALSE(ran);
  menu.close();
  QTest::mouseClick(main_.windowHandle(), Qt::LeftButton, {}, QPoint(50, 50));
  EXPECT_EQ(main_.presses, 1);
}

TEST_F(WindowWaiterTest, WorkThatTakesLongerSwallowsWhatIsQueued) {
  clock_.BlocksTake(5);
  clock_.onBlock = [&] {
    queue_.Post([&] {
      clock_.LetEventsRun();
      QMetaObject::invokeMethod(
          &main_, [&] { QTest::mouseClick(main_.windowHandle(), Qt::LeftButton, {}, QPoint(50, 50)); },
          Qt::QueuedConnection);
    });
    call_.Finish();
  };
  waiter_.Wait(call_);
  QCoreApplication::processEvents();
  EXPECT_EQ(main_.presses, 0);
}

TEST_F(WindowWaiterTest, AQuestionOfAQuickCallClosesMenus) {
  QMenu menu(&main_);
  menu.addAction(QStringLiteral("Delete"));
  menu.popup(main_.mapToGlobal(QPoint(10, 10)));
  clock_.BlocksTake(5);
  clock_.onBlock = [&] {
    queue_.Post([&] {
      queue_.BeginQuestion();
      EXPECT_FALSE(menu.isVisible());
      EXPECT_EQ(host_.gesturesEnded, 1);
      queue_.EndQuestion();
    });
    call_.Finish();
  };
  waiter_.Wait(call_);
  EXPECT_EQ(host_.gesturesEnded, 1);
}

TEST_F(WindowWaiterTest, WorkThatThrowsEndsTheWait) {
  for (const bool quick : {true, false}) {
    RunningCall call(queue_, {}, {});
    const auto post = [this] { queue_.Post([] { throw std::bad_alloc(); }); };
    clock_.onBlock = quick ? std::function<void()>(post) : std::function<void()>();
    clock_.onTurn = quick ? std::function<void()>() : std::function<void()>(post);
    EXPECT_THROW(waiter_.Wait(call), std::bad_alloc);
    EXPECT_FALSE(waiter_.IsWaiting());
    clock_.onBlock = {};
    clock_.onTurn = {};
    QCoreApplication::processEvents();
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    main_.presses = 0;
    QTest::mousePress(main_.windowHandle(), Qt::LeftButton, {}, QPoint(50, 50));
    QTest::mouseRelease(main_.windowHandle(), Qt::LeftButton, {}, QPoint(50, 50));
    EXPECT_EQ(main_.presses, 1) << quick;
  }
}

TEST_F(WindowWaiterTest, AQuestionOfTheWorkerTakesInput) {
  PromptAnswer answer = PromptAnswer::Cancel;
  call_.BeginQuestion();
  queue_.Post([&] {
    QMetaObject::invokeMethod(
        &main_,
        [&] {
          auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
          ASSERT_NE(box, nullptr);
          QWidget* const ok = box->button(QMessageBox::Ok);
          ASSERT_NE(ok, nullptr);
          Click(*ok);
        },
        Qt::QueuedConnection);
    answer = prompts_.MessageBox(QStringLiteral("Is this the robot's key?"), PromptIcon::Question,
                                 PromptButtons::OkCancel);
    call_.EndQuestion();
    call_.Finish();
  });
  waiter_.Wait(call_);
  EXPECT_EQ(answer, PromptAnswer::Ok);
  EXPECT_FALSE(call_.IsCancelled());
}

TEST_F(WindowWaiterTest, ADisabledMainWindowLeavesItUsable) {
  main_.setEnabled(false);
  clock_.onTurn = [&] {
    if (WaitingWindow* const window = Shown()) {
      EXPECT_TRUE(CancelOf(*window)->isEnabled());
      window->close();
      EXPECT_TRUE(call_.IsCancelled());
      EXPECT_FALSE(CancelOf(*window)->isEnabled());
      call_.Finish();
    }
  };
  waiter_.Wait(call_);
  main_.setEnabled(true);
}

TEST_F(WindowWaiterTest, AThreadWakesTheLoop) {
  SystemWaitClock clock;
  WindowWaiter waiter(queue_, prompts_, clock);
  waiter.SetMainWindow(&main_, &host_);
  int handled = 0;
  std::thread worker([&] {
    for (int i = 0; i < 100; ++i) {
      queue_.Post([&] { ++handled; });
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    call_.Finish();
  });
  waiter.Wait(call_);
  worker.join();
  EXPECT_EQ(handled, 100);
  EXPECT_FALSE(call_.IsCancelled());
}

}  // namespace
}  // namespace trevane::test
