#pragma once

#include "fileops/OperationParts.h"
#include "views/LabelEditHandler.h"

#include <QString>

namespace trevane {

class clsIxoFile;

/// Renames a file or folder after its label was edited in the list or the tree. When another file already has
/// the new name, the user is asked whether to replace it; any other item of that name makes the rename fail.
class LabelRename final : public LabelEditHandler {
 public:
  explicit LabelRename(const OperationParts& parts) : parts_(parts) {}

  [[nodiscard]] bool BeforeLabelEdit(const LabelEdit& edit) override;
  void AfterLabelEdit(const LabelEdit& edit, const QString& text, bool* cancel) override;

 private:
  enum class Clash { None, Replace, Keep, Refused };

  /// The address of the folder that holds the entry.
  [[nodiscard]] QString FolderOf(const LabelEdit& edit) const;
  /// `reason` is why the new name is refused.
  [[nodiscard]] Clash FindClash(clsIxoFile& entry, const QString& folder, const LabelEdit& edit,
                                const QString& text, QString& reason);
  /// The file system reported a failure and has renamed the entry nevertheless.
  [[nodiscard]] bool HappenedAllTheSame(const QString& oldAddress, const QString& newAddress) const;
  /// Updates the views. `replaced` is true when an item of the new name, in any spelling, was replaced.
  void ShowRenamed(const LabelEdit& edit, const QString& folder, const QString& text, bool replaced);

  OperationParts parts_;
};

}  // namespace trevane
