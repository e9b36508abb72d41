#pragma once

#include "fileops/ActiveSide.h"

#include <QString>

namespace trevane {

/// The services of the main window that the commands use. It implements this.
class CommandHost {
 public:
  virtual ~CommandHost() = default;

  [[nodiscard]] virtual ActiveSide Active() const = 0;
  /// Gives the focus back to the view that had it last.
  virtual void FocusActiveView() = 0;
  /// The Paste button of the toolbar. The menus' items have states of their own.
  virtual void EnablePasteButton(bool enabled) = 0;
  /// The Disconnect button of the toolbar, and the item of the File menu.
  virtual void EnableDisconnectButton(bool enabled) = 0;
  virtual void EnableDisconnectItem(bool enabled) = 0;
  /// The status bar's text.
  virtual void ShowStatus(const QString& text) = 0;
};

}  // namespace trevane
