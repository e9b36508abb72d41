#include "app/modMain.h"
#include "app/session/AppServices.h"
#include "app/settings/TrustFiles.h"
#include "app/window/SystemStyle.h"
#include "app/window/frmFileMgr.h"
#include "dialogs/Prompts.h"
#include "dialogs/WaitClock.h"
#include "dialogs/WindowWaiter.h"
#include "engine/providers/ProviderTable.h"
#include "engine/remote/RemoteContext.h"
#include "engine/substitute/SubstituteEngine.h"
#include "platform/AppInfo.h"
#include "platform/MakeSecretStore.h"
#include "platform/OpenWithProgram.h"
#include "platform/SingleInstance.h"
#include "platform/SystemLook.h"
#include "platform/SystemShellIcons.h"
#include "platform/SystemSound.h"
#include "platform/SystemVolumes.h"
#include "platform/TaskbarProgress.h"
#include "platform/TerminationRequests.h"
#include "resources/Resources.h"

#include <QApplication>

#include <array>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

using namespace trevane;

namespace {
/// For the threads of all controllers together.
constexpr std::chrono::milliseconds kLongestStopping(500);

/// The files of trusted certificates, as the settings file may stand at two places.
QStringList TrustFilesOf(const QString& programFolder) {
  const QString name = appinfo::PathSeparator() + appinfo::ExecutableName() + QStringLiteral(".ini");
  const QString own = appinfo::UserSettingsFolder();
  return TrustFiles(programFolder + name, own.isEmpty() ? QString() : own + name);
}

/// Not among the system's temporary files: what was changed and not put back outlasts a new start of the
/// computer.
QString FetchedFolderOf(const QString& userFolder) {
  return userFolder.isEmpty() ? QString() : userFolder + QStringLiteral("/fetched");
}
}  // namespace

int main(int count, char** values) {
  const QString programFolder = appinfo::ProgramFolder();
  std::optional<SingleInstance> instance(std::in_place, programFolder);

  const std::optional<QString> commandLine = appinfo::CommandLine();
  const QStringList arguments = appinfo::Arguments(count, values);
  // The program has no options; it passes only -platform to the toolkit.
  QByteArray option("-platform");
  QByteArray platform = systemlook::PlatformOption();
  std::array<char*, 4> given{values[0], option.data(), platform.data(), nullptr};
  int givenCount = platform.isEmpty() ? 1 : 3;
  QApplication application(givenCount, given.data());
  const SystemStyle style;
  QApplication::setApplicationName(QStringLiteral("Trevane"));
  QApplication::setApplicationVersion(appinfo::Version());
  QApplication::setDesktopFileName(QStringLiteral("trevane"));
  // Without a desktop that names one there would be no icon theme at all, whatever is installed.
  if (QIcon::themeName().isEmpty() || QIcon::themeName() == u"hicolor") {
    QIcon::setThemeName(QStringLiteral("Adwaita"));
  }
  InitResources();
  QApplication::setWindowIcon(Icon(QStringLiteral("trevane")));

  systemsound::SetBeeper([](qint32 /*kind*/) { QApplication::beep(); });
  TaskbarProgress taskbar(QApplication::desktopFileName());
  Prompts prompts(&systemsound::Beep, &systemsound::SleepMilliseconds);
  prompts.SetProgressListener([&taskbar](qint32 value, qint32 maximum) {
    if (maximum > 0) {
      taskbar.Show(value, maximum);
    } else {
      taskbar.Hide();
    }
  });
  WindowQueue queue;
  SystemWaitClock clock;
  WindowWaiter waiter(queue, prompts, clock);
  RemoteContext remote{queue, waiter, &prompts};
  const std::unique_ptr<SecretStore> secrets =
      MakeSecretStore([&] { return waiter.IsCancelling() || prompts.IsEnding(); });
  bool areLeftBehind = false;
  // Threads that were left behind still hold what would be destroyed by returning. Settings and log are
  // written by then.
  const auto end = [&areLeftBehind, &instance](int result) {
    if (areLeftBehind) {
      // One that the kernel holds keeps the process from ending, and the claim with it.
      instance.reset();
      std::_Exit(result);
    }
    return result;
  };
  SystemVolumes volumes;
  SystemShellIcons shellIcons;
  modMain program(
      {.prompts = prompts,
       .volumes = volumes,
       .shellIcons = shellIcons,
       .createEngine =
           [&] {
             return std::make_shared<SubstituteEngine>(
                 ShippedProviders(volumes, &shellIcons, &remote, secrets.get(), TrustFilesOf(programFolder)),
                 &remote);
           },
       .isFirstInstance = [&] { return instance->IsFirst(); },
       .programFolder = programFolder,
       .baseName = appinfo::ExecutableName(),
       .version = appinfo::Version(),
       .waiter = &waiter,
       .learnt = remote.learnt,
       .stopControllers = [&] { areLeftBehind = !remote.controllers->StopAll(kLongestStopping); },
       .userSettingsFolder = appinfo::UserSettingsFolder(),
       .userLogFolder = appinfo::UserStateFolder(),
       .fetchedFolder = FetchedFolderOf(appinfo::UserStateFolder())});
  SetOpenFailureListener([&program](const QString& path, const QString& reason) {
    if (frmFileMgr* window = program.Window()) {
      window->RunFailedLate(path, reason);
    }
  });
  TerminationRequests termination;
  QObject::connect(&termination, &TerminationRequests::Requested, &application, [&] {
    if (frmFileMgr* window = program.Window()) {
      window->CloseUnattended();
    } else {
      prompts.End(UserPrompts::Ending::BySystem);
    }
  });
  if (commandLine) {
    program.Start(*commandLine);
  } else {
    program.StartWith(arguments.value(0));
  }
  frmFileMgr* window = program.Window();
  if (!window) {
    return end(0);
  }

  prompts.SetMainWindow(window);
  taskbar.SetWindow(window->winId());
  return end(QApplication::exec());
}
