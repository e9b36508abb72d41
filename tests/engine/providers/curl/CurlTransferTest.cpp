#include "base/RunTimeError.h"
#include "engine/files/ProviderError.h"
#include "engine/providers/curl/CurlDialogue.h"
#include "engine/providers/curl/SocketCalls.h"
#include "tests/engine/providers/curl/CancelControl.h"
#include "tests/engine/providers/curl/OtherEnd.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace trevane::test {
namespace {

using namespace std::chrono_literals;

constexpr qint32 kLineLost = error::kWin32Error + 64;

qint32 NumberOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const RunTimeError& failure) {
    return failure.Number();
  }
  return 0;
}

/// Everything that is left, and what the server says of it.
ftp::Reply ReadAll(FtpDownload& download, QByteArray& all) {
  for (QByteArray piece = download.Read(100000); !piece.isEmpty(); piece = download.Read(100000)) {
    all += piece;
  }
  return download.Finish();
}

/// A file of that content is stored, with an answer of the test's.
ftp::Reply StoreAll(FtpDialogue& dialogue, const QByteArray& content) {
  const std::unique_ptr<FtpUpload> upload = dialogue.Store("/f");
  upload->Write(content);
  return upload->Finish();
}

TEST(CurlTransferTest, TheCodeOfTheEndIsTold) {
  for (const QByteArray reply :
       {"426 Broken off", "452 Disk full", "552 Too much", "550 No more", "250 Fine"}) {
    SCOPED_TRACE(reply.toStdString());
    OtherEnd end([&reply](OtherEnd& at) {
      at.LogOn();
      at.AnswerUntil("STOR");
      at.Say("150 Send it");
      static_cast<void>(at.TakeData());
      at.CloseData();
      at.Say(reply);
      at.AnswerUntil("RETR");
      at.Say("125 Here it is");
      at.SendData("half");
      at.CloseData();
      at.Say(reply);
      at.AnswerUntil("QUIT");
    });
    CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
    const ftp::Reply stored = StoreAll(dialogue, "content");
    EXPECT_EQ(stored.code, reply.first(3).toInt());
    EXPECT_EQ(stored.text, reply.sliced(4));
    ftp::Reply refusal;
    const std::unique_ptr<FtpDownload> download = dialogue.Retrieve("/f", 0, refusal);
    ASSERT_TRUE(download);
    QByteArray all;
    EXPECT_EQ(ReadAll(*download, all).code, reply.first(3).toInt());
    EXPECT_EQ(all, "half");
    EXPECT_FALSE(dialogue.IsBroken());
  }
}

TEST(CurlTransferTest, AFullDiskInTheMiddleIsTold) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("STOR");
    at.Say("150 Send it");
    static_cast<void>(at.TakeData(100000));
    at.ResetData();
    at.Say("452 Disk full");
    at.WaitForEnd();
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  const std::unique_ptr<FtpUpload> upload = dialogue.Store("/f");
  const QByteArray piece(1024 * 1024, 'x');
  for (int i = 0; i < 32; ++i) {
    upload->Write(piece);
  }
  const ftp::Reply reply = upload->Finish();
  EXPECT_EQ(reply.code, 452);
  EXPECT_EQ(reply.text, "Disk full");
}

TEST(CurlTransferTest, AnEndThatComesTooEarlyIsNotBelieved) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("STOR");
    at.Say("150 Send it");
    static_cast<void>(at.TakeData(10));
    at.ResetData();
    at.Say("226 Stored");
    at.WaitForEnd();
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  EXPECT_EQ(NumberOf([&dialogue] {
              const std::unique_ptr<FtpUpload> upload = dialogue.Store("/f");
              for (int i = 0; i < 32; ++i) {
                upload->Write(QByteArray(1024 * 1024, 'x'));
              }
              static_cast<void>(upload->Finish());
            }),
            kLineLost);
}

