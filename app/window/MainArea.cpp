#include "app/window/MainArea.h"

#include "app/window/ToolBar.h"
#include "app/window/WindowLayout.h"

#include <QComboBox>
#include <QMouseEvent>
#include <QStatusBar>

#include <algorithm>

namespace trevane {

namespace {
constexpr int kLeastBoxHeight = 22;
constexpr int kBoxPadding = 6;  // above and below the text of a box, frame included
constexpr int kBarPadding = 4;  // above and below a box
}  // namespace

SplitterBar::SplitterBar(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("imgBar"));
  setCursor(Qt::SplitHCursor);
}

void SplitterBar::mouseMoveEvent(QMouseEvent* event) {
  if (event->buttons() == Qt::LeftButton && event->modifiers() == Qt::NoModifier) {
    Q_EMIT Dragged(event->position().toPoint().x());
  }
}

MainArea::MainArea(QWidget* parent) : QWidget(parent), splitter_(new SplitterBar(this)) {
  connect(splitter_, &SplitterBar::Dragged, this, &MainArea::DragSplitterBy);
}

void MainArea::SetParts(const Parts& parts) {
  parts_ = parts;
  // A larger text makes the boxes higher, and the bars with them.
  const int boxHeight = std::max(kLeastBoxHeight, parts_.addressBox->fontMetrics().height() + kBoxPadding);
  parts_.mainToolBar->SetBarHeight(boxHeight + kBarPadding);
  parts_.addressToolBar->SetBarHeight(boxHeight + kBarPadding);
  const int mainHeight = parts_.mainToolBar->sizeHint().height();
  const int viewTop = mainHeight + parts_.addressToolBar->sizeHint().height();
  parts_.mainToolBar->setGeometry(0, 0, width(), mainHeight);
  parts_.addressToolBar->setGeometry(0, mainHeight, width(), viewTop - mainHeight);

  const int boxTop = (mainHeight - boxHeight) / 2;
  const int labelWidth = parts_.addressLabel->sizeHint().width();
  parts_.addressLabel->setGeometry(6, mainHeight + boxTop, labelWidth, boxHeight);
  parts_.addressBox->setGeometry(6 + labelWidth + 6, mainHeight + boxTop, 200, boxHeight);
  parts_.filterBox->setGeometry(ToPixels(layout::kFilterPlaceholderLeft), boxTop, kFilterBoxWidth, boxHeight);
  parts_.mainToolBar->SetBoxWidth(kFilterBoxWidth);
  parts_.addressToolBar->SetBoxWidth(parts_.addressBox->geometry().right() + 4);

  parts_.tree->setGeometry(0, viewTop, kTreeWidth, ToPixels(layout::kMinimumViewHeight));
  splitter_->setGeometry(kTreeWidth, viewTop, kSplitterWidth, ToPixels(layout::kMinimumViewHeight));
  parts_.list->move(kTreeWidth + kSplitterWidth, viewTop);
  Arrange();
}

void MainArea::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  if (parts_.tree && !window()->isMinimized()) {
    Arrange();
  }
}

void MainArea::Arrange() {
  QComboBox& address = *parts_.addressBox;
  QComboBox& filter = *parts_.filterBox;
  const int statusHeight = parts_.statusBar->sizeHint().height();
  const ResizeResult result = LayOut({
      .innerWidth = ToTwips(width()),
      .innerHeight = ToTwips(height()),
      .mainToolbarHeight = ToTwips(parts_.mainToolBar->height()),
      .addressToolbarHeight = ToTwips(parts_.addressToolBar->height()),
      .statusBarHeight = ToTwips(statusHeight),
      .treeTop = ToTwips(parts_.tree->y()),
      .treeWidth = ToTwips(parts_.tree->width()),
      .splitterWidth = ToTwips(kSplitterWidth),
      .addressBoxLeft = ToTwips(address.x()),
      .filterBoxWidth = ToTwips(filter.width()),
  });

  const int viewHeight = ToPixels(result.viewHeight);
  parts_.tree->resize(parts_.tree->width(), viewHeight);
  splitter_->resize(kSplitterWidth, viewHeight);
  parts_.list->resize(ToPixels(result.listWidth), viewHeight);
  parts_.statusBar->setGeometry(0, ToPixels(result.statusTop), width(), statusHeight);
  parts_.mainToolBar->resize(width(), parts_.mainToolBar->height());
  parts_.addressToolBar->resize(width(), parts_.addressToolBar->height());

  if (result.boxesFollow) {
    address.resize(ToPixels(result.addressBoxWidth), address.height());
    parts_.addressToolBar->SetBoxWidth(ToPixels(result.addressPlaceholderWidth));
    filter.move(ToPixels(result.filterBoxLeft), filter.y());
    parts_.mainToolBar->SetBoxWidth(ToPixels(result.filterPlaceholderWidth));
  }
}

void MainArea::DragSplitterBy(int offset) {
  const DragResult result = DragSplitter({
      .splitterLeft = ToTwips(splitter_->x()),
      .mouseX = ToTwips(offset),
      .treeLeft = ToTwips(parts_.tree->x()),
      .windowWidth = ToTwips(window()->frameGeometry().width()),
      .splitterWidth = ToTwips(kSplitterWidth),
  });
  // A window narrower than both margins leaves no room; the bar stays at the edge then.
  splitter_->move(std::max(ToPixels(result.splitterLeft), 0), splitter_->y());
  parts_.tree->resize(std::max(ToPixels(result.treeWidth), 0), parts_.tree->height());
  parts_.list->setGeometry(std::max(ToPixels(result.listLeft), kSplitterWidth), parts_.list->y(),
                           std::max(ToPixels(result.listWidth), 0), parts_.list->height());
}

}  // namespace trevane
