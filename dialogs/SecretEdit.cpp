#include "dialogs/SecretEdit.h"

#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMenu>

#include <algorithm>
#include <array>

namespace trevane {

SecretEdit::SecretEdit(bool isHidden, QWidget* parent) : QLineEdit(parent) {
  setEchoMode(isHidden ? QLineEdit::Password : QLineEdit::Normal);
  setInputMethodHints(inputMethodHints() | Qt::ImhSensitiveData | Qt::ImhNoPredictiveText |
                      Qt::ImhNoAutoUppercase | (isHidden ? Qt::ImhHiddenText : Qt::ImhNone));
  setMaxLength(kLongest);
  setDragEnabled(false);
  setAcceptDrops(false);
}

SecretEdit::~SecretEdit() {
  Wipe();
}

Secret SecretEdit::Typed() const {
  return Secret(QStringView(text()));
}

void SecretEdit::Wipe() {
  {
    // This text shares its characters with the box, which hands out no others.
    const QString typed = text();
    WipeBytes(const_cast<QChar*>(typed.constData()), std::size_t(typed.size()) * sizeof(QChar));
  }
  // Forgets, too, what could be undone.
  setText(QString());
}

void SecretEdit::keyPressEvent(QKeyEvent* event) {
  constexpr std::array kKept{QKeySequence::Copy, QKeySequence::Cut, QKeySequence::Undo, QKeySequence::Redo};
  if (std::any_of(kKept.begin(), kKept.end(),
                  [event](QKeySequence::StandardKey key) { return event->matches(key); })) {
    event->accept();
    return;
  }
  QLineEdit::keyPressEvent(event);
}

void SecretEdit::contextMenuEvent(QContextMenuEvent* event) {
  QMenu menu(this);
  QAction* const paste = menu.addAction(QStringLiteral("&Paste"));
  paste->setEnabled(!QGuiApplication::clipboard()->text().isEmpty());
  if (menu.exec(event->globalPos()) == paste) {
    this->paste();
  }
}

}  // namespace trevane
