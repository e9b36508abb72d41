#pragma once

#include <QObject>
#include <QString>

class QPalette;

namespace trevane {

/// Lets the program be drawn dark where the system's colours are. The styles that draw as Windows does know
/// light windows alone: in their place one draws that takes every colour from the palette, for as long as it
/// is dark.
class SystemStyle final : public QObject {
 public:
  /// Follows the application from here on.
  SystemStyle();

  /// The name of the style to draw with: `own`, the system's, wherever that can.
  [[nodiscard]] static QString StyleFor(const QString& own, const QPalette& palette);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Choose();

  QString own_;
};

}  // namespace trevane
