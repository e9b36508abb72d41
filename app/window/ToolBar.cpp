#include "app/window/ToolBar.h"

#include "app/window/WindowLayout.h"
#include "views/ImageList.h"

#include <QEvent>
#include <QPainter>
#include <QStyleOption>
#include <QToolButton>

#include <algorithm>

namespace trevane {

using namespace Qt::StringLiterals;

ToolBar::ToolBar(Place place, const ImageList& images, QWidget* parent) : QWidget(parent), images_(images) {
  const auto rows = RowsOf(place);
  // The separators share what the buttons leave of the room in front of the placeholder, to the pixel.
  const auto separators = std::ranges::count(rows, RowStyle::Separator, &CommandRow::style);
  const auto buttons = std::ranges::count_if(rows, [](const CommandRow& row) {
    return row.style == RowStyle::Command && row.place == Place::Toolbar;
  });
  const int room = ToPixels(layout::kFilterPlaceholderLeft) - static_cast<int>(buttons) * kButtonExtent;

  int separator = 0;
  for (const CommandRow& row : rows) {
    Cell cell{.row = &row};
    switch (row.style) {
      case RowStyle::Separator:
        cell.width = room * (separator + 1) / static_cast<int>(separators) -
                     room * separator / static_cast<int>(separators);
        ++separator;
        break;
      case RowStyle::Placeholder:
      case RowStyle::Submenu:
        break;
      case RowStyle::Command:
      case RowStyle::Check: {
        auto* button = new QToolButton(this);
        button->setObjectName(QString::fromLatin1(row.key));
        button->setAccessibleName(row.SpokenCaption());
        button->setToolTip(QString::fromLatin1(row.toolTip));
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::TabFocus);
        button->setIconSize(QSize(16, 16));
        button->setCheckable(row.style == RowStyle::Check);
        cell.button = button;
        cell.width = kButtonExtent;
        connect(button, &QToolButton::clicked, this,
                [this, position = row.index] { Q_EMIT ButtonClicked(position); });
        connect(button, &QToolButton::toggled, this, [this, position = row.index] {
          if (const Cell* toggled = Find(position))
            UpdateImage(*toggled);
        });
        UpdateImage(cell);
        break;
      }
    }
    cells_.push_back(cell);
  }
  Arrange();
}

QToolButton* ToolBar::Button(int position) const {
  const Cell* cell = Find(position);
  return cell ? cell->button : nullptr;
}

std::vector<QToolButton*> ToolBar::Buttons() const {
  std::vector<QToolButton*> buttons;
  for (const Cell& cell : cells_) {
    if (cell.button)
      buttons.push_back(cell.button);
  }
  return buttons;
}

void ToolBar::SetPlaceholderWidth(int position, int width) {
  if (Cell* cell = Find(position); cell && cell->width != width) {
    cell->width = std::max(width, 0);
    Arrange();
  }
}

void ToolBar::SetBarHeight(int height) {
  barHeight_ = std::max(height, kLeastHeight);
  updateGeometry();
  Arrange();
}

int ToolBar::LeftOf(int position) const {
  const Cell* cell = Find(position);
  return cell ? cell->left : 0;
}

QSize ToolBar::sizeHint() const {
  const Cell& last = cells_.back();
  return {last.left + last.width, barHeight_};
}

void ToolBar::Arrange() {
  int left = kFirstRowLeft;
  for (Cell& cell : cells_) {
    cell.left = left;
    if (cell.button)
      cell.button->setGeometry(left, (barHeight_ - kButtonExtent) / 2, kButtonExtent, kButtonExtent);
    left += cell.width;
  }
  update();
}

void ToolBar::UpdateImage(const Cell& cell) {
  const bool down = cell.row->style == RowStyle::Check && cell.button->isChecked();
  cell.button->setIcon(
      images_.Icon(QString::fromLatin1(down ? cell.row->checkedImageKey : cell.row->imageKey)));
}

ToolBar::Cell* ToolBar::Find(int position) {
  const auto cell = std::ranges::find_if(cells_, [&](const Cell& c) { return c.row->index == position; });
  return cell != cells_.end() ? &*cell : nullptr;
}

const ToolBar::Cell* ToolBar::Find(int position) const {
  return const_cast<ToolBar*>(this)->Find(position);
}

void ToolBar::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  for (const Cell& cell : cells_) {
    // A line in front of the first button would separate it from nothing.
    if (cell.row->style != RowStyle::Separator || cell.left == 0)
      continue;
    QStyleOption option;
    option.initFrom(this);
    option.state |= QStyle::State_Horizontal;
    option.rect = QRect(cell.left, 2, cell.width, barHeight_ - 4);
    style()->drawPrimitive(QStyle::PE_IndicatorToolBarSeparator, &option, &painter, this);
  }
}

void ToolBar::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::StyleChange || event->type() == QEvent::LayoutDirectionChange)
    update();
}

}  // namespace trevane
