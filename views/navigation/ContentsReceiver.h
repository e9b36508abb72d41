#pragma once

#include "engine/model/FileEntry.h"

#include <QString>

namespace trevane {

/// Takes the contents of a drive, a folder or a controller as they are read. It calls nothing of the engine.
class ContentsReceiver {
 public:
  virtual ~ContentsReceiver() = default;

  /// Before the first entries, and also where there are none. `name` is the one that the file system has for
  /// the place, or the text of its node. A second call begins anew.
  virtual void Begin(const QString& name, bool onController) = 0;
  /// What came until now is not kept; a question may follow.
  virtual void Discard() = 0;
  /// False ends the reading.
  [[nodiscard]] virtual bool Add(Listing&& entries) = 0;
};

}  // namespace trevane
