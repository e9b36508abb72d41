#pragma once

#include <QStyledItemDelegate>

namespace trevane {

class ImageList;

/// Draws nodes and items: the expanded picture of an expanded node, ghosted items dimmed. Shows the full text
/// of a cell that is cut as a tooltip, and edits labels.
class LabelDelegate final : public QStyledItemDelegate {
  Q_OBJECT

 public:
  /// `images` outlives the delegate and may be null.
  LabelDelegate(const ImageList* images, QObject* parent);

  bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                 const QModelIndex& index) override;
  /// The text that helpEvent shows; empty when the whole text is visible.
  [[nodiscard]] QString ToolTipFor(const QStyleOptionViewItem& option, const QModelIndex& index) const;

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const override;
  void setEditorData(QWidget* editor, const QModelIndex& index) const override;
  /// An editor has room for its text up to the edge of the view, also over the cells to the right of the
  /// label.
  void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const override;
  void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
  /// Sends LabelEdited at once for a text that has been committed.
  void SendEdits();

  /// Closes the view's editor, if one is open, without taking the text.
  void CancelEdit(const QAbstractItemView& view);

 Q_SIGNALS:
  /// The label was changed to `text`. Sent from the event loop, when the editor has closed: a message about a
  /// failure then finds no editor that it would take the focus from.
  void LabelEdited(const QPersistentModelIndex& index, const QString& text) const;

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

 private:
  const ImageList* images_;
};

/// A question is open in front of the view: a click on a label from before it opened must not open an editor
/// behind it.
[[nodiscard]] bool IsBehindAQuestion(const QWidget& view);

}  // namespace trevane
