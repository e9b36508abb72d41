#include "engine/items/clsIxoFile.h"
#include "engine/model/IxoController.h"
#include "engine/model/IxoFiles.h"
#include "tests/support/EngineWorld.h"
#include "views/addresses/NodeTags.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

using Operation = FileSystemOperation;

class clsIxoFileTest : public testing::Test {
 protected:
  void TearDown() override {
    EXPECT_EQ(world_.engine->LiveFileNames(), QStringList()) << "left cached by the engine";
    EXPECT_EQ(world_.engine->HeldFiles(), 0);
  }

  EngineWorld world_;
};

TEST_F(clsIxoFileTest, GivesThePropertiesOfALocalFile) {
  world_.local.memory->AddFile(QStringLiteral("C:\\dir\\file.txt"), "12345");
  world_.local.memory->SetTimes(QStringLiteral("C:\\dir\\file.txt"), Date{1000}, Date{2000}, Date{});
  clsIxoFile file(world_.files,
                  [](Date date) { return date.IsPresent() ? QString::number(date.msecs) : QString(); });
  file.SetPath(QStringLiteral("Workspace\\My Computer\\C:\\dir\\file.txt"));
  EXPECT_EQ(file.Result(), 0);
  EXPECT_EQ(file.CtrlName(), world_.session.gLocalCtrlName);
  EXPECT_EQ(file.Name(), QStringLiteral("file.txt"));
  EXPECT_EQ(file.Path(), QStringLiteral("C:\\dir\\"));
  EXPECT_EQ(file.FullPath(), QStringLiteral("C:\\dir\\file.txt"));
  EXPECT_EQ(file.FileSize(), QStringLiteral("5"));
  EXPECT_EQ(file.Size64(), 5);
  EXPECT_FALSE(file.FileType().isEmpty());
  EXPECT_EQ(file.DateCreated(), QStringLiteral("1000"));
  EXPECT_EQ(file.DateLastAccessed(), QStringLiteral("2000"));
  EXPECT_EQ(file.DateLastModified(), QString());
  EXPECT_EQ(file.CreatedDate(), Date{1000});
  EXPECT_EQ(file.AccessedDate(), Date{2000});
  EXPECT_FALSE(file.ModifiedDate().IsPresent());
  EXPECT_EQ(file.Value(), Variant(QByteArray("12345")));
  EXPECT_FALSE(file.IsOnController());
  EXPECT_EQ(file.Result(), 0);
}

TEST_F(clsIxoFileTest, OnlyItemsOnControllersHaveTheControllerBit) {
  world_.local.memory->AddFolder(QStringLiteral("C:\\dir"));
  world_.one.memory->AddFolder(QStringLiteral("dir"));
  const auto local = world_.File(QStringLiteral("Workspace\\My Computer\\C:\\dir"));
  EXPECT_EQ(local->FileAttribute(), local->IxoFile()->Attribute());
  EXPECT_EQ(local->FileAttribute() & TAG_CONTROLLER, 0);
  const auto remote = world_.File(QStringLiteral("Workspace\\Ctrl1\\dir"));
  EXPECT_EQ(remote->FileAttribute(), remote->IxoFile()->Attribute() + 0x100000);
  EXPECT_TRUE(remote->IsOnController());
}

TEST_F(clsIxoFileTest, ResolvesDrivesAndControllersThemselves) {
  const auto drive = world_.File(QStringLiteral("workspace\\MY COMPUTER\\d:"));
  EXPECT_EQ(drive->Name(), QStringLiteral("D:"));
  const auto controller = world_.File(QStringLiteral("Workspace\\CTRL1"));
  EXPECT_EQ(controller->Result(), 0);
  EXPECT_EQ(controller->CtrlName(), QStringLiteral("Ctrl1"));
  EXPECT_EQ(controller->Path() + controller->Name(), QString());
}

TEST_F(clsIxoFileTest, AnErrorOfAReceiverEndsTheBatches) {
  world_.local.memory->AddFile(QStringLiteral("C:\\dir\\a"));
  world_.local.memory->AddFile(QStringLiteral("C:\\dir\\b"));
  world_.local.faulty->SetBatches(1);
  const auto folder = world_.File(QStringLiteral("Workspace\\My Computer\\C:\\dir"));
  int batches = 0;
  folder->ListInBatches([&](Listing&&) -> bool {
    ++batches;
    throw RunTimeError(error::kTimeOut, QStringLiteral("late"));
  });
  EXPECT_EQ(batches, 1);
  EXPECT_EQ(folder->Result(), error::kTimeOut);
  EXPECT_EQ(folder->ResultText(), QStringLiteral("late"));
  folder->ListInBatches([&](Listing&&) {
    ++batches;
    return true;
  });
  EXPECT_EQ(batches, 3);
  EXPECT_EQ(folder->Result(), 0);
}

