#include "views/list/FileListView.h"

#include "views/ViewKeys.h"
#include "views/addresses/NodeTags.h"
#include "views/list/ListSorting.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>

#include <algorithm>

namespace trevane {
namespace {

/// Widths at 96 dots an inch, by FileColumn.
constexpr std::array<int, kFileColumnCount> kFirstWidths = {240, 100, 150, 150, 150, 150, 80};
/// The average width of a character in the font that those widths are for.
constexpr int kFirstCharacter = 8;

std::array<int, kFileColumnCount> FirstWidths(const QFontMetrics& metrics) {
  std::array<int, kFileColumnCount> widths = kFirstWidths;
  const int character = std::max(metrics.averageCharWidth(), kFirstCharacter);
  for (int& width : widths) {
    width = width * character / kFirstCharacter;
  }
  return widths;
}

class FileListHeader final : public QHeaderView {
 public:
  explicit FileListHeader(QWidget* parent) : QHeaderView(Qt::Horizontal, parent) {}

 protected:
  void initStyleOptionForIndex(QStyleOptionHeader* option, int section) const override {
    QHeaderView::initStyleOptionForIndex(option, section);
    // A title at the right edge would touch that of the next column; so would the figures below it.
    if (option->textAlignment.testFlag(Qt::AlignRight)) {
      option->text += QChar(0x2002);
    }
  }
};

}  // namespace

FileListView::FileListView(const ImageList* images, QWidget* parent)
    : EntryView(images, parent), widths_(FirstWidths(fontMetrics())), fittedWidths_(widths_) {
  setObjectName(QStringLiteral("lstFile"));
  setAccessibleName(tr("Files"));
  setRootIsDecorated(false);
  setItemsExpandable(false);
  setAllColumnsShowFocus(true);
  setSelectionMode(QAbstractItemView::ExtendedSelection);
  setSelectionBehavior(QAbstractItemView::SelectRows);
  setHeader(new FileListHeader(this));
  header()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  header()->setSectionsClickable(true);
  header()->setSectionsMovable(false);
  header()->setStretchLastSection(false);
  header()->setSortIndicatorShown(false);
  header()->setHighlightSections(false);
  connect(header(), &QHeaderView::sectionClicked, this, &FileListView::OnHeaderClicked);
  connect(header(), &QHeaderView::sectionResized, this, &FileListView::OnSectionResized);
}

void FileListView::SetFiles(FileListModel* files) {
  files_ = files;
  const std::array<int, kFileColumnCount> widths = widths_;
  setModel(files);
  connect(files, &QAbstractItemModel::columnsInserted, this, &FileListView::OnColumnsInserted);
  widths_ = widths;
  OnColumnsInserted({}, 0, files->columnCount() - 1);
  FitWidths();
}

std::vector<FileListModel::Handle> FileListView::SelectedItems() const {
  std::vector<int> rows;
  const QItemSelection selection = selectionModel()->selection();
  for (const QItemSelectionRange& range : selection) {
    for (int row = range.top(); row <= range.bottom(); ++row) {
      rows.push_back(row);
    }
  }
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  std::vector<FileListModel::Handle> items;
  items.reserve(rows.size());
  for (const int row : rows) {
    items.push_back(files_->HandleAt(row));
  }
  return items;
}

FileListModel::Handle FileListView::FocusedItem() const {
  return files_->HandleAt(currentIndex());
}

int FileListView::FittingWidth(FileColumn column) const {
  const QFontMetrics metrics = fontMetrics();
  int text = 0;
  for (const QString& sample : files_->WidestTexts(column)) {
    text = std::max(text, metrics.horizontalAdvance(sample));
  }
  const QFontMetrics titleMetrics = header()->fontMetrics();
  // The title of the column that the list is sorted by has an arrow.
  const int title = titleMetrics.horizontalAdvance(HeaderText(column)) + titleMetrics.averageCharWidth() +
                    style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, header()) +
                    3 * style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, header());
  // The margin on both sides, and the space that keeps figures from the next column.
  const int margins = 2 * (style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 1) +
                      metrics.horizontalAdvance(QChar(0x2002));
  return std::max(text > 0 ? text + margins : 0, title);
}

void FileListView::FitWidths() {
  std::array<int, kFileColumnCount> fitted = FirstWidths(fontMetrics());
  for (int i = 0; i < kFileColumnCount; ++i) {
    const auto position = static_cast<size_t>(i);
    fitted[position] = std::max(fitted[position], FittingWidth(static_cast<FileColumn>(i)));
    // A width that the user has chosen stays, unless it showed everything and no longer would.
    if (widths_[position] == fittedWidths_[position]) {
      SetColumnWidth(static_cast<FileColumn>(i), fitted[position]);
    } else if (widths_[position] > fittedWidths_[position]) {
      SetColumnWidth(static_cast<FileColumn>(i), std::max(widths_[position], fitted[position]));
    }
  }
  fittedWidths_ = fitted;
}

void FileListView::LookChanged() {
  if (files_ != nullptr) {
    FitWidths();
  }
}

int FileListView::ColumnWidth(FileColumn column) const {
  return widths_[static_cast<size_t>(column)];
}

void FileListView::SetColumnWidth(FileColumn column, int width) {
  widths_[static_cast<size_t>(column)] = width;
  const std::vector<FileColumn>& columns = files_->VisibleColumns();
  const auto position = std::find(columns.begin(), columns.end(), column);
  if (position != columns.end()) {
    header()->resizeSection(static_cast<int>(position - columns.begin()), width);
  }
}

void FileListView::OnColumnsInserted(const QModelIndex& /*parent*/, int first, int last) {
  for (int section = first; section <= last; ++section) {
    const FileColumn column = files_->VisibleColumns()[static_cast<size_t>(section)];
    header()->resizeSection(section, widths_[static_cast<size_t>(column)]);
  }
}

