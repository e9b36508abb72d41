#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QMap>
#include <QString>
#include <QStringList>

#include <map>

namespace trevane::test {

/// A desktop's password store on a bus of the test's own. It keeps what it is given in memory, and never asks
/// anybody anything: a request to unlock it is counted, and refused.
class FakeSecretService final : public QDBusVirtualObject {
  Q_OBJECT

 public:
  explicit FakeSecretService(const QString& busAddress);
  ~FakeSecretService() override;
  FakeSecretService(const FakeSecretService&) = delete;
  FakeSecretService& operator=(const FakeSecretService&) = delete;

  [[nodiscard]] bool IsThere() const { return isThere_; }

  bool isLocked = false;
  bool hasKeyring = true;
  /// Calls of that member get no answer.
  QString deafTo;
  /// Requests to unlock it.
  int unlockings = 0;
  /// The members that were called, in order.
  QStringList calls;

  struct Item {
    QMap<QString, QString> attributes;
    QByteArray value;
    QString type;
  };
  std::map<QString, Item> items;

  [[nodiscard]] QString introspect(const QString& path) const override;
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

 private:
  [[nodiscard]] QDBusMessage Answer(const QDBusMessage& message);
  [[nodiscard]] QVariant Property(const QString& path, const QString& name) const;
  [[nodiscard]] QDBusMessage CreateItem(const QDBusMessage& message);
  [[nodiscard]] QDBusMessage SearchItems(const QDBusMessage& message) const;
  [[nodiscard]] QDBusMessage GetSecrets(const QDBusMessage& message) const;

  QDBusConnection bus_;
  bool isThere_ = false;
  int made_ = 0;
};

}  // namespace trevane::test
