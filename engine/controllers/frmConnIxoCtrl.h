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
/// uses, so that its fields keep what they held.
class frmConnIxoCtrl final : public QDialog {
  Q_OBJECT

 public:
  struct Parts {
    EngineSession& session;
    UserPrompts& prompts;
    /// Where the reason of a failure stays.
    ReasonLine& reasonLine;
    /// Connects what the record describes.
    std::function<ConnectOutcome(const std::shared_ptr<clsIxoCtrl>&)> connectController;
    /// The main window's hourglass, and its usual pointer again.
    std::function<void(bool)> setBusyPointer;
  };

  /// The result after a cancel, and before anything was done.
  static constexpr qint32 kCancelled = -1;

  explicit frmConnIxoCtrl(Parts parts, QWidget* parent = nullptr);

  /// Reads the providers that are offered, once: those that the engine learns of later are not. Called while
  /// the dialog is hidden; ShowConnect does it where nobody did.
  void Load();

  /// Shows the dialog modally and returns when it has gone: kCancelled, 0 when a controller was connected,
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
  /// Offers the controllers that are remembered now; the fields stay as they are.
  void OfferSavedControllers();
  void TakeSavedController(int index);
  void ConnectClicked();
  void ConnectHidden();
  void Tell(const QString& message, const QString& reason);
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
  qint32 connectResult_ = kCancelled;
};

}  // namespace trevane
