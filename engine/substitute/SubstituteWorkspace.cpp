#include "engine/substitute/SubstituteWorkspace.h"

#include "base/LowerCase.h"
#include "engine/remote/BlockingRemote.h"
#include "engine/remote/LearntFileSystem.h"
#include "engine/remote/RemoteFileSystem.h"
#include "engine/substitute/FileSystemSession.h"
#include "engine/substitute/SubstituteControllers.h"

#include <algorithm>

namespace trevane {

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

std::shared_ptr<IxoController> SubstituteWorkspace::AddController(const QString& name,
                                                                  const QString& provider,
                                                                  const QString& machine,
                                                                  const QString& option) {
  const auto known = std::find_if(
      providers_.begin(), providers_.end(),
      [&provider](const Provider& candidate) { return EqualIgnoringCase(candidate.name, provider); });
  if (known == providers_.end()) {
    throw RunTimeError(error::kInvalidParameter,
                       QStringLiteral("There is no provider with the name '%1'").arg(provider));
  }
  auto fileSystem = Open(name, *known, FileSystemRequest{machine, option});
  if (!fileSystem) {
    throw RunTimeError(error::kDeviceNotReady,
                       QStringLiteral("The provider '%1' could not connect").arg(known->name));
  }
  return controllers_->Add(name, std::make_shared<FileSystemSession>(std::move(fileSystem), known->name));
}

std::shared_ptr<FileSystem> SubstituteWorkspace::Open(const QString& name, const Provider& provider,
                                                      const FileSystemRequest& request) {
  if (!provider.isSlow) {
    return provider.open(request);
  }
  // For texts only: the engine may still choose another name.
  QString shown = name.isEmpty() ? request.machine : name;
  if (shown.isEmpty()) {
    shown = provider.name;
  }
  return std::make_shared<LearntFileSystem>(
      std::make_shared<RemoteFileSystem>(remote_, RemoteConnection::Opening{shown, provider.open, request}),
      remote_.learnt);
}

}  // namespace trevane
