#include "engine/providers/curl/UnaskedWords.h"

#include "engine/providers/curl/CurlFailures.h"
#include "engine/providers/curl/ReplyReader.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QByteArrayView>

#include <algorithm>
#include <array>

namespace trevane::curl {
namespace {

/// Whether records of TLS tell that it ends. What else they hold cannot be seen.
bool HoldsAlert(QByteArrayView records) {
  constexpr char kAlert = 0x15;
  constexpr qsizetype kHead = 5;
  while (records.size() >= kHead) {
    if (records[0] == kAlert) {
      return true;
    }
    const qsizetype length = static_cast<uchar>(records[3]) * 256 + static_cast<uchar>(records[4]);
    records = records.sliced(std::min(records.size(), kHead + length));
  }
  return false;
}

}  // namespace

bool HasUnaskedWords(CURLM* multi, Socket socket) noexcept {
  curl_waitfd waiting{curl_socket_t(socket), CURL_WAIT_POLLIN, 0};
  curl_multi_poll(multi, &waiting, 1, 0, nullptr);
  return waiting.revents != 0;
}

bool IsUnaskedEnd(Socket socket, bool isEncrypted) noexcept {
  // Another answer that nobody has asked for is told.
  constexpr qsizetype kWords = 512;
  std::array<char, kWords> bytes{};
  const QByteArrayView come(bytes.data(), Peek(socket, bytes.data(), kWords));
  return come.isEmpty() ||
         (isEncrypted ? HoldsAlert(come) : come.startsWith("421") || come.startsWith("221"));
}

QString TakeUnaskedWords(Socket socket, std::chrono::milliseconds longest) {
  constexpr int kEnded = 221;
  constexpr int kGone = 421;
  ReplyReader words;
  for (const QByteArray& line : ReadLastWords(socket, longest).split('\n')) {
    words.Add(line);
  }
  const ftp::Reply reply = words.Replies().empty() ? ftp::Reply{} : words.Replies().front();
  const QString end = QStringLiteral("The server has ended the connection");
  if (reply.code == 0) {
    return end;
  }
  return reply.code == kEnded || reply.code == kGone
             ? end + QStringLiteral(" (%1)").arg(WordsOf(reply))
             : QStringLiteral("The server has answered without being asked (%1)").arg(WordsOf(reply));
}

}  // namespace trevane::curl
