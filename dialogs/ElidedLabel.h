#pragma once

#include <QLabel>

namespace trevane {

/// One line of plain text, cut where it does not fit, in the middle unless SetElideMode says otherwise; a
/// tooltip then shows the whole of it. Its height is fixed and its width is given by its surroundings, so
/// that another text never changes a layout.
class ElidedLabel final : public QLabel {
 public:
  explicit ElidedLabel(QWidget* parent = nullptr);

  void SetElideMode(Qt::TextElideMode mode);

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  [[nodiscard]] QString Line() const;

  Qt::TextElideMode elide_ = Qt::ElideMiddle;
};

}  // namespace trevane
