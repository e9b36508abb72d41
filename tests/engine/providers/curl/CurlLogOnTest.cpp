#include "base/RunTimeError.h"
#include "engine/providers/curl/CurlDialogue.h"
#include "tests/engine/providers/curl/CancelControl.h"
#include "tests/engine/providers/curl/OtherEnd.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>

namespace trevane::test {
namespace {

constexpr qint32 kBusy = error::kWin32Error + 1238;

/// What a log-on fails with, and that the words of the server stand in it.
qint32 FailureAt(const std::function<void(OtherEnd& at)>& speak, const QString& words) {
  OtherEnd end(speak);
  try {
    const CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  } catch (const RunTimeError& failure) {
    EXPECT_TRUE(failure.Description().contains(words)) << failure.Description().toStdString();
    EXPECT_FALSE(failure.Description().contains(QStringLiteral("sesame")));
    return failure.Number();
  }
  return 0;
}

qint32 FailureOfGreeting(const QByteArray& greeting) {
  return FailureAt(
      [&greeting](OtherEnd& at) {
        at.Say(greeting);
        at.WaitForEnd();
      },
      QString::fromLatin1(greeting.sliced(greeting.lastIndexOf('\n') + 1)));
}

qint32 FailureOfPassword(const QByteArray& answer) {
  return FailureAt(
      [&answer](OtherEnd& at) {
        at.Say("220 Ready");
        at.Next();
        at.Say("331 Password");
        at.Next();
        at.Say(answer);
        at.Next();
        at.Say("221 Bye");
      },
      QString::fromLatin1(answer));
}

TEST(CurlLogOnTest, AServerWithOtherClientsIsBusy) {
  EXPECT_EQ(FailureOfGreeting("421 Too many connections"), kBusy);
  EXPECT_EQ(FailureOfGreeting("221 Only one client"), kBusy);
  EXPECT_EQ(FailureOfGreeting("120 Ready in 5 minutes"), kBusy);
  EXPECT_EQ(FailureOfGreeting("530 Too many users"), kBusy);
  EXPECT_EQ(FailureOfPassword("421 Too many users"), kBusy);
  EXPECT_EQ(FailureOfPassword("530 Maximum number of clients reached"), kBusy);
}

TEST(CurlLogOnTest, AWrongPasswordIsNoOtherFailure) {
  EXPECT_EQ(FailureOfPassword("530 Login incorrect"), error::kLogonFailure);
  EXPECT_EQ(FailureOfPassword("430 Wrong user or password"), error::kLogonFailure);
}

TEST(CurlLogOnTest, AnUnknownUserIsRefused) {
  EXPECT_EQ(FailureAt(
                [](OtherEnd& at) {
                  at.Say("220 Ready");
                  at.Next();
                  at.Say("530 Who?");
                  at.WaitForEnd();
                },
                QStringLiteral("530 Who?")),
            error::kLogonFailure);
}

TEST(CurlLogOnTest, AnAccountIsToldAsTheReason) {
  EXPECT_EQ(FailureOfPassword("332 Account, please"), error::kNotSupported);
}

TEST(CurlLogOnTest, AServerThatWantsNobodyIsBelieved) {
  EXPECT_EQ(FailureOfGreeting("554 Go away"), error::kAccessDenied);
}

TEST(CurlLogOnTest, AHostThatListensToNobodyRefuses) {
  std::optional<FtpSettings> settings;
  {
    OtherEnd end([](OtherEnd& /*at*/) {});
    settings = end.Settings();
  }
  try {
    const CurlDialogue dialogue(*settings, OtherEnd::Joe(), nullptr);
    FAIL();
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kWin32Error + 1225);
    EXPECT_TRUE(failure.Description().contains(QStringLiteral("was refused")));
  }
}

TEST(CurlLogOnTest, AnUnknownHostIsTold) {
  FtpSettings settings;
  settings.host = QStringLiteral("no-such-host.invalid");
  try {
    const CurlDialogue dialogue(settings, OtherEnd::Joe(), nullptr);
    FAIL();
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kWin32Error + 11001);
  }
}

TEST(CurlLogOnTest, LineBreaksInUserOrPasswordAreRefused) {
  OtherEnd end([](OtherEnd& at) { at.WaitForEnd(); });
  for (const FtpLogOn& logOn : {FtpLogOn{QStringLiteral("joe\r\nDELE /"), Secret(QStringView(u"x"))},
                                FtpLogOn{QStringLiteral("joe"), Secret(QStringView(u"x\nDELE /"))}}) {
    try {
      const CurlDialogue dialogue(end.Settings(), logOn, nullptr);
      FAIL();
    } catch (const RunTimeError& failure) {
      EXPECT_EQ(failure.Number(), error::kInvalidParameter);
    }
  }
  EXPECT_EQ(end.Clients(), 0);
}

TEST(CurlLogOnTest, NoPasswordMayBeAskedFor) {
  OtherEnd end([](OtherEnd& at) {
    at.Say("220-Ready\r\n220-\r\n For work\r\n220 indeed");
    at.Next();
    at.Say("230 Fine");
    at.Next();
    at.Say("550 Nowhere");
    at.Next();
    at.Say("500 What?");
    at.AnswerUntil("QUIT");
  });
  const CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  EXPECT_EQ(dialogue.Greeting(), "Ready\n\n For work\nindeed");
  EXPECT_EQ(dialogue.Start(), "/");
  EXPECT_TRUE(dialogue.Features().isEmpty());
  EXPECT_EQ(end.Commands(), (QByteArrayList{"USER joe", "PWD", "FEAT"}));
}

TEST(CurlLogOnTest, NobodyConnectsOnceCancelled) {
  OtherEnd end([](OtherEnd& at) { at.WaitForEnd(); });
  const auto control = std::make_shared<CancelControl>();
  control->Cancel();
  try {
    const CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), control);
    FAIL();
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kCancelled);
  }
  EXPECT_EQ(end.Clients(), 0);
}

TEST(CurlLogOnTest, TheServerIsToldOfTheEnd) {
  QByteArray last;
  {
    OtherEnd end([&last](OtherEnd& at) {
      at.LogOn();
      last = at.Next();
      at.Say("221 Bye");
    });
    { const CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr); }
  }
  EXPECT_EQ(last, "QUIT");
}

}  // namespace
}  // namespace trevane::test
