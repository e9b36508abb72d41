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
    options.drives = {QStringLiteral("C:"), QStringLiteral("D:")};
    local_ = std::make_shared<MemoryFileSystem>(options);
    ProviderTable providers;
    providers.push_back({QStringLiteral("IxoProv.LocalFile"), [this](const FileSystemRequest& request) {
                           request_ = request;
                           return std::static_pointer_cast<FileSystem>(local_);
                         }});
    providers.push_back({QStringLiteral("IxoProv.Folder"), [](const FileSystemRequest&) {
                           return std::static_pointer_cast<FileSystem>(std::make_shared<MemoryFileSystem>());
                         }});
    providers.push_back(
        {QStringLiteral("IxoProv.Down"), [](const FileSystemRequest&) -> std::shared_ptr<FileSystem> {
           throw RunTimeError(error::kLogonFailure, QStringLiteral("log-on failure"));
         }});
    providers.push_back({QStringLiteral("IxoProv.Empty"),
                         [](const FileSystemRequest&) { return std::shared_ptr<FileSystem>(); }});
    engine_ = std::make_unique<SubstituteEngine>(std::move(providers));
    workspace_ = engine_->Workspaces()->Item(qint16(0));
    controllers_ = workspace_->Controllers();
  }

  std::shared_ptr<IxoController> Add(const QString& name,
                                     const QString& provider = QStringLiteral("IxoProv.LocalFile")) {
    return workspace_->AddController(name, provider, QString(), QString());
  }

  std::shared_ptr<MemoryFileSystem> local_;
  FileSystemRequest request_;
  std::unique_ptr<SubstituteEngine> engine_;
  std::shared_ptr<IxoWorkspace> workspace_;
  std::shared_ptr<IxoControllers> controllers_;
};

TEST_F(SubstituteControllersTest, ATextSelectsByNameAndANumberByIndex) {
  const auto first = Add(QStringLiteral("A"));
  const auto second = Add(QStringLiteral("3"));
  const auto third = Add(QStringLiteral("C"));
  EXPECT_EQ(controllers_->Item(QStringLiteral("3")), second);
  EXPECT_EQ(controllers_->Item(qint32(3)), third);
  EXPECT_EQ(controllers_->Item(qint16(1)), first);
  EXPECT_EQ(controllers_->Item(QStringLiteral("c")), third);
}

TEST_F(SubstituteControllersTest, AnEmptyNameLetsTheEngineChooseOne) {
  EXPECT_EQ(Add(QString())->Name(), QStringLiteral("LocalFile1"));
  EXPECT_EQ(Add(QStringLiteral(""))->Name(), QStringLiteral("LocalFile2"));
}

TEST_F(SubstituteControllersTest, TakenAndUnusableNamesAreReplaced) {
  EXPECT_EQ(Add(QStringLiteral("Robot"))->Name(), QStringLiteral("Robot"));
  EXPECT_EQ(Add(QStringLiteral("ROBOT"))->Name(), QStringLiteral("ROBOT (2)"));
  EXPECT_EQ(Add(QStringLiteral("[a]/b\n"))->Name(), QStringLiteral("ab"));
  EXPECT_EQ(Add(QStringLiteral("MY COMPUTER"))->Name(), QStringLiteral("MY COMPUTER (2)"));
}

TEST_F(SubstituteControllersTest, AnIndexCountsFromOneAndIsNeverUsedAgain) {
  EXPECT_EQ(Add(QStringLiteral("A"))->Index(), 1);
  EXPECT_EQ(Add(QStringLiteral("B"))->Index(), 2);
  controllers_->Remove(qint32(2));
  EXPECT_EQ(Add(QStringLiteral("B"))->Index(), 3);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(controllers_->Item(qint32(2))); }), error::kOutOfRange);
}