TEST(CurlTransferTest, ARefusedStoreIsToldAtTheEnd) {
  for (const QByteArray reply : {"550 Not here", "553 Not so", "452 Full"}) {
    OtherEnd end([&reply](OtherEnd& at) {
      at.LogOn();
      at.AnswerUntil("STOR");
      at.Say(reply);
      at.AnswerUntil("QUIT");
    });
    CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
    const std::unique_ptr<FtpUpload> upload = dialogue.Store("/f");
    for (int i = 0; i < 8; ++i) {
      upload->Write(QByteArray(1024 * 1024, 'x'));
    }
    EXPECT_EQ(upload->Finish().code, reply.first(3).toInt());
    EXPECT_EQ(dialogue.Command("NOOP").code, 200);
  }
}

TEST(CurlTransferTest, ARefusedRetrieveOrListingIsTold) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("RETR");
    at.Say("550-Sorry\r\n550 Not here");
    at.AnswerUntil("MLSD");
    at.Say("500 What?");
    at.AnswerUntil("QUIT");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  ftp::Reply refusal;
  EXPECT_FALSE(dialogue.Retrieve("/f", 0, refusal));
  EXPECT_EQ(refusal.code, 550);
  EXPECT_EQ(refusal.text, "Sorry\nNot here");
  const FtpDialogue::Text text = dialogue.ReadText("MLSD /", 1000);
  EXPECT_EQ(text.reply.code, 500);
  EXPECT_TRUE(text.bytes.isEmpty());
  EXPECT_EQ(dialogue.Command("NOOP").code, 200);
}

