#pragma once

#include <QByteArray>

/// How the system wants programs to look.
namespace trevane::systemlook {

/// What the toolkit has to be given as its option "-platform" so that it takes the system's dark colours
/// where the user has chosen them. Empty where it does that by itself, and where the user names a platform in
/// the environment.
[[nodiscard]] QByteArray PlatformOption();

}  // namespace trevane::systemlook
