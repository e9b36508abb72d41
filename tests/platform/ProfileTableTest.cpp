// Runs every table of tests/data/profile: each case lays down a file, makes calls on it and compares answers
// and the bytes afterwards. Then the same is done in memory. The folder is read when the program starts, so a
// further table needs no other change.

#include "app/settings/clsProfile.h"
#include "platform/OwnFile.h"
#include "platform/PrivateProfile.h"
#include "platform/ProfileText.h"
#include "tests/support/Wine.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace trevane {
namespace {

// The size that a profile store gives for its buffer.
constexpr int kBufferSize = 199999;

struct TableCase {
  std::string name;
  QJsonObject object;
  /// Why the table could not be read; empty when it could.
  std::string complaint;
};

void PrintTo(const TableCase& table, std::ostream* out) {
  *out << table.name;
}

std::string TestName(const QString& text) {
  std::string name;
  for (const QChar unit : text) {
    const bool isPlain = unit.unicode() < 0x80 && unit.isLetterOrNumber();
    name += isPlain ? unit.toLatin1() : '_';
  }
  return name;
}

std::vector<TableCase> ReadTables() {
  std::vector<TableCase> cases;
  std::set<std::string> taken;
  const auto add = [&](const std::string& name, const QJsonObject& object,
                       const std::string& complaint = {}) {
    std::string unique = name;
    for (int i = 2; !taken.insert(unique).second; ++i) {
      unique = name + "_" + std::to_string(i);
    }
    cases.push_back({unique, object, complaint});
  };
  const QDir folder(QStringLiteral(TREVANE_PROFILE_TABLES));
  for (const QString& fileName : folder.entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name)) {
    const std::string table = TestName(QFileInfo(fileName).completeBaseName());
    QFile file(folder.filePath(fileName));
    QJsonParseError error;
    const QJsonDocument document =
        file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll(), &error) : QJsonDocument();
    if (!document.isArray()) {
      add(table, {}, fileName.toStdString() + " holds no array: " + error.errorString().toStdString());
      continue;
    }
    int number = 0;
    for (const auto& value : document.array()) {
      ++number;
      const QJsonObject object = value.toObject();
      const QString id = object[u"id"].isString() ? object[u"id"].toString() : QString::number(number);
      add(table + "_" + TestName(id), object);
    }
  }
  if (cases.empty()) {
    add("no_tables", {}, "no table was found in " TREVANE_PROFILE_TABLES);
  }
  return cases;
}

// In what a case is known to differ.
struct Difference {
  /// The result of the case there, in the form of ProfileTable::Observed.
  QJsonObject gives;
  QString reason;
};

// The cases, by name, in which the system below is known to differ from what is described. Wine, which
// replaces Windows in these tests, has a list of its own; there is none for Linux.
const std::map<std::string, Difference>& KnownDifferences() {
  static const std::map<std::string, Difference> differences = [] {
    std::map<std::string, Difference> rows;
    QStringList names;
#ifdef Q_OS_WIN
    // Cases that our Windows code decides itself, whatever the system would do.
    names += QStringLiteral("profile-windows.json");
#endif
    if (test::RunsUnderWine()) {
      names += QStringLiteral("profile-wine8.json");
    }
    for (const QString& name : names) {
      QFile file(QDir(QStringLiteral(TREVANE_PROFILE_DIFFERENCES)).filePath(name));
      if (!file.open(QIODevice::ReadOnly)) {
        ADD_FAILURE() << name.toStdString() << " cannot be read";
        continue;
      }
      for (const auto& row : QJsonDocument::fromJson(file.readAll()).array()) {
        rows.emplace(row[u"case"].toString().toStdString(),
                     Difference{row[u"gives"].toObject(), row[u"reason"].toString()});
      }
    }
    return rows;
  }();
  return differences;
}

// Null and absent both mean a null pointer.
QString Argument(const QJsonObject& step, QStringView name) {
  const QJsonValue value = step[name];
  if (value.isDouble()) {
    return QString::number(qint64(value.toDouble()));
  }
  if (!value.isString()) {
    return {};
  }
  const QString text = value.toString();
  return text.isNull() ? QStringLiteral("") : text;
}

// For messages: what is not plain ASCII is escaped.
std::string Readable(const QString& text) {
  std::string readable;
  for (const QChar unit : text) {
    if (unit.unicode() >= 0x20 && unit.unicode() < 0x7F) {
      readable += unit.toLatin1();
    } else {
      readable += "\\u" + QString::number(unit.unicode(), 16).rightJustified(4, u'0').toStdString();
    }
  }
  return readable;
}

QStringList Names(const QString& list) {
  QStringList names = list.split(QChar(u'\0'));
  if (names.last().isEmpty()) {
    names.removeLast();
  }
  return names;
}

