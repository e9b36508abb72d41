#include "base/RunTimeError.h"
#include "tests/fileops/TransferWorld.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

const QString kLocal = QStringLiteral("Workspace\\My Computer\\C:\\in");
const QString kOne = QStringLiteral("Workspace\\Ctrl1\\in");

qint32 NumberOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const RunTimeError& failure) {
    return failure.Number();
  }
  return 0;
}

TEST(ClipboardEntryTest, AFileOfTheListHasFolderAndName) {
  TransferWorld world;
  const clsClipBrd entry = ClipBrdOfItem(world.session.gIxoCtrls(), kLocal, QStringLiteral("f.txt"), 0x21);
  EXPECT_EQ(entry.PastePath(), kLocal);
  EXPECT_EQ(entry.PasteName(), QStringLiteral("f.txt"));
  EXPECT_EQ(entry.Attributes(), 0x21);
  EXPECT_EQ(entry.Origin(), 2);
  EXPECT_EQ(entry.CtrlIdx(), 0);
  EXPECT_EQ(AddressOf(entry), kLocal + QStringLiteral("\\f.txt"));
}

TEST(ClipboardEntryTest, AFolderOfTheListIsItsOwnAddress) {
  TransferWorld world;
  const clsClipBrd entry =
      ClipBrdOfItem(world.session.gIxoCtrls(), kOne, QStringLiteral("sub"), TAG_CONTROLLER | 0x10);
  EXPECT_EQ(entry.PastePath(), kOne + QStringLiteral("\\sub"));
  EXPECT_TRUE(entry.PasteName().isEmpty());
  EXPECT_EQ(entry.Origin(), 2);
  EXPECT_EQ(entry.CtrlIdx(), world.session.gIxoCtrls().Item(QStringLiteral("Ctrl1"))->CtrlIdx());
  EXPECT_EQ(AddressOf(entry), kOne + QStringLiteral("\\sub"));
}

TEST(ClipboardEntryTest, ATreeNodeHasNoName) {
  TransferWorld world;
  const clsClipBrd entry = ClipBrdOfNode(world.session.gIxoCtrls(), kLocal, 0x10);
  EXPECT_EQ(entry.PastePath(), kLocal);
  EXPECT_TRUE(entry.PasteName().isEmpty());
  EXPECT_EQ(entry.Origin(), 1);
  EXPECT_EQ(entry.Attributes(), 0x10);
}

TEST(ClipboardEntryTest, AControllerThatIsNotConnectedIsMinusOne) {
  TransferWorld world;
  EXPECT_EQ(
      ClipBrdOfNode(world.session.gIxoCtrls(), QStringLiteral("Workspace\\Gone\\in"), TAG_CONTROLLER | 0x10)
          .CtrlIdx(),
      -1);
}

TEST(ClipboardSetTest, KeepsOrderAndCountsFromOne) {
  clsClipBrds set;
  clsClipBrd entry;
  entry.SetPasteName(QStringLiteral("a"));
  set.Add(entry, {});
  entry.SetPasteName(QStringLiteral("b"));
  set.Add(entry, QStringLiteral("Key"));
  EXPECT_EQ(set.Count(), 2);
  EXPECT_EQ(set.Item(qint32(1)).PasteName(), QStringLiteral("a"));
  EXPECT_EQ(set.Item(qint16(2)).PasteName(), QStringLiteral("b"));
  EXPECT_EQ(set.Item(QStringLiteral("kEY")).PasteName(), QStringLiteral("b"));
  QStringList names;
  for (const clsClipBrd& each : set) {
    names.append(each.PasteName());
  }
  EXPECT_EQ(names, QStringList({QStringLiteral("a"), QStringLiteral("b")}));
  set.Clear();
  EXPECT_EQ(set.Count(), 0);
  EXPECT_EQ(set.begin(), set.end());
}

