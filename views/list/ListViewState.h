#pragma once

#include <QStringList>

namespace trevane {

class FileListView;

/// Selection, focus and scroll position of the list by the keys of its items, so that they stay on the
/// entries that still exist when the list is filled anew.
class ListViewState {
 public:
  enum class Scope { Everything, WithoutSelection };

  [[nodiscard]] static ListViewState Save(const FileListView& view, Scope scope = Scope::Everything);
  /// Entries that no longer exist are left out. When the focused entry is gone, its neighbour gets the focus:
  /// the next one that was not selected with it. When the entry at the top is gone, the view scrolls to its
  /// old position.
  void Restore(FileListView& view) const;

 private:
  QStringList selectedTexts_;
  QString focusedText_;
  int focusedRow_ = -1;
  /// Has the focus when the focused entry is gone.
  QString neighbourText_;
  QString topText_;
  int verticalScroll_ = 0;
  int horizontalScroll_ = 0;
};

}  // namespace trevane
