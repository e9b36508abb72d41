#include "dialogs/frmMsgBoxEx.h"

#include "base/ForeignText.h"
#include "dialogs/MessageLabel.h"
#include "dialogs/SelectableText.h"
#include "platform/SystemSound.h"
#include "resources/Resources.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QKeySequence>
#include <QPointer>
#include <QPushButton>
#include <QScreen>

#include <algorithm>
#include <cmath>
#include <utility>

namespace trevane {

namespace {

constexpr double kTwipsPerPixel = 15;
constexpr double kButtonTextMargin = 400;
constexpr double kButtonMinimum = 1000;
constexpr double kButtonGap = 100;
constexpr double kButtonDistance = 500;

// Pixels; what lies around message and row is ours to choose.
constexpr int kMargin = 18;
constexpr int kIconSize = 32;
constexpr int kIconGap = 14;
constexpr int kTextGap = 8;
// A fingerprint with its word before it stands on one line.
constexpr int kInformativeWidth = 480;
constexpr int kTextWidths[] = {420, 600, 840, 1100};
// Characters.
constexpr int kLongestInformative = 4000;

int Pixels(double twips) {
  return int(std::lround(twips / kTwipsPerPixel));
}

/// 0 for a key that has neither sound nor picture.
qint32 SoundOf(const QString& icon) {
  if (icon == QLatin1StringView("Question")) {
    return systemsound::kQuestion;
  }
  if (icon == QLatin1StringView("Exclamation")) {
    return systemsound::kExclamation;
  }
  if (icon == QLatin1StringView("Information")) {
    return systemsound::kInformation;
  }
  return icon == QLatin1StringView("Critical") ? systemsound::kCritical : 0;
}

}  // namespace

frmMsgBoxEx::frmMsgBoxEx(std::function<void(qint32)> messageBeep, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      messageBeep_(std::move(messageBeep)) {
  setObjectName(QStringLiteral("frmMsgBoxEx"));
}

frmMsgBoxEx::~frmMsgBoxEx() = default;

qint16 frmMsgBoxEx::ShowBox() {
  TakeApart();
  Build();
  result_ = Existing(cancel_);
  const qint16 whenDestroyed = cancel_;
  const QPointer<frmMsgBoxEx> alive(this);
  exec();
  if (alive == nullptr) {
    return whenDestroyed;
  }
  TakeApart();
  return result_;
}

void frmMsgBoxEx::Build() {
  setWindowTitle(title_.isEmpty() ? QGuiApplication::applicationDisplayName() : title_);
  setAccessibleDescription(informativeText_.isEmpty() ? prompt_ : prompt_ + u'\n' + informativeText_);

  int textLeft = kMargin;
  const qint32 sound = SoundOf(icon_);
  if (sound != 0) {
    auto* imgMsg = new QLabel(this);
    imgMsg->setObjectName(QStringLiteral("imgMsg"));
    imgMsg->setAccessibleName(icon_);
    imgMsg->setPixmap(
        Icon(QStringLiteral("msg-") + icon_).pixmap(QSize(kIconSize, kIconSize), devicePixelRatioF()));
    imgMsg->setGeometry(kMargin, kMargin, kIconSize, kIconSize);
    textLeft += kIconSize + kIconGap;
    if (messageBeep_) {
      messageBeep_(sound);
    }
  }

  const QRect texts = BuildTexts(textLeft, sound != 0);
  const int top = texts.y() + texts.height() + Pixels(kButtonDistance);
  double left = 0;
  double row = 0;
  int buttonHeight = 0;
  const int count = std::max(1, int(captions_.size()));
  std::vector<std::pair<double, double>> places;
  for (int i = 0; i < count; ++i) {
    auto* button = new QPushButton(captions_.value(i, QStringLiteral("OK")), this);
    button->setObjectName(QStringLiteral("cmd"));
    button->setProperty("Index", i);
    button->setAutoDefault(true);
    connect(button, &QPushButton::clicked, this, [this, i] { Clicked(qint16(i)); });
    const double caption = fontMetrics().horizontalAdvance(button->text()) * kTwipsPerPixel;
    const double width = std::max(caption + kButtonTextMargin, kButtonMinimum);
    places.emplace_back(left, width);
    row = left + width;
    left = row + kButtonGap;
    buttonHeight = std::max(buttonHeight, button->sizeHint().height());
    cmd_.push_back(button);
  }

  const int inner = std::max(textLeft - kMargin + texts.width(), Pixels(row));
  const double rowLeft = (inner + 2 * kMargin) * kTwipsPerPixel / 2 - row / 2;
  for (size_t i = 0; i < cmd_.size(); ++i) {
    const auto [at, width] = places[i];
    cmd_[i]->setGeometry(Pixels(rowLeft + at), top, Pixels(width), buttonHeight);
    cmd_[i]->show();
  }
  cmd_[size_t(Existing(default_))]->setDefault(true);
  cmd_[size_t(Existing(default_))]->setFocus();
  setFixedSize(inner + 2 * kMargin, top + buttonHeight + kMargin);
}

QRect frmMsgBoxEx::BuildTexts(int left, bool hasPicture) {
  auto* lblMsg = new MessageLabel(this);
  lblMsg->setObjectName(QStringLiteral("lblMsg"));
  lblMsg->setText(prompt_);
  QSize text;
  for (const int width : kTextWidths) {
    text = lblMsg->SizeFor(width);
    if (text.height() <= screen()->availableGeometry().height() / 2) {
      break;
    }
  }
  // A short message is placed beside the middle of the picture.
  const bool isAlone = informativeText_.isEmpty();
  const int lift = hasPicture && isAlone ? std::max(0, (kIconSize - text.height()) / 2) : 0;
  lblMsg->setGeometry(left, kMargin + lift, text.width(), text.height());
  if (isAlone) {
    return lblMsg->geometry();
  }

  auto* txtInformative = new SelectableText(this);
  txtInformative->setObjectName(QStringLiteral("txtInformative"));
  txtInformative->setAccessibleName(QStringLiteral("Information"));
  txtInformative->setPlainText(ForeignText(informativeText_, kLongestInformative));
  const QSize below = txtInformative->SizeFor(std::max(text.width(), kInformativeWidth));
  txtInformative->setGeometry(left, lblMsg->y() + text.height() + kTextGap, below.width(), below.height());
  return {left, lblMsg->y(), std::max(text.width(), below.width()),
          text.height() + kTextGap + below.height()};
}

void frmMsgBoxEx::TakeApart() {
  cmd_.clear();
  const auto controls = findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
  for (QWidget* control : controls) {
    delete control;
  }
}

void frmMsgBoxEx::Clicked(qint16 index) {
  result_ = index;
  done(QDialog::Accepted);
}

qint16 frmMsgBoxEx::Existing(qint16 index) const {
  return qint16(std::clamp(int(index), 0, std::max(0, int(cmd_.size()) - 1)));
}

void frmMsgBoxEx::reject() {
  if (!cmd_.empty()) {
    cmd_[size_t(Existing(cancel_))]->click();
  }
}

void frmMsgBoxEx::closeEvent(QCloseEvent* event) {
  event->ignore();
  reject();
}

void frmMsgBoxEx::keyPressEvent(QKeyEvent* event) {
  // With nothing to type into, an access key works without Alt as well.
  if ((event->modifiers() & (Qt::AltModifier | Qt::ControlModifier | Qt::MetaModifier)) == 0) {
    for (QPushButton* button : cmd_) {
      const QKeySequence access = QKeySequence::mnemonic(button->text());
      if (!access.isEmpty() && access[0].key() == event->key()) {
        button->click();
        return;
      }
    }
  }
  QDialog::keyPressEvent(event);
}

}  // namespace trevane
