#include "engine/files/HeldFolder.h"
#include "engine/files/ProviderError.h"
#include "engine/files/WholeFile.h"
#include "engine/providers/ProviderTable.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "tests/engine/providers/ProviderBed.h"
#include "tests/support/FakeShellIcons.h"
#include "tests/support/FakeVolumes.h"
#include "tests/support/FaultyFileSystem.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace trevane::test {
namespace {

TEST(MemoryFileSystemTest, AFullDiskKeepsTheOldContent) {
  MemoryFileSystem files({.capacity = 10});
  WriteFile(files, QStringLiteral("f"), "12345");
  // The old content is kept until the new is whole.
  EXPECT_EQ(ErrorOf([&] { WriteFile(files, QStringLiteral("f"), "123456"); }), error::kDiskFull);
  EXPECT_EQ(files.Content(QStringLiteral("f")), QByteArray("12345"));
  files.Copy(QStringLiteral("f"), QStringLiteral("g"), false);
  EXPECT_EQ(ErrorOf([&] { files.Copy(QStringLiteral("f"), QStringLiteral("h"), false); }), error::kDiskFull);
  EXPECT_EQ(files.Tree(), (QStringList{QStringLiteral("f=12345"), QStringLiteral("g=12345")}));
  files.SetCapacity(-1);
  WriteFile(files, QStringLiteral("f"), QByteArray(100, 'x'));
}

TEST(MemoryFileSystemTest, AWriteProtectedDriveRefusesEveryChange) {
  MemoryFileSystem files({.drives = {QStringLiteral("C:"), QStringLiteral("D:")}});
  files.AddFile(QStringLiteral("C:\\f"), "x");
  files.AddFile(QStringLiteral("D:\\g"), "y");
  files.SetWriteProtected(QStringLiteral("C:"), true);
  EXPECT_NE(files.Stat(QStringLiteral("C:\\f")).attributes & attribute::kReadOnly, 0);
  const QStringList before = files.Tree();
  const QString f = QStringLiteral("C:\\f");
  const QString other = QStringLiteral("C:\\new");
  EXPECT_EQ(ErrorOf([&] { WriteFile(files, f, "z"); }), providererror::kWriteProtected);
  EXPECT_EQ(ErrorOf([&] { files.CreateFile(other); }), providererror::kWriteProtected);
  EXPECT_EQ(ErrorOf([&] { files.CreateFolder(other); }), providererror::kWriteProtected);
  EXPECT_EQ(ErrorOf([&] { files.Copy(QStringLiteral("D:\\g"), other, false); }),
            providererror::kWriteProtected);
  EXPECT_EQ(ErrorOf([&] { files.Rename(f, QStringLiteral("D:\\f"), false); }),
            providererror::kWriteProtected);
  EXPECT_EQ(ErrorOf([&] { files.Remove(f); }), providererror::kWriteProtected);
  EXPECT_EQ(files.Tree(), before);
  files.SetWriteProtected(QStringLiteral("C:"), false);
  files.Remove(f);
}

TEST(MemoryFileSystemTest, AReadOnlyFileIsNotWrittenOrReplaced) {
  MemoryFileSystem files;
  files.AddFile(QStringLiteral("f"), "old");
  files.AddFile(QStringLiteral("g"), "new");
  files.SetAttributes(QStringLiteral("f"), attribute::kReadOnly);
  EXPECT_EQ(ErrorOf([&] { WriteFile(files, QStringLiteral("f"), "x"); }), error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { files.Copy(QStringLiteral("g"), QStringLiteral("f"), true); }),
            error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { files.Rename(QStringLiteral("g"), QStringLiteral("f"), true); }),
            error::kAccessDenied);
  EXPECT_EQ(files.Tree(), (QStringList{QStringLiteral("f=old"), QStringLiteral("g=new")}));
}

