// Shows the main window over scripted controllers with FTP, to be looked at by hand. Not a part of the
// product, and no test.
//
//   ftp_window plain|tls|changed|busy|anonymous
//
// Connects at once, through a workspace file. The password of joe is "secret"; "busy" has room for nobody.
#include "app/modMain.h"
#include "app/session/AppServices.h"
#include "app/window/frmFileMgr.h"
#include "app/workspace/WorkspaceFile.h"
#include "dialogs/Prompts.h"
#include "dialogs/WaitClock.h"
#include "dialogs/WindowWaiter.h"
#include "engine/providers/ProviderTable.h"
#include "engine/remote/RemoteContext.h"
#include "engine/substitute/SubstituteEngine.h"
#include "platform/TerminationRequests.h"
#include "resources/Resources.h"
#include "tests/support/FakeShellIcons.h"
#include "tests/support/FakeVolumes.h"
#include "tests/support/TestFiles.h"
#include "tests/support/ftp/FtpTestServer.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QThread>

#include <chrono>
#include <cstdlib>

namespace trevane::test {
namespace {

int Show(const QString& scene) {
  InitResources();
  const QTemporaryDir folder;
  FtpVices vices;
  const bool isOverTls = scene == u"tls" || scene == u"changed";
  vices.tls = isOverTls ? FtpVices::Tls::Explicit : FtpVices::Tls::Off;
  vices.mostClients = scene == u"busy" ? 0 : 1;
  vices.users.insert("anonymous", {});
  FtpTestServer server(vices);
  server.Tree().AddFile("/programs/main.pac", "program");
  server.Tree().AddFile("/readme.txt", "12345");
  const QString trustFile = folder.filePath(QStringLiteral("Trevane.ini.trust"));
  if (scene == u"changed") {
    WriteFile(trustFile, "# Mine\n" + server.Machine().toLatin1() + ' ' +
                             QByteArray(32, '\x5a').toHex(':').toUpper() + " 2024-03-09 CN=cell4\n");
  }
  const QByteArray option = scene == u"anonymous" ? "" : isOverTls ? "User=joe, Tls=Explicit" : "User=joe";
  const QString workspace = folder.filePath(QStringLiteral("cells.fmg"));
  WriteFile(workspace, "[Cell4]\r\nCtrlName=Cell4\r\nProvider=IxoProv.Ftp\r\nMachine=" +
                           server.Machine().toLatin1() + "\r\nOption=" + option + "\r\nRoot=/\r\n");

  FakeVolumes volumes;
  volumes.Set({{QStringLiteral("C:"), folder.path() + u'/', drivetype::kFixed}});
  FakeShellIcons icons;
  Prompts prompts([](qint32) {},
                  [](qint32 milliseconds) { QThread::msleep(static_cast<unsigned long>(milliseconds)); });
  WindowQueue queue;
  SystemWaitClock clock;
  WindowWaiter waiter(queue, prompts, clock);
  RemoteContext remote{queue, waiter, &prompts};
  bool areLeftBehind = false;
  modMain program(
      {.prompts = prompts,
       .volumes = volumes,
       .shellIcons = icons,
       .createEngine =
           [&] {
             return std::make_shared<SubstituteEngine>(
                 ShippedProviders(volumes, &icons, &remote, nullptr, {trustFile}), &remote);
           },
       .isFirstInstance = [] { return true; },
       .programFolder = folder.path(),
       .baseName = QStringLiteral("Trevane"),
       .version = QStringLiteral("0.0.0"),
       .waiter = &waiter,
       .learnt = remote.learnt,
       .stopControllers =
           [&] { areLeftBehind = !remote.controllers->StopAll(std::chrono::milliseconds(500)); }});
  program.StartWith(QString());
  frmFileMgr* const window = program.Window();
  if (window == nullptr) {
    return EXIT_FAILURE;
  }
  prompts.SetMainWindow(window);
  TerminationRequests termination;
  QObject::connect(&termination, &TerminationRequests::Requested, window, [&] { window->CloseUnattended(); });
  QMetaObject::invokeMethod(
      window, [&] { window->Workspace().OpenWorkspace(workspace); }, Qt::QueuedConnection);
  const int result = QApplication::exec();
  if (areLeftBehind) {
    std::_Exit(result);
  }
  return result;
}

}  // namespace
}  // namespace trevane::test

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Trevane"));
  return trevane::test::Show(QApplication::arguments().value(1));
}
