#pragma once

#include "prompts/ShownGauge.h"
#include "prompts/UserPrompts.h"
#include "views/navigation/ContentsReceiver.h"
#include "views/navigation/FlushClock.h"
#include "views/navigation/FolderDisplay.h"
#include "views/navigation/FolderTreeBuilder.h"
#include "views/navigation/TreeBatch.h"

#include <optional>
#include <vector>

namespace trevane {

/// Puts the entries of one folder into the list, and its subfolders into the tree, batch by batch. The gauge
/// appears with the entry that makes them kGaugeFrom, and its maximum is the number of those that were read.
class FolderFilling final : public ContentsReceiver {
 public:
  /// `parts` outlives this object; so does the node, unless the display is cancelled.
  FolderFilling(FolderDisplay::Parts& parts, FolderNode& node) : parts_(parts), node_(node) {}
  FolderFilling(const FolderFilling&) = delete;
  FolderFilling& operator=(const FolderFilling&) = delete;

  void Begin(const QString& name, bool onController) override;
  void Discard() override;
  [[nodiscard]] bool Add(Listing&& entries) override;
  /// The reading has ended without an error.
  void Finish();
  /// Reports the entries that could not be shown. A listing is not on its way any more: it would wait for the
  /// answer, and its controller with it.
  void ShowMessages();

 private:
  /// The gauge's Cancel, a click on another place, or the end of the program.
  [[nodiscard]] bool IsCancelled() const;
  void Reserve();
  void UpdateGauge();
  void AddEntry(const FileEntry& entry);
  void Flush();

  FolderDisplay::Parts& parts_;
  FolderNode& node_;
  QString name_;
  bool onController_ = false;
  /// Kept until all are known, since a later entry decides how the node of an earlier one is spelt.
  std::vector<Listing> batches_;
  FolderTreeBuilder::Respellings respellings_;
  std::vector<Message> messages_;
  qsizetype count_ = 0;
  qsizetype reserved_ = 0;
  /// Entries in the views.
  qsizetype added_ = 0;
  bool cancelled_ = false;
  std::optional<TreeBatch> treeBatch_;
  std::optional<ShownGauge> gauge_;
  FlushClock clock_;
};

}  // namespace trevane