TEST(CurlTransferTest, BigFilesAreStreamed) {
  constexpr qint64 kPieces = 96;
  constexpr qint64 kPiece = qint64(1024) * 1024;
  qint64 arrived = 0;
  OtherEnd end([&arrived](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("STOR");
    at.Say("150 Send it");
    for (;;) {
      const QByteArray some = at.TakeData(kPiece);
      arrived += some.size();
      if (some.size() < kPiece) {
        break;
      }
    }
    at.CloseData();
    at.Say("226 Fine");
    at.AnswerUntil("RETR");
    at.Say("150 Here it is");
    const QByteArray piece(kPiece, 'y');
    for (int i = 0; i < kPieces; ++i) {
      at.SendData(piece);
    }
    at.CloseData();
    at.Say("226 Fine");
    at.AnswerUntil("QUIT");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  {
    const std::unique_ptr<FtpUpload> upload = dialogue.Store("/f");
    const QByteArray piece(kPiece, 'x');
    for (int i = 0; i < kPieces; ++i) {
      upload->Write(piece);
    }
    EXPECT_EQ(upload->Finish().code, 226);
    EXPECT_EQ(arrived, kPieces * kPiece);
  }
  ftp::Reply refusal;
  const std::unique_ptr<FtpDownload> download = dialogue.Retrieve("/f", 0, refusal);
  ASSERT_TRUE(download);
  qint64 came = 0;
  for (QByteArray piece = download->Read(kPiece); !piece.isEmpty(); piece = download->Read(kPiece)) {
    came += piece.size();
    EXPECT_LE(piece.size(), kPiece);
  }
  EXPECT_EQ(came, kPieces * kPiece);
  EXPECT_EQ(download->Finish().code, 226);
}

TEST(CurlTransferTest, AServerThatReadsSlowlyHoldsTheWriter) {
  std::atomic<bool> mayRead = false;
  OtherEnd end([&mayRead](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("STOR");
    at.Say("150 Send it");
    while (!mayRead) {
      std::this_thread::yield();
    }
    static_cast<void>(at.TakeData());
    at.CloseData();
    at.Say("226 Fine");
    at.AnswerUntil("QUIT");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  const std::unique_ptr<FtpUpload> upload = dialogue.Store("/f");
  std::atomic<int> written = 0;
  constexpr int kPieces = 64;
  std::thread reader([&] {
    // The sockets between hold some of it, and what is held here is little.
    for (int before = -1; before != written;) {
      before = written;
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    EXPECT_LT(written, kPieces);
    mayRead = true;
  });
  const QByteArray piece(1024 * 1024, 'x');
  for (int i = 0; i < kPieces; ++i) {
    upload->Write(piece);
    ++written;
  }
  reader.join();
  EXPECT_EQ(upload->Finish().code, 226);
}

TEST(CurlTransferTest, AnOffsetIsAskedForOnce) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    for (int i = 0; i < 2; ++i) {
      at.AnswerUntil("RETR");
      at.Say("150 Here it is");
      at.SendData("tent");
      at.CloseData();
      at.Say("226 Fine");
    }
    at.AnswerUntil("QUIT");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  for (int i = 0; i < 2; ++i) {
    ftp::Reply refusal;
    const std::unique_ptr<FtpDownload> download = dialogue.Retrieve("/f", 3, refusal);
    ASSERT_TRUE(download);
    QByteArray all;
    EXPECT_EQ(ReadAll(*download, all).code, 226);
    EXPECT_EQ(all, "tent");
  }
  EXPECT_EQ(end.Commands().mid(4), (QByteArrayList{"TYPE I", "REST 3", "EPSV", "TYPE I", "REST 3", "RETR /f",
                                                   "EPSV", "REST 3", "RETR /f"}));
}

TEST(CurlTransferTest, ARefusedOffsetKeepsTheLine) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("REST");
    at.Say("502 Not known");
    at.AnswerUntil("QUIT");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  ftp::Reply refusal;
  EXPECT_FALSE(dialogue.Retrieve("/f", 3, refusal));
  EXPECT_EQ(refusal.code, 502);
  EXPECT_EQ(dialogue.Command("NOOP").code, 200);
}

TEST(CurlTransferTest, AWrongAddressOfPasvIsIgnored) {
  OtherEnd end([](OtherEnd& at) {
    at.hasEpsv = false;
    at.passiveAddress = "10,0,0,1";
    at.LogOn();
    for (int i = 0; i < 2; ++i) {
      at.AnswerUntil("LIST");
      at.Say("150 Here it comes");
      at.SendData("a line\r\n");
      at.CloseData();
      at.Say("226 Done");
    }
    at.AnswerUntil("QUIT");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(dialogue.ReadText("LIST", 1000).bytes, "a line\n");
  }
  // EPSV was refused once, and is not tried again.
  EXPECT_EQ(end.Commands().count("EPSV"), 1);
  EXPECT_EQ(end.Commands().count("PASV"), 2);
}

TEST(CurlTransferTest, ADownloadThatIsBrokenOffEndsAtOnce) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("RETR");
    at.Say("150 Here it is");
    at.SendData(QByteArray(64 * 1024 * 1024, 'y'));
    at.CloseData();
    at.Say("426 Broken off");
    at.AnswerUntil("QUIT");
  });
  FtpSettings settings = end.Settings();
  settings.patience = 60s;
  CurlDialogue dialogue(settings, OtherEnd::Joe(), nullptr);
  {
    ftp::Reply refusal;
    const std::unique_ptr<FtpDownload> download = dialogue.Retrieve("/f", 0, refusal);
    ASSERT_TRUE(download);
    EXPECT_EQ(download->Read(10).size(), 10);
  }
  // Bytes that still come after the shutdown reset the data connection, and the library gives up the other,
  // too.
  if (!dialogue.IsBroken()) {
    EXPECT_TRUE(curl::ReadsAnEndThen());
    // The server has answered at once.
    EXPECT_EQ(dialogue.Command("NOOP").code, 200);
  }
}

TEST(CurlTransferTest, AnUploadThatIsBrokenOffEndsAtOnce) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("STOR");
    at.Say("150 Send it");
    static_cast<void>(at.TakeData());
    at.CloseData();
    at.Say("226 Fine");
    at.AnswerUntil("QUIT");
  });
  FtpSettings settings = end.Settings();
  settings.patience = 60s;
  CurlDialogue dialogue(settings, OtherEnd::Joe(), nullptr);
  {
    const std::unique_ptr<FtpUpload> upload = dialogue.Store("/f");
    upload->Write(QByteArray(100000, 'x'));
  }
  ASSERT_FALSE(dialogue.IsBroken());
  EXPECT_EQ(dialogue.Command("NOOP").code, 200);
}

