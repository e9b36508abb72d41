#include "fileops/ProgressLabel.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

constexpr qint64 kMiB = 1024 * 1024;

ItemProgress At(const QString& name, qint64 bytes, qint64 size) {
  return {.name = name, .bytes = bytes, .size = size};
}

/// The last label of a copy that is told every 100 ms.
QString AfterSeconds(ProgressLabel& label, const QString& name, qint64 size, qint64 bytesASecond,
                     qint64 seconds) {
  QString last;
  for (qint64 now = 0; now <= seconds * 1000; now += 100) {
    if (const auto next = label.Next(At(name, bytesASecond * now / 1000, size), now)) {
      last = *next;
    }
  }
  return last;
}

TEST(ProgressLabelTest, TellsBytesSpeedAndTimeLeftOfAFile) {
  ProgressLabel label;
  EXPECT_EQ(AfterSeconds(label, QStringLiteral("gripper.pac"), 95 * kMiB, 9'600'000, 4),
            QStringLiteral("gripper.pac: 37 of 95 MiB, 9.6 MB/s, 6 s left"));
}

TEST(ProgressLabelTest, TellsTheFilesOfAFolder) {
  ProgressLabel label;
  const auto text = label.Next({.name = QStringLiteral("gripper.pac"),
                                .folder = QStringLiteral("programs"),
                                .size = 12,
                                .files = 5016,
                                .filesKnown = 10000},
                               0);
  EXPECT_EQ(text, QStringLiteral("programs\\gripper.pac: 5,016 of 10,000 files"));
}

TEST(ProgressLabelTest, AFolderOfUnknownSizeHasNoTotal) {
  const auto text = [](qint64 files, qint64 known) {
    return ProgressLabel().Next(
        {.name = QStringLiteral("a"), .folder = QStringLiteral("d"), .files = files, .filesKnown = known}, 0);
  };
  EXPECT_EQ(text(-1, -1), QStringLiteral("d\\a"));
  EXPECT_EQ(text(1, -1), QStringLiteral("d\\a: 1 file"));
  EXPECT_EQ(text(7, 5), QStringLiteral("d\\a: 7 files"));
  EXPECT_EQ(text(0, 1), QStringLiteral("d\\a: 0 of 1 file"));
}

TEST(ProgressLabelTest, ALargeFileWithinAFolderTellsItsBytes) {
  ProgressLabel label;
  ItemProgress item{.name = QStringLiteral("big"),
                    .folder = QStringLiteral("d"),
                    .size = 100 * kMiB,
                    .files = 3,
                    .filesKnown = 9};
  EXPECT_EQ(label.Next(item, 0), QStringLiteral("d\\big: 3 of 9 files"));
  item.bytes = 50 * kMiB;
  EXPECT_EQ(label.Next(item, 600), QStringLiteral("d\\big: 50 of 100 MiB"));
  item.name = QStringLiteral("small");
  item.bytes = 0;
  item.size = 10;
  EXPECT_EQ(label.Next(item, 800), QStringLiteral("d\\small: 3 of 9 files"));
}

TEST(ProgressLabelTest, FilesOfKnownSizesHaveASpeedAndATimeLeft) {
  ProgressLabel label;
  QString last;
  for (int file = 0; file <= 131; ++file) {
    last = label.Now({.name = QStringLiteral("f%1.pac").arg(file, 4, 10, QLatin1Char('0')),
                      .files = file,
                      .filesKnown = 2000,
                      .allBytes = qint64{file} * 9600,
                      .allSize = qint64{2000} * 9600},
                     file * qint64{100});
    if (file == 0) {
      EXPECT_EQ(last, QStringLiteral("f0000.pac: 0 of 2,000 files"));
    } else if (file == 15) {
      EXPECT_EQ(last, QStringLiteral("f0015.pac: 15 of 2,000 files, 96 kB/s"));
    }
  }
  EXPECT_EQ(last, QStringLiteral("f0131.pac: 131 of 2,000 files, 96 kB/s, 3 min 6 s left"));
}

TEST(ProgressLabelTest, TheLabelThatIsAskedForIsShownForAWhile) {
  ProgressLabel label;
  const ItemProgress item{.name = QStringLiteral("a"), .files = 1, .filesKnown = 2};
  EXPECT_EQ(label.Now(item, 0), QStringLiteral("a: 1 of 2 files"));
  EXPECT_EQ(label.Now(item, 10), QStringLiteral("a: 1 of 2 files"));
  EXPECT_FALSE(label.Next(item, 109));
  EXPECT_TRUE(label.Next(item, 110));
}

TEST(ProgressLabelTest, ASmallFileLeavesTheLabel) {
  ProgressLabel label;
  for (qint64 now = 0; now < 5000; now += 10) {
    EXPECT_FALSE(label.Next(At(QString::number(now / 50), 100 + now % 50, 1000), now));
  }
}

TEST(ProgressLabelTest, AnItemWithinTheEntryIsNamed) {
  ProgressLabel label(QStringLiteral("programs"));
  EXPECT_FALSE(label.Next({.name = QStringLiteral("programs")}, 0));
  EXPECT_EQ(label.Next({.name = QStringLiteral("gripper.pac")}, 100), QStringLiteral("gripper.pac"));
}

TEST(ProgressLabelTest, ChangesAtMostTenTimesASecond) {
  ProgressLabel label;
  int labels = 0;
  for (qint64 now = 0; now < 10000; ++now) {
    labels += label.Next(At(QStringLiteral("f"), now * 1000, 100 * kMiB), now) ? 1 : 0;
  }
  EXPECT_LE(labels, 100);
  EXPECT_GE(labels, 90);
}

