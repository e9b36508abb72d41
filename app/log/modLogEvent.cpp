#include "app/log/modLogEvent.h"

#include "base/NameCodec.h"
#include "platform/OwnFile.h"

namespace trevane {

namespace {

/// The characters that are seen in place of those that steer a terminal or end a line.
QString WithPictures(QString text) {
  constexpr char16_t kPictures = 0x2400;
  constexpr char16_t kPictureOfDelete = 0x2421;
  constexpr char16_t kPictureOfNewLine = 0x2424;
  constexpr char16_t kPictureOfOthers = 0x2426;
  for (QChar& unit : text) {
    const char16_t code = unit.unicode();
    if (code < 0x20) {
      unit = static_cast<char16_t>(kPictures + code);
    } else if (code == 0x7F) {
      unit = kPictureOfDelete;
    } else if (code == 0x85 || code == 0x2028 || code == 0x2029) {
      unit = kPictureOfNewLine;
    } else if (code > 0x7F && code < 0xA0) {
      // These have none of their own.
      unit = kPictureOfOthers;
    }
  }
  return text;
}

}  // namespace

modLogEvent::modLogEvent(const QString& baseName, Clock clock)
    : baseName_(baseName), clock_(std::move(clock)) {}

modLogEvent::~modLogEvent() {
  CloseLog();
}

void modLogEvent::SetFailureListener(FailureListener listener) {
  onFailure_ = std::move(listener);
  if (failed_ && onFailure_) {
    onFailure_();
  }
}

void modLogEvent::OpenLog(const QString& folder, const QString& otherFolder) {
  if (IsOpen()) {
    return;
  }
  if (!OpenIn(folder) && (otherFolder.isEmpty() || !OpenIn(otherFolder))) {
    ReportFailure();
  }
}

bool modLogEvent::OpenIn(const QString& folder) {
  ownfile::MakePrivateFolder(folder);
  const QString path = folder + u'/' + baseName_;
  const QString log = path + QStringLiteral(".log");
  // Unbuffered, so that a line that has been written survives a crash of the program.
  if (!ownfile::OpenForAppending(file_, log)) {
    return false;
  }
  // In a read-only folder the log cannot be renamed, so it keeps growing.
  if (file_.size() <= kRotateAbove || !ownfile::IsWritable(log)) {
    return true;
  }
  file_.close();
  static_cast<void>(ownfile::MoveOver(log, path + QStringLiteral("1.log")));
  return ownfile::OpenForAppending(file_, log);
}

void modLogEvent::LogEvent(const QString& kind, const QString& value1, const QString& value2,
                           const QString& value3, const QString& value4) {
  const auto quoted = [](const QString& value) { return u'"' + WithPictures(value) + u'"'; };
  QString text = WithPictures(kind) + u' ' + quoted(value1);
  if (kind == QStringLiteral("CONNECT")) {
    text += QStringLiteral(", ") + quoted(value2) + QStringLiteral(", ") + quoted(value3) +
            QStringLiteral(", ") + quoted(value4);
  } else if (kind == QStringLiteral("COPY") || kind == QStringLiteral("MOVE") ||
             kind == QStringLiteral("RENAME")) {
    text += QStringLiteral(" TO ") + quoted(value2);
  }
  WriteLogLine(text);
}

void modLogEvent::WriteLogLine(const QString& text) {
  // Digits and separators are literal: the user's locale does not change them.
  const QDateTime now = clock_();
  const QDate date = now.date();
  const QTime time = now.time();
  const QString stamp = QString::asprintf("[%04d/%02d/%02d %02d:%02d:%02d] ", date.year(), date.month(),
                                          date.day(), time.hour(), time.minute(), time.second());
  const QByteArray line = EncodeText(stamp + text + QStringLiteral("\r\n"));
  if (!IsOpen()) {
    ReportFailure();
    return;
  }
  const qint64 before = file_.size();
  if (file_.write(line) != line.size()) {
    // A partly written line is removed again, so that the next line does not continue it.
    file_.resize(before);
    ReportFailure();
  }
}

void modLogEvent::CloseLog() {
  file_.close();
}

void modLogEvent::ReportFailure() {
  if (failed_) {
    return;
  }
  failed_ = true;
  if (onFailure_) {
    onFailure_();
  }
}

}  // namespace trevane