TEST_F(clsIxoFileTest, AMissingDriveGivesNoItem) {
  const auto file = world_.File(QStringLiteral("Workspace\\My Computer\\X:"));
  EXPECT_EQ(file->Result(), -1);
  EXPECT_TRUE(file->IsAbsent());
  EXPECT_EQ(file->IxoFile(), nullptr);
  EXPECT_EQ(file->Name(), QString());
  EXPECT_NE(file->Result(), 0);
  EXPECT_FALSE(file->ResultText().isEmpty());
}

struct AddressCase {
  const char* name;
  QString address;
};

class UnresolvedAddress : public clsIxoFileTest, public testing::WithParamInterface<AddressCase> {};

TEST_P(UnresolvedAddress, LaterCallsHaveNoItemToActOn) {
  world_.local.memory->AddFile(QStringLiteral("C:\\dir\\file"), "x");
  world_.one.memory->AddFile(QStringLiteral("dir\\file"), "x");
  const QStringList local = world_.local.memory->Tree();
  const QStringList remote = world_.one.memory->Tree();
  {
    const auto file = world_.File(GetParam().address);
    EXPECT_NE(file->Result(), 0);
    EXPECT_FALSE(file->ResultText().isEmpty());
    EXPECT_EQ(file->IxoFile(), nullptr);
    const qint32 why = file->Result();
    file->Delete();
    EXPECT_EQ(file->Result(), why);
    file->Rename(QStringLiteral("other"));
    file->PutValue(QByteArray("y"));
    file->Run();
    EXPECT_NE(file->Copy(QStringLiteral("Workspace\\My Computer\\D:"), {}, true), 0);
    EXPECT_NE(file->CopyDiffCtrl(QStringLiteral("Workspace\\Ctrl2"), {}), 0);
    QString options;
    EXPECT_EQ(file->AddIxoFile(QStringLiteral("a"), {}, options), nullptr);
    EXPECT_EQ(file->GetIxoFile(QStringLiteral("a")), nullptr);
    EXPECT_EQ(file->FileNames(), Variant(Missing{}));
    EXPECT_NE(file->Result(), 0);
  }
  EXPECT_EQ(world_.local.memory->Tree(), local);
  EXPECT_EQ(world_.one.memory->Tree(), remote);
}

