#pragma once

#include "base/LowerCase.h"

#include <QString>

/// An address is the text in the address box: the texts of a tree node and of all its ancestors with "\"
/// between them. Addresses are compared without regard to case.
namespace trevane {

inline constexpr QChar kAddressSeparator = u'\\';
inline constexpr QStringView kWorkspaceAddress = u"Workspace";
inline constexpr QStringView kMyComputerName = u"My Computer";
inline constexpr QStringView kMyComputerAddress = u"Workspace\\My Computer";
/// The beginning of the addresses of drives.
inline constexpr QStringView kLocalAddressPrefix = u"Workspace\\My Computer\\";

/// The path that the engine and the file operations use: "C:\dir" for a local address, the controller's name
/// and the path for one on a controller, nothing for "Workspace" and "Workspace\My Computer". The beginning
/// is tested without its "\" but cut off with it, by length; a text that does not begin with "Workspace" is
/// returned unchanged.
[[nodiscard]] QString AddressToEnginePath(const QString& address);

/// The inverse. It is not unique: a controller called "X:" yields a local address.
[[nodiscard]] QString EnginePathToAddress(const QString& path);

/// The address of the entry `name` of the folder at `address`.
[[nodiscard]] QString JoinAddress(const QString& address, const QString& name);

/// The name of the item at an address: the text after the last "\".
[[nodiscard]] QString LastPiece(const QString& address);

[[nodiscard]] bool IsWorkspaceAddress(QStringView address) noexcept;
[[nodiscard]] bool IsMyComputerAddress(QStringView address) noexcept;
/// "Workspace\My Computer" or something below it.
[[nodiscard]] bool IsLocalAddress(QStringView address) noexcept;

/// The key that finds a tree node: its address in lower case.
[[nodiscard]] QString NodeKey(const QString& address);

/// The key that finds a list item. The "@" keeps a key that consists of digits from being taken for a
/// position.
[[nodiscard]] QString ListKey(const QString& text);

}  // namespace trevane
