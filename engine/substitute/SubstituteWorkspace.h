#pragma once

#include "engine/files/Provider.h"
#include "engine/model/IxoWorkspace.h"
#include "engine/remote/RemoteOpenings.h"

#include <memory>
#include <optional>
#include <vector>

namespace trevane {

class BlockingRemote;
class SubstituteControllers;

class SubstituteWorkspace final : public IxoWorkspace {
 public:
  /// As SubstituteEngine.
  explicit SubstituteWorkspace(ProviderTable providers, RemoteContext* remote = nullptr);
  ~SubstituteWorkspace() override;
  SubstituteWorkspace(const SubstituteWorkspace&) = delete;
  SubstituteWorkspace& operator=(const SubstituteWorkspace&) = delete;

  [[nodiscard]] std::shared_ptr<IxoControllers> Controllers() override;
  [[nodiscard]] Variant ProviderNames(const QString& option) override;
  [[nodiscard]] ConnectionHelp HelpFor(const QString& provider) override;
  [[nodiscard]] std::shared_ptr<IxoController> AddController(const QString& name, const QString& provider,
                                                             const QString& machine,
                                                             const QString& option) override;
  [[nodiscard]] std::unique_ptr<ControllerOpening> OpenControllers(
      const std::vector<ControllerRequest>& requests) override;

  /// Null for an unknown one.
  [[nodiscard]] const Provider* FindProvider(const QString& name) const;
  /// Adds a slow controller that is connected already.
  [[nodiscard]] std::shared_ptr<IxoController> AddRemote(
      const ControllerRequest& request, std::shared_ptr<RemoteFileSystem> files,
      const std::optional<RemoteOpenings::Root>& root = std::nullopt);
  /// How a slow controller is connected.
  [[nodiscard]] static RemoteConnection::Opening OpeningOf(const Provider& provider,
                                                           const ControllerRequest& request);

 private:
  /// Fails for an unknown one.
  [[nodiscard]] const Provider& ProviderOf(const QString& name) const;
  [[nodiscard]] std::shared_ptr<IxoController> Add(const QString& name, const Provider& provider,
                                                   std::shared_ptr<FileSystem> fileSystem);
  ProviderTable providers_;
  /// Used where nobody gave a context.
  std::unique_ptr<BlockingRemote> own_;
  RemoteContext& remote_;
  std::shared_ptr<SubstituteControllers> controllers_;
};

}  // namespace trevane
