#pragma once

#include "dialogs/WindowGauge.h"
#include "prompts/UserPrompts.h"

#include <QPointer>

#include <functional>
#include <optional>
#include <utility>

namespace trevane {

class frmProperty;
class frmSetting;

/// Asks the user with real windows, in English whatever the desktop's language is.
class Prompts final : public UserPrompts {
 public:
  /// `messageBeep` plays a sound by its number (see frmMsgBoxEx), `sleep` blocks the calling thread for so
  /// many milliseconds.
  Prompts(std::function<void(qint32)> messageBeep, std::function<void(qint32)> sleep);
  ~Prompts() override;
  Prompts(const Prompts&) = delete;
  Prompts& operator=(const Prompts&) = delete;

  /// The window that questions and gauge are shown above; null (also once the window is gone) for none. Not
  /// owned.
  void SetMainWindow(QWidget* window);

  /// As WindowGauge has it.
  void SetProgressListener(std::function<void(qint32 value, qint32 maximum)> listener) {
    gauge_.SetProgressListener(std::move(listener));
  }

  [[nodiscard]] ProgressGauge& Gauge() override { return gauge_; }
  void UnloadWindows() override;

 private:
  /// The texts are shown as they are, never as markup. An empty title is the application's name. Esc and
  /// the frame's close box give the answer that does nothing: Cancel or No where there is one, Ok otherwise.
  PromptAnswer DoShowMessage(const Message& message) override;
  [[nodiscard]] int DoChoose(const ChoiceQuestion& question) override;
  /// The desktop's own file dialog where it has one.
  [[nodiscard]] QString DoChooseFile(const FileQuestion& question) override;
  [[nodiscard]] std::optional<SecretAnswer> DoAskSecret(const SecretQuestion& question) override;
  void DoShowProperties(const PropertyTable& table) override;
  void DoShowSettings() override;
  /// Every modal window of the program, and open menus and drop-downs.
  void CloseQuestions() override;

  [[nodiscard]] QWidget* ParentOfQuestion() const;

  std::function<void(qint32)> messageBeep_;
  WindowGauge gauge_;
  QPointer<QWidget> main_;
  QPointer<frmProperty> properties_;
  QPointer<frmSetting> settings_;
};

}  // namespace trevane
