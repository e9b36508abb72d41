#include "base/RunTimeError.h"
#include "engine/substitute/FileOptions.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;
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
    testing::Values(PathCase{"EmptyOptions", u"Path=a\\b,"_s, u"a\\b"_s, Create::Nothing},
                    PathCase{"Create", u"Path=a,@Create=2"_s, u"a"_s, Create::Folder},
                    PathCase{"CommaInFolder", u"Path=a,b,@Create=1"_s, u"a,b"_s, Create::File},
                    PathCase{"CommaInFolderAndEmptyOptions", u"Path=a,b,"_s, u"a,b"_s, Create::Nothing},
                    PathCase{"FolderEndsWithComma", u"Path=a,,@Create=2"_s, u"a,"_s, Create::Folder},
                    PathCase{"FolderEndsWithCommaAndEmptyOptions", u"Path=a,,"_s, u"a,"_s, Create::Nothing},
                    PathCase{"FolderLooksLikeAnOption", u"Path=a,@Create=2,"_s, u"a,@Create=2"_s,
                             Create::Nothing},
                    PathCase{"SeveralOptions", u"Path=a,OverWrite=True,@Create=1"_s, u"a"_s, Create::File},
                    PathCase{"NoComma", u"Path=a"_s, u"a"_s, Create::Nothing},
                    PathCase{"EmptyFolder", u"Path=,@Create=2"_s, u""_s, Create::Folder}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(FileOptionsTest, ReadsTheOverwriteOptionInAnyCase) {
  EXPECT_TRUE(ParseFileOptions(u"OverWrite=True"_s).overWrite);
  EXPECT_TRUE(ParseFileOptions(u"overwrite=true"_s).overWrite);
  EXPECT_FALSE(ParseFileOptions(u"OverWrite=False"_s).overWrite);
  EXPECT_FALSE(ParseFileOptions({}).overWrite);
}

TEST(FileOptionsTest, RefusesWhatItDoesNotKnow) {
  for (const QString& option : {u"@Create=3"_s, u"@Create="_s, u"Other"_s, u"@Create=1,x"_s}) {
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
  EXPECT_EQ(ParsePathOption(u"Path=a,b,"_s), u"a,b,"_s);
  EXPECT_EQ(ParsePathOption(u"Path="_s), u""_s);
  EXPECT_THROW(static_cast<void>(ParsePathOption(u"@Create=1"_s)), RunTimeError);
}

}  // namespace
}  // namespace trevane
