#pragma once

#include <QString>

namespace trevane {

/// The operation log, as its writers see it. The application implements it.
class EventLog {
 public:
  virtual ~EventLog() = default;

  /// `kind` is compared exactly: "CONNECT" takes four values, "COPY", "MOVE" and "RENAME" two, "DELETE" and
  /// "DISCONNECT" one. A log that cannot be written stops no operation: this raises nothing.
  virtual void LogEvent(const QString& kind, const QString& value1, const QString& value2 = {},
                        const QString& value3 = {}, const QString& value4 = {}) = 0;
};

}  // namespace trevane
