#include "base/RunTimeError.h"
#include "engine/substitute/FileOptions.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

using Create = FileOptions::Create;

struct PathCase {
  const char* name;
  QString option;
  QString folder;
  Create create;
};

class PathOption : public testing::TestWithParam<PathCase> {};

TEST_P(PathOption, KeepsTheCommasOfTheFolder) {
  const FileOptions options = ParseFileOptions(GetParam().option);
  ASSERT_TRUE(options.folder.has_value());
  EXPECT_EQ(*options.folder, GetParam().folder);
  EXPECT_EQ(options.create, GetParam().create);
}

INSTANTIATE_TEST_SUITE_P(
    All, PathOption,
    testing::Values(
        PathCase{"EmptyOptions", QStringLiteral("Path=a\\b,"), QStringLiteral("a\\b"), Create::Nothing},
        PathCase{"Create", QStringLiteral("Path=a,@Create=2"), QStringLiteral("a"), Create::Folder},
        PathCase{"CommaInFolder", QStringLiteral("Path=a,b,@Create=1"), QStringLiteral("a,b"), Create::File},
        PathCase{"CommaInFolderAndEmptyOptions", QStringLiteral("Path=a,b,"), QStringLiteral("a,b"),
                 Create::Nothing},
        PathCase{"FolderEndsWithComma", QStringLiteral("Path=a,,@Create=2"), QStringLiteral("a,"),
                 Create::Folder},
        PathCase{"FolderEndsWithCommaAndEmptyOptions", QStringLiteral("Path=a,,"), QStringLiteral("a,"),
                 Create::Nothing},
        PathCase{"FolderLooksLikeAnOption", QStringLiteral("Path=a,@Create=2,"),
                 QStringLiteral("a,@Create=2"), Create::Nothing},
        PathCase{"SeveralOptions", QStringLiteral("Path=a,OverWrite=True,@Create=1"), QStringLiteral("a"),
                 Create::File},
        PathCase{"NoComma", QStringLiteral("Path=a"), QStringLiteral("a"), Create::Nothing},
        PathCase{"EmptyFolder", QStringLiteral("Path=,@Create=2"), QStringLiteral(""), Create::Folder}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(FileOptionsTest, ReadsTheOverwriteOptionInAnyCase) {
  EXPECT_TRUE(ParseFileOptions(QStringLiteral("OverWrite=True")).overWrite);
  EXPECT_TRUE(ParseFileOptions(QStringLiteral("overwrite=true")).overWrite);
  EXPECT_FALSE(ParseFileOptions(QStringLiteral("OverWrite=False")).overWrite);
  EXPECT_FALSE(ParseFileOptions({}).overWrite);
}

TEST(FileOptionsTest, RefusesUnknownOptions) {
  for (const QString& option : {QStringLiteral("@Create=3"), QStringLiteral("@Create="),
                                QStringLiteral("Other"), QStringLiteral("@Create=1,x")}) {
    try {
      static_cast<void>(ParseFileOptions(option));
      ADD_FAILURE() << option.toStdString();
    } catch (const RunTimeError& failure) {
      EXPECT_EQ(failure.Number(), error::kInvalidParameter);
    }
  }
}

TEST(FileOptionsTest, AControllersPathOptionIsAllFolder) {
  EXPECT_EQ(ParsePathOption({}), std::nullopt);
  EXPECT_EQ(ParsePathOption(QStringLiteral("Path=a,b,")), QStringLiteral("a,b,"));
  EXPECT_EQ(ParsePathOption(QStringLiteral("Path=")), QStringLiteral(""));
  EXPECT_THROW(static_cast<void>(ParsePathOption(QStringLiteral("@Create=1"))), RunTimeError);
}

}  // namespace
}  // namespace trevane
