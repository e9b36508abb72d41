#pragma once

#include "platform/ShellIcons.h"

#include <QHash>
#include <QStringList>

namespace trevane::test {

/// A system that knows the types a test sets, with icons of one colour; every request is recorded.
class FakeShellIcons final : public ShellIcons {
 public:
  /// `probe` is "." and the extension in upper case.
  void Know(const QString& probe, const QString& typeName) {
    ShellFileInfo info{.icon = MakeIcon(), .typeName = typeName};
    known_.insert(probe, info);
  }
  void SetFolderTypeName(const QString& typeName) { folderTypeName_ = typeName; }
  /// Without folder icons the window's own are used.
  void SetHasFolders(bool has) { hasFolders_ = has; }

  [[nodiscard]] const QStringList& Asked() const { return asked_; }

  [[nodiscard]] std::optional<ShellFileInfo> ForExtension(const QString& probe) override {
    asked_ += probe;
    const auto info = known_.constFind(probe);
    if (info != known_.constEnd()) {
      return *info;
    }
    // As a system that has a picture for any file, but no name for the type.
    return ShellFileInfo{.icon = unknown_, .typeName = {}};
  }

  [[nodiscard]] std::optional<ShellFileInfo> ForFolder(bool open) override {
    if (!hasFolders_) {
      return std::nullopt;
    }
    return ShellFileInfo{.icon = open ? openFolder_ : folder_, .typeName = folderTypeName_};
  }

 private:
  ShellIcon MakeIcon() {
    ShellIcon icon;
    icon.index = ++lastIndex_;
    icon.width = 16;
    icon.height = 16;
    icon.pixels = QByteArray(16 * 16 * 4, static_cast<char>(0x80 + icon.index));
    return icon;
  }

  qint32 lastIndex_ = 0;
  ShellIcon unknown_ = MakeIcon();
  ShellIcon folder_ = MakeIcon();
  ShellIcon openFolder_ = MakeIcon();
  QHash<QString, ShellFileInfo> known_;
  QString folderTypeName_ = QStringLiteral("File folder");
  QStringList asked_;
  bool hasFolders_ = true;
};

}  // namespace trevane::test
