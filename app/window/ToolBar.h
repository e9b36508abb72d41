#pragma once

#include "fileops/commands/CommandTable.h"

#include <QWidget>

#include <functional>
#include <vector>

class QToolButton;

namespace trevane {

class ImageList;

/// A toolbar made from the rows of the command table, its buttons addressed by their position from 1. Rows
/// are laid out by the bar itself: a placeholder is as wide as it is told to be, and what stands behind it
/// follows.
class ToolBar final : public QWidget {
  Q_OBJECT

 public:
  /// Logical pixels. Five separators and nine buttons in front of the main toolbar's placeholder add up to
  /// the left edge that the window's layout counts with.
  static constexpr int kButtonExtent = 22;
  static constexpr int kLeastHeight = 26;
  static constexpr int kFirstRowLeft = 0;

  ToolBar(Place place, const ImageList& images, QWidget* parent = nullptr);

  /// Null for a position that holds no button.
  [[nodiscard]] QToolButton* Button(int position) const;

  /// All of them, in the order of their positions.
  [[nodiscard]] std::vector<QToolButton*> Buttons() const;

  /// Width in logical pixels of the room that a placeholder keeps.
  void SetPlaceholderWidth(int position, int width);
  /// Logical pixels; never less than kLeastHeight. The bar asks for that height and centres its buttons in
  /// it.
  void SetBarHeight(int height);

  /// Left edge in logical pixels.
  [[nodiscard]] int LeftOf(int position) const;

  [[nodiscard]] QSize sizeHint() const override;

 Q_SIGNALS:
  void ButtonClicked(int position);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  struct Cell {
    const CommandRow* row = nullptr;
    QToolButton* button = nullptr;
    int left = 0;
    int width = 0;
  };

  void Arrange();
  void UpdateImage(const Cell& cell);
  [[nodiscard]] Cell* Find(int position);
  [[nodiscard]] const Cell* Find(int position) const;

  const ImageList& images_;
  std::vector<Cell> cells_;
  int barHeight_ = kLeastHeight;
};

}  // namespace trevane
