#include "engine/substitute/SubstituteWorkspace.h"

#include "base/LowerCase.h"
#include "engine/remote/BlockingRemote.h"
#include "engine/remote/LearntFileSystem.h"
#include "engine/remote/OpenSideBySide.h"
#include "engine/remote/RemoteFileSystem.h"
#include "engine/substitute/FileSystemSession.h"
#include "engine/substitute/SubstituteControllers.h"

#include <algorithm>

namespace trevane {
namespace {

RemoteConnection::Opening OpeningOf(const QString& name, const Provider& provider,
                                    const FileSystemRequest& request) {
  // The name is for texts only: the engine may still choose another one.
  QString shown = name.isEmpty() ? request.machine : name;
  if (shown.isEmpty()) {
    shown = provider.name;
  }
  RemoteConnection::Opening opening{shown, provider.open, request};
  opening.typeName = provider.typeName;
  opening.tellsNoWriting = provider.tellsNoWriting;
  return opening;
}

}  // namespace

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

const Provider& SubstituteWorkspace::ProviderOf(const QString& name) const {
  const auto known = std::find_if(providers_.begin(), providers_.end(), [&name](const Provider& candidate) {
    return EqualIgnoringCase(candidate.name, name);
  });
  if (known == providers_.end()) {
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
  const FileSystemRequest request{machine, option};
  if (!known.isSlow) {
    return Add(name, known, known.open(request));
  }
  return Add(
      name, known,
      std::make_shared<LearntFileSystem>(
          std::make_shared<RemoteFileSystem>(remote_, OpeningOf(name, known, request)), remote_.learnt));
}

std::vector<ControllerResult> SubstituteWorkspace::AddControllers(
    const std::vector<ControllerRequest>& requests) {
  std::vector<RemoteConnection::Opening> slow;
  for (const ControllerRequest& request : requests) {
    const auto known = std::find_if(providers_.begin(), providers_.end(), [&](const Provider& candidate) {
      return candidate.isSlow && EqualIgnoringCase(candidate.name, request.provider);
    });
    if (known != providers_.end()) {
      slow.push_back(OpeningOf(request.name, *known, {request.machine, request.option}));
    }
  }
  std::vector<OpenedRemote> opened = OpenSideBySide(remote_, slow);
  std::vector<ControllerResult> results(requests.size());
  auto next = opened.begin();
  for (size_t i = 0; i < requests.size(); ++i) {
    const ControllerRequest& request = requests[i];
    try {
      const Provider& known = ProviderOf(request.provider);
      if (!known.isSlow) {
        results[i].controller =
            AddController(request.name, request.provider, request.machine, request.option);
        continue;
      }
      const OpenedRemote& one = *next++;
      if (one.failure) {
        throw *one.failure;
      }
      results[i].controller =
          Add(request.name, known, std::make_shared<LearntFileSystem>(one.files, remote_.learnt));
    } catch (const RunTimeError& failure) {
      results[i].failure = failure;
    }
  }
  return results;
}

}  // namespace trevane
