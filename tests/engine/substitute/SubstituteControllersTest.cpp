#include "engine/model/IxoController.h"
#include "engine/model/IxoControllers.h"
#include "engine/model/IxoFile.h"
#include "engine/model/IxoFiles.h"
#include "engine/model/IxoWorkspace.h"
#include "engine/model/IxoWorkspaces.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "engine/substitute/SubstituteEngine.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

template <class Work>
qint32 ErrorOf(const Work& work) {
  try {
    work();
  } catch (const RunTimeError& failure) {
    return failure.Number();
  }
  return 0;
}

class SubstituteControllersTest : public testing::Test {
 protected:
  SubstituteControllersTest() {
    MemoryFileSystemOptions options;
    options.drives = {u"C:"_s, u"D:"_s};
    local_ = std::make_shared<MemoryFileSystem>(options);
    ProviderTable providers;
    providers.push_back({u"IxoProv.LocalFile"_s, [this](const FileSystemRequest& request) {
                           request_ = request;
                           return std::static_pointer_cast<FileSystem>(local_);
                         }});
    providers.push_back({u"IxoProv.Folder"_s, [](const FileSystemRequest&) {
                           return std::static_pointer_cast<FileSystem>(std::make_shared<MemoryFileSystem>());
                         }});
    providers.push_back({u"IxoProv.Down"_s, [](const FileSystemRequest&) -> std::shared_ptr<FileSystem> {
                           throw RunTimeError(error::kLogonFailure, u"log-on failure"_s);
                         }});
    providers.push_back(
        {u"IxoProv.Empty"_s, [](const FileSystemRequest&) { return std::shared_ptr<FileSystem>(); }});
    engine_ = std::make_unique<SubstituteEngine>(std::move(providers));
    workspace_ = engine_->Workspaces()->Item(qint16(0));
    controllers_ = workspace_->Controllers();
  }

  std::shared_ptr<IxoController> Add(const QString& name, const QString& provider = u"IxoProv.LocalFile"_s) {
    return workspace_->AddController(name, provider, QString(), QString());
  }

  std::shared_ptr<MemoryFileSystem> local_;
  FileSystemRequest request_;
  std::unique_ptr<SubstituteEngine> engine_;
  std::shared_ptr<IxoWorkspace> workspace_;
  std::shared_ptr<IxoControllers> controllers_;
};

TEST_F(SubstituteControllersTest, ATextSelectsByNameAndANumberByIndex) {
  const auto first = Add(u"A"_s);
  const auto second = Add(u"3"_s);
  const auto third = Add(u"C"_s);
  EXPECT_EQ(controllers_->Item(u"3"_s), second);
  EXPECT_EQ(controllers_->Item(qint32(3)), third);
  EXPECT_EQ(controllers_->Item(qint16(1)), first);
  EXPECT_EQ(controllers_->Item(u"c"_s), third);
}

TEST_F(SubstituteControllersTest, AnEmptyNameLetsTheEngineChooseOne) {
  EXPECT_EQ(Add(QString())->Name(), u"LocalFile1"_s);
  EXPECT_EQ(Add(u""_s)->Name(), u"LocalFile2"_s);
}

TEST_F(SubstituteControllersTest, ATakenNameAndOneThatCannotStandInAnAddressAreReplaced) {
  EXPECT_EQ(Add(u"Robot"_s)->Name(), u"Robot"_s);
  EXPECT_EQ(Add(u"ROBOT"_s)->Name(), u"ROBOT (2)"_s);
  EXPECT_EQ(Add(u"[a]/b\n"_s)->Name(), u"ab"_s);
  EXPECT_EQ(Add(u"MY COMPUTER"_s)->Name(), u"MY COMPUTER (2)"_s);
}

