#include "resources/Resources.h"

#include <QImage>

#include <gtest/gtest.h>

#include <algorithm>

namespace trevane {
namespace {

const char* const kKeys[] = {"WORKSPACE",
                             "MYCOM",
                             "CONTROLLER",
                             "ERRCONTROLLER",
                             "FDISK",
                             "HDD",
                             "CDROM",
                             "REMOTE",
                             "RAMDISK",
                             "QUESTION",
                             "F-CLOSE",
                             "F-OPEN",
                             "RCFile",
                             "FILEOPEN",
                             "FILESAVE",
                             "UPDIR",
                             "COPY",
                             "CUT",
                             "PASTE",
                             "DELETE",
                             "CONNECT",
                             "DISCONNECT",
                             "FILTER",
                             "NOFILTER",
                             "INCLUDE",
                             "EXCLUDE",
                             "GO",
                             "ASCEND",
                             "DESCEND",
                             "trevane",
                             "msg-Question",
                             "msg-Exclamation",
                             "msg-Information",
                             "msg-Critical"};

/// The share of the pixels of `image` that show something on `background`.
double VisibleShare(const QImage& image, const QColor& background) {
  int seen = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const QColor color = image.pixelColor(x, y);
      const int difference =
          std::max({std::abs(color.red() - background.red()), std::abs(color.green() - background.green()),
                    std::abs(color.blue() - background.blue())});
      seen += difference * color.alpha() / 255 > 40 ? 1 : 0;
    }
  }
  return double(seen) / (image.width() * image.height());
}

class ImageKey : public testing::TestWithParam<const char*> {};

TEST_P(ImageKey, HasAPictureOfItsOwnInEverySize) {
  InitResources();
  for (const int size : {16, 24, 32, 48, 64}) {
    const QImage image(IconFile(QLatin1StringView(GetParam()), size));
    ASSERT_EQ(image.size(), QSize(size, size)) << size;
    ASSERT_TRUE(image.hasAlphaChannel());
  }
}

TEST_P(ImageKey, IsSeenOnLightAndOnDarkBackgrounds) {
  InitResources();
  const QImage image(IconFile(QLatin1StringView(GetParam()), 16));
  for (const char* background : {"#ffffff", "#d8d8d8", "#2b2b2b"}) {
    EXPECT_GT(VisibleShare(image, QColor(QLatin1StringView(background))), 0.04) << background;
  }
}

INSTANTIATE_TEST_SUITE_P(Resources, ImageKey, testing::ValuesIn(kKeys), [](const auto& info) {
  std::string name;
  std::copy_if(info.param, info.param + std::string(info.param).size(), std::back_inserter(name),
               [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; });
  return name;
});

TEST(Icon, HasTheApplicationInLargeSizesToo) {
  const QIcon icon = Icon(QStringLiteral("trevane"));
  EXPECT_TRUE(icon.availableSizes().contains(QSize(256, 256)));
  EXPECT_TRUE(icon.availableSizes().contains(QSize(128, 128)));
}

TEST(Icon, IsNullForAKeyWithoutAPicture) {
  EXPECT_TRUE(Icon(QStringLiteral("NO-SUCH-KEY")).isNull());
}

TEST(Icon, DiffersBetweenAConnectedAndAFailedController) {
  InitResources();
  EXPECT_NE(QImage(IconFile(QStringLiteral("CONTROLLER"), 16)),
            QImage(IconFile(QStringLiteral("ERRCONTROLLER"), 16)));
}

}  // namespace
}  // namespace trevane
