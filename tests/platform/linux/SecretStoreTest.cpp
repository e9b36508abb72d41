#include "base/RunTimeError.h"
#include "platform/MakeSecretStore.h"
#include "tests/platform/linux/FakeSecretService.h"
#include "tests/platform/linux/OwnBus.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace trevane::test {
namespace {

const QString kAccount = QStringLiteral("password joe@cell4:22");

/// One bus for the whole process, since the libraries below connect once. Reachable to the end: it is left
/// behind, not leaked.
const QString& AddressOfOwnBus() {
  static auto* const bus = new OwnBus;
  return bus->Address();
}

/// Takes connections and says nothing.
class DeafBus final {
 public:
  explicit DeafBus(const QByteArray& path) : path_(path), socket_(::socket(AF_UNIX, SOCK_STREAM, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.constData(), sizeof(address.sun_path) - 1);
    EXPECT_EQ(::bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    EXPECT_EQ(::listen(socket_, 4), 0);
  }
  ~DeafBus() { ::close(socket_); }
  DeafBus(const DeafBus&) = delete;
  DeafBus& operator=(const DeafBus&) = delete;

  [[nodiscard]] QByteArray Address() const { return "unix:path=" + path_; }

 private:
  const QByteArray path_;
  const int socket_;
};

class SecretStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    if (AddressOfOwnBus().isEmpty()) {
      GTEST_SKIP() << "dbus-daemon is not installed";
    }
    qputenv("DBUS_SESSION_BUS_ADDRESS", AddressOfOwnBus().toUtf8());
    service_ = std::make_unique<FakeSecretService>(AddressOfOwnBus());
    ASSERT_TRUE(service_->IsThere());
  }
  [[nodiscard]] QString WhyNot() {
    const SecretStore::Condition condition = store_->Look();
    EXPECT_EQ(condition.isReady, condition.whyNot.isEmpty());
    return condition.whyNot;
  }

  int count_ = 1;
  char name_[8] = "test";
  char* arguments_[2] = {name_, nullptr};
  QCoreApplication application_{count_, arguments_};
  std::unique_ptr<FakeSecretService> service_;
  bool isCancelled_ = false;
  std::unique_ptr<SecretStore> store_ = MakeSecretStore([this] { return isCancelled_; });
};

TEST_F(SecretStoreTest, KeepsFindsAndForgets) {
  EXPECT_EQ(WhyNot(), QString());
  EXPECT_EQ(store_->Find(kAccount), std::nullopt);
  for (const QByteArray& bytes :
       {QByteArray("s3cret"), QByteArray("\xC3\xA4 \xE6\x97\xA5"), QByteArray("a\0b", 3),
        QByteArray("\xFF\xFE"), QByteArray(2000, 'x'), QByteArray()}) {
    store_->Keep(kAccount, Secret(QByteArrayView(bytes)));
    EXPECT_EQ(service_->items.size(), 1U) << "the older one was replaced";
    EXPECT_EQ(store_->Find(kAccount), Secret(QByteArrayView(bytes))) << bytes.toStdString();
  }
  EXPECT_EQ(store_->Find(QStringLiteral("password joe@cell5:22")), std::nullopt);
  EXPECT_EQ(store_->Find(QStringLiteral("password joe@cell4:2222")), std::nullopt);
  store_->Forget(QStringLiteral("password ann@cell4:22"));
  EXPECT_EQ(service_->items.size(), 1U);
  store_->Forget(kAccount);
  EXPECT_TRUE(service_->items.empty());
  store_->Forget(kAccount);
  EXPECT_EQ(store_->Find(kAccount), std::nullopt);
  EXPECT_EQ(service_->unlockings, 0);
}

TEST_F(SecretStoreTest, ALockedStoreIsNotAskedToOpen) {
  store_->Keep(kAccount, Secret(u"s3cret"));
  service_->isLocked = true;
  EXPECT_EQ(WhyNot(), QStringLiteral("The password store is locked."));
  EXPECT_EQ(store_->Find(kAccount), std::nullopt);
  try {
    store_->Keep(kAccount, Secret(u"other"));
    ADD_FAILURE() << "nothing was kept";
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Description(), QStringLiteral("The password store is locked."));
  }
  store_->Forget(kAccount);
  EXPECT_EQ(service_->unlockings, 0);
  service_->isLocked = false;
  EXPECT_EQ(store_->Find(kAccount), Secret(u"s3cret"));
}

TEST_F(SecretStoreTest, AStoreWithoutAKeyringIsNotReady) {
  service_->hasKeyring = false;
  EXPECT_EQ(WhyNot(), QStringLiteral("The password store has no keyring yet."));
  EXPECT_EQ(store_->Find(kAccount), std::nullopt);
}

TEST_F(SecretStoreTest, ABusWithoutAStoreHasNone) {
  service_.reset();
  EXPECT_EQ(WhyNot(), QStringLiteral("This session has no password store."));
  EXPECT_EQ(store_->Find(kAccount), std::nullopt);
}

TEST_F(SecretStoreTest, ASessionWithoutABusHasNone) {
  const QTemporaryDir empty;
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");
  qputenv("XDG_RUNTIME_DIR", empty.path().toUtf8());
  EXPECT_EQ(WhyNot(), QStringLiteral("This session has no password store."));
  EXPECT_EQ(store_->Find(kAccount), std::nullopt);
  // One that is gone.
  qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + empty.filePath(QStringLiteral("nothing")).toUtf8());
  EXPECT_EQ(WhyNot(), QStringLiteral("This session has no password store."));
}

TEST_F(SecretStoreTest, ABusThatDoesNotAnswerIsWaitedForUntilCancel) {
  const QTemporaryDir folder;
  const DeafBus deaf(QFile::encodeName(folder.filePath(QStringLiteral("bus"))));
  qputenv("DBUS_SESSION_BUS_ADDRESS", deaf.Address());
  isCancelled_ = true;
  QElapsedTimer clock;
  clock.start();
  EXPECT_EQ(WhyNot(), QStringLiteral("The password store does not answer."));
  EXPECT_LT(clock.elapsed(), kLongestSecretWait);
}

TEST_F(SecretStoreTest, AStoreThatDoesNotAnswerIsNotWaitedForLong) {
  service_->deafTo = QStringLiteral("ReadAlias");
  QElapsedTimer clock;
  clock.start();
  EXPECT_EQ(WhyNot(), QStringLiteral("The password store does not answer."));
  EXPECT_LT(clock.elapsed(), 2 * kLongestSecretWait);
}

TEST_F(SecretStoreTest, AReadingThatDoesNotEndIsLeftBehindAndNoneComesAfterIt) {
  service_->deafTo = QStringLiteral("SearchItems");
  // Cancelled as soon as it hangs.
  auto store = MakeSecretStore([this] { return service_->calls.contains(QStringLiteral("SearchItems")); });
  EXPECT_EQ(store->Find(kAccount), std::nullopt);
  const SecretStore::Condition condition = store->Look();
  EXPECT_FALSE(condition.isReady);
  EXPECT_EQ(condition.whyNot, QStringLiteral("The password store does not answer."));
  EXPECT_EQ(service_->calls.count(QStringLiteral("SearchItems")), 1);
}

}  // namespace
}  // namespace trevane::test
