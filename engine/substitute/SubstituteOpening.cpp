#include "engine/substitute/SubstituteOpening.h"

#include "base/RunTimeError.h"
#include "engine/remote/RemoteOpenings.h"
#include "engine/substitute/SubstituteWorkspace.h"

namespace trevane {

SubstituteOpening::SubstituteOpening(SubstituteWorkspace& workspace, RemoteContext& remote,
                                     const std::vector<ControllerRequest>& requests)
    : workspace_(workspace), requests_(requests) {
  std::vector<RemoteOpenings::Wanted> wanted;
  for (const ControllerRequest& request : requests_) {
    const Provider* const provider = workspace_.FindProvider(request.provider);
    const bool isSlow = provider != nullptr && provider->isSlow;
    slow_.push_back(isSlow ? static_cast<std::ptrdiff_t>(wanted.size()) : -1);
    if (isSlow) {
      wanted.push_back({SubstituteWorkspace::OpeningOf(*provider, request), request.root});
    }
  }
  openings_ = std::make_unique<RemoteOpenings>(remote, wanted);
}

SubstituteOpening::~SubstituteOpening() = default;

std::shared_ptr<IxoController> SubstituteOpening::Take(size_t position) {
  const ControllerRequest& request = requests_.at(position);
  const std::ptrdiff_t slow = slow_.at(position);
  if (slow >= 0) {
    const RemoteOpenings::Opened opened = openings_->Take(static_cast<size_t>(slow));
    return workspace_.AddRemote(request, opened.files, opened.root);
  }
  if (isCancelled_) {
    throw RunTimeError(error::kCancelled, QStringLiteral("Cancelled"));
  }
  openings_->Begin();
  return workspace_.AddController(request.name, request.provider, request.machine, request.option);
}

void SubstituteOpening::Cancel() {
  isCancelled_ = true;
  openings_->Cancel();
}

}  // namespace trevane
