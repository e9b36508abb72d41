#pragma once

#include "platform/Volumes.h"

#include <QTemporaryDir>

namespace trevane::bench {

/// A temporary folder as drive C:.
class BenchVolumes final : public Volumes {
 public:
  BenchVolumes() : current_{{QStringLiteral("C:"), folder_.path() + u'/', drivetype::kFixed}} {}

  bool Refresh() override { return true; }
  [[nodiscard]] const std::vector<Volume>& Current() const override { return current_; }
  [[nodiscard]] QString Root() const { return current_.front().rootPath; }

 private:
  QTemporaryDir folder_;
  std::vector<Volume> current_;
};

}  // namespace trevane::bench
