#pragma once

#include "prompts/UserPrompts.h"

#include <QDialog>

#include <optional>

class QCheckBox;
class QVBoxLayout;

namespace trevane {

class SecretEdit;
class SelectableText;

/// Asks for a password, passphrase or other answer of a log-on. All texts of the question are shown as they
/// are, never as markup, whoever sent them.
class frmSecret final : public QDialog {
  Q_OBJECT

 public:
  explicit frmSecret(const SecretQuestion& question, QWidget* parent = nullptr);
  ~frmSecret() override;

  /// Shows the window modally. Nothing where the user cancelled. What was typed is wiped in the window.
  [[nodiscard]] std::optional<SecretAnswer> Ask();

 private:
  void AddTexts(const SecretQuestion& question, QVBoxLayout& column);
  void AddRemember(const SecretQuestion& question, QVBoxLayout& column);
  void AddButtons(QVBoxLayout& column);

  SecretEdit* txtSecret_;
  /// Null where it is not offered.
  QCheckBox* chkRemember_ = nullptr;
};

}  // namespace trevane
