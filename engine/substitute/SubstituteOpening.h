#pragma once

#include "engine/model/ControllerOpening.h"
#include "engine/model/ControllerRequest.h"

#include <memory>
#include <vector>

namespace trevane {

class RemoteOpenings;
class SubstituteWorkspace;
struct RemoteContext;

/// Slow controllers are connected side by side, the others when they are taken.
class SubstituteOpening final : public ControllerOpening {
 public:
  SubstituteOpening(SubstituteWorkspace& workspace, RemoteContext& remote,
                    const std::vector<ControllerRequest>& requests);
  ~SubstituteOpening() override;
  SubstituteOpening(const SubstituteOpening&) = delete;
  SubstituteOpening& operator=(const SubstituteOpening&) = delete;

  [[nodiscard]] std::shared_ptr<IxoController> Take(size_t position) override;
  void Cancel() override;

 private:
  SubstituteWorkspace& workspace_;
  const std::vector<ControllerRequest> requests_;
  /// For each request its position among the slow ones; -1 for one that is not slow.
  std::vector<std::ptrdiff_t> slow_;
  std::unique_ptr<RemoteOpenings> openings_;
  bool isCancelled_ = false;
};

}  // namespace trevane
