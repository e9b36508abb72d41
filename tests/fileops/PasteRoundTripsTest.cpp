#include "engine/providers/local/LocalFileSystem.h"
#include "engine/providers/sftp/SftpFileSystem.h"
#include "fileops/modIxoFile.h"
#include "tests/engine/providers/sftp/PipeChannel.h"
#include "tests/engine/providers/sftp/RoundTripChannel.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SessionWorld.h"
#include "tests/support/TestFiles.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/NodeTags.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <utility>

namespace trevane::test {
namespace {

const QString kDisk = QStringLiteral("Workspace\\My Computer\\C:\\out");
constexpr int kFiles = 100;

/// What a paste costs over SFTP, as the program opens its controllers: waits are round trips, and all else
/// takes no time.
class PasteRoundTrips : public testing::Test {
 protected:
  void SetUp() override {
    if (SftpServerProgram().isEmpty()) {
      GTEST_SKIP() << NoSftpServerText().toStdString();
    }
    for (const auto& folder : {QStringLiteral("out/hundred"), QStringLiteral("one/in"),
                               QStringLiteral("two/out/hundred"), QStringLiteral("two/in")}) {
      ASSERT_TRUE(QDir(folder_.path()).mkpath(folder));
    }
    for (int i = 0; i < kFiles; ++i) {
      for (const char* folder : {"out/hundred/%1", "two/out/hundred/%1"}) {
        WriteFile(folder_.filePath(QString::fromLatin1(folder).arg(i)), QByteArray(4096, 'x'));
      }
    }
    world_.volumes.Set({{QStringLiteral("C:"), folder_.path() + u'/', drivetype::kFixed}});
    const auto local = std::make_shared<LocalFileSystem>(world_.volumes);
    const QString sftp = QStringLiteral("IxoProv.Sftp");
    world_.Open({{QStringLiteral("IxoProv.LocalFile"), [local](const FileSystemRequest&) { return local; }},
                 {sftp,
                  [this](const FileSystemRequest& request) {
                    const PipeConnector::Wrap wrap =
                        [&count = counts_.at(request.option)](std::unique_ptr<SftpChannel> pipe) {
                          return std::make_unique<RoundTripChannel>(std::move(pipe), count);
                        };
                    return OpenSftpFileSystem(std::make_unique<PipeConnector>(wrap, request.control),
                                              {.host = request.option, .user = QStringLiteral("u")},
                                              request.control);
                  },
                  true}});
    for (const QString& name : {QStringLiteral("one"), QStringLiteral("two")}) {
      world_.Register(name, sftp, folder_.filePath(name), name);
    }
    world_.drives.RefreshDrives();
  }
  void TearDown() override { world_.StopThreads(); }

  /// Waits of both controllers.
  [[nodiscard]] int Waits() const {
    int waits = 0;
    for (const auto& [name, count] : counts_) {
      waits += count.waits;
    }
    return waits;
  }
  /// What pasting the folder costs.
  int Paste(const QString& from, const QString& into) {
    const auto& controllers = world_.session.gIxoCtrls();
    const auto tag = [](const QString& address) { return IsLocalAddress(address) ? 0 : TAG_CONTROLLER; };
    OperationState state;
    state.nFileOpMode = OperationState::kCopy;
    state.clipboard.Add(ClipBrdOfItem(controllers, from, QStringLiteral("hundred"), kFolderBit | tag(from)),
                        {});
    modIxoFile operations{{world_.files, log_, host_, state}};
    const int before = Waits();
    EXPECT_TRUE(operations.Transfer(ClipBrdOfNode(controllers, into, kFolderBit | tag(into))));
    const int cost = Waits() - before;
    RecordProperty("waits", cost);
    return cost;
  }
  [[nodiscard]] qsizetype Arrived(const QString& folder) const {
    qsizetype whole = 0;
    for (const QFileInfo& file : QDir(folder_.filePath(folder)).entryInfoList(QDir::Files | QDir::Hidden)) {
      whole += file.size() == 4096 ? 1 : 0;
    }
    return whole;
  }

  QTemporaryDir folder_;
  RecordingLog log_;
  RecordingHost host_;
  std::map<QString, RoundTrips> counts_{{QStringLiteral("one"), {}}, {QStringLiteral("two"), {}}};
  SessionWorld world_;
};

TEST_F(PasteRoundTrips, HundredFilesUp) {
  EXPECT_LE(Paste(kDisk, QStringLiteral("Workspace\\one\\in")), 20);
  EXPECT_EQ(Arrived(QStringLiteral("one/in/hundred")), kFiles);
}

TEST_F(PasteRoundTrips, HundredFilesBetweenTwo) {
  EXPECT_LE(Paste(QStringLiteral("Workspace\\two\\out"), QStringLiteral("Workspace\\one\\in")), 32);
  EXPECT_EQ(Arrived(QStringLiteral("one/in/hundred")), kFiles);
}

TEST_F(PasteRoundTrips, ATreeHasAProbe) {
  ASSERT_TRUE(QDir(folder_.path()).mkpath(QStringLiteral("out/hundred/sub/below")));
  // A file of a fresh name shows that the new folder is not below the source.
  const int waits = Paste(kDisk, QStringLiteral("Workspace\\one\\in"));
  EXPECT_GT(waits, 20 + 6);
  EXPECT_LE(waits, 20 + 17);
  EXPECT_EQ(Arrived(QStringLiteral("one/in/hundred")), kFiles);
  EXPECT_TRUE(QDir(folder_.filePath(QStringLiteral("one/in/hundred/sub/below"))).exists());
}

TEST_F(PasteRoundTrips, HundredFilesWithinOne) {
  EXPECT_LE(Paste(QStringLiteral("Workspace\\two\\out"), QStringLiteral("Workspace\\two\\in")), 30);
  EXPECT_EQ(Arrived(QStringLiteral("two/in/hundred")), kFiles);
}

}  // namespace
}  // namespace trevane::test
