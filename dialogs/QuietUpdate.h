#pragma once

#include <QWidget>

namespace trevane {

/// While it lives, what is set on the widget does not paint it; the caller asks for the painting when it is
/// due. setUpdatesEnabled() would not do: enabling asks for a painting by itself, and that for every entry is
/// what must not happen.
class QuietUpdate final {
 public:
  explicit QuietUpdate(QWidget& widget) : widget_(widget), was_(widget.testAttribute(kBlocked)) {
    widget_.setAttribute(kBlocked, true);
  }
  ~QuietUpdate() { widget_.setAttribute(kBlocked, was_); }
  QuietUpdate(const QuietUpdate&) = delete;
  QuietUpdate& operator=(const QuietUpdate&) = delete;

 private:
  static constexpr Qt::WidgetAttribute kBlocked = Qt::WA_UpdatesDisabled;

  QWidget& widget_;
  bool was_;
};

}  // namespace trevane
