#include "dialogs/frmSetting.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace trevane {

using namespace Qt::StringLiterals;

namespace {

// In letters and lines of the font, so that large texts find a large window.
constexpr int kFirstColumns = 64;
constexpr int kFirstLines = 20;

}  // namespace

frmSetting::frmSetting(QWidget* parent)
    : QDialog(parent,
              Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint) {
  setObjectName(u"frmSetting"_s);
  setWindowTitle(u"Setting"_s);

  auto* sstSetting = new QTabWidget(this);
  sstSetting->setObjectName(u"sstSetting"_s);
  sstSetting->setAccessibleName(u"Setting"_s);
  sstSetting->addTab(new QWidget(sstSetting), u"General"_s);

  auto* cmdOK = new QPushButton(u"OK"_s, this);
  cmdOK->setObjectName(u"cmdOK"_s);
  cmdOK->setDefault(true);
  auto* cmdCancel = new QPushButton(u"&Cancel"_s, this);
  cmdCancel->setObjectName(u"cmdCancel"_s);
  cmdCancel->setAccessibleName(u"Cancel"_s);
  connect(cmdOK, &QPushButton::clicked, this, &QDialog::accept);
  connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(cmdOK);
  buttons->addWidget(cmdCancel);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(sstSetting, 1);
  layout->addLayout(buttons);
  const QFontMetrics metrics(font());
  resize(QSize(metrics.averageCharWidth() * kFirstColumns, metrics.height() * kFirstLines)
             .expandedTo(sizeHint()));
  cmdOK->setFocus();
}

}  // namespace trevane
