#include "fileops/commands/CommandTable.h"
#include "views/addresses/NodeTags.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace trevane {
namespace {

using enum CommandPlace;

/// An item as it is required, written down independently of the table.
struct RequiredItem {
  CommandPlace place;
  int position;
  CommandId id;
  const char* caption;
  const char* keys = "";
  const char* toolTip = "";
  const char* key = "";
  const char* image = "";
  const char* pressedImage = "";
};

const RequiredItem kRequiredItems[] = {
    {MainToolbar, 2, CommandId::OpenWorkspace, "&Open...", "", "Open File", "OPEN", "FILEOPEN"},
    {MainToolbar, 3, CommandId::SaveWorkspace, "&Save", "", "Save File", "SAVE", "FILESAVE"},
    {MainToolbar, 5, CommandId::Parent, "&Parent", "", "Move To Parent", "PARENT", "UPDIR"},
    {MainToolbar, 7, CommandId::Copy, "&Copy", "", "Copy", "COPY", "COPY"},
    {MainToolbar, 8, CommandId::Cut, "C&ut", "", "Cut", "CUT", "CUT"},
    {MainToolbar, 9, CommandId::Paste, "P&aste", "", "Paste", "PASTE", "PASTE"},
    {MainToolbar, 10, CommandId::Delete, "&Delete", "", "Delete", "DELETE", "DELETE"},
    {MainToolbar, 12, CommandId::Connect, "C&onnect", "", "Connect IxoController", "CONNECT", "CONNECT"},
    {MainToolbar, 13, CommandId::Disconnect, "D&isconnect", "", "Disconnect IxoController", "DISCONNECT",
     "DISCONNECT"},
    {MainToolbar, 16, CommandId::FilterOnOff, "&Filter", "", "Filter On/Off", "FILTER", "NOFILTER", "FILTER"},
    {MainToolbar, 17, CommandId::FilterType, "Filter &Type", "", "Filter Type", "FILTERTYPE", "INCLUDE",
     "EXCLUDE"},
    {AddressToolbar, 2, CommandId::GoToAddress, "&Go", "", "Go To Address", "GO", "GO"},
    {FileMenu, 0, CommandId::OpenWorkspace, "&Open..."},
    {FileMenu, 1, CommandId::SaveWorkspace, "&Save"},
    {FileMenu, 2, CommandId::SaveWorkspaceAs, "Save &As..."},
    {FileMenu, 4, CommandId::Connect, "&Connect...."},
    {FileMenu, 5, CommandId::Disconnect, "&Disconnect"},
    {FileMenu, 6, CommandId::DisconnectAll, "D&isconnect All"},
    {FileMenu, 8, CommandId::Close, "C&lose"},
    {EditMenu, 0, CommandId::Cut, "Cu&t", "Ctrl+X"},
    {EditMenu, 1, CommandId::Copy, "&Copy", "Ctrl+C"},
    {EditMenu, 2, CommandId::Paste, "&Paste", "Ctrl+V"},
    {EditMenu, 4, CommandId::Delete, "&Delete", "Del"},
    {EditMenu, 6, CommandId::SelectAll, "Select &All", "Ctrl+A"},
    {ViewMenu, 2, CommandId::Parent, "&Parent"},
    {ViewMenu, 3, CommandId::Refresh, "&Refresh", "F5"},
    {ColumnsMenu, 0, CommandId::NameColumn, "&Name"},
    {ColumnsMenu, 1, CommandId::SizeColumn, "&Size"},
    {ColumnsMenu, 2, CommandId::TypeColumn, "&Type"},
    {ColumnsMenu, 3, CommandId::ModifiedColumn, "&Modified"},
    {ColumnsMenu, 4, CommandId::AccessedColumn, "&Accessed"},
    {ColumnsMenu, 5, CommandId::CreatedColumn, "&Created"},
    {ColumnsMenu, 6, CommandId::AttributesColumn, "Att&ributes"},
    {ToolMenu, 0, CommandId::Option, "&Option..."},
    {HelpMenu, 0, CommandId::Version, "&Version..."},
    {WorkspacePopup, 0, CommandId::Connect, "&Add Controller..."},
    {DragPopup, 0, CommandId::MoveHere, "&Move Here"},
    {DragPopup, 1, CommandId::CopyHere, "&Copy Here"},
    {EntryPopup, 2, CommandId::Run, "&Run"},
    {EntryPopup, 4, CommandId::Cut, "Cu&t"},
    {EntryPopup, 5, CommandId::Copy, "&Copy"},
    {EntryPopup, 6, CommandId::Paste, "&Paste"},
    {EntryPopup, 8, CommandId::Delete, "&Delete"},
    {EntryPopup, 10, CommandId::Rename, "Rena&me"},
    {EntryPopup, 13, CommandId::Properties, "P&roperties..."},
    {ActionMenu, 0, CommandId::Connect, "&Connect..."},
    {ActionMenu, 1, CommandId::Disconnect, "&Disconnect"},
    {NewMenu, 0, CommandId::NewFolder, "&Folder"},
};

/// The items that are no commands: separators, boxes and submenus with their captions.
struct OtherItem {
  CommandPlace place;
  int position;
  ItemStyle style;
  const char* caption = "";
  CommandPlace submenu = MainToolbar;
};

const OtherItem kOtherItems[] = {
    {MainToolbar, 1, ItemStyle::Separator},
    {MainToolbar, 4, ItemStyle::Separator},
    {MainToolbar, 6, ItemStyle::Separator},
    {MainToolbar, 11, ItemStyle::Separator},
    {MainToolbar, 14, ItemStyle::Separator},
    {MainToolbar, 15, ItemStyle::Box},
    {AddressToolbar, 1, ItemStyle::Box},
    {FileMenu, 3, ItemStyle::Separator},
    {FileMenu, 7, ItemStyle::Separator},
    {EditMenu, 3, ItemStyle::Separator},
    {EditMenu, 5, ItemStyle::Separator},
    {ViewMenu, 0, ItemStyle::Submenu, "&Columns", ColumnsMenu},
    {ViewMenu, 1, ItemStyle::Separator},
    {EntryPopup, 0, ItemStyle::Submenu, "&Action", ActionMenu},
    {EntryPopup, 1, ItemStyle::Separator},
    {EntryPopup, 3, ItemStyle::Separator},
    {EntryPopup, 7, ItemStyle::Separator},
    {EntryPopup, 9, ItemStyle::Separator},
    {EntryPopup, 11, ItemStyle::Submenu, "&New", NewMenu},
    {EntryPopup, 12, ItemStyle::Separator},
};

/// The number of items of each place.
const std::map<CommandPlace, int> kCounts = {
    {MainToolbar, 17}, {AddressToolbar, 2}, {FileMenu, 9}, {EditMenu, 7},       {ViewMenu, 4},
    {ColumnsMenu, 7},  {ToolMenu, 1},       {HelpMenu, 1}, {WorkspacePopup, 1}, {DragPopup, 2},
    {EntryPopup, 14},  {ActionMenu, 2},     {NewMenu, 1},
};

std::string Where(CommandPlace place, int position) {
  return "place " + std::to_string(static_cast<int>(place)) + " position " + std::to_string(position);
}

const CommandItem& At(CommandPlace place, int position) {
  for (const CommandItem* item : ItemsOf(place)) {
    if (item->position == position) {
      return *item;
    }
  }
  ADD_FAILURE() << "nothing at " << Where(place, position);
  static const CommandItem none;
  return none;
}

TEST(CommandTableTest, EveryCommandIsAtItsPositions) {
  for (const RequiredItem& required : kRequiredItems) {
    SCOPED_TRACE(Where(required.place, required.position));
    const CommandItem& item = At(required.place, required.position);
    ASSERT_EQ(item.style, ItemStyle::Command);
    ASSERT_NE(item.command, nullptr);
    EXPECT_EQ(item.command->id, required.id);
    EXPECT_EQ(FindItem(required.place, required.id), &item);
    EXPECT_STREQ(item.caption, required.caption);
    EXPECT_STREQ(item.keys, required.keys);
    EXPECT_STREQ(item.toolTip, required.toolTip);
    EXPECT_STREQ(item.key, required.key);
    EXPECT_STREQ(item.image, required.image);
    EXPECT_STREQ(item.pressedImage, required.pressedImage);
  }
}

TEST(CommandTableTest, SeparatorsBoxesAndSubmenusAreAtTheirPositions) {
  for (const OtherItem& required : kOtherItems) {
    SCOPED_TRACE(Where(required.place, required.position));
    const CommandItem& item = At(required.place, required.position);
    EXPECT_EQ(item.style, required.style);
    EXPECT_STREQ(item.caption, required.caption);
    EXPECT_EQ(item.submenu, required.submenu);
    EXPECT_EQ(item.command, nullptr);
  }
}

TEST(CommandTableTest, PositionsCountWithoutGaps) {
  int all = 0;
  for (const auto& [place, count] : kCounts) {
    int position = place == MainToolbar || place == AddressToolbar ? 1 : 0;
    const auto items = ItemsOf(place);
    EXPECT_EQ(items.size(), static_cast<std::size_t>(count));
    for (const CommandItem* item : items) {
      EXPECT_EQ(item->position, position++);
    }
    all += count;
  }
  EXPECT_EQ(static_cast<std::size_t>(all), std::size(kRequiredItems) + std::size(kOtherItems));
}

TEST(CommandTableTest, EveryCommandHasOneRowWithAHandler) {
  std::set<CommandId> ids;
  for (const Command& command : AllCommands()) {
    EXPECT_TRUE(ids.insert(command.id).second) << static_cast<int>(command.id);
    EXPECT_NE(command.handler, nullptr);
    EXPECT_FALSE(command.places.empty());
  }
  for (const RequiredItem& required : kRequiredItems) {
    EXPECT_TRUE(ids.contains(required.id));
  }
}

TEST(CommandTableTest, CommandsThatChangeSomethingRunAlone) {
  const std::set<CommandId> operations = {
      CommandId::OpenWorkspace, CommandId::SaveWorkspace, CommandId::SaveWorkspaceAs,
      CommandId::Connect,       CommandId::Disconnect,    CommandId::DisconnectAll,
      CommandId::Cut,           CommandId::Copy,          CommandId::Paste,
      CommandId::Delete,        CommandId::MoveHere,      CommandId::CopyHere,
      CommandId::Run,           CommandId::Rename,        CommandId::NewFolder};
  for (const Command& command : AllCommands()) {
    EXPECT_EQ(RunsAlone(command.kind), operations.contains(command.id)) << static_cast<int>(command.id);
  }
}

TEST(CommandTableTest, ConnectionsAreDistinctFromFileOperations) {
  const std::set<CommandId> connections = {CommandId::OpenWorkspace,   CommandId::SaveWorkspace,
                                           CommandId::SaveWorkspaceAs, CommandId::Connect,
                                           CommandId::Disconnect,      CommandId::DisconnectAll};
  for (const Command& command : AllCommands()) {
    EXPECT_EQ(command.kind == CommandKind::Connection, connections.contains(command.id))
        << static_cast<int>(command.id);
  }
}

TEST(CommandTableTest, AccessKeysAreUniqueWithinAMenu) {
  for (const CommandPlace place :
       {EditMenu, ViewMenu, ColumnsMenu, ToolMenu, HelpMenu, DragPopup, ActionMenu, NewMenu}) {
    std::set<QChar> seen;
    for (const CommandItem* item : ItemsOf(place)) {
      const QString caption = item->Caption();
      const auto mark = caption.indexOf(u'&');
      if (mark >= 0) {
        EXPECT_TRUE(seen.insert(caption[mark + 1].toLower()).second) << item->caption;
      }
    }
  }
}

TEST(CommandTableTest, TheSpokenCaptionHasNoAmpersand) {
  EXPECT_EQ(FindItem(FileMenu, CommandId::Connect)->SpokenCaption(), QStringLiteral("Connect...."));
}

TEST(CommandTableTest, MenusHaveTheirNamesAndTitles) {
  const std::tuple<CommandPlace, const char*, const char*, const char*> required[] = {
      {MainToolbar, "tlbarMain", "", ""},
      {AddressToolbar, "tlbarAddress", "", ""},
      {FileMenu, "mnuFile", "mnuFileItem", "&File"},
      {EditMenu, "mnuEdit", "mnuEditItem", "&Edit"},
      {ViewMenu, "mnuView", "mnuViewItem", "&View"},
      {ToolMenu, "mnuTool", "mnuToolItem", "&Tool"},
      {HelpMenu, "mnuHelp", "mnuHelpItem", "&Help"},
      {WorkspacePopup, "mnuWSPop", "mnuWSPopAddCon", "WSPopup"},
      {DragPopup, "mnuRPopup", "mnuRPopupItem", "RightPopup"},
      {EntryPopup, "mnuPopup", "mnuPopupItem", "Popup"},
      {ColumnsMenu, "", "mnuViewColumnItem", ""},
      {ActionMenu, "", "mnuActionItem", ""},
      {NewMenu, "", "mnuNewItem", ""},
  };
  ASSERT_EQ(AllCommandBars().size(), std::size(required));
  for (const auto& [place, name, itemName, title] : required) {
    EXPECT_STREQ(FindCommandBar(place).name, name);
    EXPECT_STREQ(FindCommandBar(place).itemName, itemName);
    EXPECT_STREQ(FindCommandBar(place).title, title);
  }
}

constexpr qint32 kTags[] = {TAG_WORKSPACE, kMyComputerTag, TAG_DRIVE | TAG_HDD, kControllerTag, 0x10};

/// The enabled states as they are required: a letter for each kind of entry, for a folder and for an entry
/// that was clicked. "+" on, "-" off, "p" as a paste is possible, "u" with a parent.
struct RequiredStates {
  CommandPlace place;
  int position;
  const char* forFolder;
  const char* forEntry;
};

const RequiredStates kRequiredStates[] = {
    {MainToolbar, 2, "+++++", "+++++"},  {MainToolbar, 3, "+++++", "+++++"},
    {MainToolbar, 5, "-++++", "--+++"},  {MainToolbar, 7, "----+", "----+"},
    {MainToolbar, 8, "----+", "----+"},  {MainToolbar, 9, "--ppp", "--ppp"},
    {MainToolbar, 10, "----+", "----+"}, {MainToolbar, 12, "+++++", "+++++"},
    {MainToolbar, 13, "---+-", "---+-"}, {EditMenu, 0, "----+", "----+"},
    {EditMenu, 1, "----+", "----+"},     {EditMenu, 2, "--ppp", "--ppp"},
    {EditMenu, 4, "----+", "----+"},     {EditMenu, 6, "+++++", "+++++"},
    {ViewMenu, 2, "uuuuu", "uuuuu"},     {EntryPopup, 2, "--+--", "--+++"},
    {EntryPopup, 4, "-----", "----+"},   {EntryPopup, 5, "-----", "----+"},
    {EntryPopup, 6, "--ppp", "--ppp"},   {EntryPopup, 8, "-----", "----+"},
    {EntryPopup, 10, "-----", "----+"},  {EntryPopup, 11, "--+++", "--+++"},
    {EntryPopup, 13, "-----", "-++++"},
};

TEST(EnabledColumnTest, EveryCellIsAsRequired) {
  for (const RequiredStates& required : kRequiredStates) {
    for (std::size_t kind = 0; kind < std::size(kTags); ++kind) {
      for (const bool entry : {false, true}) {
        for (const bool paste : {false, true}) {
          for (const bool parent : {false, true}) {
            const CommandState state{.tag = kTags[kind],
                                     .entry = entry,
                                     .clipboardCount = paste ? 1 : 0,
                                     .selectedListItems = 1,
                                     .hasParent = parent};
            const char cell = (entry ? required.forEntry : required.forFolder)[kind];
            const bool expected = cell == '+' || (cell == 'p' && paste) || (cell == 'u' && parent);
            EXPECT_EQ(At(required.place, required.position).enabled.Enabled(state), expected)
                << Where(required.place, required.position) << " kind " << kind << " entry " << entry
                << " paste " << paste << " parent " << parent;
          }
        }
      }
    }
  }
}

TEST(EnabledColumnTest, OtherItemsKeepTheirState) {
  std::set<std::pair<CommandPlace, int>> named;
  for (const RequiredStates& required : kRequiredStates) {
    named.emplace(required.place, required.position);
  }
  for (const auto& [place, count] : kCounts) {
    for (const CommandItem* item : ItemsOf(place)) {
      EXPECT_EQ(item->enabled.Enabled({.tag = TAG_WORKSPACE}).has_value(),
                named.contains({place, item->position}))
          << Where(place, item->position);
    }
  }
}

TEST(EnabledColumnTest, PasteNeedsAFilledSetAndAtMostOneItem) {
  const auto paste = [](int clipboard, int selected) {
    return At(EditMenu, 2)
        .enabled.Enabled({.tag = 0x10, .clipboardCount = clipboard, .selectedListItems = selected});
  };
  EXPECT_EQ(paste(0, 0), false);
  EXPECT_EQ(paste(1, 0), true);
  EXPECT_EQ(paste(5, 1), true);
  EXPECT_EQ(paste(1, 2), false);
}

}  // namespace
}  // namespace trevane
