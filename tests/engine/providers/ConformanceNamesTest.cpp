#include "engine/files/WholeFile.h"
#include "tests/engine/providers/ProviderBed.h"

#include <algorithm>

namespace trevane::test {
namespace {

class ConformanceNames : public ConformanceTest {
 protected:
  [[nodiscard]] std::vector<std::pair<const char*, QString>> HostileNames() {
    std::vector<std::pair<const char*, QString>> names = {
        {"a blank", QStringLiteral(" ")},
        {"blanks inside", QStringLiteral("a  b c")},
        {"leading and trailing blanks", QStringLiteral("  name  ")},
        {"trailing dots", QStringLiteral("name...")},
        {"three dots", QStringLiteral("...")},
        {"leading dot", QStringLiteral(".name")},
        {"dash", QStringLiteral("-rf")},
        {"quotes", QStringLiteral("it's \"quoted\"")},
        {"percent", QStringLiteral("100%41%s%n")},
        {"wildcards", QStringLiteral("*?[a].{b}")},
        {"shell characters", QStringLiteral("$(x);&|<>`~!#")},
        {"comma and equals", QStringLiteral("Path=a,@Create=2")},
        {"line end", QStringLiteral("two\nlines")},
        {"accents composed", QString::fromUtf8("caf\xC3\xA9")},
        {"accents decomposed", QString::fromUtf8("cafe\xCC\x81")},
        {"cjk", QString::fromUtf8("\xE6\xBC\xA2\xE5\xAD\x97.txt")},
        {"emoji", QString::fromUtf8("\xF0\x9F\x98\x80 smile")},
        {"right to left", QString::fromUtf8("\xD7\xA9\xD7\x9C\xE2\x80\xAE.txt")},
        {"255 letters", QString(255, u'n')},
        {"255 bytes of two each", QString(127, QChar(0xE9)) + u'x'},
        {"a device of another system", QStringLiteral("CON")},
        {"a drive inside", QStringLiteral("C:")},
        {"digits", QStringLiteral("3")},
        {"what is built", QStringLiteral(".trevane-abcdef.tmp")},
    };
    std::erase_if(names, [this](const auto& row) { return !Bed().HoldsName(row.second); });
    if (Bed().RefusesNamesOfWindows()) {
      const auto isRefused = [](const std::pair<const char*, QString>& row) {
        const QString& name = row.second;
        constexpr QStringView kReserved = u"<>:\"|?*\n";
        return name == u"CON" || name.endsWith(u' ') || name.endsWith(u'.') ||
               std::any_of(name.begin(), name.end(), [&](QChar unit) { return kReserved.contains(unit); });
      };
      std::erase_if(names, isRefused);
    }
    if (Bed().HoldsAnyBytes()) {
      names.emplace_back("not valid text", QString(QChar(0xDCFF)) + QStringLiteral("bytes") + QChar(0xDC80));
      names.emplace_back("255 bytes that are no text", QString(255, QChar(0xDCFE)));
      names.emplace_back("a backslash", QStringLiteral("a") + QChar(0xF05C) + u'b');
      names.emplace_back("what carries a backslash", QString(QChar(0xDCEF)) + QChar(0xDC81) + QChar(0xDC9C));
    }
    return names;
  }
};
INSTANTIATE_TEST_SUITE_P(All, ConformanceNames, ::testing::ValuesIn(AllProviders()), NameOfCase);

TEST_P(ConformanceNames, EveryNameCanBeMadeListedReadCopiedMovedAndRemoved) {
  for (const auto& [label, name] : HostileNames()) {
    SCOPED_TRACE(label);
    const QString path = At(name);
    WriteFile(Files(), path, label);
    EXPECT_EQ(NamesIn(Bed().Base()), QStringList{name});
    EXPECT_EQ(Files().Stat(path).name, name);
    EXPECT_EQ(ReadFile(Files(), path), QByteArray(label));
    Files().Copy(path, At(QStringLiteral("copy")), false);
    EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("copy"))), QByteArray(label));
    Files().Remove(path);
    if (Bed().Renames()) {
      Files().Rename(At(QStringLiteral("copy")), path, false);
      EXPECT_EQ(NamesIn(Bed().Base()), QStringList{name});
      Files().Remove(path);
    } else {
      Files().Remove(At(QStringLiteral("copy")));
    }
    EXPECT_TRUE(NamesIn(Bed().Base()).isEmpty());
  }
}

TEST_P(ConformanceNames, EveryNameCanBeAFolderWithSomethingInIt) {
  for (const auto& [label, name] : HostileNames()) {
    SCOPED_TRACE(label);
    const QString path = At(name);
    Files().CreateFolder(path);
    WriteFile(Files(), path + u'\\' + name, label);
    EXPECT_EQ(NamesIn(path), QStringList{name});
    Files().Copy(path, At(QStringLiteral("copy")), false);
    EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("copy\\")) + name), QByteArray(label));
    Files().Remove(At(QStringLiteral("copy")));
    Files().Remove(path);
    EXPECT_TRUE(NamesIn(Bed().Base()).isEmpty());
  }
}

TEST_P(ConformanceNames, AllNamesCanBeInOneFolder) {
  QStringList names;
  for (const auto& [label, name] : HostileNames()) {
    Files().CreateFile(At(name));
    names.append(name);
  }
  names.sort();
  EXPECT_EQ(NamesIn(Bed().Base()), names);
}

