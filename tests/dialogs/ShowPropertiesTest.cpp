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

using namespace Qt::StringLiterals;

constexpr qint32 kReadOnly = 0x1;
constexpr qint32 kHidden = 0x2;
constexpr qint32 kArchive = 0x20;

class ShowPropertiesTest : public testing::Test {
 protected:
  ShowPropertiesTest() {
    world_.volumes.Set({{u"C:"_s, QString(), drivetype::kFixed}, {u"D:"_s, QString(), drivetype::kCdrom}});
    world_.drives.RefreshDrives();
    world_.local.memory->AddFolder(u"C:\\Programs"_s);
    world_.local.memory->AddFile(u"C:\\main.pac"_s, QByteArray(2048, 'x'));
    world_.one.memory->AddFile(u"\\prog\\arm.pac"_s, "12345");
  }

  [[nodiscard]] PropertySources Sources() {
    return {.files = world_.files, .dateText = [](Date date) {
              return date.IsPresent() ? u"at "_s + QString::number(date.msecs) : QString();
            }};
  }
  /// The values by their labels; fails the test when there is no table.
  [[nodiscard]] std::map<QString, QString> Rows(const QString& path, qint32 tag) {
    const auto table = MakePropertyTable(path, tag, Sources());
    EXPECT_TRUE(table.has_value());
    std::map<QString, QString> rows;
    for (qsizetype i = 0; table && i < table->labels.size(); ++i)
      rows[table->labels[i]] = table->values.value(i);
    EXPECT_TRUE(!table || table->labels.size() == table->values.size());
    return rows;
  }

  EngineWorld world_;
};

TEST_F(ShowPropertiesTest, TheWorkspaceAndAnEmptyPathShowNothing) {
  ShowProperties(u"Workspace"_s, TAG_WORKSPACE, Sources());
  ShowProperties(u""_s, kArchive, Sources());
  EXPECT_TRUE(world_.prompts.ShownProperties().empty());
}

TEST_F(ShowPropertiesTest, AFileShowsNameSizeTypeDatesAndAttributesInThisOrder) {
  world_.local.memory->SetTimes(u"C:\\main.pac"_s, Date{1000}, Date{2000}, Date{3000});
  ShowProperties(u"Workspace\\My Computer\\C:\\main.pac"_s, kArchive, Sources());
  ASSERT_EQ(world_.prompts.ShownProperties().size(), 1U);
  const PropertyTable& table = world_.prompts.ShownProperties()[0];
  EXPECT_EQ(table.labels, u"Name,Size,Type,Modified,Accessed,Created,Attributes"_s.split(u','));
  const auto file = world_.File(u"Workspace\\My Computer\\C:\\main.pac"_s);
  EXPECT_EQ(table.values, QStringList({u"main.pac"_s, u"2,048 bytes (2 KiB)"_s, file->FileType(),
                                       u"at 3000"_s, u"at 2000"_s, u"at 1000"_s, u"A"_s}));
  EXPECT_FALSE(file->FileType().isEmpty());
}

TEST_F(ShowPropertiesTest, AReadOnlyHiddenFileShowsTheAttributesRH) {
  world_.local.memory->SetAttributes(u"C:\\main.pac"_s, kReadOnly | kHidden);
  const QString letters = Rows(u"Workspace\\My Computer\\C:\\main.pac"_s, 0)[u"Attributes"_s];
  // Every file in memory has the archive bit, too.
  EXPECT_EQ(letters, u"RHA"_s);
  EXPECT_EQ(AttributeLetters(kReadOnly | kHidden), u"RH"_s);
}

TEST_F(ShowPropertiesTest, AFolderIsAFileFolderAndHasNoSize) {
  auto rows = Rows(u"Workspace\\My Computer\\C:\\Programs"_s, MakeFolderTag(0, false));
  EXPECT_EQ(rows[u"Name"_s], u"Programs"_s);
  EXPECT_EQ(rows[u"Type"_s], u"File Folder"_s);
  EXPECT_EQ(rows[u"Size"_s], u""_s);
}

