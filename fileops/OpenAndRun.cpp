#include "fileops/OpenAndRun.h"

#include "base/RunTimeError.h"
#include "engine/items/clsIxoFile.h"
#include "fileops/FetchedQuestions.h"
#include "fileops/OperationHost.h"
#include "prompts/ShowFailure.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileListModel.h"
#include "views/list/FileListView.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderNode.h"
#include "views/tree/FolderTreeModel.h"

#include <utility>

namespace trevane {

void OpenAndRun::OpenItem(FileListModel::Handle item) {
  FolderNode* current = parts_.navigator.CurrentNode();
  if (!current || item == FileListModel::kNoItem) {
    return;
  }
  const qint32 tag = parts_.list.Tag(item);
  const QString text = parts_.list.Text(item);
  if (parts_.navigator.IsDisplaying()) {
    // No call of the engine: its listing is on its way.
    if (FolderNode* const node = NodeOf(item)) {
      Enter(*node);
    }
    return;
  }
  const bool isPlace = IsMyComputer(tag) || IsDrive(tag) || IsController(tag);
  if (!isPlace && (tag & kFolderBit) != 0) {
    Enter(parts_.navigator.Builder().FindOrAddFolderNode(*current, text, tag));
    return;
  }
  if (isPlace) {
    if (FolderNode* node = parts_.tree.FindChild(current, text)) {
      Enter(*node);
    }
    return;
  }
  clsIxoFile file = parts_.files.FileAt(JoinAddress(current->FullPath(), text));
  if (file.Result() != 0) {
    ReportRunFailure(file);
    return;
  }
  const qint32 attributes = file.FileAttribute();
  if (file.Result() == 0 && (attributes & kFolderBit) != 0) {
    // Not every listing tells where a link leads.
    Enter(parts_.navigator.Builder().FindOrAddFolderNode(*current, text,
                                                         MakeFolderTag(attributes, file.IsOnController())));
    return;
  }
  RunFile(file);
}

bool OpenAndRun::RunFile(clsIxoFile& file) {
  const bool isFetched = parts_.fetched != nullptr && file.IsOnController() && !file.CanRun() &&
                         (file.FileAttribute() & kFolderBit) == 0;
  if (!isFetched) {
    file.Execute(QString());
    if (file.Result() != 0) {
      ReportRunFailure(file);
    }
    return file.Result() == 0;
  }
  try {
    RunFetched(*parts_.fetched, file, parts_.files.Prompts());
    return true;
  } catch (const RunTimeError& failure) {
    ReportRunFailure(file.Address(), ResultCode(failure), failure.Description());
    return false;
  }
}

FolderNode* OpenAndRun::NodeOf(FileListModel::Handle item) const {
  FolderNode* const current = parts_.navigator.CurrentNode();
  if (current == nullptr || item == FileListModel::kNoItem) {
    return nullptr;
  }
  const QString text = parts_.list.Text(item);
  FolderNode* const node = parts_.tree.FindChild(current, text);
  return node != nullptr && node->Text() == text ? node : nullptr;
}

void OpenAndRun::Enter(FolderNode& node) {
  opened_ = node.FullPath();
  parts_.navigator.DisplayNode(node);
  if (!parts_.navigator.IsDisplaying()) {
    DisplayEnded();
  }
}

void OpenAndRun::DisplayEnded() {
  // Another folder may have been displayed meanwhile.
  if (std::exchange(opened_, {}) == parts_.navigator.CurrentAddress() && parts_.list.rowCount() > 0) {
    parts_.listView.setCurrentIndex(parts_.list.index(0, 0));
  }
}

void OpenAndRun::RunAll(const QStringList& addresses) {
  for (const QString& address : addresses) {
    if (parts_.files.Prompts().IsEnding()) {
      return;
    }
    clsIxoFile file = parts_.files.FileAt(address);
    if (file.Result() == error::kCancelled || file.Result() == error::kTimeOut) {
      // What the user has ended, or waited for so long, does not end in silence.
      ReportRunFailure(file);
      return;
    }
    if (file.Result() != 0) {
      return;
    }
    if (!RunFile(file)) {
      return;
    }
  }
}

void OpenAndRun::RunNode(const QString& address) {
  clsIxoFile folder = parts_.files.FileAt(address);
  if (folder.Result() != 0) {
    const QString reason = ReasonOf(folder.Result(), folder.ResultText());
    ShowFailure(parts_.files.Prompts(), parts_.host, reason, {.item = LastPiece(address), .reason = reason});
    return;
  }
  RunFile(folder);
}

void OpenAndRun::ReportRunFailure(const clsIxoFile& file) {
  ReportRunFailure(file.Address(), file.Result(), file.ResultText());
}

void OpenAndRun::ReportRunFailure(const QString& address, qint32 number, const QString& text) {
  ShowFailure(parts_.files.Prompts(), parts_.host, QStringLiteral("Failed in the Run() method."),
              {.item = LastPiece(address), .reason = ReasonOf(number, text)});
}

}  // namespace trevane
