#include "base/RunTimeError.h"
#include "tests/fileops/TransferWorld.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

const QString kLocal = u"Workspace\\My Computer\\C:\\in"_s;
const QString kOne = u"Workspace\\Ctrl1\\in"_s;

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
  const clsClipBrd entry = ClipBrdOfItem(world.session.gIxoCtrls(), kLocal, u"f.txt"_s, 0x21);
  EXPECT_EQ(entry.PastePath(), kLocal);
  EXPECT_EQ(entry.PasteName(), u"f.txt"_s);
  EXPECT_EQ(entry.Attributes(), 0x21);
  EXPECT_EQ(entry.Origin(), 2);
  EXPECT_EQ(entry.CtrlIdx(), 0);
  EXPECT_EQ(AddressOf(entry), kLocal + u"\\f.txt"_s);
}

TEST(ClipboardEntryTest, AFolderOfTheListIsItsOwnAddress) {
  TransferWorld world;
  const clsClipBrd entry = ClipBrdOfItem(world.session.gIxoCtrls(), kOne, u"sub"_s, TAG_CONTROLLER | 0x10);
  EXPECT_EQ(entry.PastePath(), kOne + u"\\sub"_s);
  EXPECT_TRUE(entry.PasteName().isEmpty());
  EXPECT_EQ(entry.Origin(), 2);
  EXPECT_EQ(entry.CtrlIdx(), world.session.gIxoCtrls().Item(u"Ctrl1"_s)->CtrlIdx());
  EXPECT_EQ(AddressOf(entry), kOne + u"\\sub"_s);
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
      ClipBrdOfNode(world.session.gIxoCtrls(), u"Workspace\\Gone\\in"_s, TAG_CONTROLLER | 0x10).CtrlIdx(),
      -1);
}

TEST(ClipboardSetTest, KeepsOrderAndCountsFromOne) {
  clsClipBrds set;
  clsClipBrd entry;
  entry.SetPasteName(u"a"_s);
  set.Add(entry, {});
  entry.SetPasteName(u"b"_s);
  set.Add(entry, u"Key"_s);
  EXPECT_EQ(set.Count(), 2);
  EXPECT_EQ(set.Item(qint32(1)).PasteName(), u"a"_s);
  EXPECT_EQ(set.Item(qint16(2)).PasteName(), u"b"_s);
  EXPECT_EQ(set.Item(u"kEY"_s).PasteName(), u"b"_s);
  QStringList names;
  for (const clsClipBrd& each : set)
    names.append(each.PasteName());
  EXPECT_EQ(names, QStringList({u"a"_s, u"b"_s}));
  set.Clear();
  EXPECT_EQ(set.Count(), 0);
  EXPECT_EQ(set.begin(), set.end());
}

TEST(ClipboardSetTest, ClearsALargeSetAtOnce) {
  clsClipBrds set;
  for (int i = 0; i < 100'000; ++i)
    set.Add({}, {});
  QElapsedTimer clock;
  clock.start();
  set.Clear();
  EXPECT_EQ(set.Count(), 0);
  // With every entry moved forward for each one that goes it takes minutes.
  EXPECT_LT(clock.elapsed(), 2000);
}

TEST(ClipboardSetTest, RefusesAKeyTwiceAndUnknownPlaces) {
  clsClipBrds set;
  set.Add({}, {});
  set.Add({}, {});
  set.Add({}, u"k"_s);
  EXPECT_EQ(NumberOf([&] { set.Add({}, u"K"_s); }), error::kKeyAlreadyThere);
  EXPECT_EQ(set.Count(), 3);
  EXPECT_EQ(NumberOf([&] { static_cast<void>(set.Item(u"x"_s)); }), error::kNoSuchKey);
  EXPECT_EQ(NumberOf([&] { static_cast<void>(set.Item(u""_s)); }), error::kNoSuchKey);
  for (const qint32 position : {0, 4, -1})
    EXPECT_EQ(NumberOf([&] { static_cast<void>(set.Item(position)); }), error::kOutOfRange);
}

TEST(ClipboardSetTest, AnEmptySetOnlyShowsAndClosesTheGauge) {
  TransferWorld world;
  world.local.memory->AddFolder(u"C:\\in"_s);
  const QStringList before = world.local.memory->Tree();
  EXPECT_TRUE(world.Copy(kLocal));
  EXPECT_EQ(world.Gauge().Captions(), QStringList(u"COPY Files/Directories"_s));
  EXPECT_FALSE(world.Gauge().IsLoaded());
  EXPECT_EQ(world.Gauge().WaitedMilliseconds(), 30);
  EXPECT_EQ(world.local.memory->Tree(), before);
  EXPECT_TRUE(world.Log().isEmpty());
}

TEST(ClipboardSetTest, AnEntryOfADisconnectedControllerKeepsItsIndexAndFailsInThePaste) {
  TransferWorld world;
  world.local.memory->AddFolder(u"C:\\in"_s);
  world.one.memory->AddFile(u"in\\f"_s, "content");
  world.Select(kOne, u"f"_s);
  const qint32 index = world.state.clipboard.Item(qint32(1)).CtrlIdx();
  world.session.gIxoControllers->Remove(index);
  world.session.gIxoCtrls().Remove(u"Ctrl1"_s);
  EXPECT_EQ(world.state.clipboard.Item(qint32(1)).CtrlIdx(), index);
  world.prompts.ExpectBox(u"Failed in copy operation."_s);
  EXPECT_FALSE(world.Copy(kLocal));
  EXPECT_EQ(world.local.memory->Tree(), QStringList({u"C:\\"_s, u"C:\\in\\"_s, u"D:\\"_s}));
  EXPECT_TRUE(world.host.IsEnabled());
}

TEST(ClipboardSetTest, StaysAfterACopySoThatItCanBePastedAgain) {
  TransferWorld world;
  world.local.memory->AddFile(u"C:\\f"_s, "content");
  world.local.memory->AddFolder(u"C:\\a"_s);
  world.local.memory->AddFolder(u"C:\\b"_s);
  world.Select(u"Workspace\\My Computer\\C:"_s, u"f"_s);
  EXPECT_TRUE(world.Copy(u"Workspace\\My Computer\\C:\\a"_s));
  EXPECT_TRUE(world.Copy(u"Workspace\\My Computer\\C:\\b"_s));
  EXPECT_EQ(world.local.memory->Content(u"C:\\a\\f"_s), "content");
  EXPECT_EQ(world.local.memory->Content(u"C:\\b\\f"_s), "content");
}

TEST(ClipboardSetTest, StaysAfterADelete) {
  TransferWorld world;
  world.local.memory->AddFile(u"C:\\in\\f"_s, "content");
  world.Select(kLocal, u"f"_s);
  world.prompts.ExpectChoice(0);
  EXPECT_TRUE(world.DeleteItems(kLocal, {u"f"_s}));
  EXPECT_EQ(world.state.clipboard.Count(), 1);
}

}  // namespace
}  // namespace trevane::test
