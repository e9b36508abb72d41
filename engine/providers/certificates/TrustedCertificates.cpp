#include "engine/providers/certificates/TrustedCertificates.h"

#include "base/ForeignText.h"
#include "base/RunTimeError.h"
#include "engine/providers/certificates/AcceptedCertificates.h"
#include "engine/providers/certificates/CertificateText.h"
#include "engine/providers/certificates/ShownCertificate.h"
#include "engine/providers/certificates/TrustPlace.h"
#include "platform/HeldLock.h"
#include "platform/OwnFile.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QThread>

#include <algorithm>

namespace trevane {
namespace {

constexpr int kLongestSubject = 200;
/// Another program holds the lock for the time of one write.
constexpr int kLongestLock = 5000;  // ms
constexpr int kLockPause = 20;      // ms

QByteArray HostOf(const QString& host) {
  const QByteArray name = host.toLower().toUtf8();
  return name.contains(':') ? '[' + name + ']' : name;
}

[[noreturn]] void FailToRead(const QString& file, const QString& reason) {
  throw RunTimeError(
      error::kAccessDenied,
      QStringLiteral("The file of trusted certificates %1 cannot be read: %2").arg(file, reason));
}

ownfile::Content ReadFile(const QString& file) {
  ownfile::Content content = ownfile::Read(file);
  if (content.state == ownfile::State::Unreadable) {
    FailToRead(file, content.reason);
  }
  // Some editors store texts in wider characters.
  if (content.bytes.contains('\0')) {
    FailToRead(file, QStringLiteral("It is not a text in UTF-8"));
  }
  return content;
}

std::unique_ptr<HeldLock> TakeLock(const QString& file) {
  for (const QDeadlineTimer deadline(kLongestLock);;) {
    std::unique_ptr<HeldLock> lock = HeldLock::Take(file);
    if (lock || deadline.hasExpired()) {
      return lock;
    }
    QThread::msleep(kLockPause);
  }
}

}  // namespace

TrustedCertificates::TrustedCertificates(const TrustPlace& place, const QString& host, quint16 port)
    : host_(HostOf(host)),
      name_(host_ + ':' + QByteArray::number(port)),
      usersFile_(place.file),
      accepted_(place.accepted) {
  const QByteArray accepted = accepted_ ? accepted_->Find(name_) : QByteArray();
  if (!accepted.isEmpty()) {
    entries_.push_back({accepted, {}});
  }
  for (const QString& file : place.moreFiles) {
    Read(file);
  }
  Read(usersFile_);
}

void TrustedCertificates::Read(const QString& file) {
  if (!file.isEmpty()) {
    ReadLines(ReadFile(file).bytes, file);
  }
}

void TrustedCertificates::ReadAnew(const QByteArray& bytes) {
  std::erase_if(entries_, [this](const Entry& entry) { return entry.line.file == usersFile_; });
  ReadLines(bytes, usersFile_);
}

void TrustedCertificates::ReadLines(const QByteArray& bytes, const QString& file) {
  QByteArray text = bytes;
  if (text.startsWith("\xEF\xBB\xBF")) {
    text.remove(0, 3);
  }
  text.replace("\r\n", "\n").replace('\r', '\n').replace('\t', ' ');
  int number = 0;
  for (const QByteArray& line : text.split('\n')) {
    ReadLine(line.simplified(), {file, ++number});
  }
}

void TrustedCertificates::ReadLine(const QByteArray& text, const Line& line) {
  if (text.isEmpty() || text.startsWith('#')) {
    return;
  }
  const QByteArrayList words = text.split(' ');
  const QByteArray name = QString::fromUtf8(words.front()).toLower().toUtf8();
  if (name != name_ && name != host_) {
    return;
  }
  const QByteArray fingerprint = certificatetext::ReadFingerprint(words.value(1));
  if (name == host_ || fingerprint.isEmpty()) {
    FailToRead(line.file, QStringLiteral("Line %1 is one of %2, but has no %3. Mend or remove the line")
                              .arg(line.number)
                              .arg(QString::fromUtf8(host_),
                                   name == host_ ? QStringLiteral("port") : QStringLiteral("fingerprint")));
  }
  entries_.push_back({fingerprint, line});
}

QByteArrayList TrustedCertificates::Fingerprints() const {
  QByteArrayList fingerprints;
  for (const Entry& entry : entries_) {
    fingerprints.removeAll(entry.fingerprint);
    fingerprints.prepend(entry.fingerprint);
  }
  return fingerprints;
}

TrustedCertificates::Judgement TrustedCertificates::Judge(const QByteArray& fingerprint) const {
  if (entries_.empty()) {
    return {};
  }
  const bool isKnown = std::any_of(entries_.begin(), entries_.end(), [&fingerprint](const Entry& entry) {
    return entry.fingerprint == fingerprint;
  });
  const Entry& last = entries_.back();
  return {isKnown ? Verdict::Known : Verdict::Changed, last.fingerprint, last.line};
}

std::optional<QString> TrustedCertificates::Add(const ShownCertificate& shown, const QDate& day) {
  std::optional<QString> failure = Store(shown, day);
  if (failure && Judge(shown.fingerprint).verdict == Verdict::Unknown) {
    entries_.push_back({shown.fingerprint, {}});
    if (accepted_) {
      accepted_->Keep(name_, shown.fingerprint);
    }
  }
  return failure;
}

std::optional<QString> TrustedCertificates::Store(const ShownCertificate& shown, const QDate& day) {
  if (usersFile_.isEmpty()) {
    return QStringLiteral("There is no folder for it");
  }
  if (!ownfile::MakePrivateFolder(QFileInfo(usersFile_).absolutePath())) {
    return QStringLiteral("The folder of the file cannot be made");
  }
  if (!ownfile::IsWritable(usersFile_)) {
    return QStringLiteral("The file cannot be written");
  }
  // Read and replaced under one lock: another copy of this program adds lines, too.
  const std::unique_ptr<HeldLock> lock = TakeLock(usersFile_ + QStringLiteral(".lock"));
  if (!lock) {
    return QStringLiteral("The file is held by another program");
  }
  lock->RemoveAtEnd();
  QByteArray bytes = ReadFile(usersFile_).bytes;
  ReadAnew(bytes);
  if (Judge(shown.fingerprint).verdict != Verdict::Unknown) {
    return std::nullopt;
  }
  if (bytes.isEmpty()) {
    bytes = "# Certificates of controllers that are trusted. Remove a line to forget the certificate.\n";
  } else if (!bytes.endsWith('\n')) {
    bytes += '\n';
  }
  bytes += name_ + ' ' + certificatetext::FingerprintText(shown.fingerprint).toLatin1() + ' ' +
           day.toString(Qt::ISODate).toLatin1() + ' ' + ForeignLine(shown.subject, kLongestSubject).toUtf8() +
           '\n';
  const ownfile::Outcome outcome = ownfile::Replace(usersFile_, bytes, {.isPrivate = true});
  if (!outcome) {
    return outcome.reason.isEmpty() ? QStringLiteral("The file cannot be written") : outcome.reason;
  }
  ReadAnew(bytes);
  return std::nullopt;
}

}  // namespace trevane
