#include "app/window/WindowLayout.h"

#include <algorithm>

namespace trevane {

ResizeResult LayOut(const ResizeInput& input) {
  ResizeResult result;
  const int taken =
      input.mainToolbarHeight + input.addressToolbarHeight + input.statusBarHeight + layout::kGap;
  result.viewHeight = std::max(input.innerHeight - taken, layout::kMinimumViewHeight);
  result.statusTop = input.treeTop + result.viewHeight + layout::kGap;

  const int listWidth =
      std::max(input.innerWidth - (input.treeWidth + input.splitterWidth), layout::kMinimumListWidth);
  result.listWidth = listWidth - layout::kGap;

  result.boxesFollow = listWidth >= layout::kNarrowListWidth;
  if (result.boxesFollow) {
    result.addressBoxWidth = input.innerWidth - (input.addressBoxLeft + layout::kAddressBoxMargin);
    result.addressPlaceholderWidth = input.addressBoxLeft + result.addressBoxWidth + layout::kGap;
    result.filterBoxLeft = input.innerWidth - layout::kFilterBoxFromRight;
    result.filterPlaceholderWidth =
        result.filterBoxLeft + input.filterBoxWidth - layout::kFilterPlaceholderLeft;
  }
  return result;
}

QRect FitToScreen(const QRect& window, const QMargins& frame, const QRect& screen) {
  const QRect room = screen.marginsRemoved(frame);
  if (window.width() <= room.width() && window.height() <= room.height()) {
    return window;
  }
  const QSize size = window.size().boundedTo(room.size());
  return {{std::clamp(window.left(), room.left(), room.right() + 1 - size.width()),
           std::clamp(window.top(), room.top(), room.bottom() + 1 - size.height())},
          size};
}

DragResult DragSplitter(const DragInput& input) {
  const int leftmost = input.treeLeft + layout::kSplitterFromTreeLeft;
  const int rightmost = input.windowWidth - layout::kSplitterFromWindowRight;
  const int wanted = input.splitterLeft + input.mouseX;

  DragResult result;
  if (wanted <= leftmost) {
    result.splitterLeft = leftmost;
  } else {
    result.splitterLeft = std::min(wanted, rightmost);
  }
  result.treeWidth = result.splitterLeft;
  result.listLeft = result.splitterLeft + input.splitterWidth;
  result.listWidth = input.windowWidth - (result.treeWidth + input.splitterWidth + layout::kDragListMargin);
  return result;
}

}  // namespace trevane
