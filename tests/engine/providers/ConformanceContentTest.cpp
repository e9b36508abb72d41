#include "engine/files/WholeFile.h"
#include "tests/engine/providers/ProviderBed.h"

#include <QDateTime>

#include <algorithm>

namespace trevane::test {
namespace {

class ConformanceContent : public ConformanceTest {};
INSTANTIATE_TEST_SUITE_P(All, ConformanceContent, ::testing::ValuesIn(AllProviders()), NameOfCase);

QByteArray EveryByte() {
  QByteArray bytes;
  for (int i = 0; i < 256; ++i) {
    bytes += static_cast<char>(i);
  }
  return bytes;
}

QByteArray Large() {
  QByteArray bytes(8 * 1024 * 1024, Qt::Uninitialized);
  quint32 state = 1;
  for (char& byte : bytes) {
    state = state * 1664525U + 1013904223U;
    byte = static_cast<char>(state >> 24);
  }
  return bytes;
}

TEST_P(ConformanceContent, ContentIsReadBackAsWritten) {
  const std::pair<const char*, QByteArray> contents[] = {
      {"empty", {}}, {"one byte", "x"}, {"every byte", EveryByte()}, {"8 MiB", Large()}};
  for (const auto& [label, content] : contents) {
    SCOPED_TRACE(label);
    const QString path = At(QStringLiteral("f"));
    WriteFile(Files(), path, content);
    EXPECT_TRUE(ReadFile(Files(), path) == content);
    EXPECT_EQ(Files().Stat(path).size, content.size());
    Files().Copy(path, At(QStringLiteral("copy")), true);
    EXPECT_TRUE(ReadFile(Files(), At(QStringLiteral("copy"))) == content);
    EXPECT_EQ(Files().Stat(At(QStringLiteral("copy"))).size, content.size());
  }
}

TEST_P(ConformanceContent, WriteReplacesTheWholeContent) {
  const QString path = At(QStringLiteral("f"));
  WriteFile(Files(), path, QByteArray(100000, 'a'));
  WriteFile(Files(), path, "short");
  EXPECT_EQ(ReadFile(Files(), path), QByteArray("short"));
  WriteFile(Files(), path, {});
  EXPECT_EQ(Files().Stat(path).size, 0);
  EXPECT_EQ(NamesIn(Bed().Base()), QStringList{QStringLiteral("f")});
}

TEST_P(ConformanceContent, AFileThatIsMadeIsEmpty) {
  Files().CreateFile(At(QStringLiteral("f")));
  EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("f"))), QByteArray());
  EXPECT_EQ(Files().Stat(At(QStringLiteral("f"))).attributes, attribute::kArchive);
}

TEST_P(ConformanceContent, ListAndStatAgreeOnEverything) {
  WriteFile(Files(), At(QStringLiteral("f")), "four");
  WriteFile(Files(), At(QStringLiteral(".hidden")), "x");
  Files().CreateFolder(At(QStringLiteral("d")));
  Bed().MakeDevice(At(QStringLiteral("dev")));
  Bed().MakeLink(At(QStringLiteral("to file")), At(QStringLiteral("f")));
  Bed().MakeLink(At(QStringLiteral("to folder")), At(QStringLiteral("d")));
  Bed().MakeLink(At(QStringLiteral("to nothing")), At(QStringLiteral("nothing")));
  Bed().SetModified(At(QStringLiteral("f")), {1000000000123});
  const Listing listing = Files().List(Bed().Base());
  EXPECT_GE(listing.size(), 3U);
  for (const FileEntry& listed : listing) {
    SCOPED_TRACE(listed.name.toStdString());
    const FileEntry stat = Files().Stat(At(listed.name));
    EXPECT_EQ(stat.name, listed.name);
    EXPECT_EQ(stat.attributes, listed.attributes);
    EXPECT_EQ(stat.size, listed.size);
    EXPECT_EQ(stat.created, listed.created);
    // Following a link to ask about it is an access to the link.
    if (!listed.IsLink()) {
      EXPECT_EQ(stat.accessed, listed.accessed);
    }
    EXPECT_EQ(stat.modified, listed.modified);
  }
}

TEST_P(ConformanceContent, AttributesTellFoldersFilesAndWhatIsHidden) {
  Files().CreateFolder(At(QStringLiteral("d")));
  Files().CreateFile(At(QStringLiteral("f")));
  Files().CreateFolder(At(QStringLiteral(".d")));
  Files().CreateFile(At(QStringLiteral(".f")));
  EXPECT_EQ(Listed(Bed().Base(), QStringLiteral("d")).attributes, attribute::kFolder);
  EXPECT_EQ(Listed(Bed().Base(), QStringLiteral("d")).size, 0);
  EXPECT_EQ(Listed(Bed().Base(), QStringLiteral("f")).attributes, attribute::kArchive);
  const qint32 hidden = Bed().HidesDotNames() ? attribute::kHidden : 0;
  EXPECT_EQ(Listed(Bed().Base(), QStringLiteral(".d")).attributes, attribute::kFolder | hidden);
  EXPECT_EQ(Listed(Bed().Base(), QStringLiteral(".f")).attributes, attribute::kArchive | hidden);
}

