#pragma once

#include <QString>

namespace trevane {

/// Which of the two views a command acts on: the one with the focus, or, when nothing in the window has it,
/// the one that had it last.
enum class ActiveSide { Neither, Tree, List };

/// What the commands on files ask of the main window. It implements this.
class FileCommandsHost {
 public:
  virtual ~FileCommandsHost() = default;

  [[nodiscard]] virtual ActiveSide Active() const = 0;
  /// The Paste button of the toolbar. The menus' items have states of their own.
  virtual void EnablePasteButton(bool enabled) = 0;
  /// The status bar's text.
  virtual void ShowStatus(const QString& text) = 0;
};

}  // namespace trevane
