#pragma once

#include <QPalette>
#include <QProxyStyle>

namespace trevane {

/// Draws the controls of a window that is disabled as a whole as if it were enabled: a window behind a gauge
/// or a question is not grey. A control that is disabled by itself is drawn as such, in any window.
class KeptLooks final : public QProxyStyle {
  Q_OBJECT

 public:
  /// Around the style that the application has. The application owns it.
  explicit KeptLooks(const QString& baseStyle);

  /// Makes it the application's style, once.
  static void Install();
  /// Returns the palette with the disabled colours replaced by the enabled ones; a style cannot change these.
  [[nodiscard]] static QPalette PaletteFor(QPalette palette);

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;
  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                          const QWidget* widget) const override;
};

}  // namespace trevane
