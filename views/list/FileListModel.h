#pragma once

#include "base/InternedKeys.h"
#include "base/KeyIndex.h"
#include "base/RowMerge.h"
#include "base/Variant.h"
#include "views/list/FileColumns.h"
#include "views/list/FileListItem.h"
#include "views/list/FileListOrder.h"

#include <QAbstractItemModel>
#include <QStringList>

#include <array>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace trevane {

class DateFormatter;
class FileTypes;
class ImageList;

/// The values behind the columns beside the name.
struct FileDetails {
  /// Bytes; negative for a folder, and where the file system does not know it.
  qint64 size = -1;
  Date modified;
  Date accessed;
  Date created;
  /// FileTypeRecord::id.
  quint32 fileType = 0;
};

/// How the list is sorted. `key` is the position of the column among the visible ones, 0 the name.
struct SortState {
  bool sorted = false;
  int key = 0;
  bool descending = false;
  friend bool operator==(const SortState&, const SortState&) = default;
};

/// The items of the file list. Texts of columns are made when they are shown or sorted by, so an item costs
/// little beside its name. New items are found by key and counted at once but enter the rows in one merge at
/// FlushStaged: listing a large folder then costs the views nothing an entry.
class FileListModel final : public QAbstractItemModel {
  Q_OBJECT

 public:
  /// An item, valid until it is removed.
  using Handle = FileListOrder::Handle;
  static constexpr Handle kNoItem = KeyIndex::kNone;

  /// All three outlive the model; each may be null, and its part is missing then.
  FileListModel(const ImageList* images, const FileTypes* types, const DateFormatter* dates,
                QObject* parent = nullptr);

  /// Adds an item with the key "@" and the text in lower case. Its row is taken at FlushStaged: by the sort
  /// state, or, while the list is not sorted, after all others or at `position`. An empty image key is none.
  /// Fails with error::kKeyAlreadyThere when the key exists; nothing is added then.
  Handle AddListItem(std::optional<int> position, qint32 tag, const QString& text,
                     const QString& smallIconKey);
  /// As FolderTreeModel::SetDriveToolTip, for the names of drives.
  void SetDriveToolTip(std::function<QString(const QString&)> source) { driveToolTip_ = std::move(source); }

  /// Gives the item its columns. The attributes come from the tag.
  void SetDetails(Handle item, const FileDetails& details);
  /// Room for so many items in all.
  void Reserve(qsizetype count);
  /// Puts the new items into the rows.
  void FlushStaged();

  /// By "@" and the name in any case; kNoItem when there is none.
  [[nodiscard]] Handle FindByKey(QStringView key) const;
  [[nodiscard]] Handle FindByText(QStringView text) const;
  /// False when there is no such item.
  bool RemoveByKey(QStringView key);
  void Clear();
  /// Gives the item another text and key, and the row that belongs to it. Fails with error::kKeyAlreadyThere
  /// when another item has that key.
  void RenameItem(Handle item, const QString& text);
  /// A file is of another type now, as after a renaming that changed its extension.
  void SetType(Handle item, const QString& smallIconKey, quint32 fileType);

  /// Items with and without a row.
  [[nodiscard]] int Count() const noexcept { return count_; }
  [[nodiscard]] const QString& Text(Handle item) const { return items_[item].text; }
  [[nodiscard]] QString Key(Handle item) const;
  [[nodiscard]] qint32 Tag(Handle item) const { return items_[item].tag; }
  [[nodiscard]] const QString& ImageKey(Handle item) const;
  [[nodiscard]] qint64 Size(Handle item) const { return items_[item].size; }
  [[nodiscard]] bool Ghosted(Handle item) const { return items_[item].ghosted; }
  void SetGhosted(Handle item, bool ghosted);
  /// The text of the column; nothing for an item without details.
  [[nodiscard]] QString ColumnText(Handle item, FileColumn column) const;
  /// Texts of which one is as wide as any that the column shows; none where there is no such bound.
  [[nodiscard]] QStringList WidestTexts(FileColumn column) const;

  [[nodiscard]] const std::vector<FileColumn>& VisibleColumns() const noexcept { return columns_; }
  [[nodiscard]] bool IsColumnVisible(FileColumn column) const;
  /// The name cannot be hidden. A column returns to its position in the fixed order, without a header image.
  void SetColumnVisible(FileColumn column, bool visible);
  /// "ASCEND", "DESCEND" or nothing, by position among the visible columns.
  [[nodiscard]] const QString& HeaderImage(int section) const;
  void SetHeaderImage(int section, const QString& key);

  [[nodiscard]] const SortState& Sorting() const noexcept { return sort_; }
  /// Sorts by the texts of the column without regard to case; equal ones follow the name, in either
  /// direction. Selection and current item stay on their items.
  void SetSorting(const SortState& sorting);

  /// Invalid for an item without a row.
  [[nodiscard]] QModelIndex IndexOf(Handle item, int column = 0) const;
  [[nodiscard]] Handle HandleAt(const QModelIndex& index) const;
  [[nodiscard]] Handle HandleAt(int row) const { return rows_[static_cast<size_t>(row)]; }
  /// Rows are being removed: a change of the selection is not the user's then.
  [[nodiscard]] bool IsRemoving() const noexcept { return removing_ > 0; }

  [[nodiscard]] QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  [[nodiscard]] QModelIndex parent(const QModelIndex& child) const override;
  using QObject::parent;
  [[nodiscard]] QModelIndex sibling(int row, int column, const QModelIndex& index) const override;
  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] bool hasChildren(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                    int role = Qt::DisplayRole) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

 private:
  [[nodiscard]] int RowOf(Handle item) const;
  /// The column that the list is sorted by, none when it is not sorted or the key is beyond the columns.
  [[nodiscard]] std::optional<FileColumn> SortColumn() const;
  /// By that column, in the direction of the sort state.
  [[nodiscard]] FileListOrder OrderBy(FileColumn column) const;
  void InsertRun(const std::vector<Handle>& added, const RowRun& run);
  void PutInOrder(std::vector<Handle> order);
  void Resort();
  void MoveToSortedRow(Handle item);

  const ImageList* images_;
  std::function<QString(const QString&)> driveToolTip_;
  const FileTypes* types_;
  const DateFormatter* dates_;
  InternedKeys imageKeys_;
  mutable std::vector<FileListItem> items_;
  std::vector<Handle> freeItems_;
  std::vector<Handle> rows_;
  std::vector<Handle> staged_;
  KeyIndex keys_;
  int count_ = 0;
  /// Machine roots and drives, which cannot be renamed. Where there are none, no item is looked at for that.
  int rootCount_ = 0;
  std::vector<FileColumn> columns_;
  std::array<QString, kFileColumnCount> headerImages_;
  SortState sort_;
  int removing_ = 0;
};

}  // namespace trevane
