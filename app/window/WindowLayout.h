#pragma once

#include <QMargins>
#include <QRect>

namespace trevane {

/// Sizes of the window are in twips, in the program as in the settings file: 15 to a logical pixel.
inline constexpr int kTwipsPerPixel = 15;

[[nodiscard]] constexpr int ToTwips(int pixels) noexcept {
  return pixels * kTwipsPerPixel;
}
[[nodiscard]] constexpr int ToPixels(int twips) noexcept {
  return twips / kTwipsPerPixel;
}

namespace layout {
inline constexpr int kGap = 50;
inline constexpr int kMinimumViewHeight = 100;
inline constexpr int kMinimumListWidth = 500;
inline constexpr int kSplitterFromTreeLeft = 1000;
inline constexpr int kSplitterFromWindowRight = 2000;
inline constexpr int kDragListMargin = 120;
/// Below this the boxes of the toolbars stay as they are.
inline constexpr int kNarrowListWidth = 3001;
inline constexpr int kAddressBoxMargin = 1000;
inline constexpr int kFilterBoxFromRight = 2500;
inline constexpr int kFilterPlaceholderLeft = 3600;
}  // namespace layout

/// The sizes and positions before a resize, in twips.
struct ResizeInput {
  int innerWidth = 0;
  int innerHeight = 0;
  int mainToolbarHeight = 0;
  int addressToolbarHeight = 0;
  int statusBarHeight = 0;
  int treeTop = 0;
  int treeWidth = 0;
  int splitterWidth = 0;
  int addressBoxLeft = 0;
  int filterBoxWidth = 0;
};

/// The sizes and positions after a resize, in twips.
struct ResizeResult {
  int viewHeight = 0;
  int statusTop = 0;
  int listWidth = 0;
  /// False when the window is too narrow for the boxes to follow; the members below are not set then.
  bool boxesFollow = false;
  int addressBoxWidth = 0;
  int addressPlaceholderWidth = 0;
  int filterBoxLeft = 0;
  int filterPlaceholderWidth = 0;
};

[[nodiscard]] ResizeResult LayOut(const ResizeInput& input);

/// The geometry that brings a window onto the screen, frame included. A window that is small enough stays as
/// it is; a larger one is made smaller and moved. `window` and the result are without the frame, in logical
/// pixels.
[[nodiscard]] QRect FitToScreen(const QRect& window, const QMargins& frame, const QRect& screen);

/// The sizes and positions before a drag of the splitter, in twips.
struct DragInput {
  int splitterLeft = 0;
  int mouseX = 0;
  int treeLeft = 0;
  int windowWidth = 0;
  int splitterWidth = 0;
};

struct DragResult {
  int splitterLeft = 0;
  int treeWidth = 0;
  int listLeft = 0;
  int listWidth = 0;
};

/// The list's width follows the window's outer width, not the inner one as after a resize.
[[nodiscard]] DragResult DragSplitter(const DragInput& input);

}  // namespace trevane
