#pragma once

#include "engine/providers/memory/MemoryFileSystem.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/SessionWorld.h"
#include "tests/support/ViewsWorld.h"
#include "views/addresses/NodeTags.h"
#include "views/bars/AddressBar.h"
#include "views/bars/FilterBar.h"
#include "views/bars/HistoryBox.h"
#include "views/list/FileListView.h"
#include "views/list/ListSorting.h"
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
    world_.Open({ProviderOf(QStringLiteral("IxoProv.LocalFile"), faulty_),
                 {QStringLiteral("IxoProv.Cell"), [this](const FileSystemRequest&) { return opening_; }}});
    treFile_.SetFolders(&tree_);
    lstFile_.SetFiles(&list_);
    navigator_.Builder().RebuildTree();
    SortByName(list_);
    navigator_.DisplayNode(*tree_.FindByIndex(1));
  }

  /// Connects both controllers and adds their nodes.
  void ConnectCells() {
    for (const auto& [name, files] :
         {std::pair{QStringLiteral("Cell1"), cell1_}, std::pair{QStringLiteral("Cell10"), cell10_}}) {
      opening_ = files;
      world_.Register(name, QStringLiteral("IxoProv.Cell"));
      tree_.AddTreeNode(tree_.FindByIndex(1), {}, name, kControllerTag);
    }
  }

  /// Types an address and displays it, without a message.
  [[nodiscard]] bool GoTo(const QString& text) {
    cmbAddress_.setEditText(text);
    return addressBar_.GoToAddress();
  }
  [[nodiscard]] QString Current() const {
    const FolderNode* node = navigator_.CurrentNode();
    return node ? node->FullPath() : QString();
  }
  [[nodiscard]] QStringList ListTexts() const { return views_.ListTexts(); }
  [[nodiscard]] QStringList SelectedTexts() const {
    QStringList texts;
    for (const auto item : lstFile_.SelectedItems()) {
      texts += list_.Text(item);
    }
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
    if (onEvents_) {
      onEvents_();
    }
  }
  void DisplayEnded() override { addressBar_.DisplayEnded(); }

  SessionWorld world_;
  FakeVolumes& volumes_ = world_.volumes;
  ScriptedPrompts& prompts_ = world_.prompts;
  EngineSession& session_ = world_.session;
  DriveTable& drives_ = world_.drives;
  std::shared_ptr<MemoryFileSystem> memory_ = std::make_shared<MemoryFileSystem>(
      MemoryFileSystemOptions{.drives = {QStringLiteral("A:"), QStringLiteral("C:")}});
  std::shared_ptr<FaultyFileSystem> faulty_ = std::make_shared<FaultyFileSystem>(memory_);
  std::shared_ptr<MemoryFileSystem> cell1_ = std::make_shared<MemoryFileSystem>();
  std::shared_ptr<MemoryFileSystem> cell10_ = std::make_shared<MemoryFileSystem>();
  std::shared_ptr<MemoryFileSystem> opening_;
  RecordingHost host_;
  ViewsWorld views_{world_, *this};
  FileTypes& fileTypes_ = views_.fileTypes;
  FolderTreeModel& tree_ = views_.tree;
  FileListModel& list_ = views_.list;
  Navigator& navigator_ = views_.navigator;
  FolderTreeView treFile_{nullptr};
  FileListView lstFile_{nullptr};
  HistoryBox cmbAddress_;
  HistoryBox cmbFilter_;
  AddressBar addressBar_{
      cmbAddress_,
      lstFile_,
      {.files = world_.files, .tree = tree_, .navigator = navigator_, .reasonLine = host_}};
  FilterBar filterBar_{cmbFilter_, navigator_, [this] { navigator_.Refresh(); }};
  int displays_ = 0;
  std::function<void()> onEvents_;
};

}  // namespace trevane::test
