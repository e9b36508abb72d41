#include "engine/fetched/SafeFileName.h"

#include <QStringList>
#include <QStringView>

#include <algorithm>

namespace trevane {

namespace {

constexpr QChar kSubstitute = u'_';
/// UTF-16 units. With the folders above it the path stays below the 260 of Windows.
constexpr qsizetype kMostUnits = 120;
/// Leaves room for what programs add to the names of their copies.
constexpr qsizetype kMostBytes = 230;
constexpr qsizetype kLongestExtension = 20;

/// Characters that turn the direction of writing can make a program look like a document.
bool IsDirectionMark(char16_t unit) {
  return unit == 0x200E || unit == 0x200F || unit == 0x061C || (unit >= 0x202A && unit <= 0x202E) ||
         (unit >= 0x2066 && unit <= 0x2069);
}

bool IsUsable(QStringView name, qsizetype at) {
  const char16_t unit = name[at].unicode();
  if (QChar::isHighSurrogate(unit)) {
    return at + 1 < name.size() && name[at + 1].isLowSurrogate();
  }
  if (QChar::isLowSurrogate(unit)) {
    return at > 0 && name[at - 1].isHighSurrogate();
  }
  return unit >= u' ' && (unit < 0x7F || unit > 0x9F) && !QStringView(u"<>:\"/\\|?*").contains(QChar(unit)) &&
         unit != 0xFEFF && unit != 0x2028 && unit != 0x2029 && !IsDirectionMark(unit);
}

/// A device of Windows, whatever its extension is.
bool IsDeviceName(const QString& name) {
  const QString stem = name.left(name.indexOf(u'.')).trimmed().toUpper();
  static const QStringList devices{
      QStringLiteral("CON"),    QStringLiteral("PRN"),     QStringLiteral("AUX"),   QStringLiteral("NUL"),
      QStringLiteral("CONIN$"), QStringLiteral("CONOUT$"), QStringLiteral("CLOCK$")};
  const bool isNumbered = stem.size() == 4 && (stem.startsWith(u"COM") || stem.startsWith(u"LPT"));
  return devices.contains(stem) || (isNumbered && QStringView(u"0123456789¹²³").contains(stem.back()));
}

QString Shortened(const QString& name) {
  const auto fits = [](const QString& text) {
    return text.size() <= kMostUnits && text.toUtf8().size() <= kMostBytes;
  };
  if (fits(name)) {
    return name;
  }
  const qsizetype dot = name.lastIndexOf(u'.');
  const bool hasExtension = dot > 0 && name.size() - dot <= kLongestExtension;
  const QString extension = hasExtension ? name.mid(dot) : QString();
  QString stem = hasExtension ? name.left(dot) : name;
  while (!fits(stem + extension)) {
    const bool isPair = stem.size() > 1 && stem.back().isLowSurrogate();
    stem.chop(isPair ? 2 : 1);
  }
  return stem + extension;
}

}  // namespace

QString SafeFileName(const QString& name) {
  QString safe = name;
  for (qsizetype at = 0; at < name.size(); ++at) {
    if (!IsUsable(name, at)) {
      safe[at] = kSubstitute;
    }
  }
  safe = Shortened(safe);
  // Windows drops them at the end.
  for (qsizetype at = safe.size() - 1; at >= 0 && (safe[at] == u'.' || safe[at] == u' '); --at) {
    safe[at] = kSubstitute;
  }
  if (safe.isEmpty() || IsDeviceName(safe)) {
    safe.prepend(kSubstitute);
  }
  return safe;
}

}  // namespace trevane
