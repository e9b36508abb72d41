#include "engine/files/WholeFile.h"
#include "tests/engine/providers/ftp/FtpServerWorld.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace trevane::test {
namespace {

/// A content of many blocks.
constexpr int kBlock = 4096;

FtpVices SmallBlocks(FtpVices vices) {
  vices.block = kBlock;
  return vices;
}

/// Upload, replace, download.
constexpr size_t kTransfers = 3;

/// The blocks of a work that nothing disturbs.
int BlocksOf(FtpServerWorld& world, const FtpWork& work) {
  world.Clear();
  work.prepare(world);
  const auto files = world.Open();
  world.Server().Script().ClearCounts();
  EXPECT_FALSE(Fails([&] { work.run(*files); }));
  return world.Server().Counts().blocks;
}

class FtpBlockStalls : public ::testing::TestWithParam<size_t> {};

INSTANTIATE_TEST_SUITE_P(Works, FtpBlockStalls, ::testing::Range(size_t{0}, kTransfers),
                         [](const ::testing::TestParamInfo<size_t>& info) {
                           return std::string(FtpWorks()[info.param].name);
                         });

TEST_P(FtpBlockStalls, EndATransferAtAnyBlock) {
  const FtpWork& work = FtpWorks()[GetParam()];
  FtpServerWorld world({});
  const int blocks = BlocksOf(world, work);
  EXPECT_GE(blocks, 3);
  for (int at = 1; at <= blocks; ++at) {
    SCOPED_TRACE(at);
    world.Clear();
    work.prepare(world);
    const bool failed = Fails([&] {
      const auto files = world.Open(1);
      world.Server().Script().ArmBlock(at, {FtpFault::Kind::Stall, {}});
      work.run(*files);
    });
    world.Server().Script().Disarm();
    EXPECT_TRUE(failed);
    world.AwaitQuiet();
    work.check(world, failed);
  }
}

/// Files of a batch that replaces some.
struct Shape {
  const char* name;
  FtpVices vices;
};

const std::vector<Shape>& Shapes() {
  static const std::vector<Shape> kShapes{
      {"Present", {}},
      {"Lines", {.missing = {"MLSD", "MLST", "FEAT", "EPSV", "MDTM", "MFMT", "SITE"}}},
      {"RefusesOnto", {.renameOnto = FtpVices::Onto::RefusesMisleading}},
      {"EndsEarly", {.endsEarly = true}},
      {"Tls", {.tls = FtpVices::Tls::Explicit, .reuse = FtpVices::Reuse::Demanded}}};
  return kShapes;
}

struct Kind {
  const char* name;
  FtpFault fault;
};

const std::vector<Kind>& Kinds() {
  static const std::vector<Kind> kKinds{
      {"LoseLines", {FtpFault::Kind::LoseCommand, {}}},
      {"LoseData", {FtpFault::Kind::LoseData, "426 Connection closed; transfer aborted"}},
      {"LoseDataAndLie", {FtpFault::Kind::LoseData, "226 Transfer complete"}},
      {"EndsAndLies", {FtpFault::Kind::Refuse, "226 Transfer complete"}}};
  return kKinds;
}

class FtpDrops : public ::testing::TestWithParam<std::tuple<size_t, size_t>> {};

INSTANTIATE_TEST_SUITE_P(Matrix, FtpDrops,
                         ::testing::Combine(::testing::Range(size_t{0}, Shapes().size()),
                                            ::testing::Range(size_t{0}, Kinds().size())),
                         [](const ::testing::TestParamInfo<std::tuple<size_t, size_t>>& info) {
                           return std::string(Shapes()[std::get<0>(info.param)].name) +
                                  Kinds()[std::get<1>(info.param)].name;
                         });

TEST_P(FtpDrops, LeaveNoPartOfAFileOfABatch) {
  constexpr int kFiles = 4;
  const FtpFault& fault = Kinds()[std::get<1>(GetParam())].fault;
  const QByteArrayList names{"A.SRC", "B.SRC", "C.SRC", "D.SRC"};
  FtpServerWorld world(SmallBlocks(Shapes()[std::get<0>(GetParam())].vices));
  for (int at = 1;; at += 3) {
    SCOPED_TRACE(at);
    world.Clear();
    // The first two stand there.
    world.Write(names[0], QByteArray(10000, 'o'));
    world.Write(names[1], QByteArray(10000, 'p'));
    bool failed = false;
    {
      const auto files = world.Open();
      WriteNewFile(*files, FtpServerWorld::At("FIRST.SRC"), "learns");
      std::vector<NewContent> many;
      many.reserve(kFiles);
      for (int i = 0; i < kFiles; ++i) {
        const auto mode = i < 2 ? SinkRequest::Mode::Replace : SinkRequest::Mode::New;
        many.push_back({FtpServerWorld::At(names[i].constData()),
                        QByteArray(12000, static_cast<char>('a' + i)),
                        {.mode = mode}});
      }
      world.Server().Script().ArmBlock(at, fault);
      failed = Fails([&] {
        for (const WriteResult& result : files->WriteMany(many)) {
          if (result.failure) {
            throw *result.failure;
          }
        }
      });
    }
    const bool hasStruck = world.Server().Script().FaultCount() > 0;
    world.Server().Script().Disarm();
    world.AwaitQuiet();
    for (int i = 0; i < kFiles; ++i) {
      const QByteArray now = world.Content(names[i]);
      const QByteArray whole(12000, static_cast<char>('a' + i));
      const QByteArray old = i < 2 ? QByteArray(10000, i == 0 ? 'o' : 'p') : QByteArray("<none>");
      EXPECT_TRUE(now == whole || (failed && (now == old || (now == "<none>" && world.Has(old)))))
          << names[i].constData() << ": " << now.size() << " bytes";
    }
    EXPECT_FALSE(failed && !hasStruck);
    if (HasFailure() || !hasStruck) {
      EXPECT_GT(at, 9);
      return;
    }
  }
}

/// A server that begins a transfer without a word before it: the library takes no data from it.
TEST(FtpTransferEnds, ADownloadWithoutABeginningIsRefused) {
  FtpServerWorld world({.leavesOutStart = true});
  world.Write("F.SRC", LongContent('o'));
  try {
    static_cast<void>(ReadFile(*world.Open(), FtpServerWorld::At("F.SRC")));
    ADD_FAILURE() << "it was read";
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kNotSupported) << failure.what();
    EXPECT_TRUE(failure.Description().contains(QStringLiteral("without announcing them"))) << failure.what();
  }
}

