#include "app/settings/Settings.h"
#include "engine/controllers/EngineSession.h"
#include "platform/OwnFile.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#ifdef Q_OS_LINUX
#include "tests/support/FlushFault.h"
#include "tests/support/SmallDisk.h"

#include <cerrno>

#include <sys/stat.h>
#endif

namespace trevane {
namespace {

class FakeWindow final : public SettingsWindow {
 public:
  [[nodiscard]] qint32 WidthTwips() const override { return state == WindowState::Normal ? width : 99999; }
  [[nodiscard]] qint32 HeightTwips() const override { return state == WindowState::Normal ? height : 99999; }
  void SetWidthTwips(qint32 newWidth) override {
    width = newWidth;
    ++widthsSet;
  }
  void SetHeightTwips(qint32 newHeight) override { height = newHeight; }
  [[nodiscard]] WindowState State() const override { return state; }
  void SetState(WindowState newState) override { state = newState; }
  void HideWindow() override { hidden = true; }

  qint32 width = 9000;
  qint32 height = 6000;
  WindowState state = WindowState::Normal;
  bool hidden = false;
  int widthsSet = 0;
};

class SettingsTest : public testing::Test {
 protected:
  [[nodiscard]] QString File() const { return folder_.filePath(QStringLiteral("Trevane.ini")); }
  [[nodiscard]] QByteArray Content() const { return test::ContentOf(File()); }
  void Put(const QByteArray& content) const { test::WriteFile(File(), content); }
  void Remember(int count) {
    for (int i = 1; i <= count; ++i) {
      auto record = std::make_shared<clsIxoCtrl>();
      record->SetCtrlName(QStringLiteral("C%1").arg(i));
      session_.gSavedCtrls.Add(ControllerKey(record->CtrlName()), record);
    }
  }