TEST(ClipboardSetTest, ClearsALargeSetAtOnce) {
  clsClipBrds set;
  for (int i = 0; i < 100'000; ++i) {
    set.Add({}, {});
  }
  QElapsedTimer clock;
  clock.start();
  set.Clear();
  EXPECT_EQ(set.Count(), 0);
  // Moving every entry forward for each removed one would take minutes.
  EXPECT_LT(clock.elapsed(), 30'000);
}

TEST(ClipboardSetTest, RefusesDuplicateKeysAndUnknownPositions) {
  clsClipBrds set;
  set.Add({}, {});
  set.Add({}, {});
  set.Add({}, QStringLiteral("k"));
  EXPECT_EQ(NumberOf([&] { set.Add({}, QStringLiteral("K")); }), error::kKeyAlreadyThere);
  EXPECT_EQ(set.Count(), 3);
  EXPECT_EQ(NumberOf([&] { static_cast<void>(set.Item(QStringLiteral("x"))); }), error::kNoSuchKey);
  EXPECT_EQ(NumberOf([&] { static_cast<void>(set.Item(QStringLiteral(""))); }), error::kNoSuchKey);
  for (const qint32 position : {0, 4, -1}) {
    EXPECT_EQ(NumberOf([&] { static_cast<void>(set.Item(position)); }), error::kOutOfRange);
  }
}

TEST(ClipboardSetTest, AnEmptySetOnlyShowsAndClosesTheGauge) {
  TransferWorld world;
  world.local.memory->AddFolder(QStringLiteral("C:\\in"));
  const QStringList before = world.local.memory->Tree();
  EXPECT_TRUE(world.Copy(kLocal));
  EXPECT_EQ(world.Gauge().Captions(), QStringList(QStringLiteral("COPY Files/Directories")));
  EXPECT_FALSE(world.Gauge().IsLoaded());
  EXPECT_EQ(world.Gauge().WaitedMilliseconds(), 30);
  EXPECT_EQ(world.local.memory->Tree(), before);
  EXPECT_TRUE(world.Log().isEmpty());
}

TEST(ClipboardSetTest, EntriesOfADisconnectedControllerFailToPaste) {
  TransferWorld world;
  world.local.memory->AddFolder(QStringLiteral("C:\\in"));
  world.one.memory->AddFile(QStringLiteral("in\\f"), "content");
  world.Select(kOne, QStringLiteral("f"));
  const qint32 index = world.state.clipboard.Item(qint32(1)).CtrlIdx();
  world.session.gIxoControllers->Remove(index);
  world.session.gIxoCtrls().Remove(QStringLiteral("Ctrl1"));
  EXPECT_EQ(world.state.clipboard.Item(qint32(1)).CtrlIdx(), index);
  world.prompts.ExpectBox(QStringLiteral("Failed in copy operation."));
  EXPECT_FALSE(world.Copy(kLocal));
  EXPECT_EQ(world.local.memory->Tree(),
            QStringList({QStringLiteral("C:\\"), QStringLiteral("C:\\in\\"), QStringLiteral("D:\\")}));
  EXPECT_TRUE(world.host.IsEnabled());
}

TEST(ClipboardSetTest, StaysAfterACopyForAnotherPaste) {
  TransferWorld world;
  world.local.memory->AddFile(QStringLiteral("C:\\f"), "content");
  world.local.memory->AddFolder(QStringLiteral("C:\\a"));
  world.local.memory->AddFolder(QStringLiteral("C:\\b"));
  world.Select(QStringLiteral("Workspace\\My Computer\\C:"), QStringLiteral("f"));
  EXPECT_TRUE(world.Copy(QStringLiteral("Workspace\\My Computer\\C:\\a")));
  EXPECT_TRUE(world.Copy(QStringLiteral("Workspace\\My Computer\\C:\\b")));
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("C:\\a\\f")), "content");
  EXPECT_EQ(world.local.memory->Content(QStringLiteral("C:\\b\\f")), "content");
}

TEST(ClipboardSetTest, StaysAfterADelete) {
  TransferWorld world;
  world.local.memory->AddFile(QStringLiteral("C:\\in\\f"), "content");
  world.Select(kLocal, QStringLiteral("f"));
  world.prompts.ExpectChoice(0);
  EXPECT_TRUE(world.DeleteItems(kLocal, {QStringLiteral("f")}));
  EXPECT_EQ(world.state.clipboard.Count(), 1);
}

}  // namespace
}  // namespace trevane::test
