#include "views/addresses/NodeTags.h"
#include "views/bars/FileFilter.h"
#include "views/bars/History.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

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
  const FileFilter filter = Filter(u"*.txt;*.doc"_s);
  EXPECT_TRUE(Shows(filter, u"README.TXT"_s));
  EXPECT_TRUE(Shows(filter, u"a.doc"_s));
  EXPECT_FALSE(Shows(filter, u"a.bin"_s));
}

TEST(FileFilterTest, ABlankAfterASemicolonBelongsToTheNextPattern) {
  const FileFilter filter = Filter(u"*.txt; *.doc"_s);
  EXPECT_TRUE(Shows(filter, u"a.txt"_s));
  EXPECT_FALSE(Shows(filter, u"a.doc"_s));
  EXPECT_TRUE(Shows(filter, u" a.doc"_s)) << "a name that begins with a blank";
}

TEST(FileFilterTest, ExcludeModeHidesWhatMatchesAndShowsTheRest) {
  const FileFilter filter = Filter(u"*.txt;*.doc"_s, FilterMode::Exclude);
  EXPECT_FALSE(Shows(filter, u"README.TXT"_s));
  EXPECT_FALSE(Shows(filter, u"a.doc"_s));
  EXPECT_TRUE(Shows(filter, u"a.bin"_s));
}

TEST(FileFilterTest, AReleasedSwitchFiltersNothingInEitherMode) {
  for (const FilterMode mode : {FilterMode::Include, FilterMode::Exclude}) {
    FileFilter filter = Filter(u"*.txt"_s, mode);
    filter.SetOn(false);
    EXPECT_TRUE(Shows(filter, u"a.txt"_s));
    EXPECT_TRUE(Shows(filter, u"a.bin"_s));
  }
}

TEST(FileFilterTest, WorkspaceAndLocalMachineAreNotFiltered) {
  const FileFilter filter = Filter(u"*.txt"_s);
  EXPECT_FALSE(filter.IsFilteredOut(u"a.bin"_s, TAG_WORKSPACE));
  EXPECT_FALSE(filter.IsFilteredOut(u"a.bin"_s, kMyComputerTag));
  EXPECT_TRUE(filter.IsFilteredOut(u"a.bin"_s, kControllerTag));
  EXPECT_TRUE(filter.IsFilteredOut(u"a.bin"_s, MakeFolderTag(0, true)));
}

TEST(FileFilterTest, AnEmptyTextHidesAllFilesInIncludeModeOnly) {
  EXPECT_FALSE(Shows(Filter(u""_s), u"a.txt"_s));
  EXPECT_TRUE(Shows(Filter(u""_s, FilterMode::Exclude), u"a.txt"_s));
  FileFilter emptied = Filter(u"*.txt"_s);
  emptied.SetText({});
  EXPECT_FALSE(Shows(emptied, u"a.txt"_s));
  EXPECT_TRUE(Shows(emptied, {}));
}

TEST(FileFilterTest, LetterCaseDoesNotCountInPatternsBeyondLatinEither) {
  EXPECT_TRUE(Shows(Filter(u"*.TXT"_s), u"a.txt"_s));
  EXPECT_TRUE(Shows(Filter(u"[A-C]ÄÖ*"_s), u"bäö.dat"_s));
  EXPECT_TRUE(Shows(Filter(u"ΣΟΦ*"_s), u"σοφία"_s));
}

TEST(FileFilterTest, AMalformedPatternMatchesNothingAndTheOthersWork) {
  const FileFilter filter = Filter(u"*.[tx;*.doc"_s);
  EXPECT_FALSE(Shows(filter, u"a.t"_s));
  EXPECT_TRUE(Shows(filter, u"a.doc"_s));
  EXPECT_EQ(filter.Problem(),
            u"The pattern \"*.[tx\" matches no file. "
            u"The set that begins at character 3 is not closed by a \"]\"."_s);
  EXPECT_EQ(Filter(u"[Z-A]*"_s).Problem(),
            u"The pattern \"[Z-A]*\" matches no file. The range \"z-a\" does not ascend."_s);
}

TEST(FileFilterTest, ThereIsNoProblemOnceTheTextIsMended) {
  FileFilter filter = Filter(u"[a"_s);
  EXPECT_FALSE(filter.Problem().isEmpty());
  filter.SetText(u"[a]"_s);
  EXPECT_TRUE(filter.Problem().isEmpty());
  EXPECT_TRUE(Shows(filter, u"A"_s));
}

