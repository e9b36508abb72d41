#include "tests/engine/providers/sftp/ParseAnything.h"

#include "engine/providers/sftp/SftpAnswer.h"
#include "engine/providers/sftp/SftpStream.h"

#include <variant>

namespace trevane::sftp::test {
namespace {

struct BytesIn {
  qsizetype operator()(const StatusAnswer& answer) const { return answer.text.size(); }
  qsizetype operator()(const HandleAnswer& answer) const { return answer.handle.size(); }
  qsizetype operator()(const DataAnswer& answer) const { return answer.bytes.size(); }
  qsizetype operator()(const ExtendedAnswer& answer) const { return answer.bytes.size(); }
  qsizetype operator()(const Attributes& /*answer*/) const { return 0; }
  qsizetype operator()(const NameAnswer& answer) const {
    qsizetype bytes = 0;
    for (const NameAnswer::Name& name : answer.names) {
      bytes += name.name.size() + name.line.size();
    }
    return bytes;
  }
};

}  // namespace

qsizetype ParseAnything(const QByteArray& bytes) {
  PacketStream stream;
  qsizetype read = 0;
  // In two parts, so that a packet is cut, too.
  const qsizetype half = bytes.size() / 2;
  for (const QByteArray& part : {bytes.first(half), bytes.sliced(half)}) {
    stream.Append(part);
    while (const std::optional<QByteArrayView> packet = stream.Next()) {
      if (const std::optional<Answer> answer = ParseAnswer(*packet)) {
        read += std::visit(BytesIn(), answer->content);
      }
      if (const std::optional<VersionAnswer> version = ParseVersion(*packet)) {
        for (const auto& [name, data] : version->extensions) {
          read += name.size() + data.size();
        }
      }
    }
  }
  return read;
}

}  // namespace trevane::sftp::test
