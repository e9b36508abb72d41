#include "app/AppServices.h"
#include "app/ParseCommandLine.h"
#include "app/frmFileMgr.h"
#include "app/modMain.h"
#include "dialogs/Prompts.h"
#include "dialogs/frmMsgBoxEx.h"
#include "engine/providers/ProviderTable.h"
#include "engine/substitute/SubstituteEngine.h"
#include "platform/AppInfo.h"
#include "platform/SingleInstance.h"
#include "platform/SystemShellIcons.h"
#include "platform/SystemSound.h"
#include "platform/SystemVolumes.h"
#include "platform/TerminationRequests.h"
#include "resources/Resources.h"

#include <QApplication>

using namespace trevane;
using namespace Qt::StringLiterals;

int main(int count, char** values) {
  const QString programFolder = appinfo::ProgramFolder();
  const SingleInstance instance(programFolder);

  const QStringList arguments = appinfo::Arguments(count, values);
  // The program has no options of its own, and none of the toolkit's.
  int ownPathOnly = 1;
  QApplication application(ownPathOnly, values);
  QApplication::setApplicationName(u"Trevane"_s);
  QApplication::setApplicationVersion(appinfo::Version());
  QApplication::setDesktopFileName(u"trevane"_s);
  // Without a desktop that names one there would be no icon theme at all, whatever is installed.
  if (QIcon::themeName().isEmpty() || QIcon::themeName() == u"hicolor")
    QIcon::setThemeName(u"Adwaita"_s);
  InitResources();
  QApplication::setWindowIcon(Icon(u"trevane"_s));

  systemsound::SetBeeper([](qint32 /*kind*/) { QApplication::beep(); });
  Prompts prompts(&systemsound::Beep, &systemsound::SleepMilliseconds);
  SystemVolumes volumes;
  SystemShellIcons shellIcons;
  modMain program(
      {.prompts = prompts,
       .volumes = volumes,
       .shellIcons = shellIcons,
       .createEngine =
           [&] { return std::make_shared<SubstituteEngine>(ShippedProviders(volumes, &shellIcons)); },
       .isFirstInstance = [&] { return instance.IsFirst(); },
       .programFolder = programFolder,
       .baseName = appinfo::ExecutableName(),
       .version = appinfo::Version(),
       .userSettingsFolder = appinfo::UserSettingsFolder(),
       .userLogFolder = appinfo::UserStateFolder()});
  program.Start(JoinArguments(arguments));
  frmFileMgr* window = program.Window();
  if (!window)
    return 0;

  prompts.SetMainWindow(window);
  TerminationRequests termination;
  QObject::connect(&termination, &TerminationRequests::Requested, window, [window] {
    // A question that stands on the screen would keep the window open until somebody answers it. Only one
    // with captions of its own is left alone: closing it would be an answer, and perhaps one that replaces a
    // file.
    QWidget* question = QApplication::activeModalWidget();
    if (question && !qobject_cast<frmMsgBoxEx*>(question))
      question->close();
    window->close();
  });
  return QApplication::exec();
}
