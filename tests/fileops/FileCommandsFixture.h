#pragma once

#include "engine/controllers/EngineSession.h"
#include "engine/model/IxoController.h"
#include "engine/model/IxoWorkspaces.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "engine/substitute/SubstituteEngine.h"
#include "fileops/FileCommands.h"
#include "tests/support/FailingEngine.h"
#include "tests/support/FakeShellIcons.h"
#include "tests/support/FakeVolumes.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/ScriptedPrompts.h"
#include "views/ImageList.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/DriveTable.h"
#include "views/addresses/NodeTags.h"
#include "views/list/DateFormatter.h"
#include "views/list/FileListModel.h"
#include "views/list/FileListView.h"
#include "views/list/FileTypes.h"
#include "views/navigation/Navigator.h"
#include "views/navigation/NavigatorListener.h"
#include "views/tree/FolderNode.h"
#include "views/tree/FolderTreeModel.h"
#include "views/tree/FolderTreeView.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <memory>

namespace trevane::test {

/// The commands on files over real models and views, a file system in memory, and a window of which only the
/// state is there. The drive "C:" holds a few files and folders; "Cell" is a connected controller.
class FileCommandsFixture : public testing::Test, protected FileCommandsHost, protected NavigatorListener {
 protected:
  explicit FileCommandsFixture(bool caseSensitive = true)
      : memory_(std::make_shared<MemoryFileSystem>(
            MemoryFileSystemOptions{.caseSensitive = caseSensitive, .drives = {QStringLiteral("C:")}})),
        faulty_(std::make_shared<FaultyFileSystem>(memory_)) {
    volumes_.Set({{QStringLiteral("C:"), QStringLiteral("/c/"), drivetype::kFixed}});
    memory_->AddFolder(QStringLiteral("C:\\Backup\\Old"));
    memory_->AddFolder(QStringLiteral("C:\\Programs\\Cell1\\Deep"));
    memory_->AddFile(QStringLiteral("C:\\Programs\\main.pac"), "program");
    memory_->AddFile(QStringLiteral("C:\\data.txt"), "data");
    memory_->AddFile(QStringLiteral("C:\\readme.txt"), "12345");
    cell_->AddFolder(QStringLiteral("pos"));
    cell_->AddFile(QStringLiteral("pos\\home.csv"), "1,2,3");

    engine_ = std::make_shared<FailingEngine>(std::make_shared<SubstituteEngine>(ProviderTable{
        {QStringLiteral("IxoProv.LocalFile"), [this](const FileSystemRequest&) { return faulty_; }},
        {QStringLiteral("IxoProv.Cell"), [this](const FileSystemRequest&) { return cell_; }}}));
    session_.gIxoEngine = engine_;
    session_.gIxoWorkspace = engine_->Workspaces()->Item(qint16{0});
    session_.gIxoControllers = session_.gIxoWorkspace->Controllers();
    Register(QString(), QStringLiteral("IxoProv.LocalFile"));
    session_.gLocalCtrlName = session_.gIxoCtrls().Item(qint32{1})->RealCtrlName();
    Register(QStringLiteral("Cell"), QStringLiteral("IxoProv.Cell"));

    treeView_.SetFolders(&tree_);
    listView_.SetFiles(&list_);
    listView_.resize(600, 400);
    treeView_.SetLabelEditHandler(&commands_.Labels());
    listView_.SetLabelEditHandler(&commands_.Labels());
    navigator_.RebuildTree();
    tree_.AddTreeNode(tree_.FindByIndex(1), QStringLiteral("CONTROLLER"), QStringLiteral("Cell"),
                      kControllerTag);
    Display(Local());
  }

  /// The address of a path on the drive.
  [[nodiscard]] static QString Local(const QString& path = {}) {
    const QString drive = QStringLiteral("Workspace\\My Computer\\C:");
    return path.isEmpty() ? drive : JoinAddress(drive, path);
  }

  void Register(const QString& name, const QString& provider) {
    const auto controller = session_.gIxoWorkspace->AddController(name, provider, QString(), QString());
    const auto record = std::make_shared<clsIxoCtrl>();
    record->SetCtrlIdx(controller->Index());
    record->SetRealCtrlName(controller->Name());
    record->SetProvName(provider);
    session_.gIxoCtrls().Add(record);
  }

  [[nodiscard]] FolderNode* Node(const QString& address) { return tree_.FindByKey(address); }
  void Display(const QString& address) {
    ASSERT_NE(Node(address), nullptr) << address.toStdString();
    navigator_.DisplayNode(*Node(address));
  }
  [[nodiscard]] QString Place() const { return navigator_.ListTag(); }
  /// Tree, list, Tag and address box name the same place.
  void ExpectPlace(const QString& address) {
    EXPECT_EQ(navigator_.ListTag().toStdString(), address.toStdString());
    EXPECT_EQ(address_.toStdString(), address.toStdString());
    ASSERT_NE(navigator_.CurrentNode(), nullptr);
    EXPECT_EQ(navigator_.CurrentNode()->FullPath().toStdString(), address.toStdString());
    ASSERT_NE(treeView_.SelectedNode(), nullptr);
    EXPECT_EQ(treeView_.SelectedNode()->FullPath().toStdString(), address.toStdString());
  }

