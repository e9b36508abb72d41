#include "views/ImageList.h"
#include "views/SelectionColors.h"
#include "views/addresses/ImageKeys.h"
#include "views/list/FileListModel.h"
#include "views/list/FileListView.h"
#include "views/tree/FolderTreeModel.h"
#include "views/tree/FolderTreeView.h"

#include <QHBoxLayout>
#include <QHash>
#include <QImage>
#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

namespace trevane {
namespace {

QPalette LightPalette() {
  QPalette palette;
  palette.setColor(QPalette::Base, Qt::white);
  palette.setColor(QPalette::Text, Qt::black);
  palette.setColor(QPalette::Highlight, QColor(48, 140, 198));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  return palette;
}

QPalette DarkPalette() {
  QPalette palette;
  palette.setColor(QPalette::Base, QColor(42, 42, 42));
  palette.setColor(QPalette::Text, QColor(230, 230, 230));
  palette.setColor(QPalette::Highlight, QColor(42, 130, 218));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  return palette;
}

struct Painted {
  QColor background;
  QColor text;
  [[nodiscard]] double Contrast() const { return trevane::Contrast(background, text); }
};

/// Pixels; less of a colour is an edge.
constexpr int kSmallestStroke = 8;

/// The colour painted most is the background; the one that differs most from it is the text, whose strokes
/// are thick.
Painted Measure(QWidget& viewport, const QRect& place) {
  const QImage image = viewport.grab(place).toImage().convertToFormat(QImage::Format_RGB32);
  QHash<QRgb, int> counts;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      ++counts[image.pixel(x, y)];
    }
  }
  Painted painted;
  int most = 0;
  for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
    if (it.value() > most) {
      most = it.value();
      painted.background = QColor(it.key());
    }
  }
  painted.text = painted.background;
  for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
    if (it.value() >= kSmallestStroke &&
        Contrast(QColor(it.key()), painted.background) > painted.Contrast()) {
      painted.text = QColor(it.key());
    }
  }
  return painted;
}

class SelectionColorsTest : public testing::TestWithParam<bool> {
 protected:
  SelectionColorsTest() {
    QImage picture(64, 64, QImage::Format_RGB32);
    picture.fill(kPicture);
    images_.Add(imagekey::kFolderClosed, picture);
    images_.Add(QStringLiteral("file"), picture);
    for (const QString& name : {QStringLiteral("HHHHa"), QStringLiteral("HHHHb"), QStringLiteral("HHHHc")}) {
      files_.AddListItem({}, 0x20, name, QStringLiteral("file"));
    }
    files_.FlushStaged();
    files_.SetGhosted(files_.FindByText(u"HHHHb"), true);
    folder_ = tree_.AddTreeNode(nullptr, imagekey::kFolderClosed, QStringLiteral("HHHHH"), 0x10);

    window_.setPalette(GetParam() ? DarkPalette() : LightPalette());
    QFont font = window_.font();
    font.setPointSize(24);
    font.setBold(true);
    window_.setFont(font);
    auto* row = new QHBoxLayout(&window_);
    row->addWidget(&treeView_);
    row->addWidget(&listView_);
    row->addWidget(&other_);
    treeView_.SetFolders(&tree_);
    listView_.SetFiles(&files_);
    listView_.SetColumnWidth(FileColumn::Name, 300);
    window_.resize(1000, 300);
    window_.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&window_));
    window_.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
    treeView_.SelectNode(folder_);
    // The current item is another one, so that no focus frame is measured.
    listView_.selectAll();
    listView_.selectionModel()->setCurrentIndex(files_.IndexOf(files_.FindByText(u"HHHHc")),
                                                QItemSelectionModel::NoUpdate);
  }
  ~SelectionColorsTest() override {
    treeView_.setParent(nullptr);
    listView_.setParent(nullptr);
    other_.setParent(nullptr);
  }

  [[nodiscard]] QRect ItemRect(QStringView name) {
    return listView_.visualRect(files_.IndexOf(files_.FindByText(name)));
  }
  [[nodiscard]] Painted Item(QStringView name) {
    return Measure(*listView_.viewport(), ItemRect(name).adjusted(40, 0, 0, 0));
  }
  [[nodiscard]] Painted Node() {
    const QRect rect = treeView_.visualRect(tree_.IndexOf(folder_));
    return Measure(*treeView_.viewport(), rect.adjusted(40, 2, -2, -2));
  }
  /// The painted part of the item's picture.
  [[nodiscard]] QColor PictureOf(QStringView name) {
    const QRect rect = ItemRect(name);
    const QImage image = listView_.viewport()->grab(rect).toImage();
    return image.pixelColor(listView_.iconSize().width() / 2 + 4, rect.height() / 2);
  }
  static bool IsGrey(const QColor& color) {
    return color.red() == color.green() && color.green() == color.blue();
  }

  static constexpr QRgb kPicture = qRgb(230, 170, 40);

  ImageList images_{QStringLiteral(":/none/")};
  FolderTreeModel tree_{&images_};
  FileListModel files_{&images_, nullptr, nullptr};
  QWidget window_;
  FolderTreeView treeView_{&images_};
  FileListView listView_{&images_};
  QLineEdit other_;
  FolderNode* folder_ = nullptr;
};