// Compares the whole of both; a message shows where they part, and not all of texts that may be long.
testing::AssertionResult AreSame(const QString& answer, const QString& expected) {
  if (answer == expected) {
    return testing::AssertionSuccess();
  }
  constexpr qsizetype kBefore = 40;
  constexpr qsizetype kShown = 500;
  qsizetype at = 0;
  while (at < answer.size() && at < expected.size() && answer[at] == expected[at]) {
    ++at;
  }
  const qsizetype from = std::max<qsizetype>(at - kBefore, 0);
  return testing::AssertionFailure() << "they differ at " << at << ", shown from " << from
                                     << "\n  given:    (" << answer.size() << ") "
                                     << Readable(answer.mid(from, kShown)) << "\n  expected: ("
                                     << expected.size() << ") " << Readable(expected.mid(from, kShown));
}

testing::AssertionResult AreSame(const QStringList& names, const QStringList& expected) {
  return AreSame(names.join(u"|"), expected.join(u"|"));
}

std::string Compact(const QJsonObject& object) {
  return QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}

class ProfileTable : public testing::TestWithParam<TableCase> {
 protected:
  void SetUp() override {
    ASSERT_TRUE(folder_.isValid());
    fileName_ = folder_.filePath(QStringLiteral("table.ini"));
  }

  void RunCase();

  // The store that the steps work on: the file, or the text of the file held in memory.
  [[nodiscard]] QString Get(const QString& section, const QString& key, const QString& fallback) const {
    return held_ ? held_->GetString(section, key, fallback, kBufferSize)
                 : privateprofile::GetString(section, key, fallback, kBufferSize, fileName_);
  }
  [[nodiscard]] quint32 GetInt(const QString& section, const QString& key, qint32 fallback) const {
    return held_ ? held_->GetInt(section, key, fallback)
                 : privateprofile::GetInt(section, key, fallback, fileName_);
  }
  bool Put(const QString& section, const QString& key, const QString& value) {
    if (!held_) {
      return privateprofile::WriteString(section, key, value, fileName_);
    }
    // A flush alone, of which memory knows nothing.
    if (section.isNull()) {
      return false;
    }
    held_->WriteString(section, key, value);
    return true;
  }

  /// The result of the case: "answers", an entry for each step, and "after", the bytes of the file (null when
  /// there is none).
  [[nodiscard]] QJsonObject Observed() const {
    QFile file(fileName_);
    const bool isThere = file.open(QIODevice::ReadOnly);
    return {
        {QStringLiteral("answers"), answers_},
        {QStringLiteral("after"), isThere ? QJsonValue(QString::fromLatin1(file.readAll())) : QJsonValue()}};
  }

  void RunStep(const QJsonObject& step) {
    const QString op = step[u"op"].toString();
    const QJsonValue expect = step[u"expect"];
    const QString section = Argument(step, u"section");
    const QString key = Argument(step, u"key");
    if (op == u"get") {
      RunGet(section, key, Argument(step, u"default"), expect);
    } else if (op == u"int") {
      const auto fallback = static_cast<qint32>(static_cast<quint32>(step[u"default"].toInteger()));
      const quint32 answer = GetInt(section, key, fallback);
      EXPECT_TRUE(expect.isDouble()) << "a number is expected to be compared";
      answers_ += qint64(answer);
      EXPECT_EQ(answer, static_cast<quint32>(expect.toInteger()));
    } else if (op == u"sections") {
      QStringList expected;
      for (const auto& name : expect.toArray()) {
        expected += name.toString();
      }
      EXPECT_TRUE(expect.isArray());
      const QString names = clsProfile::CutText(Get({}, {}, {}), -1);
      const QStringList answer =
          clsProfile::NamesInUse(names.isEmpty() ? QStringList() : names.split(QChar(u'\0')));
      answers_ += QJsonArray::fromStringList(answer);
      EXPECT_TRUE(AreSame(answer, expected));
    } else if (op == u"put") {
      const bool answer = Put(section, key, Argument(step, u"value"));
      answers_ += answer;
      if (!expect.isUndefined() && !expect.isNull()) {
        EXPECT_EQ(answer, expect.isDouble() ? expect.toInteger() != 0 : expect.toBool());
      }
    } else {
      ADD_FAILURE() << "unknown op \"" << op.toStdString() << '"';
    }
  }

