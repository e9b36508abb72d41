#include "engine/files/HeldFolder.h"
#include "engine/files/ProviderError.h"
#include "engine/files/RootedFileSystem.h"
#include "engine/files/WholeFile.h"
#include "engine/model/ContentSteps.h"
#include "engine/providers/ProviderTable.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "engine/providers/share/OpenShare.h"
#include "platform/AppInfo.h"
#include "tests/engine/providers/ProviderBed.h"
#include "tests/support/FakeVolumes.h"

#include <QDir>
#include <QFile>
#include <QStorageInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

class OpenShareTest : public testing::Test {
 protected:
  OpenShareTest() {
    EXPECT_TRUE(QDir(folder_.path()).mkpath(QStringLiteral("cell/prog")));
    QFile file(folder_.filePath(QStringLiteral("cell/prog/a.pac")));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("abc") == 3);
  }

  [[nodiscard]] QString Machine(const QString& relative = QStringLiteral("cell")) const {
    return QDir::toNativeSeparators(folder_.filePath(relative));
  }
  [[nodiscard]] static std::shared_ptr<FileSystem> Open(const QString& machine) {
    return OpenShare({.machine = machine, .option = {}});
  }
  static void ExpectRefused(const QString& machine, qint32 number, const QString& named) {
    EXPECT_EQ(ErrorOf([&] { (void)Open(machine); }), number) << machine.toStdString();
    const QString text = ErrorTextOf([&] { (void)Open(machine); });
    EXPECT_TRUE(text.contains(named)) << text.toStdString();
  }

  QTemporaryDir folder_;
};

TEST_F(OpenShareTest, ItsTopIsTheFolderOfTheMachine) {
  const std::shared_ptr<FileSystem> share = Open(Machine());
  EXPECT_FALSE(share->Capabilities().topHoldsDrives);
  EXPECT_FALSE(share->Capabilities().shares);
  EXPECT_EQ(NamesIn(*share, QString()), QStringList{QStringLiteral("prog")});
  EXPECT_EQ(NamesIn(*share, QStringLiteral("prog")), QStringList{QStringLiteral("a.pac")});
  EXPECT_EQ(ReadAll(*share->OpenSource(QStringLiteral("prog\\a.pac"))), "abc");
}

TEST_F(OpenShareTest, TheMachineMayEndWithASeparatorOrStandInQuotes) {
  const QString separator = appinfo::PathSeparator();
  for (const QString& machine : {QString(Machine() + separator), QString(u'"' + Machine() + u'"'),
                                 QString(Machine() + separator + QStringLiteral(".") + separator)}) {
    EXPECT_EQ(NamesIn(*Open(machine), QString()), QStringList{QStringLiteral("prog")});
  }
}

TEST_F(OpenShareTest, ABadMachineIsNamed) {
  ExpectRefused(QString(), error::kInvalidParameter, QStringLiteral("machine name is missing"));
  ExpectRefused(QStringLiteral("  "), error::kInvalidParameter, QStringLiteral("machine name is missing"));
  ExpectRefused(QStringLiteral("cell/prog"), error::kInvalidName, QStringLiteral("cell/prog"));
  ExpectRefused(QStringLiteral("..\\cell"), error::kInvalidName, QStringLiteral("..\\cell"));
  ExpectRefused(Machine(QStringLiteral("missing")), error::kNotFound, Machine(QStringLiteral("missing")));
  ExpectRefused(Machine(QStringLiteral("cell/prog/a.pac")), providererror::kNotAFolder,
                Machine(QStringLiteral("cell/prog/a.pac")));
}

TEST_F(OpenShareTest, AServerNeedsAShareOrAMount) {
  const bool isWindows = appinfo::PathSeparator() == u"\\";
  ExpectRefused(QStringLiteral("\\\\server"), isWindows ? error::kInvalidName : error::kNotSupported,
                QStringLiteral("\\\\server"));
}

