#pragma once

#include "views/FocusBeforePress.h"
#include "views/list/FileListModel.h"

#include <QTreeView>

#include <array>

namespace trevane {

class ImageList;
class LabelEditHandler;
struct LabelEdit;

/// The list `lstFile`. It shows and reports; a click on a header sorts by its column.
class FileListView final : public QTreeView {
  Q_OBJECT

 public:
  /// `images` outlives the view and may be null.
  explicit FileListView(const ImageList* images, QWidget* parent = nullptr);

  /// The model stays the caller's and outlives the view.
  void SetFiles(FileListModel* files);
  [[nodiscard]] FileListModel* Files() const noexcept { return files_; }
  /// Without a handler (null) labels cannot be edited. It outlives the view.
  void SetLabelEditHandler(LabelEditHandler* handler);

  /// The selected items in the order of the rows.
  [[nodiscard]] std::vector<FileListModel::Handle> SelectedItems() const;
  /// The item that has the focus of the keyboard; kNoItem when none has.
  [[nodiscard]] FileListModel::Handle FocusedItem() const;
  /// Starts to edit the label of the focused item; false when that is refused or the item is not selected:
  /// keys act on what looks selected.
  bool StartLabelEdit();
  /// Takes what has been typed into an open editor, as Enter does, and returns when the handler has had it.
  void CommitLabel();
  /// Closes the editor, if one is open, without a rename.
  void CancelLabelEdit();

  /// Typing selects by name, whatever column has the focus.
  void keyboardSearch(const QString& search) override;

  /// In pixels. The width of a hidden column is kept for its return.
  [[nodiscard]] int ColumnWidth(FileColumn column) const;
  void SetColumnWidth(FileColumn column, int width);

 Q_SIGNALS:
  /// What is selected changed, by the user or by a call; not when items vanish.
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
  /// Backspace or Alt+Up.
  void ParentKeyPressed();
  /// Alt+Enter.
  void PropertiesKeyPressed();
  void GotFocus();

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void changeEvent(QEvent* event) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
  void initViewItemOption(QStyleOptionViewItem* option) const override;

 private:
  /// Copy, cut and paste by key act on selected entries, and on none while a place is among them.
  [[nodiscard]] bool KeysActOnSelection() const;
  void RequestMenu();
  void OnHeaderClicked(int section);
  void OnColumnsInserted(const QModelIndex& parent, int first, int last);
  void OnSectionResized(int section, int oldWidth, int newWidth);
  void OnLabelEdited(const QPersistentModelIndex& index, const QString& text);
  [[nodiscard]] LabelEdit EditOf(FileListModel::Handle item) const;
  void FitIcons();
  /// Columns whose texts have a greatest width show them whole in any font; the user may narrow them.
  void FitWidths();
  [[nodiscard]] int FittingWidth(FileColumn column) const;

  FileListModel* files_ = nullptr;
  LabelEditHandler* labelEditHandler_ = nullptr;
  FocusBeforePress focusBefore_;
  /// The press that a click began with may be the first half of one that edits the label.
  bool pressMayEdit_ = false;
  std::array<int, kFileColumnCount> widths_;
  /// As they were last fitted to the texts.
  std::array<int, kFileColumnCount> fittedWidths_;
};

}  // namespace trevane
