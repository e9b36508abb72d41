#include "base/RunTimeError.h"
#include "engine/providers/curl/CurlDialogue.h"
#include "tests/engine/providers/curl/CancelControl.h"
#include "tests/engine/providers/curl/OtherEnd.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace trevane::test {
namespace {

constexpr qint32 kLineLost = error::kWin32Error + 64;

/// Where a server may stop to answer.
enum class Phase {
  Greeting,
  User,
  Password,
  Features,
  Command,
  Passive,
  ListStart,
  ListData,
  ListEnd,
  GetStart,
  GetData,
  GetEnd,
  PutStart,
  PutData,
  PutEnd,
  None
};

std::string NameOf(const testing::TestParamInfo<Phase>& info) {
  constexpr std::array kNames{"Greeting",  "User",     "Password", "Features", "Command", "Passive",
                              "ListStart", "ListData", "ListEnd",  "GetStart", "GetData", "GetEnd",
                              "PutStart",  "PutData",  "PutEnd",   "None"};
  return kNames.at(size_t(info.param));
}

/// Answers until that phase; `stop` does what happens there.
void Serve(OtherEnd& at, Phase last, const std::function<void()>& stop) {
  const auto stops = [&](Phase phase) {
    if (phase == last) {
      stop();
    }
    return phase == last;
  };
  if (stops(Phase::Greeting)) {
    return;
  }
  at.Say("220 Ready");
  at.Next();
  if (stops(Phase::User)) {
    return;
  }
  at.Say("331 Password");
  at.Next();
  if (stops(Phase::Password)) {
    return;
  }
  at.Say("230 Fine");
  at.Next();
  at.Say("257 \"/\"");
  at.Next();
  if (stops(Phase::Features)) {
    return;
  }
  at.Say("502 No features");
  at.AnswerUntil("NOOP");
  if (stops(Phase::Command)) {
    return;
  }
  at.Say("200 Fine");
  if (last == Phase::Passive) {
    at.AnswerUntil("EPSV");
    stop();
    return;
  }
  at.AnswerUntil("LIST");
  if (stops(Phase::ListStart)) {
    return;
  }
  at.Say("150 Here it comes");
  at.SendData("a line\r\n");
  if (stops(Phase::ListData)) {
    return;
  }
  at.CloseData();
  if (stops(Phase::ListEnd)) {
    return;
  }
  at.Say("226 Done");
  at.AnswerUntil("RETR");
  if (stops(Phase::GetStart)) {
    return;
  }
  at.Say("150 Here it comes");
  at.SendData("some bytes");
  if (stops(Phase::GetData)) {
    return;
  }
  at.CloseData();
  if (stops(Phase::GetEnd)) {
    return;
  }
  at.Say("226 Done");
  at.AnswerUntil("STOR");
  if (stops(Phase::PutStart)) {
    return;
  }
  at.Say("150 Send it");
  static_cast<void>(at.TakeData(10));
  if (stops(Phase::PutData)) {
    return;
  }
  static_cast<void>(at.TakeData());
  at.CloseData();
  if (stops(Phase::PutEnd)) {
    return;
  }
  at.Say("226 Stored");
  at.AnswerUntil("QUIT");
  at.Say("221 Bye");
}

/// Does everything once; the number of what has failed.
void DoAll(CurlDialogue& dialogue) {
  EXPECT_EQ(dialogue.Command("NOOP").code, 200);
  EXPECT_EQ(dialogue.ReadText("LIST", 1000).reply.code, 226);
  ftp::Reply refusal;
  const std::unique_ptr<FtpDownload> download = dialogue.Retrieve("/a", 0, refusal);
  ASSERT_TRUE(download);
  while (!download->Read(1000).isEmpty()) {
  }
  EXPECT_EQ(download->Finish().code, 226);
  const std::unique_ptr<FtpUpload> upload = dialogue.Store("/a");
  // More than all sockets between hold.
  const QByteArray piece(1024 * 1024, 'x');
  for (int i = 0; i < 32; ++i) {
    upload->Write(piece);
  }
  EXPECT_EQ(upload->Finish().code, 226);
}

/// The number of what fails; 0 for nothing. Whatever fails ends the line.
qint32 FailureOf(const FtpSettings& settings, const std::shared_ptr<CallControl>& control) {
  std::optional<CurlDialogue> dialogue;
  try {
    dialogue.emplace(settings, OtherEnd::Joe(), control);
    DoAll(*dialogue);
  } catch (const RunTimeError& failure) {
    EXPECT_FALSE(failure.Description().isEmpty());
    EXPECT_FALSE(failure.Description().contains(QStringLiteral("sesame")));
    if (dialogue) {
      EXPECT_TRUE(dialogue->IsBroken());
    }
    return failure.Number();
  }
  return 0;
}

class CurlPhasesTest : public testing::TestWithParam<Phase> {};

TEST_P(CurlPhasesTest, SilenceEndsTheCall) {
  OtherEnd end([](OtherEnd& at) { Serve(at, GetParam(), [&at] { at.WaitForEnd(); }); });
  FtpSettings settings = end.Settings();
  settings.timeout = 1;
  const auto control = std::make_shared<CancelControl>();
  EXPECT_EQ(FailureOf(settings, control), error::kTimeOut);
  EXPECT_GT(control->AliveCount(), 0);
}

TEST_P(CurlPhasesTest, CancelEndsTheCall) {
  const auto control = std::make_shared<CancelControl>();
  OtherEnd end([&control](OtherEnd& at) {
    Serve(at, GetParam(), [&] {
      control->Cancel();
      at.WaitForEnd();
    });
  });
  FtpSettings settings = end.Settings();
  // Longer than any test may run.
  settings.timeout = 3600;
  EXPECT_EQ(FailureOf(settings, control), error::kCancelled);
}

TEST_P(CurlPhasesTest, ALostLineEndsTheCall) {
  OtherEnd end([](OtherEnd& at) {
    Serve(at, GetParam(), [&at] {
      at.ResetData();
      at.CloseLine();
    });
  });
  FtpSettings settings = end.Settings();
  settings.timeout = 3600;
  EXPECT_EQ(FailureOf(settings, nullptr), kLineLost);
}

TEST_P(CurlPhasesTest, AServerThatIsGoingIsBelieved) {
  if (GetParam() == Phase::ListData || GetParam() == Phase::GetData || GetParam() == Phase::PutData) {
    GTEST_SKIP() << "Within the content the end of the data connection comes first.";
  }
  OtherEnd end([](OtherEnd& at) {
    Serve(at, GetParam(), [&at] {
      at.Say("421 Going down");
      at.CloseLine();
    });
  });
  FtpSettings settings = end.Settings();
  settings.timeout = 3600;
  // Once it has asked for the password it may mean that, and is not tried again and again.
  const bool isBeforePassword = GetParam() == Phase::Greeting || GetParam() == Phase::User;
  EXPECT_EQ(FailureOf(settings, nullptr), isBeforePassword ? error::kWin32Error + 1238 : kLineLost);
}

INSTANTIATE_TEST_SUITE_P(At, CurlPhasesTest,
                         testing::Values(Phase::Greeting, Phase::User, Phase::Password, Phase::Features,
                                         Phase::Command, Phase::Passive, Phase::ListStart, Phase::ListData,
                                         Phase::ListEnd, Phase::GetStart, Phase::GetData, Phase::GetEnd,
                                         Phase::PutStart, Phase::PutData, Phase::PutEnd),
                         NameOf);

TEST(CurlDialogueTest, AllIsDoneWhereNothingFails) {
  OtherEnd end([](OtherEnd& at) { Serve(at, Phase::None, [] {}); });
  EXPECT_EQ(FailureOf(end.Settings(), nullptr), 0);
}

}  // namespace
}  // namespace trevane::test
