#pragma once

#include "engine/providers/ftp/ListParser.h"

#include <QByteArrayView>

#include <optional>

namespace trevane::ftp {

/// One line of MLSD or MLST.
struct FactsLine {
  /// Without its name.
  ListedItem item = {};
  /// A name, or a path where MLST is answered.
  QByteArrayView name = {};
  /// The folder that is listed, or the one above it.
  bool isFolderItself = false;
};

/// "fact=value;fact=value; name", without a blank in front; nothing for any other text.
[[nodiscard]] std::optional<FactsLine> ReadFactsLine(QByteArrayView text);

}  // namespace trevane::ftp
