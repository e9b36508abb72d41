#include "engine/providers/ftp/FactsLine.h"

#include "engine/providers/ftp/ListWords.h"
#include "engine/providers/ftp/ListedDate.h"

#include <algorithm>
#include <string_view>

namespace trevane::ftp {
namespace {

bool IsKey(QByteArrayView key) {
  return !key.isEmpty() && std::all_of(key.begin(), key.end(), [](char c) {
    return IsLetter(c) || IsDigit(c) || c == '.' || c == '-' || c == '_';
  });
}

void ReadType(QByteArrayView value, FactsLine& line) {
  ListedItem& item = line.item;
  if (IsSame(value, "file")) {
    item.kind = ListedItem::Kind::File;
  } else if (IsSame(value, "dir")) {
    item.kind = ListedItem::Kind::Folder;
  } else if (IsSame(value, "cdir") || IsSame(value, "pdir")) {
    item.kind = ListedItem::Kind::Folder;
    line.isFolderItself = true;
  } else if (BeginsWith(value, "OS.unix=slink") || BeginsWith(value, "OS.unix=symlink") ||
             IsSame(value, "link")) {
    item.kind = ListedItem::Kind::Link;
    if (const qsizetype colon = value.indexOf(':'); colon >= 0) {
      item.target = value.sliced(colon + 1).toByteArray();
    }
  } else {
    item.kind = ListedItem::Kind::Device;
  }
}

std::optional<quint32> ModeIn(QByteArrayView value) {
  constexpr qsizetype kMostDigits = 7;
  if (value.isEmpty() || value.size() > kMostDigits) {
    return std::nullopt;
  }
  quint32 mode = 0;
  for (const char c : value) {
    if (c < '0' || c > '7') {
      return std::nullopt;
    }
    mode = mode * 8 + static_cast<quint32>(c - '0');
  }
  return mode & 0777;
}

/// Facts whose meaning depends on others.
struct Facts {
  bool hasType = false;
  bool hasFolderSize = false;
  std::optional<QByteArrayView> permissions = {};
};

void ReadFact(QByteArrayView key, QByteArrayView value, Facts& facts, FactsLine& line) {
  ListedItem& item = line.item;
  if (IsSame(key, "type")) {
    facts.hasType = true;
    ReadType(value, line);
  } else if (IsSame(key, "size")) {
    item.size = NumberIn(value).value_or(-1);
  } else if (IsSame(key, "sizd")) {
    facts.hasFolderSize = true;
  } else if (IsSame(key, "modify")) {
    item.modified = ReadCompactTime(value, item.step);
  } else if (IsSame(key, "perm")) {
    facts.permissions = value;
  } else if (IsSame(key, "UNIX.mode")) {
    item.mode = ModeIn(value);
  } else if (IsSame(key, "UNIX.owner") || IsSame(key, "UNIX.ownername") ||
             (IsSame(key, "UNIX.uid") && item.owner.isEmpty())) {
    item.owner = value.toByteArray();
  } else if (IsSame(key, "UNIX.group") || IsSame(key, "UNIX.groupname") ||
             (IsSame(key, "UNIX.gid") && item.group.isEmpty())) {
    item.group = value.toByteArray();
  } else if (IsSame(key, "unique")) {
    item.unique = value.toByteArray();
  }
}

/// None of the rights that change an item or what is in it.
bool IsReadOnly(QByteArrayView permissions, ListedItem::Kind kind) {
  const std::string_view changing = kind == ListedItem::Kind::Folder ? "cdfmp" : "adfw";
  return std::none_of(permissions.begin(), permissions.end(),
                      [changing](char c) { return changing.find(Lower(c)) != std::string_view::npos; });
}

}  // namespace

std::optional<FactsLine> ReadFactsLine(QByteArrayView text) {
  FactsLine line;
  Facts facts;
  qsizetype at = 0;
  qsizetype blank = text.indexOf(' ');
  while (at < text.size() && at != blank) {
    const qsizetype equals = text.indexOf('=', at);
    if (equals < 0 || !IsKey(text.sliced(at, equals - at))) {
      return std::nullopt;
    }
    const QByteArrayView key = text.sliced(at, equals - at);
    qsizetype end = text.indexOf(';', equals);
    qsizetype next = end + 1;
    if (end >= 0 && blank > equals && blank < end && IsSame(key, "type") &&
        text.sliced(equals + 1, blank - equals).contains(':')) {
      // Blanks within a value are known of the texts of links only.
      blank = text.indexOf(' ', end);
    } else if (end < 0 || (blank >= 0 && blank < end)) {
      // The last fact without its semicolon.
      end = blank < 0 ? text.size() : blank;
      next = end;
    }
    ReadFact(key, text.sliced(equals + 1, end - equals - 1), facts, line);
    at = next;
  }
  if (at == 0 || at >= text.size()) {
    return std::nullopt;
  }
  line.name = text.sliced(at + 1);
  if (!facts.hasType && facts.hasFolderSize) {
    line.item.kind = ListedItem::Kind::Folder;
  }
  if (line.item.kind == ListedItem::Kind::Folder) {
    line.item.size = -1;
  }
  line.item.isReadOnly = facts.permissions && IsReadOnly(*facts.permissions, line.item.kind);
  return line;
}

}  // namespace trevane::ftp
