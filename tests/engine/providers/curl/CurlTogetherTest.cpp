#include "base/RunTimeError.h"
#include "engine/providers/curl/CurlDialogue.h"
#include "tests/engine/providers/curl/CancelControl.h"
#include "tests/engine/providers/curl/OtherEnd.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

namespace trevane::test {
namespace {

constexpr qint32 kLineLost = error::kWin32Error + 64;

const QByteArrayList kThree{"RNTO /a", "MLST /b", "RNFR /c"};
const QByteArrayList kAnswers{"250 Renamed", "550 Nothing there", "350 Ready"};

/// Reads all three, which a client that waits for an answer never sends.
void TakeThree(OtherEnd& at) {
  for (const QByteArray& command : kThree) {
    EXPECT_EQ(at.Next(), command);
  }
}

qint32 FailureOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const RunTimeError& failure) {
    EXPECT_FALSE(failure.Description().isEmpty());
    return failure.Number();
  }
  return 0;
}

/// As the end answers to NOOP and PWD that came together.
bool TakesTogether(const std::function<void(OtherEnd& at)>& answer, bool isBrokenThen = false) {
  OtherEnd end([&](OtherEnd& at) {
    at.LogOn();
    EXPECT_EQ(at.Next(), "NOOP");
    EXPECT_EQ(at.Next(), "PWD");
    answer(at);
    EXPECT_EQ(at.AnswerUntil("MLST"), isBrokenThen ? "" : "MLST /a");
    at.Say("250 It is there");
    at.AnswerUntil("");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  const bool takes = dialogue.TakesTogether();
  EXPECT_EQ(dialogue.IsBroken(), isBrokenThen);
  if (!isBrokenThen) {
    // In step.
    EXPECT_EQ(dialogue.Command("MLST /a").text, "It is there");
  }
  return takes;
}

TEST(CurlTogetherTest, CommandsDoNotWaitForAnswers) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    for (int i = 0; i < 2; ++i) {
      TakeThree(at);
      at.Say("250-Renamed\r\n 500 of them");
      at.Say("250 Done\r\n550 Noth");
      at.Say("ing there\r\n350 Ready");
    }
    EXPECT_EQ(at.AnswerUntil("STOR"), "STOR /n");
    at.Say("150 Send it");
    EXPECT_EQ(at.TakeData(), "content");
    at.CloseData();
    at.Say("226 Stored");
    TakeThree(at);
    at.Say(kAnswers.join("\r\n"));
    at.AnswerUntil("");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  for (int i = 0; i < 2; ++i) {
    const std::vector<ftp::Reply> replies = dialogue.Together(kThree);
    ASSERT_EQ(replies.size(), 3U);
    EXPECT_EQ(replies[0].code, 250);
    EXPECT_EQ(replies[0].text, "Renamed\n 500 of them\nDone");
    EXPECT_EQ(replies[1].code, 550);
    EXPECT_EQ(replies[2].code, 350);
  }
  // The library has the connection to itself again.
  const std::unique_ptr<FtpUpload> upload = dialogue.Store("/n");
  upload->Write("content");
  EXPECT_EQ(upload->Finish().code, 226);
  EXPECT_EQ(dialogue.Together(kThree)[2].code, 350);
  EXPECT_EQ(dialogue.Command("NOOP").code, 200);
}

TEST(CurlTogetherTest, NoLineBreakIsSent) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    EXPECT_EQ(at.AnswerUntil("NOOP"), "NOOP");
    at.Say("200 Fine");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  EXPECT_EQ(FailureOf([&] {
              static_cast<void>(dialogue.Together({"NOOP", "DELE a\r\nDELE b"}));
            }),
            error::kInvalidName);
  EXPECT_EQ(dialogue.Command("NOOP").code, 200);
}

TEST(CurlTogetherTest, ALineLostAfterEachAnswerIsTold) {
  for (qsizetype answered = 0; answered < 3; ++answered) {
    SCOPED_TRACE(answered);
    for (const bool says : {false, true}) {
      OtherEnd end([&](OtherEnd& at) {
        at.LogOn();
        TakeThree(at);
        for (const QByteArray& answer : kAnswers.first(answered)) {
          at.Say(answer);
        }
        if (says) {
          at.Say("421 Going down");
        }
        at.CloseLine();
      });
      CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
      EXPECT_EQ(FailureOf([&] { static_cast<void>(dialogue.Together(kThree)); }), kLineLost);
      EXPECT_TRUE(dialogue.IsBroken());
    }
  }
}

TEST(CurlTogetherTest, ACancelAfterEachAnswerIsHeard) {
  for (qsizetype answered = 0; answered < 3; ++answered) {
    SCOPED_TRACE(answered);
    const auto control = std::make_shared<CancelControl>();
    OtherEnd end([&](OtherEnd& at) {
      at.LogOn();
      TakeThree(at);
      for (const QByteArray& answer : kAnswers.first(answered)) {
        at.Say(answer);
      }
      control->Cancel();
      at.WaitForEnd();
    });
    FtpSettings settings = end.Settings();
    settings.timeout = 3600;
    CurlDialogue dialogue(settings, OtherEnd::Joe(), control);
    EXPECT_EQ(FailureOf([&] { static_cast<void>(dialogue.Together(kThree)); }), error::kCancelled);
    EXPECT_TRUE(dialogue.IsBroken());
  }
}

