#include "engine/model/IxoWorkspace.h"

#include "base/RunTimeError.h"

namespace trevane {
namespace {

class OneByOneOpening final : public ControllerOpening {
 public:
  OneByOneOpening(IxoWorkspace& workspace, const std::vector<ControllerRequest>& requests)
      : workspace_(workspace), requests_(requests) {}

  std::shared_ptr<IxoController> Take(size_t position) override {
    if (isCancelled_) {
      throw RunTimeError(error::kCancelled, QStringLiteral("Cancelled"));
    }
    const ControllerRequest& request = requests_.at(position);
    return workspace_.AddController(request.name, request.provider, request.machine, request.option);
  }
  void Cancel() override { isCancelled_ = true; }

 private:
  IxoWorkspace& workspace_;
  const std::vector<ControllerRequest> requests_;
  bool isCancelled_ = false;
};

}  // namespace

std::unique_ptr<ControllerOpening> IxoWorkspace::OpenControllers(
    const std::vector<ControllerRequest>& requests) {
  return std::make_unique<OneByOneOpening>(*this, requests);
}

}  // namespace trevane
