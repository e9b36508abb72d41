#include "views/addresses/LocalFileAddress.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

const std::vector<Volume> kLinux{{QStringLiteral("C:"), QStringLiteral("/"), drivetype::kFixed},
                                 {QStringLiteral("D:"), QStringLiteral("/media/usb/"), drivetype::kRemovable},
                                 {QStringLiteral("E:"), QStringLiteral("/media/"), drivetype::kFixed}};
const std::vector<Volume> kWindows{{QStringLiteral("C:"), QStringLiteral("C:\\"), drivetype::kFixed},
                                   {QStringLiteral("D:"), QStringLiteral("D:\\"), drivetype::kFixed}};

TEST(LocalFileAddressTest, TheLongestFolderThatHoldsTheFileDecides) {
  EXPECT_EQ(AddressOfLocalFile(kLinux, QStringLiteral("/home/a b.fmg")),
            QStringLiteral("Workspace\\My Computer\\C:\\home\\a b.fmg"));
  EXPECT_EQ(AddressOfLocalFile(kLinux, QStringLiteral("/media/usb/x/a.fmg")),
            QStringLiteral("Workspace\\My Computer\\D:\\x\\a.fmg"));
  EXPECT_EQ(AddressOfLocalFile(kLinux, QStringLiteral("/media/usb2/a.fmg")),
            QStringLiteral("Workspace\\My Computer\\E:\\usb2\\a.fmg"));
  EXPECT_EQ(AddressOfLocalFile(kLinux, QStringLiteral("/MEDIA/a.fmg")),
            QStringLiteral("Workspace\\My Computer\\C:\\MEDIA\\a.fmg"));
}

TEST(LocalFileAddressTest, ADriveItselfAndNoDriveAtAll) {
  EXPECT_EQ(AddressOfLocalFile(kLinux, QStringLiteral("/")), QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_EQ(AddressOfLocalFile(kLinux, QStringLiteral("/media/usb")),
            QStringLiteral("Workspace\\My Computer\\D:"));
  EXPECT_EQ(AddressOfLocalFile(kWindows, QStringLiteral("d:")), QStringLiteral("Workspace\\My Computer\\D:"));
  EXPECT_EQ(AddressOfLocalFile(kLinux, QString()), QString()) << "no path is not the root";
  EXPECT_EQ(AddressOfLocalFile({}, QStringLiteral("/a.fmg")), QString());
  EXPECT_EQ(AddressOfLocalFile(kWindows, QStringLiteral("X:/a.fmg")), QString());
  EXPECT_EQ(
      AddressOfLocalFile({{QStringLiteral("C:"), QString(), drivetype::kFixed}}, QStringLiteral("/a.fmg")),
      QString());
}

TEST(LocalFileAddressTest, ADrivePathTakesBothSeparatorsAndAnyCase) {
  EXPECT_EQ(AddressOfLocalFile(kWindows, QStringLiteral("d:/data/a.fmg")),
            QStringLiteral("Workspace\\My Computer\\D:\\data\\a.fmg"));
  EXPECT_EQ(AddressOfLocalFile(kWindows, QStringLiteral("C:\\a.fmg")),
            QStringLiteral("Workspace\\My Computer\\C:\\a.fmg"));
}

TEST(LocalFileAddressTest, AShareIsTheNetworkDriveThatStandsForIt) {
  const std::vector<Volume> drives{{QStringLiteral("C:"), QStringLiteral("C:\\"), drivetype::kFixed},
                                   {QStringLiteral("Y:"), QStringLiteral("Y:\\"), drivetype::kRemote, 0,
                                    QStringLiteral("\\\\server\\cells")},
                                   {QStringLiteral("Z:"), QStringLiteral("Z:\\"), drivetype::kRemote, 0,
                                    QStringLiteral("\\\\server\\cells\\one")}};
  EXPECT_EQ(AddressOfLocalFile(drives, QStringLiteral("\\\\Server\\Cells")),
            QStringLiteral("Workspace\\My Computer\\Y:"));
  EXPECT_EQ(AddressOfLocalFile(drives, QStringLiteral("\\\\server\\cells\\two\\x")),
            QStringLiteral("Workspace\\My Computer\\Y:\\two\\x"));
  EXPECT_EQ(AddressOfLocalFile(drives, QStringLiteral("\\\\server\\cells\\one\\x")),
            QStringLiteral("Workspace\\My Computer\\Z:\\x"));
  EXPECT_EQ(AddressOfLocalFile(drives, QStringLiteral("\\\\server\\cells2\\x")), QString());
  EXPECT_EQ(AddressOfLocalFile(drives, QStringLiteral("\\\\server")), QString());
}

TEST(LocalFileAddressTest, ABackslashInANameIsCarriedAsTheProviderCarriesIt) {
  EXPECT_EQ(AddressOfLocalFile(kLinux, QStringLiteral("/a\\b/c")),
            QStringLiteral("Workspace\\My Computer\\C:\\a") + QChar(0xF05C) + QStringLiteral("b\\c"));
  const QString carrier = QString(QChar(0xDCEF)) + QChar(0xDC81) + QChar(0xDC9C);
  EXPECT_EQ(AddressOfLocalFile(kLinux, QStringLiteral("/x") + QChar(0xF05C)),
            QStringLiteral("Workspace\\My Computer\\C:\\x") + carrier);
}

}  // namespace
}  // namespace trevane::test
