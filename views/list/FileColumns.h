#pragma once

#include <QString>

#include <array>

namespace trevane {

/// The columns of the list in their fixed order.
enum class FileColumn { Name, Size, Type, Modified, Accessed, Created, Attributes };

inline constexpr int kFileColumnCount = 7;

/// Key and text of the column's header.
[[nodiscard]] const QString& HeaderText(FileColumn column);

/// A size as the list shows it: right-aligned in exactly ten characters, of a longer one the last ten, so
/// that the order of the texts is that of the numbers up to there. Nothing for a negative size.
[[nodiscard]] QString SizeText(qint64 size);

/// Orders sizes as SizeText orders their texts.
[[nodiscard]] quint64 SizeSortKey(qint64 size) noexcept;

}  // namespace trevane
