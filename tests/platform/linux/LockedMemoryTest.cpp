#include "platform/LockedMemory.h"
#include "platform/Secret.h"

#include <QByteArray>
#include <QFile>

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

#include <sys/resource.h>
#include <unistd.h>

namespace trevane::test {
namespace {

/// What the system says that this process has locked, in KiB.
qint64 Locked() {
  QFile status(QStringLiteral("/proc/self/status"));
  EXPECT_TRUE(status.open(QIODevice::ReadOnly));
  for (const QByteArray& line : status.readAll().split('\n')) {
    if (line.startsWith("VmLck:")) {
      return line.simplified().split(' ').value(1).toLongLong();
    }
  }
  ADD_FAILURE() << "the system does not say it";
  return 0;
}

bool MayLock() {
  rlimit limit{};
  return ::getrlimit(RLIMIT_MEMLOCK, &limit) == 0 && limit.rlim_cur >= 4 * rlim_t(::getpagesize());
}

/// AddressSanitizer makes the call do nothing.
#ifdef __SANITIZE_ADDRESS__
constexpr bool kLocksNothing = true;
#else
constexpr bool kLocksNothing = false;
#endif

TEST(LockedMemoryTest, ASecretStaysLockedWhenAnotherOneEnds) {
  if (kLocksNothing || !MayLock()) {
    GTEST_SKIP() << "this user may lock no memory";
  }
  const qint64 before = Locked();
  auto first = std::make_unique<Secret>(u"swordfish");
  const qint64 one = Locked();
  EXPECT_GT(one, before);
  const auto second = std::make_unique<Secret>(u"marlin");
  EXPECT_EQ(Locked(), one + (one - before));
  first.reset();
  EXPECT_EQ(Locked(), one);
  EXPECT_EQ(*second, Secret(u"marlin"));
  EXPECT_EQ(Locked(), one);
}

TEST(LockedMemoryTest, NoTwoShareAPageAndEachHoldsZeros) {
  const auto page = std::uintptr_t(::getpagesize());
  const std::size_t sizes[] = {1, page, page + 1};
  void* starts[3] = {};
  for (int i = 0; i < 3; ++i) {
    starts[i] = AllocateLocked(sizes[i]);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(starts[i]) % page, 0U);
    EXPECT_EQ(std::string(static_cast<const char*>(starts[i]), sizes[i]), std::string(sizes[i], '\0'));
  }
  for (int i = 0; i < 3; ++i) {
    FreeLocked(starts[i], sizes[i]);
  }
}

TEST(LockedMemoryTest, SecretsWorkWhereTheUserMayLockNothing) {
  rlimit old{};
  ASSERT_EQ(::getrlimit(RLIMIT_MEMLOCK, &old), 0);
  const rlimit none{0, old.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_MEMLOCK, &none), 0);
  const QByteArray text(10'000, 'x');
  const Secret secret{QByteArrayView(text)};
  EXPECT_EQ(::setrlimit(RLIMIT_MEMLOCK, &old), 0);
  EXPECT_EQ(secret.Bytes(), text);
  EXPECT_EQ(secret.CString()[text.size()], '\0');
}

}  // namespace
}  // namespace trevane::test
