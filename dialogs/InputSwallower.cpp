#include "dialogs/InputSwallower.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

#include <utility>

namespace trevane {

namespace {

/// The widget whose window the system sends the event to, or the receiver itself; null for objects that are
/// neither.
const QWidget* WidgetOf(const QObject& watched) {
  if (watched.isWidgetType()) {
    return static_cast<const QWidget*>(&watched);
  }
  if (watched.isWindowType()) {
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (const QWidget* const window : windows) {
      if (window->windowHandle() == &watched) {
        return window;
      }
    }
  }
  return nullptr;
}

/// The widget below the pointer, where the system sends the event to a window.
const QWidget* PressedWidget(const QObject& watched, const QMouseEvent& event) {
  const QWidget* const widget = WidgetOf(watched);
  const QWidget* const child =
      widget != nullptr && watched.isWindowType() ? widget->childAt(event.position().toPoint()) : nullptr;
  return child != nullptr ? child : widget;
}

}  // namespace

InputSwallower::InputSwallower(Rules rules) : rules_(std::move(rules)) {
  qApp->installEventFilter(this);
}

InputSwallower::~InputSwallower() = default;

void InputSwallower::Begin() {
  if (swallowing_) {
    return;
  }
  swallowing_ = true;
  for (Key& key : keys_) {
    key = key == Key::Delivered ? Key::Dead : key;
  }
  // The filter that was installed last is asked first.
  qApp->installEventFilter(this);
}

bool InputSwallower::IsTakenFrom(QObject& watched) const {
  if (!swallowing_) {
    return false;
  }
  const QWidget* const widget = WidgetOf(watched);
  return widget == nullptr || !rules_.takesInput(*widget->window());
}

bool InputSwallower::TakesText(const QWidget* widget) const {
  return widget != nullptr && rules_.takesText(*widget);
}

bool InputSwallower::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
      return Press(*watched, *static_cast<QMouseEvent*>(event));
    case QEvent::MouseButtonRelease:
      return Release(*static_cast<QMouseEvent*>(event));
    case QEvent::MouseMove:
      return Move(*watched, *static_cast<QMouseEvent*>(event));
    case QEvent::KeyPress:
    case QEvent::ShortcutOverride:
      return KeyDown(*watched, *static_cast<QKeyEvent*>(event));
    case QEvent::KeyRelease:
      return KeyUp(*watched, *static_cast<QKeyEvent*>(event));
    case QEvent::ApplicationDeactivate:
      // Releases are not reported to a program in the background.
      keys_.clear();
      return false;
    default:
      return Other(*watched, *event);
  }
}

bool InputSwallower::Press(QObject& watched, const QMouseEvent& event) {
  bool taken = IsTakenFrom(watched);
  if (taken && event.button() == Qt::LeftButton) {
    const QWidget* const widget = PressedWidget(watched, event);
    selectsText_ = TakesText(widget);
    taken = !selectsText_ &&
            (widget == nullptr || !rules_.choosesAnotherPlace(*widget, event.globalPosition().toPoint()));
  }
  taken = taken || (event.type() == QEvent::MouseButtonDblClick && lastPressSwallowed_ && !swallowing_);
  swallowedButtons_.setFlag(event.button(), taken);
  lastPressSwallowed_ = taken;
  return taken;
}

bool InputSwallower::Move(QObject& watched, const QMouseEvent& event) const {
  return (event.buttons() & swallowedButtons_) != Qt::NoButton ||
         (event.buttons() != Qt::NoButton && IsTakenFrom(watched) && !selectsText_);
}

bool InputSwallower::Release(const QMouseEvent& event) {
  const bool taken = swallowedButtons_.testFlag(event.button());
  selectsText_ = selectsText_ && event.button() != Qt::LeftButton;
  swallowedButtons_.setFlag(event.button(), false);
  return taken;
}

bool InputSwallower::IsKeyTaken(QObject& watched, const QKeyEvent& event) const {
  if (!IsTakenFrom(watched)) {
    return false;
  }
  const auto known = keys_.constFind(event.key());
  if (event.isAutoRepeat() && (known == keys_.constEnd() || *known != Key::Delivered)) {
    return true;
  }
  const QWidget* const widget = WidgetOf(watched);
  return widget == nullptr || !rules_.takesKey(*widget, event);
}

bool InputSwallower::KeyDown(QObject& watched, QKeyEvent& event) {
  const auto drop = [&event] {
    // Otherwise the key would be looked up among the shortcuts. Where the system closes the window for
    // Alt+F4, it does so only after nobody has wanted the key.
    const bool isSystems = event.key() == Qt::Key_F4 && event.modifiers().testFlag(Qt::AltModifier);
    event.setAccepted(!isSystems);
    return true;
  };
  const auto known = keys_.constFind(event.key());
  if (IsKeyTaken(watched, event)) {
    const bool isNew = !event.isAutoRepeat() && event.type() == QEvent::KeyPress;
    if (known == keys_.constEnd() || isNew) {
      keys_.insert(event.key(), Key::Swallowed);
    }
    if (isNew && event.key() == Qt::Key_Escape && event.modifiers() == Qt::NoModifier) {
      rules_.escPressed();
    }
    return drop();
  }
  if (event.isAutoRepeat()) {
    const bool isDead = known != keys_.constEnd() && *known != Key::Delivered;
    return isDead && !swallowing_ ? drop() : false;
  }
  // The event passes here once more for each widget on its way up; it began when its window got it.
  if (known == keys_.constEnd() || watched.isWindowType()) {
    keys_.insert(event.key(), Key::Delivered);
  }
  return false;
}

bool InputSwallower::KeyUp(QObject& watched, const QKeyEvent& event) {
  const auto known = keys_.constFind(event.key());
  if (event.isAutoRepeat()) {
    return IsKeyTaken(watched, event) || (known != keys_.constEnd() && *known != Key::Delivered);
  }
  const bool taken = known != keys_.constEnd() && *known == Key::Swallowed;
  keys_.remove(event.key());
  return taken;
}

bool InputSwallower::Stroke(QObject& watched, QEvent::Type type, QEvent::Type begin, QEvent::Type end,
                            bool& swallowed) const {
  if (type == begin) {
    swallowed = IsTakenFrom(watched);
  }
  return type == end ? std::exchange(swallowed, false) : swallowed || IsTakenFrom(watched);
}

bool InputSwallower::Other(QObject& watched, QEvent& event) {
  switch (event.type()) {
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
      return Stroke(watched, event.type(), QEvent::TouchBegin, QEvent::TouchEnd, touchSwallowed_);
    case QEvent::TabletPress:
    case QEvent::TabletMove:
    case QEvent::TabletRelease:
      return Stroke(watched, event.type(), QEvent::TabletPress, QEvent::TabletRelease, penSwallowed_);
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
      if (IsTakenFrom(watched)) {
        event.ignore();
        return true;
      }
      return false;
    case QEvent::Shortcut:
    case QEvent::InputMethod:
      return IsTakenFrom(watched) && !TakesText(WidgetOf(watched));
    case QEvent::Wheel:
    case QEvent::NativeGesture:
    case QEvent::ContextMenu:
    case QEvent::ToolTip:
    case QEvent::WhatsThis:
      return IsTakenFrom(watched);
    default:
      return false;
  }
}

}  // namespace trevane
