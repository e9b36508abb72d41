#pragma once

#include "platform/Secret.h"

#include <QLineEdit>

namespace trevane {

/// A box to type a secret into. What was typed can be pasted and not copied, dragged or undone, and is
/// overwritten when it is wiped or the box ends, as far as the toolkit's own copies can be reached.
class SecretEdit final : public QLineEdit {
  Q_OBJECT

 public:
  /// Longer than any password that a server takes.
  static constexpr int kLongest = 1024;

  /// What is typed is shown unless it `isHidden`.
  explicit SecretEdit(bool isHidden, QWidget* parent = nullptr);
  ~SecretEdit() override;

  [[nodiscard]] Secret Typed() const;
  void Wipe();

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
};

}  // namespace trevane
