#include "tests/engine/providers/ftp/ParseAnything.h"

#include "engine/providers/ftp/ListParser.h"

#include <algorithm>
#include <optional>

namespace trevane::ftp::test {
namespace {

bool IsNameOfItem(const QByteArray& name) {
  const bool isUnsound = std::any_of(name.begin(), name.end(),
                                     [](char c) { return c == '/' || c == '\0' || c == '\r' || c == '\n'; });
  return !name.isEmpty() && name != "." && name != ".." && !isUnsound;
}

QByteArray WrongIn(const ListedItem& item) {
  if (item.size < -1) {
    return "a size below -1";
  }
  if (item.modified.IsPresent() != (item.step != DateStep::None)) {
    return "a date without a step, or a step without a date";
  }
  if (item.mode && *item.mode > 0777U) {
    return "more than permission bits";
  }
  return {};
}

QByteArray WrongIn(const ParsedListing& listing, qsizetype lines) {
  for (const ListedItem& item : listing.items) {
    if (!IsNameOfItem(item.name)) {
      return "no name of an item: " + item.name.toHex();
    }
    if (const QByteArray wrong = WrongIn(item); !wrong.isEmpty()) {
      return wrong;
    }
    static_cast<void>(ZoneOf(item, 0));
  }
  if (static_cast<qsizetype>(listing.items.size()) + listing.unreadable > lines) {
    return "more items than lines";
  }
  if (listing.firstUnreadable.isEmpty() != (listing.unreadable == 0)) {
    return "unreadable lines without the first of them";
  }
  return {};
}

bool IsSame(const ParsedListing& left, const ParsedListing& right) {
  return left.items == right.items && left.unreadable == right.unreadable &&
         left.firstUnreadable == right.firstUnreadable;
}

}  // namespace

QByteArray ParseAnything(const QByteArray& bytes) {
  // 2024-06-15.
  const ServerClock clock{.now = 1718452800000, .zone = 60};
  const qsizetype lines = std::max(bytes.count('\n'), bytes.count('\r')) + 1;
  const ParsedListing list = ParseList(bytes, clock);
  const ParsedListing facts = ParseFacts(bytes);
  for (const ParsedListing* listing : {&list, &facts}) {
    if (const QByteArray wrong = WrongIn(*listing, lines); !wrong.isEmpty()) {
      return wrong;
    }
  }
  if (!IsSame(list, ParseList(bytes, clock)) || !IsSame(facts, ParseFacts(bytes))) {
    return "another outcome the second time";
  }
  static_cast<void>(ParseTimeValue(bytes));
  const std::optional<ListedItem> item = ParseItemFacts(bytes);
  if (item && !item->name.isEmpty()) {
    return "facts with a name";
  }
  return item ? WrongIn(*item) : QByteArray();
}

}  // namespace trevane::ftp::test
