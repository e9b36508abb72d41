#include "engine/controllers/FindControllerOfAddress.h"

#include "views/addresses/Addresses.h"

namespace trevane {

std::shared_ptr<clsIxoCtrl> FindControllerOfAddress(const clsIxoCtrls& registry, const QString& address) {
  const qsizetype first = address.indexOf(kAddressSeparator);
  const qsizetype second = first < 0 ? -1 : address.indexOf(kAddressSeparator, first + 1);
  const QString name = address.mid(first + 1, second < 0 ? -1 : second - first - 1);
  if (EqualIgnoringCase(name, kMyComputerName)) {
    return registry.Count() > 0 ? registry.Item(qint32(1)) : nullptr;
  }
  for (const auto& record : registry) {
    if (EqualIgnoringCase(record->RealCtrlName(), name)) {
      return record;
    }
  }
  return nullptr;
}

}  // namespace trevane
