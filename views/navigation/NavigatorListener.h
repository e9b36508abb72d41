#pragma once

#include <QString>

namespace trevane {

class FolderNode;

/// What the views report upwards. The main window implements it.
class NavigatorListener {
 public:
  virtual ~NavigatorListener() = default;

  /// The status bar's text.
  virtual void ShowStatus(const QString& text) = 0;
  /// The address of what is displayed belongs into the address box.
  virtual void ShowAddress(const QString& address) = 0;
  /// The node is displayed now: it is the tree's selected one.
  virtual void ShowCurrentNode(FolderNode& node) = 0;
  /// The enabled states of menus and toolbars follow the tag; `entry` says that the entry itself was pointed
  /// at.
  virtual void UpdateCommandStates(qint32 tag, bool entry) = 0;
  /// The disconnect button and menu item.
  virtual void EnableDisconnect(bool enabled) = 0;
  /// True when the list must not show the file.
  [[nodiscard]] virtual bool IsFilteredOut(const QString& fileName) = 0;
  /// Lets pending window events run, once.
  virtual void LetEventsRun() = 0;
  /// No display is running any more.
  virtual void DisplayEnded() = 0;
};

}  // namespace trevane
