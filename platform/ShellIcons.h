#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace trevane {

/// A small icon of the system, in one of two forms.
struct ShellIcon {
  /// Distinguishes the system's icons: equal indexes are equal pictures.
  qint32 index = 0;
  /// Names in the icon theme, the best first (Linux); empty where pixels are given.
  QStringList themeNames;
  /// `width` * `height` pixels of 4 bytes, premultiplied ARGB32 in the machine's byte order (Windows); empty
  /// where names are given.
  QByteArray pixels;
  int width = 0;
  int height = 0;
};

struct ShellFileInfo {
  ShellIcon icon;
  /// The system's name of the type; empty when it does not know it.
  QString typeName;
};

/// Icons and type names by name alone: no file is touched, so that names on controllers work alike.
class ShellIcons {
 public:
  virtual ~ShellIcons() = default;

  /// For "." followed by an extension; nothing when the system supplies no icon.
  [[nodiscard]] virtual std::optional<ShellFileInfo> ForExtension(const QString& probe) = 0;
  [[nodiscard]] virtual std::optional<ShellFileInfo> ForFolder(bool open) = 0;
};

}  // namespace trevane
