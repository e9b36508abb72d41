#include "tests/engine/providers/sftp/OddServer.h"

#include "engine/files/ProviderError.h"
#include "engine/providers/sftp/SftpAnswer.h"

#include <algorithm>

namespace trevane::test {

using sftp::Attributes;
using sftp::PacketFields;
using sftp::PacketType;
using sftp::PacketWriter;

QByteArray OddServer::Status(quint32 id, quint32 code, const QByteArray& text) {
  return PacketWriter(PacketType::Status, id).Number32(code).Bytes(text).Bytes("").Take();
}

QByteArray OddServer::Item(quint32 id, quint32 mode, quint64 size) {
  return PacketWriter(PacketType::Attrs, id)
      .Add({.size = size, .mode = mode, .times = Attributes::Times{1, 2}})
      .Take();
}

QByteArray OddServer::Names(quint32 id, const QList<QByteArray>& names) {
  PacketWriter writer(PacketType::Name, id);
  writer.Number32(static_cast<quint32>(names.size()));
  for (const QByteArray& name : names) {
    writer.Bytes(name).Bytes("").Add({.size = 1U, .mode = 0100644U, .times = Attributes::Times{1, 2}});
  }
  return writer.Take();
}

QByteArray OddServer::TextOf(const QByteArray& request) {
  PacketFields fields(request);
  static_cast<void>(fields.Number8());
  static_cast<void>(fields.Number32());
  return fields.Bytes().value_or(QByteArrayView()).toByteArray();
}

OddServer::Packets OddChannel::Usual(PacketType type, quint32 id, const QByteArray& request) {
  constexpr quint32 kFolder = 0040755;
  constexpr quint32 kFile = 0100644;
  const bool isFile = OddServer::TextOf(request).startsWith("/f");
  switch (type) {
    case PacketType::Init:
      return {PacketWriter(PacketType::Version).Number32(3).Take()};
    case PacketType::RealPath: {
      const QByteArray path = OddServer::TextOf(request);
      return {OddServer::Names(id, {path.startsWith('/') ? path : QByteArray("/")})};
    }
    case PacketType::Stat:
    case PacketType::Lstat:
      return {OddServer::Item(id, isFile ? kFile : kFolder, isFile ? 10 : 0)};
    case PacketType::Open:
    case PacketType::OpenDir:
      return {PacketWriter(PacketType::Handle, id).Bytes("handle").Take()};
    case PacketType::ReadDir:
    case PacketType::Read:
      return {OddServer::Status(id, sftp::status::kEnd)};
    default:
      return {OddServer::Status(id, sftp::status::kOk)};
  }
}

void OddChannel::Take(QByteArray& unsent) {
  stream_.Append(std::exchange(unsent, {}));
  OddServer::Packets all;
  while (const std::optional<QByteArrayView> packet = stream_.Next()) {
    const QByteArray request = packet->toByteArray();
    PacketFields fields(request);
    const auto type = static_cast<PacketType>(fields.Number8().value_or(0));
    const quint32 id = fields.Number32().value_or(0);
    ++server_.requests[type];
    std::optional<OddServer::Packets> answers;
    if (server_.answer) {
      answers = server_.answer(type, id, request);
    }
    for (const QByteArray& answer : answers ? *answers : Usual(type, id, request)) {
      all.push_back(answer);
    }
  }
  if (server_.turnsRound) {
    std::reverse(all.begin(), all.end());
  }
  for (const QByteArray& answer : all) {
    toClient_ += answer;
  }
}

QByteArray OddChannel::Give() {
  const qsizetype step = server_.step > 0 ? std::min(server_.step, toClient_.size()) : toClient_.size();
  const QByteArray bytes = toClient_.first(step);
  toClient_.remove(0, step);
  return bytes;
}

QByteArray OddChannel::Poll(QByteArray& unsent) {
  Take(unsent);
  return {};
}

QByteArray OddChannel::Exchange(QByteArray& unsent) {
  Take(unsent);
  if (std::exchange(server_.cancels, false)) {
    throw ProviderError(error::kCancelled, {});
  }
  if (toClient_.isEmpty()) {
    throw ProviderError(error::kTimeOut, {});
  }
  return Give();
}

}  // namespace trevane::test
