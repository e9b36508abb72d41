#include "dialogs/frmProperty.h"

#include "base/ForeignText.h"
#include "base/ShownText.h"
#include "dialogs/SelectableText.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace trevane {

namespace {

constexpr double kTwipsPerPixel = 15;
// In letters and lines of the font, so that large texts find a large window.
constexpr int kFirstColumns = 66;
constexpr int kFirstLines = 19;
constexpr int kMostColumns = 100;
constexpr int kLongestLine = 500;  // characters
constexpr int kLabelColumn = 0;
constexpr int kValueColumn = 1;

/// Shows the English texts from left to right on every desktop, with some air around them, and opens a value
/// for selecting a piece of it and for nothing else.
class CellDelegate final : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  [[nodiscard]] QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                                      const QModelIndex& index) const override {
    auto* editor = new QLineEdit(parent);
    editor->setReadOnly(true);
    editor->setFrame(false);
    editor->setAutoFillBackground(true);
    editor->setAccessibleName(index.siblingAtColumn(kLabelColumn).data().toString());
    return editor;
  }
  void setModelData(QWidget* /*editor*/, QAbstractItemModel* /*model*/,
                    const QModelIndex& /*index*/) const override {}

  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    return QStyledItemDelegate::sizeHint(option, index) + QSize(0, kRowAir);
  }

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    // The side stays that of the desktop; a mixture of digits and brackets is not turned round.
    option->displayAlignment = QStyle::visualAlignment(option->direction, option->displayAlignment);
    option->direction = Qt::LeftToRight;
  }

 private:
  static constexpr int kRowAir = 6;  // logical pixels, both sides together
};

}  // namespace

frmProperty::frmProperty(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      flxgrdProp_(new QTableWidget(this)),
      txtDetails_(new SelectableText(this)) {
  setObjectName(QStringLiteral("frmProperty"));
  setWindowTitle(QStringLiteral("Properties"));

  flxgrdProp_->setObjectName(QStringLiteral("flxgrdProp"));
  flxgrdProp_->setAccessibleName(QStringLiteral("Properties"));
  flxgrdProp_->setItemDelegate(new CellDelegate(flxgrdProp_));
  flxgrdProp_->setColumnCount(2);
  flxgrdProp_->horizontalHeader()->hide();
  flxgrdProp_->verticalHeader()->hide();
  flxgrdProp_->horizontalHeader()->setMinimumSectionSize(1);
  flxgrdProp_->horizontalHeader()->setStretchLastSection(true);
  flxgrdProp_->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
  connect(flxgrdProp_->horizontalHeader(), &QHeaderView::sectionResized, flxgrdProp_,
          &QTableView::resizeRowsToContents);
  flxgrdProp_->setWordWrap(true);
  flxgrdProp_->setTextElideMode(Qt::ElideMiddle);
  flxgrdProp_->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  // Tab moves to the button; the arrow keys walk through the cells.
  flxgrdProp_->setTabKeyNavigation(false);
  flxgrdProp_->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
  flxgrdProp_->installEventFilter(this);

  auto* copy = new QAction(QStringLiteral("&Copy"), this);
  copy->setObjectName(QStringLiteral("mnuPropCopy"));
  connect(copy, &QAction::triggered, this, &frmProperty::CopySelection);
  flxgrdProp_->addAction(copy);
  flxgrdProp_->setContextMenuPolicy(Qt::ActionsContextMenu);

  auto* cmdProOK = new QPushButton(QStringLiteral("OK"), this);
  cmdProOK->setObjectName(QStringLiteral("cmdProOK"));
  cmdProOK->setDefault(true);
  connect(cmdProOK, &QPushButton::clicked, this, &QWidget::close);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(cmdProOK);
  auto* layout = new QVBoxLayout(this);
  txtDetails_->setObjectName(QStringLiteral("txtDetails"));
  txtDetails_->setAccessibleName(QStringLiteral("Details"));
  txtDetails_->hide();
  layout->addWidget(flxgrdProp_, 1);
  layout->addWidget(txtDetails_);
  layout->addLayout(buttons);
  const QFontMetrics metrics(font());
  resize(metrics.averageCharWidth() * kFirstColumns, metrics.height() * kFirstLines);
  cmdProOK->setFocus();
}

void frmProperty::SetTable(const PropertyTable& table) {
  flxgrdProp_->clear();
  flxgrdProp_->setRowCount(static_cast<int>(table.labels.size()));
  for (int row = 0; row < flxgrdProp_->rowCount(); ++row) {
    auto* label = new QTableWidgetItem(table.labels[row]);
    label->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    flxgrdProp_->setItem(row, kLabelColumn, label);
    const QString text = WithReadableNames(table.values.value(row));
    auto* value = new QTableWidgetItem(text);
    value->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable);
    if (!text.isEmpty()) {
      value->setToolTip(PlainToolTip(text));
    }
    flxgrdProp_->setItem(row, kValueColumn, value);
  }
  FitLabels();
  ShowDetails(table.details);
  flxgrdProp_->setCurrentCell(0, kValueColumn, QItemSelectionModel::NoUpdate);
}

