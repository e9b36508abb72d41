#pragma once

#include "fileops/OperationParts.h"
#include "views/LabelEditHandler.h"

#include <QString>

namespace trevane {

class clsIxoFile;

/// Renames a file or folder whose label was edited in the list or in the tree. Where another file has the new
/// name already the user is asked whether it may be replaced; anything else of that name is left alone and
/// the rename refused.
class LabelRename final : public LabelEditHandler {
 public:
  explicit LabelRename(const OperationParts& parts) : parts_(parts) {}

  [[nodiscard]] bool BeforeLabelEdit(const LabelEdit& edit) override;
  void AfterLabelEdit(const LabelEdit& edit, const QString& text, bool* cancel) override;

 private:
  enum class Clash { None, Replace, Keep, Refused };

  /// The address of the folder that holds the entry.
  [[nodiscard]] QString FolderOf(const LabelEdit& edit) const;
  /// `reason` tells why the new name is refused.
  [[nodiscard]] Clash FindClash(clsIxoFile& entry, const QString& folder, const LabelEdit& edit,
                                const QString& text, QString& reason);
  /// The file system reported a failure and has renamed the entry nevertheless.
  [[nodiscard]] bool HappenedAllTheSame(const QString& oldAddress, const QString& newAddress) const;
  /// The views follow what the file system did.
  /// `replaced` when an item of the new name gave way, however that was spelt.
  void ShowRenamed(const LabelEdit& edit, const QString& folder, const QString& text, bool replaced);

  OperationParts parts_;
};

}  // namespace trevane
