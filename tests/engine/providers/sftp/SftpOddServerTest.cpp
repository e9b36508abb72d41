#include "engine/files/FileSystem.h"
#include "engine/files/ProviderError.h"
#include "engine/files/WholeFile.h"
#include "engine/model/Content.h"
#include "engine/model/ItemName.h"
#include "engine/providers/sftp/SftpAnswer.h"
#include "engine/providers/sftp/SftpErrors.h"
#include "engine/providers/sftp/SftpFileSystem.h"
#include "tests/engine/providers/sftp/OddServer.h"

#include <QHash>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace trevane::test {
namespace {

using sftp::PacketType;
using sftp::PacketWriter;
using Packets = OddServer::Packets;

class SftpOddServer : public ::testing::Test {
 protected:
  [[nodiscard]] std::shared_ptr<FileSystem> Open(const QString& encoding = {}) {
    return OpenSftpFileSystem(
        std::make_unique<OddConnector>(server_),
        {.host = QStringLiteral("odd"), .user = QStringLiteral("test"), .encoding = encoding}, {});
  }
  /// The answer to all requests of one type.
  void AnswerTo(PacketType type, std::function<QByteArray(quint32 id)> answer) {
    server_.answer = [type, answer = std::move(answer)](PacketType asked, quint32 id,
                                                        const QByteArray&) -> std::optional<Packets> {
      return asked == type ? std::optional(Packets{answer(id)}) : std::nullopt;
    };
  }
  /// Gives each of these once as a folder's names, and then the end.
  void ListAs(std::vector<QList<QByteArray>> answers) {
    AnswerTo(PacketType::ReadDir, [answers = std::move(answers), at = size_t{0}](quint32 id) mutable {
      return at < answers.size() ? OddServer::Names(id, answers[at++])
                                 : OddServer::Status(id, sftp::status::kEnd);
    });
  }

  OddServer server_;
};

std::optional<RunTimeError> FailureOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const RunTimeError& failure) {
    return failure;
  }
  return std::nullopt;
}

qint32 NumberOf(const std::function<void()>& work) {
  const std::optional<RunTimeError> failure = FailureOf(work);
  return failure ? failure->Number() : 0;
}

QStringList NamesOf(FileSystem& files, const QString& folder) {
  QStringList names;
  for (const FileEntry& entry : files.List(folder)) {
    names += entry.name;
  }
  return names;
}

QString File() {
  return QStringLiteral("f");
}

/// Those that a path can be made of; the others are `refused` many.
QStringList ValidNamesIn(QStringList names, qsizetype refused) {
  const qsizetype removed = names.removeIf([](const QString& name) { return !IsValidItemName(name); });
  EXPECT_EQ(removed, refused);
  return names;
}

using Answer = std::function<std::optional<Packets>(PacketType, quint32, const QByteArray&)>;

/// These bytes for every file, as a server gives them that never sends more than `most` at once.
Answer Bytes(const QByteArray& content, qsizetype most) {
  return [content, most](PacketType type, quint32 id, const QByteArray& request) -> std::optional<Packets> {
    if (type != PacketType::Read) {
      return std::nullopt;
    }
    sftp::PacketFields fields(request);
    static_cast<void>(fields.Number8());
    static_cast<void>(fields.Number32());
    static_cast<void>(fields.Bytes());
    const auto offset = static_cast<qsizetype>(fields.Number64().value_or(0));
    const auto length = static_cast<qsizetype>(fields.Number32().value_or(0));
    const QByteArray part = content.mid(offset, std::min(most, length));
    return Packets{part.isEmpty() ? OddServer::Status(id, sftp::status::kEnd)
                                  : PacketWriter(PacketType::Data, id).Bytes(part).Take()};
  };
}

/// As the usual answers tell of every file.
Answer TenBytes(qsizetype most) {
  return Bytes("0123456789", most);
}

