#include "app/window/CommandBars.h"

#include "app/window/ToolBar.h"
#include "fileops/commands/CommandTable.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QToolButton>

#include <algorithm>

namespace trevane {

namespace {

/// The one item of the workspace pop-up has no number.
QString ItemName(const CommandItem& item) {
  const QString name = QString::fromLatin1(FindCommandBar(item.place).itemName);
  return item.place == CommandPlace::WorkspacePopup ? name : name + QString::number(item.position);
}

}  // namespace

CommandBars::CommandBars(QMenuBar& menuBar, QWidget* toolBarParent, const ImageList& images)
    : mainToolBar_(new ToolBar(CommandPlace::MainToolbar, images, toolBarParent)),
      addressToolBar_(new ToolBar(CommandPlace::AddressToolbar, images, toolBarParent)) {
  for (const CommandBar& bar : AllCommandBars()) {
    const QString name = QString::fromLatin1(bar.name);
    const QString title = QString::fromLatin1(bar.title);
    switch (bar.kind) {
      case BarKind::Toolbar: {
        ToolBar* toolBar = ToolBarAt(bar.place);
        toolBar->setObjectName(name);
        connect(toolBar, &ToolBar::ButtonClicked, this,
                [this, place = bar.place](CommandId id) { Q_EMIT Triggered(id, place); });
        break;
      }
      case BarKind::Menu: {
        QMenu* menu = menuBar.addMenu(title);
        menu->setObjectName(name);
        FillMenu(*menu, bar.place);
        break;
      }
      case BarKind::Popup: {
        auto menu = std::make_unique<QMenu>(title);
        menu->setObjectName(name);
        FillMenu(*menu, bar.place);
        popups_.emplace(bar.place, std::move(menu));
        break;
      }
      case BarKind::Submenu:
        // Filled with the menu that it belongs to.
        break;
    }
  }
}

CommandBars::~CommandBars() = default;

QMenu& CommandBars::PopupMenu(CommandPlace place) const {
  return *popups_.at(place);
}

QAction* CommandBars::Action(CommandPlace place, CommandId id) const {
  const auto action = actions_.find(FindItem(place, id));
  return action != actions_.end() ? action->second : nullptr;
}

QToolButton* CommandBars::Button(CommandId id) const {
  QToolButton* button = mainToolBar_->Button(id);
  return button ? button : addressToolBar_->Button(id);
}

void CommandBars::ApplyState(const CommandState& state) {
  for (const CommandBar& bar : AllCommandBars()) {
    for (const CommandItem* item : ItemsOf(bar.place)) {
      if (const auto enabled = item->enabled.Enabled(state)) {
        SetItemEnabled(*item, *enabled);
      }
    }
  }
}

void CommandBars::SetEnabled(CommandPlace place, CommandId id, bool enabled) {
  if (const CommandItem* item = FindItem(place, id)) {
    SetItemEnabled(*item, enabled);
  }
}

bool CommandBars::IsEnabled(CommandPlace place, CommandId id) const {
  if (const ToolBar* toolBar = ToolBarAt(place)) {
    const QToolButton* button = toolBar->Button(id);
    return button && button->isEnabled();
  }
  const QAction* action = Action(place, id);
  return action && action->isEnabled();
}

bool CommandBars::IsShortcut(QKeyCombination keys) const {
  return std::ranges::any_of(
      actions_, [keys = QKeySequence(keys)](const auto& entry) { return entry.second->shortcut() == keys; });
}

bool CommandBars::IsChecked(CommandId id) const {
  if (const QToolButton* button = Button(id)) {
    return button->isChecked();
  }
  return std::ranges::any_of(FindCommand(id).places, [&](const CommandItem& item) {
    const QAction* action = Action(item.place, id);
    return action && action->isChecked();
  });
}

void CommandBars::SetChecked(CommandId id, bool checked) {
  if (QToolButton* button = Button(id)) {
    button->setChecked(checked);
  }
  for (const CommandItem& item : FindCommand(id).places) {
    if (QAction* action = Action(item.place, id)) {
      action->setChecked(checked);
    }
  }
}

void CommandBars::FillMenu(QMenu& menu, CommandPlace place) {
  for (const CommandItem* item : ItemsOf(place)) {
    QAction* action = nullptr;
    switch (item->style) {
      case ItemStyle::Separator:
        action = menu.addSeparator();
        break;
      case ItemStyle::Submenu: {
        QMenu* submenu = menu.addMenu(item->Caption());
        FillMenu(*submenu, item->submenu);
        action = submenu->menuAction();
        break;
      }
      case ItemStyle::Command:
        action = menu.addAction(item->Caption());
        action->setCheckable(item->command->checkMark != CheckMark::None);
        action->setChecked(item->command->checkMark == CheckMark::Checked);
        connect(action, &QAction::triggered, this,
                [this, item] { Q_EMIT Triggered(item->command->id, item->place); });
        break;
      case ItemStyle::Box:
        continue;
    }
    if (*item->keys != '\0') {
      action->setShortcut(QKeySequence(QString::fromLatin1(item->keys), QKeySequence::PortableText));
    }
    action->setObjectName(ItemName(*item));
    action->setEnabled(item->enabledAtStart);
    actions_.emplace(item, action);
  }
}

void CommandBars::SetItemEnabled(const CommandItem& item, bool enabled) {
  if (const ToolBar* toolBar = ToolBarAt(item.place)) {
    if (QToolButton* button = toolBar->Button(item.command->id)) {
      button->setEnabled(enabled);
    }
  } else if (const auto action = actions_.find(&item); action != actions_.end()) {
    action->second->setEnabled(enabled);
  }
}

ToolBar* CommandBars::ToolBarAt(CommandPlace place) const {
  switch (place) {
    case CommandPlace::MainToolbar:
      return mainToolBar_;
    case CommandPlace::AddressToolbar:
      return addressToolBar_;
    default:
      return nullptr;
  }
}

}  // namespace trevane
