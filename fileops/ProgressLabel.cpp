#include "fileops/ProgressLabel.h"

#include "base/DisplayText.h"

#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>

namespace trevane {

namespace {

constexpr char16_t kFirstStrongIsolate = 0x2068;
constexpr char16_t kPopIsolate = 0x2069;
constexpr char16_t kEllipsis = 0x2026;

/// The program speaks English, whatever the system does.
QString Grouped(qint64 number) {
  return QLocale(QLocale::English, QLocale::UnitedStates).toString(number);
}

/// Three digits say enough, and do not flicker: "9.6", "34".
QString Rounded(double value) {
  return value < 9.95 ? QString::number(value, 'f', 1) : Grouped(std::llround(value));
}

struct Unit {
  double bytes;
  const char* name;
};

/// The largest unit in which the value is shown as 1 or more, and as fewer than 1,000 where there is one.
template <size_t kCount>
const Unit& UnitOf(const std::array<Unit, kCount>& units, double bytes) {
  const auto unit = std::find_if(units.begin(), units.end() - 1,
                                 [bytes](const Unit& each) { return bytes / each.bytes < 999.5; });
  return *unit;
}

constexpr std::array<Unit, 5> kSizes{
    {{1.0, "bytes"}, {0x1p10, "KiB"}, {0x1p20, "MiB"}, {0x1p30, "GiB"}, {0x1p40, "TiB"}}};
constexpr std::array<Unit, 4> kSpeeds{{{1.0, "B/s"}, {1e3, "kB/s"}, {1e6, "MB/s"}, {1e9, "GB/s"}}};

QString InUnit(double bytes, const Unit& unit) {
  return unit.bytes == 1.0 ? Grouped(std::llround(bytes)) : Rounded(bytes / unit.bytes);
}

QString FilesText(qint64 done, qint64 known) {
  // A folder that grows meanwhile has more than was known of it.
  if (known < done) {
    return Grouped(done) + (done == 1 ? QStringLiteral(" file") : QStringLiteral(" files"));
  }
  return QStringLiteral("%1 of %2 %3")
      .arg(Grouped(done), Grouped(known), known == 1 ? QStringLiteral("file") : QStringLiteral("files"));
}

bool IsDirectionMark(QChar character) {
  const char16_t unit = character.unicode();
  return unit == 0x061C || unit == 0x200E || unit == 0x200F || (unit >= 0x202A && unit <= 0x202E) ||
         (unit >= 0x2066 && unit <= 0x2069);
}

/// A whole number of characters from either end.
QString CutInTheMiddle(const QString& text, qsizetype longest) {
  if (text.size() <= longest) {
    return text;
  }
  qsizetype left = longest / 2;
  qsizetype right = text.size() - (longest - left - 1);
  if (text[left].isLowSurrogate()) {
    --left;
  }
  if (text[right].isLowSurrogate()) {
    ++right;
  }
  return text.left(left) + QChar(kEllipsis) + text.mid(right);
}

}  // namespace

QString BytesText(qint64 done, qint64 size) {
  if (size < done) {
    const auto bytes = static_cast<double>(done);
    const Unit& unit = UnitOf(kSizes, bytes);
    return InUnit(bytes, unit) + u' ' + QLatin1StringView(unit.name);
  }
  const auto whole = static_cast<double>(size);
  const Unit& unit = UnitOf(kSizes, whole);
  return QStringLiteral("%1 of %2 %3")
      .arg(InUnit(static_cast<double>(done), unit), InUnit(whole, unit), QLatin1StringView(unit.name));
}

QString SpeedText(double bytesASecond) {
  const Unit& unit = UnitOf(kSpeeds, bytesASecond);
  return InUnit(bytesASecond, unit) + u' ' + QLatin1StringView(unit.name);
}

QString TimeLeftText(double seconds) {
  constexpr double kLongest = 99.0 * 3600;
  if (!(seconds < kLongest)) {
    return {};
  }
  const auto whole = std::max<qint64>(static_cast<qint64>(seconds), 1);
  const qint64 minutes = whole / 60;
  if (minutes == 0) {
    return QStringLiteral("%1 s left").arg(whole);
  }
  if (minutes < 10) {
    return QStringLiteral("%1 min %2 s left").arg(minutes).arg(whole % 60);
  }
  if (minutes < 60) {
    return QStringLiteral("%1 min left").arg(minutes);
  }
  return QStringLiteral("%1 h %2 min left").arg(minutes / 60).arg(minutes % 60);
}

QString LabelPath(const QString& folder, const QString& name) {
  QString path = DisplayText(folder.isEmpty() ? name : folder + u'\\' + name);
  path.removeIf(IsDirectionMark);
  const bool mayTurnRound = std::any_of(path.cbegin(), path.cend(), [](QChar character) {
    return character.direction() == QChar::DirR || character.direction() == QChar::DirAL ||
           character.isSurrogate();
  });
  path = CutInTheMiddle(path, ProgressLabel::kLongestPath);
  return mayTurnRound ? QChar(kFirstStrongIsolate) + path + QChar(kPopIsolate) : path;
}

std::optional<QString> ProgressLabel::Next(const ItemProgress& item, qint64 now) {
  Observe(item, now);
  if (shownAt_ && now - *shownAt_ < kEvery) {
    return std::nullopt;
  }
  const QString figures = Figures(item, now);
  // Of an item that is alone, the gauge tells the name when the bar advances.
  if (figures.isEmpty() && item.folder.isEmpty() && (entry_.isEmpty() || item.name == entry_)) {
    return std::nullopt;
  }
  return Label(item, figures, now);
}

QString ProgressLabel::Now(const ItemProgress& item, qint64 now) {
  Observe(item, now);
  return Label(item, Figures(item, now), now);
}

QString ProgressLabel::Label(const ItemProgress& item, const QString& figures, qint64 now) {
  shownAt_ = now;
  const QString path = LabelPath(item.folder, item.name);
  return figures.isEmpty() ? path : path + QStringLiteral(": ") + figures;
}

void ProgressLabel::Observe(const ItemProgress& item, qint64 now) {
  const bool isOfAll = item.allSize >= 0;
  const qint64 bytes = isOfAll ? item.allBytes : item.bytes;
  // One that is read once more starts anew.
  const bool isAnother = samples_.empty() || bytes < samples_.back().bytes ||
                         (!isOfAll && (item.name != name_ || item.folder != folder_));
  if (isAnother) {
    name_ = item.name;
    folder_ = item.folder;
    since_ = now;
    samples_.clear();
  } else if (samples_.size() > 1 && now - samples_[samples_.size() - 2].time < kEvery) {
    samples_.back() = {now, bytes};
    return;
  }
  samples_.push_back({now, bytes});
  while (samples_.size() > 2 && now - samples_[1].time >= kSpeedOver) {
    samples_.pop_front();
  }
}

QString ProgressLabel::Figures(const ItemProgress& item, qint64 now) const {
  if (item.allSize >= 0) {
    return FiguresOfAll(item, now);
  }
  const bool tellsBytes = item.bytes > 0 && now - since_ >= kBytesAfter;
  if (!tellsBytes) {
    return item.files >= 0 ? FilesText(item.files, item.filesKnown) : QString();
  }
  return (QStringList{BytesText(item.bytes, item.size)} + Pace(item.size - item.bytes, now))
      .join(QStringLiteral(", "));
}

QString ProgressLabel::FiguresOfAll(const ItemProgress& item, qint64 now) const {
  // The line has no room for their bytes, too.
  return (QStringList{FilesText(item.files, item.filesKnown)} + Pace(item.allSize - item.allBytes, now))
      .join(QStringLiteral(", "));
}

QStringList ProgressLabel::Pace(qint64 left, qint64 now) const {
  QStringList figures;
  if (const std::optional<double> speed = Speed(now); speed && *speed >= 1) {
    figures.append(SpeedText(*speed));
    if (now - since_ >= kTimeLeftAfter && left > 0) {
      figures.append(TimeLeftText(static_cast<double>(left) / *speed));
    }
  }
  figures.removeAll(QString());
  return figures;
}

std::optional<double> ProgressLabel::Speed(qint64 now) const {
  const qint64 over = now - samples_.front().time;
  if (now - since_ < kSpeedAfter || over <= 0) {
    return std::nullopt;
  }
  return static_cast<double>(samples_.back().bytes - samples_.front().bytes) * 1000.0 /
         static_cast<double>(over);
}

}  // namespace trevane
