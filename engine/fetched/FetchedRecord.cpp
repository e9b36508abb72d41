#include "engine/fetched/FetchedRecord.h"

#include <QList>

#include <map>

namespace trevane {

namespace {

constexpr char kTitle[] = "Trevane fetched file 1";
constexpr char kEnd[] = "End";
constexpr int kHexDigits = 4;

/// Each unit of its own: names may hold halves of characters, and line ends.
QByteArray Escaped(const QString& text) {
  QByteArray bytes;
  for (const QChar unit : text) {
    if (unit >= u' ' && unit < QChar(0x7F) && unit != u'%') {
      bytes += unit.toLatin1();
    } else {
      bytes += '%' + QByteArray::number(unit.unicode(), 16).rightJustified(kHexDigits, '0');
    }
  }
  return bytes;
}

std::optional<QString> Unescaped(const QByteArray& bytes) {
  QString text;
  for (qsizetype at = 0; at < bytes.size(); ++at) {
    if (bytes[at] != '%') {
      text += QLatin1Char(bytes[at]);
      continue;
    }
    const QByteArray digits = bytes.mid(at + 1, kHexDigits);
    bool isNumber = false;
    const ushort unit = digits.toUShort(&isNumber, 16);
    if (!isNumber || digits.size() != kHexDigits) {
      return std::nullopt;
    }
    text += QChar(unit);
    at += kHexDigits;
  }
  return text;
}

using Values = std::map<QByteArray, QByteArray>;

std::optional<Values> ValuesOf(const QByteArray& bytes) {
  QList<QByteArray> lines = bytes.split('\n');
  // Without its last line it is not all of it.
  if (lines.size() < 3 || lines.takeFirst() != kTitle || !lines.takeLast().isEmpty() ||
      lines.takeLast() != kEnd) {
    return std::nullopt;
  }
  Values values;
  for (const QByteArray& line : lines) {
    const qsizetype sign = line.indexOf('=');
    if (sign < 0) {
      return std::nullopt;
    }
    values[line.left(sign)] = line.mid(sign + 1);
  }
  return values;
}

/// All texts of a record, in the order in which they are written.
template <typename Record, typename Take>
void ForEachText(Record& record, const Take& take) {
  take("Provider", record.provider);
  take("Machine", record.machine);
  take("Option", record.option);
  take("Root", record.root);
  take("Controller", record.controller);
  take("Below", record.below);
  take("Path", record.path);
  take("Name", record.name);
}

/// Records without it are of machines that cannot be told apart.
constexpr char kServer[] = "Server";

}  // namespace

QByteArray WriteFetchedRecord(const FetchedRecord& record) {
  QByteArray bytes = QByteArray(kTitle) + '\n';
  ForEachText(record,
              [&](const char* key, const QString& text) { bytes += key + ('=' + Escaped(text)) + '\n'; });
  if (!record.server.isEmpty()) {
    bytes += kServer + ('=' + Escaped(record.server)) + '\n';
  }
  bytes += "Size=" + QByteArray::number(record.size) + '\n';
  if (record.modified.IsPresent()) {
    bytes += "Modified=" + QByteArray::number(record.modified.msecs) + '\n';
  }
  return bytes + "Hash=" + record.hash.toHex() + '\n' + kEnd + '\n';
}

std::optional<FetchedRecord> ReadFetchedRecord(const QByteArray& bytes) {
  const std::optional<Values> values = ValuesOf(bytes);
  if (!values) {
    return std::nullopt;
  }
  const auto valueOf = [&](const char* key) {
    const auto found = values->find(key);
    return found == values->end() ? std::optional<QByteArray>() : found->second;
  };
  FetchedRecord record;
  bool isWhole = true;
  ForEachText(record, [&](const char* key, QString& text) {
    const auto value = valueOf(key);
    const auto read = value ? Unescaped(*value) : std::nullopt;
    isWhole = isWhole && read;
    text = read.value_or(QString());
  });
  if (const auto server = valueOf(kServer)) {
    const auto read = Unescaped(*server);
    isWhole = isWhole && read;
    record.server = read.value_or(QString());
  }
  const auto size = valueOf("Size");
  const auto hash = valueOf("Hash");
  if (!isWhole || !size || !hash || record.name.isEmpty()) {
    return std::nullopt;
  }
  record.size = size->toLongLong(&isWhole);
  record.hash = QByteArray::fromHex(*hash);
  if (const auto modified = valueOf("Modified"); modified && isWhole) {
    record.modified.msecs = modified->toLongLong(&isWhole);
  }
  return isWhole && !record.hash.isEmpty() ? std::optional(record) : std::nullopt;
}

}  // namespace trevane