TEST_P(ConformanceNames, PathsTakeBothSeparatorsAnyInFrontAndOneBehind) {
  Files().CreateFolder(At(QStringLiteral("d")));
  WriteFile(Files(), At(QStringLiteral("d\\f")), "x");
  const QString plain = At(QStringLiteral("d\\f"));
  QString slashes = plain;
  slashes.replace(u'\\', u'/');
  for (const QString& path : {slashes, u'\\' + plain, u'/' + slashes, QStringLiteral("/\\") + plain,
                              plain + u'\\', slashes + u'/'}) {
    EXPECT_EQ(ReadFile(Files(), path), QByteArray("x")) << path.toStdString();
  }
}

TEST_P(ConformanceNames, AnEmptyNameInsideAPathIsNoName) {
  Files().CreateFolder(At(QStringLiteral("d")));
  WriteFile(Files(), At(QStringLiteral("d\\f")), "x");
  for (const QString& path : {At(QStringLiteral("d\\\\f")), At(QStringLiteral("d//f")),
                              At(QStringLiteral("d/\\f")), At(QStringLiteral("d\\f\\\\"))}) {
    EXPECT_EQ(ErrorOf([&] { (void)ReadFile(Files(), path); }), error::kInvalidName) << path.toStdString();
    EXPECT_EQ(ErrorOf([&] { Files().Remove(path); }), error::kInvalidName) << path.toStdString();
  }
  EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("d\\f"))), QByteArray("x"));
}

TEST_P(ConformanceNames, APathWithoutADriveStartsAtTheFirstOne) {
  if (!Files().Capabilities().topHoldsDrives) {
    GTEST_SKIP() << "no drives here";
  }
  WriteFile(Files(), At(QStringLiteral("f")), "x");
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("/base/f")), QByteArray("x"));
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("base\\f")), QByteArray("x"));
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("c:\\base\\f")), QByteArray("x"));
  EXPECT_EQ(ErrorOf([&] { (void)ReadFile(Files(), QStringLiteral("D:\\base\\f")); }), error::kNotFound);
}

TEST_P(ConformanceNames, CaseDecidesWhetherTwoNamesAreOne) {
  WriteFile(Files(), At(QStringLiteral("Name")), "x");
  if (Files().Capabilities().caseSensitive) {
    EXPECT_FALSE(IsThere(At(QStringLiteral("name"))));
    WriteFile(Files(), At(QStringLiteral("name")), "y");
    EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("Name"))), QByteArray("x"));
    EXPECT_EQ(NamesIn(Bed().Base()).size(), 2);
  } else {
    EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("nAME"))), QByteArray("x"));
    EXPECT_EQ(ErrorOf([&] { Files().CreateFolder(At(QStringLiteral("NAME"))); }), error::kExists);
    EXPECT_EQ(NamesIn(Bed().Base()), QStringList{QStringLiteral("Name")});
  }
}

TEST_P(ConformanceNames, AChangeOfCaseOnlyIsNoClash) {
  if (!Bed().Renames()) {
    GTEST_SKIP() << "nothing is renamed here";
  }
  WriteFile(Files(), At(QStringLiteral("name")), "x");
  Files().Rename(At(QStringLiteral("name")), At(QStringLiteral("NAME")), false);
  EXPECT_EQ(NamesIn(Bed().Base()), QStringList{QStringLiteral("NAME")});
  EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("NAME"))), QByteArray("x"));
  Files().CreateFolder(At(QStringLiteral("dir")));
  WriteFile(Files(), At(QStringLiteral("dir\\f")), "y");
  Files().Rename(At(QStringLiteral("dir")), At(QStringLiteral("Dir")), true);
  EXPECT_EQ(TreeOf(Bed().Base()),
            (QStringList{QStringLiteral("Dir\\"), QStringLiteral("Dir\\f=y"), QStringLiteral("NAME=x")}));
}

TEST_P(ConformanceNames, PathsMayBeLongerThanTheSystemTakesInOneCall) {
  QString path = Bed().Base();
  for (int i = 0; path.size() < Bed().LongestPath() - 1000; ++i) {
    path += u'\\' + QString(250, QChar(u'a' + i % 26));
    Files().CreateFolder(path);
  }
  ASSERT_GT(path.size(), 1500);
  const QString file = path + QStringLiteral("\\file");
  WriteFile(Files(), file, "deep");
  EXPECT_EQ(ReadFile(Files(), file), QByteArray("deep"));
  EXPECT_EQ(Files().Stat(file).size, 4);
  EXPECT_EQ(NamesIn(path), QStringList{QStringLiteral("file")});
  Files().Copy(file, path + QStringLiteral("\\copy"), false);
  if (Bed().Renames()) {
    Files().Rename(file, path + QStringLiteral("\\moved"), false);
  } else {
    Files().Copy(file, path + QStringLiteral("\\moved"), false);
    Files().Remove(file);
  }
  EXPECT_EQ(TreeOf(path), (QStringList{QStringLiteral("copy=deep"), QStringLiteral("moved=deep")}));
  const QString top = At(QString(250, u'a'));
  Files().Copy(top, At(QStringLiteral("again")), false);
  EXPECT_EQ(
      ReadFile(Files(), At(QStringLiteral("again")) + (path + QStringLiteral("\\copy")).sliced(top.size())),
      QByteArray("deep"));
  Files().Remove(top);
  Files().Remove(At(QStringLiteral("again")));
  EXPECT_TRUE(NamesIn(Bed().Base()).isEmpty());
}

}  // namespace
}  // namespace trevane::test
