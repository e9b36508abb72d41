#pragma once

#include "engine/controllers/EventLog.h"

#include <QDateTime>
#include <QFile>
#include <QString>

#include <functional>

namespace trevane {

/// The journal of every operation that changes a file system or a connection: one line an event, appended
/// beside the program or, where that cannot be written, in the user's own folder. A log that cannot be opened
/// or written never stops an operation; the first failure is reported once.
class modLogEvent final : public EventLog {
 public:
  using Clock = std::function<QDateTime()>;
  using FailureListener = std::function<void()>;

  /// A log larger than this at start becomes the previous generation.
  static constexpr qint64 kRotateAbove = 100000;  // bytes

  /// `baseName` is the executable's name without extension. `clock` answers local time.
  explicit modLogEvent(
      const QString& baseName, Clock clock = [] { return QDateTime::currentDateTime(); });
  ~modLogEvent() override;
  modLogEvent(const modLogEvent&) = delete;
  modLogEvent& operator=(const modLogEvent&) = delete;

  /// Called at the first failure of this run, whenever that is.
  void SetFailureListener(FailureListener listener);

  /// Rotates what has grown too large and opens the log of `folder` for appending or, where that cannot be
  /// done, the one of `otherFolder`, if it is not empty. Opening twice is one opening.
  void OpenLog(const QString& folder, const QString& otherFolder = {});

  /// `kind` is compared exactly: "CONNECT" takes four values, "COPY", "MOVE" and "RENAME" two, any other one.
  /// Quotes and backslashes inside a value stay as they are; line breaks and other control characters, which
  /// would make lines of their own, are written as their pictures (U+2400 and following).
  void LogEvent(const QString& kind, const QString& value1, const QString& value2 = {},
                const QString& value3 = {}, const QString& value4 = {}) override;

  /// Appends one line, stamped with the time and ended by CR LF.
  void WriteLogLine(const QString& text);

  void CloseLog();

  [[nodiscard]] bool IsOpen() const { return file_.isOpen(); }

 private:
  bool OpenIn(const QString& folder);
  void ReportFailure();

  QString baseName_;
  Clock clock_;
  FailureListener onFailure_;
  QFile file_;
  bool failed_ = false;
};

}  // namespace trevane
