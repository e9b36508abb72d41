#pragma once

#include <QColor>
#include <QPalette>

class QStyleOptionViewItem;
class QWidget;

namespace trevane {

/// The least contrast of a text that can be read without effort.
inline constexpr double kReadableContrast = 4.5;

/// Between 1, no difference, and 21, black on white; the order of the two does not matter.
[[nodiscard]] double Contrast(const QColor& one, const QColor& other);

struct SelectionColors {
  QColor background;
  QColor text;
};

/// The colours of a selection: in a pane with the focus the palette's own highlight as far as it can be read,
/// in a pane without it grey. Both leave room for a text that is dimmed.
[[nodiscard]] SelectionColors SelectionColorsOf(const QPalette& palette, bool focused);

/// `text` faded towards the background as far as it can still be read.
[[nodiscard]] QColor Dimmed(const QColor& text, const QColor& background);

/// Gives the option of a pane its selection colours. A pane whose label is being edited counts as having the
/// focus.
void ApplySelectionColors(const QWidget& pane, QStyleOptionViewItem& option);

}  // namespace trevane