TEST(CurlTransferTest, ASilentServerIsLeftWhenBrokenOff) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("STOR");
    at.Say("150 Send it");
    at.WaitForEnd();
  });
  FtpSettings settings = end.Settings();
  settings.timeout = 3600;
  CurlDialogue dialogue(settings, OtherEnd::Joe(), nullptr);
  {
    const std::unique_ptr<FtpUpload> upload = dialogue.Store("/f");
    upload->Write(QByteArray(1000, 'x'));
  }
  EXPECT_TRUE(dialogue.IsBroken());
  EXPECT_EQ(NumberOf([&] { static_cast<void>(dialogue.Command("NOOP")); }), kLineLost);
}

TEST(CurlTransferTest, TooMuchTextIsCut) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("LIST");
    at.Say("150 Here it comes");
    at.SendData(QByteArray(1000000, 'y'));
    at.CloseData();
    at.Say("226 Done");
    at.AnswerUntil("QUIT");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  const FtpDialogue::Text text = dialogue.ReadText("LIST", 1000);
  EXPECT_TRUE(text.isTooLarge);
  EXPECT_EQ(text.bytes, QByteArray(1000, 'y'));
}

TEST(CurlTransferTest, OneThingAtATime) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("STOR");
    at.Say("150 Send it");
    static_cast<void>(at.TakeData());
    at.CloseData();
    at.Say("226 Fine");
    at.AnswerUntil("QUIT");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  const std::unique_ptr<FtpUpload> upload = dialogue.Store("/f");
  ftp::Reply refusal;
  EXPECT_EQ(NumberOf([&] { static_cast<void>(dialogue.Command("NOOP")); }), providererror::kBusy);
  EXPECT_EQ(NumberOf([&] { static_cast<void>(dialogue.ReadText("LIST", 10)); }), providererror::kBusy);
  EXPECT_EQ(NumberOf([&] { static_cast<void>(dialogue.Retrieve("/f", 0, refusal)); }), providererror::kBusy);
  EXPECT_EQ(NumberOf([&] { static_cast<void>(dialogue.Store("/f")); }), providererror::kBusy);
  upload->Write("x");
  EXPECT_EQ(upload->Finish().code, 226);
}

TEST(CurlTransferTest, LineBreaksAreNeverSent) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("QUIT");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  const int before = int(end.Commands().size());
  for (const QByteArray& path : {QByteArray("/a\r\nDELE /b"), QByteArray("/a\nb"), QByteArray("/a\0b", 4)}) {
    ftp::Reply refusal;
    EXPECT_EQ(NumberOf([&] { static_cast<void>(dialogue.Command("DELE " + path)); }), error::kInvalidName);
    EXPECT_EQ(NumberOf([&] {
                static_cast<void>(dialogue.Commands({"NOOP", "DELE " + path}));
              }),
              error::kInvalidName);
    EXPECT_EQ(NumberOf([&] { static_cast<void>(dialogue.ReadText("MLSD " + path, 10)); }),
              error::kInvalidName);
    EXPECT_EQ(NumberOf([&] { static_cast<void>(dialogue.Retrieve(path, 0, refusal)); }), error::kInvalidName);
    EXPECT_EQ(NumberOf([&] { static_cast<void>(dialogue.Store(path)); }), error::kInvalidName);
  }
  EXPECT_EQ(end.Commands().size(), before);
  EXPECT_FALSE(dialogue.IsBroken());
}

