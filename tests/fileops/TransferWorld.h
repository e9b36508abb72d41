#pragma once

#include "fileops/modIxoFile.h"
#include "tests/support/EngineWorld.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/RecordingLog.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/NodeTags.h"

namespace trevane::test {

/// Paste and delete over file systems in memory, and shorthands for what the commands hand them.
struct TransferWorld : EngineWorld {
  explicit TransferWorld(bool caseSensitive = true, Threads threads = Threads::None)
      : EngineWorld(caseSensitive, threads) {}

  void Select(const QString& folder, const QString& name) {
    state.clipboard.Add(ClipBrdOfItem(session.gIxoCtrls(), folder, name, TagOf(folder)), {});
  }
  void SelectFolder(const QString& folder, const QString& name) {
    state.clipboard.Add(ClipBrdOfItem(session.gIxoCtrls(), folder, name, TagOf(folder) | kFolderBit), {});
  }
  [[nodiscard]] clsClipBrd Destination(const QString& address) {
    return ClipBrdOfNode(session.gIxoCtrls(), address, TagOf(address) | kFolderBit);
  }

  bool Copy(const QString& into) {
    state.nFileOpMode = OperationState::kCopy;
    return operations.Transfer(Destination(into));
  }
  bool Move(const QString& into) {
    state.nFileOpMode = OperationState::kCut;
    return operations.Transfer(Destination(into));
  }
  bool DeleteItems(const QString& folder, const QStringList& names) {
    DeleteRequest request;
    request.side = DeleteRequest::Side::List;
    request.basePath = folder;
    for (const QString& name : names) {
      request.items.push_back({name, TagOf(folder)});
    }
    return operations.Delete(request);
  }
  bool DeleteNode(const QString& address, qint32 tag) {
    DeleteRequest request;
    request.side = DeleteRequest::Side::Tree;
    request.nodeAddress = address;
    request.nodeTag = tag;
    return operations.Delete(request);
  }

  [[nodiscard]] QStringList Log() const { return log.Lines(); }
  [[nodiscard]] RecordingGauge& Gauge() { return prompts.RecordedGauge(); }

  RecordingLog log;
  RecordingHost host;
  OperationState state;
  modIxoFile operations{{files, log, host, state}};

 private:
  [[nodiscard]] static qint32 TagOf(const QString& folder) {
    return IsLocalAddress(folder) ? 0 : TAG_CONTROLLER;
  }
};

}  // namespace trevane::test
