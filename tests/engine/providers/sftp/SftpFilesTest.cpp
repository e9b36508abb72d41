#include "engine/files/FileSystem.h"
#include "engine/files/HeldFolder.h"
#include "engine/files/WholeFile.h"
#include "engine/model/BatchWatch.h"
#include "engine/model/ContentSteps.h"
#include "engine/providers/sftp/SftpAnswer.h"
#include "engine/providers/sftp/SftpFileSystem.h"
#include "tests/engine/providers/sftp/FaultChannel.h"
#include "tests/engine/providers/sftp/SftpWorld.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSet>

#include <algorithm>
#include <functional>
#include <vector>

namespace trevane::test {
namespace {

using sftp::PacketType;

class SftpFiles : public SftpTest {};

QByteArray Numbered(qsizetype size) {
  QByteArray bytes(size, Qt::Uninitialized);
  for (qsizetype i = 0; i < size; ++i) {
    bytes[i] = static_cast<char>(i * 7 + i / 251);
  }
  return bytes;
}

qint32 NumberOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const RunTimeError& failure) {
    return failure.Number();
  }
  return 0;
}

/// A server with few handles, which has no words for that.
class FewHandlesChannel final : public FilterChannel {
 public:
  struct Seen {
    int limit = 0;
    int most = 0;
    int refused = 0;
  };
  FewHandlesChannel(std::unique_ptr<SftpChannel> inner, Seen& seen)
      : FilterChannel(std::move(inner)), seen_(seen) {}

 protected:
  [[nodiscard]] Packet OnRequest(Packet packet) override {
    const PacketType type = TypeOf(packet);
    if (type == PacketType::Close) {
      --open_;
    }
    if (type != PacketType::Open && type != PacketType::OpenDir) {
      return packet;
    }
    if (open_ == seen_.limit) {
      ++seen_.refused;
      Answer(StatusOf(IdOf(packet), sftp::status::kFailure, "Failure"));
      return {};
    }
    ++open_;
    seen_.most = std::max(seen_.most, open_);
    opening_.insert(IdOf(packet));
    return packet;
  }
  [[nodiscard]] Packet OnAnswer(Packet packet) override {
    if (opening_.remove(IdOf(packet)) && TypeOf(packet) == PacketType::Status) {
      --open_;
    }
    return packet;
  }

 private:
  Seen& seen_;
  int open_ = 0;
  QSet<quint32> opening_;
};

/// Counts the packets of a kind.
class CountingChannel final : public FilterChannel {
 public:
  CountingChannel(std::unique_ptr<SftpChannel> inner, QHash<PacketType, int>& count, int& keptAlive)
      : FilterChannel(std::move(inner)), count_(count), keptAlive_(keptAlive) {}
  void KeepAlive() override { ++keptAlive_; }

 protected:
  [[nodiscard]] Packet OnRequest(Packet packet) override {
    ++count_[TypeOf(packet)];
    return packet;
  }

 private:
  QHash<PacketType, int>& count_;
  int& keptAlive_;
};

TEST_F(SftpFiles, BatchesFitIntoTheHandlesOfAServerThatHasNoWordsForItsLimit) {
  for (const int limit : {1, 3, 10, 40}) {
    SCOPED_TRACE(limit);
    world_.Clear();
    FewHandlesChannel::Seen seen{.limit = limit};
    const auto files = world_.Open([&](std::unique_ptr<SftpChannel> pipe) {
      return std::make_unique<FewHandlesChannel>(std::move(pipe), seen);
    });
    for (int round = 0; round < 2; ++round) {
      std::vector<NewContent> contents;
      QStringList paths;
      for (int i = 0; i < 60; ++i) {
        paths += world_.At(QStringLiteral("%1-%2").arg(round).arg(i));
        contents.push_back({paths.back(), Numbered(i), {}});
      }
      for (const WriteResult& result : files->WriteMany(contents)) {
        ASSERT_TRUE(result.item) << (result.failure ? result.failure->what() : "not begun");
      }
      const std::vector<ReadResult> read = files->ReadMany(paths);
      for (int i = 0; i < 60; ++i) {
        ASSERT_EQ(read[static_cast<size_t>(i)].content, Numbered(i));
      }
    }
    EXPECT_LE(seen.most, limit);
    EXPECT_GT(seen.refused, 0);
    seen.refused = 0;
    static_cast<void>(files->ReadMany({world_.At(QStringLiteral("0-1")), world_.At(QStringLiteral("0-2"))}));
    EXPECT_LE(seen.refused, limit == 1 ? 2 : 0);
  }
}

