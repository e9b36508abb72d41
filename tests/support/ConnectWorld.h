#pragma once

#include "base/RunTimeError.h"
#include "engine/controllers/ControllerConnector.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SessionWorld.h"
#include "tests/support/ViewsWorld.h"
#include "views/addresses/ImageKeys.h"
#include "views/navigation/ControllerEntries.h"

#include <QDir>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <utility>

namespace trevane::test {

/// A session and the views over it, without a window: the local file system with the drive C:, and the
/// provider "IxoProv.Cell", which refuses to log on with the option "refuse". The workspace is displayed.
class ConnectWorld : public SessionWorld, private NavigatorListener {
 public:
  /// With a slow provider, whose waits are those of `context`.
  explicit ConnectWorld(std::optional<Provider> slow = std::nullopt, RemoteContext* context = nullptr) {
    local->AddFolder(QStringLiteral("C:\\Programs"));
    cell->AddFolder(QStringLiteral("prog\\deep"));
    // "/", or "C:\\" on Windows.
    volumes.Set({{QStringLiteral("C:"), QDir::toNativeSeparators(QDir::rootPath()), drivetype::kFixed}});
    ProviderTable providers{ProviderOf(QStringLiteral("IxoProv.LocalFile"), local),
                            {QStringLiteral("IxoProv.Cell"), [this](const FileSystemRequest& request) {
                               requests.append(request.machine + u'|' + request.option);
                               if (request.option == u"refuse") {
                                 throw RunTimeError(error::kLogonFailure, QStringLiteral("refused"));
                               }
                               return cell;
                             }}};
    if (slow) {
      providers.push_back(std::move(*slow));
    }
    Open(std::move(providers), context);
    navigator.Builder().RebuildTree();
    Display(QStringLiteral("Workspace"));
  }

  [[nodiscard]] static std::shared_ptr<clsIxoCtrl> Record(const QString& name) {
    auto record = std::make_shared<clsIxoCtrl>();
    record->SetCtrlName(name);
    record->SetProvName(QStringLiteral("IxoProv.Cell"));
    record->SetRoot(QStringLiteral("/"));
    return record;
  }

  /// Connects a controller and forgets that this was logged.
  void Connect(const QString& name) {
    EXPECT_TRUE(connector.ConnectController(Record(name)));
    log.Clear();
  }
  /// Shows a controller that failed to connect.
  void AddErrorNode(const QString& name) {
    const auto record = Record(name);
    record->SetRealCtrlName(name);
    EXPECT_TRUE(views.AddControllerNode(*record, true));
  }

  void Display(const QString& address) { views_.Display(address); }

  /// The controllers that are registered, but for the local one.
  [[nodiscard]] QStringList Registered() {
    QStringList names;
    for (const auto& record : session.gIxoCtrls()) {
      names += record->RealCtrlName();
    }
    names.removeOne(session.gLocalCtrlName);
    return names;
  }
  /// The controllers in the tree, those that failed to connect with "!" in front.
  [[nodiscard]] QStringList Nodes() {
    QStringList names;
    for (const FolderNode* node : tree.FirstRoot()->Children()) {
      names += Marked(tree.ImageKey(node), node->Text());
    }
    names.removeOne(QStringLiteral("My Computer"));
    return names;
  }
  /// Likewise the items of the list.
  [[nodiscard]] QStringList Items() {
    QStringList names;
    for (int row = 0; row < list.rowCount(); ++row) {
      names += Marked(list.ImageKey(list.HandleAt(row)), list.Text(list.HandleAt(row)));
    }
    return names;
  }

  /// The conditions that hold after every action: registry and tree agree, the current place exists, nothing
  /// is left on the screen or held.
  void ExpectConsistent() {
    QStringList connected;
    for (const QString& name : Nodes()) {
      if (!name.startsWith(u'!')) {
        connected += name;
      }
    }
    EXPECT_EQ(connected, Registered());
    ASSERT_NE(navigator.CurrentNode(), nullptr);
    EXPECT_EQ(navigator.CurrentNode()->FullPath(), navigator.CurrentAddress());
    EXPECT_EQ(tree.FindByKey(navigator.CurrentAddress()), navigator.CurrentNode());
    EXPECT_FALSE(prompts.RecordedGauge().IsLoaded());
    EXPECT_TRUE(host.IsEnabled());
    EXPECT_FALSE(host.IsBusy());
    EXPECT_EQ(engine->HeldFiles(), 0);
  }

  std::shared_ptr<MemoryFileSystem> local =
      std::make_shared<MemoryFileSystem>(MemoryFileSystemOptions{.drives = {QStringLiteral("C:")}});
  std::shared_ptr<MemoryFileSystem> cell = std::make_shared<MemoryFileSystem>();
  /// Machine and option of each controller that was asked for.
  QStringList requests;
  RecordingLog log;
  RecordingHost host;
  QString status = QStringLiteral("none yet");
  bool disconnectEnabled = false;

 private:
  ViewsWorld views_{*this, *this};

 public:
  FolderTreeModel& tree = views_.tree;
  FileListModel& list = views_.list;
  Navigator& navigator = views_.navigator;
  ControllerEntries views{tree, list, navigator, *this};
  ControllerConnector connector{session, views, log};

 private:
  static QString Marked(const QString& imageKey, const QString& name) {
    return imageKey == imagekey::kErrController ? u'!' + name : name;
  }

  void ShowStatus(const QString& text) override { status = text; }
  void ShowAddress(const QString& /*address*/) override {}
  void ShowCurrentNode(FolderNode& /*node*/) override {}
  void UpdateCommandStates(qint32 /*tag*/, bool /*entry*/) override {}
  void EnableDisconnect(bool enabled) override { disconnectEnabled = enabled; }
  bool IsFilteredOut(const QString& /*fileName*/) override { return false; }
  void LetEventsRun() override { host.LetEventsRun(); }
  void DisplayEnded() override {}
};

}  // namespace trevane::test
