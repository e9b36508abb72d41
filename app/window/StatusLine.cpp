#include "app/window/StatusLine.h"

#include "base/DisplayText.h"
#include "base/ForeignText.h"
#include "base/ShownText.h"
#include "dialogs/ElidedLabel.h"
#include "resources/Resources.h"

#include <QHBoxLayout>
#include <QLabel>

#include <algorithm>

namespace trevane {

namespace {

constexpr int kIconGap = 4;          // logical pixels
constexpr int kLongestNotice = 200;  // characters

}  // namespace

StatusLine::StatusLine(QWidget* parent)
    : QStatusBar(parent),
      text_(new ElidedLabel(this)),
      logFailure_(new QLabel(QStringLiteral("The operation log cannot be written."), this)),
      notice_(new QWidget(this)),
      noticeIcon_(new QLabel(notice_)),
      noticeText_(new ElidedLabel(notice_)) {
  setObjectName(QStringLiteral("sbarMain"));
  text_->setObjectName(QStringLiteral("sbarMainText"));
  addWidget(text_, 1);
  BuildNotice();
  logFailure_->setObjectName(QStringLiteral("sbarMainLog"));
  addPermanentWidget(logFailure_);
  logFailure_->hide();
  setSizeGripEnabled(true);
}

void StatusLine::BuildNotice() {
  notice_->setObjectName(QStringLiteral("sbarMainNotice"));
  noticeText_->setObjectName(QStringLiteral("sbarMainNoticeText"));
  noticeText_->SetElideMode(Qt::ElideRight);
  const int side = fontMetrics().height();
  noticeIcon_->setPixmap(
      Icon(QStringLiteral("msg-Exclamation")).pixmap(QSize(side, side), devicePixelRatioF()));
  noticeIcon_->setAccessibleName(QStringLiteral("Warning"));
  auto* row = new QHBoxLayout(notice_);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(kIconGap);
  row->addWidget(noticeIcon_);
  row->addWidget(noticeText_, 1);
  addPermanentWidget(notice_);
  notice_->hide();
}

void StatusLine::ShowNotice(const QString& notice) {
  const QString line = ForeignLine(notice, kLongestNotice);
  noticeText_->setText(line);
  noticeText_->setAccessibleName(line);
  notice_->setToolTip(line.isEmpty() ? QString() : PlainToolTip(line));
  FitNotice();
  notice_->setVisible(!line.isEmpty());
}

void StatusLine::FitNotice() {
  const int whole = noticeText_->fontMetrics().horizontalAdvance(noticeText_->text()) + 2;
  noticeText_->setFixedWidth(std::min(whole, width() / 2));
}

void StatusLine::resizeEvent(QResizeEvent* event) {
  QStatusBar::resizeEvent(event);
  FitNotice();
}

void StatusLine::ShowText(const QString& text) {
  hasReason_ = false;
  text_->setText(DisplayText(text));
}

void StatusLine::ShowReason(const QString& line) {
  hasReason_ = true;
  text_->setText(DisplayText(line));
}

void StatusLine::ShowLogFailure() {
  logFailure_->show();
}

}  // namespace trevane
