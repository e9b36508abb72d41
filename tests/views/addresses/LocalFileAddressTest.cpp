#include "views/addresses/LocalFileAddress.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

const std::vector<Volume> kLinux{{u"C:"_s, u"/"_s, drivetype::kFixed},
                                 {u"D:"_s, u"/media/usb/"_s, drivetype::kRemovable},
                                 {u"E:"_s, u"/media/"_s, drivetype::kFixed}};
const std::vector<Volume> kWindows{{u"C:"_s, u"C:\\"_s, drivetype::kFixed},
                                   {u"D:"_s, u"D:\\"_s, drivetype::kFixed}};

TEST(LocalFileAddressTest, TheLongestFolderThatHoldsTheFileDecides) {
  EXPECT_EQ(AddressOfLocalFile(kLinux, u"/home/a b.fmg"_s), u"Workspace\\My Computer\\C:\\home\\a b.fmg"_s);
  EXPECT_EQ(AddressOfLocalFile(kLinux, u"/media/usb/x/a.fmg"_s), u"Workspace\\My Computer\\D:\\x\\a.fmg"_s);
  EXPECT_EQ(AddressOfLocalFile(kLinux, u"/media/usb2/a.fmg"_s), u"Workspace\\My Computer\\E:\\usb2\\a.fmg"_s);
  EXPECT_EQ(AddressOfLocalFile(kLinux, u"/MEDIA/a.fmg"_s), u"Workspace\\My Computer\\C:\\MEDIA\\a.fmg"_s);
}

TEST(LocalFileAddressTest, ADriveItselfAndNoDriveAtAll) {
  EXPECT_EQ(AddressOfLocalFile(kLinux, u"/"_s), u"Workspace\\My Computer\\C:"_s);
  EXPECT_EQ(AddressOfLocalFile(kLinux, u"/media/usb"_s), u"Workspace\\My Computer\\D:"_s);
  EXPECT_EQ(AddressOfLocalFile(kWindows, u"d:"_s), u"Workspace\\My Computer\\D:"_s);
  EXPECT_EQ(AddressOfLocalFile(kLinux, QString()), QString()) << "no path is not the root";
  EXPECT_EQ(AddressOfLocalFile({}, u"/a.fmg"_s), QString());
  EXPECT_EQ(AddressOfLocalFile(kWindows, u"X:/a.fmg"_s), QString());
  EXPECT_EQ(AddressOfLocalFile({{u"C:"_s, QString(), drivetype::kFixed}}, u"/a.fmg"_s), QString());
}

TEST(LocalFileAddressTest, ADrivePathTakesBothSeparatorsAndAnyCase) {
  EXPECT_EQ(AddressOfLocalFile(kWindows, u"d:/data/a.fmg"_s), u"Workspace\\My Computer\\D:\\data\\a.fmg"_s);
  EXPECT_EQ(AddressOfLocalFile(kWindows, u"C:\\a.fmg"_s), u"Workspace\\My Computer\\C:\\a.fmg"_s);
}

TEST(LocalFileAddressTest, AShareIsTheNetworkDriveThatStandsForIt) {
  const std::vector<Volume> drives{{u"C:"_s, u"C:\\"_s, drivetype::kFixed},
                                   {u"Y:"_s, u"Y:\\"_s, drivetype::kRemote, 0, u"\\\\server\\cells"_s},
                                   {u"Z:"_s, u"Z:\\"_s, drivetype::kRemote, 0, u"\\\\server\\cells\\one"_s}};
  EXPECT_EQ(AddressOfLocalFile(drives, u"\\\\Server\\Cells"_s), u"Workspace\\My Computer\\Y:"_s);
  EXPECT_EQ(AddressOfLocalFile(drives, u"\\\\server\\cells\\two\\x"_s),
            u"Workspace\\My Computer\\Y:\\two\\x"_s);
  EXPECT_EQ(AddressOfLocalFile(drives, u"\\\\server\\cells\\one\\x"_s), u"Workspace\\My Computer\\Z:\\x"_s);
  EXPECT_EQ(AddressOfLocalFile(drives, u"\\\\server\\cells2\\x"_s), QString());
  EXPECT_EQ(AddressOfLocalFile(drives, u"\\\\server"_s), QString());
}

TEST(LocalFileAddressTest, ABackslashInANameIsCarriedAsTheProviderCarriesIt) {
  EXPECT_EQ(AddressOfLocalFile(kLinux, u"/a\\b/c"_s),
            u"Workspace\\My Computer\\C:\\a"_s + QChar(0xF05C) + u"b\\c"_s);
  const QString carrier = QString(QChar(0xDCEF)) + QChar(0xDC81) + QChar(0xDC9C);
  EXPECT_EQ(AddressOfLocalFile(kLinux, u"/x"_s + QChar(0xF05C)),
            u"Workspace\\My Computer\\C:\\x"_s + carrier);
}

}  // namespace
}  // namespace trevane::test
