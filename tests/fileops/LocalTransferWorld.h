#pragma once

#include "engine/controllers/EngineSession.h"
#include "engine/model/IxoWorkspaces.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "engine/substitute/SubstituteEngine.h"
#include "fileops/modIxoFile.h"
#include "tests/support/FakeVolumes.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/ScriptedPrompts.h"

#include <QDir>
#include <QTemporaryDir>

#include <memory>

namespace trevane::test {

/// Paste and delete over real folders: C: is one temporary folder, and the controller "Disk" has the folder
/// "base" of another as its root.
struct LocalTransferWorld {
  LocalTransferWorld() {
    const auto connect = [this](const QString& name, FakeVolumes& drives, const QString& root) {
      opening_ = std::make_shared<LocalFileSystem>(drives);
      const auto controller = session.gIxoWorkspace->AddController(name, QStringLiteral("IxoProv.LocalFile"),
                                                                   QString(), QString());
      const auto record = std::make_shared<clsIxoCtrl>();
      record->SetCtrlIdx(controller->Index());
      record->SetRealCtrlName(controller->Name());
      record->SetRoot(root);
      session.gIxoCtrls().Add(record);
      return controller->Name();
    };
    QDir(diskFolder.path()).mkdir(QStringLiteral("base"));
    ProviderTable providers;
    providers.push_back(
        {QStringLiteral("IxoProv.LocalFile"),
         [this](const FileSystemRequest&) -> std::shared_ptr<FileSystem> { return opening_; }});
    session.gIxoEngine = std::make_shared<SubstituteEngine>(std::move(providers));
    session.gIxoWorkspace = session.gIxoEngine->Workspaces()->Item(qint16(0));
    session.gIxoControllers = session.gIxoWorkspace->Controllers();
    session.gLocalCtrlName = connect(QString(), volumes, QString());
    connect(QStringLiteral("Disk"), diskVolumes, QStringLiteral("/base"));
    drives.RefreshDrives();
  }

  [[nodiscard]] QString Root() const { return folder.path() + u'/'; }
  [[nodiscard]] QString DiskRoot() const { return diskFolder.path() + QStringLiteral("/base/"); }

  /// Pastes one entry of C:; `tag` has the folder bit for a folder.
  bool Paste(qint32 mode, const QString& from, const QString& name, qint32 tag, const QString& into) {
    state.nFileOpMode = mode;
    state.clipboard.Clear();
    state.clipboard.Add(ClipBrdOfItem(session.gIxoCtrls(), from, name, tag), {});
    const bool local = into.startsWith(QStringLiteral("Workspace\\My Computer"));
    return operations.Transfer(ClipBrdOfNode(session.gIxoCtrls(), into, 0x10 | (local ? 0 : 0x100000)));
  }
  bool DeleteItem(const QString& from, const QString& name) {
    DeleteRequest request;
    request.side = DeleteRequest::Side::List;
    request.basePath = from;
    request.items = {{name, 0}};
    return operations.Delete(request);
  }

  QTemporaryDir folder;
  QTemporaryDir diskFolder;
  FakeVolumes volumes{{{QStringLiteral("C:"), folder.path() + u'/', drivetype::kFixed}}};
  FakeVolumes diskVolumes{{{QStringLiteral("C:"), diskFolder.path() + u'/', drivetype::kFixed}}};
  DriveTable drives{volumes};
  ScriptedPrompts prompts;
  EngineSession session;
  RecordingLog log;
  RecordingHost host;
  OperationState state;
  modIxoFile operations{{session, drives, prompts, log, host, state}};

 private:
  std::shared_ptr<FileSystem> opening_;
};

}  // namespace trevane::test
