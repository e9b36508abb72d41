#include "engine/files/NameLadder.h"
#include "engine/files/ProviderError.h"
#include "engine/files/TemporaryName.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

const QString kTarget = QStringLiteral("Gripper.pac");

TEST(TemporaryName, ShortNamesFitOldDevices) {
  const QRegularExpression pattern(QStringLiteral("^T[A-Z0-9]{7}\\.TMP$"));
  for (int i = 0; i < 200; ++i) {
    const QString name = MakeTemporaryName(TemporaryForm::Short, kTarget);
    EXPECT_TRUE(pattern.match(name).hasMatch()) << name.toStdString();
  }
}

TEST(TemporaryName, TheTargetsOwnExtensionIsKept) {
  EXPECT_TRUE(MakeTemporaryName(TemporaryForm::OwnExtension, kTarget).endsWith(QStringLiteral(".pac")));
  EXPECT_EQ(MakeTemporaryName(TemporaryForm::OwnExtension, QStringLiteral("README")).size(), 8);
}

TEST(TemporaryName, EveryFormIsRecognized) {
  for (const TemporaryForm form : {TemporaryForm::Long, TemporaryForm::Short, TemporaryForm::OwnExtension}) {
    for (int i = 0; i < 200; ++i) {
      const QString name = MakeTemporaryName(form, kTarget);
      EXPECT_TRUE(IsTemporaryName(name)) << name.toStdString();
      EXPECT_EQ(IsOwnTemporaryName(name), form != TemporaryForm::OwnExtension) << name.toStdString();
      const QString aside = MakeAsideName(form, kTarget);
      EXPECT_TRUE(IsTemporaryName(aside)) << aside.toStdString();
      EXPECT_FALSE(IsOwnTemporaryName(aside)) << aside.toStdString();
    }
  }
}

TEST(TemporaryName, ADeviceMayChangeTheCaseOfShortNames) {
  const QString name = MakeTemporaryName(TemporaryForm::Short, kTarget).toLower();
  EXPECT_TRUE(IsTemporaryName(name)) << name.toStdString();
  EXPECT_TRUE(IsOwnTemporaryName(name)) << name.toStdString();
}

TEST(TemporaryName, NamesOfUsersAreNotTaken) {
  int taken = 0;
  for (int i = 0; i < 1000; ++i) {
    const QString name = QStringLiteral("TEACH%1.TMP").arg(i, 3, 10, QLatin1Char('0'));
    taken += IsTemporaryName(name) ? 1 : 0;
  }
  EXPECT_EQ(taken, 0);
  for (const QString& name : {QStringLiteral("TRAINING.PAC"), QStringLiteral("T"), QString(),
                              QStringLiteral("TMP"), QStringLiteral("TOOLDATA.TMP")}) {
    EXPECT_FALSE(IsTemporaryName(name)) << name.toStdString();
  }
}

TEST(NameLadder, OnlyWordsOfNamesAndRightsLeaveARung) {
  const auto after = [](NameRung rung, qint32 number) {
    return nameladder::After(rung, RunTimeError(number, QString()));
  };
  for (const qint32 number :
       {error::kAccessDenied, error::kInvalidName, error::kInvalidParameter, providererror::kNameTooLong}) {
    EXPECT_EQ(after(NameRung::Long, number), NameRung::Short);
    EXPECT_EQ(after(NameRung::Short, number), NameRung::OwnExtension);
    EXPECT_EQ(after(NameRung::OwnExtension, number), NameRung::InPlace);
    EXPECT_EQ(after(NameRung::InPlace, number), NameRung::InPlace);
  }
  EXPECT_EQ(after(NameRung::Long, error::kNotSupported), NameRung::Short);
  for (const qint32 number : {error::kDiskFull, error::kTimeOut, error::kWin32Error + 64, error::kExists,
                              error::kCancelled, error::kNotFound}) {
    EXPECT_EQ(after(NameRung::Long, number), NameRung::Long);
  }
}

}  // namespace
}  // namespace trevane::test
