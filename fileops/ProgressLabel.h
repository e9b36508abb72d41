#pragma once

#include "engine/model/ItemObserver.h"

#include <QString>
#include <QStringList>

#include <deque>
#include <optional>

namespace trevane {

/// Composes what the gauge tells between two advances of its bar: "gripper.pac: 34 of 95 MiB, 9.6 MB/s, 6 s
/// left", and for an item within a folder "programs\gripper.pac: 5,016 of 10,000 files"; where the sizes of
/// all files are known, with the speed and the time left of all. For one entry of the bar, or for files that
/// are its entries; times are milliseconds of any clock that only goes forward.
class ProgressLabel final {
 public:
  /// The shortest time between two labels.
  static constexpr qint64 kEvery = 100;
  /// Figures of bytes begin when a file has taken so long: those of small files would only flicker.
  static constexpr qint64 kBytesAfter = 500;
  /// A speed, and a time left, begin when the file has been observed for so long.
  static constexpr qint64 kSpeedAfter = 1000;
  static constexpr qint64 kTimeLeftAfter = 2000;
  /// The speed is that of the last so many milliseconds.
  static constexpr qint64 kSpeedOver = 5000;
  /// A longer path is cut in its middle, so that the figures are seen.
  static constexpr qsizetype kLongestPath = 48;

  ProgressLabel() = default;
  /// `entry` is the name of the entry of the bar, which is shown already. An item without a folder that has
  /// another one is within it, too.
  explicit ProgressLabel(const QString& entry) : entry_(entry) {}

  /// The next label, or nothing when the one that is shown is to stay.
  [[nodiscard]] std::optional<QString> Next(const ItemProgress& item, qint64 now);
  /// The label at once, however short a time the last one was shown.
  [[nodiscard]] QString Now(const ItemProgress& item, qint64 now);

 private:
  struct Sample {
    qint64 time;
    qint64 bytes;
  };

  void Observe(const ItemProgress& item, qint64 now);
  [[nodiscard]] QString Label(const ItemProgress& item, const QString& figures, qint64 now);
  [[nodiscard]] QString Figures(const ItemProgress& item, qint64 now) const;
  [[nodiscard]] QString FiguresOfAll(const ItemProgress& item, qint64 now) const;
  /// The speed, and the time left for so many bytes, as far as they are known.
  [[nodiscard]] QStringList Pace(qint64 left, qint64 now) const;
  /// Bytes a second; nothing as long as it is not known.
  [[nodiscard]] std::optional<double> Speed(qint64 now) const;

  QString entry_;
  QString name_;
  QString folder_;
  qint64 since_ = 0;
  std::deque<Sample> samples_;
  std::optional<qint64> shownAt_;
};

/// The parts of the label: "34 of 95 MiB", "34 MiB" where the size is not known.
[[nodiscard]] QString BytesText(qint64 done, qint64 size);
/// "9.6 MB/s".
[[nodiscard]] QString SpeedText(double bytesASecond);
/// "6 s left", "2 min 5 s left", "12 min left", "3 h 20 min left"; empty beyond 99 hours.
[[nodiscard]] QString TimeLeftText(double seconds);
/// A path on one line, cut in its middle, whose direction of writing does not reach what follows it.
[[nodiscard]] QString LabelPath(const QString& folder, const QString& name);

}  // namespace trevane