TEST(CurlTransferTest, BytesOfNamesArriveAsTheyAre) {
  QByteArray all;
  for (int each = 0x20; each < 0x100; ++each) {
    all += char(each);
  }
  OtherEnd end([&all](OtherEnd& at) {
    at.LogOn();
    EXPECT_EQ(at.AnswerUntil("STOR"), "STOR /../a/./" + all);
    at.Say("550 No");
    EXPECT_EQ(at.AnswerUntil("DELE"), "DELE " + all);
    at.Say("550 No");
    at.AnswerUntil("QUIT");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  EXPECT_EQ(dialogue.Store("/../a/./" + all)->Finish().code, 550);
  EXPECT_EQ(dialogue.Command("DELE " + all).code, 550);
}

TEST(CurlTransferTest, APauseBetweenPiecesIsNoSilence) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("STOR");
    at.Say("150 Send it");
    static_cast<void>(at.TakeData());
    at.CloseData();
    at.Say("226 Fine");
    at.AnswerUntil("RETR");
    at.Say("150 Here it is");
    at.SendData(QByteArray(4 * 1024 * 1024, 'y'));
    at.CloseData();
    at.Say("226 Fine");
    at.AnswerUntil("QUIT");
  });
  FtpSettings settings = end.Settings();
  // Long enough for a busy machine to answer.
  settings.timeout = 4;
  CurlDialogue dialogue(settings, OtherEnd::Joe(), nullptr);
  const auto pause = [] { std::this_thread::sleep_for(std::chrono::milliseconds(4300)); };
  const std::unique_ptr<FtpUpload> upload = dialogue.Store("/f");
  pause();
  upload->Write("some");
  pause();
  upload->Write("thing");
  EXPECT_EQ(upload->Finish().code, 226);
  pause();
  ftp::Reply refusal;
  const std::unique_ptr<FtpDownload> download = dialogue.Retrieve("/f", 0, refusal);
  ASSERT_TRUE(download);
  EXPECT_FALSE(download->Read(10).isEmpty());
  pause();
  QByteArray all;
  EXPECT_EQ(ReadAll(*download, all).code, 226);
  EXPECT_EQ(all.size(), 4 * 1024 * 1024 - 10);
}

TEST(CurlTransferTest, TheEndMayBeToldBeforeTheContentHasGone) {
  QByteArray stored;
  OtherEnd end([&stored](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("STOR");
    at.Say("150 Send it");
    at.Say("226 Fine");
    stored = at.TakeData();
    at.CloseData();
    at.AnswerUntil("QUIT");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  EXPECT_EQ(StoreAll(dialogue, QByteArray(8 * 1024 * 1024, 'x')).code, 226);
  EXPECT_EQ(dialogue.Command("NOOP").code, 200);
  EXPECT_EQ(stored.size(), 8 * 1024 * 1024);
}

TEST(CurlTransferTest, CancelIsIgnoredWhileThingsArePutBack) {
  const auto control = std::make_shared<CancelControl>();
  OtherEnd end([&control](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("DELE");
    control->Cancel();
    at.Say("250 Gone");
    at.AnswerUntil("QUIT");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), control);
  dialogue.BeginPutBack();
  EXPECT_EQ(dialogue.Command("DELE /f").code, 250);
  EXPECT_EQ(dialogue.Command("NOOP").code, 200);
  dialogue.EndPutBack();
  EXPECT_EQ(NumberOf([&] { static_cast<void>(dialogue.Command("NOOP")); }), error::kCancelled);
}

TEST(CurlTransferTest, ActiveDataConnectionsAreTaken) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    at.ConnectData(at.AnswerUntil("EPRT"));
    at.Say("200 Fine");
    at.AnswerUntil("LIST");
    at.Say("150 Here it comes");
    at.SendData("a line\r\n");
    at.CloseData();
    at.Say("226 Done");
    at.AnswerUntil("QUIT");
  });
  FtpSettings settings = end.Settings();
  settings.active = true;
  CurlDialogue dialogue(settings, OtherEnd::Joe(), nullptr);
  EXPECT_EQ(dialogue.ReadText("LIST", 1000).bytes, "a line\n");
}

