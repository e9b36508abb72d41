#include "engine/remote/NestedCall.h"

#include <QApplication>
#include <QEvent>

#include <gtest/gtest.h>

namespace {

/// An engine call from a painting, from a model's data or from a delegate is a failure of the test.
class GuiTestApplication final : public QApplication {
 public:
  using QApplication::QApplication;

  bool notify(QObject* receiver, QEvent* event) override {
    if (event->type() != QEvent::Paint) {
      return QApplication::notify(receiver, event);
    }
    const trevane::WithinCall within;
    return QApplication::notify(receiver, event);
  }
};

}  // namespace

// The main of every test program that shows windows. Without a platform of its own in the environment, as
// while the tests are being listed, it uses the one that needs no screen.
int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  GuiTestApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Trevane"));
  QApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
