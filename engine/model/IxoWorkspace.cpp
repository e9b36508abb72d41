#include "engine/model/IxoWorkspace.h"

namespace trevane {

std::vector<ControllerResult> IxoWorkspace::AddControllers(const std::vector<ControllerRequest>& requests) {
  std::vector<ControllerResult> results(requests.size());
  std::optional<RunTimeError> cancelled;
  for (size_t i = 0; i < requests.size(); ++i) {
    const ControllerRequest& request = requests[i];
    if (cancelled) {
      results[i].failure = cancelled;
      continue;
    }
    try {
      results[i].controller = AddController(request.name, request.provider, request.machine, request.option);
    } catch (const RunTimeError& failure) {
      results[i].failure = failure;
      if (failure.Number() == error::kCancelled) {
        cancelled = failure;
      }
    }
  }
  return results;
}

}  // namespace trevane
