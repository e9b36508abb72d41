#pragma once

#include <QDialog>

namespace trevane {

/// The window behind Tool, Option: one empty page. It reads no setting and stores none, and its two buttons
/// do the same.
class frmSetting final : public QDialog {
  Q_OBJECT

 public:
  explicit frmSetting(QWidget* parent = nullptr);
};

}  // namespace trevane
