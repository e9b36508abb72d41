#include "fileops/NewFolder.h"

#include "engine/clsIxoFile.h"
#include "engine/model/RunTimeError.h"
#include "platform/UserPrompts.h"
#include "views/FolderNode.h"
#include "views/FolderTreeModel.h"
#include "views/Navigator.h"

namespace trevane {

using namespace Qt::StringLiterals;

namespace {

QString NameOf(int attempt) {
  const QString name = u"New Folder"_s;
  return attempt == 0 ? name : name + u'(' + QString::number(attempt) + u')';
}

bool IsTaken(clsIxoFile& folder, const QString& name) {
  auto child = folder.GetIxoFile(name);
  if (!child) {
    // Some file systems know an item only when it is opened.
    QString option;
    child = folder.AddIxoFile(name, QString(), option);
  }
  folder.ReleaseChild(child);
  return child != nullptr;
}

bool Create(clsIxoFile& folder, const QString& name) {
  QString option = u"@Create=2"_s;
  const auto child = folder.AddIxoFile(name, QString(), option);
  folder.ReleaseChild(child);
  // An answer that was lost on its way back is no reason to make a second one.
  return child != nullptr || IsTaken(folder, name);
}

}  // namespace

void NewFolder::MakeIn(const QString& parent) {
  QString failure;
  bool made = false;
  {
    clsIxoFile folder(parts_.session, parts_.drives, parts_.prompts);
    folder.SetPath(parent);
    if (folder.Result() != 0) {
      failure = folder.ResultText();
    } else {
      for (int attempt = 0; attempt < kNames && !made; ++attempt) {
        const QString name = NameOf(attempt);
        made = !IsTaken(folder, name) && Create(folder, name);
      }
    }
  }
  if (!made) {
    if (failure.isEmpty())
      failure = u"Cannot Create New Folder."_s;
    parts_.prompts.MessageBox(failure, PromptIcon::Exclamation);
    return;
  }
  Show(parent);
}

void NewFolder::Show(const QString& parent) {
  FolderNode* node = parts_.tree.FindByKey(parent);
  if (node && node != parts_.navigator.CurrentNode()) {
    try {
      parts_.navigator.AddFolderNodes(parent, *node);
    } catch (const RunTimeError& failure) {
      parts_.prompts.MessageBox(failure.Description(), PromptIcon::Exclamation);
    }
  }
  parts_.navigator.Refresh();
}

}  // namespace trevane
