#pragma once

#include "fileops/commands/CommandStates.h"
#include "fileops/commands/CommandTable.h"

#include <QKeyCombination>
#include <QObject>

#include <map>
#include <memory>
#include <utility>

class QAction;
class QMenu;
class QMenuBar;

namespace trevane {

class ImageList;
class ToolBar;

/// The menus, toolbars and pop-up menus of the main window, made from the command table. Each place of a
/// command has an enabled state of its own.
class CommandBars final : public QObject {
  Q_OBJECT

 public:
  CommandBars(QMenuBar& menuBar, QWidget* toolBarParent, const ImageList& images);
  ~CommandBars() override;

  [[nodiscard]] ToolBar& MainToolBar() const { return *mainToolBar_; }
  [[nodiscard]] ToolBar& AddressToolBar() const { return *addressToolBar_; }

  /// The pop-up on the tree and the list, on the workspace, or after a right-button drag.
  [[nodiscard]] QMenu& PopupMenu(Place place) const;

  /// The menu item at a place; null when there is none.
  [[nodiscard]] QAction* Item(Place place, int index) const;

  /// Sets what the entry in question decides; other rows keep their state.
  void ApplyStates(const CommandContext& context);

  /// Sets the state of one row.
  void SetEnabled(Place place, int index, bool enabled);
  [[nodiscard]] bool IsEnabled(Place place, int index) const;
  /// The keys choose an item of the menus, be it enabled or not.
  [[nodiscard]] bool IsShortcut(QKeyCombination keys) const;

 Q_SIGNALS:
  void Triggered(trevane::Command command, trevane::Place place, int index);

 private:
  void FillMenu(QMenu& menu, Place place);
  void AddTopMenu(QMenuBar& menuBar, Place place, const QString& name, const QString& caption);

  ToolBar* mainToolBar_;
  ToolBar* addressToolBar_;
  std::map<std::pair<Place, int>, QAction*> items_;
  std::map<Place, std::unique_ptr<QMenu>> popups_;
};

}  // namespace trevane
