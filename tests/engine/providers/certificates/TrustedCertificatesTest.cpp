#include "base/RunTimeError.h"
#include "engine/providers/certificates/AcceptedCertificates.h"
#include "engine/providers/certificates/CertificateText.h"
#include "engine/providers/certificates/ShownCertificate.h"
#include "engine/providers/certificates/TrustPlace.h"
#include "engine/providers/certificates/TrustedCertificates.h"
#include "platform/OwnFile.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace trevane::test {
namespace {

using Verdict = TrustedCertificates::Verdict;

const QDate kDay(2024, 3, 9);

QByteArray Fingerprint(char byte) {
  return QByteArray(certificatetext::kFingerprintSize, byte);
}

ShownCertificate Shown(char byte, const QString& subject = QStringLiteral("CN=cell4, O=Plant 7")) {
  return {.fingerprint = Fingerprint(byte), .subject = subject};
}

QByteArray TextOf(char byte) {
  return certificatetext::FingerprintText(Fingerprint(byte)).toLatin1();
}

class TrustedCertificatesTest : public ::testing::Test {
 protected:
  [[nodiscard]] QString File() const { return folder_.filePath(QStringLiteral("own/Trevane.ini.trust")); }
  [[nodiscard]] QString OtherFile() const { return folder_.filePath(QStringLiteral("beside.trust")); }
  [[nodiscard]] TrustPlace Place() const {
    return {.file = File(), .moreFiles = {OtherFile()}, .accepted = accepted_};
  }
  [[nodiscard]] TrustedCertificates::Judgement JudgementOf(char byte, const char* host = "cell4",
                                                           quint16 port = 990) const {
    return TrustedCertificates(Place(), QString::fromLatin1(host), port).Judge(Fingerprint(byte));
  }
  [[nodiscard]] Verdict VerdictOf(char byte, const char* host = "cell4", quint16 port = 990) const {
    return JudgementOf(byte, host, port).verdict;
  }
  [[nodiscard]] std::optional<QString> Add(const ShownCertificate& shown, const char* host = "cell4",
                                           quint16 port = 990) const {
    return TrustedCertificates(Place(), QString::fromLatin1(host), port).Add(shown, kDay);
  }
  /// The text with which the files are refused.
  [[nodiscard]] QString Refusal() const {
    try {
      const TrustedCertificates trusted(Place(), QStringLiteral("cell4"), 990);
    } catch (const RunTimeError& failure) {
      EXPECT_EQ(failure.Number(), error::kAccessDenied);
      return failure.Description();
    }
    return {};
  }

