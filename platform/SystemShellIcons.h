#pragma once

#include "platform/ShellIcons.h"

#include <QHash>

#include <memory>

namespace trevane {

/// The system's own icons and type names. Nothing is loaded before the first call.
class SystemShellIcons final : public ShellIcons {
 public:
  SystemShellIcons();
  ~SystemShellIcons() override;
  SystemShellIcons(const SystemShellIcons&) = delete;
  SystemShellIcons& operator=(const SystemShellIcons&) = delete;

  [[nodiscard]] std::optional<ShellFileInfo> ForExtension(const QString& probe) override;
  [[nodiscard]] std::optional<ShellFileInfo> ForFolder(bool open) override;

 private:
  class Source;

  std::unique_ptr<Source> source_;
  /// By probe, as the source answered.
  QHash<QString, ShellFileInfo> known_;
};

}  // namespace trevane
