#pragma once

#include "engine/providers/sftp/SftpChannel.h"
#include "engine/providers/sftp/SftpConnector.h"
#include "engine/providers/sftp/SftpPacket.h"
#include "engine/providers/sftp/SftpStream.h"

#include <QByteArray>
#include <QHash>

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace trevane::test {

/// A server without any file: what it answers is told packet by packet. Where nothing is told it answers as
/// one whose every path is an empty folder or, below "/f", a file of ten bytes.
struct OddServer {
  using Packets = std::vector<QByteArray>;

  /// The answers to a request, whole packets with their lengths, or any other bytes; nothing for the usual
  /// one.
  std::function<std::optional<Packets>(sftp::PacketType type, quint32 id, const QByteArray& request)> answer =
      {};
  /// Bytes that come at once; 0: all.
  qsizetype step = 0;
  /// What was asked together is answered last first.
  bool turnsRound = false;
  /// The next wait is cancelled.
  bool cancels = false;
  QHash<sftp::PacketType, int> requests = {};

  [[nodiscard]] static QByteArray Status(quint32 id, quint32 code, const QByteArray& text = {});
  [[nodiscard]] static QByteArray Item(quint32 id, quint32 mode, quint64 size = 0);
  /// An answer to ReadDir.
  [[nodiscard]] static QByteArray Names(quint32 id, const QList<QByteArray>& names);
  /// The text field behind the id of a request.
  [[nodiscard]] static QByteArray TextOf(const QByteArray& request);
};

/// Silence is error::kTimeOut at once.
class OddChannel final : public SftpChannel {
 public:
  explicit OddChannel(OddServer& server) : server_(server) {}

  [[nodiscard]] QByteArray Exchange(QByteArray& unsent) override;
  [[nodiscard]] QByteArray Poll(QByteArray& unsent) override;
  void KeepAlive() override { ++keptAlive; }

  int keptAlive = 0;

 private:
  void Take(QByteArray& unsent);
  [[nodiscard]] QByteArray Give();
  [[nodiscard]] OddServer::Packets Usual(sftp::PacketType type, quint32 id, const QByteArray& request);

  OddServer& server_;
  sftp::PacketStream stream_;
  QByteArray toClient_;
};

class OddConnector final : public SftpConnector {
 public:
  explicit OddConnector(OddServer& server) : server_(server) {}

  [[nodiscard]] std::unique_ptr<SftpChannel> Connect() override {
    return std::make_unique<OddChannel>(server_);
  }
  [[nodiscard]] bool ConnectsWithoutQuestion() const override { return true; }
  [[nodiscard]] QString ServerKey() const override { return QStringLiteral("odd"); }
  [[nodiscard]] QStringList Details() const override { return {}; }
  [[nodiscard]] QString Notice() const override { return {}; }

 private:
  OddServer& server_;
};

}  // namespace trevane::test
