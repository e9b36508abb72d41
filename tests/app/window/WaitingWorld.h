#pragma once

#include "app/workspace/WorkspaceFile.h"
#include "dialogs/WaitClock.h"
#include "dialogs/WindowWaiter.h"
#include "engine/remote/RemoteContext.h"
#include "tests/app/window/MainWindowFixture.h"
#include "tests/support/ScriptedServer.h"

#include <QAbstractEventDispatcher>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>

namespace trevane::test {

/// Real time, in which a test can act during a wait.
class ActingClock final : public WaitClock {
 public:
  [[nodiscard]] qint64 Now() override { return clock_.Now(); }
  void Block(WindowQueue& queue, qint64 longest) override { clock_.Block(queue, longest); }
  void LetEventsRun() override {
    if (onTurn) {
      onTurn();
    }
    clock_.LetEventsRun();
  }

  std::function<void()> onTurn;

 private:
  SystemWaitClock clock_;
};

/// The program with its real window, waiter and input filter, and with a slow controller "Robot" that is
/// displayed. The controller hangs where a test wants it to.
class WaitingWorld : public MainWindowFixture {
 public:
  static QString Robot(const QString& path = {}) {
    const QString root = QStringLiteral("Workspace\\Robot");
    return path.isEmpty() ? root : root + u'\\' + path;
  }

  /// Where the robot has no programs, files of it are fetched to "fetched" in the program's folder.
  explicit WaitingWorld(const ScriptedOptions& options = {}, const MemoryFileSystemOptions& robotOptions = {})
      : robot(std::make_shared<MemoryFileSystem>(robotOptions)),
        server(std::make_shared<ScriptedServer>(robot, options)) {
    if (!robotOptions.execute) {
      fetchedFolder_ = InFolder("fetched");
      openWithProgram_ = [this](const QString& path) {
        opened += path;
        return OpenOutcome{};
      };
      fetchedClock_ = [this] { return now; };
    }
    waiter_ = &shippedWaiter;
    learnt_ = context.learnt;
    stopControllers_ = [this] { stoppedAll = context.controllers->StopAll(std::chrono::milliseconds(500)); };
    robot->AddFolder(QStringLiteral("programs\\old"));
    robot->AddFolder(QStringLiteral("logs"));
    robot->AddFile(QStringLiteral("programs\\main.pac"), "program");
    robot->AddFile(QStringLiteral("readme.txt"), "12345");
    createEngine_ = [this]() -> std::shared_ptr<IxoEngine> {
      return std::make_shared<SubstituteEngine>(
          ProviderTable{
              {QStringLiteral("IxoProv.LocalFile"), [this](const FileSystemRequest&) { return faulty_; }},
              server->AsProvider(QStringLiteral("IxoProv.Scripted")),
              cellServer->AsProvider(QStringLiteral("IxoProv.Second"))},
          &context);
    };
    Put("cells.fmg", "[Robot]\r\nCtrlName=Robot\r\nProvider=IxoProv.Scripted\r\nRoot=\r\n");
    Put("both.fmg",
        "[Robot]\r\nCtrlName=Robot\r\nProvider=IxoProv.Scripted\r\nRoot=\r\n"
        "[Cell]\r\nCtrlName=Cell\r\nProvider=IxoProv.Second\r\nRoot=\r\n");
    Start();
  }
  ~WaitingWorld() override {
    clock.onTurn = {};
    server->Release();
    cellServer->Release();
    if (program_ && program_->Window()) {
      program_->Window()->close();
    }
    program_.reset();
    EXPECT_TRUE(context.controllers->StopAll(std::chrono::seconds(20)));
  }
  void TestBody() override {}