TEST(MemoryFileSystemTest, CircularLinksFail) {
  MemoryFileSystem files;
  files.AddLink(QStringLiteral("a"), QStringLiteral("b"));
  files.AddLink(QStringLiteral("b"), QStringLiteral("a"));
  EXPECT_EQ(ErrorOf([&] { (void)ReadFile(files, QStringLiteral("a")); }), providererror::kLinkLoop);
  EXPECT_EQ(files.List({}).size(), 2U);
}

TEST(MemoryFileSystemTest, CallsAreRecordedButNotTheSetUp) {
  MemoryFileSystem files;
  files.AddFile(QStringLiteral("f"), "x");
  EXPECT_TRUE(files.Exists(QStringLiteral("f")));
  EXPECT_EQ(files.CallCount(), 0);
  (void)files.Stat(QStringLiteral("f"));
  files.Copy(QStringLiteral("f"), QStringLiteral("g"), false);
  EXPECT_EQ(files.CallCount(FileSystemOperation::Stat), 1);
  ASSERT_EQ(files.CallCount(), 2);
  EXPECT_EQ(files.Calls().back(),
            (FileSystemCall{FileSystemOperation::Copy, QStringLiteral("f"), QStringLiteral("g")}));
}

TEST(MemoryFileSystemTest, ADiskThatFillsUpRefusesAPiece) {
  MemoryFileSystem files({.capacity = 10});
  files.AddFile(QStringLiteral("f"), "old");
  {
    const auto sink = files.OpenSink(QStringLiteral("f"), {.mode = SinkRequest::Mode::Replace});
    sink->Write("12345");
    EXPECT_EQ(ErrorOf([&] { sink->Write("678"); }), error::kDiskFull);
  }
  EXPECT_EQ(files.Content(QStringLiteral("f")), "old");
  // What was dropped takes no room.
  WriteNewFile(files, QStringLiteral("g"), "1234567");
}

TEST(MemoryFileSystemTest, DatesAreRoundedToTheStep) {
  MemoryFileSystem files({.dateStep = 2000});
  EXPECT_EQ(files.Capabilities().dateStep, 2000);
  files.AddFile(QStringLiteral("f"), "x");
  files.SetTraits(QStringLiteral("f"), {.modified = Date{1000000003999}});
  EXPECT_EQ(files.Stat(QStringLiteral("f")).modified.msecs, 1000000002000);
  EXPECT_EQ(files.List({}).front().modified.msecs, 1000000002000);
}

TEST(MemoryFileSystemTest, WithoutFoldersNoneIsMade) {
  MemoryFileSystem files({.folders = false});
  EXPECT_FALSE(files.Capabilities().folders);
  EXPECT_EQ(ErrorTextOf([&] { files.CreateFolder(QStringLiteral("d")); }),
            QStringLiteral("This file system has no folders: d"));
  EXPECT_EQ(files.Tree(), QStringList());
}

TEST(MemoryFileSystemTest, DrivesCanBeAddedAndRemoved) {
  MemoryFileSystem files({.drives = {QStringLiteral("C:")}});
  files.AddDrive(QStringLiteral("e:"));
  files.AddFile(QStringLiteral("E:\\f"), "x");
  EXPECT_EQ(files.List({}).size(), 2U);
  files.RemoveDrive(QStringLiteral("E:"));
  EXPECT_EQ(files.List({}).size(), 1U);
  EXPECT_EQ(ErrorOf([&] { (void)ReadFile(files, QStringLiteral("E:\\f")); }), error::kNotFound);
}

class FaultyFileSystemTest : public ::testing::Test {
 protected:
  FaultyFileSystemTest() { memory_->AddFile(QStringLiteral("f"), "1234"); }

  std::shared_ptr<MemoryFileSystem> memory_ = std::make_shared<MemoryFileSystem>();
  FaultyFileSystem files_{memory_};
};

