#include "engine/items/clsIxoFile.h"
#include "engine/model/IxoController.h"
#include "engine/model/IxoFiles.h"
#include "tests/support/EngineWorld.h"
#include "views/addresses/NodeTags.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;
using Operation = FileSystemOperation;

class clsIxoFileTest : public testing::Test {
 protected:
  void TearDown() override {
    EXPECT_EQ(world_.engine->LiveFileNames(), QStringList()) << "left cached by the engine";
    EXPECT_EQ(world_.engine->HeldFiles(), 0);
  }

  EngineWorld world_;
};

TEST_F(clsIxoFileTest, TellsWhatTheEngineKnowsOfALocalFile) {
  world_.local.memory->AddFile(u"C:\\dir\\file.txt"_s, "12345");
  world_.local.memory->SetTimes(u"C:\\dir\\file.txt"_s, Date{1000}, Date{2000}, Date{});
  clsIxoFile file(world_.files,
                  [](Date date) { return date.IsPresent() ? QString::number(date.msecs) : QString(); });
  file.SetPath(u"Workspace\\My Computer\\C:\\dir\\file.txt"_s);
  EXPECT_EQ(file.Result(), 0);
  EXPECT_EQ(file.CtrlName(), world_.session.gLocalCtrlName);
  EXPECT_EQ(file.Name(), u"file.txt"_s);
  EXPECT_EQ(file.Path(), u"C:\\dir\\"_s);
  EXPECT_EQ(file.FullPath(), u"C:\\dir\\file.txt"_s);
  EXPECT_EQ(file.FileSize(), u"5"_s);
  EXPECT_EQ(file.Size64(), 5);
  EXPECT_FALSE(file.FileType().isEmpty());
  EXPECT_EQ(file.DateCreated(), u"1000"_s);
  EXPECT_EQ(file.DateLastAccessed(), u"2000"_s);
  EXPECT_EQ(file.DateLastModified(), QString());
  EXPECT_EQ(file.CreatedDate(), Date{1000});
  EXPECT_EQ(file.AccessedDate(), Date{2000});
  EXPECT_FALSE(file.ModifiedDate().IsPresent());
  EXPECT_EQ(file.Value(), Variant(QByteArray("12345")));
  EXPECT_FALSE(file.IsOnController());
  EXPECT_EQ(file.Result(), 0);
}

TEST_F(clsIxoFileTest, FileAttributeHasTheControllerBitOnAControllerOnly) {
  world_.local.memory->AddFolder(u"C:\\dir"_s);
  world_.one.memory->AddFolder(u"dir"_s);
  const auto local = world_.File(u"Workspace\\My Computer\\C:\\dir"_s);
  EXPECT_EQ(local->FileAttribute(), local->IxoFile()->Attribute());
  EXPECT_EQ(local->FileAttribute() & TAG_CONTROLLER, 0);
  const auto remote = world_.File(u"Workspace\\Ctrl1\\dir"_s);
  EXPECT_EQ(remote->FileAttribute(), remote->IxoFile()->Attribute() + 0x100000);
  EXPECT_TRUE(remote->IsOnController());
}

TEST_F(clsIxoFileTest, ResolvesDrivesAndControllersThemselves) {
  const auto drive = world_.File(u"workspace\\MY COMPUTER\\d:"_s);
  EXPECT_EQ(drive->Name(), u"D:"_s);
  const auto controller = world_.File(u"Workspace\\CTRL1"_s);
  EXPECT_EQ(controller->Result(), 0);
  EXPECT_EQ(controller->CtrlName(), u"Ctrl1"_s);
  EXPECT_EQ(controller->Path() + controller->Name(), QString());
}

TEST_F(clsIxoFileTest, ADriveThatDoesNotExistLeavesNothing) {
  const auto file = world_.File(u"Workspace\\My Computer\\X:"_s);
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

TEST_P(UnresolvedAddress, LeavesNothingThatALaterCallCouldActOn) {
  world_.local.memory->AddFile(u"C:\\dir\\file"_s, "x");
  world_.one.memory->AddFile(u"dir\\file"_s, "x");
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
    file->Rename(u"other"_s);
    file->PutValue(QByteArray("y"));
    file->Run();
    EXPECT_NE(file->Copy(u"Workspace\\My Computer\\D:"_s, {}, true), 0);
    EXPECT_NE(file->CopyDiffCtrl(u"Workspace\\Ctrl2"_s, {}), 0);
    QString options;
    EXPECT_EQ(file->AddIxoFile(u"a"_s, {}, options), nullptr);
    EXPECT_EQ(file->GetIxoFile(u"a"_s), nullptr);
    EXPECT_EQ(file->FileNames(), Variant(Missing{}));
    EXPECT_NE(file->Result(), 0);
  }
  EXPECT_EQ(world_.local.memory->Tree(), local);
  EXPECT_EQ(world_.one.memory->Tree(), remote);
}

