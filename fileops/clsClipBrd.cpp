#include "fileops/clsClipBrd.h"

#include "engine/controllers/FindControllerOfAddress.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/NodeTags.h"

namespace trevane {

namespace {

qint32 ControllerIndex(const clsIxoCtrls& registry, const QString& address, qint32 tag) {
  if (!IsOnController(tag)) {
    return 0;
  }
  const auto record = FindControllerOfAddress(registry, address);
  return record ? record->CtrlIdx() : clsClipBrd::kNoController;
}

}  // namespace

clsClipBrd ClipBrdOfItem(const clsIxoCtrls& registry, const QString& currentAddress, const QString& text,
                         qint32 tag) {
  clsClipBrd entry;
  entry.SetOrigin(clsClipBrd::kFromItem);
  entry.SetAttributes(tag);
  if ((tag & kFolderBit) != 0) {
    entry.SetPastePath(JoinAddress(currentAddress, text));
  } else {
    entry.SetPastePath(currentAddress);
    entry.SetPasteName(text);
  }
  entry.SetCtrlIdx(ControllerIndex(registry, entry.PastePath(), tag));
  return entry;
}

clsClipBrd ClipBrdOfNode(const clsIxoCtrls& registry, const QString& address, qint32 tag) {
  clsClipBrd entry;
  entry.SetOrigin(clsClipBrd::kFromNode);
  entry.SetAttributes(tag);
  entry.SetPastePath(address);
  entry.SetCtrlIdx(ControllerIndex(registry, address, tag));
  return entry;
}

QString AddressOf(const clsClipBrd& entry) {
  return entry.PasteName().isEmpty() ? entry.PastePath() : JoinAddress(entry.PastePath(), entry.PasteName());
}

}  // namespace trevane