TEST_F(FaultyFileSystemTest, OneCallFailsAndTheNextSucceeds) {
  files_.Arm(2, FaultSpan::Once, error::kAccessDenied);
  (void)files_.Stat(QStringLiteral("f"));
  EXPECT_EQ(ErrorOf([&] { (void)files_.List({}); }), error::kAccessDenied);
  (void)files_.List({});
  EXPECT_EQ(files_.FaultCount(), 1);
  EXPECT_EQ(memory_->CallCount(), 2);
  EXPECT_EQ(files_.CallCount(), 3);
}

TEST_F(FaultyFileSystemTest, EveryCallFailsFromTheNthOn) {
  files_.Arm(4, FaultSpan::FromThenOn);
  (void)ReadFile(files_, QStringLiteral("f"));
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(ErrorOf([&] { WriteFile(files_, QStringLiteral("f"), "x"); }), error::kTimeOut);
  }
  files_.Disarm();
  WriteFile(files_, QStringLiteral("f"), "x");
  EXPECT_EQ(memory_->Content(QStringLiteral("f")), QByteArray("x"));
}

TEST_F(FaultyFileSystemTest, AChangeIsDoneAndStillReportsAFailure) {
  files_.Arm(1, FaultSpan::Once, error::kTimeOut, Fault::DoAndFail);
  EXPECT_EQ(ErrorOf([&] { files_.Rename(QStringLiteral("f"), QStringLiteral("g"), false); }),
            error::kTimeOut);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("g")));
}

TEST_F(FaultyFileSystemTest, ALieReportsSuccessForWorkNotDone) {
  files_.Arm(1, FaultSpan::FromThenOn, 0, Fault::Lie);
  EXPECT_EQ(ReadFile(files_, QStringLiteral("f")), QByteArray("12"));
  WriteFile(files_, QStringLiteral("g"), "abcdef");
  EXPECT_EQ(memory_->Content(QStringLiteral("g")), QByteArray("abc"));
  files_.Remove(QStringLiteral("f"));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("f")));
}

TEST_F(FaultyFileSystemTest, EachPieceIsACallOfItsOwn) {
  static_cast<void>(ReadFile(files_, QStringLiteral("f")));
  const auto sink = files_.OpenSink(QStringLiteral("g"), {});
  sink->Write("ab");
  sink->Write("cd");
  static_cast<void>(sink->Commit());
  std::vector<FileSystemOperation> operations;
  for (const FileSystemCall& call : files_.Calls()) {
    operations.push_back(call.operation);
  }
  using Operation = FileSystemOperation;
  EXPECT_EQ(operations,
            (std::vector{Operation::OpenSource, Operation::Read, Operation::Read, Operation::OpenSink,
                         Operation::Write, Operation::Write, Operation::Commit}));
}

TEST_F(FaultyFileSystemTest, ASinkFailsAtEachOfItsCalls) {
  for (int call = 1; call <= 3; ++call) {
    files_.Arm(call);
    EXPECT_EQ(ErrorOf([&] { WriteFile(files_, QStringLiteral("f"), "new"); }), error::kTimeOut) << call;
    EXPECT_EQ(memory_->Content(QStringLiteral("f")), "1234");
  }
  files_.Arm(3, FaultSpan::Once, error::kTimeOut, Fault::DoAndFail);
  EXPECT_EQ(ErrorOf([&] { WriteFile(files_, QStringLiteral("f"), "new"); }), error::kTimeOut);
  EXPECT_EQ(memory_->Content(QStringLiteral("f")), "new");
}

TEST_F(FaultyFileSystemTest, ALyingSinkDropsHalfOfAPiece) {
  for (int call = 1; call <= 2; ++call) {
    files_.Arm(call, FaultSpan::Once, 0, Fault::Lie);
    const QString name = QString::number(call);
    EXPECT_EQ(WriteNewFile(files_, name, "abcdef").entry.size, 3);
    EXPECT_EQ(memory_->Content(name), "abc");
  }
}

