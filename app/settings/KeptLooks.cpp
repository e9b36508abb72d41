#include "app/settings/KeptLooks.h"

#include <QApplication>
#include <QStyleOption>
#include <QWidget>

namespace trevane {

namespace {

/// The control is disabled for no other reason than that its window is.
bool IsDisabledByWindow(const QWidget* control) {
  return control && !control->isEnabled() && !control->isWindow() && control->isEnabledTo(control->window());
}

/// Shows a style that the control is enabled, for as long as it lives. The style reads
/// only the option, and a copy of it would have to know its type.
class AsEnabled {
 public:
  AsEnabled(const QStyleOption* option, const QWidget* control) {
    if (!option || option->state.testFlag(QStyle::State_Enabled) || !IsDisabledByWindow(control)) {
      return;
    }
    option_ = const_cast<QStyleOption*>(option);
    state_ = option_->state;
    group_ = option_->palette.currentColorGroup();
    option_->state |= QStyle::State_Enabled;
    option_->palette.setCurrentColorGroup(control->isActiveWindow() ? QPalette::Active : QPalette::Inactive);
  }
  ~AsEnabled() {
    if (option_) {
      option_->state = state_;
      option_->palette.setCurrentColorGroup(group_);
    }
  }
  AsEnabled(const AsEnabled&) = delete;
  AsEnabled& operator=(const AsEnabled&) = delete;

 private:
  QStyleOption* option_ = nullptr;
  QStyle::State state_;
  QPalette::ColorGroup group_ = QPalette::Active;
};

}  // namespace

KeptLooks::KeptLooks(const QString& baseStyle) : QProxyStyle(baseStyle) {
  // Known by the name of what it draws with.
  setObjectName(baseStyle);
}

void KeptLooks::Install() {
  const QStyle* style = QApplication::style();
  if (!qobject_cast<const KeptLooks*>(style)) {
    QApplication::setStyle(new KeptLooks(style->name()));
  }
}

QPalette KeptLooks::PaletteFor(QPalette palette) {
  for (int role = 0; role < QPalette::NColorRoles; ++role) {
    const auto colour = static_cast<QPalette::ColorRole>(role);
    palette.setBrush(QPalette::Disabled, colour, palette.brush(QPalette::Active, colour));
  }
  return palette;
}

void KeptLooks::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const {
  const AsEnabled enabled(option, widget);
  QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void KeptLooks::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                            const QWidget* widget) const {
  const AsEnabled enabled(option, widget);
  QProxyStyle::drawControl(element, option, painter, widget);
}

void KeptLooks::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                   QPainter* painter, const QWidget* widget) const {
  const AsEnabled enabled(option, widget);
  QProxyStyle::drawComplexControl(control, option, painter, widget);
}

}  // namespace trevane