TEST_F(SubstituteControllersTest, RemoveForgetsByNameAndByIndexAndNothingElse) {
  Add(QStringLiteral("A"));
  Add(QStringLiteral("B"));
  controllers_->Remove(QStringLiteral("a"));
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(controllers_->Item(QStringLiteral("A"))); }), error::kNoSuchKey);
  EXPECT_EQ(ErrorOf([&] { controllers_->Remove(QStringLiteral("A")); }), error::kNoSuchKey);
  EXPECT_EQ(ErrorOf([&] { controllers_->Remove(qint32(9)); }), error::kOutOfRange);
  EXPECT_EQ(ErrorOf([&] { controllers_->Remove(Missing{}); }), error::kInvalidParameter);
  EXPECT_EQ(controllers_->Item(qint32(2))->Name(), QStringLiteral("B"));
}

TEST_F(SubstituteControllersTest, AFailedProviderUsesNoIndex) {
  EXPECT_EQ(ErrorOf([&] { Add(QStringLiteral("A"), QStringLiteral("IxoProv.Nobody")); }),
            error::kInvalidParameter);
  EXPECT_EQ(ErrorOf([&] { Add(QStringLiteral("A"), QStringLiteral("IxoProv.Down")); }), error::kLogonFailure);
  EXPECT_EQ(ErrorOf([&] { Add(QStringLiteral("A"), QStringLiteral("IxoProv.Empty")); }),
            error::kDeviceNotReady);
  EXPECT_EQ(Add(QStringLiteral("A"))->Index(), 1);
}

TEST_F(SubstituteControllersTest, MachineAndOptionReachTheProvider) {
  static_cast<void>(workspace_->AddController(QStringLiteral("A"), QStringLiteral("ixoprov.localfile"),
                                              QStringLiteral("host"), QStringLiteral("port=1")));
  EXPECT_EQ(request_.machine, QStringLiteral("host"));
  EXPECT_EQ(request_.option, QStringLiteral("port=1"));
  Add(QStringLiteral("B"));
  EXPECT_TRUE(request_.machine.isNull());
  EXPECT_TRUE(request_.option.isNull());
}

TEST_F(SubstituteControllersTest, ProviderNamesAreTheTableInItsOrder) {
  EXPECT_EQ(workspace_->ProviderNames({}),
            Variant(QStringList{QStringLiteral("IxoProv.LocalFile"), QStringLiteral("IxoProv.Folder"),
                                QStringLiteral("IxoProv.Down"), QStringLiteral("IxoProv.Empty")}));
}

TEST_F(SubstituteControllersTest, ThereIsOneWorkspace) {
  EXPECT_EQ(engine_->Workspaces()->Item(qint32(0)), workspace_);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(engine_->Workspaces()->Item(qint16(1))); }), error::kOutOfRange);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(engine_->Workspaces()->Item(QStringLiteral("0"))); }),
            error::kNoSuchKey);
}

TEST_F(SubstituteControllersTest, TheTopHoldsTheDrivesOfTheMoment) {
  const auto files = Add({})->Files();
  EXPECT_EQ(files->Item(qint32(0))->Name(), QStringLiteral("C:"));
  EXPECT_EQ(files->Item(qint16(1))->Name(), QStringLiteral("D:"));
  EXPECT_EQ(files->Item(QStringLiteral("d:"))->Name(), QStringLiteral("D:"));
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(files->Item(qint32(2))); }), error::kOutOfRange);
  local_->AddDrive(QStringLiteral("E:"));
  EXPECT_EQ(files->Item(qint32(2))->Name(), QStringLiteral("E:"));
  local_->RemoveDrive(QStringLiteral("D:"));
  EXPECT_EQ(files->Item(qint32(1))->Name(), QStringLiteral("E:"));
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(files->Item(qint32(-1))); }), error::kOutOfRange);
}

TEST_F(SubstituteControllersTest, TheTopHoldsOneFolderWhereThereAreNoDrives) {
  const auto files = Add({}, QStringLiteral("IxoProv.Folder"))->Files();
  const auto top = files->Item(qint32(0));
  EXPECT_EQ(top->Path(), QString());
  EXPECT_EQ(top->Name(), QString());
  EXPECT_EQ(top->Attribute() & 0x10, 0x10);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(files->Item(qint32(1))); }), error::kOutOfRange);
}

