#include "engine/files/WholeFile.h"
#include "engine/providers/ftp/FtpErrors.h"
#include "tests/engine/providers/ftp/FtpServerWorld.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace trevane::test {
namespace {

/// How a server ends a line on which nothing was asked for a while.
struct Shape {
  const char* name;
  FtpVices vices;
};

const std::vector<Shape>& Shapes() {
  static const std::vector<Shape> kShapes{
      {"Silently", {}},
      {"WithWords", {.lastWords = "421 Timeout"}},
      {"OverTls", {.tls = FtpVices::Tls::Explicit}},
      {"OverTlsWithWords", {.lastWords = "421 Timeout", .tls = FtpVices::Tls::Explicit}},
      {"OverTlsAbruptly", {.tls = FtpVices::Tls::Explicit, .endsTlsAbruptly = true}}};
  return kShapes;
}

class FtpIdleCut : public ::testing::TestWithParam<size_t> {
 protected:
  FtpServerWorld world_{Shapes()[GetParam()].vices};
};

INSTANTIATE_TEST_SUITE_P(All, FtpIdleCut, ::testing::Range(size_t{0}, Shapes().size()),
                         [](const ::testing::TestParamInfo<size_t>& info) {
                           return std::string(Shapes()[info.param].name);
                         });

TEST_P(FtpIdleCut, TheNextCallConnectsAgain) {
  for (const FtpWork& work : FtpWorks()) {
    SCOPED_TRACE(work.name);
    world_.Clear();
    work.prepare(world_);
    {
      const auto files = world_.Open();
      static_cast<void>(files->List(QStringLiteral("W")));
      world_.Cut();
      world_.Server().Script().ClearCounts();
      EXPECT_FALSE(Fails([&] { work.run(*files); }));
    }
    EXPECT_EQ(world_.Server().Counts().connections, 1);
    world_.AwaitQuiet();
    work.check(world_, false);
  }
}

TEST_P(FtpIdleCut, AnUploadThatIsCutIsTold) {
  world_.Write("F.SRC", "old content");
  const auto files = world_.Open();
  {
    const auto sink = files->OpenSink(FtpServerWorld::At("F.SRC"), {.mode = SinkRequest::Mode::Replace});
    sink->Write(LongContent('n'));
    world_.Server().DropAll();
    EXPECT_TRUE(Fails([&] {
      // More than can be under way.
      for (int i = 0; i < 1000; ++i) {
        sink->Write(LongContent('n'));
      }
      static_cast<void>(sink->Commit());
    }));
  }
  EXPECT_EQ(world_.Content("F.SRC"), "old content");
  EXPECT_EQ(ReadFile(*files, FtpServerWorld::At("F.SRC")), "old content");
  // What was built of the new content is taken away.
  EXPECT_TRUE(files->TakeLeftovers().empty());
  EXPECT_EQ(world_.Server().Tree().ChildrenOf("/W").size(), 1U);
}

TEST_P(FtpIdleCut, ADownloadThatIsCutIsTold) {
  world_.Write("F.SRC", QByteArray(20'000'000, 'o'));
  const auto files = world_.Open();
  const auto source = files->OpenSource(FtpServerWorld::At("F.SRC"));
  EXPECT_FALSE(source->Read(1000).isEmpty());
  world_.Server().DropAll();
  EXPECT_TRUE(Fails([&] {
    while (!source->Read(content::kLargestPiece).isEmpty()) {
    }
  }));
  EXPECT_EQ(files->List(QStringLiteral("W")).size(), 1U);
}

}  // namespace
}  // namespace trevane::test
