#pragma once

#include <QtGlobal>

#include <functional>

namespace trevane::systemsound {

/// The sounds, as MessageBeep of the Windows API numbers them.
inline constexpr qint32 kCritical = 16;
inline constexpr qint32 kQuestion = 32;
inline constexpr qint32 kExclamation = 48;
inline constexpr qint32 kInformation = 64;

/// Plays a system sound and returns at once. Where the system has no call for it, nothing is heard until
/// SetBeeper has set the function.
void Beep(qint32 kind);

/// Sets the function that Beep calls where the system has no call of its own; the application sets it once it
/// has a window system.
void SetBeeper(std::function<void(qint32 kind)> beeper);

/// Sleeps; zero and less do not.
void SleepMilliseconds(qint32 milliseconds);

}  // namespace trevane::systemsound
