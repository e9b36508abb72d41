#pragma once

#include "prompts/UserPrompts.h"

#include <QDialog>

class QTableWidget;

namespace trevane {

/// The properties of one entry, as a table of labels and values. Cells can be selected and copied; a double
/// click or F2 on a value lets a piece of it be selected. Nothing can be changed.
class frmProperty final : public QDialog {
  Q_OBJECT

 public:
  /// Width of the labels in twips; where the font is so large that a single word would not fit they get what
  /// it needs. 15 twips are a logical pixel.
  static constexpr int kLabelWidthTwips = 1300;

  explicit frmProperty(QWidget* parent = nullptr);

  /// Replaces what is shown.
  void SetTable(const PropertyTable& table);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void CopySelection() const;
  void FitLabels();

  QTableWidget* flxgrdProp_;
};

}  // namespace trevane