TEST_F(ShowPropertiesTest, ACdDriveShowsTheTypeCdrromAsItsNodeAndAsAnItemOfTheList) {
  EXPECT_EQ(Rows(u"Workspace\\My Computer\\D:"_s, TAG_DRIVE | TAG_CDROM)[u"Type"_s], u"CDRROM"_s);
  EXPECT_EQ(Rows(u"Workspace\\My Computer\\D:"_s, kDriveItemTag)[u"Type"_s], u"CDRROM"_s);
  EXPECT_EQ(Rows(u"Workspace\\My Computer\\d:\\"_s, kDriveItemTag)[u"Type"_s], u"CDRROM"_s);
  EXPECT_EQ(Rows(u"Workspace\\My Computer\\C:"_s, kDriveItemTag)[u"Type"_s], u"Fixed"_s);
}

TEST_F(ShowPropertiesTest, EachKindOfDriveHasItsWordAndTheFirstBitCounts) {
  EXPECT_EQ(DriveTypeName(TAG_DRIVE | TAG_QUESTION), u"Unknown"_s);
  EXPECT_EQ(DriveTypeName(TAG_DRIVE | TAG_FDISK), u"Removable"_s);
  EXPECT_EQ(DriveTypeName(TAG_DRIVE | TAG_HDD), u"Fixed"_s);
  EXPECT_EQ(DriveTypeName(TAG_DRIVE | TAG_REMOTE), u"Remote"_s);
  EXPECT_EQ(DriveTypeName(TAG_DRIVE | TAG_CDROM), u"CDRROM"_s);
  EXPECT_EQ(DriveTypeName(TAG_DRIVE | TAG_RAMDISK), u"RAM Disk"_s);
  EXPECT_EQ(DriveTypeName(TAG_DRIVE | TAG_QUESTION | TAG_HDD), u"Unknown"_s);
  EXPECT_EQ(DriveTypeName(TAG_DRIVE | TAG_RAMDISK | TAG_REMOTE), u"Remote"_s);
  EXPECT_EQ(DriveTypeName(TAG_DRIVE), u""_s);
}

TEST_F(ShowPropertiesTest, AControllerShowsItsRecord) {
  const auto record = world_.session.gIxoCtrls().Item(u"Ctrl1"_s);
  record->SetMachineName(u"192.168.0.5"_s);
  record->SetCtrlOption(u"Timeout=5"_s);
  ShowProperties(u"Workspace\\Ctrl1"_s, kControllerTag, Sources());
  ASSERT_EQ(world_.prompts.ShownProperties().size(), 1U);
  const PropertyTable& table = world_.prompts.ShownProperties()[0];
  EXPECT_EQ(table.labels, u"Controller Name,Provider Name,Machine Name,Option,Root"_s.split(u','));
  EXPECT_EQ(table.values,
            QStringList({u"Ctrl1"_s, u"IxoProv.Memory"_s, u"192.168.0.5"_s, u"Timeout=5"_s, u"/"_s}));
}

TEST_F(ShowPropertiesTest, AControllerIsShownByTheNameThatItReallyHas) {
  world_.session.gIxoCtrls().Item(u"Ctrl1"_s)->SetCtrlName(u"typed"_s);
  EXPECT_EQ(Rows(u"Workspace\\Ctrl1"_s, kControllerTag)[u"Controller Name"_s], u"Ctrl1"_s);
}

TEST_F(ShowPropertiesTest, TheTypeOfAFileIsTheOneThatIsGivenForItsName) {
  world_.local.memory->AddFile(u"C:\\main.pac"_s, "x");
  PropertySources sources = Sources();
  sources.typeText = [](const QString& name) { return u"Type of "_s + name; };
  const auto table = MakePropertyTable(u"Workspace\\My Computer\\C:\\main.pac"_s, 0x20, sources);
  ASSERT_TRUE(table.has_value());
  EXPECT_EQ(table->values[2], u"Type of main.pac"_s);
}

TEST_F(ShowPropertiesTest, MyComputerShowsTheRecordOfTheLocalFilesUnderTheEnginesName) {
  auto rows = Rows(u"Workspace\\My Computer"_s, kMyComputerTag);
  EXPECT_EQ(rows[u"Controller Name"_s], world_.session.gLocalCtrlName);
  EXPECT_EQ(rows[u"Provider Name"_s], u"IxoProv.LocalFile"_s);
}

