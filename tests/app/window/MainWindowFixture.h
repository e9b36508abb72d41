#pragma once

#include "app/modMain.h"
#include "app/session/AppServices.h"
#include "app/window/CommandBars.h"
#include "app/window/frmFileMgr.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "engine/substitute/SubstituteEngine.h"
#include "resources/Resources.h"
#include "tests/support/FakeShellIcons.h"
#include "tests/support/FakeVolumes.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/ModelChanges.h"
#include "tests/support/ScriptedPrompts.h"
#include "tests/support/TestFiles.h"
#include "views/list/FileListModel.h"
#include "views/list/FileListView.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderNode.h"
#include "views/tree/FolderTreeModel.h"
#include "views/tree/FolderTreeView.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

#include <memory>

namespace trevane::test {

/// The real program with a real window, over a file system in memory and with scripted answers. Settings and
/// log are written to a folder of the test.
class MainWindowFixture : public testing::Test {
 protected:
  MainWindowFixture() {
    InitResources();
    QDir::setCurrent(current_.path());
    volumes_.Set({{QStringLiteral("A:"), QStringLiteral("/a/"), drivetype::kRemovable},
                  {QStringLiteral("C:"), QStringLiteral("/c/"), drivetype::kFixed}});
    memory_->AddFolder(QStringLiteral("C:\\Backup"));
    memory_->AddFolder(QStringLiteral("C:\\Programs\\Cell1"));
    memory_->AddFile(QStringLiteral("C:\\Programs\\main.pac"), "program");
    memory_->AddFile(QStringLiteral("C:\\readme.txt"), "12345");
  }

  ~MainWindowFixture() override {
    if (program_ && program_->Window()) {
      program_->Window()->close();
    }
    program_.reset();
  }

  [[nodiscard]] AppServices Services() {
    return {.prompts = prompts_,
            .volumes = volumes_,
            .shellIcons = shellIcons_,
            .createEngine = [this] { return createEngine_(); },
            .isFirstInstance = [this] { return isFirst_; },
            .programFolder = folder_.path(),
            .baseName = QStringLiteral("Trevane"),
            .version = QStringLiteral("1.2.3"),
            .waiter = waiter_,
            .learnt = learnt_,
            .stopControllers = stopControllers_,
            .fetchedFolder = fetchedFolder_,
            .openWithProgram = openWithProgram_,
            .fetchedClock = fetchedClock_};
  }

  /// Starts the program as its process entry does.
  void Start(const QString& commandLine = {}) {
    prompts_.ForgetEnding();
    program_ = std::make_unique<modMain>(Services());
    program_->Start(commandLine);
    if (Window()) {
      modelChanges_.Watch(Window()->TreeModel());
      modelChanges_.Watch(Window()->ListModel());
    }
    QCoreApplication::processEvents();
  }

  /// Closes the window as the user does, and destroys the program.
  void Stop() {
    ASSERT_NE(Window(), nullptr);
    EXPECT_TRUE(Window()->close());
    program_.reset();
  }

  [[nodiscard]] frmFileMgr* Window() { return program_ ? program_->Window() : nullptr; }
  [[nodiscard]] FolderTreeView& Tree() { return Window()->Tree(); }
  [[nodiscard]] FileListView& List() { return Window()->List(); }
  [[nodiscard]] Navigator& Nav() { return Window()->Navigation(); }

  [[nodiscard]] bool IsEnabled(CommandPlace place, CommandId id) {
    return Window()->Bars().IsEnabled(place, id);
  }
  /// The command's toolbar button.
  [[nodiscard]] QToolButton* Button(CommandId id) {
    QToolButton* button = Window()->Bars().Button(id);
    if (!button) {
      throw std::runtime_error("the command has no button");
    }
    return button;
  }
  /// Chooses the command as the user does. Fails when it is missing at that place, or disabled.
  void Trigger(CommandPlace place, CommandId id) {
    ASSERT_TRUE(IsEnabled(place, id)) << "command " << static_cast<int>(id);
    if (QAction* action = Window()->Bars().Action(place, id)) {
      action->trigger();
    } else {
      QTest::mouseClick(Button(id), Qt::LeftButton);
    }
    QCoreApplication::processEvents();
  }