TEST(CurlTransferTest, SizesAreAskedForInBytes) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("LIST");
    at.Say("150 Here it comes");
    at.SendData({});
    at.CloseData();
    at.Say("226 Done");
    at.AnswerUntil("SIZE");
    at.Say("213 5");
    at.AnswerUntil("SIZE");
    at.Say("213 6");
    at.AnswerUntil("QUIT");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  static_cast<void>(dialogue.ReadText("LIST", 1000));
  EXPECT_EQ(dialogue.Command("SIZE /a").text, "5");
  EXPECT_EQ(dialogue.Command("SIZE /b").text, "6");
  EXPECT_EQ(end.Commands().mid(4),
            (QByteArrayList{"EPSV", "TYPE A", "LIST", "TYPE I", "SIZE /a", "SIZE /b"}));
}

TEST(CurlTransferTest, SeveralCommandsEndAtARefusal) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("RNFR");
    at.Say("350 And then?");
    at.AnswerUntil("RNTO");
    at.Say("553 Not so");
    at.AnswerUntil("QUIT");
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  const std::vector<ftp::Reply> replies = dialogue.Commands({"RNFR /a", "RNTO /b", "NOOP"});
  ASSERT_EQ(replies.size(), 2U);
  EXPECT_TRUE(replies[0].IsMore());
  EXPECT_EQ(replies[1].code, 553);
  EXPECT_EQ(end.Commands().count("NOOP"), 0);
}

TEST(CurlTransferTest, ALineThatHasEndedIsNotOpenedAnew) {
  std::atomic<bool> hasGone = false;
  OtherEnd end([&hasGone](OtherEnd& at) {
    at.LogOn();
    at.Say("421 Idle for too long");
    at.CloseLine();
    hasGone = true;
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  while (!hasGone) {
    std::this_thread::yield();
  }
  EXPECT_EQ(NumberOf([&] { static_cast<void>(dialogue.Command("NOOP")); }), kLineLost);
  EXPECT_TRUE(dialogue.IsBroken());
  EXPECT_EQ(end.Clients(), 1);
}

/// The words of the failure of the command; what it is answered with where it does not fail.
std::string WordsAfter(CurlDialogue& dialogue, const QByteArray& command) {
  try {
    return std::to_string(dialogue.Command(command).code);
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), kLineLost);
    EXPECT_TRUE(dialogue.IsBroken());
    return failure.Description().toStdString();
  }
}

TEST(CurlTransferTest, AnAnswerThatWasNotAskedForIsTold) {
  for (const QByteArray unasked : {"250 Done", "200-Fine\r\n200 Fine", "421 Idle for too long"}) {
    std::atomic<bool> isOpen = false;
    std::atomic<bool> hasSpoken = false;
    OtherEnd end([&](OtherEnd& at) {
      at.LogOn();
      while (!isOpen) {
        std::this_thread::yield();
      }
      at.Say(unasked);
      hasSpoken = true;
      at.WaitForEnd();
    });
    CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
    isOpen = true;
    while (!hasSpoken) {
      std::this_thread::yield();
    }
    const std::string words = WordsAfter(dialogue, "DELE /a");
    EXPECT_NE(words.find(unasked.last(4).toStdString()), std::string::npos) << words;
    EXPECT_NE(words.find(unasked.startsWith("421") ? "has ended" : "without being asked"), std::string::npos)
        << words;
    EXPECT_EQ(end.Commands().count("DELE /a"), 0);
  }
}

TEST(CurlTransferTest, AnAnswerThatComesTwiceEndsTheLine) {
  for (const QByteArray twice :
       {"250 Done\r\n250 Done", "550-Not\r\n550 here\r\n550 Not here", "250 Done\r\n25"}) {
    OtherEnd end([&twice](OtherEnd& at) {
      at.LogOn();
      for (QByteArray command = at.Next(); !command.isEmpty(); command = at.Next()) {
        at.Say(command.startsWith("DELE") ? twice : QByteArray("200 Fine"));
      }
    });
    CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
    EXPECT_EQ(WordsAfter(dialogue, "NOOP"), "200");
    const std::string words = WordsAfter(dialogue, "DELE /a");
    EXPECT_NE(words.find("more often than it was asked"), std::string::npos) << words;
    EXPECT_EQ(NumberOf([&dialogue] { static_cast<void>(dialogue.Command("DELE /b")); }), kLineLost);
    EXPECT_EQ(end.Commands().count("DELE /b"), 0);
  }
}

