#pragma once

#include "engine/controllers/ControllerConnector.h"
#include "engine/controllers/EngineSession.h"
#include "prompts/ShowFailure.h"
#include "prompts/UserPrompts.h"

#include <QDialog>

#include <functional>
#include <memory>

class QComboBox;
class QLineEdit;
class QPushButton;

namespace trevane {

/// The dialog in which the user names a controller to connect. It is made once and only hidden between its
/// uses, so that its fields keep their contents.
class frmConnIxoCtrl final : public QDialog {
  Q_OBJECT

 public:
  struct Parts {
    EngineSession& session;
    UserPrompts& prompts;
    /// Keeps showing the reason of a failure.
    ReasonLine& reasonLine;
    /// Connects the controller that the record describes.
    std::function<ConnectOutcome(const std::shared_ptr<clsIxoCtrl>&)> connectController;
    /// The main window's hourglass, and its usual pointer again.
    std::function<void(bool)> setBusyPointer;
  };

  /// The result after a cancel, and before anything was done.
  static constexpr qint32 kCancelled = -1;

  explicit frmConnIxoCtrl(Parts parts, QWidget* parent = nullptr);

  /// Reads the providers that are offered, once; providers that the engine learns of later are not offered.
  /// Called while the dialog is hidden; ShowConnect calls it where that has not been done.
  void Load();

  /// Shows the dialog modally and returns when it is closed: kCancelled, 0 when a controller was connected,
  /// otherwise the error's number, whose message has been shown then.
  qint32 ShowConnect();
  /// Of the last use.
  [[nodiscard]] qint32 ConnectResult() const noexcept { return connectResult_; }

  /// Whether a controller may be given this name. It may be empty: the engine chooses one then.
  [[nodiscard]] static bool IsValidName(const QString& name);

  /// Cancels: Esc and the frame's close box come here.
  void reject() override;

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void BuildControls();
  /// Offers the remembered controllers; the fields stay as they are.
  void OfferSavedControllers();
  void TakeSavedController(int index);
  /// What can be written for the chosen provider.
  void ShowHelp();
  void ConnectClicked();
  void ConnectHidden();
  void ReportFailure(const QString& message, const QString& reason);
  [[nodiscard]] std::shared_ptr<clsIxoCtrl> MakeRecord() const;

  Parts parts_;
  QComboBox* cmbProvider_ = nullptr;
  QComboBox* cmbController_ = nullptr;
  QLineEdit* txtMachine_ = nullptr;
  QLineEdit* txtOption_ = nullptr;
  QLineEdit* txtRoot_ = nullptr;
  QPushButton* cmdConnect_ = nullptr;
  QPushButton* cmdCancel_ = nullptr;
  bool providersRead_ = false;
  bool connecting_ = false;
  qint32 connectResult_ = kCancelled;
};

}  // namespace trevane
