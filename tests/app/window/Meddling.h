#pragma once

#include "app/window/CommandBars.h"
#include "tests/app/window/WaitingWorld.h"

#include <QAccessible>
#include <QDropEvent>
#include <QMimeData>
#include <QWheelEvent>

namespace trevane::test {

/// Everything that a user or another program can do at that moment, except to cancel and to close.
inline void DoEverything(WaitingWorld& world) {
  frmFileMgr& window = *world.Window();
  // Clicks.
  world.ClickAt(*world.List().viewport(), QPoint(20, 10));
  QTest::mouseDClick(window.windowHandle(), Qt::LeftButton, {},
                     world.List().viewport()->mapTo(&window, QPoint(20, 10)));
  world.ClickAt(*world.List().viewport(), QPoint(20, 10), Qt::RightButton);
  world.ClickAt(*world.Tree().viewport(), QPoint(20, 10), Qt::RightButton);
  if (!world.Nav().IsDisplaying()) {
    for (const QString& place : {QStringLiteral("Workspace\\My Computer"), QStringLiteral("Workspace")}) {
      world.ClickAt(*world.Tree().viewport(), world.PointOf(place));
      Q_EMIT world.Tree().NodeClicked(world.Node(place));
    }
  }
  // Keys.
  for (const int key : {Qt::Key_Delete, Qt::Key_F2, Qt::Key_F5, Qt::Key_Return, Qt::Key_Backspace,
                        Qt::Key_Down, Qt::Key_A, Qt::Key_Menu}) {
    world.PressKey(key);
  }
  for (const int key : {Qt::Key_C, Qt::Key_X, Qt::Key_V, Qt::Key_A}) {
    world.PressKey(key, Qt::ControlModifier);
  }
  world.PressKey(Qt::Key_F, Qt::AltModifier);
  world.PressKey(Qt::Key_Return, Qt::AltModifier);
  // The wheel and drops.
  const QPoint at = world.List().viewport()->mapTo(&window, QPoint(20, 10));
  QWheelEvent wheel(at, window.mapToGlobal(at), {}, QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
                    Qt::NoScrollPhase, false);
  QApplication::sendEvent(window.windowHandle(), &wheel);
  const QMimeData data;
  QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(world.List().viewport(), &drop);
  // Accessibility and scripts: every command, at every place.
  for (int number = 0; number <= static_cast<int>(CommandId::FilterType); ++number) {
    const auto id = static_cast<CommandId>(number);
    if (id == CommandId::Close) {
      continue;
    }
    window.Dispatch(id);
    if (QToolButton* const button = window.Bars().Button(id)) {
      if (QAccessibleInterface* const spoken = QAccessible::queryAccessibleInterface(button)) {
        spoken->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
      }
      button->click();
    }
    for (const CommandPlace place :
         {CommandPlace::FileMenu, CommandPlace::EditMenu, CommandPlace::EntryPopup}) {
      if (QAction* const action = window.Bars().Action(place, id)) {
        action->trigger();
      }
    }
  }
  // Signals of the views.
  for (int row = 0; row < window.ListModel().rowCount(); ++row) {
    Q_EMIT world.List().ItemActivated(window.ListModel().HandleAt(row));
  }
  EXPECT_FALSE(world.List().StartLabelEdit());
  EXPECT_FALSE(world.Tree().StartLabelEdit());
  EXPECT_FALSE(window.Workspace().OpenWorkspace(world.InFolder("cells.fmg")));
  QCoreApplication::processEvents();
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

/// What is to be equal, whatever was done during the wait.
struct Outcome {
  QStringList calls;
  QStringList robot;
  QStringList local;
  QStringList asked;
  QString place;
  QStringList list;
  qsizetype properties = 0;
  bool filterOn = false;
  qsizetype clipboard = 0;
  friend bool operator==(const Outcome&, const Outcome&) = default;
};

inline Outcome OutcomeOf(WaitingWorld& world) {
  world.Settle();
  return {.calls = world.server->Calls(),
          .robot = world.robot->Tree(),
          .local = world.memory_->Tree(),
          .asked = world.prompts_.Texts(),
          .place = world.Nav().CurrentAddress(),
          .list = world.ListTexts(),
          .properties = static_cast<qsizetype>(world.prompts_.ShownProperties().size()),
          .filterOn = world.Window()->Bars().IsChecked(CommandId::FilterOnOff),
          .clipboard = world.Window()->Operations().clipboard.Count()};
}

}  // namespace trevane::test
