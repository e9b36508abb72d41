// Reads every file of tests/data/ftp: what a server sends, and what is expected of it. The folder is read
// when the test runs, so a further listing needs no other change.
//
// A file begins with "key: value" lines: read (list or facts), now and zone of the server (UTC, minutes), end
// (of lines: CRLF, LF, CRCRLF or CR) and last (open: without an end). "== sent" and "== expected" follow.
// "\xNN" is a byte. An item is expected as kind | size | date in UTC, as exact as it is told | mode | owner |
// group | "name", and | "target" of a link, | read-only, | unique=...
#include "engine/providers/ftp/ListParser.h"
#include "tests/support/TestFiles.h"

#include <QByteArrayList>
#include <QDateTime>
#include <QDir>
#include <QHash>

#include <gtest/gtest.h>

#include <array>

namespace trevane::ftp::test {
namespace {

struct Listing {
  QHash<QByteArray, QByteArray> keys;
  QByteArrayList sent;
  QByteArrayList expected;
};

QByteArray WithBytes(const QByteArray& text) {
  QByteArray result;
  result.reserve(text.size());
  qsizetype at = 0;
  while (at < text.size()) {
    if (text.sliced(at).startsWith("\\x")) {
      result += QByteArray::fromHex(text.sliced(at + 2, 2));
      at += 4;
    } else {
      result += text[at];
      ++at;
    }
  }
  return result;
}

Listing ReadTable(const QByteArray& content) {
  Listing listing;
  QByteArrayList* lines = nullptr;
  QByteArrayList all = content.split('\n');
  if (all.last().isEmpty()) {
    all.removeLast();
  }
  for (const QByteArray& raw : all) {
    // A checkout may end lines in another way.
    const QByteArray line = raw.endsWith('\r') ? raw.chopped(1) : raw;
    if (line == "== sent") {
      lines = &listing.sent;
    } else if (line == "== expected") {
      lines = &listing.expected;
    } else if (lines != nullptr) {
      lines->append(WithBytes(line));
    } else if (!line.startsWith('#')) {
      const qsizetype colon = line.indexOf(':');
      EXPECT_GT(colon, 0) << line.toStdString();
      listing.keys.insert(line.first(colon), line.sliced(colon + 1).trimmed());
    }
  }
  return listing;
}

QByteArray BytesOf(const Listing& listing) {
  const QByteArray end =
      QByteArray(listing.keys.value("end", "CRLF")).replace("CR", "\r").replace("LF", "\n");
  const QByteArray bytes = listing.sent.join(end);
  return listing.keys.value("last") == "open" || listing.sent.isEmpty() ? bytes : bytes + end;
}

QByteArray DateText(const ListedItem& item) {
  constexpr std::array<const char16_t*, 5> kFormats{u"", u"yyyy-MM-dd", u"yyyy-MM-dd HH:mm",
                                                    u"yyyy-MM-dd HH:mm:ss", u"yyyy-MM-dd HH:mm:ss.zzz"};
  if (!item.modified.IsPresent()) {
    return item.step == DateStep::None ? "-" : "no date, but a step";
  }
  const QDateTime date = QDateTime::fromMSecsSinceEpoch(item.modified.msecs, Qt::UTC);
  const QString format = QString::fromUtf16(kFormats[static_cast<size_t>(item.step)]);
  const QString text = date.toString(format);
  // Nothing of the date is left out, but for a day that begins at noon of UTC's.
  const bool isWhole =
      item.step == DateStep::Day || QDateTime::fromString(text, format).time() == date.time();
  return isWhole ? text.toLatin1() : QByteArray("more than its step");
}

QByteArray TextOf(const ListedItem& item) {
  constexpr std::array<const char*, 4> kKinds{"file", "folder", "link", "device"};
  QByteArrayList fields{kKinds[static_cast<size_t>(item.kind)],
                        item.size < 0 ? QByteArray("-") : QByteArray::number(item.size),
                        DateText(item),
                        item.mode ? QByteArray::number(*item.mode, 8) : QByteArray("-"),
                        item.owner.isEmpty() ? QByteArray("-") : item.owner,
                        item.group.isEmpty() ? QByteArray("-") : item.group,
                        '"' + item.name + '"'};
  if (!item.target.isEmpty()) {
    fields.append('"' + item.target + '"');
  }
  if (item.isReadOnly) {
    fields.append("read-only");
  }
  if (!item.unique.isEmpty()) {
    fields.append("unique=" + item.unique);
  }
  return fields.join(" | ");
}

QByteArray TextOf(const ParsedListing& listing) {
  QByteArrayList lines;
  lines.reserve(static_cast<qsizetype>(listing.items.size()) + 1);
  for (const ListedItem& item : listing.items) {
    lines.append(TextOf(item));
  }
  if (listing.unreadable > 0) {
    lines.append("unreadable | " + QByteArray::number(listing.unreadable));
  }
  return lines.join('\n');
}

ParsedListing Parse(const Listing& listing) {
  if (listing.keys.value("read") == "facts") {
    return ParseFacts(BytesOf(listing));
  }
  EXPECT_EQ(listing.keys.value("read"), "list");
  QDateTime now = QDateTime::fromString(QString::fromLatin1(listing.keys.value("now")),
                                        QStringLiteral("yyyy-MM-dd HH:mm"));
  now.setTimeSpec(Qt::UTC);
  EXPECT_TRUE(now.isValid());
  return ParseList(BytesOf(listing),
                   {.now = now.toMSecsSinceEpoch(), .zone = listing.keys.value("zone", "0").toInt()});
}

TEST(ListingTableTest, EveryListingIsReadAsExpected) {
  const QDir folder(QStringLiteral(TREVANE_FTP_LISTINGS));
  const QStringList files = folder.entryList({QStringLiteral("*.listing")}, QDir::Files, QDir::Name);
  EXPECT_GE(files.size(), 60);
  for (const QString& file : files) {
    const Listing listing = ReadTable(trevane::test::ContentOf(folder.filePath(file)));
    EXPECT_EQ(TextOf(Parse(listing)).toStdString(), listing.expected.join('\n').toStdString())
        << file.toStdString();
  }
}

}  // namespace
}  // namespace trevane::ftp::test
