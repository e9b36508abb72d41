#pragma once

#include <QByteArray>

/// The look that the system asks of programs.
namespace trevane::systemlook {

/// The value of the toolkit's option "-platform" with which it takes the system's dark colours
/// where the user has chosen them. Empty where it does that by itself, and where the user names a platform in
/// the environment.
[[nodiscard]] QByteArray PlatformOption();

}  // namespace trevane::systemlook
