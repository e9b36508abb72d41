#include "platform/SystemShellIcons.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

TEST(SystemShellIcons, KnownExtensionHasIconNamesAndATypeName) {
  SystemShellIcons icons;
  const auto text = icons.ForExtension(u".TXT"_s);
  ASSERT_TRUE(text.has_value());
  ASSERT_FALSE(text->icon.themeNames.isEmpty());
  EXPECT_EQ(text->icon.themeNames.first(), u"text-plain"_s);
  EXPECT_TRUE(text->icon.themeNames.contains(u"text-x-generic"_s));
  EXPECT_FALSE(text->typeName.isEmpty());
  EXPECT_TRUE(text->icon.pixels.isEmpty());
}

TEST(SystemShellIcons, CaseOfTheExtensionDoesNotMatter) {
  SystemShellIcons icons;
  EXPECT_EQ(icons.ForExtension(u".PNG"_s)->icon.themeNames, icons.ForExtension(u".png"_s)->icon.themeNames);
  EXPECT_EQ(icons.ForExtension(u".PNG"_s)->icon.index, icons.ForExtension(u".png"_s)->icon.index);
}

TEST(SystemShellIcons, UnknownExtensionHasTheGenericIconAndNoTypeName) {
  SystemShellIcons icons;
  const auto unknown = icons.ForExtension(u".QQZZ7"_s);
  ASSERT_TRUE(unknown.has_value());
  EXPECT_FALSE(unknown->icon.themeNames.isEmpty());
  EXPECT_TRUE(unknown->typeName.isEmpty());
}

TEST(SystemShellIcons, NameWithoutExtensionIsAFile) {
  SystemShellIcons icons;
  const auto plain = icons.ForExtension(u"."_s);
  ASSERT_TRUE(plain.has_value());
  EXPECT_EQ(plain->typeName, u"File"_s);
  EXPECT_EQ(plain->icon.index, icons.ForExtension(u".QQZZ7"_s)->icon.index);
}

TEST(SystemShellIcons, EqualPicturesHaveEqualIndexesAndOthersDiffer) {
  SystemShellIcons icons;
  const qint32 text = icons.ForExtension(u".TXT"_s)->icon.index;
  const qint32 picture = icons.ForExtension(u".PNG"_s)->icon.index;
  const qint32 closed = icons.ForFolder(false)->icon.index;
  const qint32 open = icons.ForFolder(true)->icon.index;
  EXPECT_NE(text, picture);
  EXPECT_NE(text, closed);
  EXPECT_NE(closed, open);
  EXPECT_EQ(icons.ForExtension(u".TXT"_s)->icon.index, text);
  EXPECT_EQ(icons.ForFolder(true)->icon.index, open);
}

TEST(SystemShellIcons, FoldersHaveTheThemesFolderIcons) {
  SystemShellIcons icons;
  EXPECT_EQ(icons.ForFolder(false)->icon.themeNames, QStringList{u"folder"_s});
  EXPECT_EQ(icons.ForFolder(true)->icon.themeNames, (QStringList{u"folder-open"_s, u"folder"_s}));
  EXPECT_EQ(icons.ForFolder(false)->typeName, u"Folder"_s);
  EXPECT_EQ(icons.ForFolder(true)->typeName, u"Folder"_s);
}

TEST(SystemShellIcons, ManyDifferentExtensionsKeepTheirAnswers) {
  SystemShellIcons icons;
  const qint32 text = icons.ForExtension(u".TXT"_s)->icon.index;
  for (int i = 0; i < 5000; ++i) {
    EXPECT_TRUE(icons.ForExtension(u".QZ%1"_s.arg(i))->typeName.isEmpty());
  }
  EXPECT_EQ(icons.ForExtension(u".TXT"_s)->icon.index, text);
}

TEST(SystemShellIcons, OddExtensionsAreAnswered) {
  SystemShellIcons icons;
  for (const QString& probe :
       {u""_s, u"./"_s, u".*"_s, u".[a"_s, u"."_s + QChar(0xDCFF), u"."_s + QString(5000, u'x')}) {
    EXPECT_TRUE(icons.ForExtension(probe).has_value());
  }
}

}  // namespace
}  // namespace trevane