void frmProperty::ShowDetails(const QStringList& details) {
  QStringList lines;
  for (const QString& line : details) {
    lines += ForeignLine(line, kLongestLine);
  }
  txtDetails_->setPlainText(lines.join(u'\n'));
  txtDetails_->setVisible(!lines.isEmpty());
  const QSize before = size() - grown_;
  QSize needed(0, 0);
  if (!lines.isEmpty()) {
    const QMargins margins = layout()->contentsMargins();
    const int around = margins.left() + margins.right();
    const int widest = txtDetails_->SizeFor(fontMetrics().averageCharWidth() * kMostColumns).width();
    const int width = std::max(before.width(), widest + around);
    const int height = txtDetails_->SizeFor(width - around).height();
    txtDetails_->setFixedHeight(height);
    needed = QSize(width - before.width(), height + layout()->spacing());
  }
  grown_ = needed;
  // Else the text that was shown before may still bound the window from below.
  layout()->activate();
  resize(before + needed);
}

void frmProperty::FitLabels() {
  int width = static_cast<int>(std::lround(kLabelWidthTwips / kTwipsPerPixel));
  const QFontMetrics metrics(flxgrdProp_->font());
  const int margins = 2 * (flxgrdProp_->style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + 2);
  for (int row = 0; row < flxgrdProp_->rowCount(); ++row) {
    // A label of two words takes two lines.
    for (const QString& word : flxgrdProp_->item(row, kLabelColumn)->text().split(u' ')) {
      width = std::max(width, metrics.horizontalAdvance(word) + margins);
    }
  }
  flxgrdProp_->setColumnWidth(kLabelColumn, width);
}

void frmProperty::changeEvent(QEvent* event) {
  QDialog::changeEvent(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
    FitLabels();
  }
}

bool frmProperty::eventFilter(QObject* watched, QEvent* event) {
  if (watched == flxgrdProp_ && event->type() == QEvent::KeyPress) {
    auto* key = static_cast<QKeyEvent*>(event);
    if (key->matches(QKeySequence::Copy)) {
      CopySelection();
      return true;
    }
    if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
      close();
      return true;
    }
  }
  return QDialog::eventFilter(watched, event);
}

void frmProperty::CopySelection() const {
  QStringList lines;
  for (int row = 0; row < flxgrdProp_->rowCount(); ++row) {
    QStringList cells;
    for (const int column : {kLabelColumn, kValueColumn}) {
      const QTableWidgetItem* cell = flxgrdProp_->item(row, column);
      if (cell->isSelected()) {
        cells += cell->text();
      }
    }
    if (!cells.isEmpty()) {
      lines += cells.join(u'\t');
    }
  }
  if (!lines.isEmpty()) {
    QGuiApplication::clipboard()->setText(lines.join(u'\n'));
  }
}

}  // namespace trevane
