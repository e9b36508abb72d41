// What is done to the window while an operation on the local machine lets events run.
#include "engine/items/clsIxoFile.h"
#include "engine/remote/NestedCall.h"
#include "tests/app/window/Meddling.h"
#include "views/addresses/DriveTable.h"

namespace trevane::test {
namespace {

const QString kDrive = QStringLiteral("Workspace\\My Computer\\C:");

struct LocalOperation {
  const char* name;
  FileSystemOperation operation;
  std::function<void(WaitingWorld&)> prepare;
  CommandId command;
};

const std::vector<LocalOperation>& LocalOperations() {
  static const std::vector<LocalOperation> all{
      {"Copy", FileSystemOperation::Copy,
       [](WaitingWorld& world) {
         world.ClickItem(QStringLiteral("Programs"));
         world.Window()->Dispatch(CommandId::Copy);
         world.ClickNode(kDrive + QStringLiteral("\\Backup"));
       },
       CommandId::Paste},
      {"Delete", FileSystemOperation::Remove,
       [](WaitingWorld& world) {
         world.ClickItem(QStringLiteral("Programs"));
         world.prompts_.AnswerAllChoices(0);
       },
       CommandId::Delete},
  };
  return all;
}

class LocalCallTest : public testing::TestWithParam<size_t> {
 protected:
  [[nodiscard]] static const LocalOperation& Tried() { return LocalOperations().at(GetParam()); }
  static void ShowDrive(WaitingWorld& world) {
    world.Tree().expand(world.Window()->TreeModel().IndexOf(world.Node(QStringLiteral("Workspace"))));
    world.ClickNode(QStringLiteral("Workspace\\My Computer"));
    world.ClickNode(kDrive);
    world.List().setFocus();
    Tried().prepare(world);
    world.faulty_->ClearCalls();
  }
};

TEST_P(LocalCallTest, WhatIsDoneMeanwhileDoesNothing) {
  Outcome expected;
  int calls = 0;
  for (const bool meddle : {false, true}) {
    WaitingWorld world;
    ShowDrive(world);
    bool meddled = false;
    world.faulty_->SetHook([&](const FileSystemCall& call) {
      if (call.operation == Tried().operation && !std::exchange(meddled, true) && meddle) {
        QMetaObject::invokeMethod(
            world.Window(),
            [&world] {
              EXPECT_TRUE(WithinCall::IsAny());
              EXPECT_FALSE(world.shippedWaiter.IsWaiting());
              DoEverything(world);
              world.acted = true;
            },
            Qt::QueuedConnection);
      }
    });
    world.Window()->Dispatch(Tried().command);
    EXPECT_TRUE(meddled);
    EXPECT_EQ(world.acted, meddle);
    const Outcome outcome = OutcomeOf(world);
    if (meddle) {
      EXPECT_TRUE(outcome == expected);
      EXPECT_EQ(world.faulty_->CallCount(), calls);
    } else {
      expected = outcome;
      calls = world.faulty_->CallCount();
    }
  }
}

TEST_P(LocalCallTest, InputThatComesMeanwhileIsNotPostponed) {
  WaitingWorld world;
  ShowDrive(world);
  QWindow* const handle = world.Window()->windowHandle();
  const QPoint at =
      world.Tree().viewport()->mapTo(world.Window(), world.PointOf(QStringLiteral("Workspace")));
  bool pressed = false;
  world.faulty_->SetHook([&](const FileSystemCall& call) {
    if (call.operation != Tried().operation || std::exchange(pressed, true)) {
      return;
    }
    // Queued as the window system does: no event runs here.
    qt_handleMouseEvent(handle, at, handle->mapToGlobal(at), Qt::LeftButton, Qt::LeftButton,
                        QEvent::MouseButtonPress, {}, 1);
    qt_handleMouseEvent(handle, at, handle->mapToGlobal(at), Qt::NoButton, Qt::LeftButton,
                        QEvent::MouseButtonRelease, {}, 2);
    qt_handleKeyEvent(handle, QEvent::KeyPress, Qt::Key_Backspace, {});
    qt_handleKeyEvent(handle, QEvent::KeyRelease, Qt::Key_Backspace, {});
  });
  world.Window()->Dispatch(Tried().command);
  EXPECT_TRUE(pressed);
  const QString place = world.Nav().CurrentAddress();
  world.Settle();
  EXPECT_EQ(world.Nav().CurrentAddress(), place);
  EXPECT_TRUE(place.startsWith(kDrive));
  // From here on it is the user's again.
  world.ClickAt(*world.Tree().viewport(), world.PointOf(QStringLiteral("Workspace")));
  EXPECT_EQ(world.Nav().CurrentAddress(), QStringLiteral("Workspace"));
}

INSTANTIATE_TEST_SUITE_P(Operations, LocalCallTest, testing::Range(size_t{0}, LocalOperations().size()),
                         [](const auto& info) { return LocalOperations().at(info.param).name; });

TEST(LocalCallTest, AnEngineCallOfAnObserverIsRefused) {
  WaitingWorld world;
  QStringList refused;
  const NestedCallHandler before =
      SetNestedCallHandler([&refused](const QString& what) { refused.append(what); });
  qint32 result = 0;
  {
    DriveTable drives(world.volumes_);
    drives.RefreshDrives();
    const FileAccess files(world.program_->Session(), drives, world.prompts_);
    clsIxoFile drive = files.FileAt(kDrive);
    drive.ListInBatches([&](Listing&&) {
      result = files.FileAt(kDrive + QStringLiteral("\\readme.txt")).Result();
      return true;
    });
    EXPECT_EQ(drive.Result(), 0);
  }
  SetNestedCallHandler(before);
  EXPECT_EQ(result, error::kWin32Error + 170);
  EXPECT_FALSE(refused.isEmpty());
}

}  // namespace
}  // namespace trevane::test
