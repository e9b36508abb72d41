#include "engine/providers/sftp/SftpAnswer.h"

namespace trevane::sftp {
namespace {

/// Name, line and attributes: each begins with four bytes.
constexpr qsizetype kSmallestName = 12;

std::optional<StatusAnswer> ParseStatus(PacketFields& fields) {
  const std::optional<quint32> code = fields.Number32();
  if (!code) {
    return std::nullopt;
  }
  // Servers of early drafts send no text, and the language behind it is of no use.
  const std::optional<QByteArrayView> text = fields.Bytes();
  return StatusAnswer{*code, text ? text->toByteArray() : QByteArray()};
}

std::optional<NameAnswer> ParseNames(PacketFields& fields) {
  const std::optional<quint32> count = fields.Number32();
  if (!count || *count > static_cast<quint64>(fields.Left() / kSmallestName)) {
    return std::nullopt;
  }
  NameAnswer answer;
  answer.names.reserve(*count);
  for (quint32 i = 0; i < *count; ++i) {
    const std::optional<QByteArrayView> name = fields.Bytes();
    const std::optional<QByteArrayView> line = fields.Bytes();
    const std::optional<Attributes> attributes = fields.ItemAttributes();
    if (!name || !line || !attributes) {
      return std::nullopt;
    }
    answer.names.push_back({name->toByteArray(), line->toByteArray(), *attributes});
  }
  return answer;
}

template <class Content>
std::optional<Answer> AnswerOf(quint32 id, std::optional<Content> content) {
  if (!content) {
    return std::nullopt;
  }
  return Answer{id, *std::move(content)};
}

template <class Content>
std::optional<Content> ParseBytes(PacketFields& fields) {
  const std::optional<QByteArrayView> bytes = fields.Bytes();
  return bytes ? std::optional(Content{bytes->toByteArray()}) : std::nullopt;
}

}  // namespace

std::optional<Answer> ParseAnswer(QByteArrayView packet) {
  PacketFields fields(packet);
  const std::optional<quint8> type = fields.Number8();
  const std::optional<quint32> id = fields.Number32();
  if (!type || !id) {
    return std::nullopt;
  }
  switch (static_cast<PacketType>(*type)) {
    case PacketType::Status:
      return AnswerOf(*id, ParseStatus(fields));
    case PacketType::Handle:
      return AnswerOf(*id, ParseBytes<HandleAnswer>(fields));
    case PacketType::Data:
      return AnswerOf(*id, ParseBytes<DataAnswer>(fields));
    case PacketType::Name:
      return AnswerOf(*id, ParseNames(fields));
    case PacketType::Attrs:
      return AnswerOf(*id, fields.ItemAttributes());
    case PacketType::ExtendedReply:
      return Answer{*id, ExtendedAnswer{packet.last(fields.Left()).toByteArray()}};
    default:
      return std::nullopt;
  }
}

std::optional<VersionAnswer> ParseVersion(QByteArrayView packet) {
  PacketFields fields(packet);
  const std::optional<quint8> type = fields.Number8();
  const std::optional<quint32> version = fields.Number32();
  if (!type || static_cast<PacketType>(*type) != PacketType::Version || !version) {
    return std::nullopt;
  }
  VersionAnswer answer{.version = *version};
  while (!fields.IsAtEnd()) {
    const std::optional<QByteArrayView> name = fields.Bytes();
    const std::optional<QByteArrayView> data = fields.Bytes();
    if (!name || !data) {
      return std::nullopt;
    }
    answer.extensions.emplace_back(name->toByteArray(), data->toByteArray());
  }
  return answer;
}

}  // namespace trevane::sftp
