#pragma once

#include "engine/model/IxoFile.h"

#include <QString>

#include <memory>
#include <optional>

namespace trevane {

/// Whether a link in a folder that is `depth` folders below the top of what is copied leads to something that
/// is copied, too: its text is relative and does not lead above the top. With a link that was selected by
/// itself, at depth -1, nothing else is copied.
[[nodiscard]] bool StaysInside(const QString& text, qsizetype depth);

/// Makes a link like `source` in `folder`, or finds it there, and verifies it. Returns a sentence without a
/// full stop when it must be left out: the text leads out of what is copied, or one side has no links. Fails
/// with error::kExists when another item has its name.
[[nodiscard]] std::optional<QString> CopyLink(IxoFile& source, const std::shared_ptr<IxoFile>& folder,
                                              const QString& name, qsizetype depth);

}  // namespace trevane
