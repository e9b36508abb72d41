#pragma once

#include "platform/OwnFile.h"

#include <QString>

namespace trevane {

class EngineSession;

/// The state of a window as the settings file numbers it.
enum class WindowState { Normal = 0, Minimised = 1, Maximised = 2 };

/// The main window's values in the settings file, in twips.
class SettingsWindow {
 public:
  virtual ~SettingsWindow() = default;

  [[nodiscard]] virtual qint32 WidthTwips() const = 0;
  [[nodiscard]] virtual qint32 HeightTwips() const = 0;
  /// A size that no window can have is brought to the nearest that one can.
  virtual void SetWidthTwips(qint32 width) = 0;
  virtual void SetHeightTwips(qint32 height) = 0;
  [[nodiscard]] virtual WindowState State() const = 0;
  virtual void SetState(WindowState state) = 0;
  virtual void HideWindow() = 0;
};

/// Reads the window's size and state and the remembered controllers. That fails, for instance when
/// two sections remember a controller of the same name; what was read before it stays.
[[nodiscard]] ownfile::Outcome LoadSettings(const QString& fileName, SettingsWindow& window,
                                            EngineSession& session);

/// Builds the settings file anew and puts it in place in one step. The temporary file is made in
/// `currentFolder`, or beside the settings file when that folder cannot be written.
[[nodiscard]] ownfile::Outcome SaveSettings(const QString& fileName, SettingsWindow& window,
                                            EngineSession& session, const QString& currentFolder);

}  // namespace trevane