TEST(CurlTransferTest, TakesNoAnswerOfAnotherKind) {
  // Each answer is one that belongs to the command before.
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    QByteArray late = "250 Removed";
    for (QByteArray command = at.Next(); !command.isEmpty(); command = at.Next()) {
      at.Say(late);
      late = command.startsWith("PWD") ? "257 \"/\"" : command.startsWith("SIZE") ? "213 5" : "350 Ready";
    }
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  const std::string words = WordsAfter(dialogue, "RNFR /a");
  EXPECT_NE(words.find("once more than it was asked"), std::string::npos) << words;
}

TEST(CurlTransferTest, AnOddAnswerInStepIsTaken) {
  OtherEnd end([](OtherEnd& at) {
    at.LogOn();
    for (QByteArray command = at.Next(); !command.isEmpty(); command = at.Next()) {
      at.Say(command.startsWith("PWD") ? "257 \"/\"" : command.startsWith("SIZE") ? "250 5" : "200 Fine");
    }
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  EXPECT_EQ(dialogue.Command("SIZE /a").code, 250);
  EXPECT_EQ(dialogue.Command("DELE /a").code, 200);
  EXPECT_EQ(end.Commands().count("PWD"), 2);
}

/// After a transfer whose end the server tells twice, in one piece or with a pause.
void ExpectNoAnswerOfAnother(bool isBrokenOff, const QByteArray& first, std::chrono::milliseconds pause) {
  OtherEnd end([=](OtherEnd& at) {
    at.LogOn();
    at.AnswerUntil("RETR");
    at.Say("150 Here it is");
    at.SendData(QByteArray(100000, 'x'));
    if (isBrokenOff) {
      at.SendData(QByteArray(10000000, 'x'));
    }
    at.CloseData();
    if (pause.count() == 0) {
      at.Say(first + "\r\n226 Done");
    } else {
      at.Say(first);
      std::this_thread::sleep_for(pause);
      at.Say("226 Done");
    }
    for (;;) {
      const QByteArray command = at.Next();
      if (command.isEmpty()) {
        return;
      }
      at.Say(command.startsWith("PWD")    ? "257 \"/\""
             : command.startsWith("DELE") ? "550 Refused"
             : command.startsWith("SIZE") ? "213 5"
                                          : "200 Fine");
    }
  });
  CurlDialogue dialogue(end.Settings(), OtherEnd::Joe(), nullptr);
  ftp::Reply refusal;
  std::unique_ptr<FtpDownload> download = dialogue.Retrieve("/f", 0, refusal);
  ASSERT_TRUE(download);
  if (isBrokenOff) {
    EXPECT_EQ(download->Read(10).size(), 10);
  } else {
    QByteArray all;
    static_cast<void>(ReadAll(*download, all));
  }
  download.reset();
  for (int i = 0; i < 3; ++i) {
    ftp::Reply removed;
    const qint32 number = NumberOf([&] { removed = dialogue.Command("DELE /a"); });
    EXPECT_TRUE(number == kLineLost || removed.code == 550) << removed.code;
    if (number != 0) {
      EXPECT_TRUE(dialogue.IsBroken());
      return;
    }
  }
}

TEST(CurlTransferTest, TakesNoAnswerForThatOfAnother) {
  for (const bool isBrokenOff : {false, true}) {
    for (const QByteArray first : {"426 Broken off", "226 Done"}) {
      for (const int pause : {0, 1, 30}) {
        SCOPED_TRACE(testing::Message() << (isBrokenOff ? "broken off, " : "whole, ") << first.constData()
                                        << ", " << pause << " ms");
        ExpectNoAnswerOfAnother(isBrokenOff, first, std::chrono::milliseconds(pause));
      }
    }
  }
}

}  // namespace
}  // namespace trevane::test
