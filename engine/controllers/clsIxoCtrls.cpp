#include "engine/controllers/clsIxoCtrls.h"

namespace trevane {

namespace {

qint32 Position(const Variant& index) {
  if (const auto position = IntegerIn(index)) {
    return *position;
  }
  throw RunTimeError(error::kOutOfRange, QStringLiteral("A record is selected by a name or by a position"));
}

}  // namespace

void clsIxoCtrls::Add(const std::shared_ptr<clsIxoCtrl>& ctrl) {
  records_.Add(ControllerKey(ctrl->RealCtrlName()), ctrl);
}

std::shared_ptr<clsIxoCtrl> clsIxoCtrls::Item(const Variant& index) const {
  if (const auto* name = std::get_if<QString>(&index)) {
    return records_.Item(ControllerKey(*name));
  }
  return records_.Item(Position(index));
}

void clsIxoCtrls::Remove(const Variant& index) {
  if (const auto* name = std::get_if<QString>(&index)) {
    records_.Remove(ControllerKey(*name));
  } else {
    records_.Remove(Position(index));
  }
}

}  // namespace trevane
