#include "engine/controllers/frmConnIxoCtrl.h"

#include "base/RunTimeError.h"
#include "base/ShownText.h"
#include "engine/controllers/RememberController.h"
#include "views/addresses/Addresses.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QVBoxLayout>

#include <utility>

namespace trevane {

namespace {

const QString kFailedInAdding = QStringLiteral("Failed in adding a controller object.");

constexpr int kFieldWidth = 300;
constexpr int kMargin = 16;
constexpr int kGapAboveButtons = 16;

/// A field with its label, whose underlined letter leads to it. The caption without that letter's mark is
/// also the field's name for a screen reader.
void AddField(QGridLayout& grid, int row, const QString& caption, QWidget* field, const QString& name) {
  auto* label = new QLabel(caption + QStringLiteral(" :"), field->parentWidget());
  label->setBuddy(field);
  field->setObjectName(name);
  const QString spoken = QString(caption).remove(u'&');
  field->setAccessibleName(spoken);
  // The text field of a box is an object of its own there.
  if (auto* box = qobject_cast<QComboBox*>(field); box && box->isEditable()) {
    box->lineEdit()->setAccessibleName(spoken);
  }
  field->setMinimumWidth(kFieldWidth);
  grid.addWidget(label, row, 0);
  grid.addWidget(field, row, 1);
}

/// Shows the example where nothing is typed yet, and the whole as a tooltip.
void Explain(QLineEdit& field, const QString& example, const QString& whole) {
  field.setPlaceholderText(example.isEmpty() ? QString() : QStringLiteral("for example ") + example);
  field.setToolTip(whole.isEmpty() ? QString() : PlainToolTip(whole));
  field.setAccessibleDescription(whole);
}

}  // namespace

frmConnIxoCtrl::frmConnIxoCtrl(Parts parts, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      parts_(std::move(parts)) {
  setObjectName(QStringLiteral("frmConnIxoCtrl"));
  setWindowTitle(QStringLiteral("Connect Controller"));
  setModal(true);
  BuildControls();
}

void frmConnIxoCtrl::BuildControls() {
  cmbProvider_ = new QComboBox(this);
  cmbProvider_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  cmbController_ = new QComboBox(this);
  cmbController_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  cmbController_->setEditable(true);
  cmbController_->setInsertPolicy(QComboBox::NoInsert);
  // A typed name stays as it is, and only a choice from the list fills the other fields, not a typed name
  // that happens to be in it.
  cmbController_->setCompleter(nullptr);
  disconnect(cmbController_->lineEdit(), &QLineEdit::editingFinished, cmbController_, nullptr);
  disconnect(cmbController_->lineEdit(), &QLineEdit::returnPressed, cmbController_, nullptr);
  txtMachine_ = new QLineEdit(this);
  txtOption_ = new QLineEdit(this);
  txtRoot_ = new QLineEdit(QStringLiteral("/"), this);

  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(12);
  grid->setVerticalSpacing(8);
  grid->setColumnStretch(1, 1);
  AddField(*grid, 0, QStringLiteral("&Provider Name"), cmbProvider_, QStringLiteral("cmbProvider"));
  AddField(*grid, 1, QStringLiteral("Controller &Name"), cmbController_, QStringLiteral("cmbController"));
  AddField(*grid, 2, QStringLiteral("&Machine Name"), txtMachine_, QStringLiteral("txtMachine"));
  AddField(*grid, 3, QStringLiteral("Op&tion"), txtOption_, QStringLiteral("txtOption"));
  AddField(*grid, 4, QStringLiteral("&Root"), txtRoot_, QStringLiteral("txtRoot"));

  cmdConnect_ = new QPushButton(QStringLiteral("C&onnect"), this);
  cmdConnect_->setObjectName(QStringLiteral("cmdConnect"));
  cmdConnect_->setAccessibleName(QStringLiteral("Connect"));
  cmdConnect_->setDefault(true);
  cmdCancel_ = new QPushButton(QStringLiteral("&Cancel"), this);
  cmdCancel_->setObjectName(QStringLiteral("cmdCancel"));
  cmdCancel_->setAccessibleName(QStringLiteral("Cancel"));
  // The desktop decides which of the two comes first.
  auto* buttons = new QDialogButtonBox(this);
  buttons->addButton(cmdConnect_, QDialogButtonBox::AcceptRole);
  buttons->addButton(cmdCancel_, QDialogButtonBox::RejectRole);

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  column->addLayout(grid);
  column->addSpacing(kGapAboveButtons);
  column->addStretch(1);
  column->addWidget(buttons);

  const QList<QWidget*> order{cmbProvider_, cmbController_, txtMachine_, txtOption_,
                              txtRoot_,     cmdConnect_,    cmdCancel_};
  for (qsizetype i = 1; i < order.size(); ++i) {
    setTabOrder(order[i - 1], order[i]);
  }

  connect(cmbProvider_, &QComboBox::currentIndexChanged, this, &frmConnIxoCtrl::ShowHelp);
  connect(cmbController_, &QComboBox::activated, this, &frmConnIxoCtrl::TakeSavedController);
  connect(cmdConnect_, &QPushButton::clicked, this, &frmConnIxoCtrl::ConnectClicked);
  connect(cmdCancel_, &QPushButton::clicked, this, &frmConnIxoCtrl::reject);
}

bool frmConnIxoCtrl::IsValidName(const QString& name) {
  return !EqualIgnoringCase(name, kMyComputerName) && !name.contains(u'\\') && !name.contains(u'/');
}

qint32 frmConnIxoCtrl::ShowConnect() {
  Load();
  connectResult_ = kCancelled;
  OfferSavedControllers();
  cmbController_->setFocus();
  exec();
  return connectResult_;
}

void frmConnIxoCtrl::Load() {
  if (providersRead_ || !parts_.session.gIxoWorkspace) {
    return;
  }
  try {
    const Variant value = parts_.session.gIxoWorkspace->ProviderNames(QStringLiteral(""));
    if (const auto* names = std::get_if<QStringList>(&value)) {
      cmbProvider_->addItems(*names);
    }
    providersRead_ = true;
  } catch (const RunTimeError&) {
    // The next use of the dialog asks again.
  }
  if (cmbProvider_->count() > 0) {
    cmbProvider_->setCurrentIndex(0);
  }
}

void frmConnIxoCtrl::ShowHelp() {
  ConnectionHelp help;
  try {
    if (parts_.session.gIxoWorkspace) {
      help = parts_.session.gIxoWorkspace->HelpFor(cmbProvider_->currentText());
    }
  } catch (const RunTimeError&) {
    // The fields can be filled without it.
  }
  Explain(*txtMachine_, help.machineExample, help.machine);
  Explain(*txtOption_, help.optionExample, help.option);
}

void frmConnIxoCtrl::OfferSavedControllers() {
  const QString text = cmbController_->currentText();
  cmbController_->clear();
  for (const auto& saved : parts_.session.gSavedCtrls) {
    cmbController_->addItem(saved->CtrlName());
  }
  // The box chooses its first entry by itself; here the fields keep their contents.
  cmbController_->setCurrentIndex(-1);
  cmbController_->setEditText(text);
  cmbController_->lineEdit()->selectAll();
}

void frmConnIxoCtrl::TakeSavedController(int index) {
  if (index < 0 || index >= parts_.session.gSavedCtrls.Count()) {
    return;
  }
  const std::shared_ptr<clsIxoCtrl> saved = parts_.session.gSavedCtrls.Item(index + 1);
  // A provider that the engine does not know is shown and used all the same.
  int provider = cmbProvider_->findText(saved->ProvName(), Qt::MatchFixedString | Qt::MatchCaseSensitive);
  if (provider < 0 && !saved->ProvName().isEmpty()) {
    cmbProvider_->addItem(saved->ProvName());
    provider = cmbProvider_->count() - 1;
  }
  cmbProvider_->setCurrentIndex(provider);
  txtMachine_->setText(saved->MachineName());
  txtOption_->setText(saved->CtrlOption());
  txtRoot_->setText(saved->Root());
}

std::shared_ptr<clsIxoCtrl> frmConnIxoCtrl::MakeRecord() const {
  auto record = std::make_shared<clsIxoCtrl>();
  record->SetCtrlName(cmbController_->currentText());
  record->SetProvName(cmbProvider_->currentText());
  record->SetMachineName(txtMachine_->text());
  record->SetCtrlOption(txtOption_->text());
  record->SetRoot(txtRoot_->text());
  return record;
}

void frmConnIxoCtrl::ConnectClicked() {
  if (connecting_) {
    // Pressed from outside while the controller is waited for; the dialog is hidden then.
    return;
  }
  const QScopedValueRollback connecting(connecting_, true);
  connectResult_ = kCancelled;
  if (!parts_.session.gIxoControllers) {
    ReportFailure(kFailedInAdding, QStringLiteral("There is no engine session"));
    return;
  }
  if (!IsValidName(cmbController_->currentText())) {
    ReportFailure(QStringLiteral("Illegal charactor in Controller Name."),
                  QStringLiteral("The name must not be \"My Computer\" or contain \"\\\" or \"/\"."));
    cmbController_->setFocus();
    cmbController_->lineEdit()->selectAll();
    return;
  }
  ConnectHidden();
}

void frmConnIxoCtrl::ConnectHidden() {
  const std::shared_ptr<clsIxoCtrl> record = MakeRecord();
  hide();
  parts_.setBusyPointer(true);
  const ConnectOutcome result = parts_.connectController(record);
  connectResult_ = result.number;
  if (result) {
    RememberController(parts_.session.gSavedCtrls, record);
  } else {
    ReportFailure(kFailedInAdding, ReasonOf(result.number, result.reason));
  }
  parts_.setBusyPointer(false);
}

void frmConnIxoCtrl::ReportFailure(const QString& message, const QString& reason) {
  const QString name = cmbController_->currentText();
  ShowFailure(parts_.prompts, parts_.reasonLine, message,
              {.item = name.isEmpty() ? cmbProvider_->currentText() : name, .reason = reason});
}

void frmConnIxoCtrl::reject() {
  connectResult_ = kCancelled;
  QDialog::reject();
}

void frmConnIxoCtrl::closeEvent(QCloseEvent* event) {
  event->ignore();
  reject();
}

}  // namespace trevane
