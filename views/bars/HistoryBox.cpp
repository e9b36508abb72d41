#include "views/bars/HistoryBox.h"

#include "base/ShownText.h"
#include "views/ViewKeys.h"
#include "views/bars/History.h"

#include <QAbstractItemView>
#include <QAction>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QStyle>
#include <QWheelEvent>

namespace trevane {

namespace {

// Both are readable on the usual background of their theme.
constexpr QRgb kProblemOnLight = 0xFFB00020;
constexpr QRgb kProblemOnDark = 0xFFFF8A80;
constexpr int kMiddleGrey = 128;

}  // namespace

HistoryBox::HistoryBox(QWidget* parent) : QComboBox(parent) {
  setEditable(true);
  setInsertPolicy(QComboBox::NoInsert);
  setCompleter(nullptr);
  setDuplicatesEnabled(true);
  view()->setTextElideMode(Qt::ElideMiddle);
}

void HistoryBox::SetSpokenName(const QString& name) {
  setAccessibleName(name);
  lineEdit()->setAccessibleName(name);
}

void HistoryBox::AddToHistory(const QString& used) {
  const QString text = currentText();
  const int cursor = lineEdit()->cursorPosition();
  const QStringList history = AddedToHistory(History(), used);
  {
    const QSignalBlocker box(this);
    const QSignalBlocker edit(lineEdit());
    clear();
    for (const QString& entry : history) {
      addItem(entry);
      setItemData(count() - 1, PlainToolTip(entry), Qt::ToolTipRole);
    }
    // The arrow keys begin at the newest entry.
    setCurrentIndex(-1);
    setEditText(text);
  }
  lineEdit()->setCursorPosition(cursor);
}

QStringList HistoryBox::History() const {
  QStringList history;
  for (int i = 0; i < count(); ++i) {
    history += itemText(i);
  }
  return history;
}

bool HistoryBox::IsTyping(const QKeyEvent& key) {
  const bool composes = !key.text().isEmpty() && key.text().front().isPrint();
  if (key.modifiers().testFlag(Qt::AltModifier)) {
    // The right Alt key of many keyboards is both, and types "\" on some.
    return composes && key.modifiers().testFlag(Qt::ControlModifier);
  }
  switch (key.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Backspace:
    case Qt::Key_Delete:
    case Qt::Key_Insert:
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Shift:
    case Qt::Key_Control:
      return true;
    default:
      break;
  }
  return composes || key.matches(QKeySequence::SelectAll) || key.matches(QKeySequence::Copy) ||
         key.matches(QKeySequence::Cut) || key.matches(QKeySequence::Paste) ||
         key.matches(QKeySequence::Undo) || key.matches(QKeySequence::Redo);
}

void HistoryBox::ShowProblem(const QString& problem) {
  if (problem == problem_) {
    return;
  }
  if (problem_.isEmpty()) {
    usualToolTip_ = toolTip();
  }
  problem_ = problem;
  setToolTip(problem.isEmpty() ? usualToolTip_ : PlainToolTip(problem));
  setAccessibleDescription(problem);
  lineEdit()->setAccessibleDescription(problem);
  if (problem.isEmpty()) {
    delete warning_;
    warning_ = nullptr;
  } else if (!warning_) {
    warning_ = lineEdit()->addAction(style()->standardIcon(QStyle::SP_MessageBoxWarning, nullptr, this),
                                     QLineEdit::TrailingPosition);
  }
  if (warning_) {
    warning_->setToolTip(toolTip());
  }
  UpdateLook();
}

void HistoryBox::UpdateLook() {
  QPalette look;
  if (!problem_.isEmpty()) {
    const bool isDark = palette().color(QPalette::Base).lightness() < kMiddleGrey;
    look.setColor(QPalette::Text, QColor::fromRgb(isDark ? kProblemOnDark : kProblemOnLight));
  }
  lineEdit()->setPalette(look);
}

void HistoryBox::changeEvent(QEvent* event) {
  QComboBox::changeEvent(event);
  if (event->type() == QEvent::PaletteChange && !problem_.isEmpty()) {
    UpdateLook();
  }
}

void HistoryBox::keyPressEvent(QKeyEvent* event) {
  const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (isEnter && (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier) {
    event->accept();
    Q_EMIT Entered();
    return;
  }
  if (ViewKeyOf(*event) == ViewKey::Parent && event->key() != Qt::Key_Backspace) {
    event->accept();
    Q_EMIT ParentKeyPressed();
    return;
  }
  if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
    event->accept();
    Q_EMIT EscapePressed();
    return;
  }
  QComboBox::keyPressEvent(event);
}

void HistoryBox::wheelEvent(QWheelEvent* event) {
  event->ignore();
}

}  // namespace trevane
