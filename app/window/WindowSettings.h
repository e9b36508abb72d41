#pragma once

#include <QString>

namespace trevane {

class EngineSession;
class SettingsPlace;
class SettingsWindow;
struct AppServices;
struct Message;

/// The settings file over one run of the program: read when the window is loaded, written when it is
/// unloaded. A failure of either is shown to the user.
class WindowSettings final {
 public:
  /// All of it outlives this object.
  WindowSettings(AppServices& services, EngineSession& session, SettingsWindow& window)
      : services_(services), session_(session), window_(window) {}

  void Load();
  /// Without a Load before it the file is left as it is.
  void Save();

 private:
  /// Beside the executable and of its name, or in the user's own folder.
  [[nodiscard]] SettingsPlace Place() const;
  [[nodiscard]] static Message FailureOf(const QString& text, const QString& file, const QString& reason);

  AppServices& services_;
  EngineSession& session_;
  SettingsWindow& window_;
  bool loaded_ = false;
  /// False when the file exists and could not be read.
  bool isRead_ = true;
  /// The file that was read.
  QString file_;
};

}  // namespace trevane