TEST_F(SubstituteControllersTest, AnIndexCountsFromOneAndIsNeverUsedAgain) {
  EXPECT_EQ(Add(u"A"_s)->Index(), 1);
  EXPECT_EQ(Add(u"B"_s)->Index(), 2);
  controllers_->Remove(qint32(2));
  EXPECT_EQ(Add(u"B"_s)->Index(), 3);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(controllers_->Item(qint32(2))); }), error::kOutOfRange);
}

TEST_F(SubstituteControllersTest, RemoveForgetsByNameAndByIndexAndNothingElse) {
  Add(u"A"_s);
  Add(u"B"_s);
  controllers_->Remove(u"a"_s);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(controllers_->Item(u"A"_s)); }), error::kNoSuchKey);
  EXPECT_EQ(ErrorOf([&] { controllers_->Remove(u"A"_s); }), error::kNoSuchKey);
  EXPECT_EQ(ErrorOf([&] { controllers_->Remove(qint32(9)); }), error::kOutOfRange);
  EXPECT_EQ(ErrorOf([&] { controllers_->Remove(Missing{}); }), error::kInvalidParameter);
  EXPECT_EQ(controllers_->Item(qint32(2))->Name(), u"B"_s);
}

TEST_F(SubstituteControllersTest, AProviderThatIsUnknownOrCannotConnectIsAnErrorAndUsesNoIndex) {
  EXPECT_EQ(ErrorOf([&] { Add(u"A"_s, u"IxoProv.Nobody"_s); }), error::kInvalidParameter);
  EXPECT_EQ(ErrorOf([&] { Add(u"A"_s, u"IxoProv.Down"_s); }), error::kLogonFailure);
  EXPECT_EQ(ErrorOf([&] { Add(u"A"_s, u"IxoProv.Empty"_s); }), error::kDeviceNotReady);
  EXPECT_EQ(Add(u"A"_s)->Index(), 1);
}

TEST_F(SubstituteControllersTest, MachineAndOptionReachTheProvider) {
  workspace_->AddController(u"A"_s, u"ixoprov.localfile"_s, u"host"_s, u"port=1"_s);
  EXPECT_EQ(request_.machine, u"host"_s);
  EXPECT_EQ(request_.option, u"port=1"_s);
  Add(u"B"_s);
  EXPECT_TRUE(request_.machine.isNull());
  EXPECT_TRUE(request_.option.isNull());
}

TEST_F(SubstituteControllersTest, ProviderNamesAreTheTableInItsOrder) {
  EXPECT_EQ(workspace_->ProviderNames({}), Variant(QStringList{u"IxoProv.LocalFile"_s, u"IxoProv.Folder"_s,
                                                               u"IxoProv.Down"_s, u"IxoProv.Empty"_s}));
}

TEST_F(SubstituteControllersTest, ThereIsOneWorkspace) {
  EXPECT_EQ(engine_->Workspaces()->Item(qint32(0)), workspace_);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(engine_->Workspaces()->Item(qint16(1))); }), error::kOutOfRange);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(engine_->Workspaces()->Item(u"0"_s)); }), error::kNoSuchKey);
}

TEST_F(SubstituteControllersTest, TheTopHoldsTheDrivesOfTheMoment) {
  const auto files = Add({})->Files();
  EXPECT_EQ(files->Item(qint32(0))->Name(), u"C:"_s);
  EXPECT_EQ(files->Item(qint16(1))->Name(), u"D:"_s);
  EXPECT_EQ(files->Item(u"d:"_s)->Name(), u"D:"_s);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(files->Item(qint32(2))); }), error::kOutOfRange);
  local_->AddDrive(u"E:"_s);
  EXPECT_EQ(files->Item(qint32(2))->Name(), u"E:"_s);
  local_->RemoveDrive(u"D:"_s);
  EXPECT_EQ(files->Item(qint32(1))->Name(), u"E:"_s);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(files->Item(qint32(-1))); }), error::kOutOfRange);
}

