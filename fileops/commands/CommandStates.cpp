#include "fileops/commands/CommandStates.h"

#include "views/addresses/NodeTags.h"

#include <algorithm>
#include <array>

namespace trevane {

namespace {

enum class Kind { Workspace, MyComputer, Drive, Controller, FolderOrFile };
constexpr std::size_t kKinds = 5;

Kind KindOf(qint32 tag) {
  if ((tag & TAG_WORKSPACE) != 0)
    return Kind::Workspace;
  if ((tag & TAG_MYCOM) != 0)
    return Kind::MyComputer;
  if ((tag & TAG_DRIVE) != 0)
    return Kind::Drive;
  if (tag == (TAG_COMPUTER | TAG_CONTROLLER))
    return Kind::Controller;
  return Kind::FolderOrFile;
}

enum class Cell {
  Off,
  On,
  /// As the clipboard and the selection allow it.
  Paste,
  /// On where the entry itself is pointed at.
  OnForEntry,
  OffForEntry,
};

struct StateRow {
  Place place;
  int index;
  std::array<Cell, kKinds> cells;
};

constexpr auto Off = Cell::Off;
constexpr auto On = Cell::On;
constexpr auto P = Cell::Paste;
constexpr auto E = Cell::OnForEntry;
constexpr auto N = Cell::OffForEntry;

constexpr auto kStates = std::to_array<StateRow>({
    // The columns are workspace, My Computer, drive, controller, folder or file.
    {Place::Toolbar, 2, {On, On, On, On, On}},      {Place::Toolbar, 3, {On, On, On, On, On}},
    {Place::Toolbar, 5, {Off, N, On, On, On}},      {Place::Toolbar, 7, {Off, Off, Off, Off, On}},
    {Place::Toolbar, 8, {Off, Off, Off, Off, On}},  {Place::Toolbar, 9, {Off, Off, P, P, P}},
    {Place::Toolbar, 10, {Off, Off, Off, Off, On}}, {Place::Toolbar, 12, {On, On, On, On, On}},
    {Place::Toolbar, 13, {Off, Off, Off, On, Off}}, {Place::Edit, 0, {Off, Off, Off, Off, On}},
    {Place::Edit, 1, {Off, Off, Off, Off, On}},     {Place::Edit, 2, {Off, Off, P, P, P}},
    {Place::Edit, 4, {Off, Off, Off, Off, On}},     {Place::Edit, 6, {On, On, On, On, On}},
    {Place::Popup, 2, {Off, Off, On, E, E}},        {Place::Popup, 4, {Off, Off, Off, Off, E}},
    {Place::Popup, 5, {Off, Off, Off, Off, E}},     {Place::Popup, 6, {Off, Off, P, P, P}},
    {Place::Popup, 8, {Off, Off, Off, Off, E}},     {Place::Popup, 10, {Off, Off, Off, Off, E}},
    {Place::Popup, 11, {Off, Off, On, On, On}},     {Place::Popup, 13, {Off, E, E, E, E}},
});

bool Resolve(Cell cell, const CommandContext& context) {
  switch (cell) {
    case Cell::Off:
      return false;
    case Cell::On:
      return true;
    case Cell::Paste:
      return context.clipboardCount >= 1 && context.selectedListItems <= 1;
    case Cell::OnForEntry:
      return context.entry;
    case Cell::OffForEntry:
      return !context.entry;
  }
  return false;
}

}  // namespace

std::optional<bool> EnabledByEntry(Place place, int index, const CommandContext& context) {
  const auto row = std::ranges::find_if(kStates, [&](const StateRow& candidate) {
    return candidate.place == place && candidate.index == index;
  });
  if (row == kStates.end())
    return std::nullopt;
  return Resolve(row->cells[static_cast<std::size_t>(KindOf(context.tag))], context);
}

}  // namespace trevane
