#include "app/window/ToolBar.h"

#include "app/window/WindowLayout.h"
#include "fileops/commands/CommandTable.h"
#include "views/ImageList.h"

#include <QEvent>
#include <QPainter>
#include <QStyleOption>
#include <QToolButton>

#include <algorithm>

namespace trevane {

ToolBar::ToolBar(CommandPlace place, const ImageList& images, QWidget* parent)
    : QWidget(parent), images_(images) {
  const std::vector<const CommandItem*> items = ItemsOf(place);
  // The separators in front of the box share the room that the buttons leave there, to the pixel.
  const auto box = std::ranges::find(items, ItemStyle::Box, &CommandItem::style);
  const auto separators = static_cast<int>(std::count_if(
      items.begin(), box, [](const CommandItem* item) { return item->style == ItemStyle::Separator; }));
  const auto buttons = static_cast<int>(box - items.begin()) - separators;
  const int room = ToPixels(layout::kFilterPlaceholderLeft) - buttons * kButtonExtent;

  int separator = 0;
  for (const CommandItem* item : items) {
    Cell cell{.item = item};
    switch (item->style) {
      case ItemStyle::Separator:
        cell.width = room * (separator + 1) / separators - room * separator / separators;
        ++separator;
        break;
      case ItemStyle::Box:
      case ItemStyle::Submenu:
        break;
      case ItemStyle::Command: {
        const CommandId id = item->command->id;
        const CheckMark checkMark = item->command->checkMark;
        auto* button = new QToolButton(this);
        button->setObjectName(QString::fromLatin1(item->key));
        button->setAccessibleName(item->SpokenCaption());
        button->setToolTip(QString::fromLatin1(item->toolTip));
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::TabFocus);
        button->setIconSize(QSize(16, 16));
        button->setCheckable(checkMark != CheckMark::None);
        button->setChecked(checkMark == CheckMark::Checked);
        button->setEnabled(item->enabledAtStart);
        cell.button = button;
        cell.width = kButtonExtent;
        connect(button, &QToolButton::clicked, this, [this, id] { Q_EMIT ButtonClicked(id); });
        connect(button, &QToolButton::toggled, this, [this, cell] { UpdateImage(cell); });
        UpdateImage(cell);
        break;
      }
    }
    cells_.push_back(cell);
  }
  Arrange();
}

QToolButton* ToolBar::Button(CommandId id) const {
  const auto cell = std::ranges::find_if(cells_, [id](const Cell& candidate) {
    return candidate.item->command && candidate.item->command->id == id;
  });
  return cell != cells_.end() ? cell->button : nullptr;
}

std::vector<QToolButton*> ToolBar::Buttons() const {
  std::vector<QToolButton*> buttons;
  for (const Cell& cell : cells_) {
    if (cell.button) {
      buttons.push_back(cell.button);
    }
  }
  return buttons;
}

void ToolBar::SetBoxWidth(int width) {
  for (Cell& cell : cells_) {
    if (cell.item->style == ItemStyle::Box && cell.width != width) {
      cell.width = std::max(width, 0);
      Arrange();
    }
  }
}

void ToolBar::SetBarHeight(int height) {
  barHeight_ = std::max(height, kLeastHeight);
  updateGeometry();
  Arrange();
}

QSize ToolBar::sizeHint() const {
  const Cell& last = cells_.back();
  return {last.left + last.width, barHeight_};
}

void ToolBar::Arrange() {
  int left = kFirstItemLeft;
  for (Cell& cell : cells_) {
    cell.left = left;
    if (cell.button) {
      cell.button->setGeometry(left, (barHeight_ - kButtonExtent) / 2, kButtonExtent, kButtonExtent);
    }
    left += cell.width;
  }
  update();
}

void ToolBar::UpdateImage(const Cell& cell) {
  const char* image = cell.button->isChecked() ? cell.item->pressedImage : cell.item->image;
  cell.button->setIcon(images_.Icon(QString::fromLatin1(image)));
}

void ToolBar::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  for (const Cell& cell : cells_) {
    // In front of the first button there is nothing to separate.
    if (cell.item->style != ItemStyle::Separator || cell.left == 0) {
      continue;
    }
    QStyleOption option;
    option.initFrom(this);
    option.state |= QStyle::State_Horizontal;
    option.rect = QRect(cell.left, 2, cell.width, barHeight_ - 4);
    style()->drawPrimitive(QStyle::PE_IndicatorToolBarSeparator, &option, &painter, this);
  }
}

void ToolBar::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::StyleChange || event->type() == QEvent::LayoutDirectionChange) {
    update();
  }
}

}  // namespace trevane
