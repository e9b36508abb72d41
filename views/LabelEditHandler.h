#pragma once

#include <QString>

#include <optional>

namespace trevane {

/// A label that is being edited: of a node of the tree, or of an item of the list.
struct LabelEdit {
  /// Of a node: the address of the folder that holds it. An item is in the folder that the list shows.
  std::optional<QString> folder;
  qint32 tag = 0;
  QString oldText;

  [[nodiscard]] bool IsInTree() const noexcept { return folder.has_value(); }
};

/// Renames entries of the views. A view without a handler refuses every edit.
class LabelEditHandler {
 public:
  virtual ~LabelEditHandler() = default;

  /// False refuses the edit. Only asked about files and folders: the views refuse all other entries
  /// themselves.
  [[nodiscard]] virtual bool BeforeLabelEdit(const LabelEdit& edit) = 0;

  /// Renames the entry to `text` as typed, after the editor has closed; not called for an unchanged text.
  /// With `*cancel` set the old label stays; otherwise the view gives the entry the new text, if it still
  /// exists and nobody else did.
  virtual void AfterLabelEdit(const LabelEdit& edit, const QString& text, bool* cancel) = 0;
};

}  // namespace trevane
