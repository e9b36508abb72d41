#pragma once

#include <QKeyEvent>

namespace trevane {

/// The meaning of a key in tree and list.
enum class ViewKey {
  None,
  /// Enter.
  Open,
  /// Backspace or Alt+Up.
  Parent,
  /// Alt+Enter.
  Properties,
  /// The menu key or Shift+F10.
  Menu,
};

[[nodiscard]] inline ViewKey ViewKeyOf(const QKeyEvent& event) {
  const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
  switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return modifiers == Qt::NoModifier    ? ViewKey::Open
             : modifiers == Qt::AltModifier ? ViewKey::Properties
                                            : ViewKey::None;
    case Qt::Key_Backspace:
      return modifiers == Qt::NoModifier ? ViewKey::Parent : ViewKey::None;
    case Qt::Key_Up:
      return modifiers == Qt::AltModifier ? ViewKey::Parent : ViewKey::None;
    case Qt::Key_Menu:
      return ViewKey::Menu;
    case Qt::Key_F10:
      return modifiers == Qt::ShiftModifier ? ViewKey::Menu : ViewKey::None;
    default:
      return ViewKey::None;
  }
}

/// Ctrl+C, Ctrl+X or Ctrl+V without any other modifier.
[[nodiscard]] inline bool IsClipboardKey(const QKeyEvent& event) {
  return (event.modifiers() & ~Qt::KeypadModifier) == Qt::ControlModifier &&
         (event.key() == Qt::Key_C || event.key() == Qt::Key_X || event.key() == Qt::Key_V);
}

}  // namespace trevane
