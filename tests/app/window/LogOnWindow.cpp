// Shows the main window over a scripted controller that asks as servers do when it is connected, to be looked
// at by hand. Not a part of the product, and no test.
//
//   log_on_window [unknown] [password] [refused] [nostore] [code] [long]
//
// Each word is a question of the connection, in that order; "nostore" has the box "Remember" off. The
// controller has a notice for the status bar, and tells more in its properties.
#include "app/modMain.h"
#include "app/session/AppServices.h"
#include "app/window/frmFileMgr.h"
#include "base/RunTimeError.h"
#include "dialogs/Prompts.h"
#include "dialogs/WaitClock.h"
#include "dialogs/WindowWaiter.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "engine/remote/RemoteContext.h"
#include "engine/substitute/SubstituteEngine.h"
#include "platform/TerminationRequests.h"
#include "resources/Resources.h"
#include "tests/support/FakeShellIcons.h"
#include "tests/support/FakeVolumes.h"
#include "tests/support/ScriptedServer.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QThread>

#include <chrono>
#include <cstdlib>

namespace trevane::test {
namespace {

const QString kHost = QStringLiteral("cell4.plant.example:22");

void AskForKey(UserPrompts& prompts) {
  const int answer = prompts.Choose(
      {.prompt = QStringLiteral("The host key of %1 is not known. Connect to it?").arg(kHost),
       .title = QStringLiteral("Unknown host key"),
       .icon = PromptIcon::Exclamation,
       .captions = {QStringLiteral("&Connect"), QStringLiteral("Cancel")},
       .defaultButton = 1,
       .cancelButton = 1,
       .harmlessButton = 1,
       .informativeText = QStringLiteral(
           "Key type: ssh-ed25519\nFingerprint: SHA256:uNiVztksCsDhcc0u9e8BgrJXVGDOIrXe5pOlQ2lRRSo\n\n"
           "Compare the fingerprint with that of the controller. If it is another one, another machine has "
           "answered.")});
  if (answer != 0) {
    throw RunTimeError(error::kCancelled, QString());
  }
}

void AskForSecret(UserPrompts& prompts, const QString& prompt, const QString& words, bool isHidden,
                  const QString& whyNot) {
  if (!prompts.AskSecret({.title = QStringLiteral("Log on to cell 4"),
                          .prompt = prompt,
                          .informativeText = words,
                          .isHidden = isHidden,
                          .offersRemember = isHidden,
                          .whyNotRemember = whyNot})) {
    throw RunTimeError(error::kCancelled, QString());
  }
}

void Ask(UserPrompts& prompts, const QStringList& questions) {
  const QString password = QStringLiteral("Password of joe on %1").arg(kHost);
  const QString whyNot =
      questions.contains(u"nostore") ? QStringLiteral("The password store is locked.") : QString();
  for (const QString& question : questions) {
    if (question == u"unknown") {
      AskForKey(prompts);
    } else if (question == u"password") {
      AskForSecret(prompts, password, {}, true, whyNot);
    } else if (question == u"refused") {
      AskForSecret(prompts, password, QStringLiteral("The password was refused."), true, whyNot);
    } else if (question == u"code") {
      AskForSecret(prompts, QStringLiteral("Verification code:"),
                   QStringLiteral("Plant network, cell 4\nAuthorised persons only.\x1B[2J <b>no markup</b>"),
                   false, {});
    } else if (question == u"long") {
      AskForSecret(prompts, password, QStringLiteral("Words of a server that never ends. ").repeated(200),
                   true, whyNot);
    }
  }
}

int Show(const QStringList& questions) {
  InitResources();
  const QTemporaryDir folder;
  const auto local =
      std::make_shared<MemoryFileSystem>(MemoryFileSystemOptions{.drives = {QStringLiteral("C:")}});
  local->AddFile(QStringLiteral("C:\\readme.txt"), "12345");
  const auto robot = std::make_shared<MemoryFileSystem>();
  robot->AddFile(QStringLiteral("programs\\main.pac"), "program");
  robot->AddFile(QStringLiteral("readme.txt"), "12345");
  const auto server = std::make_shared<ScriptedServer>(robot);
  server->SetDelay(std::chrono::milliseconds(40));
  server->AskAtOpening([questions](UserPrompts& prompts) { Ask(prompts, questions); });
  server->SetNotice(
      QStringLiteral("The connection to %1 uses old, less safe algorithms: diffie-hellman-group14-sha1")
          .arg(kHost));
  server->SetDetails(QString(),
                     {QStringLiteral("Server: SSH-2.0-OpenSSH_6.6"), QStringLiteral("Protocol: SFTP 3"),
                      QStringLiteral("Cipher: aes128-ctr"),
                      QStringLiteral("Host key: SHA256:uNiVztksCsDhcc0u9e8BgrJXVGDOIrXe5pOlQ2lRRSo"),
                      QStringLiteral("Free space: 1.2 GiB of 4 GiB")});
  server->SetDetails(QStringLiteral("readme.txt"), {QStringLiteral("Permissions: rw-r--r-- (644)"),
                                                    QStringLiteral("Owner: 1000, group 1000")});

  FakeVolumes volumes;
  volumes.Set({{QStringLiteral("C:"), QStringLiteral("/c/"), drivetype::kFixed}});
  FakeShellIcons icons;
  Prompts prompts([](qint32) {},
                  [](qint32 milliseconds) { QThread::msleep(static_cast<unsigned long>(milliseconds)); });
  WindowQueue queue;
  SystemWaitClock clock;
  WindowWaiter waiter(queue, prompts, clock);
  RemoteContext remote{queue, waiter, &prompts};
  Provider scripted = server->AsProvider(QStringLiteral("IxoProv.Scripted"));
  scripted.help = {.machineExample = QStringLiteral("cell4:22"),
                   .optionExample = QStringLiteral("User=joe"),
                   .machine = QStringLiteral("host\nhost:port"),
                   .option = QStringLiteral("User: the name to log on with")};
  bool areLeftBehind = false;
  modMain program(
      {.prompts = prompts,
       .volumes = volumes,
       .shellIcons = icons,
       .createEngine =
           [&] {
             return std::make_shared<SubstituteEngine>(
                 ProviderTable{
                     {QStringLiteral("IxoProv.LocalFile"), [&](const FileSystemRequest&) { return local; }},
                     scripted},
                 &remote);
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
  return trevane::test::Show(QApplication::arguments().sliced(1));
}
