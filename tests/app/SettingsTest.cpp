#include "app/Settings.h"
#include "engine/EngineSession.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

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
  [[nodiscard]] QString File() const { return folder_.filePath(u"Trevane.ini"_s); }
  [[nodiscard]] QByteArray Content() const {
    QFile file(File());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<none>");
  }
  void Put(const QByteArray& content) const {
    QFile file(File());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(content), content.size());
  }
  void Remember(int count) {
    for (int i = 1; i <= count; ++i) {
      auto record = std::make_shared<clsIxoCtrl>();
      record->SetCtrlName(u"C%1"_s.arg(i));
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

TEST_F(SettingsTest, TheStateIsTakenBeforeAndTheSizeAfterTheWindowIsNormalAgain) {
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

TEST_F(SettingsTest, SectionsThatTheProgramDoesNotWriteAreNotCarriedOver) {
  Put("[Other]\r\nkey=value\r\n");
  ASSERT_TRUE(SaveSettings(File(), window_, session_, current_.path()));
  EXPECT_FALSE(Content().contains("Other"));
}

TEST_F(SettingsTest, WhereTheCurrentFolderCannotBeWrittenTheTemporaryFileStandsBesideTheSettings) {
  ASSERT_TRUE(SaveSettings(File(), window_, session_, folder_.filePath(u"no such folder"_s)));
  EXPECT_TRUE(Content().startsWith("[Form]"));
  EXPECT_EQ(QDir(folder_.path()).entryList(QDir::Files), QStringList{u"Trevane.ini"_s});
}

TEST_F(SettingsTest, AReadOnlySettingsFileIsLeftAsItIs) {
  Put("old");
  ASSERT_TRUE(QFile::setPermissions(File(), QFile::ReadOwner | QFile::ReadGroup));
  EXPECT_FALSE(SaveSettings(File(), window_, session_, current_.path()));
  EXPECT_EQ(Content(), "old");
  EXPECT_TRUE(QDir(current_.path()).isEmpty());
}

TEST_F(SettingsTest, AFolderOfThatNameIsRefused) {
  ASSERT_TRUE(QDir(folder_.path()).mkdir(u"Trevane.ini"_s));
  EXPECT_FALSE(SaveSettings(File(), window_, session_, current_.path()));
}

TEST_F(SettingsTest, AFileThatIsThereAndCannotBeReadIsAFailure) {
  ASSERT_TRUE(QDir(folder_.path()).mkdir(u"Trevane.ini"_s));
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
  EXPECT_EQ(session_.gSavedCtrls.Item(qint32{1})->Root(), u"/"_s);
  EXPECT_EQ(session_.gSavedCtrls.Item(qint32{2})->Root(), u""_s);
}

TEST_F(SettingsTest, RecordsReadBeforeASecondOneOfTheSameNameStay) {
  Put("[Controller1]\r\nControllerName=A\r\n[Controller2]\r\nControllerName=a\r\n"
      "[Controller3]\r\nControllerName=C\r\n");
  EXPECT_FALSE(LoadSettings(File(), window_, session_));
  EXPECT_EQ(session_.gSavedCtrls.Count(), 1);
}

TEST_F(SettingsTest, ManySectionsOfTheWindowAreReadOnce) {
  QByteArray content;
  while (content.size() < 300000)
    content += "[Form]\nWidth=6000\n";
  Put(content);
  EXPECT_TRUE(LoadSettings(File(), window_, session_));
  EXPECT_EQ(window_.widthsSet, 1);
  EXPECT_EQ(window_.width, 6000);
}

}  // namespace
}  // namespace trevane