TEST_F(OpenShareTest, NoPathLeadsOut) {
  const std::shared_ptr<FileSystem> share = Open(Machine(QStringLiteral("cell/prog")));
  for (const QString& path :
       {QStringLiteral("..\\prog"), QStringLiteral("a\\..\\..\\x"), QStringLiteral("../x"),
        QStringLiteral("."), QStringLiteral("\\\\server\\share")}) {
    EXPECT_NE(ErrorOf([&] { (void)share->Stat(path); }), 0) << path.toStdString();
    EXPECT_NE(ErrorOf([&] { (void)share->List(path); }), 0) << path.toStdString();
    EXPECT_NE(ErrorOf([&] { share->Remove(path); }), 0) << path.toStdString();
    EXPECT_NE(ErrorOf([&] { share->CreateFolder(path); }), 0) << path.toStdString();
    EXPECT_NE(ErrorOf([&] { share->Rename(QStringLiteral("a.pac"), path, true); }), 0) << path.toStdString();
  }
  EXPECT_NE(ErrorOf([&] { share->Remove(QString()); }), 0);
  EXPECT_TRUE(QFile::exists(Machine(QStringLiteral("cell/prog/a.pac"))));
}

TEST_F(OpenShareTest, FailuresNameThePathsOfTheShare) {
  const std::shared_ptr<FileSystem> share = Open(Machine());
  EXPECT_EQ(ErrorTextOf([&] { (void)share->Stat(QStringLiteral("prog\\b")); }),
            QStringLiteral("The file or folder was not found: prog\\b"));
  EXPECT_EQ(ErrorTextOf([&] { (void)ReadFile(*share->Hold(QStringLiteral("prog")), QStringLiteral("b")); }),
            QStringLiteral("The file or folder was not found: prog\\b"));
  EXPECT_EQ(share->Hold(QStringLiteral("prog"))->Path(), QStringLiteral("prog"));
}

TEST_F(OpenShareTest, AFolderThatVanishedIsNotReady) {
  const std::shared_ptr<FileSystem> share = Open(Machine());
  ASSERT_TRUE(QDir().rename(Machine(), Machine(QStringLiteral("away"))));
  EXPECT_EQ(ErrorOf([&] { (void)share->List(QString()); }), error::kDeviceNotReady);
  EXPECT_EQ(ErrorTextOf([&] { (void)share->List(QString()); }),
            QStringLiteral("The device is not ready: ") + Machine());
}

TEST_F(OpenShareTest, NothingIsWrittenBelowALostMount) {
  // Another volume takes the place of the folder, as when a mount is lost.
  const QTemporaryDir other(QStringLiteral("/dev/shm/share-XXXXXX"));
  if (appinfo::PathSeparator() == u"\\" || !other.isValid() ||
      QStorageInfo(other.path()) == QStorageInfo(folder_.path())) {
    GTEST_SKIP() << "no second volume";
  }
  const std::shared_ptr<FileSystem> share = Open(Machine());
  ASSERT_TRUE(QDir().rename(Machine(), Machine(QStringLiteral("away"))));
  ASSERT_TRUE(QFile::link(other.path(), Machine()));
  EXPECT_EQ(ErrorOf([&] { WriteFile(*share, QStringLiteral("a"), "x"); }), error::kDeviceNotReady);
  EXPECT_EQ(ErrorOf([&] { share->CreateFolder(QStringLiteral("b")); }), error::kDeviceNotReady);
  EXPECT_EQ(ErrorOf([&] { (void)share->List(QString()); }), error::kDeviceNotReady);
  EXPECT_TRUE(QDir(other.path()).isEmpty());
}

TEST_F(OpenShareTest, ItsFoldersAreKnownToBeThoseOfTheLocalFiles) {
  FakeVolumes volumes({{QStringLiteral("C:"), folder_.path() + u'/', drivetype::kFixed}});
  LocalFileSystem local(volumes);
  const std::shared_ptr<FileSystem> share = Open(Machine());
  EXPECT_EQ(share->Identity(QStringLiteral("prog")), local.Identity(QStringLiteral("C:\\cell\\prog")));
  const std::vector<FileIdentity> shared = share->FolderIdentities(QStringLiteral("prog"));
  const std::vector<FileIdentity> own = local.FolderIdentities(QStringLiteral("C:\\cell\\prog"));
  ASSERT_EQ(shared.empty(), own.empty());
  if (!own.empty()) {
    EXPECT_EQ(shared.front(), own.front());
  }
}

