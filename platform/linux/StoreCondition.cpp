#include "platform/linux/StoreCondition.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>
#include <QStringList>
#include <QThread>

#include <optional>

namespace trevane {

namespace {

constexpr int kLongestCall = 2000;  // milliseconds

const QString kSecretService = QStringLiteral("org.freedesktop.secrets");
const QString kSecretRoot = QStringLiteral("/org/freedesktop/secrets");

SecretStore::Condition No(const QString& whyNot) {
  return {.isReady = false, .whyNot = whyNot};
}

SecretStore::Condition NoneThere() {
  return No(QStringLiteral("This session has no password store."));
}

SecretStore::Condition IsLocked(bool locked) {
  return locked ? No(QStringLiteral("The password store is locked."))
                : SecretStore::Condition{.isReady = true};
}

/// A connection of its own: the program's shared one would be made on this thread and live for ever.
class Bus final {
 public:
  explicit Bus(const QString& address)
      : name_(
            QStringLiteral("trevane-secrets-%1").arg(reinterpret_cast<quintptr>(QThread::currentThreadId()))),
        connection_(QDBusConnection::connectToBus(address, name_)) {}
  ~Bus() { QDBusConnection::disconnectFromBus(name_); }
  Bus(const Bus&) = delete;
  Bus& operator=(const Bus&) = delete;

  [[nodiscard]] bool IsConnected() const { return connection_.isConnected(); }
  /// It runs, or is started by the first call.
  [[nodiscard]] bool Offers(const QString& service) const {
    for (const char* const list : {"ListNames", "ListActivatableNames"}) {
      const QDBusReply<QStringList> names =
          Call(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
               QStringLiteral("org.freedesktop.DBus"), QString::fromLatin1(list), {});
      if (names.isValid() && names.value().contains(service)) {
        return true;
      }
    }
    return false;
  }
  [[nodiscard]] QDBusMessage Call(const QString& service, const QString& path, const QString& interface,
                                  const QString& method, const QVariantList& arguments) const {
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    return connection_.call(message, QDBus::Block, kLongestCall);
  }

 private:
  const QString name_;
  QDBusConnection connection_;
};

SecretStore::Condition AskSecretService(const Bus& bus) {
  const QDBusReply<QDBusObjectPath> keyring =
      bus.Call(kSecretService, kSecretRoot, QStringLiteral("org.freedesktop.Secret.Service"),
               QStringLiteral("ReadAlias"), {QStringLiteral("default")});
  if (!keyring.isValid()) {
    return No(QStringLiteral("The password store does not answer."));
  }
  if (keyring.value().path() == u"/") {
    return No(QStringLiteral("The password store has no keyring yet."));
  }
  const QDBusReply<QDBusVariant> locked = bus.Call(
      kSecretService, keyring.value().path(), QStringLiteral("org.freedesktop.DBus.Properties"),
      QStringLiteral("Get"), {QStringLiteral("org.freedesktop.Secret.Collection"), QStringLiteral("Locked")});
  return IsLocked(!locked.isValid() || locked.value().variant().toBool());
}

SecretStore::Condition AskWallet(const Bus& bus, const QString& service, const QString& path) {
  const QString interface = QStringLiteral("org.kde.KWallet");
  const QDBusReply<QString> wallet = bus.Call(service, path, interface, QStringLiteral("networkWallet"), {});
  if (!wallet.isValid()) {
    return No(QStringLiteral("The password store does not answer."));
  }
  const QDBusReply<bool> isOpen =
      bus.Call(service, path, interface, QStringLiteral("isOpen"), {wallet.value()});
  return IsLocked(!isOpen.isValid() || !isOpen.value());
}

}  // namespace

SecretStore::Condition AskStoreCondition(const QString& busAddress) {
  if (busAddress.isEmpty()) {
    return NoneThere();
  }
  const Bus bus(busAddress);
  if (!bus.IsConnected()) {
    return NoneThere();
  }
  if (bus.Offers(kSecretService)) {
    return AskSecretService(bus);
  }
  const QString wallet = QStringLiteral("org.kde.kwalletd5");
  return bus.Offers(wallet) ? AskWallet(bus, wallet, QStringLiteral("/modules/kwalletd5")) : NoneThere();
}

}  // namespace trevane
