#include "views/navigation/MayHold.h"

#include "engine/items/FileAccess.h"
#include "engine/items/clsIxoFile.h"

namespace trevane {

bool MayHold(const FileAccess& files, const QString& address, const QString& name) {
  clsIxoFile folder = files.FileAt(address, LookUp::Navigate);
  const Variant value = folder.Result() == 0 ? folder.FileNames() : Variant();
  const auto* names = std::get_if<QStringList>(&value);
  return names == nullptr || names->contains(name);
}

}  // namespace trevane
