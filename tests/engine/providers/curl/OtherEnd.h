#pragma once

#include "engine/providers/curl/CurlDialogue.h"
#include "tests/support/Sockets.h"

#include <QByteArray>
#include <QByteArrayList>

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

namespace trevane::test {

/// The other end of one control connection on 127.0.0.1, whose every word the test sets.
class OtherEnd final {
 public:
  /// `speak` runs on a thread of its own for each client, one after the other.
  explicit OtherEnd(std::function<void(OtherEnd& end)> speak);
  /// Ends all connections.
  ~OtherEnd();
  OtherEnd(const OtherEnd&) = delete;
  OtherEnd& operator=(const OtherEnd&) = delete;

  // For the test.
  [[nodiscard]] FtpSettings Settings() const;
  [[nodiscard]] static FtpLogOn Joe();
  [[nodiscard]] QByteArrayList Commands() const;
  [[nodiscard]] int Clients() const { return clients_; }

  // For `speak`; all of them do nothing once the line has ended.
  /// The next command without its end; empty when the line has ended.
  QByteArray Next();
  void Say(const QByteArray& line);
  /// Greets and answers up to FEAT.
  void LogOn();
  /// Answers the commands until one of this name (its line), or the end (empty). Opens data connections.
  QByteArray AnswerUntil(const QByteArray& verb);
  /// Opens the data connection to the port that EPRT names.
  void ConnectData(const QByteArray& eprt);
  void SendData(const QByteArray& bytes);
  /// Up to `most`, or all until the end.
  [[nodiscard]] QByteArray TakeData(qint64 most = -1);
  void CloseData();
  /// Ends the data connection as a failing program does: what was not read is lost.
  void ResetData();
  void CloseLine();
  /// Until the client ends the line or the test is over.
  void WaitForEnd();
  /// Refuses EPSV.
  bool hasEpsv = true;
  /// The address in the answer to PASV.
  QByteArray passiveAddress = "127,0,0,1";

 private:
  void Run();
  /// False when the test is over.
  [[nodiscard]] bool Await(sockets::Handle socket, sockets::Until until) const;
  [[nodiscard]] sockets::Handle Accept(sockets::Handle listening) const;
  /// 0 or below where nothing comes any more.
  [[nodiscard]] qsizetype Receive(sockets::Handle socket, char* to, qsizetype most) const;
  void Send(sockets::Handle socket, const QByteArray& bytes) const;
  void OpenPassive();
  void AcceptData();

  std::function<void(OtherEnd&)> speak_;
  // Before the socket that finds it.
  quint16 port_ = 0;
  sockets::Handle listening_;
  /// Can be read when the test is over.
  sockets::Handle over_;
  // Of the thread.
  sockets::Handle line_ = -1;
  sockets::Handle dataListening_ = -1;
  sockets::Handle data_ = -1;
  std::atomic<int> clients_ = 0;
  QByteArray unread_;
  mutable std::mutex mutex_;
  QByteArrayList commands_;
  std::thread thread_;
};

}  // namespace trevane::test