TEST_F(OpenShareTest, TheTraitsOfAFileComeWithItsContent) {
  const QString path = Machine(QStringLiteral("cell/prog/a.pac"));
  ASSERT_TRUE(QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner));
  FakeVolumes volumes({{QStringLiteral("C:"), folder_.path() + u'/', drivetype::kFixed}});
  LocalFileSystem local(volumes);
  const std::optional<FileTraits> own = local.OpenSource(QStringLiteral("C:\\cell\\prog\\a.pac"))->Traits();
  EXPECT_EQ(own.has_value(), appinfo::PathSeparator() == u"/");
  const std::shared_ptr<FileSystem> share = Open(Machine());
  for (const auto& source :
       {std::shared_ptr(share->OpenSource(QStringLiteral("prog\\a.pac"))),
        std::shared_ptr(share->Hold(QStringLiteral("prog"))->OpenSource(QStringLiteral("a.pac"), 0))}) {
    const std::optional<FileTraits> shared = source->Traits();
    ASSERT_EQ(shared.has_value(), own.has_value());
    if (own) {
      EXPECT_EQ(shared->modified, own->modified);
      EXPECT_EQ(shared->permissions, own->permissions);
    }
  }
}

TEST_F(OpenShareTest, AServerMayReckonWhatHasArrived) {
  const auto folder = Open(Machine())->Hold(QStringLiteral("prog"));
  EXPECT_FALSE(folder->SeesArrivals());
}

TEST_F(OpenShareTest, TheProviderRunsOnAThreadOfItsOwn) {
  FakeVolumes volumes;
  const ProviderTable table = ShippedProviders(volumes);
  ASSERT_GE(table.size(), 2U);
  EXPECT_EQ(table[1].name, QStringLiteral("IxoProv.Share"));
  EXPECT_TRUE(table[1].isSlow);
  EXPECT_FALSE(table[0].isSlow);
  EXPECT_EQ(NamesIn(*table[1].open({.machine = Machine(), .option = {}}), QString()),
            QStringList{QStringLiteral("prog")});
}

// Over a file system in memory: every path of a call is prefixed.
TEST(RootedFileSystemTest, BothPathsOfACallStandBelowTheRoot) {
  const auto inner = std::make_shared<MemoryFileSystem>();
  inner->AddFile(QStringLiteral("top\\a"), "abc");
  inner->AddFile(QStringLiteral("b"), "outside");
  RootedFileSystem files(inner, QStringLiteral("top"), QStringLiteral("cell"));
  files.Copy(QStringLiteral("a"), QStringLiteral("b"), false);
  files.Rename(QStringLiteral("a"), QStringLiteral("c"), false);
  EXPECT_EQ(NamesIn(*inner, QStringLiteral("top")), (QStringList{QStringLiteral("b"), QStringLiteral("c")}));
  EXPECT_EQ(ReadFile(*inner, QStringLiteral("b")), "outside");
  const std::vector<WriteResult> written = files.WriteMany(
      {{QStringLiteral("d"), "1", {}}, {QStringLiteral("c"), "2", {.mode = SinkRequest::Mode::New}}});
  EXPECT_TRUE(written[0].item.has_value());
  ASSERT_TRUE(written[1].failure.has_value());
  EXPECT_EQ(written[1].failure->Description(), QStringLiteral("The file or folder exists already: c"));
  const std::vector<ReadResult> read = files.ReadMany({QStringLiteral("d"), QStringLiteral("e")});
  EXPECT_EQ(read[0].content, QByteArray("1"));
  EXPECT_EQ(read[1].failure->Description(), QStringLiteral("The file or folder was not found: e"));
  std::unique_ptr<ContentSink> sink =
      files.OpenSink(QStringLiteral("d"), {.mode = SinkRequest::Mode::Replace});
  sink->Write("new");
  EXPECT_EQ(sink->Commit().entry.size, 3);
  EXPECT_EQ(ReadFile(*inner, QStringLiteral("top\\d")), "new");
}

TEST(RootedFileSystemTest, ANameThatLooksLikeTheRootStaysInATextAsItIs) {
  RootedFileSystem files(std::make_shared<MemoryFileSystem>(), QStringLiteral("top"), QStringLiteral("cell"));
  EXPECT_EQ(ErrorTextOf([&] { (void)files.Stat(QStringLiteral("top.txt")); }),
            QStringLiteral("The file or folder was not found: top.txt"));
}

}  // namespace
}  // namespace trevane::test