TEST_F(SftpOddServer, BytesMayComeOneByOne) {
  server_.step = 1;
  ListAs({{"a", "b"}, {"c"}});
  const auto files = Open();
  EXPECT_EQ(NamesOf(*files, {}),
            (QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}));
}

TEST_F(SftpOddServer, AFileIsReadWholeFromAServerThatSendsLessThanItWasAskedFor) {
  for (const qsizetype most : {1, 3, 9, 10, 100}) {
    server_.answer = TenBytes(most);
    const auto files = Open();
    EXPECT_EQ(ReadFile(*files, File()), "0123456789") << most;
    EXPECT_EQ(files->ReadMany({File()}).front().content, "0123456789") << most;
  }
}

TEST_F(SftpOddServer, AnswersMayComeInAnyOrder) {
  server_.turnsRound = true;
  server_.answer = TenBytes(4);
  const auto files = Open();
  EXPECT_EQ(ReadFile(*files, File()), "0123456789");
  const std::vector<ReadResult> read = files->ReadMany({File(), QStringLiteral("f2"), QStringLiteral("f3")});
  for (const ReadResult& result : read) {
    EXPECT_EQ(result.content, "0123456789");
  }
}

TEST_F(SftpOddServer, MoreThanWasAskedForIsRefused) {
  AnswerTo(PacketType::Read, [](quint32 id) {
    return PacketWriter(PacketType::Data, id).Bytes(QByteArray(40000, 'x')).Take();
  });
  EXPECT_EQ(NumberOf([this] { static_cast<void>(ReadFile(*Open(), File())); }), error::kWin32Error + 1117);
  AnswerTo(PacketType::Read, [](quint32 id) { return PacketWriter(PacketType::Data, id).Bytes("").Take(); });
  EXPECT_EQ(NumberOf([this] { static_cast<void>(ReadFile(*Open(), File())); }), error::kWin32Error + 1117);
}

