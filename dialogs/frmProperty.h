#pragma once

#include "prompts/UserPrompts.h"

#include <QDialog>
#include <QSize>

class QTableWidget;

namespace trevane {

class SelectableText;

/// The properties of one entry, as a table of labels and values. Cells can be selected and copied; a double
/// click or F2 on a value lets a piece of it be selected. What else is known stands in a text below, for
/// which the window grows. Nothing can be changed.
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
  void ShowDetails(const QStringList& details);

  QTableWidget* flxgrdProp_;
  SelectableText* txtDetails_;
  /// So much was added to the window for the text.
  QSize grown_{0, 0};
};

}  // namespace trevane
