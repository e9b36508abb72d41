#include "dialogs/Prompts.h"
#include "dialogs/frmSetting.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

namespace trevane {
namespace {

struct SettingWindowTest : testing::Test {
  SettingWindowTest() {
    main.show();
    prompts.SetMainWindow(&main);
  }

  /// Shows the window modally and calls `act` while it is shown.
  void Show(const std::function<void(frmSetting&)>& act) {
    bool seen = false;
    QTimer::singleShot(0, &main, [&] {
      auto* window = qobject_cast<frmSetting*>(QApplication::activeModalWidget());
      ASSERT_NE(window, nullptr);
      seen = true;
      act(*window);
    });
    prompts.ShowSettings();
    EXPECT_TRUE(seen);
    EXPECT_EQ(main.findChild<frmSetting*>(), nullptr) << "unloaded";
  }

  QWidget main;
  Prompts prompts{[](qint32) {}, [](qint32) {}};
};

TEST_F(SettingWindowTest, HasOneEmptyPageAndTwoButtons) {
  Show([](frmSetting& window) {
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Setting"));
    EXPECT_TRUE(window.isModal());
    auto* tabs = window.findChild<QTabWidget*>(QStringLiteral("sstSetting"));
    EXPECT_EQ(tabs->count(), 1);
    EXPECT_EQ(tabs->tabText(0), QStringLiteral("General"));
    EXPECT_TRUE(tabs->widget(0)->children().isEmpty());
    EXPECT_EQ(window.findChild<QPushButton*>(QStringLiteral("cmdCancel"))->text(), QStringLiteral("&Cancel"));
    window.findChild<QPushButton*>(QStringLiteral("cmdOK"))->click();
  });
}

TEST_F(SettingWindowTest, OkCancelEnterAndEscAllUnloadIt) {
  Show([](frmSetting& window) { window.findChild<QPushButton*>(QStringLiteral("cmdOK"))->click(); });
  Show([](frmSetting& window) { window.findChild<QPushButton*>(QStringLiteral("cmdCancel"))->click(); });
  Show([](frmSetting& window) { QTest::keyClick(&window, Qt::Key_Return); });
  Show([](frmSetting& window) { QTest::keyClick(&window, Qt::Key_Escape); });
  Show([](frmSetting& window) { window.close(); });
}

TEST_F(SettingWindowTest, PressingOkWritesNoFile) {
  const QTemporaryDir folder;
  const QString before = QDir::currentPath();
  ASSERT_TRUE(QDir::setCurrent(folder.path()));
  const QByteArray settings = "[Form]\r\nWidth=9000\r\n";
  QFile file(folder.filePath(QStringLiteral("Trevane.ini")));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  ASSERT_EQ(file.write(settings), settings.size());
  file.close();
  Show([](frmSetting& window) { window.findChild<QPushButton*>(QStringLiteral("cmdOK"))->click(); });
  EXPECT_TRUE(QDir::setCurrent(before));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.readAll(), settings);
  EXPECT_EQ(QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
            QStringList({QStringLiteral("Trevane.ini")}));
}

TEST_F(SettingWindowTest, UnloadingItFromOutsideReturnsToWhoShowedIt) {
  Show([this](frmSetting& /*window*/) { prompts.UnloadWindows(); });
}

TEST_F(SettingWindowTest, ShowingItAgainWhileItIsShownDoesNothing) {
  Show([this](frmSetting& window) {
    prompts.ShowSettings();
    EXPECT_EQ(main.findChildren<frmSetting*>().size(), 1);
    window.close();
  });
}

}  // namespace
}  // namespace trevane