void FileListView::OnSectionResized(int section, int /*oldWidth*/, int newWidth) {
  if (files_ != nullptr && newWidth > 0 && static_cast<size_t>(section) < files_->VisibleColumns().size()) {
    widths_[static_cast<size_t>(files_->VisibleColumns()[static_cast<size_t>(section)])] = newWidth;
  }
}

void FileListView::OnHeaderClicked(int section) {
  ColumnClick(*files_, section);
}

void FileListView::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) {
    NotePress();
    QTreeView::mousePressEvent(event);
    return;
  }
  event->accept();
  if (event->button() != Qt::RightButton) {
    return;
  }
  const QModelIndex index = indexAt(event->position().toPoint());
  if (!index.isValid()) {
    clearSelection();
    return;
  }
  // On a selected item the whole selection stays, so that the menu is for all of it.
  selectionModel()->setCurrentIndex(index,
                                    selectionModel()->isSelected(index)
                                        ? QItemSelectionModel::NoUpdate
                                        : QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void FileListView::mouseReleaseEvent(QMouseEvent* event) {
  const QPoint position = event->position().toPoint();
  const QPoint globalPosition = event->globalPosition().toPoint();
  const Qt::MouseButton button = event->button();
  if (button == Qt::LeftButton) {
    QTreeView::mouseReleaseEvent(event);
  }
  const FileListModel::Handle item = files_->HandleAt(indexAt(position));
  if (item == FileListModel::kNoItem) {
    Q_EMIT EmptySpaceReleased(button, globalPosition);
  } else if (button == Qt::RightButton) {
    Q_EMIT ContextMenuRequested(item, globalPosition);
  }
}

void FileListView::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) {
    return;
  }
  const FileListModel::Handle item = files_->HandleAt(indexAt(event->position().toPoint()));
  QTreeView::mouseDoubleClickEvent(event);
  if (item != FileListModel::kNoItem) {
    Q_EMIT ItemActivated(item);
  }
}

bool FileListView::KeysActOnSelection() const {
  const std::vector<FileListModel::Handle> selected = SelectedItems();
  return !selected.empty() && std::ranges::none_of(selected, [this](FileListModel::Handle item) {
    const qint32 tag = files_->Tag(item);
    return IsWorkspaceComputerOrDrive(tag) || IsController(tag);
  });
}

bool FileListView::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride) {
    // The list handles these keys itself: a menu's shortcut would act on drives and machines, too.
    const auto* key = static_cast<QKeyEvent*>(event);
    if (IsClipboardKey(*key)) {
      event->accept();
      return true;
    }
  }
  return QTreeView::event(event);
}

void FileListView::keyPressEvent(QKeyEvent* event) {
  if (state() != EditingState && IsClipboardKey(*event)) {
    event->accept();
    HandleClipboardKey(event->key());
    return;
  }
  EntryView::keyPressEvent(event);
}

void FileListView::HandleClipboardKey(int key) {
  // With nothing selected there is still a folder to paste into.
  const bool pastesHere = key == Qt::Key_V && !selectionModel()->hasSelection();
  if (!pastesHere && !KeysActOnSelection()) {
    return;
  }
  if (key == Qt::Key_C) {
    Q_EMIT CopyKeyPressed();
  } else if (key == Qt::Key_X) {
    Q_EMIT CutKeyPressed();
  } else {
    Q_EMIT PasteKeyPressed();
  }
}

void FileListView::OpenByKey() {
  const FileListModel::Handle item = FocusedItem();
  // Enter must not run a file that has only the focus, as after an address was entered.
  if (item != FileListModel::kNoItem &&
      (selectionModel()->isSelected(currentIndex()) || IsWorkspaceComputerOrDrive(files_->Tag(item)) ||
       !IsRunnableFile(files_->Tag(item)))) {
    Q_EMIT ItemActivated(item);
  }
}

void FileListView::keyboardSearch(const QString& search) {
  const QModelIndex current = currentIndex();
  if (current.isValid() && current.column() != 0) {
    selectionModel()->setCurrentIndex(current.siblingAtColumn(0), QItemSelectionModel::NoUpdate);
  }
  QTreeView::keyboardSearch(search);
}

void FileListView::RequestMenu() {
  const FileListModel::Handle item = FocusedItem();
  if (item != FileListModel::kNoItem && selectionModel()->isSelected(currentIndex())) {
    Q_EMIT ContextMenuRequested(item, viewport()->mapToGlobal(visualRect(currentIndex()).center()));
  } else {
    Q_EMIT EmptySpaceReleased(Qt::RightButton, viewport()->mapToGlobal(viewport()->rect().center()));
  }
}

void FileListView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
  QTreeView::selectionChanged(selected, deselected);
  if (files_ != nullptr && !files_->IsRemoving()) {
    Q_EMIT SelectionChanged();
  }
}

std::optional<LabelEdit> FileListView::EditOf(const QModelIndex& label) const {
  const FileListModel::Handle item = files_ != nullptr ? files_->HandleAt(label) : FileListModel::kNoItem;
  if (item == FileListModel::kNoItem || !IsFileOrFolder(files_->Tag(item))) {
    return std::nullopt;
  }
  return LabelEdit{std::nullopt, files_->Tag(item), files_->Text(item)};
}

void FileListView::ChangeLabel(const QModelIndex& label, const QString& text) {
  const FileListModel::Handle item = files_->HandleAt(label);
  const FileListModel::Handle other = files_->FindByText(text);
  if (files_->Text(item) != text && (other == FileListModel::kNoItem || other == item)) {
    files_->RenameItem(item, text);
  }
}

}  // namespace trevane
