#include "base/RunTimeError.h"
#include "engine/providers/curl/CurlDialogue.h"
#include "tests/engine/providers/curl/OtherEnd.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

TEST(CurlDialogueTest, LogsOnAndLearnsTheServer) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("");
  });
  const CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  EXPECT_EQ(dialogue.Greeting(), "Ready");
  EXPECT_EQ(dialogue.Start(), "/home");
  EXPECT_EQ(dialogue.Features(), QByteArrayList({"MLST size*;", "MDTM"}));
  EXPECT_EQ(dialogue.Address(), QStringLiteral("127.0.0.1"));
  EXPECT_FALSE(dialogue.IsBroken());
}

TEST(CurlDialogueTest, RefusalsKeepTheLine) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  const ftp::Reply refused = dialogue.Command("SITE CHMOD 644 /a");
  EXPECT_EQ(refused.code, 502);
  EXPECT_EQ(refused.text, "SITE CHMOD 644 /a is not known");
  EXPECT_EQ(dialogue.Command("NOOP").code, 200);
  EXPECT_FALSE(dialogue.IsBroken());
  EXPECT_EQ(end.Clients(), 1);
}

TEST(CurlDialogueTest, ContentComesAndGoes) {
  QByteArray stored;
  OtherEnd end([&stored](OtherEnd& at) {
    at.LogOn();
    EXPECT_EQ(at.AnswerUntil("MLSD"), "MLSD /home");
    at.Say("150 Here it comes");
    at.SendData("type=file; a.txt\r\n");
    at.CloseData();
    at.Say("226 Done");
    EXPECT_EQ(at.AnswerUntil("RETR"), "RETR /home/a b;c.txt");
    at.Say("150 Here it comes");
    at.SendData("content");
    at.CloseData();
    at.Say("226 Done");
    EXPECT_EQ(at.AnswerUntil("STOR"), "STOR /home/n.txt");
    at.Say("150 Send it");
    stored = at.TakeData();
    at.CloseData();
    at.Say("226 Stored");
    at.AnswerUntil("");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  const FtpDialogue::Text text = dialogue.ReadText("MLSD /home", 1000);
  EXPECT_EQ(text.reply.code, 226);
  EXPECT_EQ(text.bytes, "type=file; a.txt\n");
  ftp::Reply refusal;
  {
    const std::unique_ptr<FtpDownload> download = dialogue.Retrieve("/home/a b;c.txt", 0, refusal);
    ASSERT_TRUE(download);
    EXPECT_EQ(download->Read(100), "content");
    EXPECT_EQ(download->Read(100), "");
    EXPECT_EQ(download->Finish().code, 226);
  }
  const std::unique_ptr<FtpUpload> upload = dialogue.Store("/home/n.txt");
  upload->Write("new ");
  upload->Write("content");
  const ftp::Reply done = upload->Finish();
  EXPECT_EQ(done.code, 226);
  EXPECT_EQ(done.text, "Stored");
  EXPECT_EQ(dialogue.Command("NOOP").code, 200);
  EXPECT_EQ(stored, "new content");
}

}  // namespace
}  // namespace trevane::test
