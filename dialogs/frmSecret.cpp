#include "dialogs/frmSecret.h"

#include "base/ForeignText.h"
#include "base/ShownText.h"
#include "dialogs/MessageLabel.h"
#include "dialogs/SecretEdit.h"
#include "dialogs/SelectableText.h"

#include <QCheckBox>
#include <QFont>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace trevane {

namespace {

// Logical pixels.
constexpr int kMargin = 18;
constexpr int kGap = 8;
// In letters of the font, so that large texts find a large window.
constexpr int kColumns = 62;

constexpr double kSmall = 0.9;

// Characters.
constexpr int kLongestTitle = 100;
constexpr int kLongestPrompt = 500;
constexpr int kLongestWords = 4000;

/// A text in a window of that inner width, in type of `scale` times the usual size.
MessageLabel* Label(const QString& name, const QString& text, int width, QWidget* parent, double scale = 1) {
  auto* label = new MessageLabel(parent);
  label->setObjectName(name);
  label->setText(text);
  QFont type = label->font();
  type.setPointSizeF(type.pointSizeF() * scale);
  label->setFont(type);
  label->setFixedSize(width, label->SizeFor(width).height());
  return label;
}

}  // namespace

frmSecret::frmSecret(const SecretQuestion& question, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      txtSecret_(new SecretEdit(question.isHidden, this)) {
  setObjectName(QStringLiteral("frmSecret"));
  const QString title = ForeignLine(question.title, kLongestTitle);
  setWindowTitle(title.isEmpty() ? QGuiApplication::applicationDisplayName() : title);

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  column->setSpacing(kGap);
  column->setSizeConstraint(QLayout::SetFixedSize);
  AddTexts(question, *column);
  column->addWidget(txtSecret_);
  AddRemember(question, *column);
  column->addSpacing(kGap);
  AddButtons(*column);
  txtSecret_->setFocus();
}

frmSecret::~frmSecret() = default;

void frmSecret::AddTexts(const SecretQuestion& question, QVBoxLayout& column) {
  const int width = fontMetrics().averageCharWidth() * kColumns;
  const QString prompt = ForeignText(question.prompt, kLongestPrompt);
  column.addWidget(Label(QStringLiteral("lblPrompt"), prompt, width, this));
  const QString words = ForeignText(question.informativeText, kLongestWords);
  if (!words.isEmpty()) {
    auto* txtWords = new SelectableText(this);
    txtWords->setObjectName(QStringLiteral("txtWords"));
    txtWords->setAccessibleName(QStringLiteral("Information"));
    txtWords->setPlainText(words);
    txtWords->setFixedSize(width, txtWords->SizeFor(width).height());
    column.addWidget(txtWords);
  }
  txtSecret_->setObjectName(QStringLiteral("txtSecret"));
  txtSecret_->setAccessibleName(ForeignLine(question.prompt, kLongestPrompt));
  txtSecret_->setAccessibleDescription(words);
}

void frmSecret::AddRemember(const SecretQuestion& question, QVBoxLayout& column) {
  if (!question.offersRemember) {
    return;
  }
  const QString whyNot = ForeignLine(question.whyNotRemember, kLongestPrompt);
  chkRemember_ = new QCheckBox(QStringLiteral("&Remember"), this);
  chkRemember_->setObjectName(QStringLiteral("chkRemember"));
  chkRemember_->setAccessibleName(QStringLiteral("Remember"));
  chkRemember_->setEnabled(whyNot.isEmpty());
  column.addWidget(chkRemember_);
  if (whyNot.isEmpty()) {
    chkRemember_->setToolTip(
        QStringLiteral("Keep it in the system's password store, for this account alone."));
    return;
  }
  chkRemember_->setToolTip(PlainToolTip(whyNot));
  chkRemember_->setAccessibleDescription(whyNot);
  auto* lblWhyNot =
      Label(QStringLiteral("lblWhyNot"), whyNot, fontMetrics().averageCharWidth() * kColumns, this, kSmall);
  column.addWidget(lblWhyNot);
}

void frmSecret::AddButtons(QVBoxLayout& column) {
  auto* cmdOK = new QPushButton(QStringLiteral("OK"), this);
  cmdOK->setObjectName(QStringLiteral("cmdOK"));
  cmdOK->setDefault(true);
  auto* cmdCancel = new QPushButton(QStringLiteral("&Cancel"), this);
  cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
  cmdCancel->setAccessibleName(QStringLiteral("Cancel"));
  connect(cmdOK, &QPushButton::clicked, this, &QDialog::accept);
  connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(cmdOK);
  buttons->addWidget(cmdCancel);
  column.addLayout(buttons);
}

std::optional<SecretAnswer> frmSecret::Ask() {
  const QPointer<frmSecret> alive(this);
  const bool isAnswered = exec() == QDialog::Accepted;
  // A parent that ends meanwhile takes this window with it.
  if (alive == nullptr) {
    return std::nullopt;
  }
  std::optional<SecretAnswer> answer;
  if (isAnswered) {
    answer = SecretAnswer{.secret = txtSecret_->Typed(),
                          .remember = chkRemember_ != nullptr && chkRemember_->isChecked()};
  }
  txtSecret_->Wipe();
  return answer;
}

}  // namespace trevane
