#include "base/Variant.h"
#include "dialogs/ShowProperties.h"
#include "tests/support/EngineWorld.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/AttributeLetters.h"
#include "views/addresses/NodeTags.h"

#include <gtest/gtest.h>

#include <map>

namespace trevane::test {
namespace {

constexpr qint32 kReadOnly = 0x1;
constexpr qint32 kHidden = 0x2;
constexpr qint32 kArchive = 0x20;

class ShowPropertiesTest : public testing::Test {
 protected:
  ShowPropertiesTest() {
    world_.volumes.Set({{QStringLiteral("C:"), QString(), drivetype::kFixed},
                        {QStringLiteral("D:"), QString(), drivetype::kCdrom}});
    world_.drives.RefreshDrives();
    world_.local.memory->AddFolder(QStringLiteral("C:\\Programs"));
    world_.local.memory->AddFile(QStringLiteral("C:\\main.pac"), QByteArray(2048, 'x'));
    world_.one.memory->AddFile(QStringLiteral("\\prog\\arm.pac"), "12345");
  }

  [[nodiscard]] PropertySources Sources() {
    return {.files = world_.files, .dateText = [](Date date) {
              return date.IsPresent() ? QStringLiteral("at ") + QString::number(date.msecs) : QString();
            }};
  }
  /// The values by their labels; fails the test when there is no table.
  [[nodiscard]] std::map<QString, QString> Rows(const QString& path, qint32 tag) {
    const auto table = MakePropertyTable(path, tag, Sources());
    EXPECT_TRUE(table.has_value());
    std::map<QString, QString> rows;
    for (qsizetype i = 0; table && i < table->labels.size(); ++i) {
      rows[table->labels[i]] = table->values.value(i);
    }
    EXPECT_TRUE(!table || table->labels.size() == table->values.size());
    return rows;
  }

