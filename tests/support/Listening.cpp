#include "tests/support/Listening.h"

#include <QDir>
#include <QFile>
#include <QSet>

#include <gtest/gtest.h>

#include <array>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace trevane::test {
namespace {

/// The inodes of the sockets that a process has open.
QSet<QByteArray> SocketsOf(qint64 process) {
  QSet<QByteArray> sockets;
  const QDir fds(QStringLiteral("/proc/%1/fd").arg(process));
  for (const QString& name : fds.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
    std::array<char, 64> target{};
    const ssize_t size =
        ::readlink(QFile::encodeName(fds.filePath(name)).constData(), target.data(), target.size() - 1);
    const QByteArray text(target.data(), size > 0 ? size : 0);
    if (text.startsWith("socket:[")) {
      sockets.insert(text.sliced(8).chopped(1));
    }
  }
  return sockets;
}

}  // namespace

QStringList ListeningAddresses(qint64 process) {
  const QSet<QByteArray> sockets = SocketsOf(process);
  QStringList addresses;
  for (const char16_t* name : {u"/proc/net/tcp", u"/proc/net/tcp6"}) {
    QFile table(QString::fromUtf16(name));
    if (!table.open(QIODevice::ReadOnly)) {
      continue;
    }
    for (const QByteArray& line : table.readAll().split('\n')) {
      // Position, own address, other's address, state (0A: listening), ..., inode.
      const QByteArrayList words = line.simplified().split(' ');
      if (words.size() < 10 || words[3] != "0A" || !sockets.contains(words[9])) {
        continue;
      }
      const QByteArrayList parts = words[1].split(':');
      const in_addr address{parts[0].toUInt(nullptr, 16)};
      addresses.append(
          QStringLiteral("%1:%2")
              .arg(parts[0].size() == 8 ? QString::fromLatin1(::inet_ntoa(address)) : QStringLiteral("IPv6"))
              .arg(parts[1].toUInt(nullptr, 16)));
    }
  }
  return addresses;
}

quint16 FreePort() {
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  EXPECT_EQ(::bind(fd, reinterpret_cast<const sockaddr*>(&address), size), 0);
  EXPECT_EQ(::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size), 0);
  ::close(fd);
  return ntohs(address.sin_port);
}

}  // namespace trevane::test
