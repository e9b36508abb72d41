#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace trevane::test {

/// A session's bus of the test's own, which ends with it.
class OwnBus final {
 public:
  OwnBus();
  ~OwnBus();
  OwnBus(const OwnBus&) = delete;
  OwnBus& operator=(const OwnBus&) = delete;

  /// Empty where dbus-daemon is not installed.
  [[nodiscard]] const QString& Address() const { return address_; }
  /// Ends it at once, as a crash would.
  void End();

 private:
  QTemporaryDir folder_;
  QProcess daemon_;
  QString address_;
};

}  // namespace trevane::test
