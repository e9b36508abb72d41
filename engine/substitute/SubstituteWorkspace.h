#pragma once

#include "engine/files/Provider.h"
#include "engine/model/IxoWorkspace.h"

namespace trevane {

class SubstituteControllers;

class SubstituteWorkspace final : public IxoWorkspace {
 public:
  explicit SubstituteWorkspace(ProviderTable providers);
  SubstituteWorkspace(const SubstituteWorkspace&) = delete;
  SubstituteWorkspace& operator=(const SubstituteWorkspace&) = delete;

  [[nodiscard]] std::shared_ptr<IxoControllers> Controllers() override;
  [[nodiscard]] Variant ProviderNames(const QString& option) override;
  [[nodiscard]] std::shared_ptr<IxoController> AddController(const QString& name, const QString& provider,
                                                             const QString& machine,
                                                             const QString& option) override;

 private:
  ProviderTable providers_;
  std::shared_ptr<SubstituteControllers> controllers_;
};

}  // namespace trevane
