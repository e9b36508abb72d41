#include "platform/HeldLock.h"
#include "tests/support/TestFiles.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

class HeldLockTest : public testing::Test {
 protected:
  [[nodiscard]] QString Path() const { return folder_.filePath(QStringLiteral("a.lock")); }

  QTemporaryDir folder_;
};

TEST_F(HeldLockTest, OneHoldsItAtATime) {
  std::unique_ptr<HeldLock> lock = HeldLock::Take(Path());
  ASSERT_NE(lock, nullptr);
  EXPECT_EQ(HeldLock::Take(Path()), nullptr);
  lock.reset();
  EXPECT_NE(HeldLock::Take(Path()), nullptr);
}

TEST_F(HeldLockTest, TheFileStaysUnlessItIsToBeRemoved) {
  HeldLock::Take(Path()).reset();
  EXPECT_EQ(EntriesOf(folder_.path()), QStringList{QStringLiteral("a.lock")});
  std::unique_ptr<HeldLock> lock = HeldLock::Take(Path());
  lock->RemoveAtEnd();
  lock.reset();
  EXPECT_EQ(EntriesOf(folder_.path()), QStringList());
}

TEST_F(HeldLockTest, WithoutItsFolderThereIsNone) {
  EXPECT_EQ(HeldLock::Take(folder_.filePath(QStringLiteral("none/a.lock"))), nullptr);
}

}  // namespace
}  // namespace trevane::test
