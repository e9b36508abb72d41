#include "engine/providers/sftp/SftpPacket.h"

#include <QtEndian>

#include <utility>

namespace trevane::sftp {
namespace {

constexpr quint32 kHasSize = 0x1;
constexpr quint32 kHasOwner = 0x2;
constexpr quint32 kHasMode = 0x4;
constexpr quint32 kHasTimes = 0x8;
constexpr quint32 kHasMore = 0x80000000;
constexpr quint32 kKnown = kHasSize | kHasOwner | kHasMode | kHasTimes | kHasMore;

template <class Number>
std::optional<Number> TakeNumber(QByteArrayView& rest) noexcept {
  if (rest.size() < static_cast<qsizetype>(sizeof(Number))) {
    return std::nullopt;
  }
  const auto number = qFromBigEndian<Number>(rest.data());
  rest = rest.sliced(sizeof(Number));
  return number;
}

template <class Number>
void AppendNumber(QByteArray& packet, Number number) {
  const Number bytes = qToBigEndian(number);
  packet.append(reinterpret_cast<const char*>(&bytes), sizeof(Number));
}

}  // namespace

PacketWriter::PacketWriter(PacketType type) {
  packet_.reserve(64);
  AppendNumber<quint32>(packet_, 0);
  packet_.append(static_cast<char>(type));
}

PacketWriter& PacketWriter::Number32(quint32 number) {
  AppendNumber(packet_, number);
  return *this;
}

PacketWriter& PacketWriter::Number64(quint64 number) {
  AppendNumber(packet_, number);
  return *this;
}

PacketWriter& PacketWriter::Bytes(QByteArrayView bytes) {
  Number32(static_cast<quint32>(bytes.size()));
  packet_.append(bytes);
  return *this;
}

PacketWriter& PacketWriter::Add(const Attributes& attributes) {
  Number32((attributes.size ? kHasSize : 0) | (attributes.owner ? kHasOwner : 0) |
           (attributes.mode ? kHasMode : 0) | (attributes.times ? kHasTimes : 0));
  if (attributes.size) {
    Number64(*attributes.size);
  }
  if (attributes.owner) {
    Number32(attributes.owner->user).Number32(attributes.owner->group);
  }
  if (attributes.mode) {
    Number32(*attributes.mode);
  }
  if (attributes.times) {
    Number32(attributes.times->accessed).Number32(attributes.times->modified);
  }
  return *this;
}

QByteArray PacketWriter::Take() {
  qToBigEndian(static_cast<quint32>(packet_.size() - qsizetype{sizeof(quint32)}), packet_.data());
  return std::move(packet_);
}

std::optional<quint8> PacketFields::Number8() noexcept {
  return TakeNumber<quint8>(rest_);
}

std::optional<quint32> PacketFields::Number32() noexcept {
  return TakeNumber<quint32>(rest_);
}

std::optional<quint64> PacketFields::Number64() noexcept {
  return TakeNumber<quint64>(rest_);
}

std::optional<QByteArrayView> PacketFields::Bytes() noexcept {
  const std::optional<quint32> length = Number32();
  if (!length || *length > static_cast<quint64>(rest_.size())) {
    return std::nullopt;
  }
  const QByteArrayView bytes = rest_.first(static_cast<qsizetype>(*length));
  rest_ = rest_.sliced(bytes.size());
  return bytes;
}

std::optional<Attributes> PacketFields::ItemAttributes() noexcept {
  const std::optional<quint32> flags = Number32();
  if (!flags || (*flags & ~kKnown) != 0) {
    return std::nullopt;
  }
  Attributes attributes;
  if ((*flags & kHasSize) != 0) {
    attributes.size = Number64();
    if (!attributes.size) {
      return std::nullopt;
    }
  }
  if ((*flags & kHasOwner) != 0) {
    const std::optional<quint32> user = Number32();
    const std::optional<quint32> group = Number32();
    if (!user || !group) {
      return std::nullopt;
    }
    attributes.owner = {*user, *group};
  }
  if ((*flags & kHasMode) != 0) {
    attributes.mode = Number32();
    if (!attributes.mode) {
      return std::nullopt;
    }
  }
  if ((*flags & kHasTimes) != 0) {
    const std::optional<quint32> accessed = Number32();
    const std::optional<quint32> modified = Number32();
    if (!accessed || !modified) {
      return std::nullopt;
    }
    attributes.times = {*accessed, *modified};
  }
  if ((*flags & kHasMore) != 0) {
    const std::optional<quint32> count = Number32();
    if (!count) {
      return std::nullopt;
    }
    for (quint32 i = 0; i < *count; ++i) {
      if (!Bytes() || !Bytes()) {
        return std::nullopt;
      }
    }
  }
  return attributes;
}

}  // namespace trevane::sftp
