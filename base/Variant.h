#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <limits>
#include <optional>
#include <variant>

namespace trevane {

/// A point in time, in milliseconds since 1970-01-01T00:00:00 UTC. A default-made date is absent: the file
/// system does not know it.
struct Date {
  static constexpr qint64 kAbsent = std::numeric_limits<qint64>::min();
  qint64 msecs = kAbsent;

  [[nodiscard]] bool IsPresent() const noexcept { return msecs != kAbsent; }
  friend bool operator==(Date, Date) = default;
};

/// The tag "no value was passed".
struct Missing {
  friend bool operator==(Missing, Missing) = default;
};

/// The engine's tagged value. The tag matters where a variant is an index: a text is a name, a number a
/// position or an `Index`.
using Variant = std::variant<Missing, QString, qint16, qint32, Date, QByteArray, QStringList>;

/// The whole number that a value holds, whatever its width; nothing for any other tag.
[[nodiscard]] inline std::optional<qint32> IntegerIn(const Variant& value) {
  if (const auto* wide = std::get_if<qint32>(&value)) {
    return *wide;
  }
  if (const auto* narrow = std::get_if<qint16>(&value)) {
    return *narrow;
  }
  return std::nullopt;
}

/// The date that a value holds; absent for any other tag.
[[nodiscard]] inline Date DateIn(const Variant& value) {
  const auto* date = std::get_if<Date>(&value);
  return date != nullptr ? *date : Date{};
}

}  // namespace trevane
