#include "app/modLogEvent.h"

#include "platform/NameCodec.h"

#include <QDir>
#include <QFileInfo>

namespace trevane {

using namespace Qt::StringLiterals;

modLogEvent::modLogEvent(const QString& baseName, Clock clock)
    : baseName_(baseName), clock_(std::move(clock)) {}

modLogEvent::~modLogEvent() {
  CloseLog();
}

void modLogEvent::SetFailureListener(FailureListener listener) {
  onFailure_ = std::move(listener);
  if (failed_ && onFailure_)
    onFailure_();
}

void modLogEvent::OpenLog(const QString& folder) {
  if (IsOpen())
    return;
  QDir().mkpath(folder);
  const QString path = folder + u'/' + baseName_;
  const QString log = path + u".log"_s;
  const QString previous = path + u"1.log"_s;

  if (QFileInfo(log).size() > kRotateAbove) {
    QFile::remove(previous);
    QFile::rename(log, previous);
  }

  file_.setFileName(log);
  // Unbuffered, so that a line that has been written survives a crash of the program. A pipe or device of
  // that name would block or swallow it.
  const bool usable = !QFileInfo::exists(log) || QFileInfo(log).isFile();
  if (!usable || !file_.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered))
    ReportFailure();
}

void modLogEvent::LogEvent(const QString& kind, const QString& value1, const QString& value2,
                           const QString& value3, const QString& value4) {
  const auto quoted = [](const QString& value) { return u'"' + value + u'"'; };
  QString text = kind + u' ' + quoted(value1);
  if (kind == u"CONNECT"_s)
    text += u", "_s + quoted(value2) + u", "_s + quoted(value3) + u", "_s + quoted(value4);
  else if (kind == u"COPY"_s || kind == u"MOVE"_s || kind == u"RENAME"_s)
    text += u" TO "_s + quoted(value2);
  WriteLogLine(text);
}

void modLogEvent::WriteLogLine(const QString& text) {
  // Digits and separators literally, whatever the user's locale puts in their place.
  const QDateTime now = clock_();
  const QDate date = now.date();
  const QTime time = now.time();
  const QString stamp = QString::asprintf("[%04d/%02d/%02d %02d:%02d:%02d] ", date.year(), date.month(),
                                          date.day(), time.hour(), time.minute(), time.second());
  const QByteArray line = EncodeText(stamp + text + u"\r\n"_s);
  if (!IsOpen()) {
    ReportFailure();
    return;
  }
  const qint64 before = file_.size();
  if (file_.write(line) != line.size()) {
    // What a full disk took of the line goes again, so that the next line does not continue it.
    file_.resize(before);
    ReportFailure();
  }
}

void modLogEvent::CloseLog() {
  file_.close();
}

void modLogEvent::ReportFailure() {
  if (failed_)
    return;
  failed_ = true;
  if (onFailure_)
    onFailure_();
}

}  // namespace trevane
