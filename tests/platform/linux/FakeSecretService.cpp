#include "tests/platform/linux/FakeSecretService.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QVariantMap>

namespace trevane::test {

namespace {

const QString kConnection = QStringLiteral("fake-secrets");
const QString kName = QStringLiteral("org.freedesktop.secrets");
const QString kRoot = QStringLiteral("/org/freedesktop/secrets");
const QString kKeyring = kRoot + QStringLiteral("/collection/login");
const QString kItems = kKeyring + u'/';
const QString kSession = kRoot + QStringLiteral("/session/1");

QDBusVariant Wrapped(const QVariant& value) {
  return QDBusVariant(value);
}

QVariant PathOf(const QString& path) {
  return QVariant::fromValue(QDBusObjectPath(path));
}

/// No prompt.
QVariant NoPrompt() {
  return PathOf(QStringLiteral("/"));
}

}  // namespace

/// A secret on its way, as the interface has it.
struct SentSecret {
  QDBusObjectPath session;
  QByteArray parameters;
  QByteArray value;
  QString type;
};

QDBusArgument& operator<<(QDBusArgument& argument, const SentSecret& secret) {
  argument.beginStructure();
  argument << secret.session << secret.parameters << secret.value << secret.type;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, SentSecret& secret) {
  argument.beginStructure();
  argument >> secret.session >> secret.parameters >> secret.value >> secret.type;
  argument.endStructure();
  return argument;
}

using SentSecrets = QMap<QDBusObjectPath, SentSecret>;

FakeSecretService::FakeSecretService(const QString& busAddress)
    : bus_(QDBusConnection::connectToBus(busAddress, kConnection)) {
  qDBusRegisterMetaType<SentSecret>();
  qDBusRegisterMetaType<SentSecrets>();
  qDBusRegisterMetaType<QMap<QString, QString>>();
  isThere_ = bus_.registerVirtualObject(kRoot, this, QDBusConnection::SubPath) && bus_.registerService(kName);
}

FakeSecretService::~FakeSecretService() {
  bus_.unregisterService(kName);
  bus_.unregisterObject(kRoot);
  QDBusConnection::disconnectFromBus(kConnection);
}

QString FakeSecretService::introspect(const QString& /*path*/) const {
  return {};
}

bool FakeSecretService::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
  calls += message.member();
  if (message.member() != deafTo) {
    connection.send(Answer(message));
  }
  return true;
}

QVariant FakeSecretService::Property(const QString& path, const QString& name) const {
  if (name == u"Locked") {
    return isLocked;
  }
  if (name == u"Collections") {
    return QVariant::fromValue(QList<QDBusObjectPath>{QDBusObjectPath(kKeyring)});
  }
  return name == u"Label" ? QVariant(path) : QVariant(QString());
}

QDBusMessage FakeSecretService::Answer(const QDBusMessage& message) {
  const QString member = message.member();
  const QVariantList given = message.arguments();
  if (member == u"OpenSession") {
    return given.value(0).toString() == u"plain"
               ? message.createReply({QVariant::fromValue(Wrapped(QString())), PathOf(kSession)})
               : message.createErrorReply(QDBusError::NotSupported, QStringLiteral("plain only"));
  }
  if (member == u"ReadAlias") {
    return message.createReply(PathOf(hasKeyring ? kKeyring : QStringLiteral("/")));
  }
  if (member == u"Get") {
    return message.createReply(
        QVariant::fromValue(Wrapped(Property(message.path(), given.value(1).toString()))));
  }
  if (member == u"GetAll") {
    const QVariantMap all{
        {QStringLiteral("Locked"), isLocked},
        {QStringLiteral("Collections"), Property(message.path(), QStringLiteral("Collections"))}};
    return message.createReply(QVariant(all));
  }
  if (member == u"SearchItems") {
    return SearchItems(message);
  }
  if (member == u"GetSecrets") {
    return GetSecrets(message);
  }
  if (member == u"CreateItem") {
    return CreateItem(message);
  }
  if (member == u"Delete") {
    items.erase(message.path());
    return message.createReply(NoPrompt());
  }
  if (member == u"Close") {
    return message.createReply();
  }
  unlockings += member == u"Unlock" ? 1 : 0;
  return message.createErrorReply(QDBusError::AccessDenied, member);
}

QDBusMessage FakeSecretService::SearchItems(const QDBusMessage& message) const {
  const auto wanted = qdbus_cast<QMap<QString, QString>>(message.arguments().value(0));
  QList<QDBusObjectPath> found;
  for (const auto& [path, item] : items) {
    bool isMeant = true;
    for (auto one = wanted.begin(); one != wanted.end(); ++one) {
      isMeant = isMeant && item.attributes.value(one.key()) == one.value();
    }
    if (isMeant) {
      found += QDBusObjectPath(path);
    }
  }
  const QList<QDBusObjectPath> none;
  return message.createReply(
      {QVariant::fromValue(isLocked ? none : found), QVariant::fromValue(isLocked ? found : none)});
}

QDBusMessage FakeSecretService::GetSecrets(const QDBusMessage& message) const {
  SentSecrets secrets;
  for (const QDBusObjectPath& path : qdbus_cast<QList<QDBusObjectPath>>(message.arguments().value(0))) {
    const auto item = items.find(path.path());
    if (item != items.end() && !isLocked) {
      secrets[path] = {QDBusObjectPath(kSession), {}, item->second.value, item->second.type};
    }
  }
  return message.createReply(QVariant::fromValue(secrets));
}

QDBusMessage FakeSecretService::CreateItem(const QDBusMessage& message) {
  if (isLocked) {
    return message.createErrorReply(QStringLiteral("org.freedesktop.Secret.Error.IsLocked"),
                                    QStringLiteral("locked"));
  }
  const auto properties = qdbus_cast<QVariantMap>(message.arguments().value(0));
  Item item;
  item.attributes = qdbus_cast<QMap<QString, QString>>(
      properties.value(QStringLiteral("org.freedesktop.Secret.Item.Attributes")));
  const auto secret = qdbus_cast<SentSecret>(message.arguments().value(1));
  item.value = secret.value;
  item.type = secret.type;
  std::erase_if(items, [&item](const auto& each) { return each.second.attributes == item.attributes; });
  const QString path = kItems + QString::number(++made_);
  items[path] = item;
  return message.createReply({PathOf(path), NoPrompt()});
}

}  // namespace trevane::test

Q_DECLARE_METATYPE(trevane::test::SentSecret)
