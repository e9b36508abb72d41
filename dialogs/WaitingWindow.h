#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

namespace trevane {

class ElidedLabel;

/// The small window that names what the program waits for, with a button that ends the wait. It is modeless,
/// of a fixed size, stands in the middle of its parent, and takes neither the keyboard when it appears nor
/// the input of others. Esc in it and the frame's close box press Cancel.
class WaitingWindow final : public QDialog {
  Q_OBJECT

 public:
  explicit WaitingWindow(QWidget* parent = nullptr);

  /// Shows the window, or other texts in it. `canCancel`: the wait was not cancelled yet.
  void ShowWaiting(const QString& controller, const QString& what, bool canCancel);
  /// Cancel was pressed, and the wait has not ended yet.
  void ShowCancelling();

  void reject() override;

 Q_SIGNALS:
  void Cancelled();

 protected:
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void StandInTheMiddle();

  ElidedLabel* lblController_;
  ElidedLabel* lblWhat_;
  QPushButton* cmdCancel_;
};

}  // namespace trevane
