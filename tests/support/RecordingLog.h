#pragma once

#include "engine/controllers/EventLog.h"

#include <QStringList>

namespace trevane::test {

/// Keeps what is logged, a line an event: the kind and the values up to the last one that is not empty, with
/// "|" between them.
class RecordingLog final : public EventLog {
 public:
  void LogEvent(const QString& kind, const QString& value1, const QString& value2 = {},
                const QString& value3 = {}, const QString& value4 = {}) override {
    QStringList parts{kind, value1, value2, value3, value4};
    while (parts.size() > 1 && parts.last().isEmpty()) {
      parts.removeLast();
    }
    lines_.append(parts.join(u'|'));
  }

  [[nodiscard]] const QStringList& Lines() const { return lines_; }
  void Clear() { lines_.clear(); }

 private:
  QStringList lines_;
};

}  // namespace trevane::test
