#pragma once

#include "engine/providers/sftp/SftpChannel.h"
#include "engine/providers/sftp/SftpPacket.h"
#include "engine/providers/sftp/SftpStream.h"

#include <QByteArray>

#include <memory>

namespace trevane::test {

/// Another channel, whose packets can be changed on their way. Packets have no length in front.
class FilterChannel : public SftpChannel {
 public:
  explicit FilterChannel(std::unique_ptr<SftpChannel> inner) : inner_(std::move(inner)) {}

  [[nodiscard]] QByteArray Exchange(QByteArray& unsent) override;
  [[nodiscard]] QByteArray Poll(QByteArray& unsent) override;
  void BeginPutBack() noexcept override { inner_->BeginPutBack(); }
  void EndPutBack() noexcept override { inner_->EndPutBack(); }

 protected:
  using Packet = QByteArray;

  /// What the server gets in its place; nothing where it gets none.
  [[nodiscard]] virtual Packet OnRequest(Packet packet) { return packet; }
  /// Before each look at the server; may raise an error.
  virtual void RequireLine() {}
  /// What the client gets in its place.
  [[nodiscard]] virtual Packet OnAnswer(Packet packet) { return packet; }

  [[nodiscard]] static sftp::PacketType TypeOf(const Packet& packet) {
    return static_cast<sftp::PacketType>(packet.at(0));
  }
  [[nodiscard]] static quint32 IdOf(const Packet& packet);
  /// A status for a request, as an answer.
  [[nodiscard]] static Packet StatusOf(quint32 id, quint32 code, const QByteArray& text);
  /// The client gets this as well.
  void Answer(const Packet& packet);

 private:
  void TakeRequests(QByteArray& unsent);
  void TakeAnswers(const QByteArray& bytes);

  std::unique_ptr<SftpChannel> inner_;
  sftp::PacketStream requests_;
  sftp::PacketStream answers_;
  QByteArray toServer_;
  QByteArray toClient_;
};

/// How a server differs from OpenSSH's present one.
struct OldServer {
  /// Its plain rename replaces a file.
  bool renameReplaces = false;
};

/// A server without any extension.
class OldServerChannel final : public FilterChannel {
 public:
  OldServerChannel(std::unique_ptr<SftpChannel> inner, const OldServer& server)
      : FilterChannel(std::move(inner)), server_(server) {}

 protected:
  [[nodiscard]] Packet OnRequest(Packet packet) override;
  [[nodiscard]] Packet OnAnswer(Packet packet) override;

 private:
  OldServer server_;
};

}  // namespace trevane::test
