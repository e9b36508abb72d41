#include "engine/model/ItemName.h"

#include "base/RunTimeError.h"

#include <algorithm>

namespace trevane {

bool IsValidItemName(const QString& name) {
  if (name.isEmpty() || name == u"." || name == u"..") {
    return false;
  }
  return std::none_of(name.begin(), name.end(),
                      [](QChar unit) { return unit == u'/' || unit == u'\\' || unit.isNull(); });
}

QString InvalidItemNameText(const QString& name) {
  return QStringLiteral("The name is not valid: '%1'").arg(name);
}

void RequireItemName(const QString& name) {
  if (!IsValidItemName(name)) {
    throw RunTimeError(error::kInvalidName, InvalidItemNameText(name));
  }
}

}  // namespace trevane
