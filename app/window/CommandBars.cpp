#include "app/window/CommandBars.h"

#include "app/window/ToolBar.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QToolButton>

#include <algorithm>

namespace trevane {

using namespace Qt::StringLiterals;

namespace {

QString ArrayName(Place place) {
  switch (place) {
    case Place::File:
      return u"mnuFileItem"_s;
    case Place::Edit:
      return u"mnuEditItem"_s;
    case Place::View:
      return u"mnuViewItem"_s;
    case Place::ViewColumn:
      return u"mnuViewColumnItem"_s;
    case Place::Tool:
      return u"mnuToolItem"_s;
    case Place::Help:
      return u"mnuHelpItem"_s;
    case Place::WorkspacePopup:
      return u"mnuWSPopAddCon"_s;
    case Place::RightPopup:
      return u"mnuRPopupItem"_s;
    case Place::Popup:
      return u"mnuPopupItem"_s;
    case Place::Action:
      return u"mnuActionItem"_s;
    case Place::New:
      return u"mnuNewItem"_s;
    case Place::Toolbar:
      return u"tlbarMain"_s;
    case Place::AddressToolbar:
      return u"tlbarAddress"_s;
  }
  return {};
}

QString ItemName(Place place, int index) {
  return place == Place::WorkspacePopup ? ArrayName(place) : ArrayName(place) + QString::number(index);
}

}  // namespace

CommandBars::CommandBars(QMenuBar& menuBar, QWidget* toolBarParent, const ImageList& images)
    : mainToolBar_(new ToolBar(Place::Toolbar, images, toolBarParent)),
      addressToolBar_(new ToolBar(Place::AddressToolbar, images, toolBarParent)) {
  mainToolBar_->setObjectName(u"tlbarMain"_s);
  addressToolBar_->setObjectName(u"tlbarAddress"_s);
  for (const auto& [bar, place] :
       {std::pair{mainToolBar_, Place::Toolbar}, std::pair{addressToolBar_, Place::AddressToolbar}}) {
    connect(bar, &ToolBar::ButtonClicked, this, [this, place](int position) {
      if (const CommandRow* row = FindRow(place, position))
        Q_EMIT Triggered(row->command, place, position);
    });
    for (const CommandRow& row : RowsOf(place))
      SetEnabled(place, row.index, !row.disabledAtStart);
  }

  AddTopMenu(menuBar, Place::File, u"mnuFile"_s, u"&File"_s);
  AddTopMenu(menuBar, Place::Edit, u"mnuEdit"_s, u"&Edit"_s);
  AddTopMenu(menuBar, Place::View, u"mnuView"_s, u"&View"_s);
  AddTopMenu(menuBar, Place::Tool, u"mnuTool"_s, u"&Tool"_s);
  AddTopMenu(menuBar, Place::Help, u"mnuHelp"_s, u"&Help"_s);

  for (const auto& [place, name, title] : {std::tuple{Place::WorkspacePopup, u"mnuWSPop"_s, u"WSPopup"_s},
                                           std::tuple{Place::RightPopup, u"mnuRPopup"_s, u"RightPopup"_s},
                                           std::tuple{Place::Popup, u"mnuPopup"_s, u"Popup"_s}}) {
    auto menu = std::make_unique<QMenu>(title);
    menu->setObjectName(name);
    FillMenu(*menu, place);
    popups_.emplace(place, std::move(menu));
  }
}

CommandBars::~CommandBars() = default;

QMenu& CommandBars::PopupMenu(Place place) const {
  return *popups_.at(place);
}

QAction* CommandBars::Item(Place place, int index) const {
  const auto item = items_.find({place, index});
  return item != items_.end() ? item->second : nullptr;
}

void CommandBars::ApplyStates(const CommandContext& context) {
  for (const Place place : {Place::Toolbar, Place::Edit, Place::Popup}) {
    for (const CommandRow& row : RowsOf(place)) {
      if (const auto enabled = EnabledByEntry(place, row.index, context))
        SetEnabled(place, row.index, *enabled);
    }
  }
}

void CommandBars::SetEnabled(Place place, int index, bool enabled) {
  const CommandRow* row = FindRow(place, index);
  if (!row)
    return;
  if (place == Place::Toolbar || place == Place::AddressToolbar) {
    const ToolBar& bar = place == Place::Toolbar ? *mainToolBar_ : *addressToolBar_;
    if (QToolButton* button = bar.Button(index))
      button->setEnabled(enabled);
  } else if (QAction* item = Item(place, index)) {
    item->setEnabled(enabled);
  }
}

bool CommandBars::IsEnabled(Place place, int index) const {
  if (place == Place::Toolbar || place == Place::AddressToolbar) {
    const ToolBar& bar = place == Place::Toolbar ? *mainToolBar_ : *addressToolBar_;
    const QToolButton* button = bar.Button(index);
    return button && button->isEnabled();
  }
  const QAction* item = Item(place, index);
  return item && item->isEnabled();
}

bool CommandBars::IsShortcut(QKeyCombination keys) const {
  return std::ranges::any_of(
      items_, [keys = QKeySequence(keys)](const auto& item) { return item.second->shortcut() == keys; });
}

void CommandBars::FillMenu(QMenu& menu, Place place) {
  for (const CommandRow& row : RowsOf(place)) {
    QAction* item = nullptr;
    switch (row.style) {
      case RowStyle::Separator:
        item = menu.addSeparator();
        break;
      case RowStyle::Submenu: {
        QMenu* submenu = menu.addMenu(row.Caption());
        FillMenu(*submenu, row.submenu);
        item = submenu->menuAction();
        break;
      }
      case RowStyle::Command:
      case RowStyle::Check:
        item = menu.addAction(row.Caption());
        item->setCheckable(row.style == RowStyle::Check);
        item->setChecked(row.checkedAtStart);
        // A menu item's check mark is set by what it shows, not by being clicked.
        connect(item, &QAction::triggered, this,
                [this, &row] { Q_EMIT Triggered(row.command, row.place, row.index); });
        break;
      case RowStyle::Placeholder:
        continue;
    }
    if (*row.keys != '\0')
      item->setShortcut(QKeySequence(QString::fromLatin1(row.keys), QKeySequence::PortableText));
    item->setObjectName(ItemName(place, row.index));
    items_.emplace(std::pair{place, row.index}, item);
    SetEnabled(place, row.index, !row.disabledAtStart);
  }
}

void CommandBars::AddTopMenu(QMenuBar& menuBar, Place place, const QString& name, const QString& caption) {
  QMenu* menu = menuBar.addMenu(caption);
  menu->setObjectName(name);
  FillMenu(*menu, place);
}

}  // namespace trevane