TEST(ProgressLabelTest, AnUnknownSizeHasNoTimeLeft) {
  ProgressLabel unknown;
  EXPECT_EQ(AfterSeconds(unknown, QStringLiteral("f"), -1, 2'000'000, 6),
            QStringLiteral("f: 11 MiB, 2.0 MB/s"));
  ProgressLabel grown;
  EXPECT_EQ(AfterSeconds(grown, QStringLiteral("f"), kMiB, 2'000'000, 6),
            QStringLiteral("f: 11 MiB, 2.0 MB/s"));
}

TEST(ProgressLabelTest, TheSpeedIsThatOfTheLastSeconds) {
  ProgressLabel label;
  static_cast<void>(AfterSeconds(label, QStringLiteral("f"), 4000 * kMiB, 100'000'000, 10));
  QString last;
  for (qint64 now = 10100; now <= 20000; now += 100) {
    if (const auto next =
            label.Next(At(QStringLiteral("f"), 1'000'000'000 + (now - 10000) * 1000, 4000 * kMiB), now)) {
      last = *next;
    }
  }
  EXPECT_TRUE(last.contains(QStringLiteral(", 1.0 MB/s, "))) << last.toStdString();
}

TEST(ProgressLabelTest, AFileThatStandsStillHasNoSpeed) {
  ProgressLabel label;
  QString last;
  for (qint64 now = 0; now <= 20000; now += 100) {
    if (const auto next = label.Next(At(QStringLiteral("f"), 10 * kMiB, 95 * kMiB), now)) {
      last = *next;
    }
  }
  EXPECT_EQ(last, QStringLiteral("f: 10 of 95 MiB"));
}

TEST(ProgressLabelTest, AFileThatStartsAnewForgetsItsSpeed) {
  ProgressLabel label;
  static_cast<void>(AfterSeconds(label, QStringLiteral("f"), 95 * kMiB, 9'600'000, 4));
  EXPECT_FALSE(label.Next(At(QStringLiteral("f"), kMiB, 95 * kMiB), 4200));
  EXPECT_EQ(label.Next(At(QStringLiteral("f"), 2 * kMiB, 95 * kMiB), 4800),
            QStringLiteral("f: 2.0 of 95 MiB"));
}

TEST(ProgressLabelTest, SizesHaveTheUnitOfTheWhole) {
  EXPECT_EQ(BytesText(0, 0), QStringLiteral("0 of 0 bytes"));
  EXPECT_EQ(BytesText(5, 999), QStringLiteral("5 of 999 bytes"));
  EXPECT_EQ(BytesText(512, 1000), QStringLiteral("0.5 of 1.0 KiB"));
  EXPECT_EQ(BytesText(34 * kMiB, 95 * kMiB), QStringLiteral("34 of 95 MiB"));
  EXPECT_EQ(BytesText(kMiB / 2, 9 * kMiB), QStringLiteral("0.5 of 9.0 MiB"));
  EXPECT_EQ(BytesText(512 * kMiB, 1023 * kMiB), QStringLiteral("0.5 of 1.0 GiB"));
  EXPECT_EQ(BytesText(0, qint64{1} << 62), QStringLiteral("0.0 of 4,194,304 TiB"));
}

TEST(ProgressLabelTest, SpeedsHaveDecimalUnits) {
  EXPECT_EQ(SpeedText(12), QStringLiteral("12 B/s"));
  EXPECT_EQ(SpeedText(999.6), QStringLiteral("1.0 kB/s"));
  EXPECT_EQ(SpeedText(9'640'000), QStringLiteral("9.6 MB/s"));
  EXPECT_EQ(SpeedText(9'960'000), QStringLiteral("10 MB/s"));
  EXPECT_EQ(SpeedText(2.5e9), QStringLiteral("2.5 GB/s"));
}

TEST(ProgressLabelTest, TheTimeLeftHasSecondsMinutesAndHours) {
  EXPECT_EQ(TimeLeftText(0.2), QStringLiteral("1 s left"));
  EXPECT_EQ(TimeLeftText(59.9), QStringLiteral("59 s left"));
  EXPECT_EQ(TimeLeftText(125), QStringLiteral("2 min 5 s left"));
  EXPECT_EQ(TimeLeftText(725), QStringLiteral("12 min left"));
  EXPECT_EQ(TimeLeftText(3 * 3600 + 20 * 60 + 5), QStringLiteral("3 h 20 min left"));
  EXPECT_EQ(TimeLeftText(1e9), QString());
}

TEST(ProgressLabelTest, ControlCharactersStayOnOneLine) {
  EXPECT_EQ(LabelPath(QStringLiteral("a\nb"), QStringLiteral("c\x01")), QStringLiteral("a\u240Ab\\c\u2401"));
}

TEST(ProgressLabelTest, ANameFromRightToLeftIsIsolated) {
  EXPECT_EQ(LabelPath({}, QStringLiteral("\u05D0\u05D1.pac")),
            QChar(0x2068) + QStringLiteral("\u05D0\u05D1.pac") + QChar(0x2069));
  EXPECT_EQ(LabelPath({}, QStringLiteral("a\u202Ecap.exe")), QStringLiteral("acap.exe"));
}

TEST(ProgressLabelTest, ALongPathIsCutInItsMiddle) {
  const QString path = LabelPath(QString(200, u'd'), QStringLiteral("gripper.pac"));
  EXPECT_EQ(path.size(), ProgressLabel::kLongestPath);
  EXPECT_TRUE(path.endsWith(QStringLiteral("\\gripper.pac")));
  QString pairs;
  for (int i = 0; i < 60; ++i) {
    pairs += QStringLiteral("\U0001F600");
  }
  for (const QString& name : {pairs, u'x' + pairs}) {
    EXPECT_TRUE(LabelPath({}, name).isValidUtf16());
  }
}

}  // namespace
}  // namespace trevane
