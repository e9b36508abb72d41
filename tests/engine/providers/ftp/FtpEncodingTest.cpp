#include "engine/files/WholeFile.h"
#include "tests/engine/providers/ftp/FtpServerWorld.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace trevane::test {
namespace {

/// Names of a controller that knows no UTF-8.
struct Names {
  const char* name;
  const char* encoding;
  const char16_t* text;
  const char* bytes;
  const char16_t* otherText;
  const char* otherBytes;
  /// One that it cannot hold.
  const char16_t* foreign;
  /// Bytes that are no text; empty where all bytes are.
  const char* noText;
};

const std::vector<Names>& AllNames() {
  // A byte of the second one is a backslash in ASCII.
  static const std::vector<Names> kNames{
      {"Latin1", "ISO-8859-1", u"K\u00e4se f\u00fcr \u00d6l.src", "K\xE4se f\xFCr \xD6l.src",
       u"\u00dcbung.src",
       "\xDC"
       "bung.src",
       u"\u65e5\u672c.src", ""},
      {"ShiftJis", "Shift_JIS", u"\u30bd\u30d5\u30c8\u8868.src", "\x83\x5C\x83\x74\x83\x67\x95\x5C.src",
       u"\u65e5\u672c.src", "\x93\xFA\x96\x7B.src", u"K\u00e4se.src", "\xFF\xFE.src"},
      {"Utf8", "", u"\u00dcbung.src",
       "\xC3\x9C"
       "bung.src",
       u"\u65e5\u672c.src", "\xE6\x97\xA5\xE6\x9C\xAC.src", nullptr,
       "\xDC"
       "bung.src"}};
  return kNames;
}

using Case = std::tuple<size_t, bool>;

class FtpEncoding : public ::testing::TestWithParam<Case> {
 protected:
  static const Names& Given() { return AllNames()[std::get<0>(GetParam())]; }
  static FtpVices Vices() {
    FtpVices vices;
    vices.tellsUtf8 = std::string(Given().encoding).empty();
    if (!std::get<1>(GetParam())) {
      vices.missing = {"MLSD", "MLST"};
    }
    return vices;
  }
  [[nodiscard]] std::shared_ptr<FileSystem> Open() {
    return world_.OpenWith(
        [](FtpSettings& settings) { settings.encoding = QString::fromLatin1(Given().encoding); });
  }
  static QString At(const char16_t* name) { return QStringLiteral("W\\") + QString::fromUtf16(name); }
  [[nodiscard]] QByteArrayList Stored() {
    QByteArrayList names;
    for (const FtpTestItem& item : world_.Server().Tree().ChildrenOf("/W")) {
      names.append(item.name);
    }
    return names;
  }

