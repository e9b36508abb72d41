#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace trevane {
namespace {

class DesktopEntryTest : public testing::Test {
 protected:
  void SetUp() override {
    QProcess install;
    install.start(QStringLiteral(TREVANE_CMAKE),
                  {QStringLiteral("--install"), QStringLiteral(TREVANE_BUILD), QStringLiteral("--prefix"),
                   folder_.filePath(QStringLiteral("usr"))});
    ASSERT_TRUE(install.waitForFinished(60000));
    ASSERT_EQ(install.exitCode(), 0) << install.readAllStandardError().toStdString();
  }

  [[nodiscard]] QString Installed(const QString& path) const {
    return folder_.filePath(QStringLiteral("usr/") + path);
  }

  QTemporaryDir folder_;
};

TEST_F(DesktopEntryTest, TheMenuFindsTheProgramAndItsIcon) {
  QFile file(Installed(QStringLiteral("share/applications/trevane.desktop")));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  QMap<QString, QString> entry;
  QStringList groups;
  for (const QByteArray& raw : file.readAll().split('\n')) {
    const QString line = QString::fromUtf8(raw);
    if (line.startsWith(u'[')) {
      groups += line;
    } else if (const qsizetype at = line.indexOf(u'='); at > 0) {
      entry.insert(line.first(at), line.sliced(at + 1));
    }
  }
  EXPECT_EQ(groups, QStringList(QStringLiteral("[Desktop Entry]")));
  EXPECT_EQ(entry.value(QStringLiteral("Type")), u"Application");
  EXPECT_EQ(entry.value(QStringLiteral("Name")), u"Trevane");
  const QStringList command = entry.value(QStringLiteral("Exec")).split(u' ');
  // A workspace file that is dropped onto the entry is opened.
  EXPECT_EQ(command.value(1), u"%f");
  const QFileInfo program(Installed(QStringLiteral("bin/") + command.first()));
  EXPECT_TRUE(program.isExecutable()) << program.filePath().toStdString();
  EXPECT_TRUE(entry.value(QStringLiteral("Categories")).endsWith(u';'));
  for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
    const QImage icon(Installed(QStringLiteral("share/icons/hicolor/%1x%1/apps/%2.png")
                                    .arg(size)
                                    .arg(entry.value(QStringLiteral("Icon")))));
    EXPECT_EQ(icon.size(), QSize(size, size));
  }
  EXPECT_TRUE(QFileInfo::exists(Installed(QStringLiteral("share/icons/hicolor/scalable/apps/trevane.svg"))));
}

}  // namespace
}  // namespace trevane
