#pragma once

#include <QLabel>

namespace trevane {

/// One line of plain text, cut in the middle where it does not fit. Its height is fixed and its width is
/// given by its surroundings, so that another text never changes a layout.
class ElidedLabel final : public QLabel {
 public:
  explicit ElidedLabel(QWidget* parent = nullptr);

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace trevane
