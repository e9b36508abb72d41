#include "engine/files/ProviderError.h"
#include "engine/files/WholeFile.h"
#include "tests/engine/providers/ProviderBed.h"

namespace trevane::test {
namespace {

class ConformanceErrors : public ConformanceTest {};
INSTANTIATE_TEST_SUITE_P(All, ConformanceErrors, ::testing::ValuesIn(AllProviders()), NameOfCase);

TEST_P(ConformanceErrors, MissingItemsAreNotFoundByEveryOperation) {
  const QString missing = At(QStringLiteral("missing"));
  const QString other = At(QStringLiteral("other"));
  EXPECT_EQ(ErrorOf([&] { (void)Files().List(missing); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { (void)Files().Stat(missing); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { (void)ReadFile(Files(), missing); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { Files().Copy(missing, other, true); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { Files().Rename(missing, other, true); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { Files().Remove(missing); }), error::kNotFound);
  if (TellsItemsApart()) {
    EXPECT_EQ(ErrorOf([&] { (void)Files().Identity(missing); }), error::kNotFound);
  }
  EXPECT_TRUE(NamesIn(Bed().Base()).isEmpty());
}

TEST_P(ConformanceErrors, NothingIsMadeInAFolderThatIsMissing) {
  Files().CreateFile(At(QStringLiteral("f")));
  const QString inside = At(QStringLiteral("missing\\new"));
  EXPECT_EQ(ErrorOf([&] { WriteFile(Files(), inside, "x"); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { Files().CreateFile(inside); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { Files().CreateFolder(inside); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { Files().Copy(At(QStringLiteral("f")), inside, true); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { Files().Rename(At(QStringLiteral("f")), inside, true); }),
            Bed().Renames() ? error::kNotFound : error::kNotSupported);
  EXPECT_EQ(NamesIn(Bed().Base()), QStringList{QStringLiteral("f")});
}

TEST_P(ConformanceErrors, APathThroughAFileIsNotFound) {
  WriteFile(Files(), At(QStringLiteral("f")), "x");
  EXPECT_EQ(ErrorOf([&] { (void)Files().Stat(At(QStringLiteral("f\\below"))); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { (void)Files().List(At(QStringLiteral("f\\below"))); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { (void)ReadFile(Files(), At(QStringLiteral("f\\below"))); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { Files().CreateFile(At(QStringLiteral("f\\below"))); }), error::kNotFound);
}

TEST_P(ConformanceErrors, ListingAFileFailsAsNoFolder) {
  WriteFile(Files(), At(QStringLiteral("f")), "x");
  EXPECT_EQ(ErrorOf([&] { (void)Files().List(At(QStringLiteral("f"))); }), providererror::kNotAFolder);
}

TEST_P(ConformanceErrors, AFolderHasNoContent) {
  Files().CreateFolder(At(QStringLiteral("d")));
  EXPECT_EQ(ErrorOf([&] { (void)ReadFile(Files(), At(QStringLiteral("d"))); }), error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { WriteFile(Files(), At(QStringLiteral("d")), "x"); }), error::kAccessDenied);
  EXPECT_EQ(TreeOf(Bed().Base()), QStringList{QStringLiteral("d\\")});
}

TEST_P(ConformanceErrors, ADeviceHasNoContentAndIsNotCopied) {
  const QString device = At(QStringLiteral("dev"));
  if (!Bed().MakeDevice(device)) {
    GTEST_SKIP() << "no devices here";
  }
  EXPECT_NE(Files().Stat(device).attributes & attribute::kDevice, 0);
  EXPECT_EQ(Files().Stat(device).attributes & attribute::kArchive, 0);
  EXPECT_EQ(ErrorOf([&] { (void)ReadFile(Files(), device); }), error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { WriteFile(Files(), device, "x"); }), error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { Files().Copy(device, At(QStringLiteral("copy")), false); }), error::kNotSupported);
  EXPECT_EQ(TreeOf(Bed().Base()), QStringList{QStringLiteral("dev!")});
  Files().Remove(device);
  EXPECT_FALSE(IsThere(device));
}

TEST_P(ConformanceErrors, AFolderWithADeviceInItIsNotCopiedInPart) {
  Files().CreateFolder(At(QStringLiteral("d")));
  WriteFile(Files(), At(QStringLiteral("d\\f")), "x");
  if (!Bed().MakeDevice(At(QStringLiteral("d\\dev")))) {
    GTEST_SKIP() << "no devices here";
  }
  EXPECT_EQ(ErrorOf([&] { Files().Copy(At(QStringLiteral("d")), At(QStringLiteral("e")), false); }),
            error::kNotSupported);
  EXPECT_EQ(NamesIn(Bed().Base()), QStringList{QStringLiteral("d")});
}

TEST_P(ConformanceErrors, CreatingAnExistingItemFails) {
  WriteFile(Files(), At(QStringLiteral("f")), "old");
  Files().CreateFolder(At(QStringLiteral("d")));
  for (const QString& name : {QStringLiteral("f"), QStringLiteral("d")}) {
    EXPECT_EQ(ErrorOf([&] { Files().CreateFile(At(name)); }), error::kExists);
    EXPECT_EQ(ErrorOf([&] { Files().CreateFolder(At(name)); }), error::kExists);
  }
  EXPECT_EQ(TreeOf(Bed().Base()), (QStringList{QStringLiteral("d\\"), QStringLiteral("f=old")}));
}

TEST_P(ConformanceErrors, DotNamesAreInvalid) {
  Files().CreateFolder(At(QStringLiteral("d")));
  for (const QString& name : {QStringLiteral("."), QStringLiteral(".."), QStringLiteral("d\\..\\x"),
                              QStringLiteral("d\\.\\x"), QStringLiteral("d/../x"), QString(QChar(0))}) {
    EXPECT_EQ(ErrorOf([&] { (void)Files().List(At(name)); }), error::kInvalidName);
    EXPECT_EQ(ErrorOf([&] { (void)Files().Stat(At(name)); }), error::kInvalidName);
    EXPECT_EQ(ErrorOf([&] { (void)ReadFile(Files(), At(name)); }), error::kInvalidName);
    EXPECT_EQ(ErrorOf([&] { WriteFile(Files(), At(name), "x"); }), error::kInvalidName);
    EXPECT_EQ(ErrorOf([&] { Files().CreateFile(At(name)); }), error::kInvalidName);
    EXPECT_EQ(ErrorOf([&] { Files().CreateFolder(At(name)); }), error::kInvalidName);
    EXPECT_EQ(ErrorOf([&] { Files().Remove(At(name)); }), error::kInvalidName);
    EXPECT_EQ(ErrorOf([&] { Files().Copy(At(QStringLiteral("d")), At(name), true); }), error::kInvalidName);
    EXPECT_EQ(ErrorOf([&] { Files().Rename(At(QStringLiteral("d")), At(name), true); }), error::kInvalidName);
  }
  EXPECT_EQ(TreeOf(Bed().Base()), QStringList{QStringLiteral("d\\")});
}

TEST_P(ConformanceErrors, ErrorTextsNameTheReasonAndThePath) {
  const QString missing = At(QStringLiteral("no such thing"));
  EXPECT_EQ(ErrorTextOf([&] { (void)Files().Stat(missing); }),
            QStringLiteral("The file or folder was not found: ") + missing);
}

TEST_P(ConformanceErrors, TopsAndDrivesAreNeverRemovedMovedOrReplaced) {
  WriteFile(Files(), At(QStringLiteral("f")), "x");
  QStringList tops{QString()};
  if (Files().Capabilities().topHoldsDrives) {
    tops.append({QStringLiteral("C:"), QStringLiteral("d:"), QStringLiteral("C:\\")});
  }
  for (const QString& top : tops) {
    EXPECT_EQ(ErrorOf([&] { Files().Remove(top); }), error::kAccessDenied);
    EXPECT_EQ(ErrorOf([&] { Files().Rename(top, At(QStringLiteral("x")), true); }), error::kAccessDenied);
    EXPECT_NE(ErrorOf([&] { Files().Copy(At(QStringLiteral("f")), top, true); }), 0);
    EXPECT_NE(ErrorOf([&] { Files().Rename(At(QStringLiteral("f")), top, true); }), 0);
    EXPECT_NE(ErrorOf([&] { WriteFile(Files(), top, "x"); }), 0);
    EXPECT_EQ(ErrorOf([&] { Files().CreateFolder(top); }), error::kExists);
  }
  EXPECT_EQ(TreeOf(Bed().Base()), QStringList{QStringLiteral("f=x")});
}

TEST_P(ConformanceErrors, TheTopListsItsDrivesAndOtherLettersAreNotFound) {
  if (!Files().Capabilities().topHoldsDrives) {
    GTEST_SKIP() << "no drives here";
  }
  EXPECT_EQ(NamesIn({}), (QStringList{QStringLiteral("C:"), QStringLiteral("D:")}));
  for (const FileEntry& drive : Files().List({})) {
    EXPECT_EQ(drive.attributes, attribute::kFolder);
    EXPECT_EQ(Files().Stat(drive.name).attributes, attribute::kFolder);
    EXPECT_EQ(Files().Stat(drive.name).name, drive.name);
  }
  EXPECT_EQ(ErrorOf([&] { (void)Files().List(QStringLiteral("Z:")); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { (void)Files().Stat(QStringLiteral("Z:\\x")); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { Files().CreateFolder(QStringLiteral("Z:")); }), error::kNotFound);
}

TEST_P(ConformanceErrors, UnknownCommandsAreNotSupported) {
  Files().CreateFile(At(QStringLiteral("f")));
  if (Files().Capabilities().execute) {
    EXPECT_EQ(ErrorOf([&] { (void)Files().Execute(At(QStringLiteral("f")), {}, Missing()); }), 0);
  } else {
    EXPECT_EQ(ErrorOf([&] { (void)Files().Execute(At(QStringLiteral("f")), {}, Missing()); }),
              error::kNotSupported);
  }
}

}  // namespace
}  // namespace trevane::test