TEST_F(SubstituteControllersTest, OpenFileTakesAPathFromTheTopWithAnySeparators) {
  local_->AddFile(QStringLiteral("C:\\dir\\sub\\file"), "x");
  const auto controller = Add({});
  for (const QString& path : {QStringLiteral("C:\\dir\\sub\\file"), QStringLiteral("C:/dir/sub/file"),
                              QStringLiteral("\\C:/dir\\sub/file"), QStringLiteral("/dir/sub/file"),
                              QStringLiteral("c:\\dir\\sub\\file\\")}) {
    const auto file = controller->OpenFile(path, {});
    EXPECT_EQ(file->Path() + file->Name(), QStringLiteral("C:\\dir\\sub\\file")) << path.toStdString();
  }
  EXPECT_EQ(controller->OpenFile(QStringLiteral("/"), {})->Name(), QStringLiteral("C:"));
  EXPECT_EQ(controller->OpenFile({}, {})->Name(), QStringLiteral("C:"));
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(controller->OpenFile(QStringLiteral("C:\\no"), {})); }),
            error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(controller->OpenFile(QStringLiteral("X:"), {})); }),
            error::kNotFound);
  for (const QString& path :
       {QStringLiteral("C:\\\\dir"), QStringLiteral("C:\\dir\\..\\dir"), QStringLiteral("C:\\.\\dir")}) {
    EXPECT_EQ(ErrorOf([&] { static_cast<void>(controller->OpenFile(path, {})); }), error::kInvalidName);
  }
}

TEST_F(SubstituteControllersTest, OpenFileTakesASingleNameInAFolder) {
  local_->AddFile(QStringLiteral("C:\\a,b\\sub\\file"), "x");
  const auto controller = Add({});
  const auto sub = controller->OpenFile(QStringLiteral("sub"), QStringLiteral("Path=C:\\a,b"));
  EXPECT_EQ(sub->Path() + sub->Name(), QStringLiteral("C:\\a,b\\sub"));
  EXPECT_EQ(controller->OpenFile(QStringLiteral("a,b"), QStringLiteral("Path="))->Path(),
            QStringLiteral("C:\\"));
  EXPECT_EQ(
      ErrorOf([&] {
        static_cast<void>(controller->OpenFile(QStringLiteral("sub\\file"), QStringLiteral("Path=C:\\a,b")));
      }),
      error::kInvalidName);
  EXPECT_EQ(ErrorOf([&] {
              static_cast<void>(controller->OpenFile(QStringLiteral("sub"), QStringLiteral("@Create=2")));
            }),
            error::kInvalidParameter);
}

TEST_F(SubstituteControllersTest, AShareIsNeverAFolderOfTheFirstDrive) {
  local_->AddFile(QStringLiteral("C:\\server\\share\\f"), "x");
  const auto controller = Add({});
  for (const QString& path : {QStringLiteral("\\\\server\\share"), QStringLiteral("\\\\server\\share\\f"),
                              QStringLiteral("\\\\server")}) {
    EXPECT_EQ(ErrorOf([&] { static_cast<void>(controller->OpenFile(path, {})); }), error::kNotSupported)
        << path.toStdString();
  }
  EXPECT_EQ(
      ErrorOf([&] {
        static_cast<void>(controller->OpenFile(QStringLiteral("share"), QStringLiteral("Path=\\\\server")));
      }),
      error::kNotSupported);
  const auto file = controller->OpenFile(QStringLiteral("\\server\\share\\f"), {});
  EXPECT_EQ(ErrorOf([&] { file->Copy(QStringLiteral("\\\\server\\share\\g"), {}); }), error::kNotSupported);
  EXPECT_EQ(controller->OpenFile(QStringLiteral("server"), QStringLiteral("Path=\\"))->Name(),
            QStringLiteral("server"));
}

TEST_F(SubstituteControllersTest, AFileStaysUsableAfterItsControllerHasGone) {
  local_->AddFile(QStringLiteral("C:\\f"), "content");
  auto controller = Add(QStringLiteral("A"));
  const auto file = controller->OpenFile(QStringLiteral("C:\\f"), {});
  controllers_->Remove(QStringLiteral("A"));
  controller.reset();
  engine_.reset();
  EXPECT_EQ(file->Value(), Variant(QByteArray("content")));
}

}  // namespace
}  // namespace trevane::test
