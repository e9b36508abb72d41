#include "views/addresses/Addresses.h"

namespace trevane {

QString AddressToEnginePath(const QString& address) {
  if (StartsWithIgnoringCase(address, kMyComputerAddress)) {
    return address.mid(kLocalAddressPrefix.size());
  }
  if (StartsWithIgnoringCase(address, kWorkspaceAddress)) {
    return address.mid(kWorkspaceAddress.size() + 1);
  }
  return address;
}

QString EnginePathToAddress(const QString& path) {
  const bool beginsWithDrive = path.size() >= 2 && path[1] == u':';
  return JoinAddress((beginsWithDrive ? kMyComputerAddress : kWorkspaceAddress).toString(), path);
}

QString JoinAddress(const QString& address, const QString& name) {
  QString joined;
  joined.reserve(address.size() + 1 + name.size());
  joined += address;
  joined += kAddressSeparator;
  joined += name;
  return joined;
}

QString LastPiece(const QString& address) {
  return address.mid(address.lastIndexOf(kAddressSeparator) + 1);
}

bool IsWorkspaceAddress(QStringView address) noexcept {
  return EqualIgnoringCase(address, kWorkspaceAddress);
}

bool IsMyComputerAddress(QStringView address) noexcept {
  return EqualIgnoringCase(address, kMyComputerAddress);
}

bool IsLocalAddress(QStringView address) noexcept {
  return IsMyComputerAddress(address) || StartsWithIgnoringCase(address, kLocalAddressPrefix);
}

QString NodeKey(const QString& address) {
  return LowerCase(address);
}

QString ListKey(const QString& text) {
  return u'@' + LowerCase(text);
}

}  // namespace trevane
