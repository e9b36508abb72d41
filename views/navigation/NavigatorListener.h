#pragma once

#include <QString>

namespace trevane {

class FolderNode;

/// Receives the reports of the views. The main window implements it.
class NavigatorListener {
 public:
  virtual ~NavigatorListener() = default;

  /// The status bar's text.
  virtual void ShowStatus(const QString& text) = 0;
  /// The address box is to show the address.
  virtual void ShowAddress(const QString& address) = 0;
  /// The node is displayed: the tree is to select it.
  virtual void ShowCurrentNode(FolderNode& node) = 0;
  /// The enabled states of menus and toolbars follow the tag; `entry` is true when the entry itself was
  /// clicked.
  virtual void UpdateCommandStates(qint32 tag, bool entry) = 0;
  /// The disconnect button and menu item.
  virtual void EnableDisconnect(bool enabled) = 0;
  /// True when the list must not show the file.
  [[nodiscard]] virtual bool IsFilteredOut(const QString& fileName) = 0;
  /// Lets pending window events run, once.
  virtual void LetEventsRun() = 0;
  /// The display that is running is to end early; another one may have been asked for.
  virtual void DisplayGivenUp() {}
  /// No display is running any more.
  virtual void DisplayEnded() = 0;
};

}  // namespace trevane
