#pragma once

#include <QObject>
#include <QString>

class QPalette;

namespace trevane {

/// Draws the program dark where the system's colours are dark. The styles that draw like Windows can only
/// draw light windows; while the palette is dark, a style that takes every colour from the palette replaces
/// them.
class SystemStyle final : public QObject {
 public:
  /// Follows the application's palette from now on.
  SystemStyle();

  /// The name of the style to draw with: `own`, the system's, where that style can draw the palette.
  [[nodiscard]] static QString StyleFor(const QString& own, const QPalette& palette);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Choose();

  QString own_;
};

}  // namespace trevane
