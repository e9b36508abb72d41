#include <QApplication>

#include <gtest/gtest.h>

// The main of every test program that shows windows. Without a platform of its own in the environment, as
// while the tests are being listed, it uses the one that needs no screen.
int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Trevane"));
  QApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