  QTemporaryDir folder_;
  QTemporaryDir current_;
  FakeWindow window_;
  EngineSession session_;
};

TEST_F(SettingsTest, KeysAreWrittenInTheirOrder) {
  Remember(1);
  ASSERT_TRUE(SaveSettings(File(), window_, session_, current_.path()));
  EXPECT_EQ(Content().toStdString(),
            "[Form]\r\nWindowState=0\r\nWidth=9000\r\nHeight=6000\r\n"
            "[Controller1]\r\nControllerName=C1\r\nProviderName=\r\nMachineName=\r\nOption=\r\nRoot=\r\n");
  EXPECT_TRUE(window_.hidden);
  EXPECT_TRUE(QDir(current_.path()).isEmpty());
}

TEST_F(SettingsTest, SizeIsReadAfterTheWindowIsRestored) {
  window_.state = WindowState::Maximised;
  ASSERT_TRUE(SaveSettings(File(), window_, session_, current_.path()));
  EXPECT_EQ(Content().toStdString(), "[Form]\r\nWindowState=2\r\nWidth=9000\r\nHeight=6000\r\n");
}

TEST_F(SettingsTest, ARememberedControllerBeyondTheEighthIsDropped) {
  Remember(9);
  ASSERT_TRUE(SaveSettings(File(), window_, session_, current_.path()));
  EXPECT_TRUE(Content().contains("[Controller8]"));
  EXPECT_FALSE(Content().contains("[Controller9]"));
  EXPECT_FALSE(Content().contains("C9"));
}

TEST_F(SettingsTest, UnknownSectionsAreNotKept) {
  Put("[Other]\r\nkey=value\r\n");
  ASSERT_TRUE(SaveSettings(File(), window_, session_, current_.path()));
  EXPECT_FALSE(Content().contains("Other"));
}

TEST_F(SettingsTest, TemporaryFileIsBesideTheSettingsInReadOnlyFolder) {
  ASSERT_TRUE(SaveSettings(File(), window_, session_, folder_.filePath(QStringLiteral("no such folder"))));
  EXPECT_TRUE(Content().startsWith("[Form]"));
  EXPECT_EQ(QDir(folder_.path()).entryList(QDir::Files), QStringList{QStringLiteral("Trevane.ini")});
}

TEST_F(SettingsTest, AReadOnlySettingsFileIsLeftAsItIs) {
  Put("old");
  ASSERT_TRUE(QFile::setPermissions(File(), QFile::ReadOwner | QFile::ReadGroup));
  EXPECT_FALSE(SaveSettings(File(), window_, session_, current_.path()));
  EXPECT_EQ(Content(), "old");
  EXPECT_TRUE(QDir(current_.path()).isEmpty());
}

TEST_F(SettingsTest, AFolderOfThatNameIsRefused) {
  ASSERT_TRUE(QDir(folder_.path()).mkdir(QStringLiteral("Trevane.ini")));
  EXPECT_FALSE(SaveSettings(File(), window_, session_, current_.path()));
}

TEST_F(SettingsTest, AFileThatIsThereAndCannotBeReadIsAFailure) {
  ASSERT_TRUE(QDir(folder_.path()).mkdir(QStringLiteral("Trevane.ini")));
  EXPECT_FALSE(LoadSettings(File(), window_, session_));
}

TEST_F(SettingsTest, AMissingFileChangesNothing) {
  EXPECT_TRUE(LoadSettings(File(), window_, session_));
  EXPECT_EQ(window_.widthsSet, 0);
  EXPECT_EQ(session_.gSavedCtrls.Count(), 0);
}

TEST_F(SettingsTest, TheWindowIsSizedBeforeItsStateIsSet) {
  Put("[Form]\r\nWindowState=2\r\nWidth=7500\r\nHeight=4500\r\n");
  EXPECT_TRUE(LoadSettings(File(), window_, session_));
  EXPECT_EQ(window_.width, 7500);
  EXPECT_EQ(window_.height, 4500);
  EXPECT_EQ(window_.state, WindowState::Maximised);
}

TEST_F(SettingsTest, AControllerSectionWithoutARootYieldsASlash) {
  Put("[Controller1]\r\nControllerName=A\r\n[Controller2]\r\nControllerName=B\r\nRoot=\r\n");
  EXPECT_TRUE(LoadSettings(File(), window_, session_));
  EXPECT_EQ(session_.gSavedCtrls.Item(qint32{1})->Root(), QStringLiteral("/"));
  EXPECT_EQ(session_.gSavedCtrls.Item(qint32{2})->Root(), QStringLiteral(""));
}

TEST_F(SettingsTest, RecordsReadBeforeASecondOneOfTheSameNameStay) {
  Put("[Controller1]\r\nControllerName=A\r\n[Controller2]\r\nControllerName=a\r\n"
      "[Controller3]\r\nControllerName=C\r\n");
  EXPECT_FALSE(LoadSettings(File(), window_, session_));
  EXPECT_EQ(session_.gSavedCtrls.Count(), 1);
}

TEST_F(SettingsTest, ValuesComeBackWithTheirOuterBlanksAndQuotes) {
  auto record = std::make_shared<clsIxoCtrl>();
  record->SetCtrlName(QStringLiteral(" 'C' "));
  record->SetProvName(QStringLiteral("'P'"));
  record->SetMachineName(QStringLiteral("  m"));
  record->SetCtrlOption(QStringLiteral("\"Path=x\""));
  record->SetRoot(QStringLiteral("/r "));
  session_.gSavedCtrls.Add(ControllerKey(record->CtrlName()), record);
  ASSERT_TRUE(SaveSettings(File(), window_, session_, current_.path()));
  EXPECT_TRUE(Content().contains("Option=\"\"Path=x\"\"\r\n"));
  EngineSession read;
  ASSERT_TRUE(LoadSettings(File(), window_, read));
  ASSERT_EQ(read.gSavedCtrls.Count(), 1);
  const auto again = read.gSavedCtrls.Item(qint32{1});
  EXPECT_EQ(again->CtrlName(), record->CtrlName());
  EXPECT_EQ(again->ProvName(), record->ProvName());
  EXPECT_EQ(again->MachineName(), record->MachineName());
  EXPECT_EQ(again->CtrlOption(), record->CtrlOption());
  EXPECT_EQ(again->Root(), record->Root());
}

TEST_F(SettingsTest, AFileTooLargeIsNotRead) {
  Put("[Controller1]\r\nControllerName=A\r\n");
  ASSERT_TRUE(QFile::resize(File(), ownfile::kLargestFile + 1));
  EXPECT_FALSE(LoadSettings(File(), window_, session_));
  EXPECT_EQ(session_.gSavedCtrls.Count(), 0);
}

#ifdef Q_OS_LINUX
/// A figure of what this process has read and written; -1 where the system does not count.
qint64 IoCounter(const QByteArray& name) {
  QFile counters(QStringLiteral("/proc/self/io"));
  if (!counters.open(QIODevice::ReadOnly)) {
    return -1;
  }
  const QByteArray text = counters.readAll();
  const auto at = text.indexOf(name + ": ");
  return at < 0 ? -1
                : text.mid(at + name.size() + 2, text.indexOf('\n', at) - at - name.size() - 2).toLongLong();
}

TEST_F(SettingsTest, ALargeFileOfManyKeysIsReadOnce) {
  if (IoCounter("rchar") < 0) {
    GTEST_SKIP() << "this system does not count calls";
  }
  QByteArray content("[Form]\n");
  content += QByteArray("a=\n").repeated(1024 * 1024 / 3);
  content += "Width=7000\n";
  for (int i = 1; i <= 8; ++i) {
    content += "[Controller" + QByteArray::number(i) + "]\nControllerName=" + QByteArray::number(i) + '\n';
  }
  Put(content);
  const qint64 before = IoCounter("rchar");
  EXPECT_TRUE(LoadSettings(File(), window_, session_));
  EXPECT_EQ(window_.width, 7000);
  EXPECT_EQ(session_.gSavedCtrls.Count(), 8);
  EXPECT_LT(IoCounter("rchar") - before, 2 * content.size());
}

TEST_F(SettingsTest, OneSaveIsOneWriteAndOneFlush) {
  Remember(8);
  Put("old");
  const auto writes = [] { return IoCounter("syscw"); };
  if (writes() < 0) {
    GTEST_SKIP() << "this system does not count calls";
  }
  // A sanitizer makes calls of its own the first time.
  ASSERT_TRUE(SaveSettings(File(), window_, session_, current_.path()));
  const int flushesBefore = test::FlushCount();
  const qint64 writesBefore = writes();
  ASSERT_TRUE(SaveSettings(File(), window_, session_, current_.path()));
  EXPECT_EQ(writes() - writesBefore, 1);
  EXPECT_EQ(test::FlushCount() - flushesBefore, 1);
}

TEST_F(SettingsTest, ADiskThatIsFullOnlyInTheFlushLeavesTheOldFile) {
  Put("old");
  const test::FailingFlush full(ENOSPC);
  EXPECT_FALSE(SaveSettings(File(), window_, session_, current_.path()));
  EXPECT_EQ(Content(), "old");
  EXPECT_EQ(QDir(folder_.path()).entryList(QDir::Files), QStringList{QStringLiteral("Trevane.ini")});
  EXPECT_TRUE(QDir(current_.path()).isEmpty());
}

TEST_F(SettingsTest, AFullDiskLeavesTheOldFile) {
  const test::SmallDisk disk;
  if (!disk.IsMounted()) {
    GTEST_SKIP() << "a disk of its own can be had by the superuser alone, and only where mounting is allowed";
  }
  const QString name = disk.Path() + QStringLiteral("/Trevane.ini");
  QFile file(name);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  ASSERT_EQ(file.write("old"), 3);
  file.close();
  disk.Fill();
  EXPECT_FALSE(SaveSettings(name, window_, session_, current_.path()));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.readAll(), "old");
  EXPECT_EQ(QDir(disk.Path()).entryList(QDir::Files),
            (QStringList{QStringLiteral("filling"), QStringLiteral("Trevane.ini")}));
}

TEST_F(SettingsTest, ACurrentFolderOnAFullDiskIsPassedOver) {
  const test::SmallDisk disk;
  if (!disk.IsMounted()) {
    GTEST_SKIP() << "a disk of its own can be had by the superuser alone, and only where mounting is allowed";
  }
  disk.Fill();
  EXPECT_TRUE(SaveSettings(File(), window_, session_, disk.Path()));
  EXPECT_TRUE(Content().startsWith("[Form]"));
  EXPECT_EQ(QDir(disk.Path()).entryList(QDir::Files), QStringList{QStringLiteral("filling")});
}

TEST_F(SettingsTest, APipeInItsPlaceIsNotWaitedFor) {
  ASSERT_EQ(::mkfifo(File().toUtf8().constData(), 0600), 0);
  EXPECT_FALSE(LoadSettings(File(), window_, session_));
  EXPECT_FALSE(SaveSettings(File(), window_, session_, current_.path()));
}

TEST_F(SettingsTest, ANewFileIsForThisUserAlone) {
  ASSERT_TRUE(SaveSettings(File(), window_, session_, current_.path()));
  struct stat status {};
  ASSERT_EQ(::stat(File().toUtf8().constData(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600U);
}

TEST_F(SettingsTest, AWritableFileInAReadOnlyFolderIsWrittenInPlace) {
  Put("old");
  ASSERT_EQ(::chmod(folder_.path().toUtf8().constData(), 0500), 0);
  const ownfile::Outcome saved = SaveSettings(File(), window_, session_, current_.path());
  ASSERT_EQ(::chmod(folder_.path().toUtf8().constData(), 0700), 0);
  EXPECT_TRUE(saved);
  EXPECT_TRUE(Content().startsWith("[Form]"));
}
#endif

TEST_F(SettingsTest, ManySectionsOfTheWindowAreReadOnce) {
  QByteArray content;
  while (content.size() < 300000) {
    content += "[Form]\nWidth=6000\n";
  }
  Put(content);
  EXPECT_TRUE(LoadSettings(File(), window_, session_));
  EXPECT_EQ(window_.widthsSet, 1);
  EXPECT_EQ(window_.width, 6000);
}

}  // namespace
}  // namespace trevane
