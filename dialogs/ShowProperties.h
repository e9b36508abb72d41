#pragma once

#include "base/DateFormatter.h"
#include "base/Variant.h"
#include "engine/items/FileAccess.h"
#include "prompts/UserPrompts.h"

#include <QLocale>
#include <QString>

#include <functional>
#include <optional>

namespace trevane {

/// The sources of the properties of an entry. All of them outlive the call.
struct PropertySources {
  FileAccess files;
  /// Dates as the list shows them.
  std::function<QString(Date)> dateText = FormatDate;
  /// The type of a file of that name, as the list shows it; without it the engine's.
  std::function<QString(const QString& name)> typeText = {};
};

/// The word for a kind of drive, by the first bit of the tag that there is one for; empty when there is none.
[[nodiscard]] QString DriveTypeName(qint32 tag);

/// "512 bytes", and from a KiB up with a rounded figure: "1,234,567 bytes (1.18 MiB)". Nothing for a negative
/// size. A locale that groups no digits is taken for English.
[[nodiscard]] QString PropertySizeText(qint64 size, const QLocale& locale = QLocale::system());

/// The table for the entry with the address `path` and the tag of its node or item. Nothing for the workspace
/// and for an empty path. Values that cannot be read stay empty.
[[nodiscard]] std::optional<PropertyTable> MakePropertyTable(const QString& path, qint32 tag,
                                                             const PropertySources& sources);

/// Shows the table, if there is one.
void ShowProperties(const QString& path, qint32 tag, const PropertySources& sources);

}  // namespace trevane
