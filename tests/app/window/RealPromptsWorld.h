#pragma once

#include "app/modMain.h"
#include "app/session/AppServices.h"
#include "app/window/frmFileMgr.h"
#include "app/workspace/WorkspaceFile.h"
#include "dialogs/Prompts.h"
#include "dialogs/WindowWaiter.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "engine/remote/RemoteContext.h"
#include "engine/substitute/SubstituteEngine.h"
#include "resources/Resources.h"
#include "tests/app/window/WaitingWorld.h"
#include "tests/support/FakeShellIcons.h"
#include "tests/support/FakeVolumes.h"
#include "tests/support/ScriptedCells.h"
#include "tests/support/TestFiles.h"
#include "views/tree/FolderNode.h"
#include "views/tree/FolderTreeModel.h"

#include <QApplication>
#include <QDir>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

namespace trevane::test {

/// Null where there is none.
[[nodiscard]] inline QWidget* VisibleWindow(const QString& name) {
  for (QWidget* const window : QApplication::topLevelWidgets()) {
    if (window->objectName() == name && window->isVisible()) {
      return window;
    }
  }
  return nullptr;
}

/// Presses the button as the user does.
inline void Click(QWidget& window, const char* button) {
  auto* const control = window.findChild<QPushButton*>(QString::fromLatin1(button));
  ASSERT_NE(control, nullptr);
  QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {},
                    control->mapTo(&window, control->rect().center()));
}

/// The program with its real prompts, gauge and waiter.
struct RealPromptsWorld {
  RealPromptsWorld() {
    InitResources();
    local->AddFile(QStringLiteral("C:\\readme.txt"), "12345");
    volumes.Set({{QStringLiteral("C:"), QStringLiteral("/c/"), drivetype::kFixed}});
  }
  ~RealPromptsWorld() {
    clock.onTurn = {};
    cells->ReleaseAll();
    if (program.Window() != nullptr) {
      program.Window()->close();
    }
    EXPECT_TRUE(context.controllers->StopAll(std::chrono::seconds(20)));
    EXPECT_EQ(cells->LiveConnections(), 0);
  }
  RealPromptsWorld(const RealPromptsWorld&) = delete;
  RealPromptsWorld& operator=(const RealPromptsWorld&) = delete;

  static QString Name(int number) { return QStringLiteral("R%1").arg(number, 2, 10, QLatin1Char('0')); }
  ScriptedServer& Cell(int number) { return cells->At(Name(number)); }
  /// A file of so many slow controllers.
  QString File(int count) const {
    QByteArray text;
    for (int i = 0; i < count; ++i) {
      const QByteArray name = Name(i).toUtf8();
      text += '[' + name + "]\r\nCtrlName=" + name + "\r\nProvider=IxoProv.Slow\r\nMachine=" + name + "\r\n";
    }
    const QString file = folder.filePath(QStringLiteral("cells.fmg"));
    WriteFile(file, text);
    return QDir::toNativeSeparators(file);
  }
  QStringList Nodes() {
    QStringList names;
    for (const FolderNode* const node : program.Window()->TreeModel().FirstRoot()->Children()) {
      names += node->Text();
    }
    names.removeOne(QStringLiteral("My Computer"));
    return names;
  }

  QTemporaryDir folder;
  FakeVolumes volumes;
  FakeShellIcons icons;
  std::shared_ptr<MemoryFileSystem> local =
      std::make_shared<MemoryFileSystem>(MemoryFileSystemOptions{.drives = {QStringLiteral("C:")}});
  std::shared_ptr<ScriptedCells> cells = std::make_shared<ScriptedCells>();
  Prompts prompts{[](qint32) {}, [](qint32) {}};
  WindowQueue queue;
  ActingClock clock;
  WindowWaiter waiter{queue, prompts, clock};
  RemoteContext context{queue, waiter, &prompts};
  modMain program{
      {.prompts = prompts,
       .volumes = volumes,
       .shellIcons = icons,
       .createEngine =
           [this] {
             return std::make_shared<SubstituteEngine>(
                 ProviderTable{{QStringLiteral("IxoProv.LocalFile"),
                                [this](const FileSystemRequest&) { return local; }},
                               cells->AsProvider(QStringLiteral("IxoProv.Slow"))},
                 &context);
           },
       .isFirstInstance = [] { return true; },
       .programFolder = folder.path(),
       .baseName = QStringLiteral("Trevane"),
       .version = QStringLiteral("1.2.3"),
       .waiter = &waiter,
       .stopControllers = [this] { context.controllers->StopAll(std::chrono::milliseconds(500)); }}};
};

}  // namespace trevane::test