TEST_F(SftpFiles, EachFileOfABatchIsTold) {
  world_.Clear();
  const auto files = world_.Open();
  std::vector<NewContent> contents;
  contents.reserve(5);
  QStringList paths;
  for (int i = 0; i < 5; ++i) {
    paths += world_.At(QStringLiteral("%1").arg(i));
    contents.push_back({paths.back(), Numbered(1000), {}});
  }
  BatchStep told;
  int steps = 0;
  const BatchWatch watch([&](const BatchStep& step) {
    told.files += step.files;
    told.bytes += step.bytes;
    ++steps;
  });
  EXPECT_TRUE(files->WriteMany(contents).back().item);
  EXPECT_EQ(told.files, 5);
  EXPECT_EQ(told.bytes, 5000);
  EXPECT_TRUE(files->ReadMany(paths).back().content);
  EXPECT_EQ(told.files, 10);
  EXPECT_EQ(told.bytes, 10000);
  EXPECT_EQ(steps, 10);
}

TEST_F(SftpFiles, AfterACancelOfAnyCallTheLineStaysUsable) {
  world_.MakeFolder(QStringLiteral("d/sub"));
  world_.Write(QStringLiteral("d/f"), Numbered(100000));
  world_.Write(QStringLiteral("d/sub/g"), "content");
  const auto at = [this](const char* name) { return world_.At(QString::fromLatin1(name)); };
  const std::pair<const char*, std::function<void(FileSystem & files)>> calls[] = {
      {"List", [&](FileSystem& files) { static_cast<void>(files.List(at("d"))); }},
      {"Find", [&](FileSystem& files) { static_cast<void>(files.Find(at("d/f"))); }},
      {"Read", [&](FileSystem& files) { static_cast<void>(ReadFile(files, at("d/f"))); }},
      {"ReadMany",
       [&](FileSystem& files) {
         for (const ReadResult& result : files.ReadMany({at("d/f"), at("d/sub/g")})) {
           if (result.failure) {
             throw *result.failure;
           }
         }
       }},
      {"Write", [&](FileSystem& files) { WriteFile(files, at("w"), Numbered(100000)); }},
      {"WriteMany",
       [&](FileSystem& files) {
         for (const WriteResult& result :
              files.WriteMany({{at("w"), Numbered(50000), {SinkRequest::Mode::Replace}},
                               {at("x"), "x", {SinkRequest::Mode::Replace}}})) {
           if (result.failure) {
             throw *result.failure;
           }
         }
       }},
      {"Traits", [&](FileSystem& files) { static_cast<void>(files.Traits(at("d/f"))); }},
      {"SetTraits", [&](FileSystem& files) { files.SetTraits(at("d/f"), {.modified = {1000000000000}}); }},
      {"Flush", [&](FileSystem& files) { files.Flush(at("d/f")); }},
      {"Identities", [&](FileSystem& files) { static_cast<void>(files.FolderIdentities(at("d"))); }},
      {"Details", [&](FileSystem& files) { static_cast<void>(files.Details(at("d/f"))); }},
      {"Hold",
       [&](FileSystem& files) {
         static_cast<void>(files.Hold(at("d"))->Enter(QStringLiteral("sub"))->List());
       }},
  };
  LineFault fault{.kind = LineFault::Kind::Cancel};
  const auto files = world_.Open([&](std::unique_ptr<SftpChannel> pipe) {
    return std::make_unique<FaultChannel>(std::move(pipe), fault);
  });
  for (const auto& each : calls) {
    const auto& call = each.second;
    SCOPED_TRACE(each.first);
    int cancelled = 0;
    for (int step = 1; step < 1000; ++step) {
      fault.seen = 0;
      fault.at = step;
      fault.hasStruck = false;
      const qint32 number = NumberOf([&] { call(*files); });
      fault.at = 0;
      fault.isCancelled = false;
      if (!fault.hasStruck) {
        EXPECT_EQ(number, 0);
        break;
      }
      EXPECT_TRUE(number == error::kCancelled || number == 0) << number;
      cancelled += number != 0 ? 1 : 0;
      ASSERT_EQ(files->List(at("d")).size(), 2U);
      ASSERT_EQ(ReadFile(*files, at("d/sub/g")), "content");
      files->ForgetLearnt();
    }
    EXPECT_GT(cancelled, 0);
  }
  EXPECT_EQ(ReadFile(*files, at("d/f")), Numbered(100000));
}

