#pragma once

#include "engine/providers/memory/MemoryFileSystem.h"
#include "fileops/FileCommands.h"
#include "fileops/OperationGuard.h"
#include "fileops/commands/CommandDispatcher.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SessionWorld.h"
#include "tests/support/ViewsWorld.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileListView.h"
#include "views/tree/FolderTreeView.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <memory>

namespace trevane::test {

/// The commands on files over real models and views, a file system in memory and a fake window. The drive
/// "C:" holds a few files and folders; "Cell" is a connected controller.
class FileCommandsFixture : public testing::Test, protected CommandHost, protected NavigatorListener {
 protected:
  /// `controller` takes the place of the one in memory, `cell_`.
  explicit FileCommandsFixture(bool caseSensitive = true,
                               const std::shared_ptr<FileSystem>& controller = nullptr)
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

    world_.Open({ProviderOf(QStringLiteral("IxoProv.LocalFile"), faulty_),
                 ProviderOf(QStringLiteral("IxoProv.Cell"), controller ? controller : cell_)});
    world_.Register(QStringLiteral("Cell"), QStringLiteral("IxoProv.Cell"));

    treeView_.SetFolders(&tree_);
    listView_.SetFiles(&list_);
    listView_.resize(600, 400);
    treeView_.SetLabelEditHandler(&commands_.Labels());
    listView_.SetLabelEditHandler(&commands_.Labels());
    navigator_.Builder().RebuildTree();
    tree_.AddTreeNode(tree_.FindByIndex(1), QStringLiteral("CONTROLLER"), QStringLiteral("Cell"),
                      kControllerTag);
    Display(Local());
  }

  /// The address of a path on the drive.
  [[nodiscard]] static QString Local(const QString& path = {}) {
    const QString drive = QStringLiteral("Workspace\\My Computer\\C:");
    return path.isEmpty() ? drive : JoinAddress(drive, path);
  }

  [[nodiscard]] FolderNode* Node(const QString& address) { return tree_.FindByKey(address); }
  void Display(const QString& address) { views_.Display(address); }
  [[nodiscard]] QString Place() const { return navigator_.CurrentAddress(); }
  /// Tree, list and address box show the same folder.
  void ExpectPlace(const QString& address) {
    EXPECT_EQ(navigator_.CurrentAddress().toStdString(), address.toStdString());
    EXPECT_EQ(address_.toStdString(), address.toStdString());
    ASSERT_NE(navigator_.CurrentNode(), nullptr);
    EXPECT_EQ(navigator_.CurrentNode()->FullPath().toStdString(), address.toStdString());
    ASSERT_NE(treeView_.SelectedNode(), nullptr);
    EXPECT_EQ(treeView_.SelectedNode()->FullPath().toStdString(), address.toStdString());
  }

  void Execute(CommandId id) { dispatcher_.Execute(id); }

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
    QStringList texts = views_.ListTexts();
    texts.sort();
    return texts;
  }
  [[nodiscard]] QStringList ClipboardAddresses() const {
    QStringList addresses;
    for (const clsClipBrd& entry : state_.clipboard) {
      addresses += AddressOf(entry);
    }
    return addresses;
  }

  /// Edits the label as the views do after their editor has closed. True when the edit was cancelled.
  bool RenameItem(const QString& from, const QString& to) {
    const FileListModel::Handle item = Item(from);
    EXPECT_NE(item, FileListModel::kNoItem) << from.toStdString();
    const LabelEdit edit{std::nullopt, list_.Tag(item), from};
    EXPECT_TRUE(commands_.Labels().BeforeLabelEdit(edit));
    bool cancel = false;
    commands_.Labels().AfterLabelEdit(edit, to, &cancel);
    return cancel;
  }
  bool RenameNode(const QString& address, const QString& to) {
    FolderNode* node = Node(address);
    EXPECT_NE(node, nullptr) << address.toStdString();
    const LabelEdit edit{node->Parent()->FullPath(), node->Tag(), node->Text()};
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
    if (onDisplayEvents_) {
      onDisplayEvents_();
    }
  }
  void DisplayEnded() override {}
  [[nodiscard]] ActiveSide Active() const override { return active_; }
  void FocusActiveView() override {}
  void EnablePasteButton(bool enabled) override { pasteButton_ = enabled; }
  void EnableDisconnectButton(bool /*enabled*/) override {}
  void EnableDisconnectItem(bool /*enabled*/) override {}

  SessionWorld world_;
  FakeVolumes& volumes_ = world_.volumes;
  ScriptedPrompts& prompts_ = world_.prompts;
  std::shared_ptr<FailingEngine>& engine_ = world_.engine;
  EngineSession& session_ = world_.session;
  DriveTable& drives_ = world_.drives;
  std::shared_ptr<MemoryFileSystem> memory_;
  std::shared_ptr<FaultyFileSystem> faulty_;
  std::shared_ptr<MemoryFileSystem> cell_ = std::make_shared<MemoryFileSystem>();
  RecordingLog log_;
  RecordingHost host_;
  ViewsWorld views_{world_, *this};
  FileTypes& fileTypes_ = views_.fileTypes;
  FolderTreeModel& tree_ = views_.tree;
  FileListModel& list_ = views_.list;
  Navigator& navigator_ = views_.navigator;
  FolderTreeView treeView_{nullptr};
  FileListView listView_{nullptr};
  OperationState state_;
  OperationGuard guard_{navigator_, prompts_, [this] { return host_.IsWaiting(); }};
  FileCommands commands_{OperationParts{.files = world_.files,
                                        .log = log_,
                                        .navigator = navigator_,
                                        .fileTypes = fileTypes_,
                                        .tree = tree_,
                                        .list = list_,
                                        .treeView = treeView_,
                                        .listView = listView_,
                                        .host = host_},
                         state_, guard_, *this};
  CommandDispatcher dispatcher_{{.files = &commands_}, guard_};

  ActiveSide active_ = ActiveSide::List;
  bool pasteButton_ = false;
  QString status_;
  QString address_;
  std::function<void()> onDisplayEvents_;
};

}  // namespace trevane::test
