#include "platform/SystemShellIcons.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

TEST(SystemShellIcons, KnownExtensionHasIconNamesAndATypeName) {
  SystemShellIcons icons;
  const auto text = icons.ForExtension(QStringLiteral(".TXT"));
  ASSERT_TRUE(text.has_value());
  ASSERT_FALSE(text->icon.themeNames.isEmpty());
  EXPECT_EQ(text->icon.themeNames.first(), QStringLiteral("text-plain"));
  EXPECT_TRUE(text->icon.themeNames.contains(QStringLiteral("text-x-generic")));
  EXPECT_FALSE(text->typeName.isEmpty());
  EXPECT_TRUE(text->icon.pixels.isEmpty());
}

TEST(SystemShellIcons, CaseOfTheExtensionDoesNotMatter) {
  SystemShellIcons icons;
  EXPECT_EQ(icons.ForExtension(QStringLiteral(".PNG"))->icon.themeNames,
            icons.ForExtension(QStringLiteral(".png"))->icon.themeNames);
  EXPECT_EQ(icons.ForExtension(QStringLiteral(".PNG"))->icon.index,
            icons.ForExtension(QStringLiteral(".png"))->icon.index);
}

TEST(SystemShellIcons, UnknownExtensionHasTheGenericIconAndNoTypeName) {
  SystemShellIcons icons;
  const auto unknown = icons.ForExtension(QStringLiteral(".QQZZ7"));
  ASSERT_TRUE(unknown.has_value());
  EXPECT_FALSE(unknown->icon.themeNames.isEmpty());
  EXPECT_TRUE(unknown->typeName.isEmpty());
}

TEST(SystemShellIcons, NameWithoutExtensionIsAFile) {
  SystemShellIcons icons;
  const auto plain = icons.ForExtension(QStringLiteral("."));
  ASSERT_TRUE(plain.has_value());
  EXPECT_EQ(plain->typeName, QStringLiteral("File"));
  EXPECT_EQ(plain->icon.index, icons.ForExtension(QStringLiteral(".QQZZ7"))->icon.index);
}

TEST(SystemShellIcons, EqualPicturesHaveEqualIndexesAndOthersDiffer) {
  SystemShellIcons icons;
  const qint32 text = icons.ForExtension(QStringLiteral(".TXT"))->icon.index;
  const qint32 picture = icons.ForExtension(QStringLiteral(".PNG"))->icon.index;
  const qint32 closed = icons.ForFolder(false)->icon.index;
  const qint32 open = icons.ForFolder(true)->icon.index;
  EXPECT_NE(text, picture);
  EXPECT_NE(text, closed);
  EXPECT_NE(closed, open);
  EXPECT_EQ(icons.ForExtension(QStringLiteral(".TXT"))->icon.index, text);
  EXPECT_EQ(icons.ForFolder(true)->icon.index, open);
}

TEST(SystemShellIcons, FoldersHaveTheThemesFolderIcons) {
  SystemShellIcons icons;
  EXPECT_EQ(icons.ForFolder(false)->icon.themeNames, QStringList{QStringLiteral("folder")});
  EXPECT_EQ(icons.ForFolder(true)->icon.themeNames,
            (QStringList{QStringLiteral("folder-open"), QStringLiteral("folder")}));
  EXPECT_EQ(icons.ForFolder(false)->typeName, QStringLiteral("Folder"));
  EXPECT_EQ(icons.ForFolder(true)->typeName, QStringLiteral("Folder"));
}

TEST(SystemShellIcons, ManyDifferentExtensionsKeepTheirAnswers) {
  SystemShellIcons icons;
  const qint32 text = icons.ForExtension(QStringLiteral(".TXT"))->icon.index;
  for (int i = 0; i < 5000; ++i) {
    EXPECT_TRUE(icons.ForExtension(QStringLiteral(".QZ%1").arg(i))->typeName.isEmpty());
  }
  EXPECT_EQ(icons.ForExtension(QStringLiteral(".TXT"))->icon.index, text);
}

TEST(SystemShellIcons, OddExtensionsAreAnswered) {
  SystemShellIcons icons;
  for (const QString& probe :
       {QStringLiteral(""), QStringLiteral("./"), QStringLiteral(".*"), QStringLiteral(".[a"),
        QStringLiteral(".") + QChar(0xDCFF), QStringLiteral(".") + QString(5000, u'x')}) {
    EXPECT_TRUE(icons.ForExtension(probe).has_value());
  }
}

}  // namespace
}  // namespace trevane
