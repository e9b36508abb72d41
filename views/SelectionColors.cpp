#include "views/SelectionColors.h"

#include <QApplication>
#include <QStyleOptionViewItem>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace trevane {
namespace {

/// Of a text that is not dimmed: the range between this and kReadableContrast is the room for dimming.
constexpr double kFullContrast = 7.5;
/// Of a dimmed text: styles lay a veil of the highlight over the row that has the focus.
constexpr double kDimmedContrast = kReadableContrast + 0.9;
/// How much of the text's colour is in the grey.
constexpr double kGreyShare = 0.22;
constexpr double kMostDimming = 0.45;
constexpr double kStep = 0.02;

double Linear(double channel) {
  return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double Luminance(const QColor& color) {
  return 0.2126 * Linear(color.redF()) + 0.7152 * Linear(color.greenF()) + 0.0722 * Linear(color.blueF());
}

QColor Mixed(const QColor& from, const QColor& to, double share) {
  const auto channel = [share](float a, float b) {
    return std::clamp(a + (b - a) * static_cast<float>(share), 0.0F, 1.0F);
  };
  return QColor::fromRgbF(channel(from.redF(), to.redF()), channel(from.greenF(), to.greenF()),
                          channel(from.blueF(), to.blueF()));
}

/// `color` moved towards `to` until a text on it can be read, dimmed as well.
QColor MovedToContrast(const QColor& color, const QColor& to, const QColor& text) {
  for (double share = 0; share < 1; share += kStep) {
    const QColor moved = Mixed(color, to, share);
    if (Contrast(moved, text) >= kFullContrast) {
      return moved;
    }
  }
  return to;
}

}  // namespace

double Contrast(const QColor& one, const QColor& other) {
  const double a = Luminance(one) + 0.05;
  const double b = Luminance(other) + 0.05;
  return std::max(a, b) / std::min(a, b);
}

SelectionColors SelectionColorsOf(const QPalette& palette, bool focused) {
  if (focused) {
    const QColor highlight = palette.color(QPalette::Active, QPalette::Highlight);
    const QColor text = palette.color(QPalette::Active, QPalette::HighlightedText);
    const bool brightText = Luminance(text) > Luminance(highlight);
    const QColor clearText = brightText ? Qt::white : Qt::black;
    return {MovedToContrast(highlight, brightText ? Qt::black : Qt::white, clearText), clearText};
  }
  const QColor base = palette.color(QPalette::Active, QPalette::Base);
  const QColor clearText =
      Luminance(palette.color(QPalette::Active, QPalette::Text)) > Luminance(base) ? Qt::white : Qt::black;
  const auto grey = static_cast<int>(std::lround(Mixed(base, clearText, kGreyShare).lightnessF() * 255));
  return {
      MovedToContrast(QColor(grey, grey, grey), clearText == Qt::white ? Qt::black : Qt::white, clearText),
      clearText};
}

QColor Dimmed(const QColor& text, const QColor& background) {
  for (double share = kMostDimming; share > 0; share -= kStep) {
    const QColor dimmed = Mixed(text, background, share);
    if (Contrast(dimmed, background) >= kDimmedContrast) {
      return dimmed;
    }
  }
  return text;
}

void ApplySelectionColors(const QWidget& pane, QStyleOptionViewItem& option) {
  const QWidget* focus = QApplication::focusWidget();
  if (focus != nullptr && pane.isAncestorOf(focus)) {
    option.state |= QStyle::State_Active;
  }
  const SelectionColors with = SelectionColorsOf(option.palette, true);
  const SelectionColors without = SelectionColorsOf(option.palette, false);
  option.palette.setColor(QPalette::Active, QPalette::Highlight, with.background);
  option.palette.setColor(QPalette::Active, QPalette::HighlightedText, with.text);
  for (const QPalette::ColorGroup group : {QPalette::Inactive, QPalette::Disabled}) {
    option.palette.setColor(group, QPalette::Highlight, without.background);
    option.palette.setColor(group, QPalette::HighlightedText, without.text);
  }
}

}  // namespace trevane
