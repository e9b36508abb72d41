#include "fileops/commands/CommandStates.h"
#include "fileops/commands/CommandTable.h"
#include "views/addresses/NodeTags.h"

#include <gtest/gtest.h>

#include <set>

namespace trevane {
namespace {

constexpr qint32 kTags[] = {TAG_WORKSPACE, kMyComputerTag, TAG_DRIVE | TAG_HDD, kControllerTag, 0x10};

/// One row of the table as it is required: a letter a kind of entry, for a place and for an entry. "+" on,
/// "-" off, "p" as paste is possible.
struct Row {
  Place place;
  int index;
  const char* forPlace;
  const char* forEntry;
};

const Row kRows[] = {
    {Place::Toolbar, 2, "+++++", "+++++"},  {Place::Toolbar, 3, "+++++", "+++++"},
    {Place::Toolbar, 5, "-++++", "--+++"},  {Place::Toolbar, 7, "----+", "----+"},
    {Place::Toolbar, 8, "----+", "----+"},  {Place::Toolbar, 9, "--ppp", "--ppp"},
    {Place::Toolbar, 10, "----+", "----+"}, {Place::Toolbar, 12, "+++++", "+++++"},
    {Place::Toolbar, 13, "---+-", "---+-"}, {Place::Edit, 0, "----+", "----+"},
    {Place::Edit, 1, "----+", "----+"},     {Place::Edit, 2, "--ppp", "--ppp"},
    {Place::Edit, 4, "----+", "----+"},     {Place::Edit, 6, "+++++", "+++++"},
    {Place::Popup, 2, "--+--", "--+++"},    {Place::Popup, 4, "-----", "----+"},
    {Place::Popup, 5, "-----", "----+"},    {Place::Popup, 6, "--ppp", "--ppp"},
    {Place::Popup, 8, "-----", "----+"},    {Place::Popup, 10, "-----", "----+"},
    {Place::Popup, 11, "--+++", "--+++"},   {Place::Popup, 13, "-----", "-++++"},
};

TEST(CommandStatesTest, EveryCellOfTheTable) {
  for (const Row& row : kRows) {
    for (std::size_t kind = 0; kind < std::size(kTags); ++kind) {
      for (const bool entry : {false, true}) {
        for (const bool paste : {false, true}) {
          const CommandContext context{
              .tag = kTags[kind], .entry = entry, .clipboardCount = paste ? 1 : 0, .selectedListItems = 1};
          const char cell = (entry ? row.forEntry : row.forPlace)[kind];
          const bool expected = cell == '+' || (cell == 'p' && paste);
          EXPECT_EQ(EnabledByEntry(row.place, row.index, context), expected)
              << "place " << static_cast<int>(row.place) << " index " << row.index << " kind " << kind
              << " entry " << entry << " paste " << paste;
        }
      }
    }
  }
}

TEST(CommandStatesTest, RowsThatTheTableDoesNotNameAreNotTouched) {
  std::set<std::pair<Place, int>> named;
  for (const Row& row : kRows)
    named.emplace(row.place, row.index);
  for (const Place place : {Place::Toolbar, Place::AddressToolbar, Place::File, Place::Edit, Place::View,
                            Place::Tool, Place::Help, Place::Popup, Place::Action}) {
    for (const CommandRow& row : RowsOf(place)) {
      EXPECT_EQ(EnabledByEntry(place, row.index, {.tag = TAG_WORKSPACE}).has_value(),
                named.contains({place, row.index}));
    }
  }
}

TEST(CommandStatesTest, PasteNeedsAnEntryInTheSetAndAtMostOneSelectedItem) {
  const auto paste = [](int clipboard, int selected) {
    return EnabledByEntry(Place::Edit, 2,
                          {.tag = 0x10, .clipboardCount = clipboard, .selectedListItems = selected});
  };
  EXPECT_EQ(paste(0, 0), false);
  EXPECT_EQ(paste(1, 0), true);
  EXPECT_EQ(paste(5, 1), true);
  EXPECT_EQ(paste(1, 2), false);
}

TEST(CommandTableTest, TheToolbarHasItsSeventeenPositions) {
  const auto rows = RowsOf(Place::Toolbar);
  ASSERT_EQ(rows.size(), 17U);
  for (std::size_t i = 0; i < rows.size(); ++i)
    EXPECT_EQ(rows[i].index, static_cast<int>(i) + 1);
  EXPECT_STREQ(FindRow(Place::Toolbar, 13)->toolTip, "Disconnect IxoController");
  EXPECT_STREQ(FindRow(Place::Toolbar, 16)->checkedImageKey, "FILTER");
}

TEST(CommandTableTest, MenuIndexesCountFromZeroWithoutGaps) {
  for (const Place place :
       {Place::File, Place::Edit, Place::View, Place::ViewColumn, Place::Tool, Place::Help,
        Place::WorkspacePopup, Place::RightPopup, Place::Popup, Place::Action, Place::New}) {
    int index = 0;
    for (const CommandRow& row : RowsOf(place))
      EXPECT_EQ(row.index, index++);
  }
}

TEST(CommandTableTest, AccessKeysAreUniqueWithinAMenu) {
  for (const Place place : {Place::Edit, Place::View, Place::ViewColumn, Place::Tool, Place::Help,
                            Place::RightPopup, Place::Action, Place::New}) {
    std::set<QChar> seen;
    for (const CommandRow& row : RowsOf(place)) {
      const QString caption = row.Caption();
      const auto mark = caption.indexOf(u'&');
      if (mark < 0)
        continue;
      EXPECT_TRUE(seen.insert(caption[mark + 1].toLower()).second) << caption.toStdString();
    }
  }
}

TEST(CommandTableTest, AScreenReaderSaysTheCaptionWithoutTheAmpersand) {
  EXPECT_EQ(FindRow(Place::File, 4)->SpokenCaption(), QStringLiteral("Connect...."));
}

}  // namespace
}  // namespace trevane