TEST_F(FaultyFileSystemTest, AReckoningSinkClaimsAllOfTheContent) {
  for (int call = 1; call <= 3; ++call) {
    files_.Arm(call, FaultSpan::Once, 0, Fault::LieAndReckon);
    const QString name = QString::number(call);
    EXPECT_EQ(WriteNewFile(files_, name, "abcdef").entry.size, 6);
    EXPECT_EQ(memory_->Exists(name) ? memory_->Content(name) : QByteArray(), call == 3 ? "" : "abc");
  }
}

TEST_F(FaultyFileSystemTest, ALyingSourceEndsHalfWay) {
  for (int call = 1; call <= 2; ++call) {
    files_.Arm(call, FaultSpan::Once, 0, Fault::Lie);
    EXPECT_EQ(ReadFile(files_, QStringLiteral("f")), "12");
  }
}

TEST(FaultyFilesTest, ALiarPromisesNoArrival) {
  const QTemporaryDir folder;
  FakeVolumes volumes{{{QStringLiteral("C:"), folder.path() + u'/', drivetype::kFixed}}};
  FaultyFileSystem files(std::make_shared<LocalFileSystem>(volumes));
  files.PassBatches();
  EXPECT_FALSE(files.Hold(QStringLiteral("C:"))->SeesArrivals());
}

TEST_F(FaultyFileSystemTest, TheHookRunsBeforeTheCall) {
  files_.SetHook([this](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Read) {
      memory_->AddFile(call.path, "changed meanwhile");
    }
  });
  EXPECT_EQ(ReadFile(files_, QStringLiteral("f")), QByteArray("changed meanwhile"));
}

TEST(ProviderTableTest, TheLocalFileProviderShowsTheDrivesItIsGiven) {
  FakeVolumes volumes({{QStringLiteral("C:"), QStringLiteral("/"), 3}});
  const ProviderTable table = ShippedProviders(volumes);
  ASSERT_GE(table.size(), 2U);
  EXPECT_EQ(table.front().name, QStringLiteral("IxoProv.LocalFile"));
  const std::shared_ptr<FileSystem> files = table.front().open({});
  EXPECT_TRUE(files->Capabilities().topHoldsDrives);
  EXPECT_TRUE(files->Capabilities().execute);
  ASSERT_EQ(files->List({}).size(), 1U);
  EXPECT_EQ(files->List({}).front().name, QStringLiteral("C:"));
}

TEST(ProviderTableTest, EachProviderSaysWhatCanBeWrittenForIt) {
  FakeVolumes volumes;
  QStringList names;
  for (const Provider& provider : ShippedProviders(volumes)) {
    names += provider.name;
    EXPECT_FALSE(provider.help.machine.isEmpty()) << provider.name.toStdString();
    EXPECT_FALSE(provider.help.option.isEmpty()) << provider.name.toStdString();
  }
  EXPECT_EQ(names, QStringList({QStringLiteral("IxoProv.LocalFile"), QStringLiteral("IxoProv.Share"),
                                QStringLiteral("IxoProv.Sftp"), QStringLiteral("IxoProv.Ftp")}));
}

TEST(ProviderTableTest, TheLocalFileProviderKnowsTheTypesOfTheShell) {
  FakeVolumes volumes({{QStringLiteral("C:"), QStringLiteral("/"), 3}});
  FakeShellIcons icons;
  icons.Know(QStringLiteral(".TXT"), QStringLiteral("Text Document"));
  const std::shared_ptr<FileSystem> files = ShippedProviders(volumes, &icons).front().open({});
  FileEntry entry;
  for (const auto& [name, type] : {std::pair{QStringLiteral("a.txt"), QStringLiteral("Text Document")},
                                   std::pair{QStringLiteral("a.TXT"), QStringLiteral("Text Document")},
                                   std::pair{QStringLiteral("a.zzz"), QStringLiteral("ZZZ File")}}) {
    entry.name = name;
    EXPECT_EQ(files->TypeName(entry), type);
  }
}

}  // namespace
}  // namespace trevane::test
