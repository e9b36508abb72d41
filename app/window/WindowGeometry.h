#pragma once

#include "app/settings/Settings.h"

#include <QObject>
#include <QSize>
#include <QTimer>

#include <optional>

class QWidget;

namespace trevane {

/// Size and state of the main window: shows it as the settings ask for, brings a window that is larger than
/// the screen onto it, and keeps the size that the settings are to hold.
class WindowGeometry final : public QObject, public SettingsWindow {
  Q_OBJECT

 public:
  /// The window outlives this object.
  explicit WindowGeometry(QWidget& window);

  /// Shows the window in the state that the settings asked for.
  void ShowWindow();
  /// Call it when the window is no longer minimised.
  void WindowRestored();

  [[nodiscard]] qint32 WidthTwips() const override;
  [[nodiscard]] qint32 HeightTwips() const override;
  void SetWidthTwips(qint32 width) override;
  void SetHeightTwips(qint32 height) override;
  [[nodiscard]] WindowState State() const override;
  void SetState(WindowState state) override;
  void HideWindow() override;

 private:
  /// Waits until the frame of the window is known.
  void FitOntoScreen();
  /// The size that the window has when it is neither minimised nor maximised.
  [[nodiscard]] QSize NormalSize() const;

  QWidget& window_;
  /// The state that the window is shown in.
  WindowState state_ = WindowState::Normal;
  /// Kept when the window is hidden for good.
  QSize normalSize_;
  /// A size that the screen had no room for, and the one in its place.
  struct Narrowed {
    QSize asked;
    QSize given;
  };
  std::optional<Narrowed> narrowed_;
  /// A width or height of the settings where no screen is that large, and the one in its place.
  struct Clamped {
    int asked = 0;
    int given = 0;
  };
  Clamped clampedWidth_;
  Clamped clampedHeight_;
  /// Runs until the window has been fitted onto the screen.
  QTimer fit_;
  int fitTries_ = 0;
  bool shown_ = false;
};

}  // namespace trevane
