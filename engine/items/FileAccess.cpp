#include "engine/items/FileAccess.h"

#include "engine/items/clsIxoFile.h"

namespace trevane {

clsIxoFile FileAccess::FileAt(const QString& address, LookUp lookUp) const {
  return clsIxoFile(*this, address, lookUp);
}

}  // namespace trevane
