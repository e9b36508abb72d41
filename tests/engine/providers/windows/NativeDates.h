#pragma once

#include "engine/model/FileEntry.h"

#include <QString>

namespace trevane::test {

/// Sets the date of a file or a folder with the system's own means. `native` is in the literal form.
void SetNativeModified(const QString& native, Date modified);

}  // namespace trevane::test