INSTANTIATE_TEST_SUITE_P(
    All, UnresolvedAddress,
    testing::Values(AddressCase{"Empty", u""_s}, AddressCase{"WorkspaceAlone", u"Workspace"_s},
                    AddressCase{"MyComputerAlone", u"Workspace\\My Computer"_s},
                    AddressCase{"AnotherBeginning", u"Elsewhere\\My Computer\\C:\\dir"_s},
                    AddressCase{"EnginePath", u"C:\\dir\\file"_s},
                    AddressCase{"UnknownController", u"Workspace\\Ctrl9\\dir"_s},
                    AddressCase{"MissingFile", u"Workspace\\My Computer\\C:\\dir\\none"_s},
                    AddressCase{"MissingFolder", u"Workspace\\My Computer\\C:\\none\\file"_s},
                    AddressCase{"EmptyPieceInside", u"Workspace\\My Computer\\C:\\\\dir"_s},
                    AddressCase{"EmptyPieceOnController", u"Workspace\\Ctrl1\\\\dir"_s},
                    AddressCase{"TwoTrailingSeparators", u"Workspace\\Ctrl1\\dir\\\\"_s},
                    AddressCase{"Dot", u"Workspace\\My Computer\\C:\\dir\\."_s},
                    AddressCase{"DotDot", u"Workspace\\My Computer\\C:\\dir\\.."_s},
                    AddressCase{"DotDotInside", u"Workspace\\Ctrl1\\dir\\..\\dir"_s},
                    AddressCase{"DotDotAsController", u"Workspace\\..\\dir"_s},
                    AddressCase{"BelowAFile", u"Workspace\\Ctrl1\\dir\\file\\x"_s}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(clsIxoFileTest, OneTrailingSeparatorMeansNothing) {
  world_.one.memory->AddFolder(u"dir"_s);
  const auto file = world_.File(u"Workspace\\Ctrl1\\dir\\"_s);
  EXPECT_EQ(file->Result(), 0);
  EXPECT_EQ(file->Name(), u"dir"_s);
  EXPECT_EQ(file->Address(), u"Workspace\\Ctrl1\\dir"_s);
}

TEST_F(clsIxoFileTest, SlashesSeparateToo) {
  world_.one.memory->AddFolder(u"dir\\sub"_s);
  EXPECT_EQ(world_.File(u"Workspace/Ctrl1/dir\\sub"_s)->FullPath(), u"\\dir\\sub"_s);
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
  world_.one.memory->AddFile(u"dir\\f"_s, "1");
  world_.local.memory->AddFile(u"C:\\f"_s, "2");
  const auto file = world_.File(u"Workspace\\Ctrl1\\dir\\f"_s);
  EXPECT_EQ(file->Value(), Variant(QByteArray("1")));
  file->SetPath(u"Workspace\\My Computer\\C:\\f"_s);
  EXPECT_EQ(file->Value(), Variant(QByteArray("2")));
  EXPECT_FALSE(file->IsOnController());
  for (const QString& name : world_.engine->LiveFileNames()) {
    EXPECT_TRUE(name.startsWith(u"C:"_s)) << name.toStdString();
  }
  file->SetPath(u"Workspace\\Ctrl1\\none"_s);
  EXPECT_EQ(file->IxoFile(), nullptr);
  EXPECT_EQ(file->CtrlName(), QString());
  EXPECT_EQ(world_.engine->LiveFileNames(), QStringList());
  file->SetPath(u"Workspace\\Ctrl1\\dir"_s);
  EXPECT_EQ(file->Result(), 0);
}

TEST_F(clsIxoFileTest, ATimeOutIsNotReadAsMissing) {
  world_.one.memory->AddFolder(u"dir"_s);
  world_.one.faulty->Arm(1, FaultSpan::FromThenOn);
  auto file = world_.File(u"Workspace\\Ctrl1\\dir"_s, LookUp::Navigate);
  EXPECT_EQ(file->Result(), error::kTimeOut);
  EXPECT_FALSE(file->IsAbsent());
  world_.one.faulty->Disarm();
  file->SetPath(u"Workspace\\Ctrl1\\none"_s, LookUp::Navigate);
  EXPECT_EQ(file->Result(), error::kNotFound);
  EXPECT_TRUE(file->IsAbsent());
}

TEST(clsIxoFileWalkTest, AnEngineThatYieldsNothingLeavesMinusOne) {
  EngineWorld world;
  world.one.memory->AddFolder(u"dir"_s);
  world.engine->ClearCalls();
  static_cast<void>(world.File(u"Workspace\\Ctrl1\\dir"_s));
  const auto call = world.engine->Calls().indexOf(u"IxoController.OpenFile"_s);
  ASSERT_GE(call, 0);
  // Neither by its path nor by a walk.
  world.engine->Arm(static_cast<int>(call) + 1, FaultSpan::FromThenOn, 0, EngineFault::YieldNothing);
  const auto file = world.File(u"Workspace\\Ctrl1\\dir"_s);
  EXPECT_EQ(file->Result(), -1);
  EXPECT_TRUE(file->IsAbsent());
  world.engine->Disarm();
}

TEST(clsIxoFileWalkTest, ANameIsSpeltAsTheFileSystemSpellsIt) {
  EngineWorld world(false);
  world.one.memory->AddFile(u"Dir\\Sub\\File"_s, "x");
  const auto found = world.File(u"Workspace\\Ctrl1\\dir\\SUB\\file"_s, LookUp::Navigate);
  EXPECT_EQ(found->FoundPieces(), (QStringList{u"Workspace"_s, u"Ctrl1"_s, u"Dir"_s, u"Sub"_s, u"File"_s}));
  EXPECT_EQ(world.File(u"Workspace\\Ctrl1\\dir\\SUB\\file"_s)->Value(), Variant(QByteArray("x")));
}

TEST_F(clsIxoFileTest, AnItemIsWalkedToWhereNothingIsGivenByItsPath) {
  world_.one.memory->AddFile(u"dir\\sub\\f"_s, "x");
  world_.engine->ClearCalls();
  static_cast<void>(world_.File(u"Workspace\\Ctrl1\\dir\\sub\\f"_s));
  const auto call = world_.engine->Calls().indexOf(u"IxoController.OpenFile"_s);
  ASSERT_GE(call, 0);
  for (const EngineFault fault : {EngineFault::YieldNothing, EngineFault::Raise}) {
    world_.engine->Arm(static_cast<int>(call) + 1, FaultSpan::Once, error::kAccessDenied, fault);
    const auto file = world_.File(u"Workspace\\Ctrl1\\dir\\sub\\f"_s);
    EXPECT_EQ(world_.engine->FaultCount(), 1);
    world_.engine->Disarm();
    EXPECT_EQ(file->Value(), Variant(QByteArray("x")));
  }
}

TEST_F(clsIxoFileTest, AFolderThatIsMissingOnTheWayIsNamed) {
  world_.one.memory->AddFolder(u"dir"_s);
  const auto file = world_.File(u"Workspace\\Ctrl1\\dir\\none\\sub\\f"_s);
  EXPECT_EQ(file->Result(), error::kNotFound);
  EXPECT_TRUE(file->IsAbsent());
  EXPECT_TRUE(file->ResultText().endsWith(u"dir\\none"_s)) << file->ResultText().toStdString();
}

/// The calls that resolving an address of that many folders costs the file system.
int CallsOfAddress(int depth, LookUp lookUp, bool caseSensitive, const QString& last) {
  EngineWorld world(caseSensitive);
  QStringList folders;
  for (int i = 0; i < depth; ++i) {
    folders.append(u"d%1"_s.arg(i));
  }
  const QString path = folders.join(u'\\');
  world.local.memory->AddFile(u"C:\\"_s + path + u"\\f"_s, "x");
  world.local.faulty->ClearCalls();
  const QString address = u"Workspace\\My Computer\\C:\\"_s + path + u'\\' + last;
  const auto file = world.File(address, lookUp);
  EXPECT_EQ(file->Result() == 0, last == u"f"_s);
  return world.local.faulty->CallCount();
}

TEST(clsIxoFileWalkTest, AnAddressIsResolvedInOneCallHoweverDeep) {
  for (const int depth : {1, 10, 300}) {
    EXPECT_EQ(CallsOfAddress(depth, LookUp::Exact, true, u"f"_s), 1);
    EXPECT_EQ(CallsOfAddress(depth, LookUp::Exact, false, u"f"_s), 1);
    EXPECT_EQ(CallsOfAddress(depth, LookUp::Navigate, true, u"f"_s), 1);
  }
}

TEST(clsIxoFileWalkTest, AMissingItemIsKnownInTwoCallsHoweverDeep) {
  EXPECT_EQ(CallsOfAddress(10, LookUp::Exact, true, u"none"_s), 2);
  EXPECT_EQ(CallsOfAddress(300, LookUp::Exact, false, u"none"_s), 2);
}

TEST(clsIxoFileWalkTest, AWalkCostsOneCallALevelAndOneForTheDrives) {
  for (const int depth : {1, 10, 300}) {
    EXPECT_EQ(CallsOfAddress(depth, LookUp::Navigate, false, u"f"_s), depth + 2);
  }
}

TEST_F(clsIxoFileTest, ANameInAnotherCaseIsFoundOnlyForNavigating) {
  world_.one.memory->AddFile(u"Dir\\File"_s, "x");
  world_.one.memory->AddFile(u"Dir\\TWICE"_s, "1");
  world_.one.memory->AddFile(u"Dir\\Twice"_s, "2");
  EXPECT_EQ(world_.File(u"Workspace\\Ctrl1\\dir\\file"_s)->Result(), error::kNotFound);
  const auto found = world_.File(u"Workspace\\Ctrl1\\dir\\file"_s, LookUp::Navigate);
  EXPECT_EQ(found->FullPath(), u"\\Dir\\File"_s);
  const auto exact = world_.File(u"Workspace\\Ctrl1\\Dir\\Twice"_s, LookUp::Navigate);
  EXPECT_EQ(exact->Value(), Variant(QByteArray("2")));
  EXPECT_NE(world_.File(u"Workspace\\Ctrl1\\Dir\\twice"_s, LookUp::Navigate)->Result(), 0);
}

TEST_F(clsIxoFileTest, AFolderThatIsShownCostsOneListAndNoCallAnEntry) {
  for (int i = 0; i < 30; ++i) {
    world_.local.memory->AddFile(u"C:\\dir\\file%1"_s.arg(i), "123");
  }
  const auto folder = world_.File(u"Workspace\\My Computer\\C:\\dir"_s);
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
  EXPECT_EQ(folder->GetIxoFile(u"none"_s), nullptr);
  EXPECT_EQ(folder->Result(), error::kNotFound);
}

TEST_F(clsIxoFileTest, RenameOntoASiblingReplacesIt) {
  world_.one.memory->AddFile(u"dir\\a"_s, "a");
  world_.one.memory->AddFile(u"dir\\b"_s, "b");
  const auto file = world_.File(u"Workspace\\Ctrl1\\dir\\a"_s);
  file->Rename(u"b"_s);
  EXPECT_EQ(file->Result(), 0);
  EXPECT_EQ(world_.one.memory->Tree(), (QStringList{u"dir\\"_s, u"dir\\b=a"_s}));
  EXPECT_EQ(file->Name(), u"b"_s);
  EXPECT_EQ(file->Address(), u"Workspace\\Ctrl1\\dir\\b"_s);
}

TEST_F(clsIxoFileTest, RenameOnTheLocalDiskStaysInItsFolder) {
  world_.local.memory->AddFile(u"C:\\dir\\a"_s, "a");
  const auto file = world_.File(u"Workspace\\My Computer\\C:\\dir\\a"_s);
  for (const QString& name : {u""_s, u"x\\y"_s, u"..\\y"_s, u"x/y"_s, u".."_s, u"."_s}) {
    file->Rename(name);
    EXPECT_EQ(file->Result(), error::kInvalidName) << name.toStdString();
  }
  file->Rename(u"b"_s);
  EXPECT_EQ(file->Result(), 0);
  EXPECT_TRUE(world_.local.memory->Exists(u"C:\\dir\\b"_s));
}

TEST_F(clsIxoFileTest, ADriveAndAControllerAreNeitherRenamedNorDeleted) {
  world_.one.memory->AddFile(u"f"_s, "x");
  world_.local.memory->AddFile(u"C:\\f"_s, "x");
  for (const QString& address : {u"Workspace\\Ctrl1"_s, u"Workspace\\My Computer\\C:"_s}) {
    const auto file = world_.File(address);
    file->Rename(u"other"_s);
    EXPECT_EQ(file->Result(), error::kAccessDenied);
    file->Delete();
    EXPECT_EQ(file->Result(), error::kAccessDenied);
  }
  EXPECT_TRUE(world_.one.memory->Exists(u"f"_s));
  EXPECT_TRUE(world_.local.memory->Exists(u"C:\\f"_s));
}

TEST_F(clsIxoFileTest, AControllersRootFolderIsNeitherRenamedNorMovedNorDeleted) {
  world_.two.memory->AddFile(u"base\\root\\a"_s, "x");
  world_.Connect(u"Rooted"_s, world_.two, u"/base/root"_s);
  const QStringList before = world_.two.memory->Tree();
  const auto file = world_.File(u"Workspace\\Rooted"_s);
  file->Rename(u"other"_s);
  EXPECT_EQ(file->Result(), error::kAccessDenied);
  file->Move(u"\\other"_s, true);
  EXPECT_EQ(file->Result(), error::kAccessDenied);
  file->Delete();
  EXPECT_EQ(file->Result(), error::kAccessDenied);
  EXPECT_EQ(world_.two.memory->Tree(), before);
}

TEST_F(clsIxoFileTest, DeleteMoveRunAndExecuteReachTheFile) {
  world_.one.memory->AddFile(u"a"_s, "a");
  world_.one.memory->AddFolder(u"dir"_s);
  const auto file = world_.File(u"Workspace\\Ctrl1\\a"_s);
  file->Run();
  EXPECT_EQ(file->Result(), 0);
  static_cast<void>(file->Execute({}));
  static_cast<void>(file->Execute(u"Print"_s));
  std::vector<FileSystemCall> calls;
  for (const FileSystemCall& call : world_.one.faulty->Calls()) {
    if (call.operation == Operation::Execute) {
      calls.push_back(call);
    }
  }
  EXPECT_EQ(calls, (std::vector<FileSystemCall>{{Operation::Execute, u"a"_s, QString(), Missing{}},
                                                {Operation::Execute, u"a"_s, QString(), Missing{}},
                                                {Operation::Execute, u"a"_s, u"Print"_s, Missing{}}}));
  file->Move(u"\\dir\\b"_s, false);
  EXPECT_EQ(file->Result(), 0);
  EXPECT_TRUE(world_.one.memory->Exists(u"dir\\b"_s));
  file->Delete();
  EXPECT_EQ(file->Result(), 0);
  EXPECT_EQ(world_.one.memory->Tree(), QStringList{u"dir\\"_s});
  file->Delete();
  EXPECT_NE(file->Result(), 0);
}

TEST_F(clsIxoFileTest, CopyGoesUnderTheNewNameOrTheOwn) {
  world_.local.memory->AddFile(u"C:\\a"_s, "a");
  world_.local.memory->AddFolder(u"D:\\dir"_s);
  const auto file = world_.File(u"Workspace\\My Computer\\C:\\a"_s);
  EXPECT_EQ(file->Copy(u"Workspace\\My Computer\\D:\\dir"_s, {}, false), 0);
  EXPECT_EQ(file->Copy(u"workspace\\my computer\\D:"_s, u"b"_s, false), 0);
  EXPECT_EQ(world_.local.memory->Content(u"D:\\dir\\a"_s), "a");
  EXPECT_EQ(world_.local.memory->Content(u"D:\\b"_s), "a");
  EXPECT_EQ(file->Copy(u"Workspace\\My Computer\\D:"_s, u"b"_s, false), error::kExists);
  EXPECT_EQ(file->Copy(u"Workspace\\My Computer\\D:"_s, u"b"_s, true), 0);
}

TEST_F(clsIxoFileTest, CopyReplacesTheControllersNameWhereItComesFirstOnly) {
  world_.one.memory->AddFile(u"a"_s, "a");
  world_.one.memory->AddFolder(u"x\\Ctrl1\\y"_s);
  const auto file = world_.File(u"Workspace\\Ctrl1\\a"_s);
  EXPECT_EQ(file->Copy(u"Workspace\\Ctrl1\\x\\Ctrl1\\y"_s, {}, false), 0);
  EXPECT_EQ(world_.one.memory->Content(u"x\\Ctrl1\\y\\a"_s), "a");
  EXPECT_EQ(file->Copy(u"Workspace\\Ctrl1"_s, u"b"_s, false), 0);
  EXPECT_EQ(world_.one.memory->Content(u"b"_s), "a");
}

TEST_F(clsIxoFileTest, CopyWithoutAConnectedControllerIsMinusOneAndCopiesNothing) {
  world_.one.memory->AddFile(u"a"_s, "a");
  const auto file = world_.File(u"Workspace\\Ctrl1\\a"_s);
  EXPECT_EQ(file->Copy(u"Workspace\\Ctrl9\\dir"_s, {}, true), -1);
  EXPECT_EQ(file->Result(), -1);
  EXPECT_EQ(world_.one.memory->Tree(), QStringList{u"a=a"_s});
}

TEST_F(clsIxoFileTest, CopyRefusesAnotherControllerTheDriveListAndOddAddresses) {
  world_.local.memory->AddFile(u"C:\\a"_s, "a");
  world_.local.memory->AddFolder(u"C:\\dir"_s);
  const QStringList before = world_.local.memory->Tree();
  const auto file = world_.File(u"Workspace\\My Computer\\C:\\a"_s);
  for (const QString& address :
       {u"Workspace\\Ctrl1"_s, u"Workspace\\My Computer"_s, u"Workspace"_s, u"Workspace\\My Computer\\dir"_s,
        u"Workspace\\My Computer\\D:\\.."_s, u"Workspace\\My Computer\\D:\\\\x"_s}) {
    EXPECT_NE(file->Copy(address, {}, true), 0) << address.toStdString();
  }
  EXPECT_NE(file->Copy(u"Workspace\\My Computer\\D:"_s, u"x\\y"_s, true), 0);
  EXPECT_EQ(world_.local.memory->Tree(), before);
  EXPECT_TRUE(world_.one.memory->Tree().isEmpty());
}

TEST_F(clsIxoFileTest, AnAddressWithSlashesIsRefusedAnotherControllerToo) {
  world_.one.memory->AddFile(u"a"_s, "a");
  world_.one.memory->AddFolder(u"dir"_s);
  const QStringList before = world_.one.memory->Tree();
  const auto file = world_.File(u"Workspace/Ctrl1/a"_s);
  EXPECT_NE(file->Copy(u"Workspace\\Ctrl2\\dir"_s, {}, true), 0);
  EXPECT_EQ(world_.one.memory->Tree(), before);
}

TEST_F(clsIxoFileTest, AControllersRootIsItsTopForBrowsingAndForCopying) {
  world_.two.memory->AddFile(u"base\\root\\a"_s, "inside");
  world_.two.memory->AddFile(u"a"_s, "outside");
  world_.Connect(u"Rooted"_s, world_.two, u"/base/root"_s);
  const auto file = world_.File(u"Workspace\\Rooted\\a"_s);
  EXPECT_EQ(file->Value(), Variant(QByteArray("inside")));
  EXPECT_TRUE(file->IsOnController());
  EXPECT_EQ(file->Copy(u"Workspace\\Rooted"_s, u"b"_s, false), 0);
  EXPECT_EQ(world_.two.memory->Content(u"base\\root\\b"_s), "inside");
  EXPECT_EQ(world_.File(u"Workspace\\Rooted\\base"_s)->Result(), error::kNotFound);
  const auto top = world_.File(u"Workspace\\Rooted"_s);
  EXPECT_EQ(std::get<QStringList>(top->FileNames()), (QStringList{u"a"_s, u"b"_s}));
}

TEST_F(clsIxoFileTest, ARootOnALocalDriveIsFoundWithAndWithoutItsLetter) {
  world_.local.memory->AddFile(u"C:\\home\\me\\a"_s, "x");
  int number = 0;
  for (const QString& root : {u"C:\\home\\me"_s, u"/home/me"_s, u"C:/home/me/"_s}) {
    const QString name = u"Root%1"_s.arg(++number);
    world_.Connect(name, world_.local, root);
    const auto file = world_.File(u"Workspace\\%1\\a"_s.arg(name));
    EXPECT_EQ(file->FullPath(), u"C:\\home\\me\\a"_s) << root.toStdString();
    EXPECT_EQ(file->Copy(u"Workspace\\%1"_s.arg(name), name, false), 0);
    EXPECT_TRUE(world_.local.memory->Exists(u"C:\\home\\me\\"_s + name));
  }
}

TEST_F(clsIxoFileTest, EmptyRootsAndBareSeparatorsAreTheTop) {
  world_.two.memory->AddFile(u"dir\\a"_s, "x");
  int number = 0;
  for (const QString& root : {u""_s, u"/"_s, u"\\"_s}) {
    const QString name = u"Top%1"_s.arg(++number);
    world_.Connect(name, world_.two, root);
    const auto file = world_.File(u"Workspace\\%1\\dir\\a"_s.arg(name));
    EXPECT_EQ(file->FullPath(), u"\\dir\\a"_s);
    EXPECT_EQ(file->Copy(u"Workspace\\%1\\dir"_s.arg(name), name, false), 0);
    EXPECT_TRUE(world_.two.memory->Exists(u"dir\\"_s + name));
  }
}

TEST_F(clsIxoFileTest, ARootThatHasGoneLeavesNothing) {
  world_.Connect(u"Rooted"_s, world_.two, u"/gone/root"_s);
  const auto file = world_.File(u"Workspace\\Rooted\\a"_s);
  EXPECT_EQ(file->Result(), error::kNotFound);
  EXPECT_EQ(file->IxoFile(), nullptr);
}

TEST_F(clsIxoFileTest, AControllerMayBeCalledLikeADrive) {
  world_.two.memory->AddFile(u"a"_s, "x");
  world_.Connect(u"C:"_s, world_.two);
  const auto file = world_.File(u"Workspace\\C:\\a"_s);
  EXPECT_EQ(file->CtrlName(), u"C:"_s);
  EXPECT_EQ(file->Copy(u"Workspace\\C:"_s, u"b"_s, false), 0);
  EXPECT_TRUE(world_.two.memory->Exists(u"b"_s));
}

TEST_F(clsIxoFileTest, AddIxoFileLeavesTheComposedOption) {
  world_.one.memory->AddFolder(u"dir,x"_s);
  const auto folder = world_.File(u"Workspace\\Ctrl1\\dir,x"_s);
  QString options = u"@Create=2"_s;
  const auto created = folder->AddIxoFile(u"New Folder"_s, folder->FullPath(), options);
  EXPECT_EQ(options, u"Path=\\dir,x,@Create=2"_s);
  ASSERT_NE(created, nullptr);
  EXPECT_EQ(world_.one.memory->Tree(), (QStringList{u"dir,x\\"_s, u"dir,x\\New Folder\\"_s}));
  options.clear();
  EXPECT_EQ(folder->AddIxoFile(u"none"_s, {}, options), nullptr);
  EXPECT_EQ(options, u"Path=,"_s);
  EXPECT_EQ(folder->Result(), error::kNotFound);
}

TEST_F(clsIxoFileTest, ADriveTableThatIsAheadOfTheEngineIsAnErrorAndNoOtherDrive) {
  world_.local.memory->RemoveDrive(u"D:"_s);
  const auto file = world_.File(u"Workspace\\My Computer\\D:"_s);
  EXPECT_EQ(file->Result(), error::kOutOfRange);
  EXPECT_EQ(file->IxoFile(), nullptr);
  EXPECT_EQ(world_.File(u"Workspace\\My Computer\\C:"_s)->Result(), 0);
}

TEST_F(clsIxoFileTest, EndsQuietlyWhenItsControllerHasGone) {
  world_.one.memory->AddFile(u"dir\\a"_s, "x");
  auto file = world_.File(u"Workspace\\Ctrl1\\dir\\a"_s);
  world_.session.gIxoControllers->Remove(u"Ctrl1"_s);
  world_.session.gIxoControllers.reset();
  world_.engine->Arm(1, FaultSpan::FromThenOn);
  file.reset();
  world_.engine->Disarm();
  auto later = world_.File(u"Workspace\\Ctrl1\\dir"_s);
  EXPECT_EQ(later->Result(), error::kDeviceNotReady);
}

TEST_F(clsIxoFileTest, IdentityTellsTwoAddressesOfOneItem) {
  world_.one.memory->AddFile(u"dir\\a"_s, "x");
  world_.Connect(u"Again"_s, world_.one, u"/dir"_s);
  const auto first = world_.File(u"Workspace\\Ctrl1\\dir\\a"_s);
  const auto second = world_.File(u"Workspace\\Again\\a"_s);
  ASSERT_TRUE(first->Identity().has_value());
  EXPECT_EQ(first->Identity(), second->Identity());
}

}  // namespace
}  // namespace trevane::test
