#pragma once

#include "engine/files/StagedPlace.h"
#include "engine/files/StagedPrivateFile.h"
#include "engine/model/Content.h"

#include <QString>

namespace trevane {

/// Writes content under its own name on a server that takes no other. The old content is read into a private
/// file of this computer first, which is removed only when the new content was read back. When something
/// fails the old content is written again; when that fails, too, the private file stays and the error names
/// it. Content that is there already is not written.
class StagedInPlace {
 public:
  StagedInPlace(const StagedPlace& place, const QString& path, const SinkRequest& request)
      : place_(place), path_(path), request_(request) {}

  /// `content` is new.
  void Put(StagedPrivateFile& content);

 private:
  void PutNew(StagedPrivateFile& content);
  void PutOver(const SeenItem& old, StagedPrivateFile& content);
  void Store(StagedPrivateFile& content, RawFiles::Creation creation);
  [[nodiscard]] bool Holds(StagedPrivateFile& content);
  /// After a failure for a new file: takes away what was written of it; it is not cancelled.
  void TakeAway();
  /// Whether the old content is whole under its name again; it is not cancelled.
  [[nodiscard]] bool IsPutBack(StagedPrivateFile& old) noexcept;

  const StagedPlace& place_;
  const QString& path_;
  const SinkRequest& request_;
  /// The server accepted to store under this name.
  bool isOpened_ = false;
};

}  // namespace trevane
