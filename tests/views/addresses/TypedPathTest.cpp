#include "platform/NameCodec.h"
#include "views/addresses/TypedPath.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

const QString kHome = u"/home/anna"_s;

TEST(TypedPathTest, PathsFromTheRootAreCleaned) {
  for (const QString& text : {u"/srv/data"_s, u" /srv/data/ "_s, u"\"/srv/data\""_s, u"/srv/./x/../data"_s}) {
    EXPECT_EQ(TypedPath(text, kHome), u"/srv/data"_s) << text.toStdString();
  }
  EXPECT_EQ(TypedPath(u"/"_s, kHome), u"/"_s);
}

TEST(TypedPathTest, PathsFromADriveGetItsSeparator) {
  EXPECT_EQ(TypedPath(u"C:\\Programs\\"_s, kHome), u"C:\\Programs"_s);
  EXPECT_EQ(TypedPath(u"c:/programs"_s, kHome), u"c:\\programs"_s);
  EXPECT_EQ(TypedPath(u"C:"_s, kHome), u"C:"_s);
}

TEST(TypedPathTest, ATildeIsTheHomeFolder) {
  EXPECT_EQ(TypedPath(u"~"_s, kHome), kHome);
  EXPECT_EQ(TypedPath(u"~/"_s, kHome), kHome);
  EXPECT_EQ(TypedPath(u"~/cells/one"_s, kHome), kHome + u"/cells/one"_s);
  EXPECT_EQ(TypedPath(u"~\\cells\\one"_s, kHome), kHome + u"/cells/one"_s);
  EXPECT_EQ(TypedPath(u"~\\cells"_s, u"C:/Users/anna"_s), u"C:\\Users\\anna\\cells"_s);
  EXPECT_EQ(TypedPath(u"~bert/cells"_s, kHome), QString()) << "another one's is not known";
  EXPECT_EQ(TypedPath(u"~1"_s, kHome), QString());
}

TEST(TypedPathTest, AFileUrlNamesAFileOfThisMachine) {
  EXPECT_EQ(TypedPath(u"file:///srv/a%20b"_s, kHome), u"/srv/a b"_s);
  EXPECT_EQ(TypedPath(u"FILE://localhost/srv/%C3%A4"_s, kHome), u"/srv/\u00E4"_s);
  EXPECT_EQ(TypedPath(u"file:/srv/a#b?c"_s, kHome), u"/srv/a#b?c"_s);
  EXPECT_EQ(TypedPath(u"file:///C:/Users/x"_s, kHome), u"C:\\Users\\x"_s);
  EXPECT_EQ(TypedPath(u"file:///srv/%FFx"_s, kHome), u"/srv/"_s + DecodeBytes("\xFFx"));
  EXPECT_EQ(TypedPath(u"\"file:///srv/end%20\""_s, kHome), u"/srv/end "_s);
  EXPECT_EQ(TypedPath(u"file://elsewhere/srv"_s, kHome), QString());
  EXPECT_EQ(TypedPath(u"file://"_s, kHome), QString());
}

TEST(TypedPathTest, EverythingElseIsNoPath) {
  for (const QString& text :
       {u""_s, u"Workspace\\My Computer\\C:"_s, u"readme.txt"_s, u"1:\\x"_s, u"\\x"_s}) {
    EXPECT_EQ(TypedPath(text, kHome), QString()) << text.toStdString();
  }
}

}  // namespace
}  // namespace trevane::test
