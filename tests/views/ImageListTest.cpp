#include "base/RunTimeError.h"
#include "views/ImageList.h"

#include <QPixmap>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace trevane {
namespace {

QImage Plain(int size, QRgb color) {
  QImage image(size, size, QImage::Format_RGB32);
  image.fill(color);
  return image;
}

QRgb PixelOf(const QIcon& icon, int size, int x, int y) {
  return icon.pixmap(QSize(size, size), 1.0).toImage().pixel(x, y);
}

class ImageListTest : public testing::Test {
 protected:
  void WriteOwn(const QString& key, int size, QRgb color) const {
    ASSERT_TRUE(Plain(size, color).save(folder_.filePath(QStringLiteral("%1-%2.png").arg(key).arg(size))));
  }

  QTemporaryDir folder_;
  ImageList images_{folder_.path() + u'/'};
};

TEST_F(ImageListTest, TheMaskColourIsTransparent) {
  QImage picture = Plain(16, qRgb(10, 20, 30));
  picture.setPixel(3, 4, ImageList::kMaskColor);
  images_.Add(QStringLiteral("iIcon:7"), picture);
  EXPECT_EQ(qAlpha(PixelOf(images_.Icon(QStringLiteral("iIcon:7")), 16, 3, 4)), 0);
  EXPECT_EQ(PixelOf(images_.Icon(QStringLiteral("iIcon:7")), 16, 0, 0), qRgb(10, 20, 30));
}

TEST_F(ImageListTest, AnExistingKeyIsRefused) {
  images_.Add(QStringLiteral("iIcon:7"), Plain(16, 1));
  try {
    images_.Add(QStringLiteral("iIcon:7"), Plain(16, 2));
    FAIL();
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kKeyAlreadyThere);
  }
  WriteOwn(QStringLiteral("hdd"), 16, qRgb(1, 1, 1));
  EXPECT_THROW(images_.Add(QStringLiteral("HDD"), Plain(16, 2)), RunTimeError);
}

TEST_F(ImageListTest, OwnPicturesAreFoundByTheLowerCasedKey) {
  WriteOwn(QStringLiteral("f-close"), 16, qRgb(1, 2, 3));
  EXPECT_TRUE(images_.Contains(QStringLiteral("F-CLOSE")));
  EXPECT_FALSE(images_.Contains(QStringLiteral("F-OPEN")));
  EXPECT_EQ(PixelOf(images_.Icon(QStringLiteral("F-CLOSE")), 16, 8, 8), qRgb(1, 2, 3));
}

TEST_F(ImageListTest, AHighResolutionScreenGetsTheLargerPicture) {
  WriteOwn(QStringLiteral("hdd"), 16, qRgb(1, 0, 0));
  WriteOwn(QStringLiteral("hdd"), 32, qRgb(2, 0, 0));
  const QPixmap pixmap = images_.Icon(QStringLiteral("HDD")).pixmap(QSize(16, 16), 2.0);
  EXPECT_EQ(pixmap.width(), 32);
  EXPECT_EQ(pixmap.toImage().pixel(5, 5), qRgb(2, 0, 0));
}

TEST_F(ImageListTest, AMissingPictureIsTheDefaultOne) {
  WriteOwn(QStringLiteral("rcfile"), 16, qRgb(9, 9, 9));
  EXPECT_EQ(PixelOf(images_.Icon(QStringLiteral("NOSUCH")), 16, 8, 8), qRgb(9, 9, 9));
}

TEST_F(ImageListTest, WithoutAnyPicturesThereIsNoEmptyBox) {
  const QImage drawn = images_.Icon(QStringLiteral("NOSUCH")).pixmap(QSize(16, 16), 1.0).toImage();
  ASSERT_FALSE(drawn.isNull());
  EXPECT_GT(qAlpha(drawn.pixel(8, 8)), 0);
}

TEST_F(ImageListTest, TheEmptyKeyIsNoPicture) {
  EXPECT_TRUE(images_.Icon(QString()).isNull());
}

}  // namespace
}  // namespace trevane