  [[nodiscard]] FileListModel::Handle Item(const QString& text) const { return list_.FindByText(text); }
  void Select(const QStringList& texts) {
    listView_.clearSelection();
    for (const QString& text : texts) {
      ASSERT_NE(Item(text), FileListModel::kNoItem) << text.toStdString();
      listView_.selectionModel()->setCurrentIndex(list_.IndexOf(Item(text)),
                                                  QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
  }
  [[nodiscard]] QStringList ListTexts() const {
    QStringList texts;
    for (int row = 0; row < list_.rowCount(); ++row)
      texts += list_.Text(list_.HandleAt(row));
    texts.sort();
    return texts;
  }
  [[nodiscard]] QStringList ClipboardAddresses() const {
    QStringList addresses;
    for (const clsClipBrd& entry : state_.clipboard)
      addresses += AddressOf(entry);
    return addresses;
  }

  /// Edits the label as the views do it when their editor has closed; true when the edit was cancelled.
  bool RenameItem(const QString& from, const QString& to) {
    const FileListModel::Handle item = Item(from);
    EXPECT_NE(item, FileListModel::kNoItem) << from.toStdString();
    const LabelEdit edit{nullptr, item, list_.Tag(item), from};
    EXPECT_TRUE(commands_.Labels().BeforeLabelEdit(edit));
    bool cancel = false;
    commands_.Labels().AfterLabelEdit(edit, to, &cancel);
    return cancel;
  }
  bool RenameNode(const QString& address, const QString& to) {
    FolderNode* node = Node(address);
    EXPECT_NE(node, nullptr) << address.toStdString();
    const LabelEdit edit{node, FileListModel::kNoItem, node->Tag(), node->Text()};
    EXPECT_TRUE(commands_.Labels().BeforeLabelEdit(edit));
    bool cancel = false;
    commands_.Labels().AfterLabelEdit(edit, to, &cancel);
    return cancel;
  }

  void ShowStatus(const QString& text) override { status_ = text; }
  void ShowAddress(const QString& address) override { address_ = address; }
  void ShowCurrentNode(FolderNode& node) override { treeView_.SelectNode(&node); }
  void UpdateCommandStates(qint32 /*tag*/, bool /*entry*/) override {}
  void EnableDisconnect(bool /*enabled*/) override {}
  bool IsFilteredOut(const QString& /*fileName*/) override { return false; }
  void LetEventsRun() override {
    if (onDisplayEvents_)
      onDisplayEvents_();
  }
  void DisplayEnded() override {}
  [[nodiscard]] ActiveSide Active() const override { return active_; }
  void EnablePasteButton(bool enabled) override { pasteButton_ = enabled; }

  FakeVolumes volumes_;
  std::shared_ptr<MemoryFileSystem> memory_;
  std::shared_ptr<FaultyFileSystem> faulty_;
  std::shared_ptr<MemoryFileSystem> cell_ = std::make_shared<MemoryFileSystem>();
  std::shared_ptr<FailingEngine> engine_;
  FakeShellIcons shellIcons_;
  ScriptedPrompts prompts_;
  RecordingLog log_;
  RecordingHost host_;
  EngineSession session_;
  DriveTable drives_{volumes_};
  ImageList images_;
  FileTypes fileTypes_{shellIcons_, images_};
  DateFormatter dates_;
  FolderTreeModel tree_{nullptr};
  FileListModel list_{nullptr, &fileTypes_, &dates_};
  FolderTreeView treeView_{nullptr};
  FileListView listView_{nullptr};
  Navigator navigator_{Navigator::Parts{.session = session_,
                                        .drives = drives_,
                                        .prompts = prompts_,
                                        .fileTypes = fileTypes_,
                                        .tree = tree_,
                                        .list = list_,
                                        .listener = *this}};
  OperationState state_;
  FileCommands commands_{OperationParts{.session = session_,
                                        .drives = drives_,
                                        .prompts = prompts_,
                                        .log = log_,
                                        .navigator = navigator_,
                                        .fileTypes = fileTypes_,
                                        .tree = tree_,
                                        .list = list_,
                                        .treeView = treeView_,
                                        .listView = listView_,
                                        .host = host_},
                         state_, *this};

  ActiveSide active_ = ActiveSide::List;
  bool pasteButton_ = false;
  QString status_;
  QString address_;
  std::function<void()> onDisplayEvents_;
};

}  // namespace trevane::test