 private:
  void RunGet(const QString& section, const QString& key, const QString& fallback, const QJsonValue& expect) {
    if (!section.isNull() && !key.isNull()) {
      const QString answer = clsProfile::CutText(Get(section, key, fallback), 0);
      answers_ += answer;
      EXPECT_TRUE(expect.isString());
      EXPECT_TRUE(AreSame(answer, expect.toString()));
      return;
    }
    const QString list = Get(section, key, fallback);
    answers_ += list;
    if (expect.isArray()) {
      QStringList expected;
      for (const auto& name : expect.toArray()) {
        expected += name.toString();
      }
      EXPECT_TRUE(AreSame(Names(list), expected));
      return;
    }
    EXPECT_TRUE(expect.isString());
    const QString expected = expect.toString();
    // The first name of a list only, unless the case gives the whole list.
    const QString answer = expected.contains(QChar(u'\0')) ? list : clsProfile::CutText(list, 0);
    EXPECT_TRUE(AreSame(answer, expected));
  }

 protected:
  QTemporaryDir folder_;
  QString fileName_;
  QJsonArray answers_;
  /// The steps are made on the text of the file, which is read once and written once.
  bool isHeld_ = false;
  std::optional<ProfileText> held_;
};

void ProfileTable::RunCase() {
  const TableCase& table = GetParam();
  ASSERT_TRUE(table.complaint.empty()) << table.complaint;
  const QJsonObject& object = table.object;
  if (object[u"file"].isString()) {
    QFile file(fileName_);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const QByteArray bytes = object[u"file"].toString().toLatin1();
    ASSERT_EQ(file.write(bytes), bytes.size());
  }
  if (isHeld_) {
    held_.emplace(ownfile::Read(fileName_).bytes);
  }
  ASSERT_TRUE(object[u"steps"].isArray());
  int number = 0;
  for (const auto& step : object[u"steps"].toArray()) {
    ++number;
    SCOPED_TRACE("step " + std::to_string(number) + ": " +
                 QJsonDocument(step.toObject()).toJson(QJsonDocument::Compact).left(300).toStdString());
    RunStep(step.toObject());
  }
  if (object.contains(u"after")) {
    if (held_ && object[u"after"].isString()) {
      ASSERT_TRUE(ownfile::Replace(fileName_, held_->Bytes()));
    }
    QFile file(fileName_);
    if (!object[u"after"].isString()) {
      EXPECT_FALSE(file.exists()) << "no file is expected";
    } else {
      ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << "a file is expected";
      EXPECT_TRUE(AreSame(QString::fromLatin1(file.readAll()), object[u"after"].toString()));
    }
  }
  const QStringList left =
      QDir(folder_.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
  EXPECT_LE(left.size(), 1) << "a temporary file was left: " << left.join(u" ").toStdString();
}

TEST_P(ProfileTable, AnswersAndBytes) {
  const auto difference = KnownDifferences().find(GetParam().name);
  if (difference == KnownDifferences().end()) {
    RunCase();
    return;
  }
  testing::TestPartResultArray results;
  {
    const testing::ScopedFakeTestPartResultReporter reporter(
        testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
    RunCase();
  }
  int failures = 0;
  for (int i = 0; i < results.size(); ++i) {
    failures += results.GetTestPartResult(i).failed() ? 1 : 0;
  }
  EXPECT_GT(failures, 0) << "no longer differs; it was listed for: "
                         << difference->second.reason.toStdString();
  // A row that differs must still give the listed result.
  EXPECT_EQ(Compact(Observed()), Compact(difference->second.gives));
}

TEST_P(ProfileTable, AnswersAndBytesOfTheTextInMemory) {
  isHeld_ = true;
  RunCase();
}

TEST(ProfileTables, DifferencesFarBehindInALongTextAreFound) {
  const QString text(10000, u'x');
  EXPECT_TRUE(AreSame(text, text));
  QString other = text;
  other[9000] = u'y';
  const testing::AssertionResult result = AreSame(text, other);
  EXPECT_FALSE(result);
  EXPECT_THAT(result.message(), testing::HasSubstr("they differ at 9000"));
  EXPECT_LT(std::string(result.message()).size(), 2000U);
  EXPECT_FALSE(AreSame(text, text + u'x'));
  EXPECT_FALSE(AreSame(QStringList{text, QStringLiteral("a")}, QStringList{text, QStringLiteral("b")}));
}

TEST(ProfileTables, EveryKnownDifferenceNamesACaseAndAReason) {
  std::set<std::string> cases;
  for (const TableCase& table : ReadTables()) {
    cases.insert(table.name);
  }
  for (const auto& [name, difference] : KnownDifferences()) {
    EXPECT_TRUE(cases.count(name)) << name;
    EXPECT_FALSE(difference.reason.isEmpty()) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(Tables, ProfileTable, testing::ValuesIn(ReadTables()),
                         [](const testing::TestParamInfo<TableCase>& info) { return info.param.name; });

}  // namespace
}  // namespace trevane
