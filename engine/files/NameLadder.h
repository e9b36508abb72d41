#pragma once

#include "base/RunTimeError.h"
#include "engine/files/TemporaryName.h"

#include <QHash>
#include <QString>

#include <mutex>

namespace trevane {

/// Where new content is built until it gets its place. A server that refuses a rung is tried with the next.
enum class NameRung {
  /// Beside the file, under a name of the forms of TemporaryForm.
  Long,
  Short,
  OwnExtension,
  /// Under its own name: the server takes no other.
  InPlace
};

namespace nameladder {

/// The form of the names on a rung, which is not InPlace.
[[nodiscard]] TemporaryForm FormOf(NameRung rung);

/// The rung to try after a failure: the next one when the failure speaks of the name or of rights, InPlace
/// when the server cannot do this at all, and the same one for all others, such as a lost line or a full
/// disk: another name does not help there.
[[nodiscard]] NameRung After(NameRung rung, const RunTimeError& failure);

}  // namespace nameladder

/// What was learnt of the names that servers take, for the life of the program: one for all threads. A server
/// is known by a text, which names no folder.
class LearntNaming {
 public:
  /// The first rung that the server is not known to refuse.
  [[nodiscard]] NameRung FirstRung(const QString& server) const;
  /// Whether a file got its place from the first rung, so that the next will, too.
  [[nodiscard]] bool IsProved(const QString& server) const;

  /// A file got its place from this rung, which the server thus takes; those before it were refused.
  void Accept(const QString& server, NameRung rung);
  /// The server refused a name on a rung that was proved: it is not proved any more, but is tried again.
  void Doubt(const QString& server);

 private:
  struct Known {
    NameRung first = NameRung::Long;
    bool isProved = false;
  };

  mutable std::mutex mutex_;
  QHash<QString, Known> known_;
};

}  // namespace trevane
