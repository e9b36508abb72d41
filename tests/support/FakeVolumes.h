#pragma once

#include "platform/Volumes.h"

#include <QHash>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace trevane::test {

/// Drives of the test's own, most often folders below a temporary one. Changes show at once with Set, or at
/// the next Refresh with SetNext.
class FakeVolumes final : public Volumes {
 public:
  explicit FakeVolumes(std::vector<Volume> current = {}) : current_(std::move(current)), next_(current_) {}

  bool Refresh() override {
    ++refreshes_;
    if (!answers_ || next_.empty()) {
      return false;
    }
    current_ = next_;
    return true;
  }
  [[nodiscard]] const std::vector<Volume>& Current() const override { return current_; }

  [[nodiscard]] SpaceQuery QueryOfSpace(const Volume& volume) const override {
    const auto known = space_.constFind(volume.name);
    const std::optional<VolumeSpace> space = known == space_.cend() ? std::nullopt : std::optional(*known);
    return [space, before = beforeSpace_, name = volume.name] {
      if (before) {
        before(name);
      }
      return space;
    };
  }
  /// Runs on the asking thread before a space is known; may hang.
  void SetBeforeSpace(std::function<void(const QString& name)> before) { beforeSpace_ = std::move(before); }
  void SetSpace(const QString& name, VolumeSpace space) { space_.insert(name, space); }

  void Set(std::vector<Volume> volumes) {
    next_ = std::move(volumes);
    current_ = next_;
  }
  void SetNext(std::vector<Volume> volumes) { next_ = std::move(volumes); }
  /// Without an answer Refresh gives false, as it does when the answer holds no drive.
  void SetAnswers(bool answers) { answers_ = answers; }
  [[nodiscard]] int RefreshCount() const { return refreshes_; }

 private:
  std::vector<Volume> current_;
  std::vector<Volume> next_;
  QHash<QString, VolumeSpace> space_;
  std::function<void(const QString&)> beforeSpace_;
  bool answers_ = true;
  int refreshes_ = 0;
};

}  // namespace trevane::test
