// Runs every table of tests/data/wildcard: each row gives a text, a pattern and what is expected of the two.
// The folder is read when the program starts, so a further table needs no other change.

#include "base/Wildcard.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace trevane {
namespace {

struct TableRow {
  std::string name;
  QJsonObject object;
  /// Why the table could not be read; empty when it could.
  std::string complaint;
};

void PrintTo(const TableRow& row, std::ostream* out) {
  *out << row.name;
}

/// A valid name for a test: plain letters and digits, not too many.
std::string TestName(const QString& text) {
  constexpr qsizetype kLongest = 60;
  std::string name;
  for (const QChar unit : text.left(kLongest)) {
    const bool isPlain = unit.unicode() < 0x80 && unit.isLetterOrNumber();
    name += isPlain ? unit.toLatin1() : '_';
  }
  return name;
}

/// The rows of a table: an array, or an object with an array in it.
QJsonArray RowsOf(const QJsonDocument& document) {
  if (document.isArray()) {
    return document.array();
  }
  for (const auto& value : document.object()) {
    if (value.isArray()) {
      return value.toArray();
    }
  }
  return {};
}

std::vector<TableRow> ReadTables() {
  std::vector<TableRow> rows;
  std::set<std::string> taken;
  const auto add = [&](const std::string& name, const QJsonObject& object, std::string complaint = {}) {
    std::string unique = name;
    for (int i = 2; !taken.insert(unique).second; ++i) {
      unique = name + "_" + std::to_string(i);
    }
    rows.push_back({unique, object, std::move(complaint)});
  };
  const QDir folder(QStringLiteral(TREVANE_WILDCARD_TABLES));
  for (const QString& fileName : folder.entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name)) {
    const std::string table = TestName(QFileInfo(fileName).completeBaseName());
    QFile file(folder.filePath(fileName));
    QJsonParseError error{};
    QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    if (bytes.startsWith("\xEF\xBB\xBF")) {
      bytes.remove(0, 3);
    }
    const QJsonArray array = RowsOf(QJsonDocument::fromJson(bytes, &error));
    if (array.isEmpty()) {
      add(table, {}, fileName.toStdString() + " holds no rows: " + error.errorString().toStdString());
      continue;
    }
    int number = 0;
    for (const auto& value : array) {
      ++number;
      const QJsonObject object = value.toObject();
      QString id = QString::number(number);
      for (const QString& key : {QStringLiteral("id"), QStringLiteral("name"), QStringLiteral("case")}) {
        if (object[key].isString()) {
          id = object[key].toString();
          break;
        }
      }
      add(table + "_" + TestName(id), object);
    }
  }
  if (rows.empty()) {
    add("no_tables", {}, "no table was found in " TREVANE_WILDCARD_TABLES);
  }
  return rows;
}

class WildcardTable : public testing::TestWithParam<TableRow> {};

TEST_P(WildcardTable, Row) {
  const TableRow& row = GetParam();
  ASSERT_TRUE(row.complaint.empty()) << row.complaint;
  const QJsonValue text = row.object[u"text"];
  const QJsonValue pattern = row.object[u"pattern"];
  const QJsonValue expected = row.object[u"expected"];
  ASSERT_TRUE(text.isString()) << "a row has a \"text\"";
  ASSERT_TRUE(pattern.isString()) << "a row has a \"pattern\"";
  SCOPED_TRACE(testing::Message() << '"' << text.toString().left(200).toStdString() << "\" against \""
                                  << pattern.toString().left(200).toStdString() << '"');

  const Wildcard wildcard(pattern.toString());
  const bool matches = wildcard.Matches(text.toString());
  if (expected.isBool()) {
    EXPECT_TRUE(wildcard.IsWellFormed()) << wildcard.Problem().toStdString();
    EXPECT_EQ(matches, expected.toBool());
  } else {
    ASSERT_EQ(expected.toString().toStdString(), "error") << "expected is true, false or \"error\"";
    EXPECT_FALSE(wildcard.IsWellFormed());
    EXPECT_FALSE(wildcard.Problem().isEmpty());
    EXPECT_FALSE(matches) << "a pattern that is not well formed matches nothing";
  }
}

INSTANTIATE_TEST_SUITE_P(Tables, WildcardTable, testing::ValuesIn(ReadTables()),
                         [](const testing::TestParamInfo<TableRow>& info) { return info.param.name; });

}  // namespace
}  // namespace trevane