TEST_F(ShowPropertiesTest, AControllerThatIsNotInTheRegistryLeavesTheRowsEmpty) {
  ShowProperties(u"Workspace\\Nobody"_s, kControllerTag, Sources());
  ASSERT_EQ(world_.prompts.ShownProperties().size(), 1U);
  EXPECT_EQ(world_.prompts.ShownProperties()[0].labels.size(), 5);
  EXPECT_EQ(world_.prompts.ShownProperties()[0].values, QStringList({u""_s, u""_s, u""_s, u""_s, u""_s}));
}

TEST_F(ShowPropertiesTest, AFileThatIsNotThereAnyMoreLeavesTheRowsEmptyAndAsksNothing) {
  world_.local.memory->Vanish(u"C:\\main.pac"_s);
  ShowProperties(u"Workspace\\My Computer\\C:\\main.pac"_s, kArchive, Sources());
  ASSERT_EQ(world_.prompts.ShownProperties().size(), 1U);
  EXPECT_EQ(world_.prompts.ShownProperties()[0].labels.size(), 7);
  EXPECT_EQ(world_.prompts.ShownProperties()[0].values.join(QString()), u""_s);
  EXPECT_TRUE(world_.prompts.Asked().empty());
}

TEST_F(ShowPropertiesTest, AFileOnAControllerIsReadThere) {
  auto rows = Rows(u"Workspace\\Ctrl1\\prog\\arm.pac"_s, MakeFileTag(kArchive, true));
  EXPECT_EQ(rows[u"Name"_s], u"arm.pac"_s);
  EXPECT_EQ(rows[u"Size"_s], u"5 bytes"_s);
}

TEST_F(ShowPropertiesTest, AnEmptyNameInTheTableOfDrivesIsNoKind) {
  EXPECT_EQ(Rows(u"Workspace\\My Computer\\X:"_s, kDriveItemTag)[u"Type"_s], u""_s);
}

TEST(PropertySizeTextTest, BytesAreGroupedAndFromAKibibyteUpRoundedInBrackets) {
  const QLocale english(QLocale::English, QLocale::UnitedStates);
  const auto text = [&](qint64 size) { return PropertySizeText(size, english); };
  EXPECT_EQ(text(0), u"0 bytes"_s);
  EXPECT_EQ(text(1), u"1 byte"_s);
  EXPECT_EQ(text(1023), u"1,023 bytes"_s);
  EXPECT_EQ(text(1024), u"1,024 bytes (1 KiB)"_s);
  EXPECT_EQ(text(1536), u"1,536 bytes (1.5 KiB)"_s);
  EXPECT_EQ(text(1234567), u"1,234,567 bytes (1.18 MiB)"_s);
  EXPECT_EQ(text(10240), u"10,240 bytes (10 KiB)"_s);
  EXPECT_EQ(text(102400), u"102,400 bytes (100 KiB)"_s);
  EXPECT_EQ(text(Q_INT64_C(5000000000)), u"5,000,000,000 bytes (4.66 GiB)"_s);
  EXPECT_EQ(text(std::numeric_limits<qint64>::max()), u"9,223,372,036,854,775,807 bytes (8 EiB)"_s);
  EXPECT_EQ(text(-1), u""_s);
}

TEST(PropertySizeTextTest, WhatWouldRoundUpToTheNextUnitIsShownInIt) {
  const QLocale english(QLocale::English, QLocale::UnitedStates);
  EXPECT_EQ(PropertySizeText(1024 * 1024 - 1, english), u"1,048,575 bytes (1 MiB)"_s);
  EXPECT_EQ(PropertySizeText(1024 * 1023, english), u"1,047,552 bytes (1023 KiB)"_s);
}

TEST(PropertySizeTextTest, GroupingAndPointFollowTheLocaleAndOneThatGroupsNothingIsEnglish) {
  EXPECT_EQ(PropertySizeText(1234567, QLocale(QLocale::German, QLocale::Germany)),
            u"1.234.567 bytes (1,18 MiB)"_s);
  EXPECT_EQ(PropertySizeText(1234567, QLocale::c()), u"1,234,567 bytes (1.18 MiB)"_s);
}

}  // namespace
}  // namespace trevane::test
