#include "views/list/ListViewState.h"

#include "views/list/FileListView.h"

#include <QScrollBar>

#include <algorithm>

namespace trevane {

namespace {

/// The index of the item of exactly that name: the list may show another one now whose name differs in case.
QModelIndex IndexOf(const FileListModel& files, const QString& text) {
  const FileListModel::Handle item = files.FindByText(text);
  return item != FileListModel::kNoItem && files.Text(item) == text ? files.IndexOf(item) : QModelIndex();
}

/// The row after `row`, or else before it, that is not selected with it; -1 when all are.
int NeighbourOf(const FileListView& view, int row) {
  const auto isFree = [&view](int other) {
    return !view.selectionModel()->isRowSelected(other, QModelIndex());
  };
  for (int next = row + 1; next < view.Files()->rowCount(); ++next) {
    if (isFree(next)) {
      return next;
    }
  }
  for (int next = row - 1; next >= 0; --next) {
    if (isFree(next)) {
      return next;
    }
  }
  return -1;
}

}  // namespace

ListViewState ListViewState::Save(const FileListView& view, Scope scope) {
  ListViewState state;
  const FileListModel& files = *view.Files();
  if (scope == Scope::Everything) {
    for (const FileListModel::Handle item : view.SelectedItems()) {
      state.selectedTexts_.append(files.Text(item));
    }
  }
  const FileListModel::Handle focused = view.FocusedItem();
  if (focused != FileListModel::kNoItem) {
    state.focusedText_ = files.Text(focused);
    state.focusedRow_ = view.currentIndex().row();
    if (const int neighbour = NeighbourOf(view, state.focusedRow_); neighbour >= 0) {
      state.neighbourText_ = files.Text(files.HandleAt(neighbour));
    }
  }
  const FileListModel::Handle top = files.HandleAt(view.indexAt(QPoint(0, 0)));
  if (top != FileListModel::kNoItem) {
    state.topText_ = files.Text(top);
  }
  state.verticalScroll_ = view.verticalScrollBar()->value();
  state.horizontalScroll_ = view.horizontalScrollBar()->value();
  return state;
}

void ListViewState::Restore(FileListView& view) const {
  FileListModel& files = *view.Files();
  files.FlushStaged();
  const int lastColumn = files.columnCount() - 1;

  std::vector<int> rows;
  for (const QString& text : selectedTexts_) {
    const QModelIndex index = IndexOf(files, text);
    if (index.isValid()) {
      rows.push_back(index.row());
    }
  }
  std::sort(rows.begin(), rows.end());
  QItemSelection selection;
  for (size_t i = 0; i < rows.size();) {
    size_t end = i + 1;
    while (end < rows.size() && rows[end] == rows[end - 1] + 1) {
      ++end;
    }
    selection.append(QItemSelectionRange(files.index(rows[i], 0), files.index(rows[end - 1], lastColumn)));
    i = end;
  }

  QModelIndex focused = IndexOf(files, focusedText_);
  if (!focused.isValid()) {
    focused = IndexOf(files, neighbourText_);
  }
  if (!focused.isValid() && focusedRow_ >= 0 && files.rowCount() > 0) {
    focused = files.index(qMin(focusedRow_, files.rowCount() - 1), 0);
  }
  // The current row moves without being scrolled to or selected.
  const bool autoScroll = view.hasAutoScroll();
  view.setAutoScroll(false);
  if (focused.isValid()) {
    view.selectionModel()->setCurrentIndex(focused, QItemSelectionModel::NoUpdate);
  }
  view.selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
  view.setAutoScroll(autoScroll);

  const QModelIndex top = IndexOf(files, topText_);
  if (top.isValid() && !topText_.isEmpty()) {
    view.scrollTo(top, QAbstractItemView::PositionAtTop);
  } else {
    view.scrollTo(files.index(0, 0), QAbstractItemView::PositionAtTop);  // Lays the rows out.
    view.verticalScrollBar()->setValue(verticalScroll_);
  }
  view.horizontalScrollBar()->setValue(horizontalScroll_);
}

}  // namespace trevane
