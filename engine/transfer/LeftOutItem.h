#pragma once

#include <QString>

#include <vector>

namespace trevane {

/// An item that a copy left out without failing.
struct LeftOutItem {
  QString name;
  /// A sentence without a full stop.
  QString reason;
  /// It was copied; only a move must not delete its source.
  bool isCopied = false;
  /// It was copied, and is told of a copy, too: see ContentSource::HadWrongSize.
  bool hadWrongSize = false;
};

using LeftOutItems = std::vector<LeftOutItem>;

}  // namespace trevane
