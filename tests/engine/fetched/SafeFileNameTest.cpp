#include "base/NameCodec.h"
#include "engine/fetched/SafeFileName.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

std::string Safe(const QString& name) {
  return SafeFileName(name).toStdString();
}

TEST(SafeFileNameTest, OrdinaryNamesStay) {
  for (const char* name : {"main.pac", ".hidden", "a b.txt", "no extension", "Grüße 日本.txt", "a..b", "-rf",
                           "console.txt", "COM10", "lpt", "a'b&c$d;e.sh"}) {
    EXPECT_EQ(Safe(QString::fromUtf8(name)), name);
  }
}

TEST(SafeFileNameTest, CharactersThatNotEverySystemHasAreReplaced) {
  EXPECT_EQ(Safe(QStringLiteral("a:b<c>d\"e/f\\g|h?i*j.txt")), "a_b_c_d_e_f_g_h_i_j.txt");
  EXPECT_EQ(Safe(QStringLiteral("a\nb\tc\x7f.txt")), "a_b_c_.txt");
  EXPECT_EQ(Safe(QString(QChar(u'\0')) + u'x'), "_x");
}

TEST(SafeFileNameTest, NeitherTheFolderNorTheOneAboveIsAName) {
  EXPECT_EQ(Safe(QStringLiteral("..")), "__");
  EXPECT_EQ(Safe(QStringLiteral(".")), "_");
  EXPECT_EQ(Safe(QString()), "_");
  EXPECT_EQ(Safe(QStringLiteral("../../etc/passwd")), ".._.._etc_passwd");
  EXPECT_EQ(Safe(QStringLiteral("name. .")), "name___");
}

TEST(SafeFileNameTest, DeviceNamesGetAnotherBeginning) {
  EXPECT_EQ(Safe(QStringLiteral("CON")), "_CON");
  EXPECT_EQ(Safe(QStringLiteral("con.txt")), "_con.txt");
  EXPECT_EQ(Safe(QStringLiteral("Nul.tar.gz")), "_Nul.tar.gz");
  EXPECT_EQ(Safe(QStringLiteral("COM1")), "_COM1");
  EXPECT_EQ(Safe(QStringLiteral("lpt9.log")), "_lpt9.log");
  EXPECT_EQ(Safe(QStringLiteral("aux .c")), "_aux .c");
}

TEST(SafeFileNameTest, BytesThatAreNoTextAreReplaced) {
  EXPECT_EQ(Safe(DecodeBytes("a\xff\xfe.txt")), "a__.txt");
  EXPECT_EQ(Safe(QString(QChar(0xD800))), "_");
  // A whole pair is a character.
  EXPECT_EQ(Safe(QStringLiteral("\U0001F600.txt")), "\U0001F600.txt");
}

TEST(SafeFileNameTest, WhatTurnsTheWritingIsReplaced) {
  EXPECT_EQ(Safe(QStringLiteral("photo\u202Egpj.exe")), "photo_gpj.exe");
}

TEST(SafeFileNameTest, LongNamesKeepTheirExtension) {
  const QString name = QString(251, u'n') + QStringLiteral(".pac");
  const QString safe = SafeFileName(name);
  EXPECT_LE(safe.size(), 120);
  EXPECT_TRUE(safe.endsWith(QStringLiteral("n.pac")));
  const QString wide = QString(80, QChar(0x65E5)) + QStringLiteral(".txt");
  EXPECT_LE(SafeFileName(wide).toUtf8().size(), 230);
  EXPECT_TRUE(SafeFileName(wide).endsWith(QStringLiteral(".txt")));
  EXPECT_LE(SafeFileName(u'.' + QString(300, u'x')).size(), 120);
  const QString pairs = QStringLiteral("\U0001F600").repeated(100);
  EXPECT_EQ(SafeFileName(pairs), QStringLiteral("\U0001F600").repeated(57));
}

TEST(SafeFileNameTest, ASafeNameStays) {
  for (const QString& name :
       {QStringLiteral(".."), QStringLiteral("CON"), QStringLiteral("a:b"), QString(300, u'x')}) {
    EXPECT_EQ(SafeFileName(SafeFileName(name)), SafeFileName(name));
  }
}

}  // namespace
}  // namespace trevane