  QTemporaryDir folder_;
  std::shared_ptr<AcceptedCertificates> accepted_ = std::make_shared<AcceptedCertificates>();
};

TEST(CertificateTextTest, ReadsBackWhatItWrites) {
  const QByteArray fingerprint = Fingerprint('\x3a');
  const QString text = certificatetext::FingerprintText(fingerprint);
  EXPECT_TRUE(text.startsWith(QStringLiteral("3A:3A:")));
  EXPECT_EQ(certificatetext::ReadFingerprint(text.toLatin1()), fingerprint);
  EXPECT_EQ(certificatetext::ReadFingerprint(text.toLower().toLatin1()), fingerprint);
  EXPECT_EQ(certificatetext::ReadFingerprint(fingerprint.toHex()), fingerprint);
  EXPECT_EQ(certificatetext::FingerprintLines(fingerprint).remove(u'\n').size(), text.size() - 1);
}

TEST(CertificateTextTest, ReadsNothingThatIsNoFingerprint) {
  const QByteArray text = TextOf('\x3a');
  const std::vector<QByteArray> wrong = {{},
                                         text.chopped(1),
                                         text + ":3A",
                                         text + 'A',
                                         QByteArray(text).replace(0, 2, "GG"),
                                         ':' + text,
                                         text.chopped(3),
                                         QByteArray(text).replace(2, 1, ""),
                                         QByteArray(text).replace(3, 2, "A"),
                                         "SHA256:x",
                                         QByteArray(64, 'x')};
  for (const QByteArray& each : wrong) {
    EXPECT_EQ(certificatetext::ReadFingerprint(each), QByteArray()) << each.toStdString();
  }
}

TEST_F(TrustedCertificatesTest, KnowsNothingWithoutFiles) {
  EXPECT_EQ(VerdictOf(1), Verdict::Unknown);
  EXPECT_TRUE(TrustedCertificates(Place(), QStringLiteral("cell4"), 990).Fingerprints().isEmpty());
  const TrustPlace none;
  EXPECT_EQ(TrustedCertificates(none, QStringLiteral("cell4"), 990).Judge(Fingerprint(1)).verdict,
            Verdict::Unknown);
}

TEST_F(TrustedCertificatesTest, StoresOneReadableLineForThisUserAlone) {
  EXPECT_EQ(Add(Shown(1)), std::nullopt);
  EXPECT_EQ(VerdictOf(1), Verdict::Known);
  EXPECT_EQ(ContentOf(File()),
            "# Certificates of controllers that are trusted. Remove a line to forget the certificate.\n"
            "cell4:990 " +
                TextOf(1) + " 2024-03-09 CN=cell4, O=Plant 7\n");
  EXPECT_EQ(QDir(folder_.filePath(QStringLiteral("own"))).entryList(QDir::Files | QDir::Hidden),
            QStringList{QStringLiteral("Trevane.ini.trust")});
  if (QDir::separator() == u'/') {
    EXPECT_EQ(QFile::permissions(File()) & (QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                            QFile::ReadOther | QFile::WriteOther | QFile::ExeOther),
              QFile::Permissions());
  }
}

TEST_F(TrustedCertificatesTest, TrustsOneForItsHostAndPortAlone) {
  EXPECT_EQ(Add(Shown(1), "Cell4", 990), std::nullopt);
  EXPECT_EQ(VerdictOf(1, "CELL4", 990), Verdict::Known);
  EXPECT_EQ(VerdictOf(1, "cell4", 21), Verdict::Unknown);
  EXPECT_EQ(VerdictOf(1, "cell5", 990), Verdict::Unknown);
  EXPECT_EQ(VerdictOf(1, "cell4.plant", 990), Verdict::Unknown);
  EXPECT_EQ(Add(Shown(2), "fe80::1", 21), std::nullopt);
  EXPECT_EQ(VerdictOf(2, "fe80::1", 21), Verdict::Known);
  EXPECT_TRUE(ContentOf(File()).contains("\n[fe80::1]:21 "));
}

TEST_F(TrustedCertificatesTest, NoticesAChangedCertificate) {
  WriteFile(File(), "\n# mine\ncell4:990 " + TextOf(1) + " 2024-01-01 CN=cell4\n");
  const TrustedCertificates::Judgement judgement = JudgementOf(2);
  EXPECT_EQ(judgement.verdict, Verdict::Changed);
  EXPECT_EQ(judgement.oldFingerprint, Fingerprint(1));
  EXPECT_EQ(judgement.line.file, File());
  EXPECT_EQ(judgement.line.number, 3);
}

TEST_F(TrustedCertificatesTest, ReadsWhatAnEditorMakesOfTheFile) {
  const QByteArray line = "CELL4:990\t " + TextOf(1).toLower() + "   2024-01-01";
  for (const QByteArray& content : {"\xEF\xBB\xBF" + line, "# a\r\n" + line + "\r\n", "# a\r" + line + '\r',
                                    "  " + line, QByteArray("cell4:990 ") + Fingerprint(1).toHex()}) {
    WriteFile(File(), content);
    EXPECT_EQ(VerdictOf(1), Verdict::Known) << content.toStdString();
    EXPECT_EQ(VerdictOf(2), Verdict::Changed) << content.toStdString();
  }
}

TEST_F(TrustedCertificatesTest, ReadsTheOtherFileAndNeverWritesIt) {
  const QByteArray line = "cell4:990 " + TextOf(1) + '\n';
  WriteFile(OtherFile(), line);
  EXPECT_EQ(VerdictOf(1), Verdict::Known);
  EXPECT_EQ(JudgementOf(2).line.file, OtherFile());
  EXPECT_EQ(Add(Shown(2), "cell5"), std::nullopt);
  EXPECT_EQ(ContentOf(OtherFile()), line);
}

TEST_F(TrustedCertificatesTest, KeepsWhatStandsThere) {
  const QByteArray odd = QByteArray("# mine\n\nnonsense\n\xff\xfe z\ncell5:21 ??\ncell6:990 ") + TextOf(3);
  WriteFile(File(), odd);
  EXPECT_EQ(Add(Shown(1)), std::nullopt);
  EXPECT_EQ(ContentOf(File()), odd + "\ncell4:990 " + TextOf(1) + " 2024-03-09 CN=cell4, O=Plant 7\n");
  EXPECT_EQ(VerdictOf(1), Verdict::Known);
  EXPECT_EQ(VerdictOf(3, "cell6"), Verdict::Known);
}

TEST_F(TrustedCertificatesTest, FailsWhereALineOfTheHostIsBroken) {
  for (const QByteArray& line : {QByteArray("cell4:990"), QByteArray("cell4:990 3A:FF 2024-01-01"),
                                 QByteArray("Cell4:990 " + TextOf(1).chopped(1))}) {
    WriteFile(File(), "# mine\n" + line + '\n');
    EXPECT_EQ(Refusal(),
              QStringLiteral("The file of trusted certificates %1 cannot be read: Line 2 is one of cell4, "
                             "but has no fingerprint. Mend or remove the line")
                  .arg(File()));
  }
  WriteFile(File(), "cell4 " + TextOf(1) + '\n');
  EXPECT_EQ(Refusal(),
            QStringLiteral("The file of trusted certificates %1 cannot be read: Line 1 is one of cell4, "
                           "but has no port. Mend or remove the line")
                .arg(File()));
  // It stops nobody else.
  EXPECT_EQ(VerdictOf(1, "cell5"), Verdict::Unknown);
}

TEST_F(TrustedCertificatesTest, FailsWhereAFileThatIsThereCannotBeRead) {
  WriteFile(File(), "cell4:990 " + TextOf(1) + '\n');
  // Not even the superuser reads a folder.
  ASSERT_TRUE(QDir().mkpath(OtherFile()));
  const QString begin =
      QStringLiteral("The file of trusted certificates %1 cannot be read: ").arg(OtherFile());
  EXPECT_TRUE(Refusal().startsWith(begin)) << Refusal().toStdString();
  EXPECT_GT(Refusal().size(), begin.size());
  ASSERT_TRUE(QDir().rmdir(OtherFile()));
  const QString wide = QStringLiteral("cell4:990 ") + QString::fromLatin1(TextOf(1));
  WriteFile(OtherFile(), QByteArray(reinterpret_cast<const char*>(wide.utf16()), wide.size() * 2));
  EXPECT_EQ(Refusal(), begin + QStringLiteral("It is not a text in UTF-8"));
}

TEST_F(TrustedCertificatesTest, AForgottenOneIsAskedForAgain) {
  EXPECT_EQ(Add(Shown(1)), std::nullopt);
  EXPECT_EQ(VerdictOf(2), Verdict::Changed);
  WriteFile(File(), ContentOf(File()).replace("cell4", "#cell4"));
  EXPECT_EQ(VerdictOf(2), Verdict::Unknown);
  EXPECT_EQ(Add(Shown(2)), std::nullopt);
  EXPECT_EQ(VerdictOf(2), Verdict::Known);
}

TEST_F(TrustedCertificatesTest, ASubjectStaysInItsLine) {
  EXPECT_EQ(Add(Shown(1, QStringLiteral("CN=x\ncell5:990 %1 y").arg(QString::fromLatin1(TextOf(2))))),
            std::nullopt);
  EXPECT_EQ(VerdictOf(2, "cell5"), Verdict::Unknown);
  EXPECT_EQ(ContentOf(File()).count('\n'), 2);
}

TEST_F(TrustedCertificatesTest, TrustsOneForThisRunWhereItCannotBeStored) {
  WriteFile(folder_.filePath(QStringLiteral("own")), "a file");
  const std::optional<QString> reason = Add(Shown(1));
  ASSERT_TRUE(reason.has_value());
  EXPECT_EQ(*reason, QStringLiteral("The folder of the file cannot be made"));
  EXPECT_EQ(VerdictOf(1), Verdict::Known);
  EXPECT_EQ(VerdictOf(1, "cell4", 21), Verdict::Unknown);
  EXPECT_EQ(VerdictOf(2), Verdict::Changed);
  EXPECT_EQ(JudgementOf(2).line.file, QString());
  accepted_ = std::make_shared<AcceptedCertificates>();
  EXPECT_EQ(VerdictOf(1), Verdict::Unknown);
}

TEST_F(TrustedCertificatesTest, TellsThatAReadOnlyFolderTakesNone) {
#ifdef Q_OS_WIN
  GTEST_SKIP() << "this system closes no folder by its permissions";
#endif
  const QString folder = folder_.filePath(QStringLiteral("own"));
  ASSERT_TRUE(QDir().mkpath(folder));
  ASSERT_TRUE(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
  if (QFile(folder + QStringLiteral("/probe")).open(QIODevice::WriteOnly) &&
      !QFileInfo(folder).isReadable()) {
    GTEST_SKIP() << "this system closes no folder";
  }
  const std::optional<QString> reason = Add(Shown(1));
  EXPECT_EQ(reason, QStringLiteral("The file cannot be written"));
  EXPECT_EQ(VerdictOf(1), Verdict::Known);
  ASSERT_TRUE(QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

TEST_F(TrustedCertificatesTest, AddsNoneBesideOneThatAnotherProgramHasTrusted) {
  TrustedCertificates mine(Place(), QStringLiteral("cell4"), 990);
  EXPECT_EQ(Add(Shown(2)), std::nullopt);
  EXPECT_EQ(mine.Add(Shown(1), kDay), std::nullopt);
  EXPECT_EQ(mine.Judge(Fingerprint(1)).verdict, Verdict::Changed);
  EXPECT_EQ(VerdictOf(1), Verdict::Changed);
  EXPECT_EQ(mine.Add(Shown(2), kDay), std::nullopt);
  EXPECT_EQ(ContentOf(File()).count("cell4:990"), 1);
}

TEST_F(TrustedCertificatesTest, LosesNoLineOfProgramsThatAddAtOnce) {
  constexpr int kThreads = 6;
  constexpr int kLines = 10;
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([this, i] {
      for (int port = 1; port <= kLines; ++port) {
        EXPECT_EQ(Add(Shown(1), "cell4", static_cast<quint16>(1000 * (i + 1) + port)), std::nullopt);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(ContentOf(File()).count("\ncell4:"), kThreads * kLines);
}

}  // namespace
}  // namespace trevane::test
