#include "tests/engine/providers/curl/OtherEnd.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <utility>

namespace trevane::test {
namespace {

void CloseIfOpen(sockets::Handle& socket) {
  if (socket >= 0) {
    sockets::Close(std::exchange(socket, -1));
  }
}

}  // namespace

OtherEnd::OtherEnd(std::function<void(OtherEnd& end)> speak)
    : speak_(std::move(speak)),
      listening_(sockets::Listen(port_)),
      over_(sockets::MakeEvent()),
      thread_([this] { Run(); }) {}

OtherEnd::~OtherEnd() {
  sockets::Raise(over_);
  thread_.join();
  sockets::Close(listening_);
  sockets::Close(over_);
}

bool OtherEnd::Await(sockets::Handle socket, sockets::Until until) const {
  const std::array<sockets::Waited, 2> all{{{over_, sockets::Until::Readable}, {socket, until}}};
  return sockets::Wait(all, -1) == 1;
}

sockets::Handle OtherEnd::Accept(sockets::Handle listening) const {
  return Await(listening, sockets::Until::Readable) ? sockets::Accept(listening) : -1;
}

qsizetype OtherEnd::Receive(sockets::Handle socket, char* to, qsizetype most) const {
  if (socket < 0) {
    return 0;
  }
  for (;;) {
    const qsizetype got = sockets::Receive(socket, to, most);
    if (got >= 0 || !sockets::WouldBlock() || !Await(socket, sockets::Until::Readable)) {
      return got;
    }
  }
}

void OtherEnd::Send(sockets::Handle socket, const QByteArray& bytes) const {
  qsizetype sent = 0;
  while (socket >= 0 && sent < bytes.size()) {
    const qsizetype more = sockets::Send(socket, bytes.constData() + sent, bytes.size() - sent);
    if (more > 0) {
      sent += more;
    } else if (!sockets::WouldBlock() || !Await(socket, sockets::Until::Writable)) {
      return;
    }
  }
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
  sockets::BlockBrokenPipe();
  while (Await(listening_, sockets::Until::Readable)) {
    line_ = sockets::Accept(listening_);
    if (line_ < 0) {
      continue;
    }
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
    const qsizetype got = Receive(line_, bytes.data(), bytes.size());
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
  dataListening_ = sockets::Listen(port);
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
    data_ = Accept(dataListening_);
  }
}

void OtherEnd::ConnectData(const QByteArray& eprt) {
  const QByteArrayList parts = eprt.split('|');
  ASSERT_EQ(parts.size(), 5);
  data_ = sockets::Connect(static_cast<quint16>(parts[3].toInt()));
  EXPECT_GE(data_, 0);
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
    const qsizetype got = Receive(data_, piece.data(), wanted);
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
  if (data_ >= 0) {
    sockets::Break(std::exchange(data_, -1));
  }
}

void OtherEnd::CloseLine() {
  CloseIfOpen(line_);
}

void OtherEnd::WaitForEnd() {
  while (!Next().isEmpty()) {
  }
}

}  // namespace trevane::test
