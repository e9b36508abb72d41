#pragma once

#include <QString>

namespace trevane {

struct OpenOutcome {
  enum class Code {
    Started,
    /// There is no such file.
    NotFound,
    /// The system has nothing that opens files.
    NoProgram,
    Failed,
  };

  Code code = Code::Started;
  /// What went wrong, for people; empty when the program was started.
  QString text;
};

/// Opens a local file or folder with the program that the desktop has for it, as a double click does. It does
/// not wait: what the program makes of the file is not seen here. The program runs in the file's folder and
/// outlives this one. `path` is absolute.
[[nodiscard]] OpenOutcome OpenWithProgram(const QString& path);

}  // namespace trevane