INSTANTIATE_TEST_SUITE_P(
    All, UnresolvedAddress,
    testing::Values(AddressCase{"Empty", QStringLiteral("")},
                    AddressCase{"WorkspaceAlone", QStringLiteral("Workspace")},
                    AddressCase{"MyComputerAlone", QStringLiteral("Workspace\\My Computer")},
                    AddressCase{"AnotherBeginning", QStringLiteral("Elsewhere\\My Computer\\C:\\dir")},
                    AddressCase{"EnginePath", QStringLiteral("C:\\dir\\file")},
                    AddressCase{"UnknownController", QStringLiteral("Workspace\\Ctrl9\\dir")},
                    AddressCase{"MissingFile", QStringLiteral("Workspace\\My Computer\\C:\\dir\\none")},
                    AddressCase{"MissingFolder", QStringLiteral("Workspace\\My Computer\\C:\\none\\file")},
                    AddressCase{"EmptyPieceInside", QStringLiteral("Workspace\\My Computer\\C:\\\\dir")},
                    AddressCase{"EmptyPieceOnController", QStringLiteral("Workspace\\Ctrl1\\\\dir")},
                    AddressCase{"TwoTrailingSeparators", QStringLiteral("Workspace\\Ctrl1\\dir\\\\")},
                    AddressCase{"Dot", QStringLiteral("Workspace\\My Computer\\C:\\dir\\.")},
                    AddressCase{"DotDot", QStringLiteral("Workspace\\My Computer\\C:\\dir\\..")},
                    AddressCase{"DotDotInside", QStringLiteral("Workspace\\Ctrl1\\dir\\..\\dir")},
                    AddressCase{"DotDotAsController", QStringLiteral("Workspace\\..\\dir")},
                    AddressCase{"BelowAFile", QStringLiteral("Workspace\\Ctrl1\\dir\\file\\x")}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(clsIxoFileTest, OneTrailingSeparatorIsIgnored) {
  world_.one.memory->AddFolder(QStringLiteral("dir"));
  const auto file = world_.File(QStringLiteral("Workspace\\Ctrl1\\dir\\"));
  EXPECT_EQ(file->Result(), 0);
  EXPECT_EQ(file->Name(), QStringLiteral("dir"));
  EXPECT_EQ(file->Address(), QStringLiteral("Workspace\\Ctrl1\\dir"));
}

TEST_F(clsIxoFileTest, SlashesAreSeparators) {
  world_.one.memory->AddFolder(QStringLiteral("dir\\sub"));
  EXPECT_EQ(world_.File(QStringLiteral("Workspace/Ctrl1/dir\\sub"))->FullPath(),
            QStringLiteral("\\dir\\sub"));
}

TEST_F(clsIxoFileTest, BeforeAnAddressIsSetEveryMemberFails) {
  const auto file = world_.File();
  EXPECT_EQ(file->Result(), 0);
  EXPECT_EQ(file->Name(), QString());
  EXPECT_NE(file->Result(), 0);
  EXPECT_EQ(file->FileAttribute(), 0);
  EXPECT_NE(file->Result(), 0);
}

TEST_F(clsIxoFileTest, SetPathNeverDependsOnTheAddressBefore) {
  world_.one.memory->AddFile(QStringLiteral("dir\\f"), "1");
  world_.local.memory->AddFile(QStringLiteral("C:\\f"), "2");
  const auto file = world_.File(QStringLiteral("Workspace\\Ctrl1\\dir\\f"));
  EXPECT_EQ(file->Value(), Variant(QByteArray("1")));
  file->SetPath(QStringLiteral("Workspace\\My Computer\\C:\\f"));
  EXPECT_EQ(file->Value(), Variant(QByteArray("2")));
  EXPECT_FALSE(file->IsOnController());
  for (const QString& name : world_.engine->LiveFileNames()) {
    EXPECT_TRUE(name.startsWith(QStringLiteral("C:"))) << name.toStdString();
  }
  file->SetPath(QStringLiteral("Workspace\\Ctrl1\\none"));
  EXPECT_EQ(file->IxoFile(), nullptr);
  EXPECT_EQ(file->CtrlName(), QString());
  EXPECT_EQ(world_.engine->LiveFileNames(), QStringList());
  file->SetPath(QStringLiteral("Workspace\\Ctrl1\\dir"));
  EXPECT_EQ(file->Result(), 0);
}

TEST_F(clsIxoFileTest, ATimeOutIsNotTakenForAMissingItem) {
  world_.one.memory->AddFolder(QStringLiteral("dir"));
  world_.one.faulty->Arm(1, FaultSpan::FromThenOn);
  auto file = world_.File(QStringLiteral("Workspace\\Ctrl1\\dir"), LookUp::Navigate);
  EXPECT_EQ(file->Result(), error::kTimeOut);
  EXPECT_FALSE(file->IsAbsent());
  world_.one.faulty->Disarm();
  file->SetPath(QStringLiteral("Workspace\\Ctrl1\\none"), LookUp::Navigate);
  EXPECT_EQ(file->Result(), error::kNotFound);
  EXPECT_TRUE(file->IsAbsent());
}

TEST(clsIxoFileWalkTest, AnEngineThatYieldsNothingGivesMinusOne) {
  EngineWorld world;
  world.one.memory->AddFolder(QStringLiteral("dir"));
  world.engine->ClearCalls();
  static_cast<void>(world.File(QStringLiteral("Workspace\\Ctrl1\\dir")));
  const auto call = world.engine->Calls().indexOf(QStringLiteral("IxoController.OpenFile"));
  ASSERT_GE(call, 0);
  // Neither by its path nor by a walk.
  world.engine->Arm(static_cast<int>(call) + 1, FaultSpan::FromThenOn, 0, EngineFault::YieldNothing);
  const auto file = world.File(QStringLiteral("Workspace\\Ctrl1\\dir"));
  EXPECT_EQ(file->Result(), -1);
  EXPECT_TRUE(file->IsAbsent());
  world.engine->Disarm();
}

TEST(clsIxoFileWalkTest, NamesAreSpeltAsInTheFileSystem) {
  EngineWorld world(false);
  world.one.memory->AddFile(QStringLiteral("Dir\\Sub\\File"), "x");
  const auto found = world.File(QStringLiteral("Workspace\\Ctrl1\\dir\\SUB\\file"), LookUp::Navigate);
  EXPECT_EQ(found->FoundPieces(),
            (QStringList{QStringLiteral("Workspace"), QStringLiteral("Ctrl1"), QStringLiteral("Dir"),
                         QStringLiteral("Sub"), QStringLiteral("File")}));
  EXPECT_EQ(world.File(QStringLiteral("Workspace\\Ctrl1\\dir\\SUB\\file"))->Value(),
            Variant(QByteArray("x")));
}

TEST_F(clsIxoFileTest, ItemsThatNoPathOpensAreWalkedTo) {
  world_.one.memory->AddFile(QStringLiteral("dir\\sub\\f"), "x");
  world_.engine->ClearCalls();
  static_cast<void>(world_.File(QStringLiteral("Workspace\\Ctrl1\\dir\\sub\\f")));
  const auto call = world_.engine->Calls().indexOf(QStringLiteral("IxoController.OpenFile"));
  ASSERT_GE(call, 0);
  for (const EngineFault fault : {EngineFault::YieldNothing, EngineFault::Raise}) {
    world_.engine->Arm(static_cast<int>(call) + 1, FaultSpan::Once, error::kAccessDenied, fault);
    const auto file = world_.File(QStringLiteral("Workspace\\Ctrl1\\dir\\sub\\f"));
    EXPECT_EQ(world_.engine->FaultCount(), 1);
    world_.engine->Disarm();
    EXPECT_EQ(file->Value(), Variant(QByteArray("x")));
  }
}

TEST_F(clsIxoFileTest, AMissingFolderOnTheWayIsNamed) {
  world_.one.memory->AddFolder(QStringLiteral("dir"));
  const auto file = world_.File(QStringLiteral("Workspace\\Ctrl1\\dir\\none\\sub\\f"));
  EXPECT_EQ(file->Result(), error::kNotFound);
  EXPECT_TRUE(file->IsAbsent());
  EXPECT_TRUE(file->ResultText().endsWith(QStringLiteral("dir\\none"))) << file->ResultText().toStdString();
}

/// The calls that resolving an address of that many folders costs the file system.
int CallsOfAddress(int depth, LookUp lookUp, bool caseSensitive, const QString& last) {
  EngineWorld world(caseSensitive);
  QStringList folders;
  for (int i = 0; i < depth; ++i) {
    folders.append(QStringLiteral("d%1").arg(i));
  }
  const QString path = folders.join(u'\\');
  world.local.memory->AddFile(QStringLiteral("C:\\") + path + QStringLiteral("\\f"), "x");
  world.local.faulty->ClearCalls();
  const QString address = QStringLiteral("Workspace\\My Computer\\C:\\") + path + u'\\' + last;
  const auto file = world.File(address, lookUp);
  EXPECT_EQ(file->Result() == 0, last == QStringLiteral("f"));
  return world.local.faulty->CallCount();
}

TEST(clsIxoFileWalkTest, AnAddressIsResolvedInOneCallHoweverDeep) {
  for (const int depth : {1, 10, 300}) {
    EXPECT_EQ(CallsOfAddress(depth, LookUp::Exact, true, QStringLiteral("f")), 1);
    EXPECT_EQ(CallsOfAddress(depth, LookUp::Exact, false, QStringLiteral("f")), 1);
    EXPECT_EQ(CallsOfAddress(depth, LookUp::Navigate, true, QStringLiteral("f")), 1);
  }
}

TEST(clsIxoFileWalkTest, AMissingItemIsKnownInTwoCallsHoweverDeep) {
  EXPECT_EQ(CallsOfAddress(10, LookUp::Exact, true, QStringLiteral("none")), 2);
  EXPECT_EQ(CallsOfAddress(300, LookUp::Exact, false, QStringLiteral("none")), 2);
}

TEST(clsIxoFileWalkTest, AWalkCostsOneCallALevelAndOneForTheDrives) {
  for (const int depth : {1, 10, 300}) {
    EXPECT_EQ(CallsOfAddress(depth, LookUp::Navigate, false, QStringLiteral("f")), depth + 2);
  }
}

TEST_F(clsIxoFileTest, ANameInAnotherCaseIsFoundOnlyForNavigating) {
  world_.one.memory->AddFile(QStringLiteral("Dir\\File"), "x");
  world_.one.memory->AddFile(QStringLiteral("Dir\\TWICE"), "1");
  world_.one.memory->AddFile(QStringLiteral("Dir\\Twice"), "2");
  EXPECT_EQ(world_.File(QStringLiteral("Workspace\\Ctrl1\\dir\\file"))->Result(), error::kNotFound);
  const auto found = world_.File(QStringLiteral("Workspace\\Ctrl1\\dir\\file"), LookUp::Navigate);
  EXPECT_EQ(found->FullPath(), QStringLiteral("\\Dir\\File"));
  const auto exact = world_.File(QStringLiteral("Workspace\\Ctrl1\\Dir\\Twice"), LookUp::Navigate);
  EXPECT_EQ(exact->Value(), Variant(QByteArray("2")));
  EXPECT_NE(world_.File(QStringLiteral("Workspace\\Ctrl1\\Dir\\twice"), LookUp::Navigate)->Result(), 0);
}

TEST_F(clsIxoFileTest, ListingAFolderCostsOneCall) {
  for (int i = 0; i < 30; ++i) {
    world_.local.memory->AddFile(QStringLiteral("C:\\dir\\file%1").arg(i), "123");
  }
  const auto folder = world_.File(QStringLiteral("Workspace\\My Computer\\C:\\dir"));
  world_.local.faulty->ClearCalls();
  const auto names = std::get<QStringList>(folder->FileNames());
  ASSERT_EQ(names.size(), 30);
  for (const QString& name : names) {
    const auto child = folder->GetIxoFile(name);
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->Size64(), 3);
    EXPECT_EQ(child->Attribute() & 0x10, 0);
    static_cast<void>(child->DateLastModified());
    folder->ReleaseChild(child);
  }
  ASSERT_EQ(world_.local.faulty->CallCount(), 1);
  EXPECT_EQ(world_.local.faulty->Calls()[0].operation, Operation::List);
  EXPECT_EQ(folder->GetIxoFile(QStringLiteral("none")), nullptr);
  EXPECT_EQ(folder->Result(), error::kNotFound);
}

TEST_F(clsIxoFileTest, RenameOntoASiblingReplacesIt) {
  world_.one.memory->AddFile(QStringLiteral("dir\\a"), "a");
  world_.one.memory->AddFile(QStringLiteral("dir\\b"), "b");
  const auto file = world_.File(QStringLiteral("Workspace\\Ctrl1\\dir\\a"));
  file->Rename(QStringLiteral("b"));
  EXPECT_EQ(file->Result(), 0);
  EXPECT_EQ(world_.one.memory->Tree(), (QStringList{QStringLiteral("dir\\"), QStringLiteral("dir\\b=a")}));
  EXPECT_EQ(file->Name(), QStringLiteral("b"));
  EXPECT_EQ(file->Address(), QStringLiteral("Workspace\\Ctrl1\\dir\\b"));
}

TEST_F(clsIxoFileTest, RenameOnTheLocalDiskStaysInItsFolder) {
  world_.local.memory->AddFile(QStringLiteral("C:\\dir\\a"), "a");
  const auto file = world_.File(QStringLiteral("Workspace\\My Computer\\C:\\dir\\a"));
  for (const QString& name : {QStringLiteral(""), QStringLiteral("x\\y"), QStringLiteral("..\\y"),
                              QStringLiteral("x/y"), QStringLiteral(".."), QStringLiteral(".")}) {
    file->Rename(name);
    EXPECT_EQ(file->Result(), error::kInvalidName) << name.toStdString();
  }
  file->Rename(QStringLiteral("b"));
  EXPECT_EQ(file->Result(), 0);
  EXPECT_TRUE(world_.local.memory->Exists(QStringLiteral("C:\\dir\\b")));
}

TEST_F(clsIxoFileTest, DrivesAndControllersCannotBeRenamedOrDeleted) {
  world_.one.memory->AddFile(QStringLiteral("f"), "x");
  world_.local.memory->AddFile(QStringLiteral("C:\\f"), "x");
  for (const QString& address :
       {QStringLiteral("Workspace\\Ctrl1"), QStringLiteral("Workspace\\My Computer\\C:")}) {
    const auto file = world_.File(address);
    file->Rename(QStringLiteral("other"));
    EXPECT_EQ(file->Result(), error::kAccessDenied);
    file->Delete();
    EXPECT_EQ(file->Result(), error::kAccessDenied);
  }
  EXPECT_TRUE(world_.one.memory->Exists(QStringLiteral("f")));
  EXPECT_TRUE(world_.local.memory->Exists(QStringLiteral("C:\\f")));
}

TEST_F(clsIxoFileTest, RootFoldersCannotBeRenamedMovedOrDeleted) {
  world_.two.memory->AddFile(QStringLiteral("base\\root\\a"), "x");
  world_.Connect(QStringLiteral("Rooted"), world_.two, QStringLiteral("/base/root"));
  const QStringList before = world_.two.memory->Tree();
  const auto file = world_.File(QStringLiteral("Workspace\\Rooted"));
  file->Rename(QStringLiteral("other"));
  EXPECT_EQ(file->Result(), error::kAccessDenied);
  file->Move(QStringLiteral("\\other"), true);
  EXPECT_EQ(file->Result(), error::kAccessDenied);
  file->Delete();
  EXPECT_EQ(file->Result(), error::kAccessDenied);
  EXPECT_EQ(world_.two.memory->Tree(), before);
}

TEST_F(clsIxoFileTest, DeleteMoveRunAndExecuteReachTheFile) {
  world_.one.memory->AddFile(QStringLiteral("a"), "a");
  world_.one.memory->AddFolder(QStringLiteral("dir"));
  const auto file = world_.File(QStringLiteral("Workspace\\Ctrl1\\a"));
  file->Run();
  EXPECT_EQ(file->Result(), 0);
  static_cast<void>(file->Execute({}));
  static_cast<void>(file->Execute(QStringLiteral("Print")));
  std::vector<FileSystemCall> calls;
  for (const FileSystemCall& call : world_.one.faulty->Calls()) {
    if (call.operation == Operation::Execute) {
      calls.push_back(call);
    }
  }
  EXPECT_EQ(calls, (std::vector<FileSystemCall>{
                       {Operation::Execute, QStringLiteral("a"), QString(), Missing{}},
                       {Operation::Execute, QStringLiteral("a"), QString(), Missing{}},
                       {Operation::Execute, QStringLiteral("a"), QStringLiteral("Print"), Missing{}}}));
  file->Move(QStringLiteral("\\dir\\b"), false);
  EXPECT_EQ(file->Result(), 0);
  EXPECT_TRUE(world_.one.memory->Exists(QStringLiteral("dir\\b")));
  file->Delete();
  EXPECT_EQ(file->Result(), 0);
  EXPECT_EQ(world_.one.memory->Tree(), QStringList{QStringLiteral("dir\\")});
  file->Delete();
  EXPECT_NE(file->Result(), 0);
}

TEST_F(clsIxoFileTest, CopyUsesTheNewNameOrTheOwnOne) {
  world_.local.memory->AddFile(QStringLiteral("C:\\a"), "a");
  world_.local.memory->AddFolder(QStringLiteral("D:\\dir"));
  const auto file = world_.File(QStringLiteral("Workspace\\My Computer\\C:\\a"));
  EXPECT_EQ(file->Copy(QStringLiteral("Workspace\\My Computer\\D:\\dir"), {}, false), 0);
  EXPECT_EQ(file->Copy(QStringLiteral("workspace\\my computer\\D:"), QStringLiteral("b"), false), 0);
  EXPECT_EQ(world_.local.memory->Content(QStringLiteral("D:\\dir\\a")), "a");
  EXPECT_EQ(world_.local.memory->Content(QStringLiteral("D:\\b")), "a");
  EXPECT_EQ(file->Copy(QStringLiteral("Workspace\\My Computer\\D:"), QStringLiteral("b"), false),
            error::kExists);
  EXPECT_EQ(file->Copy(QStringLiteral("Workspace\\My Computer\\D:"), QStringLiteral("b"), true), 0);
}

TEST_F(clsIxoFileTest, CopyReplacesTheFirstControllerNameOnly) {
  world_.one.memory->AddFile(QStringLiteral("a"), "a");
  world_.one.memory->AddFolder(QStringLiteral("x\\Ctrl1\\y"));
  const auto file = world_.File(QStringLiteral("Workspace\\Ctrl1\\a"));
  EXPECT_EQ(file->Copy(QStringLiteral("Workspace\\Ctrl1\\x\\Ctrl1\\y"), {}, false), 0);
  EXPECT_EQ(world_.one.memory->Content(QStringLiteral("x\\Ctrl1\\y\\a")), "a");
  EXPECT_EQ(file->Copy(QStringLiteral("Workspace\\Ctrl1"), QStringLiteral("b"), false), 0);
  EXPECT_EQ(world_.one.memory->Content(QStringLiteral("b")), "a");
}

TEST_F(clsIxoFileTest, CopyWithoutAControllerGivesMinusOne) {
  world_.one.memory->AddFile(QStringLiteral("a"), "a");
  const auto file = world_.File(QStringLiteral("Workspace\\Ctrl1\\a"));
  EXPECT_EQ(file->Copy(QStringLiteral("Workspace\\Ctrl9\\dir"), {}, true), -1);
  EXPECT_EQ(file->Result(), -1);
  EXPECT_EQ(world_.one.memory->Tree(), QStringList{QStringLiteral("a=a")});
}

TEST_F(clsIxoFileTest, CopyRefusesOtherControllersAndBadAddresses) {
  world_.local.memory->AddFile(QStringLiteral("C:\\a"), "a");
  world_.local.memory->AddFolder(QStringLiteral("C:\\dir"));
  const QStringList before = world_.local.memory->Tree();
  const auto file = world_.File(QStringLiteral("Workspace\\My Computer\\C:\\a"));
  for (const QString& address : {QStringLiteral("Workspace\\Ctrl1"), QStringLiteral("Workspace\\My Computer"),
                                 QStringLiteral("Workspace"), QStringLiteral("Workspace\\My Computer\\dir"),
                                 QStringLiteral("Workspace\\My Computer\\D:\\.."),
                                 QStringLiteral("Workspace\\My Computer\\D:\\\\x")}) {
    EXPECT_NE(file->Copy(address, {}, true), 0) << address.toStdString();
  }
  EXPECT_NE(file->Copy(QStringLiteral("Workspace\\My Computer\\D:"), QStringLiteral("x\\y"), true), 0);
  EXPECT_EQ(world_.local.memory->Tree(), before);
  EXPECT_TRUE(world_.one.memory->Tree().isEmpty());
}

TEST_F(clsIxoFileTest, CopyRefusesOtherControllersWithSlashesToo) {
  world_.one.memory->AddFile(QStringLiteral("a"), "a");
  world_.one.memory->AddFolder(QStringLiteral("dir"));
  const QStringList before = world_.one.memory->Tree();
  const auto file = world_.File(QStringLiteral("Workspace/Ctrl1/a"));
  EXPECT_NE(file->Copy(QStringLiteral("Workspace\\Ctrl2\\dir"), {}, true), 0);
  EXPECT_EQ(world_.one.memory->Tree(), before);
}

TEST_F(clsIxoFileTest, TheRootIsTheTopForBrowsingAndCopying) {
  world_.two.memory->AddFile(QStringLiteral("base\\root\\a"), "inside");
  world_.two.memory->AddFile(QStringLiteral("a"), "outside");
  world_.Connect(QStringLiteral("Rooted"), world_.two, QStringLiteral("/base/root"));
  const auto file = world_.File(QStringLiteral("Workspace\\Rooted\\a"));
  EXPECT_EQ(file->Value(), Variant(QByteArray("inside")));
  EXPECT_TRUE(file->IsOnController());
  EXPECT_EQ(file->Copy(QStringLiteral("Workspace\\Rooted"), QStringLiteral("b"), false), 0);
  EXPECT_EQ(world_.two.memory->Content(QStringLiteral("base\\root\\b")), "inside");
  EXPECT_EQ(world_.File(QStringLiteral("Workspace\\Rooted\\base"))->Result(), error::kNotFound);
  const auto top = world_.File(QStringLiteral("Workspace\\Rooted"));
  EXPECT_EQ(std::get<QStringList>(top->FileNames()), (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
}

TEST_F(clsIxoFileTest, ALocalRootIsFoundWithAndWithoutItsLetter) {
  world_.local.memory->AddFile(QStringLiteral("C:\\home\\me\\a"), "x");
  int number = 0;
  for (const QString& root :
       {QStringLiteral("C:\\home\\me"), QStringLiteral("/home/me"), QStringLiteral("C:/home/me/")}) {
    const QString name = QStringLiteral("Root%1").arg(++number);
    world_.Connect(name, world_.local, root);
    const auto file = world_.File(QStringLiteral("Workspace\\%1\\a").arg(name));
    EXPECT_EQ(file->FullPath(), QStringLiteral("C:\\home\\me\\a")) << root.toStdString();
    EXPECT_EQ(file->Copy(QStringLiteral("Workspace\\%1").arg(name), name, false), 0);
    EXPECT_TRUE(world_.local.memory->Exists(QStringLiteral("C:\\home\\me\\") + name));
  }
}

TEST_F(clsIxoFileTest, EmptyRootsAndBareSeparatorsAreTheTop) {
  world_.two.memory->AddFile(QStringLiteral("dir\\a"), "x");
  int number = 0;
  for (const QString& root : {QStringLiteral(""), QStringLiteral("/"), QStringLiteral("\\")}) {
    const QString name = QStringLiteral("Top%1").arg(++number);
    world_.Connect(name, world_.two, root);
    const auto file = world_.File(QStringLiteral("Workspace\\%1\\dir\\a").arg(name));
    EXPECT_EQ(file->FullPath(), QStringLiteral("\\dir\\a"));
    EXPECT_EQ(file->Copy(QStringLiteral("Workspace\\%1\\dir").arg(name), name, false), 0);
    EXPECT_TRUE(world_.two.memory->Exists(QStringLiteral("dir\\") + name));
  }
}

TEST_F(clsIxoFileTest, AMissingRootGivesNoItem) {
  world_.Connect(QStringLiteral("Rooted"), world_.two, QStringLiteral("/gone/root"));
  const auto file = world_.File(QStringLiteral("Workspace\\Rooted\\a"));
  EXPECT_EQ(file->Result(), error::kNotFound);
  EXPECT_EQ(file->IxoFile(), nullptr);
}

TEST_F(clsIxoFileTest, AControllerMayBeCalledLikeADrive) {
  world_.two.memory->AddFile(QStringLiteral("a"), "x");
  world_.Connect(QStringLiteral("C:"), world_.two);
  const auto file = world_.File(QStringLiteral("Workspace\\C:\\a"));
  EXPECT_EQ(file->CtrlName(), QStringLiteral("C:"));
  EXPECT_EQ(file->Copy(QStringLiteral("Workspace\\C:"), QStringLiteral("b"), false), 0);
  EXPECT_TRUE(world_.two.memory->Exists(QStringLiteral("b")));
}

TEST_F(clsIxoFileTest, AddIxoFileLeavesTheComposedOption) {
  world_.one.memory->AddFolder(QStringLiteral("dir,x"));
  const auto folder = world_.File(QStringLiteral("Workspace\\Ctrl1\\dir,x"));
  QString options = QStringLiteral("@Create=2");
  const auto created = folder->AddIxoFile(QStringLiteral("New Folder"), folder->FullPath(), options);
  EXPECT_EQ(options, QStringLiteral("Path=\\dir,x,@Create=2"));
  ASSERT_NE(created, nullptr);
  EXPECT_EQ(world_.one.memory->Tree(),
            (QStringList{QStringLiteral("dir,x\\"), QStringLiteral("dir,x\\New Folder\\")}));
  options.clear();
  EXPECT_EQ(folder->AddIxoFile(QStringLiteral("none"), {}, options), nullptr);
  EXPECT_EQ(options, QStringLiteral("Path=,"));
  EXPECT_EQ(folder->Result(), error::kNotFound);
}

TEST_F(clsIxoFileTest, ADriveUnknownToTheEngineIsAnError) {
  world_.local.memory->RemoveDrive(QStringLiteral("D:"));
  const auto file = world_.File(QStringLiteral("Workspace\\My Computer\\D:"));
  EXPECT_EQ(file->Result(), error::kOutOfRange);
  EXPECT_EQ(file->IxoFile(), nullptr);
  EXPECT_EQ(world_.File(QStringLiteral("Workspace\\My Computer\\C:"))->Result(), 0);
}

TEST_F(clsIxoFileTest, IsDestroyedSafelyAfterItsController) {
  world_.one.memory->AddFile(QStringLiteral("dir\\a"), "x");
  auto file = world_.File(QStringLiteral("Workspace\\Ctrl1\\dir\\a"));
  world_.session.gIxoControllers->Remove(QStringLiteral("Ctrl1"));
  world_.session.gIxoControllers.reset();
  world_.engine->Arm(1, FaultSpan::FromThenOn);
  file.reset();
  world_.engine->Disarm();
  auto later = world_.File(QStringLiteral("Workspace\\Ctrl1\\dir"));
  EXPECT_EQ(later->Result(), error::kDeviceNotReady);
}

TEST_F(clsIxoFileTest, TwoAddressesOfOneItemShareItsIdentity) {
  world_.one.memory->AddFile(QStringLiteral("dir\\a"), "x");
  world_.Connect(QStringLiteral("Again"), world_.one, QStringLiteral("/dir"));
  const auto first = world_.File(QStringLiteral("Workspace\\Ctrl1\\dir\\a"));
  const auto second = world_.File(QStringLiteral("Workspace\\Again\\a"));
  ASSERT_TRUE(first->Identity().has_value());
  EXPECT_EQ(first->Identity(), second->Identity());
}

}  // namespace
}  // namespace trevane::test
