#include "engine/providers/certificates/CertificateText.h"

#include <QByteArrayList>

namespace trevane::certificatetext {

QString FingerprintText(const QByteArray& fingerprint) {
  return QString::fromLatin1(fingerprint.toHex(':').toUpper());
}

QString FingerprintLines(const QByteArray& fingerprint) {
  const qsizetype half = fingerprint.size() / 2;
  return FingerprintText(fingerprint.first(half)) + u'\n' + FingerprintText(fingerprint.sliced(half));
}

QByteArray ReadFingerprint(const QByteArray& text) {
  QByteArray digits = text.toLower();
  if (digits.contains(':')) {
    // One that lacks a digit somewhere must not be taken for another.
    const QByteArrayList pairs = digits.split(':');
    for (const QByteArray& pair : pairs) {
      if (pair.size() != 2) {
        return {};
      }
    }
    digits = pairs.join();
  }
  const QByteArray fingerprint = QByteArray::fromHex(digits);
  return fingerprint.size() == kFingerprintSize && fingerprint.toHex() == digits ? fingerprint : QByteArray();
}

}  // namespace trevane::certificatetext
