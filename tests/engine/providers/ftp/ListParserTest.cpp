#include "engine/providers/ftp/ListParser.h"

#include <QByteArrayList>
#include <QDate>
#include <QDateTime>
#include <QTime>

#include <gtest/gtest.h>

#include <vector>

namespace trevane::ftp::test {
namespace {

qint64 Utc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  return QDateTime(QDate(year, month, day), QTime(hour, minute, second), Qt::UTC).toMSecsSinceEpoch();
}

ParsedListing List(const QByteArray& bytes) {
  return ParseList(bytes, {.now = Utc(2024, 6, 15, 12), .zone = 0});
}

QByteArrayList Names(const ParsedListing& listing) {
  QByteArrayList names;
  names.reserve(static_cast<qsizetype>(listing.items.size()));
  for (const ListedItem& item : listing.items) {
    names.append(item.name);
  }
  return names;
}

/// The only item of a line; an empty one where it is not read.
ListedItem Item(const QByteArray& line) {
  const ParsedListing listing = List(line + "\r\n");
  EXPECT_EQ(listing.unreadable, 0) << line.toStdString();
  EXPECT_EQ(listing.items.size(), 1U) << line.toStdString();
  return listing.items.empty() ? ListedItem{} : listing.items.front();
}

ListedItem FactsItem(const QByteArray& line) {
  const ParsedListing listing = ParseFacts(line + "\r\n");
  EXPECT_EQ(listing.unreadable, 0) << line.toStdString();
  EXPECT_EQ(listing.items.size(), 1U) << line.toStdString();
  return listing.items.empty() ? ListedItem{} : listing.items.front();
}

TEST(ListParserTest, AUnixLineTellsEverything) {
  const ListedItem item = Item("-rwxr-x--- 1 robot users 1234 Jan 31 12:05 main.prg");
  EXPECT_EQ(item.name, "main.prg");
  EXPECT_EQ(item.kind, ListedItem::Kind::File);
  EXPECT_EQ(item.size, 1234);
  EXPECT_EQ(item.modified.msecs, Utc(2024, 1, 31, 12, 5));
  EXPECT_EQ(item.step, DateStep::Minute);
  EXPECT_EQ(item.mode, 0750U);
  EXPECT_EQ(item.owner, "robot");
  EXPECT_EQ(item.group, "users");
  EXPECT_FALSE(item.isReadOnly);
}

TEST(ListParserTest, SetIdLettersAreRightsToExecute) {
  EXPECT_EQ(Item("-rwsr-Sr-t 1 a b 1 Jan 31 2024 x").mode, 0745U);
  EXPECT_EQ(Item("drwxrwxrwT 1 a b 1 Jan 31 2024 x").mode, 0776U);
}

TEST(ListParserTest, OwnersMayBeCalledLikeAnything) {
  ListedItem item = Item("-rw-r--r-- 1 may users 5 May 20 2024 x");
  EXPECT_EQ(item.owner, "may");
  EXPECT_EQ(item.size, 5);
  item = Item("-rw-r--r-- 1 PLANT\\op Domain Users 77 May 20 2024 x");
  EXPECT_EQ(item.owner, "PLANT\\op");
  EXPECT_EQ(item.group, "Domain Users");
  EXPECT_EQ(item.size, 77);
  item = Item("-rw-r--r-- 1 1000 100 88 May 20 2024 x");
  EXPECT_EQ(item.owner, "1000");
  EXPECT_EQ(item.group, "100");
  EXPECT_EQ(item.size, 88);
}

TEST(ListParserTest, ASizeThatIsNotExactIsNoSize) {
  EXPECT_EQ(Item("-rw-r--r-- 1 a b 1.2K Jan 31 2024 x").size, -1);
  EXPECT_EQ(Item("-rw-r--r-- 1 a b -2147483648 Jan 31 2024 x").size, -1);
  EXPECT_EQ(Item("-rw-r--r-- 1 a b 99999999999999999999 Jan 31 2024 x").size, -1);
  EXPECT_EQ(Item("-rw-r--r-- 1 a b12345678 Jan 31 2024 x").size, -1);
  EXPECT_EQ(Item("-rw-r--r-- 1 a b Jan 31 2024 x").size, -1);
  EXPECT_EQ(Item("-rw-r--r-- 1 Jan 31 2024 x").size, -1);
  EXPECT_EQ(Item("-rw-r--r-- 1 a b 5000000000 Jan 31 2024 x").size, 5000000000);
}

TEST(ListParserTest, AFolderHasNoSize) {
  EXPECT_EQ(Item("drwxr-xr-x 2 a b 4096 Jan 31 2024 x").size, -1);
  EXPECT_EQ(FactsItem("type=dir;size=4096; x").size, -1);
}

TEST(ListParserTest, ALinkIsSplitWhereItsSizeTells) {
  ListedItem item = Item("lrwxrwxrwx 1 a b 6 Jan 31 2024 a -> b -> c.txt");
  EXPECT_EQ(item.name, "a");
  EXPECT_EQ(item.target, "b -> c.txt");
  item = Item("lrwxrwxrwx 1 a b 5 Jan 31 2024 a -> b -> c.txt");
  EXPECT_EQ(item.name, "a -> b");
  EXPECT_EQ(item.target, "c.txt");
  EXPECT_EQ(Item("-rw-rw-rw- 1 a b 1 Jan 31 2024 a -> b").name, "a -> b");
}

TEST(ListParserTest, ALinkWithoutATargetIsALink) {
  const ListedItem item = Item("lrwxrwxrwx 1 a b 6 Jan 31 2024 plain");
  EXPECT_EQ(item.kind, ListedItem::Kind::Link);
  EXPECT_EQ(item.name, "plain");
  EXPECT_EQ(item.target, "");
}

TEST(ListParserTest, BlanksOfANameAreKept) {
  const ParsedListing listing = List(
      "-rw-rw-rw- 1 a b 1 Jan 31 2024 two  words\r\n"
      "-rw-rw-rw- 1 a b 1 Jan 31 2024  leading\r\n"
      "-rw-rw-rw- 1 a b 1 Jan 31 2024 trailing \r\n");
  EXPECT_EQ(Names(listing), QByteArrayList({"two  words", " leading", "trailing "}));
}

TEST(ListParserTest, ANameMayBeBlanksAlone) {
  const QByteArray line = "drwxr-xr-x 2 robot users 4096 Jan 31 12:05 ";
  EXPECT_EQ(Names(List(line + " \r\n")), QByteArrayList{" "});
  EXPECT_EQ(Names(List(line + "a\r\n" + line + "  \r\n")), (QByteArrayList{"a", "  "}));
  // A line without a name, and lines that are filled up.
  EXPECT_EQ(List(line + "\r\n").unreadable, 1);
  EXPECT_EQ(List(line + "a  \r\n" + line + "   \r\n").unreadable, 1);
}

TEST(ListParserTest, BlanksOfAColumnAreNoNames) {
  EXPECT_EQ(Names(List("-rw-rw-rw- 1 a b 1 Jan 31 2024   ONE.TXT    \r\n"
                       "-rw-rw-rw- 1 a b 1 Jan 31 2024   TWO.TXT    \r\n")),
            QByteArrayList({"ONE.TXT", "TWO.TXT"}));
  EXPECT_EQ(Names(List("-rw-rw-rw- 1 a b 1 Jan 31 2024 ONE.TXT      \r\n"
                       "-rw-rw-rw- 1 a b 1 Jan 31 2024 OTHER.TXT    \r\n"
                       "-rw-rw-rw- 1 a b 1 Jan 31 2024 WITHOUTBLANKS\r\n")),
            QByteArrayList({"ONE.TXT", "OTHER.TXT", "WITHOUTBLANKS"}));
}

TEST(ListParserTest, TheFolderItselfIsLeftOut) {
  const ParsedListing listing = List(
      "drwxr-xr-x 2 a b 4096 Jan 31 2024 .\r\n"
      "drwxr-xr-x 2 a b 4096 Jan 31 2024 ..\r\n"
      "01-31-24  12:00PM       <DIR>          .\r\n");
  EXPECT_TRUE(listing.items.empty());
  EXPECT_EQ(listing.unreadable, 0);
}

TEST(ListParserTest, ANameThatNoItemHasIsUnreadable) {
  for (const QByteArray& name :
       {QByteArray("a/b"), QByteArray("../x"), QByteArray("a\0b", 3), QByteArray("a\rb"), QByteArray()}) {
    const ParsedListing listing = List("-rw-rw-rw- 1 a b 1 Jan 31 2024 " + name + "\r\n");
    EXPECT_TRUE(listing.items.empty()) << name.toStdString();
    EXPECT_EQ(listing.unreadable, 1) << name.toStdString();
    EXPECT_TRUE(listing.IsUnreadable());
  }
}

TEST(ListParserTest, AMonthOfAnUnknownLanguageGivesNoDate) {
  const ListedItem item = Item("-rw-rw-rw- 1 a b 12 Xyz 31 12:00 x.txt");
  EXPECT_EQ(item.name, "x.txt");
  EXPECT_EQ(item.size, 12);
  EXPECT_FALSE(item.modified.IsPresent());
  EXPECT_EQ(item.step, DateStep::None);
}

TEST(ListParserTest, ADayThatDoesNotExistGivesNoDate) {
  const ListedItem item = Item("-rw-rw-rw- 1 a b 12 Feb 30 2024 x.txt");
  EXPECT_EQ(item.name, "x.txt");
  EXPECT_FALSE(item.modified.IsPresent());
  EXPECT_EQ(item.step, DateStep::None);
}

TEST(ListParserTest, MonthsOfManyLanguagesAreKnown) {
  struct Case {
    const char* word;
    int month;
  };
  const std::vector<Case> cases = {
      {"JAN", 1},
      {"M\xC3\xA4r", 3},
      {"M\xE4r", 3},
      {"M\x84rz", 3},
      {"Mai", 5},
      {"Okt", 10},
      {"Dez", 12},
      {"janv.", 1},
      {"f\xC3\xA9vr.", 2},
      {"f\xE9v", 2},
      {"ao\xC3\xBBt", 8},
      {"d\xE9"
       "c.",
       12},
      {"juil.", 7},
      {"gen", 1},
      {"giu", 6},
      {"lug", 7},
      {"set", 9},
      {"ott", 10},
      {"dic", 12},
      {"ene", 1},
      {"ago", 8},
      {"maj", 5},
      {"okt", 10},
      {"tammi", 1},
      {"hein\xC3\xA4", 7},
      {"kes\xE4", 6},
      {"joulu", 12},
      {"mrt", 3},
      {"mei", 5},
      {"sty", 1},
      {"pa\xC5\xBA", 10},
      {"pa\xBC", 10},
      {"gru", 12},
      {"lis", 11},
      // Russian in UTF-8, Windows-1251, KOI8-R, DOS and ISO 8859-5.
      {"\xD1\x8F\xD0\xBD\xD0\xB2", 1},
      {"\xD0\x9C\xD0\xB0\xD0\xB9", 5},
      {"\xE4\xE5\xEA", 12},
      {"\xC6\xC5\xD7", 2},
      {"\xA0\xA2\xA3", 8},
      {"\xE1\xD5\xDD", 9},
      {"\xEC\xE0\xFF", 5},
      {"\xC9\xC0\xCC", 7},
      {"\xD1\x81\xD0\xB5\xD0\xBD\xD1\x82.", 9},
  };
  for (const Case& one : cases) {
    const ListedItem item = Item(QByteArray("-rw-rw-rw- 1 a b 12 ") + one.word + " 3 2020 x");
    EXPECT_EQ(item.modified.msecs, Utc(2020, one.month, 3)) << one.word;
    EXPECT_EQ(item.step, DateStep::Day) << one.word;
  }
}

TEST(ListParserTest, DatesComeInManyForms) {
  struct Case {
    const char* date;
    qint64 expected;
    DateStep step;
  };
  const std::vector<Case> cases = {
      {"Jan 31 12:05", Utc(2024, 1, 31, 12, 5), DateStep::Minute},
      {"Jan  3  2021", Utc(2021, 1, 3), DateStep::Day},
      {"31 Jan 12:05", Utc(2024, 1, 31, 12, 5), DateStep::Minute},
      {"31. Jan 2021", Utc(2021, 1, 31), DateStep::Day},
      {"31 JAN 2021 12:05:06", Utc(2021, 1, 31, 12, 5, 6), DateStep::Second},
      {"Jan 31 12:05:06 2021", Utc(2021, 1, 31, 12, 5, 6), DateStep::Second},
      {"2021-01-31 12:05", Utc(2021, 1, 31, 12, 5), DateStep::Minute},
      {"2021-01-31 12:05:06", Utc(2021, 1, 31, 12, 5, 6), DateStep::Second},
      {"2021-01-31 12:05:06.250000000 +0130", Utc(2021, 1, 31, 10, 35, 6) + 250, DateStep::Millisecond},
      {"2021-01-31T12:05", Utc(2021, 1, 31, 12, 5), DateStep::Minute},
      {"2021/01/31 12:05", Utc(2021, 1, 31, 12, 5), DateStep::Minute},
      {"2021-01-31", Utc(2021, 1, 31), DateStep::Day},
      {"01-31 12:05", Utc(2024, 1, 31, 12, 5), DateStep::Minute},
      {"31.01.2021 12:05", Utc(2021, 1, 31, 12, 5), DateStep::Minute},
      {"31-Jan-2021 12:05", Utc(2021, 1, 31, 12, 5), DateStep::Minute},
      {"31-JAN-21", Utc(2021, 1, 31), DateStep::Day},
      {"01/31/2021 12:05", Utc(2021, 1, 31, 12, 5), DateStep::Minute},
      {"01/31/99 12:05PM", Utc(1999, 1, 31, 12, 5), DateStep::Minute},
      {"1\xE6\x9C\x88 31 12:05", Utc(2024, 1, 31, 12, 5), DateStep::Minute},
      {"1\xE6\x9C\x88 31\xE6\x97\xA5 12:05", Utc(2024, 1, 31, 12, 5), DateStep::Minute},
      {"1\xE6\x9C\x88"
       "31\xE6\x97\xA5  2021\xE5\xB9\xB4",
       Utc(2021, 1, 31), DateStep::Day},
      {"1\x8C\x8E 31 2021\x94N", Utc(2021, 1, 31), DateStep::Day},
      {"2021\xE5\xB9\xB4 1\xE6\x9C\x88 31\xE6\x97\xA5 12:05", Utc(2021, 1, 31, 12, 5), DateStep::Minute},
      {"1\xEC\x9B\x94 31 2021", Utc(2021, 1, 31), DateStep::Day},
      {"1\xD4\xC2 31 12:05", Utc(2024, 1, 31, 12, 5), DateStep::Minute},
  };
  for (const Case& one : cases) {
    const ListedItem item = Item(QByteArray("-rw-rw-rw- 1 a b 12 ") + one.date + " x y.txt");
    EXPECT_EQ(item.modified.msecs, one.expected) << one.date;
    EXPECT_EQ(item.step, one.step) << one.date;
    EXPECT_EQ(item.name, "x y.txt") << one.date;
    EXPECT_EQ(item.size, 12) << one.date;
  }
}

TEST(ListParserTest, ADosLineTellsEverything) {
  ListedItem item = Item("01-31-24  12:05PM                 1234 main prog.txt");
  EXPECT_EQ(item.name, "main prog.txt");
  EXPECT_EQ(item.kind, ListedItem::Kind::File);
  EXPECT_EQ(item.size, 1234);
  EXPECT_EQ(item.modified.msecs, Utc(2024, 1, 31, 12, 5));
  EXPECT_EQ(item.step, DateStep::Minute);
  EXPECT_EQ(item.mode, std::nullopt);
  item = Item("01-31-24  12:05AM       <DIR>           leading");
  EXPECT_EQ(item.name, " leading");
  EXPECT_EQ(item.kind, ListedItem::Kind::Folder);
  EXPECT_EQ(item.modified.msecs, Utc(2024, 1, 31, 0, 5));
}

TEST(ListParserTest, NamesOfDosFoldersBeginInTheirColumn) {
  EXPECT_EQ(Names(List("01-31-24  12:05PM       <DIR>          one\r\n"
                       "01-31-24  12:05PM       <DIR>           two\r\n"
                       "01-31-24  12:05PM                 1234 three\r\n"
                       "01-31-24  12:05PM                   12  four\r\n")),
            QByteArrayList({"one", " two", "three", " four"}));
  EXPECT_EQ(Names(List("01-31-24 12:05 <DIR>   one\r\n"
                       "01-31-24 12:05 123456 three\r\n")),
            QByteArrayList({"one", "three"}));
}

TEST(ListParserTest, OneLineShowsTheOrderOfAllDates) {
  const ParsedListing listing = List(
      "02-01-24  12:05                 1 a\r\n"
      "31-01-24  12:05                 1 b\r\n");
  ASSERT_EQ(listing.items.size(), 2U);
  EXPECT_EQ(listing.items[0].modified.msecs, Utc(2024, 1, 2, 12, 5));
  EXPECT_EQ(listing.items[1].modified.msecs, Utc(2024, 1, 31, 12, 5));
  EXPECT_EQ(Item("02-01-24  12:05                 1 a").modified.msecs, Utc(2024, 2, 1, 12, 5));
  EXPECT_EQ(Item("02.01.24  12:05                 1 a").modified.msecs, Utc(2024, 1, 2, 12, 5));
}

TEST(ListParserTest, ThousandsMayBeSeparated) {
  for (const char* size : {"1,234,567", "1.234.567", "1'234'567", "1\302\240234\302\240567", "1234567"}) {
    EXPECT_EQ(Item(QByteArray("01-31-24  12:05  ") + size + " x").size, 1234567) << size;
  }
  EXPECT_TRUE(List("01-31-24  12:05  1,23 x\r\n").IsUnreadable());
}

TEST(ListParserTest, ABlankMaySeparateThousands) {
  // Alone in a width that is usual.
  EXPECT_EQ(Item("01-31-24  12:05PM            1 234 567 x").size, 1234567);
  EXPECT_EQ(Item("01/31/2024  12:05 PM         1 234 567 x").size, 1234567);
  const ListedItem item = Item("01-31-24  12:05PM                   12 345 x");
  EXPECT_EQ(item.size, 12);
  EXPECT_EQ(item.name, "345 x");
  // Digits alone are a name.
  EXPECT_EQ(Item("01-31-24 12:05 12 345").name, "345");
  EXPECT_EQ(Item("01-31-24 12:05 12 345").size, 12);
  // A size in one word shows that none has blanks.
  ParsedListing listing = List(
      "01-31-24 12:05 1234 a\r\n"
      "01-31-24 12:05 12 345 b\r\n");
  EXPECT_EQ(Names(listing), QByteArrayList({"a", "345 b"}));
  EXPECT_EQ(listing.items[1].size, 12);
  // Nothing tells.
  listing = List(
      "01-31-24 12:05 1 a\r\n"
      "01-31-24 12:05 123 b\r\n"
      "01-31-24 12:05 12 345 c\r\n");
  EXPECT_EQ(Names(listing), QByteArrayList({"a", "b"}));
  EXPECT_EQ(listing.unreadable, 1);
  EXPECT_TRUE(List("01-31-24 12:05 12 345 x\r\n").IsUnreadable());
}

TEST(ListParserTest, FactsTellEverything) {
  const ListedItem item = FactsItem(
      "Type=file;Size=1234;Modify=20240131120506.123;Perm=r;UNIX.mode=0640;UNIX.owner=7;UNIX.ownername=robot;"
      "UNIX.group=8;unique=4g1; main;a.prg");
  EXPECT_EQ(item.name, "main;a.prg");
  EXPECT_EQ(item.size, 1234);
  EXPECT_EQ(item.modified.msecs, Utc(2024, 1, 31, 12, 5, 6) + 123);
  EXPECT_EQ(item.step, DateStep::Millisecond);
  EXPECT_EQ(item.mode, 0640U);
  EXPECT_EQ(item.owner, "robot");
  EXPECT_EQ(item.group, "8");
  EXPECT_EQ(item.unique, "4g1");
  EXPECT_TRUE(item.isReadOnly);
}

TEST(ListParserTest, FactsKeepAllBlanksOfAName) {
  EXPECT_EQ(FactsItem("type=file;  a b ").name, " a b ");
  EXPECT_EQ(FactsItem("type=file x; y").name, "x; y");
}

TEST(ListParserTest, FactsTellLinksAndDevices) {
  ListedItem item = FactsItem("type=OS.unix=slink:/a b/c;size=3; link");
  EXPECT_EQ(item.kind, ListedItem::Kind::Link);
  EXPECT_EQ(item.target, "/a b/c");
  EXPECT_EQ(item.size, 3);
  item = FactsItem("type=OS.UNIX=symlink; link");
  EXPECT_EQ(item.kind, ListedItem::Kind::Link);
  EXPECT_EQ(item.target, "");
  EXPECT_EQ(FactsItem("type=OS.unix=chr-1/3; null").kind, ListedItem::Kind::Device);
  EXPECT_EQ(FactsItem("sizd=4096; d").kind, ListedItem::Kind::Folder);
}

TEST(ListParserTest, OnlyRightsThatChangeMakeWritable) {
  EXPECT_FALSE(FactsItem("type=file;perm=adfrw; x").isReadOnly);
  EXPECT_FALSE(FactsItem("type=file;perm=RW; x").isReadOnly);
  EXPECT_TRUE(FactsItem("type=file;perm=; x").isReadOnly);
  EXPECT_TRUE(FactsItem("type=dir;perm=el; x").isReadOnly);
  EXPECT_FALSE(FactsItem("type=dir;perm=elc; x").isReadOnly);
  EXPECT_FALSE(FactsItem("type=file; x").isReadOnly);
}

TEST(ListParserTest, FactsLeaveTheFolderItselfOut) {
  const ParsedListing listing = ParseFacts(
      "type=cdir;perm=el; /prog\r\n"
      "type=pdir;perm=el; ..\r\n"
      "type=dir; .\r\n"
      "type=file; a\r\n");
  EXPECT_EQ(Names(listing), QByteArrayList({"a"}));
  EXPECT_EQ(listing.unreadable, 0);
}

TEST(ListParserTest, AnAnswerOfMlstMayHaveAPath) {
  EXPECT_EQ(FactsItem(" type=file;size=1; /prog/main.prg").name, "main.prg");
  const ParsedListing listing = ParseFacts("type=file; a/b\r\ntype=file; /a\r\n");
  EXPECT_TRUE(listing.items.empty());
  EXPECT_EQ(listing.unreadable, 2);
}

TEST(ListParserTest, AnAnswerOfMlstIsReadAmongItsLines) {
  const auto item = ParseItemFacts("Listing /\n type=cdir;modify=20240131120000; /\nEnd");
  ASSERT_TRUE(item);
  EXPECT_EQ(item->kind, ListedItem::Kind::Folder);
  EXPECT_EQ(item->name, "");
  EXPECT_EQ(item->modified.msecs, Utc(2024, 1, 31, 12));
  EXPECT_FALSE(ParseItemFacts("Listing /\nEnd"));
  EXPECT_FALSE(ParseItemFacts(""));
}

TEST(ListParserTest, TotalsAndHeadingsAreNoItems) {
  for (const char* line :
       {"", "   ", "total 12", "total 0", "insgesamt 4", "\xE5\x90\x88\xE8\xA8\x88 12", "\x8D\x87\x8Cv 12",
        "\xE6\x80\xBB\xE7\x94\xA8\xE9\x87\x8F 12", "Total of 3 files, 9 blocks.",
        "     2 File(s)   1,234 bytes", " Volume in drive C is SYSTEM", " Directory of C:\\PROG", "/PROG:",
        ".:", "  size          date       time       name", "--------       ------     ------    --------",
        "V--------- 1 a b 0 Jan 31 2024 LABEL", "01-31-24 12:00PM <VOL> LABEL", "226 Transfer complete."}) {
    const ParsedListing listing = List(QByteArray(line) + "\r\n");
    EXPECT_TRUE(listing.items.empty()) << line;
    EXPECT_EQ(listing.unreadable, 0) << line;
  }
}

TEST(ListParserTest, FewExactTextsMeanAnEmptyFolder) {
  for (const char* text : {"File not found", "FILE NOT FOUND", "No files found.", "Directory is empty!"}) {
    const ParsedListing listing = List(QByteArray("total 0\r\n") + text + "\r\n");
    EXPECT_EQ(listing.unreadable, 0) << text;
    EXPECT_FALSE(listing.IsUnreadable()) << text;
  }
}

TEST(ListParserTest, AnErrorIsNoEmptyFolder) {
  for (const char* text : {"/prog: No such file or directory", "No such file or directory",
                           "ls: cannot open directory .: denied", "Permission denied", "550 File not found",
                           "File not found: /prog", "x", "<html>", "not found", "MAIN.PRG", "total",
                           "total x", "-rw-rw-rw-", "drwxrwxrwx 1 a b 12"}) {
    const ParsedListing listing = List(QByteArray(text) + "\r\n");
    EXPECT_TRUE(listing.IsUnreadable()) << text;
    EXPECT_EQ(listing.firstUnreadable, text);
  }
}

TEST(ListParserTest, ATextForEmptyIsUnreadableAmongItems) {
  const ParsedListing listing = List("-rw-rw-rw- 1 a b 1 Jan 31 2024 x\r\nFile not found\r\n");
  EXPECT_EQ(Names(listing), QByteArrayList({"x"}));
  EXPECT_EQ(listing.unreadable, 1);
  EXPECT_EQ(List("File not found\r\nFile not found\r\n").unreadable, 2);
  EXPECT_TRUE(ParseFacts("File not found\r\n").items.empty());
  EXPECT_TRUE(ParseFacts("File not found\r\n").IsUnreadable());
}

TEST(ListParserTest, NothingAtAllIsAnEmptyFolder) {
  EXPECT_EQ(List("").unreadable, 0);
  EXPECT_EQ(List("\r\n\r\n").unreadable, 0);
  EXPECT_EQ(ParseFacts("").unreadable, 0);
  EXPECT_EQ(ParseFacts("\r\n").unreadable, 0);
}

TEST(ListParserTest, LinesEndInManyWays) {
  const QByteArray one = "-rw-rw-rw- 1 a b 1 Jan 31 2024 x";
  const QByteArray two = "-rw-rw-rw- 1 a b 1 Jan 31 2024 y";
  for (const QByteArray& end :
       {QByteArray("\r\n"), QByteArray("\n"), QByteArray("\r\r\n"), QByteArray("\r")}) {
    EXPECT_EQ(Names(List(one + end + two + end)), QByteArrayList({"x", "y"}));
    EXPECT_EQ(Names(List(one + end + two)), QByteArrayList({"x", "y"}));
  }
  EXPECT_EQ(Names(List(one + "\r\n" + QByteArray("\0", 1))), QByteArrayList({"x"}));
}

TEST(ListParserTest, ThePartThatIsShownIsShort) {
  const ParsedListing listing = List(QByteArray(100000, 'x') + "\r\nsecond\r\n");
  EXPECT_EQ(listing.unreadable, 2);
  EXPECT_EQ(listing.firstUnreadable, QByteArray(200, 'x'));
}

}  // namespace
}  // namespace trevane::ftp::test
