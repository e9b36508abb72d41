#pragma once

#include "views/list/ListViewState.h"

#include <QModelIndex>
#include <QString>

#include <optional>

namespace trevane {

class FileListView;

/// Makes an item the current one whenever the list has been filled, so that the keyboard continues from a
/// sensible item: the folder that was left, after a display of the same folder the item that was current or,
/// if that is gone, its neighbour, otherwise the first item. The view scrolls to it. Nothing is selected.
class ListLanding {
 public:
  /// The view outlives this.
  explicit ListLanding(FileListView& list) : list_(list) {}
  ListLanding(const ListLanding&) = delete;
  ListLanding& operator=(const ListLanding&) = delete;

  /// The next display is of the same folder and keeps the selection.
  void KeepSelection() { keepsSelection_ = true; }
  /// The list is about to be emptied and filled for the folder at `address`.
  void BeginDisplay(const QString& address);
  /// The list is filled. An item that was selected meanwhile stays current.
  void EndDisplay(const QString& address);
  /// The folder that the list shows has another address.
  void AddressChanged(const QString& address) { shown_ = address; }

 private:
  void MakeCurrent(const QModelIndex& index);
  /// The item of that name or, if there is none, the one that follows by name.
  [[nodiscard]] QModelIndex IndexAtOrAfter(const QString& text) const;

  FileListView& list_;
  /// The address of the folder that the list showed last.
  QString shown_;
  /// The state to restore when the display of that folder has ended.
  std::optional<ListViewState> awaited_;
  bool keepsSelection_ = false;
};

}  // namespace trevane
