#include "engine/files/HeldFolder.h"
#include "engine/files/TemporaryName.h"
#include "engine/files/WholeFile.h"
#include "engine/providers/local/LeftoverLog.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "tests/engine/providers/ProviderBed.h"
#include "tests/engine/providers/local/LocalWorld.h"
#include "tests/engine/providers/local/linux/InterruptedCalls.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

#include <unistd.h>

namespace trevane::test {
namespace {

// Leftovers of killed programs. The times of files cannot be set back far enough, so the calls that ask for
// them report times of more than a day ago.
class LocalLeftoversTest : public ::testing::Test {
 protected:
  LocalLeftoversTest() {
    WriteFile(Files(), QStringLiteral("f"), "content");
    Files().CreateFolder(QStringLiteral("in"));
  }

  LocalFileSystem& Files() { return world_.Files(); }
  QString Leave(const QString& folder, const QString& name = MakeTemporaryName()) {
    const QString path = folder + u'\\' + name;
    WriteFile(Files(), path, "half");
    return path;
  }
  QString LeaveTree(const QString& folder) {
    const QString path = folder + u'\\' + MakeTemporaryName();
    Files().CreateFolder(path);
    Files().CreateFolder(path + QStringLiteral("\\sub"));
    WriteFile(Files(), path + QStringLiteral("\\sub\\young"), "half");
    return path;
  }
  [[nodiscard]] bool IsThere(const QString& path) { return Files().Find(path).has_value(); }
  /// As a program that has just started.
  [[nodiscard]] std::vector<Leftover> FoundBy(const std::function<void(LocalFileSystem&)>& work) {
    LocalFileSystem fresh(world_.Drives());
    work(fresh);
    return fresh.TakeLeftovers();
  }
  static void CopyInto(LocalFileSystem& files) {
    files.Copy(QStringLiteral("C:\\f"), QStringLiteral("C:\\in\\f"), true);
  }
  static void SetOld() {
    Calls().secondsAgo = [](const QByteArray&) { return qint64{25} * 3600; };
  }

  LocalWorld world_;
  CallsReset reset_;
};

const QString kIn = QStringLiteral("C:\\in");

TEST_F(LocalLeftoversTest, RecentLeftoversAreReportedOnceAndKept) {
  const QString left = Leave(kIn);
  LocalFileSystem files(world_.Drives());
  CopyInto(files);
  EXPECT_EQ(files.TakeLeftovers(), (std::vector<Leftover>{{left, false}}));
  CopyInto(files);
  EXPECT_TRUE(files.TakeLeftovers().empty());
  EXPECT_TRUE(IsThere(left));
}

TEST_F(LocalLeftoversTest, OldLeftoversAreReportedAndRemoved) {
  const QString file = Leave(kIn);
  const QString tree = LeaveTree(kIn);
  SetOld();
  std::vector<Leftover> found = FoundBy(CopyInto);
  ASSERT_EQ(found.size(), 2U);
  EXPECT_TRUE(found[0].removed && found[1].removed);
  EXPECT_TRUE(found[0].path == file || found[1].path == file);
  EXPECT_FALSE(IsThere(file));
  EXPECT_FALSE(IsThere(tree));
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("in\\f")), QByteArray("content"));
}

TEST_F(LocalLeftoversTest, TreesThatAreStillInUseAreKept) {
  const QString tree = LeaveTree(kIn);
  Calls().secondsAgo = [](const QByteArray& name) { return name == "young" ? qint64{0} : qint64{25} * 3600; };
  EXPECT_EQ(FoundBy(CopyInto), (std::vector<Leftover>{{tree, false}}));
  EXPECT_TRUE(IsThere(tree + QStringLiteral("\\sub\\young")));
}

TEST_F(LocalLeftoversTest, LeftoversOfOtherProgramsAreKept) {
  const QString aside = Leave(kIn, MakeAsideName());
  QString foreign = MakeTemporaryName();
  foreign[10] = foreign[10] == u'q' ? u'r' : u'q';
  const QString theirs = Leave(kIn, foreign);
  WriteFile(Files(), QStringLiteral("in\\.trevane-notes.tmp"), "mine");
  SetOld();
  const std::vector<Leftover> found = FoundBy(CopyInto);
  ASSERT_EQ(found.size(), 2U);
  EXPECT_FALSE(found[0].removed || found[1].removed);
  EXPECT_TRUE(IsThere(aside));
  EXPECT_TRUE(IsThere(theirs));
  EXPECT_TRUE(IsThere(QStringLiteral("in\\.trevane-notes.tmp")));
}

