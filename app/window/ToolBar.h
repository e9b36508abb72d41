#pragma once

#include "fileops/commands/CommandId.h"
#include "fileops/commands/CommandPlace.h"

#include <QWidget>

#include <vector>

class QToolButton;

namespace trevane {

class ImageList;
struct CommandItem;

/// A toolbar made from its items in the command table. It leaves room for one box, whose width is set from
/// outside; the items behind the box follow.
class ToolBar final : public QWidget {
  Q_OBJECT

 public:
  /// Logical pixels. The separators and buttons in front of the main toolbar's box add up to the left edge
  /// that the window's layout gives the box.
  static constexpr int kButtonExtent = 22;
  static constexpr int kLeastHeight = 26;
  static constexpr int kFirstItemLeft = 0;

  ToolBar(CommandPlace place, const ImageList& images, QWidget* parent = nullptr);

  /// Null for a command that has no button here.
  [[nodiscard]] QToolButton* Button(CommandId id) const;

  /// All buttons in the order of their positions.
  [[nodiscard]] std::vector<QToolButton*> Buttons() const;

  /// Logical pixels.
  void SetBoxWidth(int width);
  /// Logical pixels; never less than kLeastHeight. The buttons are centred in it.
  void SetBarHeight(int height);

  [[nodiscard]] QSize sizeHint() const override;

 Q_SIGNALS:
  void ButtonClicked(trevane::CommandId id);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  struct Cell {
    const CommandItem* item = nullptr;
    QToolButton* button = nullptr;
    int left = 0;
    int width = 0;
  };

  void Arrange();
  void UpdateImage(const Cell& cell);

  const ImageList& images_;
  std::vector<Cell> cells_;
  int barHeight_ = kLeastHeight;
};

}  // namespace trevane
