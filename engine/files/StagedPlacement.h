#pragma once

#include "engine/files/StagedPlace.h"
#include "engine/model/Content.h"

#include <QString>

#include <optional>

namespace trevane {

/// Gives content that was built beside a file the file's own name. At every moment the old content or the new
/// one has that name or, where the server cannot replace in one step, the old one has a second temporary name
/// that the error tells.
class StagedPlacement {
 public:
  /// `written` is the size of the new content; `rung` gives the form of the second name.
  StagedPlacement(const StagedPlace& place, NameRung rung, qint64 written)
      : place_(place), rung_(rung), written_(written) {}

  void Put(const QString& built, const QString& path, SinkRequest::Mode mode);

 private:
  /// Nothing when that could not be asked.
  [[nodiscard]] std::optional<bool> IsThere(const QString& path);
  void PutNew(const QString& built, const QString& path);
  void PutWithAside(const QString& built, const QString& path);
  /// Renames, and succeeds also when the server reports a failure and did it all the same.
  void RenameSurely(const QString& from, const QString& to);
  [[noreturn]] void PutBack(const QString& aside, const QString& path, const RunTimeError& failure);

  const StagedPlace& place_;
  NameRung rung_;
  qint64 written_;
};

}  // namespace trevane
