#pragma once

#include <QEvent>
#include <QHash>
#include <QObject>

#include <functional>

class QKeyEvent;
class QMouseEvent;
class QPoint;
class QWidget;

namespace trevane {

/// Takes the user's input away while a wait runs: it is dropped, not postponed, because a click that is
/// postponed acts on something else later.
///
/// A press and its release are treated alike: a release whose press came before the wait is delivered, and
/// one whose press was swallowed is swallowed also after it. A key that was down during the wait does nothing
/// until it was released.
class InputSwallower final : public QObject {
  Q_OBJECT

 public:
  struct Rules {
    /// The window is there to be used during the wait.
    std::function<bool(const QWidget& window)> takesInput;
    /// A left click there ends what is waited for, and is delivered.
    std::function<bool(const QWidget& widget, const QPoint& globalPosition)> choosesAnotherPlace;
    /// Text can be typed there that ends what is waited for: left clicks and what an input method composes
    /// are delivered.
    std::function<bool(const QWidget& widget)> takesText;
    /// The key, pressed in the widget or in its window, does one or the other, and is delivered.
    std::function<bool(const QWidget& widget, const QKeyEvent& key)> takesKey;
    /// Esc was pressed in a window that takes no input.
    std::function<void()> escPressed;
  };

  explicit InputSwallower(Rules rules);
  ~InputSwallower() override;

  void Begin();
  void End() { swallowing_ = false; }
  [[nodiscard]] bool IsSwallowing() const noexcept { return swallowing_; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  enum class Key {
    /// The press was delivered.
    Delivered,
    /// As well, but a wait has come since.
    Dead,
    Swallowed
  };

  /// True when the event is to be dropped.
  [[nodiscard]] bool Press(QObject& watched, const QMouseEvent& event);
  [[nodiscard]] bool Move(QObject& watched, const QMouseEvent& event) const;
  [[nodiscard]] bool Release(const QMouseEvent& event);
  [[nodiscard]] bool KeyDown(QObject& watched, QKeyEvent& event);
  [[nodiscard]] bool IsKeyTaken(QObject& watched, const QKeyEvent& event) const;
  [[nodiscard]] bool KeyUp(QObject& watched, const QKeyEvent& event);
  /// Input that is neither a button nor a key.
  [[nodiscard]] bool Other(QObject& watched, QEvent& event);
  /// A sequence of events that begins with `begin` and ends with `end`.
  [[nodiscard]] bool Stroke(QObject& watched, QEvent::Type type, QEvent::Type begin, QEvent::Type end,
                            bool& swallowed) const;
  /// A wait runs, and the event is for a window that takes no input.
  [[nodiscard]] bool IsTakenFrom(QObject& watched) const;
  [[nodiscard]] bool TakesText(const QWidget* widget) const;

  Rules rules_;
  bool swallowing_ = false;
  Qt::MouseButtons swallowedButtons_;
  /// The left button was pressed where text can be typed, and selects some.
  bool selectsText_ = false;
  /// The second press of a double click is dropped with the first.
  bool lastPressSwallowed_ = false;
  bool touchSwallowed_ = false;
  bool penSwallowed_ = false;
  QHash<int, Key> keys_;
};

}  // namespace trevane