  [[nodiscard]] FolderNode* Node(const QString& address) {
    FolderNode* node = Window()->TreeModel().FindByKey(address);
    EXPECT_NE(node, nullptr) << address.toStdString();
    return node;
  }

  /// Scrolls to the node and returns the point where it is painted.
  [[nodiscard]] QPoint PointOf(const QString& address) {
    const QModelIndex index = Window()->TreeModel().IndexOf(Node(address));
    Tree().scrollTo(index);
    return Tree().visualRect(index).center();
  }
  [[nodiscard]] QPoint PointOfItem(const QString& text) {
    const auto item = Window()->ListModel().FindByText(text);
    EXPECT_NE(item, FileListModel::kNoItem) << text.toStdString();
    const QModelIndex index = Window()->ListModel().IndexOf(item);
    List().scrollTo(index);
    return List().visualRect(index).center();
  }

  void ClickNode(const QString& address, Qt::MouseButton button = Qt::LeftButton) {
    QTest::mouseClick(Tree().viewport(), button, {}, PointOf(address));
    QCoreApplication::processEvents();
  }
  void ClickItem(const QString& text, Qt::MouseButton button = Qt::LeftButton,
                 Qt::KeyboardModifiers modifiers = {}) {
    QTest::mouseClick(List().viewport(), button, modifiers, PointOfItem(text));
    QCoreApplication::processEvents();
  }
  void DoubleClickItem(const QString& text) {
    const QPoint point = PointOfItem(text);
    QTest::mouseClick(List().viewport(), Qt::LeftButton, {}, point);
    QTest::mouseDClick(List().viewport(), Qt::LeftButton, {}, point);
    QCoreApplication::processEvents();
  }

  [[nodiscard]] QStringList ListTexts() {
    QStringList texts;
    for (int row = 0; row < Window()->ListModel().rowCount(); ++row) {
      texts += Window()->ListModel().Text(Window()->ListModel().HandleAt(row));
    }
    return texts;
  }

  template <typename Control>
  [[nodiscard]] Control& Find(const char* name) {
    auto* control = Window()->findChild<Control*>(QString::fromLatin1(name));
    if (!control) {
      throw std::runtime_error(std::string("no control named ") + name);
    }
    return *control;
  }

  [[nodiscard]] QString InFolder(const char* name) const {
    return folder_.filePath(QString::fromLatin1(name));
  }
  [[nodiscard]] QByteArray Content(const char* name) const { return ContentOf(InFolder(name)); }
  void Put(const char* name, const QByteArray& content) const { WriteFile(InFolder(name), content); }

  /// The program's folder, and the folder it was started in.
  QTemporaryDir folder_;
  QTemporaryDir current_;
  FakeVolumes volumes_;
  std::shared_ptr<MemoryFileSystem> memory_ = std::make_shared<MemoryFileSystem>(
      MemoryFileSystemOptions{.drives = {QStringLiteral("A:"), QStringLiteral("C:")}});
  std::shared_ptr<FaultyFileSystem> faulty_ = std::make_shared<FaultyFileSystem>(memory_);
  FakeShellIcons shellIcons_;
  ScriptedPrompts prompts_;
  bool isFirst_ = true;
  std::function<std::shared_ptr<IxoEngine>()> createEngine_ = [this]() -> std::shared_ptr<IxoEngine> {
    return std::make_shared<SubstituteEngine>(ProviderTable{
        {QStringLiteral("IxoProv.LocalFile"), [this](const FileSystemRequest&) { return faulty_; }}});
  };
  WindowWaiter* waiter_ = nullptr;
  std::shared_ptr<LearntClock> learnt_;
  std::function<void()> stopControllers_ = [] {};
  /// Empty: files are run on their controllers only.
  QString fetchedFolder_;
  std::function<OpenOutcome(const QString&)> openWithProgram_ = [](const QString& path) {
    ADD_FAILURE() << "opened: " << path.toStdString();
    return OpenOutcome{};
  };
  std::function<qint64()> fetchedClock_ = [] { return qint64{0}; };
  ModelChanges modelChanges_;
  std::unique_ptr<modMain> program_;
};

}  // namespace trevane::test
