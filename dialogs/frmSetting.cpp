#include "dialogs/frmSetting.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace trevane {

namespace {

// In letters and lines of the font, so that large texts find a large window.
constexpr int kFirstColumns = 64;
constexpr int kFirstLines = 20;

}  // namespace

frmSetting::frmSetting(QWidget* parent)
    : QDialog(parent,
              Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint) {
  setObjectName(QStringLiteral("frmSetting"));
  setWindowTitle(QStringLiteral("Setting"));

  auto* sstSetting = new QTabWidget(this);
  sstSetting->setObjectName(QStringLiteral("sstSetting"));
  sstSetting->setAccessibleName(QStringLiteral("Setting"));
  sstSetting->addTab(new QWidget(sstSetting), QStringLiteral("General"));

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
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(sstSetting, 1);
  layout->addLayout(buttons);
  const QFontMetrics metrics(font());
  resize(QSize(metrics.averageCharWidth() * kFirstColumns, metrics.height() * kFirstLines)
             .expandedTo(sizeHint()));
  cmdOK->setFocus();
}

}  // namespace trevane