TEST_F(SftpFiles, AnIdleLineIsClosedAndComesBackOnDemand) {
  auto connector = std::make_unique<PipeConnector>();
  PipeConnector& connections = *connector;
  world_.Write(QStringLiteral("f"), Numbered(1000));
  const auto files = OpenSftpFileSystem(std::move(connector),
                                        {.host = QStringLiteral("pipe"), .user = QStringLiteral("test")}, {});
  EXPECT_EQ(files->Idle(0), 60000);
  EXPECT_EQ(connections.Connections(), 1);
  // What is open keeps it open.
  auto source = files->OpenSource(world_.At(QStringLiteral("f")));
  EXPECT_GT(files->Idle(60000), 60000);
  EXPECT_EQ(ReadAll(*source), Numbered(1000));
  source.reset();
  EXPECT_EQ(connections.Connections(), 1);
  EXPECT_EQ(files->Idle(60000), 0);
  EXPECT_EQ(files->Idle(90000), 0);
  EXPECT_EQ(connections.Connections(), 1);
  EXPECT_EQ(ReadFile(*files, world_.At(QStringLiteral("f"))), Numbered(1000));
  EXPECT_EQ(connections.Connections(), 2);
}

class AskingConnector final : public PipeConnector {
 public:
  using PipeConnector::PipeConnector;
  [[nodiscard]] bool ConnectsWithoutQuestion() const override { return false; }
};

TEST_F(SftpFiles, ALineThatCannotComeBackWithoutAQuestionIsKeptAlive) {
  QHash<PacketType, int> count;
  int keptAlive = 0;
  auto connector = std::make_unique<AskingConnector>([&](std::unique_ptr<SftpChannel> pipe) {
    return std::make_unique<CountingChannel>(std::move(pipe), count, keptAlive);
  });
  const auto files = OpenSftpFileSystem(std::move(connector),
                                        {.host = QStringLiteral("pipe"), .user = QStringLiteral("test")}, {});
  qint64 idle = 0;
  for (int i = 0; i < 4; ++i) {
    const qint64 next = files->Idle(idle);
    EXPECT_EQ(next, idle + 30000);
    idle = next;
  }
  EXPECT_EQ(keptAlive, 3);
}

TEST_F(SftpFiles, DetailsTellPermissionsOwnerAndSpace) {
  world_.Write(QStringLiteral("f"), "x");
  ASSERT_TRUE(QFile::setPermissions(world_.OnDisk(QStringLiteral("f")),
                                    QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup));
  const auto files = world_.Open();
  const QFileInfo info(world_.OnDisk(QStringLiteral("f")));
  EXPECT_EQ(files->Details(world_.At(QStringLiteral("f"))),
            (QStringList{QStringLiteral("Permissions: -rw-r-----"),
                         QStringLiteral("Owner: %1:%2").arg(info.owner(), info.group())}));
  const QStringList top = files->Details({});
  ASSERT_EQ(top.size(), 2);
  EXPECT_EQ(top[0], QStringLiteral("Server: a pipe"));
  EXPECT_TRUE(top[1].startsWith(QStringLiteral("Free space: ")) && top[1].contains(QStringLiteral(" of ")));
}

