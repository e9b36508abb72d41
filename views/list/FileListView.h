#pragma once

#include "views/EntryView.h"
#include "views/list/FileListModel.h"

#include <array>

namespace trevane {

class ImageList;

/// The list `lstFile`. It shows and reports; a click on a header sorts by its column.
class FileListView final : public EntryView {
  Q_OBJECT

 public:
  /// `images` outlives the view and may be null.
  explicit FileListView(const ImageList* images, QWidget* parent = nullptr);

  /// The model stays the caller's and outlives the view.
  void SetFiles(FileListModel* files);
  [[nodiscard]] FileListModel* Files() const noexcept { return files_; }

  /// The selected items in the order of the rows.
  [[nodiscard]] std::vector<FileListModel::Handle> SelectedItems() const;
  /// The item that has the focus of the keyboard; kNoItem when none has.
  [[nodiscard]] FileListModel::Handle FocusedItem() const;

  /// Typing selects by name, whatever column has the focus.
  void keyboardSearch(const QString& search) override;

  /// In pixels. The width of a hidden column is kept for its return.
  [[nodiscard]] int ColumnWidth(FileColumn column) const;
  void SetColumnWidth(FileColumn column, int width);

 Q_SIGNALS:
  /// The selection changed, by the user or by a call; not when items are removed.
  void SelectionChanged();
  /// A mouse button was released where no item is.
  void EmptySpaceReleased(Qt::MouseButton button, const QPoint& globalPosition);
  /// The right button was released over an item, or the menu key was pressed. The item is selected.
  void ContextMenuRequested(trevane::FileListModel::Handle item, const QPoint& globalPosition);
  /// Double click or Enter; Enter on a file only while that is selected.
  void ItemActivated(trevane::FileListModel::Handle item);
  /// Ctrl+C, Ctrl+X, Ctrl+V, while something that can be copied is selected; Ctrl+V also with nothing
  /// selected.
  void CopyKeyPressed();
  void CutKeyPressed();
  void PasteKeyPressed();

 protected:
  [[nodiscard]] std::optional<LabelEdit> EditOf(const QModelIndex& label) const override;
  void ChangeLabel(const QModelIndex& label, const QString& text) override;
  void OpenByKey() override;
  void RequestMenu() override;
  void LookChanged() override;

  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

 private:
  /// Copy, cut and paste by key act on selected entries, and on none while a drive or a machine is among
  /// them.
  [[nodiscard]] bool KeysActOnSelection() const;
  void HandleClipboardKey(int key);
  void OnHeaderClicked(int section);
  void OnColumnsInserted(const QModelIndex& parent, int first, int last);
  void OnSectionResized(int section, int oldWidth, int newWidth);
  /// Columns whose texts have a greatest width show them whole in any font; the user may narrow them.
  void FitWidths();
  [[nodiscard]] int FittingWidth(FileColumn column) const;

  FileListModel* files_ = nullptr;
  std::array<int, kFileColumnCount> widths_;
  /// As they were last fitted to the texts.
  std::array<int, kFileColumnCount> fittedWidths_;
};

}  // namespace trevane
