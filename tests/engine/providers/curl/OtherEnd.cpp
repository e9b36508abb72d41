#include "tests/engine/providers/curl/OtherEnd.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <utility>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace trevane::test {
namespace {

int Listen(quint16& port) {
  const int listening = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  EXPECT_EQ(::bind(listening, reinterpret_cast<const sockaddr*>(&address), size), 0);
  EXPECT_EQ(::listen(listening, 4), 0);
  EXPECT_EQ(::getsockname(listening, reinterpret_cast<sockaddr*>(&address), &size), 0);
  port = ntohs(address.sin_port);
  return listening;
}

void Send(int socket, const QByteArray& bytes) {
  qsizetype sent = 0;
  while (sent < bytes.size()) {
    const ssize_t more =
        ::send(socket, bytes.constData() + sent, static_cast<size_t>(bytes.size() - sent), MSG_NOSIGNAL);
    if (more <= 0) {
      return;
    }
    sent += more;
  }
}

void CloseIfOpen(std::atomic<int>& socket) {
  if (const int open = socket.exchange(-1); open >= 0) {
    ::close(open);
  }
}

}  // namespace

OtherEnd::OtherEnd(std::function<void(OtherEnd& end)> speak)
    : speak_(std::move(speak)), listening_(Listen(port_)), thread_([this] { Run(); }) {}

OtherEnd::~OtherEnd() {
  isOver_ = true;
  for (const int each : {listening_, line_.load(), dataListening_.load(), data_.load()}) {
    ::shutdown(each, SHUT_RDWR);
  }
  thread_.join();
  ::close(listening_);
}

FtpSettings OtherEnd::Settings() const {
  FtpSettings settings;
  settings.host = QStringLiteral("127.0.0.1");
  settings.port = port_;
  settings.user = QStringLiteral("joe");
  return settings;
}

FtpLogOn OtherEnd::Joe() {
  return {QStringLiteral("joe"), Secret(QStringView(u"open sesame"))};
}

QByteArrayList OtherEnd::Commands() const {
  const std::lock_guard lock(mutex_);
  return commands_;
}

void OtherEnd::Run() {
  while (!isOver_) {
    line_ = ::accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC);
    if (line_ < 0) {
      return;
    }
    const int now = 1;
    ::setsockopt(line_, IPPROTO_TCP, TCP_NODELAY, &now, sizeof now);
    ++clients_;
    unread_.clear();
    speak_(*this);
    CloseData();
    CloseIfOpen(dataListening_);
    CloseLine();
  }
}

QByteArray OtherEnd::Next() {
  while (!unread_.contains('\n')) {
    std::array<char, 4096> bytes{};
    const ssize_t got = ::recv(line_, bytes.data(), bytes.size(), 0);
    if (got <= 0) {
      return {};
    }
    unread_.append(bytes.data(), got);
  }
  const qsizetype end = unread_.indexOf('\n');
  const QByteArray line = unread_.first(end).trimmed();
  unread_.remove(0, end + 1);
  const std::lock_guard lock(mutex_);
  commands_ << line;
  return line;
}

void OtherEnd::Say(const QByteArray& line) {
  Send(line_, line + "\r\n");
}

void OtherEnd::LogOn() {
  Say("220 Ready");
  EXPECT_EQ(Next(), "USER joe");
  Say("331 Password");
  EXPECT_EQ(Next(), "PASS open sesame");
  Say("230 Logged on");
  EXPECT_EQ(Next(), "PWD");
  Say("257 \"/home\" is here");
  EXPECT_EQ(Next(), "FEAT");
  Say("211-Features:\r\n MLST size*;\r\n  MDTM\r\n211 End");
}

void OtherEnd::OpenPassive() {
  CloseData();
  CloseIfOpen(dataListening_);
  quint16 port = 0;
  dataListening_ = Listen(port);
  if (hasEpsv) {
    Say("229 Entering (|||" + QByteArray::number(port) + "|)");
  } else {
    Say("227 Entering (" + passiveAddress + ',' + QByteArray::number(port / 256) + ',' +
        QByteArray::number(port % 256) + ')');
  }
}

QByteArray OtherEnd::AnswerUntil(const QByteArray& verb) {
  for (;;) {
    const QByteArray line = Next();
    if (line.isEmpty()) {
      return {};
    }
    if (line.split(' ').first() == verb) {
      return line;
    }
    if (line == "EPSV" && !hasEpsv) {
      Say("500 EPSV is not known");
    } else if (line == "EPSV" || line == "PASV") {
      OpenPassive();
    } else if (line.startsWith("TYPE") || line.startsWith("NOOP")) {
      Say("200 Fine");
    } else if (line.startsWith("REST")) {
      Say("350 Restarting");
    } else if (line == "PWD") {
      Say("257 \"/home\" is here");
    } else if (line == "QUIT") {
      Say("221 Bye");
    } else {
      Say("502 " + line + " is not known");
    }
  }
}

void OtherEnd::AcceptData() {
  if (data_ < 0 && dataListening_ >= 0) {
    data_ = ::accept4(dataListening_, nullptr, nullptr, SOCK_CLOEXEC);
  }
}

void OtherEnd::ConnectData(const QByteArray& eprt) {
  const QByteArrayList parts = eprt.split('|');
  ASSERT_EQ(parts.size(), 5);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<quint16>(parts[3].toInt()));
  data_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  EXPECT_EQ(::connect(data_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
}

void OtherEnd::SendData(const QByteArray& bytes) {
  AcceptData();
  Send(data_, bytes);
}

QByteArray OtherEnd::TakeData(qint64 most) {
  AcceptData();
  QByteArray taken;
  QByteArray piece(65536, Qt::Uninitialized);
  while (most < 0 || taken.size() < most) {
    const qint64 wanted = most < 0 ? piece.size() : std::min<qint64>(piece.size(), most - taken.size());
    const ssize_t got = ::recv(data_, piece.data(), static_cast<size_t>(wanted), 0);
    if (got <= 0) {
      break;
    }
    taken.append(piece.constData(), got);
  }
  return taken;
}

void OtherEnd::CloseData() {
  CloseIfOpen(data_);
}

void OtherEnd::ResetData() {
  if (data_ < 0) {
    return;
  }
  const linger now{1, 0};
  ::setsockopt(data_, SOL_SOCKET, SO_LINGER, &now, sizeof now);
  CloseData();
}

void OtherEnd::CloseLine() {
  CloseIfOpen(line_);
}

void OtherEnd::WaitForEnd() {
  while (!Next().isEmpty()) {
  }
}

}  // namespace trevane::test
