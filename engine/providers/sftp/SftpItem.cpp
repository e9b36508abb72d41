#include "engine/providers/sftp/SftpItem.h"

#include <QDateTime>

#include <algorithm>
#include <limits>

namespace trevane::sftp {
namespace {

constexpr quint32 kPermissions = 0777;
constexpr quint32 kWriteBits = 0222;
constexpr qint64 kSecond = 1000;

Date DateOf(quint32 seconds) {
  return {static_cast<qint64>(seconds) * kSecond};
}

}  // namespace

FileEntry EntryOf(const QString& name, const Attributes& own, const std::optional<Attributes>& target,
                  bool leadsNowhere) {
  FileEntry entry;
  entry.name = name;
  const Attributes& shown = own.IsLink() && target ? *target : own;
  if (own.IsLink()) {
    entry.attributes |= attribute::kLink;
    entry.leadsNowhere = leadsNowhere;
  }
  if (shown.IsFolder()) {
    entry.attributes |= attribute::kFolder;
  } else if (shown.IsFile() || shown.IsLink()) {
    constexpr auto kLargest = static_cast<quint64>(std::numeric_limits<qint64>::max());
    entry.attributes |= attribute::kArchive;
    entry.size = shown.size ? static_cast<qint64>(std::min(*shown.size, kLargest)) : -1;
  } else {
    entry.attributes |= attribute::kDevice;
  }
  if (name.startsWith(u'.')) {
    entry.attributes |= attribute::kHidden;
  }
  // The mode of a link has no meaning, and of a folder it hides no other right.
  if (shown.mode && shown.IsFile() && (*shown.mode & kWriteBits) == 0) {
    entry.attributes |= attribute::kReadOnly;
  }
  if (shown.times) {
    entry.modified = DateOf(shown.times->modified);
    entry.accessed = DateOf(shown.times->accessed);
  }
  return entry;
}

FileTraits TraitsOf(const Attributes& attributes) {
  FileTraits traits;
  if (attributes.mode) {
    traits.permissions = *attributes.mode & kPermissions;
  }
  if (attributes.times) {
    traits.modified = DateOf(attributes.times->modified);
  }
  return traits;
}

Attributes AttributesOf(const FileTraits& traits, quint32 accessed) {
  Attributes attributes;
  if (traits.permissions) {
    attributes.mode = *traits.permissions & kPermissions;
  }
  if (traits.modified.IsPresent()) {
    constexpr qint64 kLast = std::numeric_limits<quint32>::max();
    // Rounded down also before 1970, where a server has no dates.
    const qint64 msecs = traits.modified.msecs;
    const qint64 seconds = msecs >= 0 ? msecs / kSecond : -((-msecs + kSecond - 1) / kSecond);
    attributes.times =
        Attributes::Times{accessed, static_cast<quint32>(std::clamp<qint64>(seconds, 0, kLast))};
  }
  return attributes;
}

quint32 SecondsNow() {
  return static_cast<quint32>(QDateTime::currentSecsSinceEpoch());
}

QString ModeText(quint32 mode) {
  QString text;
  switch (mode & Attributes::kKindMask) {
    case Attributes::kFolder:
      text = QStringLiteral("d");
      break;
    case Attributes::kLink:
      text = QStringLiteral("l");
      break;
    case 0060000:
      text = QStringLiteral("b");
      break;
    case 0020000:
      text = QStringLiteral("c");
      break;
    case 0010000:
      text = QStringLiteral("p");
      break;
    case 0140000:
      text = QStringLiteral("s");
      break;
    default:
      text = QStringLiteral("-");
      break;
  }
  constexpr char kLetters[] = "rwx";
  for (int bit = 8; bit >= 0; --bit) {
    text += QLatin1Char((mode >> bit & 1U) != 0 ? kLetters[2 - bit % 3] : '-');
  }
  const auto mark = [&](quint32 flag, qsizetype at, char with, char without) {
    if ((mode & flag) != 0) {
      text[at] = QLatin1Char(text[at] == u'x' ? with : without);
    }
  };
  mark(04000, 3, 's', 'S');
  mark(02000, 6, 's', 'S');
  mark(01000, 9, 't', 'T');
  return text;
}

}  // namespace trevane::sftp
