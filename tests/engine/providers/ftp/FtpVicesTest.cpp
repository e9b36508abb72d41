#include "tests/engine/providers/ftp/FtpServerWorld.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

namespace trevane::test {
namespace {

struct Vice {
  const char* name;
  FtpVices vices = {};
  /// The works that may fail, and leave all as it was; all others must succeed.
  QByteArrayList mayFail = {};
  /// Nothing can be done: even the connection may be refused.
  bool isHopeless = false;
};

using List = FtpVices::List;
using Odd = FtpVices::Odd;
using Onto = FtpVices::Onto;
using Reuse = FtpVices::Reuse;
using Tls = FtpVices::Tls;

const QByteArrayList kWrites{"Upload", "Replace"};
const QByteArrayList kRenames{"Rename", "RenameOver"};

const std::vector<Vice>& Vices() {
  static const std::vector<Vice> kVices{
      {"None"},
      {"NoFacts", {.missing = {"MLSD", "MLST"}}},
      {"NoFeatures", {.missing = {"FEAT"}}},
      {"NoExtendedPassive", {.missing = {"EPSV"}}},
      {"NoSize", {.missing = {"SIZE"}}},
      {"NoDates", {.missing = {"MDTM", "MFMT"}}},
      {"NoRestart", {.missing = {"REST"}}},
      {"NoRename", {.missing = {"RNFR", "RNTO"}}, kRenames},
      {"NoFolders", {.missing = {"MKD", "RMD"}}},
      {"NoPwdNorNoop", {.missing = {"PWD", "NOOP"}}},
      {"InsistsOnRename", {.insistsOnRename = true}},
      {"RefusesOnto", {.renameOnto = Onto::Refuses}},
      {"RefusesOntoMisleading", {.renameOnto = Onto::RefusesMisleading}},
      {"RefusesOverwriting", {.refusesOverwriting = true}},
      {"OnlyKnownNames", {.refusesNewNames = true}, {"Upload", "Rename", "RenameOver"}},
      {"WrongAddress", {.missing = {"EPSV"}, .passiveAddress = "10,0,0,1"}},
      {"EightColumns", {.missing = {"MLSD", "MLST"}, .list = List::EightColumns}},
      {"DosLines", {.missing = {"MLSD", "MLST"}, .list = List::Dos}},
      {"Days", {.missing = {"MLSD", "MLST"}, .dates = FtpVices::Dates::Days}},
      {"OtherZone", {.missing = {"MLSD", "MLST"}, .zoneMinutes = -330}},
      {"EmptyForMissing",
       {.missing = {"MLSD", "MLST"}, .listOfFile = Odd::EmptyDone, .listOfMissing = Odd::EmptyDone}},
      {"EndsEarly", {.endsEarly = true}},
      {"EndsLate", {.endDelayMs = 50}},
      {"ManyLines", {.repliesInManyLines = true}},
      {"ClosesPipelined", {.closesPipelined = true}},
      {"DropsPipelined", {.dropsPipelined = true}},
      {"AnswersOncePerSegment", {.answersOncePerSegment = true}},
      {"DropsPipelinedWithoutFacts", {.missing = {"MLSD", "MLST"}, .dropsPipelined = true}},
      {"ShortNames", {.shortNames = true, .capitalNames = true}},
      {"NoBlanksNorDots", {.refusesBlanks = true, .refusesDotNames = true}},
      {"ShortCommands", {.longestCommand = 80}},
      {"CutsCommands", {.longestCommand = 80, .cutsLongCommands = true}},
      {"ShortExtensions", {.longestExtension = 3}},
      {"WritesByExtension", {.users = {{"joe", {.password = "secret", .writable = {"src"}}}}}},
      {"MayNotWrite",
       {.users = {{"joe", {.password = "secret", .mayWrite = false}}}},
       {"Upload", "Replace", "Rename", "RenameOver", "Remove"}},
      {"FullDisk", {.room = 20000}, kWrites},
      {"FullDiskOtherWords", {.room = 20000, .full = "552 Aborted"}, kWrites},
      {"OneClient", {.mostClients = 1}},
      {"NoPassword", {.asksNoPassword = true}},
      {"LongGreeting", {.greeting = "220-Welcome\r\n to the cell\r\n220 Ready"}},
      {"StartsElsewhere", {.start = "/W"}},
      {"RefusesData", {.refusesData = true}, {}, true},
      {"WrongPassword", {.users = {{"joe", {.password = "other"}}}}, {}, true},
      {"WantsAccount", {.account = "cell"}, {}, true},
      {"Explicit", {.tls = Tls::Explicit, .demandsTls = true}},
      {"Implicit", {.tls = Tls::Implicit}},
      {"UpToTls12", {.tls = Tls::Explicit, .upToTls12 = true}},
      {"ReuseDemanded", {.tls = Tls::Explicit, .reuse = Reuse::Demanded}},
      {"ReuseImpossible", {.tls = Tls::Explicit, .reuse = Reuse::Impossible}},
      {"NoProtection", {.tls = Tls::Explicit, .refusesProtection = true}, {}, true},
      {"OldAndOdd",
       {.missing = {"MLSD", "MLST", "FEAT", "EPSV", "EPRT", "MDTM", "MFMT", "REST", "SITE", "OPTS", "NOOP"},
        .closesPipelined = true,
        .longestCommand = 80,
        .shortNames = true,
        .capitalNames = true,
        .renameOnto = Onto::RefusesMisleading,
        .list = List::EightColumns,
        .dates = FtpVices::Dates::Days,
        .listOfFile = Odd::EmptyDone,
        .listOfMissing = Odd::EmptyDone,
        .listCutsAtBlank = true,
        .passiveAddress = "10,0,0,1"}},
      {"OldWithoutRename",
       {.mostClients = 1,
        .missing = {"MLSD", "MLST", "FEAT", "EPSV", "SIZE", "MDTM", "REST", "RNFR", "RNTO", "MKD", "PWD"},
        .repliesInManyLines = true,
        .list = List::Dos},
       kRenames},
  };
  return kVices;
}

class FtpVicesTest : public ::testing::TestWithParam<size_t> {};

TEST_P(FtpVicesTest, IsDoneRightOrFailsClearly) {
  const Vice& vice = Vices()[GetParam()];
  for (const FtpWork& work : FtpWorks()) {
    SCOPED_TRACE(work.name);
    FtpServerWorld world(vice.vices);
    work.prepare(world);
    QString words;
    const bool failed = Fails([&] {
      try {
        work.run(*world.Open());
      } catch (const RunTimeError& failure) {
        words = failure.Description();
        throw;
      }
    });
    world.AwaitQuiet();
    work.check(world, failed);
    EXPECT_TRUE(!failed || vice.isHopeless || vice.mayFail.contains(work.name)) << words.toStdString();
  }
}

TEST_P(FtpVicesTest, ABatchIsWrittenOrFailsClearly) {
  constexpr int kFiles = 9;
  const Vice& vice = Vices()[GetParam()];
  FtpServerWorld world(vice.vices);
  std::vector<NewContent> many;
  many.reserve(kFiles);
  for (int i = 0; i < kFiles; ++i) {
    many.push_back({FtpServerWorld::At("F%1.SRC").arg(i), LongContent(static_cast<char>('a' + i)), {}});
    many.back().request.traits.modified.msecs = 1600000000000;
  }
  std::vector<WriteResult> results;
  const bool failed = Fails([&] {
    // Twice, so that what was learnt is used.
    const std::shared_ptr<FileSystem> files = world.Open();
    results = files->WriteMany(many);
    for (WriteResult& result : results) {
      if (result.failure) {
        throw *result.failure;
      }
    }
    for (NewContent& each : many) {
      each.name.replace(u'F', u'G');
    }
    results = files->WriteMany(many);
    for (WriteResult& result : results) {
      if (result.failure) {
        throw *result.failure;
      }
    }
  });
  world.AwaitQuiet();
  for (int i = 0; i < kFiles; ++i) {
    const QByteArray content = LongContent(static_cast<char>('a' + i));
    for (const char* letter : {"F", "G"}) {
      const QByteArray now = world.Content(letter + QByteArray::number(i) + ".SRC");
      EXPECT_TRUE(now == content || (failed && now == "<none>")) << letter << i;
    }
  }
  EXPECT_TRUE(!failed || vice.isHopeless || vice.mayFail.contains("Upload"));
  if (!failed) {
    EXPECT_EQ(world.Server().Tree().ChildrenOf("/W").size(), size_t{2 * kFiles});
  }
}

INSTANTIATE_TEST_SUITE_P(All, FtpVicesTest, ::testing::Range(size_t{0}, Vices().size()),
                         [](const ::testing::TestParamInfo<size_t>& info) {
                           return std::string(Vices()[info.param].name);
                         });

}  // namespace
}  // namespace trevane::test
