#pragma once

#include <QString>

#include <functional>

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
  /// The reason of a failure, for people; empty when the program was started.
  QString text;
};

/// Opens a local file or folder with the program that the desktop has for it, as a double click does. It does
/// not wait: what the program makes of the file is not seen here. The program runs in the file's folder and
/// outlives this one. `path` is absolute. From any thread: a file of a network may take long.
[[nodiscard]] OpenOutcome OpenWithProgram(const QString& path);

/// `path` as it was given, and what went wrong, for people.
using OpenFailureListener = std::function<void(const QString& path, const QString& reason)>;

/// Called from the event loop for a file whose opening was started and failed within 10 seconds. On Linux the
/// desktop's opener reports this as it ends; Windows reports every failure at once and never calls this.
void SetOpenFailureListener(OpenFailureListener listener);

}  // namespace trevane
