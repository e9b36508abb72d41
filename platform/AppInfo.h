#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// The running program. Everything here works before there is an application object.
namespace trevane::appinfo {

/// The folder of the executable: absolute, on Linux with links resolved, without a separator at its end (but
/// "/" itself).
[[nodiscard]] QString ProgramFolder();

/// The executable's name without its extension.
[[nodiscard]] QString ExecutableName();

/// The text behind the program's own path, where the system hands over one text, as Windows does; nothing
/// where it hands over the arguments one by one.
[[nodiscard]] std::optional<QString> CommandLine();

/// The program's arguments without its own name: those of main, or the system's own where these are without
/// loss.
[[nodiscard]] QStringList Arguments(int count, char** values);

/// "major.minor.patch".
[[nodiscard]] QString Version();

/// The separator between a folder and a name on this system: "/", or "\" on Windows.
[[nodiscard]] QString PathSeparator();

/// The user's own folders for what the program keeps where its own folder is closed: settings, and what is of
/// less weight, such as a log. Absolute, without a separator at the end; they need not exist. Empty where the
/// system names none.
[[nodiscard]] QString UserSettingsFolder();
[[nodiscard]] QString UserStateFolder();

}  // namespace trevane::appinfo
