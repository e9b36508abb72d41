#include "engine/providers/curl/CurlFailures.h"

#include <QByteArrayView>

#include <algorithm>
#include <array>

namespace trevane::curl {

QString WordsOf(const ftp::Reply& reply) {
  constexpr qsizetype kMost = 500;
  QString text = QString::fromUtf8(reply.text);
  if (text.contains(QChar::ReplacementCharacter)) {
    text = QString::fromLatin1(reply.text);
  }
  text = text.simplified();
  for (QChar& each : text) {
    if (!each.isPrint()) {
      each = QLatin1Char('?');
    }
  }
  if (text.size() > kMost) {
    text = text.left(kMost) + QStringLiteral("...");
  }
  const QString code = QString::number(reply.code);
  return text.isEmpty() ? code : code + QLatin1Char(' ') + text;
}

bool SpeaksOfOtherClients(const ftp::Reply& reply) {
  constexpr std::array<QByteArrayView, 11> kWords{
      "too many", "maximum",           "limit",   "busy",      "in use", "already logged",
      "sessions", "already connected", "no more", "try again", "clients"};
  const QByteArray text = reply.text.toLower();
  // "Too many log-on attempts": the password was wrong too often.
  if (text.contains("attempt") || text.contains("incorrect") || text.contains("password")) {
    return false;
  }
  return std::any_of(kWords.begin(), kWords.end(),
                     [&text](QByteArrayView word) { return text.contains(word); });
}

}  // namespace trevane::curl
