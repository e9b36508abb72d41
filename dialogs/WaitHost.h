#pragma once

class QKeyEvent;
class QPoint;
class QWidget;

namespace trevane {

/// The part of the main window in a wait.
class WaitHost {
 public:
  virtual ~WaitHost() = default;

  /// Events are about to run within a command: drags, label editors and whatever waits for the rest of a
  /// click end, with no effect. Menus and drop-downs are closed already.
  virtual void EndGestures() = 0;
  /// A press of the left button there would choose another place to display instead of the one that is being
  /// displayed.
  [[nodiscard]] virtual bool ChoosesAnotherPlace(const QWidget& widget,
                                                 const QPoint& globalPosition) const = 0;
  /// An address can be typed there that is gone to instead of the place that is being displayed.
  [[nodiscard]] virtual bool TakesAnotherAddress(const QWidget& widget) const = 0;
  /// The key, pressed in the window of the widget, does one or the other.
  [[nodiscard]] virtual bool ChoosesAnotherPlace(const QWidget& widget, const QKeyEvent& key) const = 0;
  /// A command is on the stack.
  [[nodiscard]] virtual bool IsInCommand() const = 0;
};

}  // namespace trevane