TEST_P(ConformanceContent, TimesAreKeptByCopyAndMove) {
  if (!Bed().SetsDates()) {
    GTEST_SKIP() << "no dates to set";
  }
  const std::pair<const char*, qint64> moments[] = {{"1970", 0},
                                                    {"before 1970", -86400000},
                                                    {"2001 with parts of a second", 1000000000123},
                                                    {"2038 and after", 4102444800000}};
  for (const auto& [label, msecs] : moments) {
    SCOPED_TRACE(label);
    if (msecs < 0 && !Bed().HoldsEarlyDates()) {
      continue;
    }
    WriteFile(Files(), At(QStringLiteral("f")), "x");
    Bed().SetModified(At(QStringLiteral("f")), {msecs});
    Files().Copy(At(QStringLiteral("f")), At(QStringLiteral("g")), true);
    QStringList kept{QStringLiteral("g")};
    if (Bed().Renames()) {
      Files().Rename(At(QStringLiteral("f")), At(QStringLiteral("h")), true);
      kept += QStringLiteral("h");
    }
    for (const QString& name : kept) {
      const Date modified = Files().Stat(At(name)).modified;
      ASSERT_TRUE(modified.IsPresent());
      EXPECT_LE(std::abs(modified.msecs - msecs), Bed().TimePrecision());
    }
  }
}

TEST_P(ConformanceContent, TheTimesOfAFolderAreKeptByCopy) {
  if (Bed().IsPlain()) {
    GTEST_SKIP() << "sets no times of folders";
  }
  Files().CreateFolder(At(QStringLiteral("d")));
  Files().CreateFolder(At(QStringLiteral("d\\e")));
  WriteFile(Files(), At(QStringLiteral("d\\e\\f")), "x");
  Bed().SetModified(At(QStringLiteral("d\\e")), {1000000000000});
  Bed().SetModified(At(QStringLiteral("d")), {1100000000000});
  Files().Copy(At(QStringLiteral("d")), At(QStringLiteral("copy")), false);
  EXPECT_LE(std::abs(Files().Stat(At(QStringLiteral("copy"))).modified.msecs - 1100000000000),
            Bed().TimePrecision());
  EXPECT_LE(std::abs(Files().Stat(At(QStringLiteral("copy\\e"))).modified.msecs - 1000000000000),
            Bed().TimePrecision());
}

TEST_P(ConformanceContent, ALinkIsReadAndWrittenThrough) {
  WriteFile(Files(), At(QStringLiteral("f")), "old");
  if (!Bed().MakeLink(At(QStringLiteral("l")), At(QStringLiteral("f")))) {
    GTEST_SKIP() << "no links here";
  }
  EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("l"))), QByteArray("old"));
  if (!Bed().WritesThroughLinks()) {
    EXPECT_NE(ErrorOf([&] { WriteFile(Files(), At(QStringLiteral("l")), "new"); }), 0);
    EXPECT_EQ(TreeOf(Bed().Base()), (QStringList{QStringLiteral("f=old"), QStringLiteral("l@")}));
    return;
  }
  WriteFile(Files(), At(QStringLiteral("l")), "new");
  EXPECT_EQ(TreeOf(Bed().Base()), (QStringList{QStringLiteral("f=new"), QStringLiteral("l@")}));
}

TEST_P(ConformanceContent, ALinkToAFolderIsBrowsedAndALinkToNothingIsAnItem) {
  Files().CreateFolder(At(QStringLiteral("d")));
  WriteFile(Files(), At(QStringLiteral("d\\f")), "x");
  if (!Bed().MakeLink(At(QStringLiteral("l")), At(QStringLiteral("d")))) {
    GTEST_SKIP() << "no links here";
  }
  ASSERT_TRUE(Bed().MakeLink(At(QStringLiteral("n")), At(QStringLiteral("nothing"))));
  EXPECT_EQ(NamesIn(At(QStringLiteral("l"))), QStringList{QStringLiteral("f")});
  EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("l\\f"))), QByteArray("x"));
  EXPECT_EQ(Files().Stat(At(QStringLiteral("l"))).attributes & (attribute::kFolder | attribute::kLink),
            attribute::kFolder | attribute::kLink);
  EXPECT_EQ(Files().Stat(At(QStringLiteral("n"))).attributes & (attribute::kFolder | attribute::kLink),
            attribute::kLink);
  EXPECT_EQ(ErrorOf([&] { (void)ReadFile(Files(), At(QStringLiteral("n"))); }), error::kNotFound);
}

TEST_P(ConformanceContent, IdentityIsThatOfTheItemItself) {
  if (!Files().Capabilities().identity) {
    GTEST_SKIP() << "cannot tell";
  }
  Files().CreateFile(At(QStringLiteral("f")));
  Files().CreateFile(At(QStringLiteral("g")));
  const auto f = Files().Identity(At(QStringLiteral("f")));
  ASSERT_TRUE(f.has_value());
  EXPECT_EQ(f, Files().Identity(At(QStringLiteral("f"))));
  EXPECT_FALSE(f == Files().Identity(At(QStringLiteral("g"))));
  if (Bed().MakeLink(At(QStringLiteral("l")), At(QStringLiteral("f")))) {
    EXPECT_FALSE(f == Files().Identity(At(QStringLiteral("l"))));
  }
  if (TellsItemsApart()) {
    Files().Rename(At(QStringLiteral("f")), At(QStringLiteral("h")), false);
    EXPECT_EQ(f, Files().Identity(At(QStringLiteral("h"))));
  }
}

TEST_P(ConformanceContent, FoldersAndFilesHaveTypeNames) {
  Files().CreateFolder(At(QStringLiteral("d")));
  Files().CreateFile(At(QStringLiteral("f.abc")));
  Files().CreateFile(At(QStringLiteral("f")));
  EXPECT_EQ(Files().TypeName(Files().Stat(At(QStringLiteral("d")))), QStringLiteral("Folder"));
  EXPECT_EQ(Files().TypeName(Files().Stat(At(QStringLiteral("f.abc")))), QStringLiteral("ABC File"));
  EXPECT_EQ(Files().TypeName(Files().Stat(At(QStringLiteral("f")))), QStringLiteral("File"));
}

}  // namespace
}  // namespace trevane::test
