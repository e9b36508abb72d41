#pragma once

#include "engine/controllers/EngineSession.h"
#include "engine/model/IxoController.h"
#include "engine/model/IxoWorkspaces.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "engine/substitute/SubstituteEngine.h"
#include "tests/support/FakeShellIcons.h"
#include "tests/support/FakeVolumes.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/ScriptedPrompts.h"
#include "views/ImageList.h"
#include "views/addresses/DriveTable.h"
#include "views/addresses/NodeTags.h"
#include "views/bars/AddressBar.h"
#include "views/bars/FilterBar.h"
#include "views/bars/HistoryBox.h"
#include "views/list/DateFormatter.h"
#include "views/list/FileListModel.h"
#include "views/list/FileListView.h"
#include "views/list/FileTypes.h"
#include "views/list/ListSorting.h"
#include "views/navigation/Navigator.h"
#include "views/navigation/NavigatorListener.h"
#include "views/tree/FolderTreeModel.h"
#include "views/tree/FolderTreeView.h"

#include <gtest/gtest.h>

#include <functional>

namespace trevane::test {

/// Tree, list and both boxes, put together as the main window does it, over file systems in memory: the
/// drives A: and C:, and the controllers "Cell1" and "Cell10".
class BarsFixture : public testing::Test, private NavigatorListener {
 protected:
  BarsFixture() {
    volumes_.Set({{QStringLiteral("A:"), QStringLiteral("/a/"), drivetype::kRemovable},
                  {QStringLiteral("C:"), QStringLiteral("/c/"), drivetype::kFixed}});
    memory_->AddFolder(QStringLiteral("A:\\One\\Two\\Three"));
    memory_->AddFolder(QStringLiteral("C:\\Programs\\Cell1"));
    memory_->AddFile(QStringLiteral("C:\\Programs\\main.pac"), "program");
    memory_->AddFile(QStringLiteral("C:\\Programs\\notes.txt"), "notes");
    memory_->AddFile(QStringLiteral("C:\\readme.txt"), "12345");
    cell1_->AddFolder(QStringLiteral("\\prog"));
    cell10_->AddFolder(QStringLiteral("\\arm\\left"));
    session_.gIxoEngine = std::make_shared<SubstituteEngine>(ProviderTable{
        {QStringLiteral("IxoProv.LocalFile"), [this](const FileSystemRequest&) { return faulty_; }},
        {QStringLiteral("IxoProv.Cell"), [this](const FileSystemRequest&) { return opening_; }}});
    session_.gIxoWorkspace = session_.gIxoEngine->Workspaces()->Item(qint16{0});
    session_.gIxoControllers = session_.gIxoWorkspace->Controllers();
    Register({}, QStringLiteral("IxoProv.LocalFile"));
    session_.gLocalCtrlName = session_.gIxoCtrls().Item(qint32{1})->RealCtrlName();
    treFile_.SetFolders(&tree_);
    lstFile_.SetFiles(&list_);
    navigator_.RebuildTree();
    SortByName(list_);
    navigator_.DisplayNode(*tree_.FindByIndex(1));
  }

  void Register(const QString& name, const QString& provider) {
    const auto controller = session_.gIxoWorkspace->AddController(name, provider, QString(), QString());
    const auto record = std::make_shared<clsIxoCtrl>();
    record->SetCtrlIdx(controller->Index());
    record->SetCtrlName(name);
    record->SetRealCtrlName(controller->Name());
    record->SetProvName(provider);
    session_.gIxoCtrls().Add(record);
  }
  /// Connects both controllers and adds their nodes.
  void ConnectCells() {
    for (const auto& [name, files] :
         {std::pair{QStringLiteral("Cell1"), cell1_}, std::pair{QStringLiteral("Cell10"), cell10_}}) {
      opening_ = files;
      Register(name, QStringLiteral("IxoProv.Cell"));
      tree_.AddTreeNode(tree_.FindByIndex(1), {}, name, kControllerTag);
    }
  }

  /// Types an address and goes to it, without a message.
  [[nodiscard]] bool GoTo(const QString& text) {
    cmbAddress_.setEditText(text);
    return addressBar_.GoToAddress();
  }
  [[nodiscard]] QString Current() const {
    const FolderNode* node = navigator_.CurrentNode();
    return node ? node->FullPath() : QString();
  }
  [[nodiscard]] QStringList ListTexts() const {
    QStringList texts;
    for (int row = 0; row < list_.rowCount(); ++row)
      texts += list_.Text(list_.HandleAt(row));
    return texts;
  }
  [[nodiscard]] QStringList SelectedTexts() const {
    QStringList texts;
    for (const auto item : lstFile_.SelectedItems())
      texts += list_.Text(item);
    return texts;
  }

  void ShowStatus(const QString& /*text*/) override {}
  void ShowAddress(const QString& address) override { cmbAddress_.setEditText(address); }
  void ShowCurrentNode(FolderNode& node) override {
    treFile_.SelectNode(&node);
    filterBar_.BeginDisplay();
    ++displays_;
  }
  void UpdateCommandStates(qint32 /*tag*/, bool /*entry*/) override {}
  void EnableDisconnect(bool /*enabled*/) override {}
  bool IsFilteredOut(const QString& fileName) override { return filterBar_.IsFilteredOut(fileName); }
  void LetEventsRun() override {
    if (onEvents_)
      onEvents_();
  }
  void DisplayEnded() override { addressBar_.DisplayEnded(); }

  FakeVolumes volumes_;
  std::shared_ptr<MemoryFileSystem> memory_ = std::make_shared<MemoryFileSystem>(
      MemoryFileSystemOptions{.drives = {QStringLiteral("A:"), QStringLiteral("C:")}});
  std::shared_ptr<FaultyFileSystem> faulty_ = std::make_shared<FaultyFileSystem>(memory_);
  std::shared_ptr<MemoryFileSystem> cell1_ = std::make_shared<MemoryFileSystem>();
  std::shared_ptr<MemoryFileSystem> cell10_ = std::make_shared<MemoryFileSystem>();
  std::shared_ptr<MemoryFileSystem> opening_;
  FakeShellIcons shellIcons_;
  ScriptedPrompts prompts_;
  RecordingHost host_;
  EngineSession session_;
  DriveTable drives_{volumes_};
  ImageList images_;
  FileTypes fileTypes_{shellIcons_, images_};
  DateFormatter dates_;
  FolderTreeModel tree_{nullptr};
  FileListModel list_{nullptr, &fileTypes_, &dates_};
  FolderTreeView treFile_{nullptr};
  FileListView lstFile_{nullptr};
  HistoryBox cmbAddress_;
  HistoryBox cmbFilter_;
  Navigator navigator_{{.session = session_,
                        .drives = drives_,
                        .prompts = prompts_,
                        .fileTypes = fileTypes_,
                        .tree = tree_,
                        .list = list_,
                        .listener = *this}};
  AddressBar addressBar_{cmbAddress_,
                         lstFile_,
                         {.session = session_,
                          .drives = drives_,
                          .prompts = prompts_,
                          .tree = tree_,
                          .navigator = navigator_,
                          .reasonLine = host_}};
  FilterBar filterBar_{cmbFilter_, navigator_, [this] { navigator_.Refresh(); }};
  int displays_ = 0;
  std::function<void()> onEvents_;
};

}  // namespace trevane::test
