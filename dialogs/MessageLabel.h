#pragma once

#include <QLabel>

namespace trevane {

/// Plain text in as many lines as it needs. Lines end between words; a word that is too long for a line, as a
/// path without blanks is, is broken instead of running out of the window.
class MessageLabel final : public QLabel {
 public:
  explicit MessageLabel(QWidget* parent = nullptr);

  /// The size of the text when its lines are at most `width` pixels long.
  [[nodiscard]] QSize SizeFor(int width) const;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace trevane
