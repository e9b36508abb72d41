// Listings that no good server sends, up to the entries that the file system gives.
#include "base/RunTimeError.h"
#include "engine/files/FileSystem.h"
#include "engine/files/ProviderError.h"
#include "engine/model/ItemName.h"
#include "engine/providers/ftp/FtpErrors.h"
#include "tests/engine/providers/ftp/FakeFtpServer.h"

#include <QDate>
#include <QDateTime>
#include <QTime>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace trevane::test {
namespace {

const QString kOdd = QStringLiteral("odd");

/// A server without facts, whose folder "odd" is listed with lines of the test's own.
class FtpOddListings : public ::testing::Test {
 protected:
  FtpOddListings() {
    server_.vices.features = {"SIZE"};
    server_.vices.missing = {"MLSD", "MLST", "MDTM"};
    server_.vices.takesOptionForName = true;
    server_.AddFolder("/odd");
  }
  [[nodiscard]] Listing List(const QByteArrayList& lines, const QString& encoding = {}) {
    server_.vices.garbage = lines;
    files_ = server_.Open({.host = QStringLiteral("fake"), .encoding = encoding});
    return files_->List(kOdd);
  }
  /// The failure of a listing; 0 and no text where it is read.
  [[nodiscard]] RunTimeError FailureOf(const QByteArrayList& lines) {
    try {
      static_cast<void>(List(lines));
    } catch (const RunTimeError& failure) {
      return failure;
    }
    return RunTimeError(0, QString());
  }
  static qsizetype RefusedIn(const Listing& listing) {
    return std::count_if(listing.begin(), listing.end(),
                         [](const FileEntry& entry) { return !IsValidItemName(entry.name); });
  }

  FakeFtpServer server_;
  std::shared_ptr<FileSystem> files_;
};

TEST_F(FtpOddListings, SizeMayComeFirst) {
  const Listing listing =
      List({"  size          date       time       name", "--------       ------     ------    --------",
            "     512    JAN-31-2024  12:05:06   SYSTEM            <DIR>",
            "   18211    FEB-29-2024  23:59:58   MAIN PROG.MOD"});
  ASSERT_EQ(listing.size(), 2U);
  EXPECT_EQ(listing[0].name, QStringLiteral("SYSTEM"));
  EXPECT_TRUE(listing[0].IsFolder());
  EXPECT_EQ(listing[1].name, QStringLiteral("MAIN PROG.MOD"));
  EXPECT_EQ(listing[1].size, 18211);
  // No zone could be learnt.
  EXPECT_EQ(listing[1].modified.msecs, QDateTime(QDate(2024, 2, 29), QTime(23, 59, 58)).toMSecsSinceEpoch());
}

TEST_F(FtpOddListings, WhatIsNoListingIsNoEmptyFolder) {
  const RunTimeError failure = FailureOf({"<html><body>Log on</body></html>"});
  EXPECT_EQ(failure.Number(), ftp::kUnreadable);
  EXPECT_TRUE(failure.Description().contains(QStringLiteral("<html><body>Log on</body></html>")))
      << failure.Description().toStdString();
  EXPECT_EQ(FailureOf({"ls: cannot open directory '.': Permission denied"}).Number(), ftp::kUnreadable);
  EXPECT_EQ(FailureOf({"/bin/ls: odd: No such file or directory"}).Number(), ftp::kUnreadable);
  EXPECT_EQ(FailureOf({"MAIN.PRG", "SUB.PRG"}).Number(), ftp::kUnreadable);
}

TEST_F(FtpOddListings, ATextForEmptyIsAnEmptyFolderThatExists) {
  EXPECT_TRUE(List({"total 0", "File not found"}).empty());
  // Its words alone prove nothing.
  EXPECT_GE(server_.Count("CWD"), 1);
}

TEST_F(FtpOddListings, NamesThatLeadElsewhereAreRefused) {
  const Listing listing = List({"-rw-r--r--   1 0        0              10 Jan 31  2024 /etc/passwd",
                                "-rw-r--r--   1 0        0              11 Jan 31  2024 ../x",
                                "drwxr-xr-x   1 0        0               0 Jan 31  2024 ..",
                                "-rw-r--r--   1 0        0              12 Jan 31  2024 O0003"});
  ASSERT_EQ(listing.size(), 3U);
  EXPECT_EQ(RefusedIn(listing), 2);
  EXPECT_EQ(listing[0].name, QStringLiteral("O0003"));
}

TEST_F(FtpOddListings, AnErrorAmongItemsIsTold) {
  const Listing listing = List({"ls: cannot access locked: Permission denied", "total 4",
                                "-rw-r--r-- 1 root root 10 Jan 31  2024 a.txt"});
  ASSERT_EQ(listing.size(), 2U);
  EXPECT_EQ(RefusedIn(listing), 1);
  EXPECT_EQ(listing[0].name, QStringLiteral("a.txt"));
}

TEST_F(FtpOddListings, NamesAreInTheEncodingOfTheSettings) {
  const Listing listing = List({"insgesamt 12",
                                "-rw-r--r--   1 root     root           77 M\xE4r 31  2021 Pr\xFC"
                                "f.txt"},
                               QStringLiteral("ISO-8859-1"));
  ASSERT_EQ(listing.size(), 1U);
  EXPECT_EQ(listing[0].name, QStringLiteral("Pr\u00FCf.txt"));
  EXPECT_EQ(listing[0].size, 77);
}

TEST_F(FtpOddListings, ASizeThatIsNotToldIsUnknown) {
  const Listing listing = List({"-rw-rw-rw-   1 noone    nogroup      Jan 31  2024 STATUS.VA",
                                "-rw-rw-rw-   1 noone    nogroup 4.7G Jan 31  2024 TRACE.BIN"});
  ASSERT_EQ(listing.size(), 2U);
  EXPECT_EQ(listing[0].name, QStringLiteral("STATUS.VA"));
  EXPECT_EQ(listing[0].size, -1);
  EXPECT_EQ(listing[1].size, -1);
}

}  // namespace
}  // namespace trevane::test
