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

using namespace Qt::StringLiterals;

class DesktopEntryTest : public testing::Test {
 protected:
  void SetUp() override {
    QProcess install;
    install.start(QStringLiteral(TREVANE_CMAKE),
                  {u"--install"_s, QStringLiteral(TREVANE_BUILD), u"--prefix"_s, folder_.filePath(u"usr"_s)});
    ASSERT_TRUE(install.waitForFinished(60000));
    ASSERT_EQ(install.exitCode(), 0) << install.readAllStandardError().toStdString();
  }

  [[nodiscard]] QString Installed(const QString& path) const { return folder_.filePath(u"usr/"_s + path); }

  QTemporaryDir folder_;
};

TEST_F(DesktopEntryTest, TheMenuFindsTheProgramAndItsIcon) {
  QFile file(Installed(u"share/applications/trevane.desktop"_s));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  QMap<QString, QString> entry;
  QStringList groups;
  for (const QByteArray& raw : file.readAll().split('\n')) {
    const QString line = QString::fromUtf8(raw);
    if (line.startsWith(u'['))
      groups += line;
    else if (const qsizetype at = line.indexOf(u'='); at > 0)
      entry.insert(line.first(at), line.sliced(at + 1));
  }
  EXPECT_EQ(groups, QStringList(u"[Desktop Entry]"_s));
  EXPECT_EQ(entry.value(u"Type"_s), u"Application");
  EXPECT_EQ(entry.value(u"Name"_s), u"Trevane");
  const QStringList command = entry.value(u"Exec"_s).split(u' ');
  // A workspace file that is dropped onto the entry is opened.
  EXPECT_EQ(command.value(1), u"%f");
  const QFileInfo program(Installed(u"bin/"_s + command.first()));
  EXPECT_TRUE(program.isExecutable()) << program.filePath().toStdString();
  EXPECT_TRUE(entry.value(u"Categories"_s).endsWith(u';'));
  for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
    const QImage icon(
        Installed(u"share/icons/hicolor/%1x%1/apps/%2.png"_s.arg(size).arg(entry.value(u"Icon"_s))));
    EXPECT_EQ(icon.size(), QSize(size, size));
  }
  EXPECT_TRUE(QFileInfo::exists(Installed(u"share/icons/hicolor/scalable/apps/trevane.svg"_s)));
}

}  // namespace
}  // namespace trevane
