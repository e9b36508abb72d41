#include "base/RunTimeError.h"
#include "views/ImageList.h"

#include <QPixmap>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

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
    ASSERT_TRUE(Plain(size, color).save(folder_.filePath(u"%1-%2.png"_s.arg(key).arg(size))));
  }

  QTemporaryDir folder_;
  ImageList images_{folder_.path() + u'/'};
};

TEST_F(ImageListTest, TheMaskColourIsTransparent) {
  QImage picture = Plain(16, qRgb(10, 20, 30));
  picture.setPixel(3, 4, ImageList::kMaskColor);
  images_.Add(u"iIcon:7"_s, picture);
  EXPECT_EQ(qAlpha(PixelOf(images_.Icon(u"iIcon:7"_s), 16, 3, 4)), 0);
  EXPECT_EQ(PixelOf(images_.Icon(u"iIcon:7"_s), 16, 0, 0), qRgb(10, 20, 30));
}

TEST_F(ImageListTest, AnExistingKeyIsRefused) {
  images_.Add(u"iIcon:7"_s, Plain(16, 1));
  try {
    images_.Add(u"iIcon:7"_s, Plain(16, 2));
    FAIL();
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kKeyAlreadyThere);
  }
  WriteOwn(u"hdd"_s, 16, qRgb(1, 1, 1));
  EXPECT_THROW(images_.Add(u"HDD"_s, Plain(16, 2)), RunTimeError);
}

TEST_F(ImageListTest, OwnPicturesAreFoundByTheLowerCasedKey) {
  WriteOwn(u"f-close"_s, 16, qRgb(1, 2, 3));
  EXPECT_TRUE(images_.Contains(u"F-CLOSE"_s));
  EXPECT_FALSE(images_.Contains(u"F-OPEN"_s));
  EXPECT_EQ(PixelOf(images_.Icon(u"F-CLOSE"_s), 16, 8, 8), qRgb(1, 2, 3));
}

TEST_F(ImageListTest, AHighResolutionScreenGetsTheLargerPicture) {
  WriteOwn(u"hdd"_s, 16, qRgb(1, 0, 0));
  WriteOwn(u"hdd"_s, 32, qRgb(2, 0, 0));
  const QPixmap pixmap = images_.Icon(u"HDD"_s).pixmap(QSize(16, 16), 2.0);
  EXPECT_EQ(pixmap.width(), 32);
  EXPECT_EQ(pixmap.toImage().pixel(5, 5), qRgb(2, 0, 0));
}

TEST_F(ImageListTest, AMissingPictureIsTheDefaultOne) {
  WriteOwn(u"rcfile"_s, 16, qRgb(9, 9, 9));
  EXPECT_EQ(PixelOf(images_.Icon(u"NOSUCH"_s), 16, 8, 8), qRgb(9, 9, 9));
}

TEST_F(ImageListTest, WithoutAnyPicturesThereIsNoEmptyBox) {
  const QImage drawn = images_.Icon(u"NOSUCH"_s).pixmap(QSize(16, 16), 1.0).toImage();
  ASSERT_FALSE(drawn.isNull());
  EXPECT_GT(qAlpha(drawn.pixel(8, 8)), 0);
}

TEST_F(ImageListTest, TheEmptyKeyIsNoPicture) {
  EXPECT_TRUE(images_.Icon(QString()).isNull());
}

}  // namespace
}  // namespace trevane