TEST_F(SubstituteControllersTest, TheTopHoldsOneFolderWhereThereAreNoDrives) {
  const auto files = Add({}, u"IxoProv.Folder"_s)->Files();
  const auto top = files->Item(qint32(0));
  EXPECT_EQ(top->Path(), QString());
  EXPECT_EQ(top->Name(), QString());
  EXPECT_EQ(top->Attribute() & 0x10, 0x10);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(files->Item(qint32(1))); }), error::kOutOfRange);
}

TEST_F(SubstituteControllersTest, OpenFileTakesAPathFromTheTopWithAnySeparators) {
  local_->AddFile(u"C:\\dir\\sub\\file"_s, "x");
  const auto controller = Add({});
  for (const QString& path : {u"C:\\dir\\sub\\file"_s, u"C:/dir/sub/file"_s, u"\\C:/dir\\sub/file"_s,
                              u"/dir/sub/file"_s, u"c:\\dir\\sub\\file\\"_s}) {
    const auto file = controller->OpenFile(path, {});
    EXPECT_EQ(file->Path() + file->Name(), u"C:\\dir\\sub\\file"_s) << path.toStdString();
  }
  EXPECT_EQ(controller->OpenFile(u"/"_s, {})->Name(), u"C:"_s);
  EXPECT_EQ(controller->OpenFile({}, {})->Name(), u"C:"_s);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(controller->OpenFile(u"C:\\no"_s, {})); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(controller->OpenFile(u"X:"_s, {})); }), error::kNotFound);
  for (const QString& path : {u"C:\\\\dir"_s, u"C:\\dir\\..\\dir"_s, u"C:\\.\\dir"_s}) {
    EXPECT_EQ(ErrorOf([&] { static_cast<void>(controller->OpenFile(path, {})); }), error::kInvalidName);
  }
}

TEST_F(SubstituteControllersTest, OpenFileTakesASingleNameInAFolder) {
  local_->AddFile(u"C:\\a,b\\sub\\file"_s, "x");
  const auto controller = Add({});
  const auto sub = controller->OpenFile(u"sub"_s, u"Path=C:\\a,b"_s);
  EXPECT_EQ(sub->Path() + sub->Name(), u"C:\\a,b\\sub"_s);
  EXPECT_EQ(controller->OpenFile(u"a,b"_s, u"Path="_s)->Path(), u"C:\\"_s);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(controller->OpenFile(u"sub\\file"_s, u"Path=C:\\a,b"_s)); }),
            error::kInvalidName);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(controller->OpenFile(u"sub"_s, u"@Create=2"_s)); }),
            error::kInvalidParameter);
}

TEST_F(SubstituteControllersTest, AShareIsNeverAFolderOfTheFirstDrive) {
  local_->AddFile(u"C:\\server\\share\\f"_s, "x");
  const auto controller = Add({});
  for (const QString& path : {u"\\\\server\\share"_s, u"\\\\server\\share\\f"_s, u"\\\\server"_s}) {
    EXPECT_EQ(ErrorOf([&] { static_cast<void>(controller->OpenFile(path, {})); }), error::kNotSupported)
        << path.toStdString();
  }
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(controller->OpenFile(u"share"_s, u"Path=\\\\server"_s)); }),
            error::kNotSupported);
  const auto file = controller->OpenFile(u"\\server\\share\\f"_s, {});
  EXPECT_EQ(ErrorOf([&] { file->Copy(u"\\\\server\\share\\g"_s, {}); }), error::kNotSupported);
  EXPECT_EQ(controller->OpenFile(u"server"_s, u"Path=\\"_s)->Name(), u"server"_s);
}

TEST_F(SubstituteControllersTest, AFileStaysUsableAfterItsControllerHasGone) {
  local_->AddFile(u"C:\\f"_s, "content");
  auto controller = Add(u"A"_s);
  const auto file = controller->OpenFile(u"C:\\f"_s, {});
  controllers_->Remove(u"A"_s);
  controller.reset();
  engine_.reset();
  EXPECT_EQ(file->Value(), Variant(QByteArray("content")));
}

}  // namespace
}  // namespace trevane::test