TEST_P(SelectionColorsTest, OnlyThePaneWithTheFocusIsColoured) {
  listView_.setFocus();
  EXPECT_FALSE(IsGrey(Item(u"HHHHa").background));
  EXPECT_TRUE(IsGrey(Node().background));
  EXPECT_NE(Node().background, window_.palette().color(QPalette::Base));
  treeView_.setFocus();
  EXPECT_TRUE(IsGrey(Item(u"HHHHa").background));
  EXPECT_FALSE(IsGrey(Node().background));
  other_.setFocus();
  EXPECT_TRUE(IsGrey(Item(u"HHHHa").background));
  EXPECT_TRUE(IsGrey(Node().background));
}

TEST_P(SelectionColorsTest, SelectedTextsCanBeReadWithAndWithoutFocus) {
  for (QWidget* focus : {static_cast<QWidget*>(&listView_), static_cast<QWidget*>(&treeView_)}) {
    focus->setFocus();
    EXPECT_GE(Item(u"HHHHa").Contrast(), kReadableContrast) << focus->objectName().toStdString();
    EXPECT_GE(Node().Contrast(), kReadableContrast) << focus->objectName().toStdString();
  }
}

TEST_P(SelectionColorsTest, CutTextsAreDimmedAndCanBeRead) {
  for (QWidget* focus : {static_cast<QWidget*>(&listView_), static_cast<QWidget*>(&treeView_)}) {
    focus->setFocus();
    const Painted cut = Item(u"HHHHb");
    EXPECT_GE(cut.Contrast(), kReadableContrast) << focus->objectName().toStdString();
    EXPECT_LT(cut.Contrast(), Item(u"HHHHa").Contrast() - 1);
    EXPECT_EQ(cut.background, Item(u"HHHHa").background);
  }
  // The row with the focus has a veil over it.
  listView_.setFocus();
  listView_.selectionModel()->setCurrentIndex(files_.IndexOf(files_.FindByText(u"HHHHb")),
                                              QItemSelectionModel::NoUpdate);
  EXPECT_GE(Item(u"HHHHb").Contrast(), kReadableContrast);
  listView_.clearSelection();
  const Painted cut = Item(u"HHHHb");
  EXPECT_GE(cut.Contrast(), kReadableContrast);
  EXPECT_LT(cut.Contrast(), Item(u"HHHHa").Contrast() - 1);
}

TEST_P(SelectionColorsTest, PicturesAreNotTintedAndThoseOfCutItemsFade) {
  listView_.setFocus();
  EXPECT_EQ(PictureOf(u"HHHHa"), QColor(kPicture));
  const QColor faded = PictureOf(u"HHHHb");
  EXPECT_NE(faded, QColor(kPicture));
  EXPECT_NE(faded, Item(u"HHHHb").background);
}

INSTANTIATE_TEST_SUITE_P(Palettes, SelectionColorsTest, testing::Bool(),
                         [](const auto& info) { return info.param ? "Dark" : "Light"; });

TEST(SelectionColors, EveryHighlightGivesReadableTexts) {
  for (int hue = 0; hue < 360; hue += 15) {
    for (const int lightness : {20, 80, 128, 180, 240}) {
      for (const Qt::GlobalColor text : {Qt::white, Qt::black}) {
        QPalette palette = LightPalette();
        palette.setColor(QPalette::Highlight, QColor::fromHsl(hue, 200, lightness));
        palette.setColor(QPalette::HighlightedText, text);
        const SelectionColors colors = SelectionColorsOf(palette, true);
        EXPECT_GE(Contrast(colors.background, colors.text), kReadableContrast);
        EXPECT_GE(Contrast(colors.background, Dimmed(colors.text, colors.background)), kReadableContrast);
      }
    }
  }
}

}  // namespace
}  // namespace trevane
