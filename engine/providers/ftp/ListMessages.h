#pragma once

#include "engine/providers/ftp/ListWords.h"

namespace trevane::ftp {

/// A line that stands for no item of any folder: a total, a heading, a line of dashes, the label of a volume.
[[nodiscard]] bool IsHeading(const ListWords& words);
/// A text that a server sends for an empty folder, where it is the only line beside headings. Few and exact:
/// "not found" with a path, or "denied", is no empty folder.
[[nodiscard]] bool TellsEmpty(QByteArrayView line);

}  // namespace trevane::ftp
