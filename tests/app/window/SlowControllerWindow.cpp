// Shows the main window over a scripted controller with real delays, to be looked at and measured by hand.
// Not a part of the product, and no test.
//
//   slow_controller_window delay <milliseconds a round trip>
//   slow_controller_window hang | deaf       (hears a Cancel, or does not)
//   slow_controller_window batch             (the listing of a large folder hangs after its first entries)
//   slow_controller_window copy <milliseconds a round trip>
//   slow_controller_window select <milliseconds a round trip>
//   slow_controller_window run <program>     (opens what is fetched; with its own program without one)
//
// A third number is the time, in milliseconds, that the user has before it begins. It connects the controller
// "Robot", displays it, and then its folder "programs", where it hangs; or it copies a large file and a large
// folder of the drive "C:" to it, or 2,000 selected files. It prints how late the list was painted at most,
// and how long a Cancel took. With "run" the controller has no programs of its own and answers at once; its
// file "readme.txt" is printed at the end.
#include "app/modMain.h"
#include "app/session/AppServices.h"
#include "app/window/frmFileMgr.h"
#include "dialogs/Prompts.h"
#include "dialogs/WaitClock.h"
#include "dialogs/WindowWaiter.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "engine/remote/NestedCall.h"
#include "engine/remote/RemoteContext.h"
#include "engine/substitute/SubstituteEngine.h"
#include "platform/OpenWithProgram.h"
#include "platform/TerminationRequests.h"
#include "resources/Resources.h"
#include "tests/support/FakeShellIcons.h"
#include "tests/support/FakeVolumes.h"
#include "tests/support/ScriptedServer.h"
#include "views/list/FileListView.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderTreeModel.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QKeyEvent>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace trevane::test {
namespace {

/// How long the list waits for a painting that it has asked for, and a Cancel for its effect.
class Latencies final : public QObject {
 public:
  explicit Latencies(WindowWaiter& waiter) : waiter_(waiter) {
    clock_.start();
    pace_.setInterval(5);
    connect(&pace_, &QTimer::timeout, this, &Latencies::AskForPainting);
    pace_.start();
    qApp->installEventFilter(this);
  }
  void Watch(QWidget& widget) { widget_ = &widget; }
  void WaitEnded() {
    if (cancelledAt_ >= 0) {
      std::printf("cancel to its effect: %lld ms\n", static_cast<long long>(clock_.elapsed() - cancelledAt_));
      cancelledAt_ = -1;
    }
    std::printf("longest between two paintings in the wait: %lld ms (%d)\n", static_cast<long long>(longest_),
                paints_);
    std::fflush(stdout);
    longest_ = 0;
    lastPaint_ = -1;
    paints_ = 0;
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint && watched == widget_ && waiter_.IsWaiting()) {
      const qint64 now = clock_.elapsed();
      longest_ = lastPaint_ >= 0 ? std::max(longest_, now - lastPaint_) : longest_;
      lastPaint_ = now;
      ++paints_;
    }
    const bool escape =
        event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape;
    const bool release =
        event->type() == QEvent::MouseButtonRelease && watched->objectName() == QStringLiteral("cmdCancel");
    if (waiter_.IsWaiting() && cancelledAt_ < 0 && (escape || release)) {
      cancelledAt_ = clock_.elapsed();
    }
    return false;
  }

 private:
  void AskForPainting() {
    // Before the filter that takes input away, which moved in front when the wait began.
    qApp->installEventFilter(this);
    if (widget_ != nullptr && waiter_.IsWaiting()) {
      widget_->update();
    }
  }

  WindowWaiter& waiter_;
  QElapsedTimer clock_;
  QTimer pace_;
  QWidget* widget_ = nullptr;
  qint64 lastPaint_ = -1;
  qint64 longest_ = 0;
  qint64 cancelledAt_ = -1;
  int paints_ = 0;
};

OpenOutcome OpenWith(const QString& program, const QString& path) {
  if (program.isEmpty()) {
    return OpenWithProgram(path);
  }
  const bool isStarted = QProcess::startDetached(program, {path});
  return {isStarted ? OpenOutcome::Code::Started : OpenOutcome::Code::Failed,
          isStarted ? QString() : QStringLiteral("It does not start: ") + program};
}