TEST(CurlTogetherTest, SilenceEndsIt) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    TakeThree(at);
    at.Say(kAnswers.first());
    at.WaitForEnd();
  });
  FtpSettings settings = end.Settings();
  // The log-on must not be silent for so long.
  settings.timeout = 3;
  CurlDialogue dialogue(settings, OtherEnd::Joe(), nullptr);
  EXPECT_EQ(FailureOf([&] { static_cast<void>(dialogue.Together(kThree)); }), error::kTimeOut);
  EXPECT_TRUE(dialogue.IsBroken());
}

TEST(CurlTogetherTest, AnAnswerTooManyEndsTheLine) {
  for (const char* more : {"250 Once more", "250-Half of", "2"}) {
    OtherEnd end([more](OtherEnd& at) {
      at.LogOn();
      TakeThree(at);
      at.Say(kAnswers.join("\r\n") + "\r\n" + more);
      at.WaitForEnd();
    });
    CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
    EXPECT_EQ(FailureOf([&] { static_cast<void>(dialogue.Together(kThree)); }), kLineLost);
    EXPECT_TRUE(dialogue.IsBroken());
  }
}

TEST(CurlTogetherTest, AnAnswerToSomethingElseIsLookedInto) {
  for (const bool isInStep : {true, false}) {
    OtherEnd end([isInStep](OtherEnd& at) {
      at.LogOn();
      TakeThree(at);
      at.Say("250 Renamed\r\n350 Ready\r\n350 Ready");
      EXPECT_EQ(at.Next(), "PWD");
      at.Say(isInStep ? "257 \"/home\" is here" : "250 It is there");
      at.AnswerUntil("");
    });
    CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
    EXPECT_EQ(FailureOf([&] { EXPECT_EQ(dialogue.Together(kThree).size(), 3U); }), isInStep ? 0 : kLineLost);
  }
}

TEST(CurlTogetherTest, AnAnswerWithoutAnEndEndsTheLine) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    TakeThree(at);
    for (int i = 0; i < 1000; ++i) {
      at.Say(QByteArray("250-There is more to tell\r\n").repeated(1000));
    }
    at.WaitForEnd();
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  EXPECT_EQ(FailureOf([&] { static_cast<void>(dialogue.Together(kThree)); }), kLineLost);
}

TEST(CurlTogetherTest, AServerThatAnswersBothTakesThem) {
  EXPECT_TRUE(TakesTogether([](OtherEnd& at) { at.Say("200 Fine\r\n257 \"/home\" is here"); }));
  EXPECT_TRUE(TakesTogether([](OtherEnd& at) { at.Say("500 NOOP is not known\r\n257 \"/home\" is here"); }));
}

TEST(CurlTogetherTest, AServerThatDropsTheSecondDoesNot) {
  for (const char* system : {"215 UNIX", "502 SYST is not known"}) {
    EXPECT_FALSE(TakesTogether([system](OtherEnd& at) {
      at.Say("200 Fine");
      EXPECT_EQ(at.Next(), "SYST");
      at.Say(system);
    }));
  }
}

TEST(CurlTogetherTest, AServerThatAnswersLateDoesNot) {
  EXPECT_FALSE(TakesTogether([](OtherEnd& at) {
    at.Say("200 Fine");
    EXPECT_EQ(at.Next(), "SYST");
    at.Say("257 \"/home\" is here\r\n215 UNIX");
  }));
}

TEST(CurlTogetherTest, AServerThatStaysBehindIsLeft) {
  EXPECT_FALSE(TakesTogether(
      [](OtherEnd& at) {
        at.Say("200 Fine");
        EXPECT_EQ(at.Next(), "SYST");
        at.Say("257 \"/home\" is here");
      },
      true));
}

TEST(CurlTogetherTest, OtherAnswersEndTheLine) {
  const std::vector<std::function<void(OtherEnd&)>> answers{
      [](OtherEnd& at) { at.Say("200 Fine\r\n200 Fine"); },
      [](OtherEnd& at) { at.Say("257 \"/home\" is here\r\n257 \"/home\" is here"); },
      [](OtherEnd& at) { at.Say("200 Fine\r\n257 \"/home\" is here\r\n257 \"/home\" is here"); },
      [](OtherEnd& at) {
        at.Say("200 Fine");
        EXPECT_EQ(at.Next(), "SYST");
        at.Say("226 Done");
      },
      [](OtherEnd& at) { at.CloseLine(); },
  };
  for (const auto& answer : answers) {
    EXPECT_EQ(FailureOf([&] { static_cast<void>(TakesTogether(answer, true)); }), kLineLost);
  }
}

TEST(CurlTogetherTest, ACancelEndsTheQuestion) {
  const auto control = std::make_shared<CancelControl>();
  OtherEnd end([&](OtherEnd& at) {
    at.LogOn();
    EXPECT_EQ(at.Next(), "NOOP");
    EXPECT_EQ(at.Next(), "PWD");
    at.Say("200 Fine");
    control->Cancel();
    at.WaitForEnd();
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), control);
  EXPECT_EQ(FailureOf([&] { static_cast<void>(dialogue.TakesTogether()); }), error::kCancelled);
}

TEST(CurlTogetherTest, AServerWithoutAFolderIsNotAsked) {
  OtherEnd end([](OtherEnd& at) {
    at.Say("220 Ready");
    EXPECT_EQ(at.Next(), "USER joe");
    at.Say("230 Logged on");
    EXPECT_EQ(at.Next(), "PWD");
    at.Say("500 PWD is not known");
    at.AnswerUntil("");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  EXPECT_FALSE(dialogue.TakesTogether());
  EXPECT_FALSE(end.Commands().contains("NOOP"));
}

}  // namespace
}  // namespace trevane::test
