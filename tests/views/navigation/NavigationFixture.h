#pragma once

#include "engine/providers/memory/MemoryFileSystem.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/SessionWorld.h"
#include "tests/support/ViewsWorld.h"
#include "views/addresses/NodeTags.h"
#include "views/navigation/NavigatorListener.h"

#include <gtest/gtest.h>

#include <functional>

namespace trevane::test {

/// Takes the main window's part.
class RecordingListener final : public NavigatorListener {
 public:
  void ShowStatus(const QString& text) override { status = text; }
  void ShowAddress(const QString& text) override { address = text; }
  void ShowCurrentNode(FolderNode& node) override { selected = node.FullPath(); }
  void UpdateCommandStates(qint32 newTag, bool newEntry) override {
    tag = newTag;
    entry = newEntry;
  }
  void EnableDisconnect(bool enabled) override { disconnect = enabled; }
  bool IsFilteredOut(const QString& fileName) override { return filter && filter(fileName); }
  void LetEventsRun() override {
    ++turns;
    if (onEvents) {
      onEvents();
    }
  }
  void DisplayEnded() override { ++ended; }

  QString status;
  QString address;
  QString selected;
  qint32 tag = -1;
  bool entry = true;
  bool disconnect = false;
  int turns = 0;
  int ended = 0;
  std::function<bool(const QString&)> filter;
  std::function<void()> onEvents;
};

class NavigationFixture : public testing::Test {
 protected:
  NavigationFixture() {
    volumes_.Set({{QStringLiteral("A:"), QStringLiteral("/a/"), drivetype::kRemovable},
                  {QStringLiteral("C:"), QStringLiteral("/c/"), drivetype::kFixed},
                  {QStringLiteral("D:"), QStringLiteral("/d/"), drivetype::kCdrom}});
    memory_->AddFolder(QStringLiteral("C:\\Programs\\Cell1"));
    memory_->AddFolder(QStringLiteral("C:\\Backup"));
    memory_->AddFile(QStringLiteral("C:\\readme.txt"), "12345");
    memory_->AddFolder(QStringLiteral("A:\\Floppy"));
    shellIcons_.Know(QStringLiteral(".TXT"), QStringLiteral("Text Document"));
    world_.Open({ProviderOf(QStringLiteral("IxoProv.LocalFile"), faulty_),
                 ProviderOf(QStringLiteral("IxoProv.Cell"), cell_)});
  }

  void Register(const QString& name, const QString& provider, const QString& root = {}) {
    world_.Register(name, provider, root);
  }

  FolderNode& Node(const QString& address) {
    FolderNode* node = tree_.FindByKey(address);
    EXPECT_NE(node, nullptr) << address.toStdString();
    return *node;
  }

  bool HasNode(const QString& address) { return tree_.FindByKey(address) != nullptr; }

  void Display(const QString& address) { navigator_.DisplayNode(Node(address)); }

  QStringList ListTexts() { return views_.ListTexts(); }

  QStringList ChildTexts(const QString& address) {
    QStringList texts;
    for (const FolderNode* child : Node(address).Children()) {
      texts += child->Text();
    }
    return texts;
  }

  FileListModel::Handle Item(const QString& text) {
    const auto item = list_.FindByText(text);
    EXPECT_NE(item, FileListModel::kNoItem) << text.toStdString();
    return item;
  }

  /// Tree, list, status bar and address box agree on the current location.
  void ExpectLocation(const QString& address) {
    EXPECT_EQ(navigator_.CurrentAddress().toStdString(), address.toStdString());
    EXPECT_EQ(listener_.address.toStdString(), address.toStdString());
    EXPECT_EQ(listener_.selected.toStdString(), address.toStdString());
    ASSERT_NE(navigator_.CurrentNode(), nullptr);
    EXPECT_EQ(navigator_.CurrentNode()->FullPath().toStdString(), address.toStdString());
  }

  void AddFiles(const QString& folder, int count) {
    for (int i = 0; i < count; ++i) {
      memory_->AddFile(folder + QStringLiteral("\\file%1.dat").arg(i, 4, 10, QChar(u'0')), "x");
    }
  }

  SessionWorld world_;
  FakeVolumes& volumes_ = world_.volumes;
  ScriptedPrompts& prompts_ = world_.prompts;
  EngineSession& session_ = world_.session;
  DriveTable& drives_ = world_.drives;
  std::shared_ptr<MemoryFileSystem> memory_ = std::make_shared<MemoryFileSystem>(
      MemoryFileSystemOptions{.drives = {QStringLiteral("A:"), QStringLiteral("C:"), QStringLiteral("D:")}});
  std::shared_ptr<FaultyFileSystem> faulty_ = std::make_shared<FaultyFileSystem>(memory_);
  std::shared_ptr<MemoryFileSystem> cell_ = std::make_shared<MemoryFileSystem>();
  RecordingListener listener_;
  ViewsWorld views_{world_, listener_};
  FileTypes& fileTypes_ = views_.fileTypes;
  FolderTreeModel& tree_ = views_.tree;
  FileListModel& list_ = views_.list;
  Navigator& navigator_ = views_.navigator;
  FakeShellIcons& shellIcons_ = views_.shellIcons;
};

}  // namespace trevane::test