TEST_F(LocalLeftoversTest, LeftoversOfOtherUsersAreKept) {
  const QString left = Leave(kIn);
  const QString name = left.mid(left.lastIndexOf(u'\\') + 1);
  if (::chown(world_.Native(("in/" + name.toLatin1()).constData()).constData(), 1234, 1234) != 0) {
    GTEST_SKIP() << "needs the super-user";
  }
  SetOld();
  EXPECT_EQ(FoundBy(CopyInto), (std::vector<Leftover>{{left, false}}));
  EXPECT_TRUE(IsThere(left));
}

TEST_F(LocalLeftoversTest, EveryWriteSearchesItsFolder) {
  Files().CreateFolder(QStringLiteral("tree"));
  Files().CreateFolder(QStringLiteral("tree\\sub"));
  Files().CreateFolder(QStringLiteral("in\\sub"));
  const QString left = Leave(kIn + QStringLiteral("\\sub"));
  const std::vector<Leftover> told{{left, false}};
  EXPECT_EQ(
      FoundBy([](LocalFileSystem& files) { WriteFile(files, QStringLiteral("C:\\in\\sub\\new"), "x"); }),
      told);
  EXPECT_EQ(FoundBy([](LocalFileSystem& files) {
              WriteNewFile(files, QStringLiteral("C:\\in\\sub\\newer"), "x", {});
            }),
            told);
  EXPECT_EQ(FoundBy([](LocalFileSystem& files) {
              WriteNewFile(*files.Hold(QStringLiteral("C:\\in\\sub")), QStringLiteral("newest"), "x", {});
            }),
            told);
  EXPECT_EQ(FoundBy([](LocalFileSystem& files) {
              files.Hold(QStringLiteral("C:\\in\\sub"))->CreateFolder(QStringLiteral("folder"), false);
            }),
            told);
  EXPECT_EQ(FoundBy([](LocalFileSystem& files) {
              files.Copy(QStringLiteral("C:\\tree\\sub"), QStringLiteral("C:\\in\\sub"), true);
            }),
            told);
  EXPECT_TRUE(
      FoundBy([](LocalFileSystem& files) { (void)files.List(QStringLiteral("C:\\in\\sub")); }).empty());
}

TEST(TemporaryNameTest, OwnTemporaryNamesAreRecognized) {
  for (int i = 0; i < 1000; ++i) {
    const QString name = MakeTemporaryName();
    EXPECT_EQ(name.size(), 19);
    EXPECT_TRUE(IsTemporaryName(name) && IsOwnTemporaryName(name)) << name.toStdString();
    const QString aside = MakeAsideName();
    EXPECT_TRUE(IsTemporaryName(aside) && !IsOwnTemporaryName(aside)) << aside.toStdString();
  }
  EXPECT_FALSE(IsOwnTemporaryName(QStringLiteral(".trevane-abcdef.tm")));
  EXPECT_FALSE(IsOwnTemporaryName(QString()));
}

TEST(LeftoverLogTest, FoldersAreSearchedOnceAnHour) {
  LeftoverLog log;
  EXPECT_TRUE(log.IsDue({1, 2}));
  EXPECT_FALSE(log.IsDue({1, 2}));
  EXPECT_TRUE(log.IsDue({2, 2}));
}

TEST(LeftoverLogTest, RemovedItemsAreReportedAgain) {
  LeftoverLog log;
  log.Add(QStringLiteral("a"), false);
  log.Add(QStringLiteral("a"), false);
  log.Add(QStringLiteral("a"), true);
  EXPECT_EQ(log.Take(), (std::vector<Leftover>{{QStringLiteral("a"), false}, {QStringLiteral("a"), true}}));
  EXPECT_TRUE(log.Take().empty());
}

}  // namespace
}  // namespace trevane::test