TEST(FtpTransferEnds, AnUploadWithoutABeginning) {
  for (const bool exists : {false, true}) {
    FtpServerWorld world({.leavesOutStart = true});
    if (exists) {
      world.Write("F.SRC", LongContent('o'));
    }
    const bool failed =
        Fails([&] { WriteFile(*world.Open(2), FtpServerWorld::At("F.SRC"), LongContent('n')); });
    const QByteArray now = world.Content("F.SRC");
    EXPECT_TRUE(now == LongContent('n') || (failed && now == (exists ? LongContent('o') : "<none>")));
  }
}

/// The answer to a transfer comes long after its data.
TEST(FtpTransferEnds, ALateAnswerIsWaitedFor) {
  FtpServerWorld world({.endDelayMs = 1500});
  const auto files = world.Open(60);
  WriteNewFile(*files, FtpServerWorld::At("F.SRC"), LongContent('n'));
  EXPECT_EQ(world.Content("F.SRC"), LongContent('n'));
  EXPECT_EQ(ReadFile(*files, FtpServerWorld::At("F.SRC")), LongContent('n'));
}

/// It comes before them, and they are lost.
TEST(FtpTransferEnds, AnAnswerBeforeTheDataProvesNothing) {
  for (const FtpVices::Tls tls : {FtpVices::Tls::Off, FtpVices::Tls::Explicit}) {
    for (const size_t which : {size_t{0}, size_t{1}, size_t{2}}) {
      const FtpWork& work = FtpWorks()[which];
      SCOPED_TRACE(work.name);
      FtpServerWorld world(SmallBlocks({.endsEarly = true, .tls = tls}));
      const int blocks = BlocksOf(world, work);
      for (int at = 1; at <= blocks; at += 2) {
        SCOPED_TRACE(at);
        world.Clear();
        work.prepare(world);
        bool failed = false;
        {
          const auto files = world.Open();
          world.Server().Script().ArmBlock(at, {FtpFault::Kind::LoseData, "226 Transfer complete"});
          failed = Fails([&] { work.run(*files); });
        }
        world.Server().Script().Disarm();
        world.AwaitQuiet();
        EXPECT_TRUE(failed);
        work.check(world, failed);
      }
    }
  }
}

}  // namespace
}  // namespace trevane::test
