#pragma once

#include "fileops/commands/CommandMarks.h"
#include "fileops/commands/CommandPlace.h"
#include "fileops/commands/CommandState.h"

#include <QKeyCombination>
#include <QObject>

#include <map>
#include <memory>

class QAction;
class QMenu;
class QMenuBar;
class QToolButton;

namespace trevane {

class ImageList;
class ToolBar;
struct CommandItem;

/// The menus, toolbars and pop-up menus of the main window, made from the command table. Each place of a
/// command has an enabled state of its own.
class CommandBars final : public QObject, public CommandMarks {
  Q_OBJECT

 public:
  CommandBars(QMenuBar& menuBar, QWidget* toolBarParent, const ImageList& images);
  ~CommandBars() override;

  [[nodiscard]] ToolBar& MainToolBar() const { return *mainToolBar_; }
  [[nodiscard]] ToolBar& AddressToolBar() const { return *addressToolBar_; }

  /// A menu that is not part of the menu bar.
  [[nodiscard]] QMenu& PopupMenu(CommandPlace place) const;

  /// The command's menu item at a place; null when there is none.
  [[nodiscard]] QAction* Action(CommandPlace place, CommandId id) const;
  /// The command's button in one of the toolbars; null when there is none.
  [[nodiscard]] QToolButton* Button(CommandId id) const;

  /// Enables and disables the items whose enabled column decides it; others keep their state.
  void ApplyState(const CommandState& state);

  void SetEnabled(CommandPlace place, CommandId id, bool enabled);
  [[nodiscard]] bool IsEnabled(CommandPlace place, CommandId id) const;
  /// True for the keys of a menu item, enabled or not.
  [[nodiscard]] bool IsShortcut(QKeyCombination keys) const;

  [[nodiscard]] bool IsChecked(CommandId id) const override;
  void SetChecked(CommandId id, bool checked) override;

 Q_SIGNALS:
  /// The user chose the command at this place.
  void Triggered(trevane::CommandId id, trevane::CommandPlace place);

 private:
  void FillMenu(QMenu& menu, CommandPlace place);
  void SetItemEnabled(const CommandItem& item, bool enabled);
  [[nodiscard]] ToolBar* ToolBarAt(CommandPlace place) const;

  ToolBar* mainToolBar_;
  ToolBar* addressToolBar_;
  std::map<const CommandItem*, QAction*> actions_;
  std::map<CommandPlace, std::unique_ptr<QMenu>> popups_;
};

}  // namespace trevane
