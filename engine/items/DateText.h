#pragma once

#include "base/Variant.h"

#include <QString>

namespace trevane {

/// A date in the system's short date and long time form, in local time; an absent date is an empty text.
[[nodiscard]] QString DateText(Date date);

}  // namespace trevane
