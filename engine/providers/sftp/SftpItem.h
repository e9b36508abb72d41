#pragma once

#include "engine/model/FileEntry.h"
#include "engine/model/FileTraits.h"
#include "engine/providers/sftp/SftpPacket.h"

#include <QString>

#include <optional>

namespace trevane::sftp {

/// The entry of an item of that name. `target` is what a link leads to, nothing where that could not be asked
/// about or the item is no link.
[[nodiscard]] FileEntry EntryOf(const QString& name, const Attributes& own,
                                const std::optional<Attributes>& target, bool leadsNowhere);

[[nodiscard]] FileTraits TraitsOf(const Attributes& attributes);

/// What is to be set of `traits`; `accessed` in seconds since 1970, since a server sets both times or none.
[[nodiscard]] Attributes AttributesOf(const FileTraits& traits, quint32 accessed);

/// Since 1970.
[[nodiscard]] quint32 SecondsNow();

/// "-rw-r--r--".
[[nodiscard]] QString ModeText(quint32 mode);

}  // namespace trevane::sftp
