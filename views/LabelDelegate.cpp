#include "views/LabelDelegate.h"

#include "views/DisplayText.h"
#include "views/ImageList.h"
#include "views/ItemRoles.h"
#include "views/addresses/NodeTags.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QLineEdit>
#include <QPainter>
#include <QToolTip>

namespace trevane {
namespace {

constexpr double kGhostedOpacity = 0.5;
constexpr char kTextBefore[] = "trevaneTextBefore";

}  // namespace

LabelDelegate::LabelDelegate(const ImageList* images, QObject* parent)
    : QStyledItemDelegate(parent), images_(images) {}

void LabelDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
  QStyledItemDelegate::initStyleOption(option, index);
  // Figures at the right edge would touch the texts of the next column.
  if (option->displayAlignment.testFlag(Qt::AlignRight)) {
    option->text += QChar(0x2002);
  }
  if (images_ == nullptr || index.column() != 0 || (option->state & QStyle::State_Open) == 0) {
    return;
  }
  const QString expanded = index.data(kExpandedImageKeyRole).toString();
  if (!expanded.isEmpty()) {
    option->icon = images_->Icon(expanded);
  }
}

void LabelDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const {
  const bool ghosted = index.column() == 0 && index.data(kGhostedRole).toBool();
  if (ghosted) {
    painter->save();
    painter->setOpacity(kGhostedOpacity);
  }
  QStyledItemDelegate::paint(painter, option, index);
  if (ghosted) {
    painter->restore();
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
  editor->setObjectName(QStringLiteral("txtLabel"));
  editor->setAccessibleName(tr("New name"));
  editor->setFrame(true);
  return editor;
}

void LabelDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
  auto* line = qobject_cast<QLineEdit*>(editor);
  if (line->property(kTextBefore).isValid()) {
    return;  // What has been typed stays when the entry changes meanwhile.
  }
  const QString text = index.data(Qt::EditRole).toString();
  line->setText(text);
  // An editor may not show every character as it is: unchanged means what it made of the name.
  line->setProperty(kTextBefore, line->text());
  const bool isFolder = IsFolderTag(index.data(kTagRole).toInt());
  const auto dot = static_cast<int>(isFolder ? -1 : text.lastIndexOf(u'.'));
  const auto length = dot > 0 ? dot : static_cast<int>(text.size());
  // The view selects all of it right after this.
  QMetaObject::invokeMethod(
      line, [line, length] { line->setSelection(0, length); }, Qt::QueuedConnection);
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
  QMetaObject::invokeMethod(
      const_cast<LabelDelegate*>(this), [this, edited, text] { Q_EMIT LabelEdited(edited, text); },
      Qt::QueuedConnection);
}

bool IsBehindAQuestion(const QWidget& view) {
  const QWidget* question = QApplication::activeModalWidget();
  return question != nullptr && question != view.window();
}

}  // namespace trevane
