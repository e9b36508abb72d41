#include "engine/files/ProviderError.h"
#include "engine/files/WholeFile.h"
#include "engine/model/Content.h"
#include "tests/engine/providers/ftp/FtpServerWorld.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <utility>

namespace trevane::test {
namespace {

/// What came of a download.
struct Download {
  QByteArray content = {};
  bool hadWrongSize = false;
  std::optional<qint32> failure = {};
};

/// Files whose size a controller tells wrongly, or that it makes while they are read. With facts, and with
/// lines.
class FtpWrongSizes : public ::testing::TestWithParam<bool> {
 protected:
  static FtpVices Vices() {
    FtpVices vices;
    if (!GetParam()) {
      vices.missing = {"MLSD", "MLST"};
    }
    return vices;
  }
  void Forget(const QByteArray& command) {
    world_.Server().Script().Change([&](FtpVices& vices) { vices.missing.append(command); });
  }
  /// A file that is listed with a size, or with none (-1).
  void Add(std::optional<qint64> shown, std::function<QByteArray()> make) {
    world_.Write("F.DT", {});
    world_.Server().Tree().Change("/W/F.DT", [&](FtpTestItem& item) {
      item.shownSize = shown;
      item.make = std::move(make);
    });
  }
  void AnswerSize(const QByteArray& reply) {
    world_.Server().Script().SetHook(
        [reply](const QByteArray& name, const QByteArray& argument) -> std::optional<FtpFault> {
          const bool isAsked = name == "SIZE" && argument.endsWith("F.DT");
          return isAsked ? std::optional(FtpFault{FtpFault::Kind::Refuse, reply}) : std::nullopt;
        });
  }
  /// After a listing, which tells the size, as a copy reads it.
  [[nodiscard]] Download Read(qint64 offset = 0) {
    Download download;
    try {
      const auto files = world_.Open();
      static_cast<void>(files->List(QStringLiteral("W")));
      world_.Server().Script().ClearCounts();
      const auto source = files->OpenSource(FtpServerWorld::At("F.DT"), offset);
      for (QByteArray piece = source->Read(1000); !piece.isEmpty(); piece = source->Read(1000)) {
        download.content += piece;
      }
      download.hadWrongSize = source->HadWrongSize();
    } catch (const RunTimeError& failure) {
      download.failure = failure.Number();
    }
    return download;
  }
  [[nodiscard]] int Downloads() { return world_.Server().Count("RETR"); }