TEST(FileFilterTest, TheUsualStarDotStarNeedsADotAsItAlwaysDid) {
  EXPECT_TRUE(Shows(Filter(u"*.*"_s), u"a.txt"_s));
  EXPECT_FALSE(Shows(Filter(u"*.*"_s), u"Makefile"_s));
}

TEST(WildcardTest, ALongNameAgainstManyStarsTakesNoTimeToSpeakOf) {
  const QString name(10000, u'a');
  const Wildcard pattern(u"*a*a*a*a*b"_s);
  QElapsedTimer timer;
  timer.start();
  EXPECT_FALSE(pattern.Matches(name));
  // A thousandth of it is usual; trying every way would take longer than anybody waits.
  EXPECT_LT(timer.elapsed(), 1000);
  EXPECT_TRUE(Wildcard(u"*a*a*a*a*b"_s).Matches(name + u'b'));
}

TEST(WildcardTest, TimeGrowsWithTheProductOfNameAndPatternAtMost) {
  const Wildcard pattern(u'*' + QString(2000, u'a') + u"b*"_s);
  QElapsedTimer timer;
  timer.start();
  EXPECT_FALSE(pattern.Matches(QString(10000, u'a')));
  EXPECT_LT(timer.elapsed(), 5000);
}

TEST(WildcardTest, ACharacterIsACodePointOrALoneSurrogate) {
  const QString face = u"\U0001F600"_s;
  ASSERT_EQ(face.size(), 2);
  EXPECT_TRUE(Wildcard(u"?"_s).Matches(face));
  EXPECT_FALSE(Wildcard(u"??"_s).Matches(face));
  EXPECT_TRUE(Wildcard(u"["_s + face + u"]"_s).Matches(face));
  EXPECT_TRUE(Wildcard(u"[\U0001F5FF-\U0001F601]"_s).Matches(face));
  EXPECT_TRUE(Wildcard(u"?"_s).Matches(QString(QChar(0xD83D))));
  EXPECT_TRUE(Wildcard(u"a?b"_s).Matches(u'a' + QString(QChar(0xDC80)) + u'b'));
  EXPECT_TRUE(Wildcard(QString(QChar(0xDC80))).Matches(QString(QChar(0xDC80))));
  EXPECT_FALSE(Wildcard(u"?"_s).Matches(QString(QChar(0xDC80)) + QChar(0xD83D)));
}

TEST(HistoryTest, TheNewestEntryIsTheFirst) {
  EXPECT_EQ(AddedToHistory({}, u"a"_s), QStringList({u"a"_s}));
  EXPECT_EQ(AddedToHistory({u"a"_s}, u"b"_s), QStringList({u"b"_s, u"a"_s}));
}

TEST(HistoryTest, AnEqualEntryOfAHistoryThatIsNotFullMovesToTheTop) {
  EXPECT_EQ(AddedToHistory({u"c"_s, u"b"_s, u"a"_s}, u"a"_s), QStringList({u"a"_s, u"c"_s, u"b"_s}));
}

TEST(HistoryTest, EntriesAreComparedLetterByLetter) {
  EXPECT_EQ(AddedToHistory({u"a"_s}, u"A"_s), QStringList({u"A"_s, u"a"_s}));
}

TEST(HistoryTest, ASixthEntryPushesTheOldestOut) {
  const QStringList full = {u"e"_s, u"d"_s, u"c"_s, u"b"_s, u"a"_s};
  EXPECT_EQ(AddedToHistory(full, u"f"_s), QStringList({u"f"_s, u"e"_s, u"d"_s, u"c"_s, u"b"_s}));
}

TEST(HistoryTest, AReusedEntryOfAFullHistoryAppearsTwice) {
  const QStringList full = {u"e"_s, u"d"_s, u"c"_s, u"b"_s, u"a"_s};
  EXPECT_EQ(AddedToHistory(full, u"d"_s), QStringList({u"d"_s, u"e"_s, u"d"_s, u"c"_s, u"b"_s}));
  EXPECT_EQ(AddedToHistory(full, u"a"_s), QStringList({u"a"_s, u"e"_s, u"d"_s, u"c"_s, u"b"_s}));
}

}  // namespace
}  // namespace trevane
