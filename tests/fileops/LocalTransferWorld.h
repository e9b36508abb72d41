#pragma once

#include "engine/providers/local/LocalFileSystem.h"
#include "fileops/modIxoFile.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SessionWorld.h"

#include <QDir>
#include <QTemporaryDir>

#include <memory>

namespace trevane::test {

/// Paste and delete over real folders: C: is one temporary folder, and the controller "Disk" has the folder
/// "base" of another as its root.
struct LocalTransferWorld : SessionWorld {
  LocalTransferWorld() {
    volumes.Set({{QStringLiteral("C:"), folder.path() + u'/', drivetype::kFixed}});
    QDir(diskFolder.path()).mkdir(QStringLiteral("base"));
    // One provider for both, as in a program that reaches one disk by two ways.
    const auto local = std::make_shared<LocalFileSystem>(volumes);
    const auto disk = std::make_shared<LocalFileSystem>(diskVolumes);
    Open({{QStringLiteral("IxoProv.LocalFile"), [local, disk](const FileSystemRequest& request) {
             return request.option.isEmpty() ? local : disk;
           }}});
    Register(QStringLiteral("Disk"), QStringLiteral("IxoProv.LocalFile"), QStringLiteral("/base"),
             QStringLiteral("disk"));
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
  /// Pastes files of one folder, each an entry of its own.
  bool PasteAll(qint32 mode, const QString& from, const QStringList& names, const QString& into) {
    state.nFileOpMode = mode;
    state.clipboard.Clear();
    for (const QString& name : names) {
      state.clipboard.Add(ClipBrdOfItem(session.gIxoCtrls(), from, name, 0), {});
    }
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
  FakeVolumes diskVolumes{{{QStringLiteral("C:"), diskFolder.path() + u'/', drivetype::kFixed}}};
  RecordingLog log;
  RecordingHost host;
  OperationState state;
  modIxoFile operations{{files, log, host, state}};
};

}  // namespace trevane::test