int Show(const QString& mode, const QString& argument, int begin) {
  const bool runs = mode == QStringLiteral("run");
  InitResources();
  SetNestedCallHandler([](const QString& what) {
    std::printf("a call within a call: %s\n", qPrintable(what));
    std::fflush(stdout);
  });
  const QTemporaryDir folder;
  const auto local =
      std::make_shared<MemoryFileSystem>(MemoryFileSystemOptions{.drives = {QStringLiteral("C:")}});
  local->AddFile(QStringLiteral("C:\\readme.txt"), "12345");
  if (mode == QStringLiteral("copy")) {
    local->AddFile(QStringLiteral("C:\\new\\gripper.pac"), QByteArray(95 << 20, 'x'));
    for (int i = 0; i < 2000; ++i) {
      local->AddFile(QStringLiteral("C:\\new\\programs\\part%1.pac").arg(i), "program");
    }
  }
  for (int i = 0; mode == QStringLiteral("select") && i < 2000; ++i) {
    local->AddFile(QStringLiteral("C:\\new\\part%1.pac").arg(i), QByteArray(100 * (i % 200), 'x'));
  }
  const auto robot = std::make_shared<MemoryFileSystem>(MemoryFileSystemOptions{.execute = !runs});
  for (int i = 0; mode == QStringLiteral("batch") && i < 2000; ++i) {
    robot->AddFolder(QStringLiteral("programs\\cell%1").arg(i));
  }
  for (int i = 0; i < 30; ++i) {
    robot->AddFile(QStringLiteral("programs\\part%1.pac").arg(i), "program");
  }
  robot->AddFolder(QStringLiteral("logs"));
  robot->AddFile(QStringLiteral("readme.txt"), "12345");
  const auto server = std::make_shared<ScriptedServer>(robot);

  QFile cells(folder.filePath(QStringLiteral("cells.fmg")));
  if (!cells.open(QIODevice::WriteOnly)) {
    return EXIT_FAILURE;
  }
  cells.write("[Robot]\r\nCtrlName=Robot\r\nProvider=IxoProv.Scripted\r\nRoot=\r\n");
  cells.close();

  FakeVolumes volumes;
  volumes.Set({{QStringLiteral("C:"), QStringLiteral("/c/"), drivetype::kFixed}});
  FakeShellIcons icons;
  Prompts prompts([](qint32) {},
                  [](qint32 milliseconds) { QThread::msleep(static_cast<unsigned long>(milliseconds)); });
  WindowQueue queue;
  SystemWaitClock clock;
  WindowWaiter waiter(queue, prompts, clock);
  RemoteContext remote{queue, waiter, &prompts};
  Latencies latencies(waiter);
  bool areLeftBehind = false;
  modMain program({.prompts = prompts,
                   .volumes = volumes,
                   .shellIcons = icons,
                   .createEngine =
                       [&] {
                         return std::make_shared<SubstituteEngine>(
                             ProviderTable{{QStringLiteral("IxoProv.LocalFile"),
                                            [&](const FileSystemRequest&) { return local; }},
                                           server->AsProvider(QStringLiteral("IxoProv.Scripted"))},
                             &remote);
                       },
                   .isFirstInstance = [] { return true; },
                   .programFolder = folder.path(),
                   .baseName = QStringLiteral("Trevane"),
                   .version = QStringLiteral("0.0.0"),
                   .waiter = &waiter,
                   .learnt = remote.learnt,
                   .stopControllers =
                       [&] { areLeftBehind = !remote.controllers->StopAll(std::chrono::milliseconds(500)); },
                   .fetchedFolder = folder.filePath(QStringLiteral("fetched")),
                   .openWithProgram = [&](const QString& path) { return OpenWith(argument, path); }});
  program.StartWith(cells.fileName());
  frmFileMgr* const window = program.Window();
  if (window == nullptr) {
    return EXIT_FAILURE;
  }
  prompts.SetMainWindow(window);
  latencies.Watch(*window->List().viewport());
  TerminationRequests termination;
  QObject::connect(&termination, &TerminationRequests::Requested, window, [&] { window->CloseUnattended(); });
  QTimer::singleShot(begin, window, [&] {
    Navigator& navigator = window->Navigation();
    navigator.DisplayNode(*window->TreeModel().FindByKey(QStringLiteral("Workspace\\Robot")));
    if (runs) {
      return;
    }
    if (mode == QStringLiteral("copy") || mode == QStringLiteral("select")) {
      navigator.DisplayNode(*window->TreeModel().FindByKey(QStringLiteral("Workspace\\My Computer\\C:")));
      navigator.DisplayNode(
          *window->TreeModel().FindByKey(QStringLiteral("Workspace\\My Computer\\C:\\new")));
      window->List().setFocus();
      window->Dispatch(CommandId::SelectAll);
      window->Dispatch(CommandId::Copy);
      navigator.DisplayNode(*window->TreeModel().FindByKey(QStringLiteral("Workspace\\Robot\\logs")));
      server->SetDelay(std::chrono::milliseconds(argument.toInt()));
      window->Dispatch(CommandId::Paste);
      return;
    }
    if (mode == QStringLiteral("delay")) {
      server->SetDelay(std::chrono::milliseconds(argument.toInt()));
    } else if (mode == QStringLiteral("batch")) {
      server->HangAtBatch(2);
    } else {
      server->HangAt(1, mode == QStringLiteral("deaf") ? ScriptedServer::Hearing::Deaf
                                                       : ScriptedServer::Hearing::ObeysCancel);
    }
    navigator.DisplayNode(*window->TreeModel().FindByKey(QStringLiteral("Workspace\\Robot\\programs")));
    latencies.WaitEnded();
  });
  const int result = QApplication::exec();
  if (runs && !areLeftBehind) {
    std::printf("readme.txt: %s\n", robot->Content(QStringLiteral("readme.txt")).constData());
  }
  if (areLeftBehind) {
    std::_Exit(result);
  }
  return result;
}

}  // namespace
}  // namespace trevane::test

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Trevane"));
  const QStringList arguments = QApplication::arguments();
  return trevane::test::Show(arguments.value(1, QStringLiteral("hang")), arguments.value(2),
                             arguments.value(3, QStringLiteral("500")).toInt());
}
