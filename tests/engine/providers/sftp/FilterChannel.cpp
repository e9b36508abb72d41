#include "tests/engine/providers/sftp/FilterChannel.h"

#include <QtEndian>

#include <optional>

namespace trevane::test {

using sftp::PacketFields;
using sftp::PacketType;
using sftp::PacketWriter;

namespace {

void AppendPacket(QByteArray& stream, const QByteArray& packet) {
  const quint32 length = qToBigEndian(static_cast<quint32>(packet.size()));
  stream.append(reinterpret_cast<const char*>(&length), sizeof(length));
  stream.append(packet);
}

}  // namespace

quint32 FilterChannel::IdOf(const Packet& packet) {
  PacketFields fields(packet);
  static_cast<void>(fields.Number8());
  return fields.Number32().value_or(0);
}

FilterChannel::Packet FilterChannel::StatusOf(quint32 id, quint32 code, const QByteArray& text) {
  return PacketWriter(PacketType::Status, id).Number32(code).Bytes(text).Bytes("").Take().sliced(4);
}

void FilterChannel::Answer(const Packet& packet) {
  AppendPacket(toClient_, packet);
}

void FilterChannel::TakeRequests(QByteArray& unsent) {
  requests_.Append(std::exchange(unsent, {}));
  while (const std::optional<QByteArrayView> packet = requests_.Next()) {
    const Packet changed = OnRequest(packet->toByteArray());
    if (!changed.isEmpty()) {
      AppendPacket(toServer_, changed);
    }
  }
}

void FilterChannel::TakeAnswers(const QByteArray& bytes) {
  answers_.Append(bytes);
  while (const std::optional<QByteArrayView> packet = answers_.Next()) {
    const Packet changed = OnAnswer(packet->toByteArray());
    if (!changed.isEmpty()) {
      Answer(changed);
    }
  }
}

QByteArray FilterChannel::Poll(QByteArray& unsent) {
  RequireLine();
  TakeRequests(unsent);
  TakeAnswers(inner_->Poll(toServer_));
  return std::exchange(toClient_, {});
}

QByteArray FilterChannel::Exchange(QByteArray& unsent) {
  RequireLine();
  TakeRequests(unsent);
  while (toClient_.isEmpty()) {
    RequireLine();
    TakeAnswers(inner_->Exchange(toServer_));
  }
  return std::exchange(toClient_, {});
}

FilterChannel::Packet OldServerChannel::OnRequest(Packet packet) {
  if (TypeOf(packet) != PacketType::Rename || !server_.renameReplaces) {
    return packet;
  }
  return PacketWriter(PacketType::Extended, IdOf(packet)).Bytes("posix-rename@openssh.com").Take().sliced(4) +
         packet.sliced(5);
}

FilterChannel::Packet OldServerChannel::OnAnswer(Packet packet) {
  return TypeOf(packet) == PacketType::Version ? packet.first(5) : packet;
}

}  // namespace trevane::test