  FtpServerWorld world_{Vices()};
};

INSTANTIATE_TEST_SUITE_P(All, FtpEncoding,
                         ::testing::Combine(::testing::Range(size_t{0}, AllNames().size()),
                                            ::testing::Bool()),
                         [](const ::testing::TestParamInfo<Case>& info) {
                           return std::string(AllNames()[std::get<0>(info.param)].name) +
                                  (std::get<1>(info.param) ? "Facts" : "Lines");
                         });

TEST_P(FtpEncoding, NamesAreThoseOfTheServer) {
  world_.Write(Given().bytes, "content");
  const auto files = Open();
  const Listing listing = files->List(QStringLiteral("W"));
  ASSERT_EQ(listing.size(), 1U);
  EXPECT_EQ(listing[0].name, QString::fromUtf16(Given().text));
  const QString path = At(Given().text);
  EXPECT_EQ(ReadFile(*files, path), "content");
  WriteFile(*files, path, "other content");
  EXPECT_EQ(world_.Content(Given().bytes), "other content");
  EXPECT_EQ(files->Stat(path).size, 13);
  WriteNewFile(*files, At(Given().otherText), "new");
  EXPECT_EQ(Stored().size(), 2);
  EXPECT_EQ(world_.Content(Given().otherBytes), "new");
  files->Remove(At(Given().otherText));
  files->Rename(path, At(Given().otherText), false);
  EXPECT_EQ(Stored(), QByteArrayList{Given().otherBytes});
  files->CreateFolder(path);
  WriteNewFile(*files, path + u'\\' + QString::fromUtf16(Given().text), "below");
  const QByteArray folder(Given().bytes);
  EXPECT_EQ(world_.Content(folder + '/' + folder), "below");
  EXPECT_EQ(files->List(path).size(), 1U);
  files->Remove(path);
  EXPECT_EQ(Stored(), QByteArrayList{Given().otherBytes});
}

TEST_P(FtpEncoding, ANameThatDoesNotFitIsNeverSent) {
  if (Given().foreign == nullptr) {
    GTEST_SKIP() << "it holds every name";
  }
  world_.Write("a.src", "content");
  const auto files = Open();
  static_cast<void>(files->List(QStringLiteral("W")));
  world_.Server().Script().ClearCounts();
  const QString path = At(Given().foreign);
  const std::vector<std::function<void()>> works{
      [&] { WriteNewFile(*files, path, "x"); }, [&] { files->CreateFolder(path); },
      [&] { files->Rename(QStringLiteral("W\\a.src"), path, false); },
      [&] { files->Copy(QStringLiteral("W\\a.src"), path, false); }};
  for (size_t i = 0; i < works.size(); ++i) {
    SCOPED_TRACE(i);
    try {
      works[i]();
      ADD_FAILURE() << "it was taken";
    } catch (const RunTimeError& failure) {
      EXPECT_EQ(failure.Number(), error::kInvalidName) << failure.what();
    }
  }
  for (const QByteArray& line : world_.Server().Counts().lines) {
    EXPECT_FALSE(line.startsWith("STOR") || line.startsWith("MKD") || line.startsWith("RN")) << line.data();
  }
  EXPECT_EQ(Stored(), QByteArrayList{"a.src"});
}

TEST_P(FtpEncoding, BytesThatAreNoTextCanBeWorkedWith) {
  const QByteArray bytes(Given().noText);
  if (bytes.isEmpty()) {
    GTEST_SKIP() << "all bytes are text";
  }
  world_.Write(bytes, "content");
  const auto files = Open();
  const Listing listing = files->List(QStringLiteral("W"));
  ASSERT_EQ(listing.size(), 1U);
  const QString path = QStringLiteral("W\\") + listing[0].name;
  EXPECT_EQ(ReadFile(*files, path), "content");
  EXPECT_EQ(files->ReadMany({path})[0].content, QByteArray("content"));
  WriteFile(*files, path, "other");
  EXPECT_EQ(Stored(), QByteArrayList{bytes});
  files->Copy(path, QStringLiteral("W\\b.src"), false);
  EXPECT_EQ(world_.Content("b.src"), "other");
  files->Rename(path, QStringLiteral("W\\c.src"), false);
  files->Rename(QStringLiteral("W\\c.src"), path, false);
  EXPECT_EQ(world_.Content(bytes), "other");
  files->Remove(path);
  EXPECT_EQ(Stored(), QByteArrayList{"b.src"});
}

/// A server that uses UTF-8 once it is told to, and Latin-1 before.
class FtpUtf8OnDemand : public ::testing::Test {
 protected:
  FtpServerWorld world_{{.latin1UntilTold = true}};
  const QString name_ = QStringLiteral("\u00dcbung \u65e5.src");
};

TEST_F(FtpUtf8OnDemand, AListingShowsWholeNames) {
  world_.Write(name_.toUtf8(), "content");
  const auto files = world_.Open();
  const Listing listing = files->List(QStringLiteral("W"));
  ASSERT_EQ(listing.size(), 1U);
  EXPECT_EQ(listing[0].name, name_);
  EXPECT_EQ(ReadFile(*files, QStringLiteral("W\\") + name_), "content");
  EXPECT_EQ(world_.Server().Count("OPTS"), 1);
}

TEST_F(FtpUtf8OnDemand, ANewFileHasItsName) {
  const auto files = world_.Open();
  WriteNewFile(*files, QStringLiteral("W\\") + name_, "content");
  EXPECT_EQ(world_.Content(name_.toUtf8()), "content");
  // Each connection is told.
  world_.Cut();
  EXPECT_EQ(ReadFile(*files, QStringLiteral("W\\") + name_), "content");
  EXPECT_EQ(world_.Server().Count("OPTS"), 2);
}

TEST(FtpUtf8, IsAskedForOnlyWhereItHelps) {
  FtpServerWorld world({});
  world.Write("plain.src", "content");
  const auto files = world.Open();
  static_cast<void>(files->List(QStringLiteral("W")));
  EXPECT_EQ(ReadFile(*files, FtpServerWorld::At("plain.src")), "content");
  EXPECT_EQ(world.Server().Count("OPTS"), 0);
  // Names that are UTF-8 need no word.
  world.Write("\xC3\x9C.src", "other");
  static_cast<void>(files->List(QStringLiteral("W")));
  EXPECT_EQ(ReadFile(*files, QStringLiteral("W\\\u00dc.src")), "other");
  EXPECT_EQ(world.Server().Count("OPTS"), 0);
}

TEST(FtpUtf8, IsNotAskedForWhereNothingOffersIt) {
  FtpServerWorld world({.tellsUtf8 = false});
  const auto files = world.Open();
  WriteNewFile(*files, QStringLiteral("W\\\u00dc.src"), "content");
  EXPECT_EQ(world.Content("\xC3\x9C.src"), "content");
  EXPECT_EQ(world.Server().Count("OPTS"), 0);
}

}  // namespace
}  // namespace trevane::test