  FtpServerWorld world_{Vices()};
};

INSTANTIATE_TEST_SUITE_P(All, FtpWrongSizes, ::testing::Bool(),
                         [](const auto& info) { return std::string(info.param ? "Facts" : "Lines"); });

TEST_P(FtpWrongSizes, ARightSizeCostsNothingMore) {
  world_.Write("F.DT", LongContent('a'));
  const Download download = Read();
  EXPECT_EQ(download.content, LongContent('a'));
  EXPECT_FALSE(download.hadWrongSize);
  EXPECT_EQ(Downloads(), 1);
  EXPECT_LE(world_.Server().Count("SIZE"), 1);
}

TEST_P(FtpWrongSizes, AnUnknownSizeIsNoWrongOne) {
  Add(-1, [] { return LongContent('a'); });
  const Download download = Read();
  EXPECT_EQ(download.content, LongContent('a'));
  EXPECT_FALSE(download.hadWrongSize);
  EXPECT_EQ(Downloads(), 1);
}

TEST_P(FtpWrongSizes, WhatSizeTellsCountsAfterTheListing) {
  Add(17, [] { return LongContent('a'); });
  AnswerSize("213 40000");
  const Download download = Read();
  EXPECT_EQ(download.content, LongContent('a'));
  EXPECT_FALSE(download.hadWrongSize);
  EXPECT_EQ(Downloads(), 1);
}

TEST_P(FtpWrongSizes, AShorterFileThanListedArrivesBySize) {
  Add(50000, [] { return LongContent('a'); });
  AnswerSize("213 40000");
  const Download download = Read();
  EXPECT_EQ(download.content, LongContent('a'));
  EXPECT_TRUE(download.hadWrongSize) << "a copy would take it for cut off";
  EXPECT_EQ(Downloads(), 1);
  const auto files = world_.Open();
  files->Copy(FtpServerWorld::At("F.DT"), FtpServerWorld::At("G.DT"), false);
  EXPECT_EQ(world_.Content("G.DT"), LongContent('a'));
}

TEST_P(FtpWrongSizes, EqualContentsCountAsArrived) {
  for (const qint64 shown : {0, 17, 39999, 40001}) {
    SCOPED_TRACE(shown);
    Add(shown, [] { return LongContent('a'); });
    const Download download = Read();
    EXPECT_FALSE(download.failure);
    EXPECT_EQ(download.content, LongContent('a'));
    EXPECT_TRUE(download.hadWrongSize);
    EXPECT_EQ(Downloads(), 2);
  }
}

TEST_P(FtpWrongSizes, WithoutSizeItIsReadOnceMore) {
  for (const char* reply : {"500 Unknown command", "550 Not available", "213 no number", "213 -1"}) {
    SCOPED_TRACE(reply);
    Add(17, [] { return LongContent('a'); });
    AnswerSize(reply);
    const Download download = Read();
    // A server of lines that tells no size of it by SIZE is asked by its listing.
    EXPECT_FALSE(download.failure);
    EXPECT_EQ(download.content, LongContent('a'));
    EXPECT_TRUE(download.hadWrongSize);
    EXPECT_EQ(Downloads(), 2);
  }
}

TEST_P(FtpWrongSizes, OtherBytesAreAFailure) {
  auto read = std::make_shared<int>(0);
  Add(17, [read] { return LongContent(static_cast<char>('a' + (*read)++)); });
  EXPECT_EQ(Read().failure, providererror::kChanged);
  EXPECT_EQ(Downloads(), 2);
}

TEST_P(FtpWrongSizes, AnotherLengthIsAFailure) {
  for (const int step : {-1, 1, 100'000}) {
    SCOPED_TRACE(step);
    auto length = std::make_shared<int>(40000);
    Add(17, [length, step] { return QByteArray(std::exchange(*length, *length + step), 'a'); });
    EXPECT_EQ(Read().failure, providererror::kChanged);
  }
}

TEST_P(FtpWrongSizes, AnOffsetIsComparedFromThere) {
  Add(17, [] { return QByteArray("0123456789").repeated(4000); });
  const Download download = Read(5);
  EXPECT_FALSE(download.failure);
  EXPECT_EQ(download.content, QByteArray("0123456789").repeated(4000).sliced(5));
  EXPECT_TRUE(download.hadWrongSize);
}

TEST_P(FtpWrongSizes, ARefusedSecondReadIsAFailure) {
  for (const char* reply : {"450 Busy", "550 Failed to open file"}) {
    SCOPED_TRACE(reply);
    Add(17, [] { return LongContent('a'); });
    auto reads = std::make_shared<int>(0);
    const FtpFault refusal{FtpFault::Kind::Refuse, reply};
    world_.Server().Script().SetHook(
        [reads, refusal](const QByteArray& name, const QByteArray& /*argument*/) -> std::optional<FtpFault> {
          return name == "RETR" && ++*reads == 2 ? std::optional(refusal) : std::nullopt;
        });
    EXPECT_TRUE(Read().failure);
    EXPECT_EQ(*reads, 2);
  }
}

TEST_P(FtpWrongSizes, ASecondReadThatBreaksIsAFailure) {
  for (const FtpFault::Kind kind : {FtpFault::Kind::LoseData, FtpFault::Kind::LoseCommand}) {
    Add(17, [] { return LongContent('a'); });
    // The fourth block is the first one of the second time.
    const auto files = world_.Open();
    world_.Server().Script().ArmBlock(5, {kind, "426 Connection closed"});
    EXPECT_TRUE(Fails([&] { static_cast<void>(ReadFile(*files, FtpServerWorld::At("F.DT"))); }));
    EXPECT_EQ(world_.Server().Script().FaultCount(), 1);
    world_.Server().Script().Disarm();
  }
}

TEST_P(FtpWrongSizes, TheServersWordEndsADownload) {
  world_.Write("F.DT", LongContent('a'));
  for (const char* reply : {"426 Aborted", "451 Local error", "550 Read failed", "552 Too much"}) {
    SCOPED_TRACE(reply);
    const auto files = world_.Open();
    // All bytes come, and the right number of them.
    world_.Server().Script().ArmCommand(1, {FtpFault::Kind::DoAndRefuse, reply}, "RETR");
    EXPECT_TRUE(Fails([&] { static_cast<void>(ReadFile(*files, FtpServerWorld::At("F.DT"))); }));
    EXPECT_EQ(world_.Server().Script().FaultCount(), 1);
    world_.Server().Script().Disarm();
  }
}

TEST_P(FtpWrongSizes, ACopyWithinTheServerIsWhole) {
  Add(17, [] { return LongContent('a'); });
  const auto files = world_.Open();
  files->Copy(FtpServerWorld::At("F.DT"), FtpServerWorld::At("G.DT"), false);
  EXPECT_EQ(world_.Content("G.DT"), LongContent('a'));
}

}  // namespace
}  // namespace trevane::test
