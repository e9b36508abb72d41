#pragma once

#include "platform/Volumes.h"

#include <QHash>

namespace trevane {

/// The drives of the running system. On Windows they are the system's own. Elsewhere "C:" is the root file
/// system and each further mounted volume takes the next free letter, in the order of mounting; file systems
/// that hold no files of anybody have none. A volume keeps its letter for the whole run, also when it is
/// removed and mounted again, and no other volume ever gets that letter; when "Z:" is taken, further volumes
/// have none.
class SystemVolumes final : public Volumes {
 public:
  /// `systemRoot` is put before the paths of the system's own tables (/proc, /sys, /dev): empty for the
  /// running system, a folder of fixtures in tests. The volumes' root paths are never changed by it.
  explicit SystemVolumes(QString systemRoot = {});

  bool Refresh() override;
  [[nodiscard]] const std::vector<Volume>& Current() const override { return current_; }
  [[nodiscard]] SpaceQuery QueryOfSpace(const Volume& volume) const override;

 private:
  [[nodiscard]] QChar LetterOf(const QString& identity);

  QString systemRoot_;
  std::vector<Volume> current_;
  /// By the identity of the volume.
  QHash<QString, QChar> letters_;
};

}  // namespace trevane
