#include "views/addresses/Addresses.h"

#include <array>

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

QStringList SplitAddress(const QString& address) {
  return address.split(kAddressSeparator);
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

QString AttributeLetters(qint32 attributes) {
  // One text for each of the sixteen combinations: the list asks for them a hundred thousand times, and
  // shared texts cost nothing.
  static const auto kLetters = [] {
    std::array<QString, 16> letters;
    for (size_t i = 0; i < letters.size(); ++i) {
      if ((i & 1) != 0) {
        letters[i] += u'R';
      }
      if ((i & 2) != 0) {
        letters[i] += u'H';
      }
      if ((i & 4) != 0) {
        letters[i] += u'S';
      }
      if ((i & 8) != 0) {
        letters[i] += u'A';
      }
    }
    return letters;
  }();
  const auto bits = static_cast<quint32>(attributes);
  return kLetters[(bits & 7U) | ((bits & 0x20U) >> 2U)];
}

}  // namespace trevane
