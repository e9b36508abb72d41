#pragma once

#include "views/FocusBeforePress.h"
#include "views/LabelEditHandler.h"

#include <QTreeView>

#include <optional>

namespace trevane {

class ImageList;
class LabelDelegate;

/// The common part of tree and list: labels that can be edited, keys, the focus and the look of the rows.
class EntryView : public QTreeView {
  Q_OBJECT

 public:
  /// Without a handler (null) labels cannot be edited. It outlives the view.
  void SetLabelEditHandler(LabelEditHandler* handler) { labelEditHandler_ = handler; }

  /// Starts to edit the label of the current entry; false when that is refused or the entry is not selected:
  /// keys act on what looks selected.
  bool StartLabelEdit();
  /// Takes what has been typed into an open editor, as Enter does, and returns when the handler has had it.
  void CommitLabel();
  /// Closes the editor, if one is open, without a rename.
  void CancelLabelEdit();
  /// Ends what a press has begun: an editor that is open or would open after a moment, without a rename, and
  /// the drawing of a selection.
  void EndGestures();
  /// A click that would open an editor after a moment opens none.
  void EndDelayBeforeEdit();

 Q_SIGNALS:
  void GotFocus();
  /// Backspace or Alt+Up.
  void ParentKeyPressed();
  /// Alt+Enter.
  void PropertiesKeyPressed();

 protected:
  /// `images` outlives the view and may be null.
  EntryView(const ImageList* images, QWidget* parent);

  /// Nothing for an entry that cannot be renamed.
  [[nodiscard]] virtual std::optional<LabelEdit> EditOf(const QModelIndex& label) const = 0;
  /// Gives the entry the text, unless another one has it.
  virtual void ChangeLabel(const QModelIndex& label, const QString& text) = 0;
  /// An editor has opened at the label.
  virtual void EditorOpened(const QModelIndex& label) { Q_UNUSED(label); }
  /// Enter.
  virtual void OpenByKey() = 0;
  /// Asks for the pop-up menu by key.
  virtual void RequestMenu() = 0;
  /// Any other key.
  virtual void HandleOtherKey(QKeyEvent* event) { QTreeView::keyPressEvent(event); }
  virtual void HandleFocusIn(QFocusEvent* event) { QTreeView::focusInEvent(event); }
  /// The font or the style is another one.
  virtual void LookChanged() = 0;

  /// The left button was pressed. A click on a selected label opens an editor only when the view had the
  /// focus and no other entry was selected before.
  void NotePress();

  bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void changeEvent(QEvent* event) override;
  void initViewItemOption(QStyleOptionViewItem* option) const override;

 private:
  [[nodiscard]] bool MayEdit(const QModelIndex& label, EditTrigger trigger);
  void OnLabelEdited(const QPersistentModelIndex& label, const QString& text);
  void FitIcons();

  LabelDelegate* labels_;
  LabelEditHandler* labelEditHandler_ = nullptr;
  FocusBeforePress focusBefore_;
  /// The press that a click began with may be the first half of one that edits the label.
  bool pressMayEdit_ = false;
};

}  // namespace trevane