TEST_F(SftpFiles, AFlushReachesEachFileThatWasWrittenBelow) {
  QHash<PacketType, int> count;
  int keptAlive = 0;
  const auto files = world_.Open([&](std::unique_ptr<SftpChannel> pipe) {
    return std::make_unique<CountingChannel>(std::move(pipe), count, keptAlive);
  });
  files->CreateFolder(world_.At(QStringLiteral("d")));
  std::vector<NewContent> contents;
  contents.reserve(10);
  for (int i = 0; i < 10; ++i) {
    contents.push_back({world_.At(QStringLiteral("d\\%1").arg(i)), "x", {}});
  }
  static_cast<void>(files->WriteMany(contents));
  files->Rename(world_.At(QStringLiteral("d")), world_.At(QStringLiteral("e")), false);
  files->Remove(world_.At(QStringLiteral("e\\3")));
  const auto flushed = [&](const QString& path) {
    const int before = count.value(PacketType::Extended);
    files->Flush(path);
    return count.value(PacketType::Extended) - before;
  };
  // With the folder itself and the one that holds its name.
  EXPECT_EQ(flushed(world_.At(QStringLiteral("e"))), 9 + 2);
  EXPECT_EQ(flushed(world_.At(QStringLiteral("e"))), 1);
}

TEST_F(SftpFiles, ANewFileIsPrivateUntilItHasItsPermissions) {
  const auto files = world_.Open();
  SinkRequest request;
  request.traits.permissions = 0644U;
  const auto sink = files->OpenSink(world_.At(QStringLiteral("f")), request);
  sink->Write("content");
  const std::optional<QString> built = sink->TemporaryName();
  ASSERT_TRUE(built);
  EXPECT_EQ(files->Traits(world_.At(*built)).permissions, 0600U);
  static_cast<void>(sink->Commit());
  EXPECT_EQ(files->Traits(world_.At(QStringLiteral("f"))).permissions, 0644U);
}

TEST_F(SftpFiles, ABatchReplacesFilesAndKeepsTheirPermissions) {
  world_.Write(QStringLiteral("a"), "old");
  world_.Write(QStringLiteral("b"), "old");
  const auto files = world_.Open();
  files->SetTraits(world_.At(QStringLiteral("a")), {.permissions = 0600U});
  ASSERT_TRUE(QFile::link(QStringLiteral("b"), world_.OnDisk(QStringLiteral("l"))));
  SinkRequest request{.mode = SinkRequest::Mode::Replace};
  request.traits.permissions = 0666U;
  const std::vector<WriteResult> written =
      files->WriteMany({{world_.At(QStringLiteral("a")), "new", request},
                        {world_.At(QStringLiteral("l")), "through", request},
                        {world_.At(QStringLiteral("c")), "made", request}});
  for (const WriteResult& result : written) {
    EXPECT_TRUE(result.item) << (result.failure ? result.failure->what() : "not begun");
  }
  EXPECT_EQ(world_.Tree(), (QStringList{QStringLiteral("a=new"), QStringLiteral("b=through"),
                                        QStringLiteral("c=made"), QStringLiteral("l@")}));
  EXPECT_EQ(files->Traits(world_.At(QStringLiteral("a"))).permissions, 0600U);
}

TEST_F(SftpFiles, TwoFileSystemsOfOneServerGiveOneItemOneIdentity) {
  world_.MakeFolder(QStringLiteral("d"));
  world_.Write(QStringLiteral("d/f"), "x");
  ASSERT_TRUE(QFile::link(QStringLiteral("d"), world_.OnDisk(QStringLiteral("l"))));
  const auto one = world_.Open();
  const auto other = world_.Open();
  EXPECT_EQ(one->Capabilities().identitySpace, other->Capabilities().identitySpace);
  EXPECT_EQ(one->Identity(world_.At(QStringLiteral("d\\f"))),
            other->Identity(world_.At(QStringLiteral("l\\f"))));
  EXPECT_NE(one->Identity(world_.At(QStringLiteral("d"))), one->Identity(world_.At(QStringLiteral("l"))));
  EXPECT_EQ(one->FolderIdentities(world_.At(QStringLiteral("l"))).front(),
            other->Identity(world_.At(QStringLiteral("d"))));
}

}  // namespace
}  // namespace trevane::test
