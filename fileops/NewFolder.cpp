#include "fileops/NewFolder.h"

#include "base/RunTimeError.h"
#include "engine/items/clsIxoFile.h"
#include "fileops/GivenUpCall.h"
#include "fileops/OperationHost.h"
#include "prompts/ShowFailure.h"
#include "views/addresses/Addresses.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderNode.h"
#include "views/tree/FolderTreeModel.h"

#include <utility>

namespace trevane {

namespace {

QString NameOf(int attempt) {
  const QString name = QStringLiteral("New Folder");
  return attempt == 0 ? name : name + u'(' + QString::number(attempt) + u')';
}

/// Nothing more is asked after a Cancel.
bool IsCancelled(const clsIxoFile& folder) {
  return folder.Result() == error::kCancelled;
}

bool IsTaken(clsIxoFile& folder, const QString& name) {
  auto child = folder.GetIxoFile(name);
  if (!child && !IsCancelled(folder)) {
    // Some file systems know an item only when it is opened.
    QString option;
    child = folder.AddIxoFile(name, QString(), option);
  }
  folder.ReleaseChild(child);
  return child != nullptr;
}

/// `failure` is why the folder was not created.
bool Create(clsIxoFile& folder, const QString& name, RunTimeError& failure) {
  QString option = QStringLiteral("@Create=2");
  const auto child = folder.AddIxoFile(name, QString(), option);
  failure = RunTimeError(folder.Result(), folder.ResultText());
  folder.ReleaseChild(child);
  // The folder may exist although the answer was lost.
  return child != nullptr || (!IsCancelled(folder) && IsTaken(folder, name));
}

}  // namespace

QString NewFolder::MakeIn(const QString& parent) {
  QString text = QStringLiteral("Cannot Create New Folder.");
  Failure failure{.item = LastPiece(parent),
                  .reason = QStringLiteral("The names up to '%1' are all taken").arg(NameOf(kNames - 1))};
  QString made;
  qint32 failed = 0;
  {
    clsIxoFile folder = parts_.files.FileAt(parent);
    if (folder.Result() != 0) {
      failure.reason = ReasonOf(folder.Result(), folder.ResultText());
      if (!failure.reason.isEmpty()) {
        text = failure.reason;
      }
    } else {
      bool refused = false;
      bool cancelled = false;
      for (int attempt = 0; attempt < kNames && made.isEmpty() && !cancelled; ++attempt) {
        const QString name = NameOf(attempt);
        if (IsTaken(folder, name)) {
          continue;
        }
        RunTimeError reason(folder.Result(), folder.ResultText());
        cancelled = IsCancelled(folder);
        if (!cancelled && Create(folder, name, reason)) {
          made = name;
          break;
        }
        failed = !cancelled && !MayStillHappen(failed) ? reason.Number() : failed;
        cancelled = cancelled || reason.Number() == error::kCancelled;
        // The reason for the first refused name is the most useful one.
        if (!std::exchange(refused, true) || cancelled) {
          failure = {.item = name, .reason = ReasonOf(reason)};
        }
      }
    }
  }
  const bool shownAnew = IsToBeShownAnew(failed, parts_.files, parent);
  if (shownAnew) {
    Show(parent);
  }
  if (made.isEmpty()) {
    ShowFailure(parts_.files.Prompts(), parts_.host, text, failure);
  } else if (!shownAnew) {
    Show(parent);
  }
  return made;
}

void NewFolder::Show(const QString& parent) {
  FolderNode* node = parts_.tree.FindByKey(parent);
  if (node && node->FullPath() == parent && node != parts_.navigator.CurrentNode()) {
    try {
      parts_.navigator.Builder().AddFolderNodes(parent, *node);
    } catch (const RunTimeError& failure) {
      ShowFailure(parts_.files.Prompts(), parts_.host, failure.Description(),
                  {.item = node->Text(), .reason = failure.Description()});
    }
  }
  parts_.navigator.Refresh();
}

}  // namespace trevane
