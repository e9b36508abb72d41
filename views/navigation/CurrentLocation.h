#pragma once

#include <QString>

namespace trevane {

class FolderNode;
class NavigatorListener;

/// The node whose contents the list shows, and its address as the list and the address box have it.
class CurrentLocation final {
 public:
  /// The listener outlives this object.
  explicit CurrentLocation(NavigatorListener& listener) : listener_(listener) {}
  CurrentLocation(const CurrentLocation&) = delete;
  CurrentLocation& operator=(const CurrentLocation&) = delete;

  /// Null before the first display.
  [[nodiscard]] FolderNode* Node() const noexcept { return node_; }
  /// The address of the folder that the list shows, which is the list's Tag.
  [[nodiscard]] const QString& Address() const noexcept { return address_; }
  /// The current node is `node` or below it.
  [[nodiscard]] bool IsIn(const FolderNode& node) const;

  /// The node is about to be displayed.
  void Display(FolderNode& node);
  /// Makes the node, which may be null, current; the address stays until the next display.
  void MoveTo(FolderNode* node) noexcept { node_ = node; }
  /// The current node or one above it has another text: the address box and the status bar follow.
  void UpdateAddress();

 private:
  NavigatorListener& listener_;
  FolderNode* node_ = nullptr;
  QString address_;
};

}  // namespace trevane
