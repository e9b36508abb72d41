#include "engine/substitute/SubstituteControllers.h"

#include "base/LowerCase.h"
#include "engine/substitute/ControllerNames.h"
#include "engine/substitute/SubstituteController.h"

#include <algorithm>

namespace trevane {

SubstituteControllers::~SubstituteControllers() = default;

SubstituteControllers::Controllers::iterator SubstituteControllers::Find(const Variant& index) {
  if (const auto* name = std::get_if<QString>(&index)) {
    const auto found = std::find_if(controllers_.begin(), controllers_.end(), [name](const auto& controller) {
      return EqualIgnoringCase(controller->Name(), *name);
    });
    if (found == controllers_.end()) {
      throw RunTimeError(error::kNoSuchKey,
                         QStringLiteral("There is no controller with the name '%1'").arg(*name));
    }
    return found;
  }
  const std::optional<qint32> number = IntegerIn(index);
  if (!number) {
    throw RunTimeError(error::kInvalidParameter,
                       QStringLiteral("A controller is selected by its name or by its index"));
  }
  const auto found = std::find_if(controllers_.begin(), controllers_.end(), [number](const auto& controller) {
    return controller->Index() == *number;
  });
  if (found == controllers_.end()) {
    throw RunTimeError(error::kOutOfRange,
                       QStringLiteral("There is no controller with the index %1").arg(*number));
  }
  return found;
}

std::shared_ptr<IxoController> SubstituteControllers::Item(const Variant& index) {
  return *Find(index);
}

void SubstituteControllers::Remove(const Variant& index) {
  controllers_.erase(Find(index));
}

std::shared_ptr<IxoController> SubstituteControllers::Add(const QString& requestedName,
                                                          std::shared_ptr<FileSystemSession> session) {
  QStringList used;
  for (const auto& controller : controllers_) {
    used.append(controller->Name());
  }
  const QString name = ChooseControllerName(requestedName, session->Provider(), used);
  controllers_.push_back(std::make_shared<SubstituteController>(name, lastIndex_ + 1, std::move(session)));
  ++lastIndex_;
  return controllers_.back();
}

}  // namespace trevane
