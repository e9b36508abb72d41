#include "views/addresses/NodeTags.h"
#include "views/bars/FileFilter.h"
#include "views/bars/History.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace trevane {
namespace {

constexpr qint32 kDriveTag = TAG_DRIVE | TAG_HDD;

FileFilter Filter(const QString& text, FilterMode mode = FilterMode::Include) {
  FileFilter filter;
  filter.SetOn(true);
  filter.SetMode(mode);
  filter.SetText(text);
  return filter;
}

bool Shows(const FileFilter& filter, const QString& name) {
  return !filter.IsFilteredOut(name, kDriveTag);
}

TEST(FileFilterTest, PatternsMatchFilesInAnyCase) {
  const FileFilter filter = Filter(QStringLiteral("*.txt;*.doc"));
  EXPECT_TRUE(Shows(filter, QStringLiteral("README.TXT")));
  EXPECT_TRUE(Shows(filter, QStringLiteral("a.doc")));
  EXPECT_FALSE(Shows(filter, QStringLiteral("a.bin")));
}

TEST(FileFilterTest, ABlankAfterASemicolonBelongsToTheNextPattern) {
  const FileFilter filter = Filter(QStringLiteral("*.txt; *.doc"));
  EXPECT_TRUE(Shows(filter, QStringLiteral("a.txt")));
  EXPECT_FALSE(Shows(filter, QStringLiteral("a.doc")));
  EXPECT_TRUE(Shows(filter, QStringLiteral(" a.doc"))) << "a name that begins with a blank";
}

TEST(FileFilterTest, ExcludeModeHidesWhatMatchesAndShowsTheRest) {
  const FileFilter filter = Filter(QStringLiteral("*.txt;*.doc"), FilterMode::Exclude);
  EXPECT_FALSE(Shows(filter, QStringLiteral("README.TXT")));
  EXPECT_FALSE(Shows(filter, QStringLiteral("a.doc")));
  EXPECT_TRUE(Shows(filter, QStringLiteral("a.bin")));
}

TEST(FileFilterTest, AReleasedSwitchFiltersNothingInEitherMode) {
  for (const FilterMode mode : {FilterMode::Include, FilterMode::Exclude}) {
    FileFilter filter = Filter(QStringLiteral("*.txt"), mode);
    filter.SetOn(false);
    EXPECT_TRUE(Shows(filter, QStringLiteral("a.txt")));
    EXPECT_TRUE(Shows(filter, QStringLiteral("a.bin")));
  }
}

TEST(FileFilterTest, WorkspaceAndLocalMachineAreNotFiltered) {
  const FileFilter filter = Filter(QStringLiteral("*.txt"));
  EXPECT_FALSE(filter.IsFilteredOut(QStringLiteral("a.bin"), TAG_WORKSPACE));
  EXPECT_FALSE(filter.IsFilteredOut(QStringLiteral("a.bin"), kMyComputerTag));
  EXPECT_TRUE(filter.IsFilteredOut(QStringLiteral("a.bin"), kControllerTag));
  EXPECT_TRUE(filter.IsFilteredOut(QStringLiteral("a.bin"), MakeFolderTag(0, true)));
}

TEST(FileFilterTest, AnEmptyTextHidesAllFilesInIncludeModeOnly) {
  EXPECT_FALSE(Shows(Filter(QStringLiteral("")), QStringLiteral("a.txt")));
  EXPECT_TRUE(Shows(Filter(QStringLiteral(""), FilterMode::Exclude), QStringLiteral("a.txt")));
  FileFilter emptied = Filter(QStringLiteral("*.txt"));
  emptied.SetText({});
  EXPECT_FALSE(Shows(emptied, QStringLiteral("a.txt")));
  EXPECT_TRUE(Shows(emptied, {}));
}

TEST(FileFilterTest, LetterCaseDoesNotCountInPatternsBeyondLatinEither) {
  EXPECT_TRUE(Shows(Filter(QStringLiteral("*.TXT")), QStringLiteral("a.txt")));
  EXPECT_TRUE(Shows(Filter(QStringLiteral("[A-C]ÄÖ*")), QStringLiteral("bäö.dat")));
  EXPECT_TRUE(Shows(Filter(QStringLiteral("ΣΟΦ*")), QStringLiteral("σοφία")));
}

TEST(FileFilterTest, AMalformedPatternMatchesNothingAndTheOthersWork) {
  const FileFilter filter = Filter(QStringLiteral("*.[tx;*.doc"));
  EXPECT_FALSE(Shows(filter, QStringLiteral("a.t")));
  EXPECT_TRUE(Shows(filter, QStringLiteral("a.doc")));
  EXPECT_EQ(filter.Problem(), QStringLiteral("The pattern \"*.[tx\" matches no file. "
                                             "The set that begins at character 3 is not closed by a \"]\"."));
  EXPECT_EQ(Filter(QStringLiteral("[Z-A]*")).Problem(),
            QStringLiteral("The pattern \"[Z-A]*\" matches no file. The range \"z-a\" does not ascend."));
}

TEST(FileFilterTest, ThereIsNoProblemOnceTheTextIsMended) {
  FileFilter filter = Filter(QStringLiteral("[a"));
  EXPECT_FALSE(filter.Problem().isEmpty());
  filter.SetText(QStringLiteral("[a]"));
  EXPECT_TRUE(filter.Problem().isEmpty());
  EXPECT_TRUE(Shows(filter, QStringLiteral("A")));
}

TEST(FileFilterTest, TheUsualStarDotStarNeedsADotAsItAlwaysDid) {
  EXPECT_TRUE(Shows(Filter(QStringLiteral("*.*")), QStringLiteral("a.txt")));
  EXPECT_FALSE(Shows(Filter(QStringLiteral("*.*")), QStringLiteral("Makefile")));
}

TEST(WildcardTest, ALongNameAgainstManyStarsTakesNoTimeToSpeakOf) {
  const QString name(10000, u'a');
  const Wildcard pattern(QStringLiteral("*a*a*a*a*b"));
  QElapsedTimer timer;
  timer.start();
  EXPECT_FALSE(pattern.Matches(name));
  // A millisecond is usual; trying every way would take longer than anybody waits.
  EXPECT_LT(timer.elapsed(), 30'000);
  EXPECT_TRUE(Wildcard(QStringLiteral("*a*a*a*a*b")).Matches(name + u'b'));
}

TEST(WildcardTest, TimeGrowsWithTheProductOfNameAndPatternAtMost) {
  const Wildcard pattern(u'*' + QString(2000, u'a') + QStringLiteral("b*"));
  QElapsedTimer timer;
  timer.start();
  EXPECT_FALSE(pattern.Matches(QString(10000, u'a')));
  EXPECT_LT(timer.elapsed(), 30'000);
}

TEST(WildcardTest, ACharacterIsACodePointOrALoneSurrogate) {
  const QString face = QStringLiteral("\U0001F600");
  ASSERT_EQ(face.size(), 2);
  EXPECT_TRUE(Wildcard(QStringLiteral("?")).Matches(face));
  EXPECT_FALSE(Wildcard(QStringLiteral("??")).Matches(face));
  EXPECT_TRUE(Wildcard(QStringLiteral("[") + face + QStringLiteral("]")).Matches(face));
  EXPECT_TRUE(Wildcard(QStringLiteral("[\U0001F5FF-\U0001F601]")).Matches(face));
  EXPECT_TRUE(Wildcard(QStringLiteral("?")).Matches(QString(QChar(0xD83D))));
  EXPECT_TRUE(Wildcard(QStringLiteral("a?b")).Matches(u'a' + QString(QChar(0xDC80)) + u'b'));
  EXPECT_TRUE(Wildcard(QString(QChar(0xDC80))).Matches(QString(QChar(0xDC80))));
  EXPECT_FALSE(Wildcard(QStringLiteral("?")).Matches(QString(QChar(0xDC80)) + QChar(0xD83D)));
}

TEST(HistoryTest, TheNewestEntryIsTheFirst) {
  EXPECT_EQ(AddedToHistory({}, QStringLiteral("a")), QStringList({QStringLiteral("a")}));
  EXPECT_EQ(AddedToHistory({QStringLiteral("a")}, QStringLiteral("b")),
            QStringList({QStringLiteral("b"), QStringLiteral("a")}));
}

TEST(HistoryTest, AnEqualEntryOfAHistoryThatIsNotFullMovesToTheTop) {
  EXPECT_EQ(
      AddedToHistory({QStringLiteral("c"), QStringLiteral("b"), QStringLiteral("a")}, QStringLiteral("a")),
      QStringList({QStringLiteral("a"), QStringLiteral("c"), QStringLiteral("b")}));
}

TEST(HistoryTest, EntriesAreComparedLetterByLetter) {
  EXPECT_EQ(AddedToHistory({QStringLiteral("a")}, QStringLiteral("A")),
            QStringList({QStringLiteral("A"), QStringLiteral("a")}));
}

TEST(HistoryTest, ASixthEntryPushesTheOldestOut) {
  const QStringList full = {QStringLiteral("e"), QStringLiteral("d"), QStringLiteral("c"),
                            QStringLiteral("b"), QStringLiteral("a")};
  EXPECT_EQ(AddedToHistory(full, QStringLiteral("f")),
            QStringList({QStringLiteral("f"), QStringLiteral("e"), QStringLiteral("d"), QStringLiteral("c"),
                         QStringLiteral("b")}));
}

TEST(HistoryTest, AReusedEntryOfAFullHistoryAppearsTwice) {
  const QStringList full = {QStringLiteral("e"), QStringLiteral("d"), QStringLiteral("c"),
                            QStringLiteral("b"), QStringLiteral("a")};
  EXPECT_EQ(AddedToHistory(full, QStringLiteral("d")),
            QStringList({QStringLiteral("d"), QStringLiteral("e"), QStringLiteral("d"), QStringLiteral("c"),
                         QStringLiteral("b")}));
  EXPECT_EQ(AddedToHistory(full, QStringLiteral("a")),
            QStringList({QStringLiteral("a"), QStringLiteral("e"), QStringLiteral("d"), QStringLiteral("c"),
                         QStringLiteral("b")}));
}

}  // namespace
}  // namespace trevane
