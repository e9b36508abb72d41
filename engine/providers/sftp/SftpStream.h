#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

namespace trevane::sftp {

/// Cuts the bytes that a server sends into packets.
class PacketStream {
 public:
  /// Bytes that a packet may have; servers stay below a quarter of it.
  static constexpr quint32 kMostBytes = 1024 * 1024;

  void Append(const QByteArray& bytes);

  /// The next whole packet, without its length; nothing while it is not there. Valid until Append.
  [[nodiscard]] std::optional<QByteArrayView> Next();

  /// A packet claims to be empty or larger than kMostBytes: nothing behind that can be read any more.
  [[nodiscard]] bool IsBroken() const noexcept { return isBroken_; }

 private:
  QByteArray bytes_;
  qsizetype at_ = 0;
  bool isBroken_ = false;
};

}  // namespace trevane::sftp
