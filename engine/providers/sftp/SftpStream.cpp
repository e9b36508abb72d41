#include "engine/providers/sftp/SftpStream.h"

#include <QtEndian>

namespace trevane::sftp {

void PacketStream::Append(const QByteArray& bytes) {
  if (isBroken_) {
    return;
  }
  if (at_ == bytes_.size()) {
    bytes_ = bytes;
  } else {
    bytes_.remove(0, at_);
    bytes_.append(bytes);
  }
  at_ = 0;
}

std::optional<QByteArrayView> PacketStream::Next() {
  constexpr qsizetype kLength = sizeof(quint32);
  if (isBroken_ || bytes_.size() - at_ < kLength) {
    return std::nullopt;
  }
  const auto length = qFromBigEndian<quint32>(bytes_.constData() + at_);
  if (length == 0 || length > kMostBytes) {
    isBroken_ = true;
    return std::nullopt;
  }
  if (bytes_.size() - at_ - kLength < static_cast<qsizetype>(length)) {
    return std::nullopt;
  }
  const QByteArrayView packet = QByteArrayView(bytes_).sliced(at_ + kLength, static_cast<qsizetype>(length));
  at_ += kLength + packet.size();
  return packet;
}

}  // namespace trevane::sftp
