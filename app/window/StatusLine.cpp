#include "app/window/StatusLine.h"

#include "base/DisplayText.h"
#include "dialogs/ElidedLabel.h"

#include <QLabel>

namespace trevane {

StatusLine::StatusLine(QWidget* parent)
    : QStatusBar(parent),
      text_(new ElidedLabel(this)),
      logFailure_(new QLabel(QStringLiteral("The operation log cannot be written."), this)) {
  setObjectName(QStringLiteral("sbarMain"));
  text_->setObjectName(QStringLiteral("sbarMainText"));
  addWidget(text_, 1);
  logFailure_->setObjectName(QStringLiteral("sbarMainLog"));
  addPermanentWidget(logFailure_);
  logFailure_->hide();
  setSizeGripEnabled(true);
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
