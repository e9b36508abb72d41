#include "views/list/ListLanding.h"

#include "views/addresses/Addresses.h"
#include "views/list/FileListModel.h"
#include "views/list/FileListView.h"

#include <QItemSelectionModel>

#include <utility>

namespace trevane {

void ListLanding::BeginDisplay(const QString& address) {
  if (address != shown_) {
    awaited_.reset();
  } else if (!awaited_) {
    // During a listing the list is half empty: the state saved before it is still the one to restore.
    awaited_ = ListViewState::Save(
        list_, keepsSelection_ ? ListViewState::Scope::Everything : ListViewState::Scope::WithoutSelection);
  }
}

void ListLanding::EndDisplay(const QString& address) {
  const QString from = std::exchange(shown_, address);
  const std::optional<ListViewState> awaited = std::exchange(awaited_, std::nullopt);
  keepsSelection_ = false;
  if (awaited && from == address) {
    awaited->Restore(list_);
  } else if (list_.selectionModel()->hasSelection()) {
    return;
  } else if (from.startsWith(address + kAddressSeparator)) {
    MakeCurrent(IndexAtOrAfter(from.mid(address.size() + 1).section(kAddressSeparator, 0, 0)));
  }
  if (!list_.currentIndex().isValid()) {
    MakeCurrent(list_.Files()->index(0, 0));
  }
}

void ListLanding::MakeCurrent(const QModelIndex& index) {
  if (index.isValid()) {
    list_.selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    list_.scrollTo(index);
  }
}

QModelIndex ListLanding::IndexAtOrAfter(const QString& text) const {
  const FileListModel& files = *list_.Files();
  const FileListModel::Handle item = files.FindByText(text);
  if (item != FileListModel::kNoItem && files.Text(item) == text) {
    return files.IndexOf(item);
  }
  // The item has been deleted or renamed.
  FileListModel::Handle next = FileListModel::kNoItem;
  FileListModel::Handle last = FileListModel::kNoItem;
  for (int row = 0; row < files.rowCount(); ++row) {
    const FileListModel::Handle candidate = files.HandleAt(row);
    const QString& name = files.Text(candidate);
    if (CompareIgnoringCase(name, text) >= 0 &&
        (next == FileListModel::kNoItem || CompareIgnoringCase(name, files.Text(next)) < 0)) {
      next = candidate;
    }
    if (last == FileListModel::kNoItem || CompareIgnoringCase(name, files.Text(last)) > 0) {
      last = candidate;
    }
  }
  return files.IndexOf(next != FileListModel::kNoItem ? next : last);
}

}  // namespace trevane