  void Connect(const char* file = "cells.fmg") {
    EXPECT_TRUE(Window()->Workspace().OpenWorkspace(InFolder(file)));
  }
  /// Connected and displayed.
  void ShowRobot(const char* file = "cells.fmg") {
    Connect(file);
    Tree().expand(Window()->TreeModel().IndexOf(Node(QStringLiteral("Workspace"))));
    ClickNode(Robot());
    List().setFocus();
    EXPECT_EQ(Nav().CurrentAddress(), Robot());
    context.learnt->SetSource([this] { return learntAt_ += LearntClock::kLongestMemory; });
    server->ClearCalls();
  }

  /// Calls `act` once, in the wait in which the controller hangs.
  void WhenHanging(std::function<void()> act) {
    clock.onTurn = [this, act = std::move(act), done = false]() mutable {
      if (!done && (server->IsHanging() || cellServer->IsHanging())) {
        done = true;
        acted = true;
        EXPECT_TRUE(shippedWaiter.IsWaiting());
        act();
      }
    };
  }

  void ClickAt(const QWidget& widget, const QPoint& at, Qt::MouseButton button = Qt::LeftButton) {
    QTest::mouseClick(widget.window()->windowHandle(), button, {}, widget.mapTo(widget.window(), at));
  }
  void PressKey(int key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(Window()->windowHandle(), static_cast<Qt::Key>(key), modifiers);
  }
  /// The second click begins the delay after which an editor opens; it is longer than any test.
  void ClickTwice(const QString& item) {
    const QPoint at = List().viewport()->mapTo(Window(), PointOfItem(item));
    QTest::mouseClick(Window()->windowHandle(), Qt::LeftButton, {}, at);
    QTest::mousePress(Window()->windowHandle(), Qt::LeftButton, {}, at);
    const int usual = QApplication::doubleClickInterval();
    QApplication::setDoubleClickInterval(kDelayBeforeEdit);
    QTest::mouseRelease(Window()->windowHandle(), Qt::LeftButton, {}, at);
    QApplication::setDoubleClickInterval(usual);
  }
  [[nodiscard]] bool WaitsForEditor() {
    const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(&List());
    return std::any_of(timers.begin(), timers.end(),
                       [](const auto& timer) { return timer.interval == kDelayBeforeEdit; });
  }
  void Settle() {
    for (int i = 0; i < 5; ++i) {
      QCoreApplication::processEvents();
      QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
  }

  using MainWindowFixture::ClickItem;
  using MainWindowFixture::ClickNode;
  using MainWindowFixture::Content;
  using MainWindowFixture::DoubleClickItem;
  using MainWindowFixture::faulty_;
  using MainWindowFixture::InFolder;
  using MainWindowFixture::List;
  using MainWindowFixture::ListTexts;
  using MainWindowFixture::memory_;
  using MainWindowFixture::Nav;
  using MainWindowFixture::Node;
  using MainWindowFixture::PointOf;
  using MainWindowFixture::PointOfItem;
  using MainWindowFixture::program_;
  using MainWindowFixture::prompts_;
  using MainWindowFixture::Put;
  using MainWindowFixture::Start;
  using MainWindowFixture::Tree;
  using MainWindowFixture::volumes_;
  using MainWindowFixture::Window;

  std::shared_ptr<MemoryFileSystem> robot;
  std::shared_ptr<ScriptedServer> server;
  /// A second one, connected by "both.fmg" as "Cell".
  std::shared_ptr<MemoryFileSystem> cell = std::make_shared<MemoryFileSystem>();
  std::shared_ptr<ScriptedServer> cellServer = std::make_shared<ScriptedServer>(cell);
  WindowQueue queue;
  ActingClock clock;
  WindowWaiter shippedWaiter{queue, prompts_, clock};
  RemoteContext context{queue, shippedWaiter, &prompts_};
  /// What was fetched and opened, and the clock of the watching, in milliseconds.
  QStringList opened;
  qint64 now = 1'000'000;
  bool acted = false;
  bool stoppedAll = false;

 private:
  static constexpr int kDelayBeforeEdit = 3'600'000;  // milliseconds

  /// Nothing is remembered from one call to the next.
  qint64 learntAt_ = 1'000'000;
};

}  // namespace trevane::test
