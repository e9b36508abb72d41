#include "views/navigation/CurrentLocation.h"

#include "views/navigation/NavigatorListener.h"
#include "views/tree/FolderNode.h"

namespace trevane {

bool CurrentLocation::IsIn(const FolderNode& node) const {
  return node_ != nullptr && node.Contains(node_);
}

void CurrentLocation::Display(FolderNode& node) {
  node_ = &node;
  address_ = node.FullPath();
}

void CurrentLocation::UpdateAddress() {
  if (node_ == nullptr) {
    return;
  }
  const QString address = node_->FullPath();
  if (address == address_) {
    return;
  }
  address_ = address;
  listener_.ShowAddress(address);
  listener_.ShowStatus(QStringLiteral("Selected ") + node_->Text());
}

}  // namespace trevane
