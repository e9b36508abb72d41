#pragma once

#include "engine/model/IxoControllers.h"
#include "engine/substitute/FileSystemSession.h"

#include <QStringList>

#include <vector>

namespace trevane {

class SubstituteController;

class SubstituteControllers final : public IxoControllers {
 public:
  SubstituteControllers() = default;
  ~SubstituteControllers() override;
  SubstituteControllers(const SubstituteControllers&) = delete;
  SubstituteControllers& operator=(const SubstituteControllers&) = delete;

  [[nodiscard]] std::shared_ptr<IxoController> Item(const Variant& index) override;
  void Remove(const Variant& index) override;

  /// Adds a file system as a new controller, under a name of its own and an Index that no controller had
  /// before.
  [[nodiscard]] std::shared_ptr<IxoController> Add(const QString& requestedName,
                                                   std::shared_ptr<FileSystemSession> session);

 private:
  using Controllers = std::vector<std::shared_ptr<SubstituteController>>;
  [[nodiscard]] Controllers::iterator Find(const Variant& index);

  Controllers controllers_;
  qint32 lastIndex_ = 0;
};

}  // namespace trevane
