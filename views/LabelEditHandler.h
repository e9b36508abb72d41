#pragma once

#include "base/KeyIndex.h"

#include <QString>

namespace trevane {

class FolderNode;

/// A label that is being edited: of a node of the tree, or of an item of the list.
struct LabelEdit {
  /// Null for an item of the list.
  FolderNode* node = nullptr;
  /// A FileListModel::Handle; none for a node of the tree.
  quint32 item = KeyIndex::kNone;
  qint32 tag = 0;
  QString oldText;
};

/// Renames what the views show. A view without a handler refuses every edit.
class LabelEditHandler {
 public:
  virtual ~LabelEditHandler() = default;

  /// False refuses the edit. Only asked about files and folders: the views refuse all other entries
  /// themselves.
  [[nodiscard]] virtual bool BeforeLabelEdit(const LabelEdit& edit) = 0;

  /// Renames the entry to `text` as typed, after the editor has closed; not called for an unchanged text.
  /// With
  /// `*cancel` set the old label stays; otherwise the view gives the entry the new text, if it still exists
  /// and nobody else did.
  virtual void AfterLabelEdit(const LabelEdit& edit, const QString& text, bool* cancel) = 0;
};

}  // namespace trevane
