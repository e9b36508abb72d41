#include "engine/controllers/RememberController.h"

namespace trevane {

void RememberController(ControllerCollection& saved, const std::shared_ptr<clsIxoCtrl>& ctrl) {
  if (ctrl->CtrlName().isEmpty()) {
    return;
  }
  const QString key = ControllerKey(ctrl->CtrlName());
  if (saved.Contains(key)) {
    saved.Remove(key);
  }
  while (saved.Count() >= kRememberedControllers) {
    saved.Remove(kRememberedControllers);
  }
  if (saved.Count() > 0) {
    saved.AddBefore(key, ctrl, 1);
  } else {
    saved.Add(key, ctrl);
  }
}

}  // namespace trevane
