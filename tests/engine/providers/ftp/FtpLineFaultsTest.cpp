#include "tests/engine/providers/ftp/FtpServerWorld.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <tuple>
#include <vector>

namespace trevane::test {
namespace {

struct Shape {
  const char* name;
  FtpVices vices;
};

const std::vector<Shape>& Shapes() {
  static const std::vector<Shape> kShapes{
      {"Present", {}},
      {"Old",
       {.missing = {"MLSD", "MLST", "FEAT", "EPSV", "MDTM", "MFMT", "SITE"},
        .renameOnto = FtpVices::Onto::RefusesMisleading}},
      {"Tls", {.tls = FtpVices::Tls::Explicit, .reuse = FtpVices::Reuse::Demanded}}};
  return kShapes;
}

struct Kind {
  const char* name;
  FtpFault fault;
};

const std::vector<Kind>& Kinds() {
  static const std::vector<Kind> kKinds{
      {"LoseCommand", {FtpFault::Kind::LoseCommand, {}}},
      {"LoseAnswer", {FtpFault::Kind::LoseAnswer, {}}},
      {"Busy", {FtpFault::Kind::Refuse, "450 Busy"}},
      {"Refused", {FtpFault::Kind::Refuse, "550 Requested action not taken"}},
      {"Full", {FtpFault::Kind::Refuse, "452 Insufficient storage"}},
      {"DoneAndRefused", {FtpFault::Kind::DoAndRefuse, "451 Local error"}},
      {"SentAway", {FtpFault::Kind::Refuse, "421 Service not available"}},
      {"Garbage", {FtpFault::Kind::Refuse, "\x01\xFF no reply\r\n-\r\n999999 x\r\n500 Unknown command"}}};
  return kKinds;
}

using Case = std::tuple<size_t, size_t>;

/// Runs a work again and again, the fault one step later each time, until it strikes no more. How often it
/// has.
int SufferEach(FtpServerWorld& world, const FtpWork& work, int timeout,
               const std::function<void(FtpTestScript& script, int at)>& arm) {
  for (int at = 1;; ++at) {
    SCOPED_TRACE(work.name);
    SCOPED_TRACE(at);
    world.Clear();
    work.prepare(world);
    bool failed = false;
    {
      const auto files = world.Open(timeout);
      // The log-on is another matter.
      arm(world.Server().Script(), at);
      failed = Fails([&] { work.run(*files); });
    }
    const bool hasStruck = world.Server().Script().FaultCount() > 0;
    world.Server().Script().Disarm();
    world.AwaitQuiet();
    work.check(world, failed);
    EXPECT_FALSE(failed && !hasStruck);
    if (::testing::Test::HasFailure() || !hasStruck) {
      return at - 1;
    }
  }
}

class FtpLineFaults : public ::testing::TestWithParam<Case> {};

TEST_P(FtpLineFaults, LoseNothingAtAnyCommand) {
  const Kind& kind = Kinds()[std::get<1>(GetParam())];
  FtpServerWorld world(Shapes()[std::get<0>(GetParam())].vices);
  for (const FtpWork& work : FtpWorks()) {
    const auto arm = [&](FtpTestScript& script, int at) { script.ArmCommand(at, kind.fault); };
    EXPECT_GT(SufferEach(world, work, 20, arm), 0) << work.name;
    if (HasFailure()) {
      break;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Matrix, FtpLineFaults,
                         // Without TLS: it makes no other commands.
                         ::testing::Combine(::testing::Range(size_t{0}, size_t{2}),
                                            ::testing::Range(size_t{0}, Kinds().size())),
                         [](const ::testing::TestParamInfo<Case>& info) {
                           return std::string(Shapes()[std::get<0>(info.param)].name) +
                                  Kinds()[std::get<1>(info.param)].name;
                         });

/// Of the works that pass a content.
class FtpBlockFaults : public ::testing::TestWithParam<Case> {};

const std::vector<Kind>& BlockKinds() {
  static const std::vector<Kind> kKinds{
      {"LoseLines", {FtpFault::Kind::LoseCommand, {}}},
      {"LoseData", {FtpFault::Kind::LoseData, "426 Connection closed; transfer aborted"}},
      {"LoseDataAndLie", {FtpFault::Kind::LoseData, "226 Transfer complete"}},
      {"Full", {FtpFault::Kind::Refuse, "452 Disk full"}},
      {"Refused", {FtpFault::Kind::Refuse, "550 Error"}},
      {"EndsAndLies", {FtpFault::Kind::Refuse, "226 Transfer complete"}}};
  return kKinds;
}

TEST_P(FtpBlockFaults, LoseNothingAtAnyBlock) {
  const Kind& kind = BlockKinds()[std::get<1>(GetParam())];
  FtpServerWorld world(Shapes()[std::get<0>(GetParam())].vices);
  for (size_t i = 0; i < 3 && !HasFailure(); ++i) {
    const auto arm = [&](FtpTestScript& script, int at) { script.ArmBlock(at, kind.fault); };
    // Three blocks of a content, if no more.
    EXPECT_GE(SufferEach(world, FtpWorks()[i], 20, arm), 3) << FtpWorks()[i].name;
  }
}

INSTANTIATE_TEST_SUITE_P(Matrix, FtpBlockFaults,
                         ::testing::Combine(::testing::Range(size_t{0}, Shapes().size()),
                                            ::testing::Range(size_t{0}, BlockKinds().size())),
                         [](const ::testing::TestParamInfo<Case>& info) {
                           return std::string(Shapes()[std::get<0>(info.param)].name) +
                                  BlockKinds()[std::get<1>(info.param)].name;
                         });

TEST(FtpStalls, ASilentServerEndsAReplacementAtAnyCommand) {
  const FtpWork& work = FtpWorks()[1];
  FtpServerWorld world({});
  work.prepare(world);
  int commands = 0;
  {
    const auto files = world.Open();
    world.Server().Script().ClearCounts();
    work.run(*files);
    commands = static_cast<int>(world.Server().Counts().lines.size());
  }
  int struck = 0;
  for (int at = 1; at <= commands; ++at) {
    SCOPED_TRACE(at);
    world.Clear();
    work.prepare(world);
    // On a busy machine any answer may take longer than the silence that ends a call.
    const bool failed = Fails([&] {
      const auto files = world.Open(1);
      world.Server().Script().ArmCommand(at, {FtpFault::Kind::Stall, {}});
      work.run(*files);
    });
    struck += world.Server().Script().FaultCount();
    world.Server().Script().Disarm();
    world.AwaitQuiet();
    work.check(world, failed);
  }
  EXPECT_GT(struck, 0);
}

}  // namespace
}  // namespace trevane::test
