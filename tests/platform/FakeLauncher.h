#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <vector>

namespace trevane::test {

/// A desktop's launcher: takes the progress signals of all programs on a bus.
class FakeLauncher final : public QObject {
  Q_OBJECT

 public:
  struct Seen {
    QString application;
    double progress = 0;
    bool visible = false;
  };

  explicit FakeLauncher(const QString& address) : bus_(QDBusConnection::connectToBus(address, kName)) {
    connected_ = bus_.connect(QString(), QString(), QStringLiteral("com.canonical.Unity.LauncherEntry"),
                              QStringLiteral("Update"), this, SLOT(Updated(QString, QVariantMap)));
  }
  ~FakeLauncher() override { QDBusConnection::disconnectFromBus(kName); }
  FakeLauncher(const FakeLauncher&) = delete;
  FakeLauncher& operator=(const FakeLauncher&) = delete;

  [[nodiscard]] bool IsConnected() const { return connected_; }

  std::vector<Seen> seen;

 private:
  static inline const QString kName = QStringLiteral("launcher");
  QDBusConnection bus_;
  bool connected_ = false;

 public Q_SLOTS:
  void Updated(const QString& application, const QVariantMap& properties) {
    seen.push_back({application, properties.value(QStringLiteral("progress")).toDouble(),
                    properties.value(QStringLiteral("progress-visible")).toBool()});
  }
};

}  // namespace trevane::test
