#include "engine/substitute/SubstituteWorkspace.h"

#include "base/LowerCase.h"
#include "engine/remote/BlockingRemote.h"
#include "engine/remote/LearntFileSystem.h"
#include "engine/remote/RemoteFileSystem.h"
#include "engine/substitute/FileSystemSession.h"
#include "engine/substitute/SubstituteControllers.h"
#include "engine/substitute/SubstituteOpening.h"

#include <algorithm>

namespace trevane {

RemoteConnection::Opening SubstituteWorkspace::OpeningOf(const Provider& provider,
                                                         const ControllerRequest& request) {
  // The name is for texts only: the engine may still choose another one.
  QString shown = request.name.isEmpty() ? request.machine : request.name;
  if (shown.isEmpty()) {
    shown = provider.name;
  }
  RemoteConnection::Opening opening{
      shown, provider.newOpener ? provider.newOpener() : provider.open, {request.machine, request.option}};
  opening.typeName = provider.typeName;
  opening.tellsNoWriting = provider.tellsNoWriting;
  return opening;
}

SubstituteWorkspace::SubstituteWorkspace(ProviderTable providers, RemoteContext* remote)
    : providers_(std::move(providers)),
      own_(remote == nullptr ? std::make_unique<BlockingRemote>() : nullptr),
      remote_(remote == nullptr ? own_->Context() : *remote),
      controllers_(std::make_shared<SubstituteControllers>()) {}

SubstituteWorkspace::~SubstituteWorkspace() = default;

std::shared_ptr<IxoControllers> SubstituteWorkspace::Controllers() {
  return controllers_;
}

Variant SubstituteWorkspace::ProviderNames(const QString& option) {
  Q_UNUSED(option);
  QStringList names;
  for (const Provider& provider : providers_) {
    names.append(provider.name);
  }
  return names;
}

ConnectionHelp SubstituteWorkspace::HelpFor(const QString& provider) {
  const Provider* const known = FindProvider(provider);
  return known == nullptr ? ConnectionHelp() : known->help;
}

const Provider* SubstituteWorkspace::FindProvider(const QString& name) const {
  const auto known = std::find_if(providers_.begin(), providers_.end(), [&name](const Provider& candidate) {
    return EqualIgnoringCase(candidate.name, name);
  });
  return known == providers_.end() ? nullptr : &*known;
}

const Provider& SubstituteWorkspace::ProviderOf(const QString& name) const {
  const Provider* const known = FindProvider(name);
  if (known == nullptr) {
    throw RunTimeError(error::kInvalidParameter,
                       QStringLiteral("There is no provider with the name '%1'").arg(name));
  }
  return *known;
}

std::shared_ptr<IxoController> SubstituteWorkspace::Add(const QString& name, const Provider& provider,
                                                        std::shared_ptr<FileSystem> fileSystem) {
  if (!fileSystem) {
    throw RunTimeError(error::kDeviceNotReady,
                       QStringLiteral("The provider '%1' could not connect").arg(provider.name));
  }
  return controllers_->Add(name, std::make_shared<FileSystemSession>(std::move(fileSystem), provider.name));
}

std::shared_ptr<IxoController> SubstituteWorkspace::AddController(const QString& name,
                                                                  const QString& provider,
                                                                  const QString& machine,
                                                                  const QString& option) {
  const Provider& known = ProviderOf(provider);
  if (!known.isSlow) {
    return Add(name, known, known.open({machine, option}));
  }
  const ControllerRequest request{name, provider, machine, option};
  return AddRemote(request, std::make_shared<RemoteFileSystem>(remote_, OpeningOf(known, request)));
}

std::shared_ptr<IxoController> SubstituteWorkspace::AddRemote(
    const ControllerRequest& request, std::shared_ptr<RemoteFileSystem> files,
    const std::optional<RemoteOpenings::Root>& root) {
  auto learnt = std::make_shared<LearntFileSystem>(std::move(files), remote_.learnt);
  if (root) {
    learnt->Learn(root->path, root->entry);
  }
  return Add(request.name, ProviderOf(request.provider), std::move(learnt));
}

std::unique_ptr<ControllerOpening> SubstituteWorkspace::OpenControllers(
    const std::vector<ControllerRequest>& requests) {
  return std::make_unique<SubstituteOpening>(*this, remote_, requests);
}

}  // namespace trevane
