#include "views/LabelDelegate.h"

#include "base/ShownText.h"
#include "views/ImageList.h"
#include "views/ItemRoles.h"
#include "views/PlainIcon.h"
#include "views/SelectionColors.h"
#include "views/addresses/NodeTags.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QLineEdit>
#include <QPalette>
#include <QToolTip>

#include <algorithm>

namespace trevane {
namespace {

constexpr double kGhostedOpacity = 0.5;
/// A colour behind it takes more from a picture.
constexpr double kGhostedSelectedOpacity = 0.65;
/// Characters that fit behind the text of an editor.
constexpr int kRoomToType = 4;
constexpr char kTextBefore[] = "trevaneTextBefore";
const QString kEditorName = QStringLiteral("txtLabel");

/// Only as far as they can be read, also in a selected row.
void DimTexts(QPalette& palette) {
  for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
    palette.setColor(group, QPalette::Text,
                     Dimmed(palette.color(group, QPalette::Text), palette.color(group, QPalette::Base)));
    palette.setColor(
        group, QPalette::HighlightedText,
        Dimmed(palette.color(group, QPalette::HighlightedText), palette.color(group, QPalette::Highlight)));
  }
}

}  // namespace

LabelDelegate::LabelDelegate(const ImageList* images, QObject* parent)
    : QStyledItemDelegate(parent), images_(images) {}

void LabelDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
  QStyledItemDelegate::initStyleOption(option, index);
  // Figures at the right edge would touch the texts of the next column.
  if (option->displayAlignment.testFlag(Qt::AlignRight)) {
    option->text += QChar(0x2002);
  }
  if (index.column() != 0) {
    return;
  }
  if (images_ != nullptr && (option->state & QStyle::State_Open) != 0) {
    const QString expanded = index.data(kExpandedImageKeyRole).toString();
    if (!expanded.isEmpty()) {
      option->icon = images_->Icon(expanded);
    }
  }
  const bool ghosted = index.data(kGhostedRole).toBool();
  if (ghosted) {
    DimTexts(option->palette);
  }
  const bool selected = (option->state & QStyle::State_Selected) != 0;
  if (ghosted || selected) {
    const double ghostedOpacity = selected ? kGhostedSelectedOpacity : kGhostedOpacity;
    option->icon = PlainIcon(option->icon, ghosted ? ghostedOpacity : 1);
  }
}

bool LabelDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                              const QModelIndex& index) {
  if (event->type() != QEvent::ToolTip) {
    return QStyledItemDelegate::helpEvent(event, view, option, index);
  }
  const QString text = index.isValid() ? ToolTipFor(option, index) : QString();
  QToolTip::showText(event->globalPos(), PlainToolTip(text), view);
  event->setAccepted(!text.isEmpty());
  return true;
}

QString LabelDelegate::ToolTipFor(const QStyleOptionViewItem& option, const QModelIndex& index) const {
  const QString full = index.data(Qt::ToolTipRole).toString();
  QStyleOptionViewItem filled = option;
  initStyleOption(&filled, index);
  if (filled.text.trimmed() != full) {
    return full;
  }
  const QStyle* style = filled.widget != nullptr ? filled.widget->style() : QApplication::style();
  const QRect room = style->subElementRect(QStyle::SE_ItemViewItemText, &filled, filled.widget);
  const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, &filled, filled.widget) + 1;
  const int needed = filled.fontMetrics.horizontalAdvance(filled.text) + 2 * margin;
  return needed > room.width() ? full : QString();
}

QWidget* LabelDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                                     const QModelIndex& /*index*/) const {
  auto* editor = new QLineEdit(parent);
  editor->setObjectName(kEditorName);
  editor->setAccessibleName(tr("New name"));
  editor->setFrame(true);
  return editor;
}

void LabelDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
  auto* line = qobject_cast<QLineEdit*>(editor);
  if (line->property(kTextBefore).isValid()) {
    return;  // The typed text stays when the entry changes meanwhile.
  }
  const QString text = index.data(Qt::EditRole).toString();
  line->setText(WithReadableNames(text));
  // An editor may not show every character as it is: a text is unchanged when it equals the editor's own
  // version.
  line->setProperty(kTextBefore, line->text());
  const bool isFolder = IsFolderTag(index.data(kTagRole).toInt());
  const auto dot = static_cast<int>(isFolder ? -1 : text.lastIndexOf(u'.'));
  const auto length = dot > 0 ? dot : static_cast<int>(text.size());
  // The view selects all of it right after this.
  QMetaObject::invokeMethod(
      line, [line, length] { line->setSelection(0, length); }, Qt::QueuedConnection);
}

void LabelDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                         const QModelIndex& index) const {
  QStyledItemDelegate::updateEditorGeometry(editor, option, index);
  QStyleOptionViewItem filled = option;
  initStyleOption(&filled, index);
  const QStyle* style = filled.widget != nullptr ? filled.widget->style() : QApplication::style();
  QRect area = editor->geometry();
  area.setLeft(style->subElementRect(QStyle::SE_ItemViewItemText, &filled, filled.widget).left());
  const auto* line = qobject_cast<QLineEdit*>(editor);
  // The editor has its text only after this.
  const QString text = WithReadableNames(index.data(Qt::EditRole).toString());
  const int needed =
      line->fontMetrics().horizontalAdvance(text) + line->fontMetrics().averageCharWidth() * kRoomToType;
  const int room = std::max(editor->parentWidget()->width() - area.left(), line->minimumSizeHint().width());
  area.setWidth(std::min(std::max({area.width(), needed, line->sizeHint().width()}), room));
  editor->setGeometry(area);
}

void LabelDelegate::setModelData(QWidget* editor, QAbstractItemModel* /*model*/,
                                 const QModelIndex& index) const {
  auto* line = qobject_cast<QLineEdit*>(editor);
  const QString text = line->text();
  if (text == line->property(kTextBefore).toString()) {
    return;
  }
  line->setProperty(kTextBefore, text);  // Losing the focus commits once more.
  const QPersistentModelIndex edited(index);
  const QString name = WithCarriersOf(index.data(Qt::EditRole).toString(), text);
  QMetaObject::invokeMethod(
      const_cast<LabelDelegate*>(this), [this, edited, name] { Q_EMIT LabelEdited(edited, name); },
      Qt::QueuedConnection);
}

void LabelDelegate::SendEdits() {
  QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
}

void LabelDelegate::CancelEdit(const QAbstractItemView& view) {
  const auto editors = view.viewport()->findChildren<QLineEdit*>(kEditorName, Qt::FindDirectChildrenOnly);
  for (QLineEdit* editor : editors) {
    // One that has closed is deleted later.
    if (editor->isHidden()) {
      continue;
    }
    editor->setProperty(kTextBefore, editor->text());  // Losing the focus commits.
    Q_EMIT closeEditor(editor, RevertModelCache);
  }
}

bool IsBehindAQuestion(const QWidget& view) {
  const QWidget* question = QApplication::activeModalWidget();
  return question != nullptr && question != view.window();
}

}  // namespace trevane