  EngineWorld world_;
};

TEST_F(ShowPropertiesTest, TheWorkspaceAndAnEmptyPathShowNothing) {
  ShowProperties(QStringLiteral("Workspace"), TAG_WORKSPACE, Sources());
  ShowProperties(QStringLiteral(""), kArchive, Sources());
  EXPECT_TRUE(world_.prompts.ShownProperties().empty());
}

TEST_F(ShowPropertiesTest, AFileShowsItsRowsInOrder) {
  world_.local.memory->SetTimes(QStringLiteral("C:\\main.pac"), Date{1000}, Date{2000}, Date{3000});
  ShowProperties(QStringLiteral("Workspace\\My Computer\\C:\\main.pac"), kArchive, Sources());
  ASSERT_EQ(world_.prompts.ShownProperties().size(), 1U);
  const PropertyTable& table = world_.prompts.ShownProperties()[0];
  EXPECT_EQ(table.labels, QStringLiteral("Name,Size,Type,Modified,Accessed,Created,Attributes").split(u','));
  const auto file = world_.File(QStringLiteral("Workspace\\My Computer\\C:\\main.pac"));
  EXPECT_EQ(table.values, QStringList({QStringLiteral("main.pac"), QStringLiteral("2,048 bytes (2 KiB)"),
                                       file->FileType(), QStringLiteral("at 3000"), QStringLiteral("at 2000"),
                                       QStringLiteral("at 1000"), QStringLiteral("A")}));
  EXPECT_FALSE(file->FileType().isEmpty());
}

TEST_F(ShowPropertiesTest, AReadOnlyHiddenFileShowsTheAttributesRH) {
  world_.local.memory->SetAttributes(QStringLiteral("C:\\main.pac"), kReadOnly | kHidden);
  const QString letters =
      Rows(QStringLiteral("Workspace\\My Computer\\C:\\main.pac"), 0)[QStringLiteral("Attributes")];
  // Every file in memory has the archive bit, too.
  EXPECT_EQ(letters, QStringLiteral("RHA"));
  EXPECT_EQ(AttributeLetters(kReadOnly | kHidden), QStringLiteral("RH"));
}

TEST_F(ShowPropertiesTest, AFolderIsAFileFolderAndHasNoSize) {
  auto rows = Rows(QStringLiteral("Workspace\\My Computer\\C:\\Programs"), MakeFolderTag(0, false));
  EXPECT_EQ(rows[QStringLiteral("Name")], QStringLiteral("Programs"));
  EXPECT_EQ(rows[QStringLiteral("Type")], QStringLiteral("File Folder"));
  EXPECT_EQ(rows[QStringLiteral("Size")], QStringLiteral(""));
}

TEST_F(ShowPropertiesTest, ACdDriveShowsTheTypeCdrromInTreeAndList) {
  EXPECT_EQ(Rows(QStringLiteral("Workspace\\My Computer\\D:"), TAG_DRIVE | TAG_CDROM)[QStringLiteral("Type")],
            QStringLiteral("CDRROM"));
  EXPECT_EQ(Rows(QStringLiteral("Workspace\\My Computer\\D:"), kDriveItemTag)[QStringLiteral("Type")],
            QStringLiteral("CDRROM"));
  EXPECT_EQ(Rows(QStringLiteral("Workspace\\My Computer\\d:\\"), kDriveItemTag)[QStringLiteral("Type")],
            QStringLiteral("CDRROM"));
  EXPECT_EQ(Rows(QStringLiteral("Workspace\\My Computer\\C:"), kDriveItemTag)[QStringLiteral("Type")],
            QStringLiteral("Fixed"));
}

TEST_F(ShowPropertiesTest, EachKindOfDriveHasItsWordAndTheFirstBitCounts) {
  EXPECT_EQ(DriveTypeName(TAG_DRIVE | TAG_QUESTION), QStringLiteral("Unknown"));
  EXPECT_EQ(DriveTypeName(TAG_DRIVE | TAG_FDISK), QStringLiteral("Removable"));
  EXPECT_EQ(DriveTypeName(TAG_DRIVE | TAG_HDD), QStringLiteral("Fixed"));
  EXPECT_EQ(DriveTypeName(TAG_DRIVE | TAG_REMOTE), QStringLiteral("Remote"));
  EXPECT_EQ(DriveTypeName(TAG_DRIVE | TAG_CDROM), QStringLiteral("CDRROM"));
  EXPECT_EQ(DriveTypeName(TAG_DRIVE | TAG_RAMDISK), QStringLiteral("RAM Disk"));
  EXPECT_EQ(DriveTypeName(TAG_DRIVE | TAG_QUESTION | TAG_HDD), QStringLiteral("Unknown"));
  EXPECT_EQ(DriveTypeName(TAG_DRIVE | TAG_RAMDISK | TAG_REMOTE), QStringLiteral("Remote"));
  EXPECT_EQ(DriveTypeName(TAG_DRIVE), QStringLiteral(""));
}

TEST_F(ShowPropertiesTest, AControllerShowsItsRecord) {
  const auto record = world_.session.gIxoCtrls().Item(QStringLiteral("Ctrl1"));
  record->SetMachineName(QStringLiteral("192.168.0.5"));
  record->SetCtrlOption(QStringLiteral("Timeout=5"));
  ShowProperties(QStringLiteral("Workspace\\Ctrl1"), kControllerTag, Sources());
  ASSERT_EQ(world_.prompts.ShownProperties().size(), 1U);
  const PropertyTable& table = world_.prompts.ShownProperties()[0];
  EXPECT_EQ(table.labels,
            QStringLiteral("Controller Name,Provider Name,Machine Name,Option,Root").split(u','));
  EXPECT_EQ(table.values,
            QStringList({QStringLiteral("Ctrl1"), QStringLiteral("IxoProv.Memory"),
                         QStringLiteral("192.168.0.5"), QStringLiteral("Timeout=5"), QStringLiteral("/")}));
}

TEST_F(ShowPropertiesTest, AControllerIsShownByTheNameThatItReallyHas) {
  world_.session.gIxoCtrls().Item(QStringLiteral("Ctrl1"))->SetCtrlName(QStringLiteral("typed"));
  EXPECT_EQ(Rows(QStringLiteral("Workspace\\Ctrl1"), kControllerTag)[QStringLiteral("Controller Name")],
            QStringLiteral("Ctrl1"));
}

TEST_F(ShowPropertiesTest, TheTypeOfAFileIsTheOneThatIsGivenForItsName) {
  world_.local.memory->AddFile(QStringLiteral("C:\\main.pac"), "x");
  PropertySources sources = Sources();
  sources.typeText = [](const QString& name) { return QStringLiteral("Type of ") + name; };
  const auto table = MakePropertyTable(QStringLiteral("Workspace\\My Computer\\C:\\main.pac"), 0x20, sources);
  ASSERT_TRUE(table.has_value());
  EXPECT_EQ(table->values[2], QStringLiteral("Type of main.pac"));
}

TEST_F(ShowPropertiesTest, MyComputerShowsTheLocalFilesUnderTheEnginesName) {
  auto rows = Rows(QStringLiteral("Workspace\\My Computer"), kMyComputerTag);
  EXPECT_EQ(rows[QStringLiteral("Controller Name")], world_.session.gLocalCtrlName);
  EXPECT_EQ(rows[QStringLiteral("Provider Name")], QStringLiteral("IxoProv.LocalFile"));
}

TEST_F(ShowPropertiesTest, AnUnregisteredControllerLeavesTheRowsEmpty) {
  ShowProperties(QStringLiteral("Workspace\\Nobody"), kControllerTag, Sources());
  ASSERT_EQ(world_.prompts.ShownProperties().size(), 1U);
  EXPECT_EQ(world_.prompts.ShownProperties()[0].labels.size(), 5);
  EXPECT_EQ(world_.prompts.ShownProperties()[0].values,
            QStringList({QStringLiteral(""), QStringLiteral(""), QStringLiteral(""), QStringLiteral(""),
                         QStringLiteral("")}));
}

TEST_F(ShowPropertiesTest, AMissingFileLeavesTheRowsEmptyAndAsksNothing) {
  world_.local.memory->Vanish(QStringLiteral("C:\\main.pac"));
  ShowProperties(QStringLiteral("Workspace\\My Computer\\C:\\main.pac"), kArchive, Sources());
  ASSERT_EQ(world_.prompts.ShownProperties().size(), 1U);
  EXPECT_EQ(world_.prompts.ShownProperties()[0].labels.size(), 7);
  EXPECT_EQ(world_.prompts.ShownProperties()[0].values.join(QString()), QStringLiteral(""));
  EXPECT_TRUE(world_.prompts.Asked().empty());
}

TEST_F(ShowPropertiesTest, AFileOnAControllerIsReadThere) {
  auto rows = Rows(QStringLiteral("Workspace\\Ctrl1\\prog\\arm.pac"), MakeFileTag(kArchive, true));
  EXPECT_EQ(rows[QStringLiteral("Name")], QStringLiteral("arm.pac"));
  EXPECT_EQ(rows[QStringLiteral("Size")], QStringLiteral("5 bytes"));
}

TEST_F(ShowPropertiesTest, AnEmptyNameInTheTableOfDrivesIsNoKind) {
  EXPECT_EQ(Rows(QStringLiteral("Workspace\\My Computer\\X:"), kDriveItemTag)[QStringLiteral("Type")],
            QStringLiteral(""));
}

TEST(PropertySizeTextTest, BytesAreGroupedAndFromAKibibyteUpRoundedInBrackets) {
  const QLocale english(QLocale::English, QLocale::UnitedStates);
  const auto text = [&](qint64 size) { return PropertySizeText(size, english); };
  EXPECT_EQ(text(0), QStringLiteral("0 bytes"));
  EXPECT_EQ(text(1), QStringLiteral("1 byte"));
  EXPECT_EQ(text(1023), QStringLiteral("1,023 bytes"));
  EXPECT_EQ(text(1024), QStringLiteral("1,024 bytes (1 KiB)"));
  EXPECT_EQ(text(1536), QStringLiteral("1,536 bytes (1.5 KiB)"));
  EXPECT_EQ(text(1234567), QStringLiteral("1,234,567 bytes (1.18 MiB)"));
  EXPECT_EQ(text(10240), QStringLiteral("10,240 bytes (10 KiB)"));
  EXPECT_EQ(text(102400), QStringLiteral("102,400 bytes (100 KiB)"));
  EXPECT_EQ(text(Q_INT64_C(5000000000)), QStringLiteral("5,000,000,000 bytes (4.66 GiB)"));
  EXPECT_EQ(text(std::numeric_limits<qint64>::max()),
            QStringLiteral("9,223,372,036,854,775,807 bytes (8 EiB)"));
  EXPECT_EQ(text(-1), QStringLiteral(""));
}

TEST(PropertySizeTextTest, WhatWouldRoundUpToTheNextUnitIsShownInIt) {
  const QLocale english(QLocale::English, QLocale::UnitedStates);
  EXPECT_EQ(PropertySizeText(1024 * 1024 - 1, english), QStringLiteral("1,048,575 bytes (1 MiB)"));
  EXPECT_EQ(PropertySizeText(1024 * 1023, english), QStringLiteral("1,047,552 bytes (1023 KiB)"));
}

TEST(PropertySizeTextTest, GroupingAndPointFollowTheLocale) {
  EXPECT_EQ(PropertySizeText(1234567, QLocale(QLocale::German, QLocale::Germany)),
            QStringLiteral("1.234.567 bytes (1,18 MiB)"));
  EXPECT_EQ(PropertySizeText(1234567, QLocale::c()), QStringLiteral("1,234,567 bytes (1.18 MiB)"));
}

}  // namespace
}  // namespace trevane::test
