// The session's bus ends while the program runs.
#include "platform/MakeSecretStore.h"
#include "tests/platform/linux/FakeSecretService.h"
#include "tests/platform/linux/OwnBus.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLibrary>

#include <gtest/gtest.h>

#include <memory>

namespace trevane::test {
namespace {

/// The connection that all libraries over GLib share.
class GlibConnection final {
 public:
  GlibConnection()
      : connection_(reinterpret_cast<void* (*)(int, void*, void**)>(gio_.resolve("g_bus_get_sync"))(
            2, nullptr, nullptr)) {}
  [[nodiscard]] bool IsClosed() {
    return reinterpret_cast<int (*)(void*)>(gio_.resolve("g_dbus_connection_is_closed"))(connection_) != 0;
  }
  [[nodiscard]] bool WouldEndTheProgram() {
    return reinterpret_cast<int (*)(void*)>(gio_.resolve("g_dbus_connection_get_exit_on_close"))(
               connection_) != 0;
  }

 private:
  QLibrary gio_{QStringLiteral("gio-2.0"), 0};
  void* connection_;
};

TEST(SessionEndTest, TheProgramOutlivesTheBusThatKeptItsPasswords) {
  OwnBus bus;
  if (bus.Address().isEmpty()) {
    GTEST_SKIP() << "dbus-daemon is not installed";
  }
  qputenv("DBUS_SESSION_BUS_ADDRESS", bus.Address().toUtf8());
  int count = 1;
  char name[] = "test";
  char* arguments[] = {name, nullptr};
  const QCoreApplication application(count, arguments);
  const FakeSecretService service(bus.Address());
  ASSERT_TRUE(service.IsThere());
  const std::unique_ptr<SecretStore> store = MakeSecretStore({});
  const QString account = QStringLiteral("password joe@cell4:22");
  store->Keep(account, Secret(u"s3cret"));
  ASSERT_EQ(store->Find(account), Secret(u"s3cret"));

  GlibConnection connection;
  EXPECT_FALSE(connection.WouldEndTheProgram());
  bus.End();
  QElapsedTimer clock;
  clock.start();
  while (!connection.IsClosed() && clock.elapsed() < 20'000) {
    QCoreApplication::processEvents();
  }
  ASSERT_TRUE(connection.IsClosed());
  // The window's thread hears of it in an event of its own.
  for (int turn = 0; turn < 1000; ++turn) {
    QCoreApplication::processEvents();
  }
  EXPECT_FALSE(store->Look().isReady);
  EXPECT_EQ(store->Find(account), std::nullopt);
}

}  // namespace
}  // namespace trevane::test
