#pragma once

#include <QString>

#include <optional>

namespace trevane {

/// The meaning of the option text of a file member.
struct FileOptions {
  enum class Create { Nothing, File, Folder };
  Create create = Create::Nothing;
  bool overWrite = false;
  /// The folder that "Path=" names, which may hold commas.
  std::optional<QString> folder;
};

/// Reads an option list: "@Create=1", "@Create=2", "OverWrite=True", "OverWrite=False" with commas between
/// them, and in front of them, optionally, "Path=" with a folder. That folder reaches to the last comma that
/// has only known options, or nothing, behind it. Keywords are read without regard to case; an unknown option
/// fails with error::kInvalidParameter.
[[nodiscard]] FileOptions ParseFileOptions(const QString& option);

/// The folder of an option that is "Path=" and a folder and nothing else; nothing for an empty option. Fails
/// with error::kInvalidParameter for any other option.
[[nodiscard]] std::optional<QString> ParsePathOption(const QString& option);

}  // namespace trevane