TEST_F(SftpOddServer, WhatIsNoAnswerEndsTheLine) {
  const std::pair<const char*, std::function<QByteArray(quint32 id)>> answers[] = {
      {"to a request that was not made", [](quint32 id) { return OddServer::Item(id + 1000, 0100644); }},
      {"twice", [](quint32 id) { return OddServer::Item(id, 0100644) + OddServer::Item(id, 0100644); }},
      {"of another kind", [](quint32 id) { return PacketWriter(PacketType::Data, id).Bytes("data").Take(); }},
      {"success without what was asked for",
       [](quint32 id) { return OddServer::Status(id, sftp::status::kOk); }},
      {"text", [](quint32) { return QByteArray("login: \r\n"); }},
      {"an empty packet", [](quint32) { return QByteArray(4, '\0'); }},
      {"a huge packet", [](quint32) { return QByteArray::fromHex("7fffffff65000000"); }},
      {"a cut packet", [](quint32 id) { return PacketWriter(PacketType::Attrs, id).Number32(5).Take(); }},
      {"a request", [](quint32 id) { return PacketWriter(PacketType::Stat, id).Bytes("/").Take(); }},
  };
  for (const auto& [label, answer] : answers) {
    SCOPED_TRACE(label);
    AnswerTo(PacketType::Lstat, answer);
    const auto files = Open();
    const std::optional<RunTimeError> failure =
        FailureOf([&] { static_cast<void>(files->Find(QStringLiteral("d\\x"))); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->Number(), sftp::kConnectionLost);
    EXPECT_TRUE(failure->Description().endsWith(QStringLiteral(": d\\x")))
        << failure->Description().toStdString();
    // Nothing behind it can be believed.
    server_.answer = {};
    EXPECT_EQ(NumberOf([&] { static_cast<void>(files->List({})); }), sftp::kConnectionLost);
  }
}

TEST_F(SftpOddServer, AGreetingThatIsNoneTellsWhatCame) {
  AnswerTo(PacketType::Init, [](quint32) { return QByteArray("Welcome to line 4\x1b[2J\r\n"); });
  const std::optional<RunTimeError> text = FailureOf([this] { static_cast<void>(Open()); });
  ASSERT_TRUE(text);
  EXPECT_EQ(text->Number(), error::kNotSupported);
  EXPECT_TRUE(text->Description().startsWith(
      QStringLiteral("The server does not speak SFTP. It sent: Welcome to line 4")))
      << text->Description().toStdString();
  EXPECT_FALSE(text->Description().contains(QChar(0x1B)));
  AnswerTo(PacketType::Init, [](quint32) { return PacketWriter(PacketType::Version).Number32(2).Take(); });
  const std::optional<RunTimeError> old = FailureOf([this] { static_cast<void>(Open()); });
  ASSERT_TRUE(old);
  EXPECT_EQ(old->Description(), QStringLiteral("The server speaks SFTP version 2 only, not 3"));
}

TEST_F(SftpOddServer, AServerThatNeverAnswersIsATimeOutThatNamesThePath) {
  server_.answer = [](PacketType type, quint32, const QByteArray&) -> std::optional<Packets> {
    return type == PacketType::Lstat ? std::optional(Packets()) : std::nullopt;
  };
  const auto files = Open();
  const std::optional<RunTimeError> failure =
      FailureOf([&] { static_cast<void>(files->Find(QStringLiteral("d\\x"))); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->Number(), error::kTimeOut);
  EXPECT_TRUE(failure->Description().endsWith(QStringLiteral(": d\\x")));
}

TEST_F(SftpOddServer, TheAnswersToACancelledCallAreDropped) {
  std::vector<QByteArray> late;
  bool isLate = true;
  server_.answer = [&](PacketType type, quint32 id, const QByteArray&) -> std::optional<Packets> {
    if (type == PacketType::Lstat && isLate) {
      late.push_back(OddServer::Status(id, sftp::status::kNoSuchFile));
      return Packets();
    }
    if (type == PacketType::Lstat) {
      Packets all = std::exchange(late, {});
      all.push_back(OddServer::Item(id, 0100644, 7));
      return all;
    }
    return std::nullopt;
  };
  const auto files = Open();
  server_.cancels = true;
  EXPECT_EQ(NumberOf([&] { static_cast<void>(files->Find(File())); }), error::kCancelled);
  isLate = false;
  const std::optional<FileEntry> found = files->Find(File());
  ASSERT_TRUE(found);
  EXPECT_EQ(found->size, 7);
}

TEST_F(SftpOddServer, AHandleThatComesLateIsClosed) {
  QByteArray late;
  server_.answer = [&](PacketType type, quint32 id, const QByteArray&) -> std::optional<Packets> {
    if (type == PacketType::Open) {
      server_.cancels = true;
      late = PacketWriter(PacketType::Handle, id).Bytes("late").Take();
      return Packets();
    }
    if (type == PacketType::Lstat) {
      return Packets{std::exchange(late, {}) + OddServer::Item(id, 0100644, 7)};
    }
    return std::nullopt;
  };
  const auto files = Open();
  EXPECT_EQ(NumberOf([&] { static_cast<void>(files->OpenSource(File())); }), error::kCancelled);
  EXPECT_EQ(server_.requests.value(PacketType::Close), 0);
  EXPECT_TRUE(files->Find(File()));
  EXPECT_TRUE(files->Find(File()));
  EXPECT_EQ(server_.requests.value(PacketType::Close), 1);
}

TEST_F(SftpOddServer, NamesThatAServerHasNoRightToSendAreListedSoThatTheyCanBeRefused) {
  ListAs({{"", ".", "..", "/", "a/b", "../../etc", QByteArray("a\0b", 3), "good", "..."}, {"/", "also"}});
  EXPECT_EQ(ValidNamesIn(NamesOf(*Open(), {}), 6),
            (QStringList{QStringLiteral("good"), QStringLiteral("..."), QStringLiteral("also")}));
}

TEST_F(SftpOddServer, ANameIsNotMadeValidByItsEncoding) {
  const QByteArray sent("a/", 2);
  ListAs({{sent}});
  EXPECT_EQ(ValidNamesIn(NamesOf(*Open(QStringLiteral("UTF-16LE")), {}), 1), QStringList());
}

TEST_F(SftpOddServer, ANameLongerThanAnyPathIsRefusedAndNotKept) {
  ListAs({{QByteArray(4096, 'a'), QByteArray(4097, 'b'), QByteArray(900'000, 'c'), "good"}});
  const QStringList names = NamesOf(*Open(), {});
  for (const QString& name : names) {
    EXPECT_LE(name.size(), 4096);
  }
  EXPECT_EQ(ValidNamesIn(names, 2), (QStringList{QString(4096, u'a'), QStringLiteral("good")}));
}

TEST_F(SftpOddServer, NothingIsAskedAboutNamesThatAServerHasNoRightToSend) {
  AnswerTo(PacketType::ReadDir, [at = 0](quint32 id) mutable {
    if (at++ > 0) {
      return OddServer::Status(id, sftp::status::kEnd);
    }
    PacketWriter writer(PacketType::Name, id);
    writer.Number32(2);
    writer.Bytes("../x").Bytes("").Add({});
    writer.Bytes("/etc").Bytes("").Add({.mode = 0120777U});
    return writer.Take();
  });
  EXPECT_EQ(ValidNamesIn(NamesOf(*Open(), {}), 2), QStringList());
  EXPECT_EQ(server_.requests.value(PacketType::Lstat), 0);
  EXPECT_EQ(server_.requests.value(PacketType::Stat), 0);
}

TEST_F(SftpOddServer, AFolderWithANameThatLeadsElsewhereIsNotRemoved) {
  for (const char* const name : {"../x", "/", ""}) {
    ListAs({{"good", name}});
    EXPECT_EQ(NumberOf([this] { Open()->Remove(QStringLiteral("d")); }), error::kInvalidName);
    EXPECT_EQ(server_.requests.value(PacketType::Remove), 0);
    EXPECT_EQ(server_.requests.value(PacketType::RmDir), 0);
  }
}

TEST_F(SftpOddServer, NothingIsRemovedThroughALinkThatTookAFoldersPlaceBeforeItWasListed) {
  for (const PacketType swap : {PacketType::OpenDir, PacketType::ReadDir}) {
    bool isLink = false;
    int listed = 0;
    server_.answer = [&](PacketType type, quint32 id, const QByteArray&) -> std::optional<Packets> {
      isLink = isLink || type == swap;
      if (type == PacketType::Lstat && isLink) {
        return Packets{OddServer::Item(id, 0120777)};
      }
      if (type == PacketType::ReadDir && listed++ == 0) {
        return Packets{OddServer::Names(id, {"theirs"})};
      }
      return std::nullopt;
    };
    const std::optional<RunTimeError> failure = FailureOf([this] { Open()->Remove(QStringLiteral("d")); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->Number(), providererror::kChanged);
    EXPECT_TRUE(failure->Description().endsWith(QStringLiteral(": d")));
    EXPECT_GT(listed, 0);
    EXPECT_EQ(server_.requests.value(PacketType::Remove), 0);
    EXPECT_EQ(server_.requests.value(PacketType::RmDir), 0);
  }
}

TEST_F(SftpOddServer, AFolderThatNeededMoreAnswersIsLookedAtBehindItsLast) {
  int listed = 0;
  server_.answer = [&](PacketType type, quint32 id, const QByteArray&) -> std::optional<Packets> {
    if (type == PacketType::Lstat && listed > 100) {
      return Packets{OddServer::Item(id, 0120777)};
    }
    if (type == PacketType::ReadDir && listed++ < 100) {
      return Packets{OddServer::Names(id, {QByteArray::number(listed)})};
    }
    return std::nullopt;
  };
  EXPECT_EQ(NumberOf([this] { Open()->Remove(QStringLiteral("d")); }), providererror::kChanged);
  EXPECT_EQ(server_.requests.value(PacketType::Remove), 0);
}

TEST_F(SftpOddServer, AFileOfABatchIsNotReadBeyondItsSizeAndABlock) {
  server_.answer = [](PacketType type, quint32 id, const QByteArray& request) -> std::optional<Packets> {
    if (type == PacketType::Open) {
      return Packets{PacketWriter(PacketType::Handle, id).Bytes(OddServer::TextOf(request)).Take()};
    }
    return OddServer::TextOf(request) == "/f2"
               ? TenBytes(10)(type, id, request)
               : Bytes(QByteArray(content::kLargestPiece, 'x'), 32 * 1024)(type, id, request);
  };
  const std::vector<ReadResult> read = Open()->ReadMany({File(), QStringLiteral("f2"), QStringLiteral("f3")});
  ASSERT_EQ(read.size(), 3U);
  for (const size_t i : {size_t{0}, size_t{2}}) {
    EXPECT_TRUE(read[i].isTooLarge);
    EXPECT_FALSE(read[i].content);
    EXPECT_FALSE(read[i].failure);
  }
  EXPECT_EQ(read[1].content, "0123456789");
  EXPECT_LE(server_.requests.value(PacketType::Read), 12);
}

TEST_F(SftpOddServer, AFileOfABatchThatHasGrownALittleIsReadWhole) {
  server_.answer = Bytes(QByteArray(20'000, 'x'), 20'000);
  const std::vector<ReadResult> read = Open()->ReadMany({File(), QStringLiteral("f2")});
  for (const ReadResult& result : read) {
    EXPECT_EQ(result.content, QByteArray(20'000, 'x'));
    EXPECT_FALSE(result.isTooLarge);
  }
}

TEST_F(SftpOddServer, FilesOfABatchThatHaveGrownAreNotReadBeyondItsLimitTogether) {
  const QByteArray grown(content::kMostBytes / 2 + 1, 'x');
  server_.answer = [&](PacketType type, quint32 id, const QByteArray& request) -> std::optional<Packets> {
    return type == PacketType::Stat
               ? std::optional(Packets{OddServer::Item(id, 0100644, content::kMostBytes / 2)})
               : Bytes(grown, 32 * 1024)(type, id, request);
  };
  const std::vector<ReadResult> read = Open()->ReadMany({File(), QStringLiteral("f2")});
  EXPECT_TRUE(read.front().isTooLarge);
  EXPECT_FALSE(read.front().content);
  // What the first one leaves is enough.
  EXPECT_EQ(read.back().content, grown);
}

TEST_F(SftpOddServer, ASizeBeyondAllNumbersIsTooLargeForABatch) {
  AnswerTo(PacketType::Stat,
           [](quint32 id) { return OddServer::Item(id, 0100644, std::numeric_limits<quint64>::max()); });
  const std::vector<ReadResult> read = Open()->ReadMany({File()});
  EXPECT_TRUE(read.front().isTooLarge);
  EXPECT_EQ(server_.requests.value(PacketType::Open), 0);
}

TEST_F(SftpOddServer, FilesWhoseNamesAreOneToTheServerDoNotReplaceEachOther) {
  // Without hard links, without case, and with a rename that replaces.
  QHash<QByteArray, int> placed;
  server_.answer = [&placed](PacketType type, quint32 id,
                             const QByteArray& request) -> std::optional<Packets> {
    if (type == PacketType::Lstat && OddServer::TextOf(request) != "/") {
      return Packets{placed.contains(OddServer::TextOf(request).toLower())
                         ? OddServer::Item(id, 0100644, 1)
                         : OddServer::Status(id, sftp::status::kNoSuchFile)};
    }
    if (type == PacketType::Rename) {
      sftp::PacketFields fields(request);
      static_cast<void>(fields.Number8());
      static_cast<void>(fields.Number32());
      static_cast<void>(fields.Bytes());
      ++placed[fields.Bytes().value_or(QByteArrayView()).toByteArray().toLower()];
    }
    return std::nullopt;
  };
  const std::vector<WriteResult> results = Open()->WriteMany({{QStringLiteral("a"), "1"},
                                                              {QStringLiteral("b"), "2"},
                                                              {QStringLiteral("A"), "3"},
                                                              {QStringLiteral("c"), "4"}});
  ASSERT_EQ(results.size(), 4U);
  EXPECT_TRUE(results[0].item && results[1].item);
  ASSERT_TRUE(results[2].failure);
  EXPECT_EQ(results[2].failure->Number(), error::kExists);
  EXPECT_FALSE(results[3].item || results[3].failure) << "not begun";
  EXPECT_EQ(placed, (QHash<QByteArray, int>{{"/a", 1}, {"/b", 1}}));
}

TEST_F(SftpOddServer, ABackslashInANameIsNoSeparator) {
  ListAs({{"..\\..\\etc"}});
  const auto files = Open();
  const QStringList names = NamesOf(*files, {});
  ASSERT_EQ(names.size(), 1);
  EXPECT_FALSE(names.front().contains(u'\\'));
  QByteArray asked;
  server_.answer = [&asked](PacketType type, quint32, const QByteArray& request) -> std::optional<Packets> {
    if (type == PacketType::Lstat) {
      asked = OddServer::TextOf(request);
    }
    return std::nullopt;
  };
  EXPECT_TRUE(files->Find(names.front()));
  EXPECT_EQ(asked, "/..\\..\\etc");
}

TEST_F(SftpOddServer, AListingThatNeverEndsIsEnded) {
  QList<QByteArray> names;
  for (int i = 0; i < 10000; ++i) {
    names += QByteArray::number(i);
  }
  for (const QList<QByteArray>& each : {names, QList<QByteArray>()}) {
    AnswerTo(PacketType::ReadDir, [&each](quint32 id) { return OddServer::Names(id, each); });
    qsizetype received = 0;
    const auto files = Open();
    const std::optional<RunTimeError> failure = FailureOf([&] {
      files->ListInBatches(QStringLiteral("d"), [&](Listing&& batch) {
        received += static_cast<qsizetype>(batch.size());
        return true;
      });
    });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->Description(), QStringLiteral("The listing of the folder does not end: d"));
    EXPECT_LE(received, 1'000'000);
  }
}

TEST_F(SftpOddServer, AListingWithTooManyBytesIsEnded) {
  const QByteArray huge(900'000, 'x');
  for (const bool isInLine : {false, true}) {
    int answers = 0;
    AnswerTo(PacketType::ReadDir, [&](quint32 id) {
      ++answers;
      PacketWriter writer(PacketType::Name, id);
      writer.Number32(1).Bytes(isInLine ? QByteArray("a") : huge).Bytes(isInLine ? huge : QByteArray());
      return writer.Add({.size = 1U, .mode = 0100644U}).Take();
    });
    const std::optional<RunTimeError> failure =
        FailureOf([this] { static_cast<void>(Open()->List(QStringLiteral("d"))); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->Number(), providererror::kDeviceIo);
    EXPECT_EQ(failure->Description(), QStringLiteral("The listing of the folder has more than 256 MiB: d"));
    EXPECT_LE(answers, 350);
  }
}

TEST_F(SftpOddServer, AListingThatNeverEndsCanBeEndedByItsReceiver) {
  AnswerTo(PacketType::ReadDir, [](quint32 id) { return OddServer::Names(id, {"a"}); });
  int batches = 0;
  const auto files = Open();
  files->ListInBatches({}, [&](Listing&&) { return ++batches < 3; });
  EXPECT_EQ(batches, 3);
  EXPECT_TRUE(files->Find(QStringLiteral("d")));
}

TEST_F(SftpOddServer, TheFailureOfAWriteHasItsReason) {
  struct Row {
    const char* text;
    quint32 code;
    qint32 number;
  };
  constexpr Row kRows[] = {
      {"No space left on device", 4, error::kDiskFull},
      {"Disk quota exceeded", 4, sftp::kQuotaExceeded},
      {"Permission denied", 3, error::kAccessDenied},
      {"", 14, error::kDiskFull},
      {"", 15, sftp::kQuotaExceeded},
      {"Read-only file system", 4, error::kWin32Error + 19},
      {"Input/output error", 4, error::kWin32Error + 1117},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.text);
    server_.answer = [&](PacketType type, quint32 id, const QByteArray& request) -> std::optional<Packets> {
      if (type == PacketType::Write) {
        return Packets{OddServer::Status(id, row.code, row.text)};
      }
      const bool isMissing = type == PacketType::Lstat && OddServer::TextOf(request) == "/new";
      return isMissing ? std::optional(Packets{OddServer::Status(id, sftp::status::kNoSuchFile)})
                       : std::nullopt;
    };
    const auto files = Open();
    EXPECT_EQ(NumberOf([&] { WriteNewFile(*files, QStringLiteral("new"), "content"); }), row.number);
    const std::vector<WriteResult> written = files->WriteMany({{QStringLiteral("new"), "content", {}}});
    ASSERT_TRUE(written.front().failure);
    EXPECT_EQ(written.front().failure->Number(), row.number);
  }
}

TEST_F(SftpOddServer, AFullDiskIsRecognizedByItsSpace) {
  server_.answer = [](PacketType type, quint32 id, const QByteArray& request) -> std::optional<Packets> {
    switch (type) {
      case PacketType::Init:
        return Packets{
            PacketWriter(PacketType::Version).Number32(3).Bytes("statvfs@openssh.com").Bytes("2").Take()};
      case PacketType::Write:
        return Packets{OddServer::Status(id, sftp::status::kFailure, "Failure")};
      case PacketType::Extended: {
        PacketWriter writer(PacketType::ExtendedReply, id);
        for (int i = 0; i < 11; ++i) {
          writer.Number64(i < 2 ? 4096 : 0);
        }
        return Packets{writer.Take()};
      }
      case PacketType::Lstat:
        return OddServer::TextOf(request) == "/new"
                   ? std::optional(Packets{OddServer::Status(id, sftp::status::kNoSuchFile)})
                   : std::nullopt;
      default:
        return std::nullopt;
    }
  };
  const std::optional<RunTimeError> failure =
      FailureOf([this] { WriteNewFile(*Open(), QStringLiteral("new"), "content"); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->Description(), QStringLiteral("The disk is full: new"));
}

TEST_F(SftpOddServer, WhatTheServerSaysOfAFailureIsTold) {
  AnswerTo(PacketType::Lstat, [](quint32 id) {
    return OddServer::Status(id, sftp::status::kFailure, "The axis\nis moving\x1b[31m");
  });
  const std::optional<RunTimeError> failure =
      FailureOf([this] { static_cast<void>(Open()->Find(QStringLiteral("d"))); });
  ASSERT_TRUE(failure);
  EXPECT_TRUE(
      failure->Description().startsWith(QStringLiteral("The file system reports a failure (The axis")));
  EXPECT_TRUE(failure->Description().endsWith(QStringLiteral("): d")));
  EXPECT_FALSE(failure->Description().contains(u'\n'));
  EXPECT_FALSE(failure->Description().contains(QChar(0x1B)));
}

TEST_F(SftpOddServer, NamesHaveTheEncodingThatWasAskedFor) {
  ListAs({{"caf\xE9", "plain"}});
  const auto files = Open(QStringLiteral("ISO-8859-1"));
  const QStringList names = NamesOf(*files, {});
  ASSERT_EQ(names.size(), 2);
  EXPECT_EQ(names[0], QStringLiteral("caf\u00E9"));
  QByteArray asked;
  server_.answer = [&asked](PacketType type, quint32, const QByteArray& request) -> std::optional<Packets> {
    if (type == PacketType::Lstat) {
      asked = OddServer::TextOf(request);
    }
    return std::nullopt;
  };
  EXPECT_TRUE(files->Find(names[0]));
  EXPECT_EQ(asked, "/caf\xE9");
  const std::optional<RunTimeError> failure =
      FailureOf([&] { static_cast<void>(files->Find(QStringLiteral("\u6F22"))); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->Number(), error::kInvalidName);
  EXPECT_TRUE(
      failure->Description().startsWith(QStringLiteral("The encoding ISO-8859-1 cannot hold the name: ")));
  const std::optional<RunTimeError> unknown =
      FailureOf([this] { static_cast<void>(Open(QStringLiteral("Klingon"))); });
  ASSERT_TRUE(unknown);
  EXPECT_EQ(unknown->Description(), QStringLiteral("The encoding Klingon is not known here"));
}

TEST_F(SftpOddServer, BytesThatAreNoTextOfTheEncodingSurvive) {
  std::shared_ptr<FileSystem> files;
  try {
    files = Open(QStringLiteral("Shift_JIS"));
  } catch (const RunTimeError&) {
    GTEST_SKIP() << "Qt without ICU knows no such encoding";
  }
  // A word, one whose second byte is that of a backslash, and bytes that are no character.
  const QList<QByteArray> sent{"\x93\xFA\x96\x7B", "\x95\x5C", "a\x80\xFF", "plain"};
  ListAs({sent});
  const QStringList names = NamesOf(*files, {});
  ASSERT_EQ(names.size(), sent.size());
  EXPECT_EQ(names[0], QStringLiteral("\u65E5\u672C"));
  EXPECT_EQ(names[1], QStringLiteral("\u8868"));
  QByteArray asked;
  server_.answer = [&asked](PacketType type, quint32, const QByteArray& request) -> std::optional<Packets> {
    if (type == PacketType::Lstat) {
      asked = OddServer::TextOf(request);
    }
    return std::nullopt;
  };
  for (qsizetype i = 0; i < sent.size(); ++i) {
    EXPECT_TRUE(files->Find(names[i]));
    EXPECT_EQ(asked, '/' + sent[i]) << i;
  }
}

TEST_F(SftpOddServer, ALinkIsMadeInTheUsualOrder) {
  QByteArray first;
  server_.answer = [&first](PacketType type, quint32, const QByteArray& request) -> std::optional<Packets> {
    if (type == PacketType::SymLink) {
      first = OddServer::TextOf(request);
    }
    return std::nullopt;
  };
  Open()->CreateLink(QStringLiteral("d\\link"), QStringLiteral("target"));
  EXPECT_EQ(first, "target");
}

TEST_F(SftpOddServer, TypedPathsBeginWhereTheLogOnDoes) {
  AnswerTo(PacketType::RealPath, [](quint32 id) { return OddServer::Names(id, {"/home/joe"}); });
  const auto files = Open();
  const std::pair<QString, QString> rows[] = {
      {QString(), QString()},
      {QStringLiteral("/"), QStringLiteral("/")},
      {QStringLiteral("/home/ann"), QStringLiteral("/home/ann")},
      {QStringLiteral("\\data"), QStringLiteral("\\data")},
      {QStringLiteral("~"), QStringLiteral("home\\joe")},
      {QStringLiteral("."), QStringLiteral("home\\joe")},
      {QStringLiteral("~/x/y"), QStringLiteral("home\\joe\\x/y")},
      {QStringLiteral("./x"), QStringLiteral("home\\joe\\x")},
      {QStringLiteral("programs"), QStringLiteral("home\\joe\\programs")},
  };
  for (const auto& [typed, path] : rows) {
    EXPECT_EQ(files->PathFromText(typed), path) << typed.toStdString();
  }
}

}  // namespace
}  // namespace trevane::test
