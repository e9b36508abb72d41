// The real window over real folders: what it takes to show one, from the click to the painted list, and to
// sort it. Beside each figure stands that of a known program over the same folder in the same run. Needs a
// display.
#include "app/modMain.h"
#include "app/window/frmFileMgr.h"
#include "bench/providers/BenchVolumes.h"
#include "dialogs/Prompts.h"
#include "engine/providers/ProviderTable.h"
#include "engine/substitute/SubstituteEngine.h"
#include "platform/SystemShellIcons.h"
#include "platform/SystemSound.h"
#include "resources/Resources.h"
#include "views/list/FileListModel.h"
#include "views/list/FileListView.h"
#include "views/list/ListSorting.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderTreeModel.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTreeView>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <map>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace trevane::bench {
namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Resident memory in bytes.
double Resident() {
  QFile file(QStringLiteral("/proc/self/statm"));
  if (!file.open(QIODevice::ReadOnly)) {
    return 0;
  }
  return file.readAll().split(' ').value(1).toDouble() * static_cast<double>(sysconf(_SC_PAGESIZE));
}

/// Folders of each size, made once for the whole run.
class Folders {
 public:
  /// With a name only that folder is made, beside the empty one.
  explicit Folders(const QString& only = {}) {
    Make(QStringLiteral("empty"), 0, 0);
    if (only == u"files10000") {
      Make(only, 10000, 0);
      return;
    }
    if (!only.isEmpty()) {
      return;
    }
    Make(QStringLiteral("files10000"), 10000, 0);
    Make(QStringLiteral("files100000"), 100000, 0);
    Make(QStringLiteral("files1000"), 1000, 0);
    Make(QStringLiteral("siblings"), 0, 100000);
    for (int i = 0; i < 1000; ++i) {
      Touch(Path(QStringLiteral("siblings/folder000000/file%1.txt").arg(i)));
    }
  }
  [[nodiscard]] BenchVolumes& Drives() { return volumes_; }
  [[nodiscard]] QString Path(const QString& name) { return volumes_.Root() + name; }

 private:
  void Make(const QString& name, int files, int folders) {
    QDir().mkpath(Path(name));
    static const char* const kExtensions[] = {"txt", "pac", "csv", "png", "zip"};
    for (int i = 0; i < files; ++i) {
      Touch(
          Path(name +
               QStringLiteral("/some file name %1.%2").arg(i).arg(QString::fromLatin1(kExtensions[i % 5]))));
    }
    for (int i = 0; i < folders; ++i) {
      QDir().mkdir(Path(name + QStringLiteral("/folder%1").arg(i, 6, 10, QChar(u'0'))));
    }
  }
  static void Touch(const QString& path) {
    close(open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
  }

  BenchVolumes volumes_;
};

/// The program with its window on the screen.
class Program {
 public:
  explicit Program(Folders& folders)
      : main_({.prompts = prompts_,
               .volumes = folders.Drives(),
               .shellIcons = shellIcons_,
               .createEngine =
                   [&folders] {
                     return std::make_shared<SubstituteEngine>(ShippedProviders(folders.Drives()));
                   },
               .isFirstInstance = [] { return true; },
               .programFolder = settings_.path(),
               .baseName = QStringLiteral("Trevane"),
               .version = QStringLiteral("0.0.0")}) {
    main_.Start(QString());
    prompts_.SetMainWindow(&Window());
    Show(QStringLiteral("empty"));
  }
  ~Program() { Window().close(); }

  [[nodiscard]] frmFileMgr& Window() { return *main_.Window(); }

  /// Seconds until the folder is shown and painted.
  double Show(const QString& name) {
    FolderTreeModel& tree = Window().TreeModel();
    FolderNode* node = tree.FindByKey(QStringLiteral("Workspace\\My Computer\\C:\\") + name);
    if (!node) {
      qFatal("no node for %s", qPrintable(name));
    }
    const auto start = Clock::now();
    Window().Navigation().DisplayNode(*node);
    Window().repaint();
    QCoreApplication::processEvents();
    return SecondsSince(start);
  }

 private:
  QTemporaryDir settings_;
  Prompts prompts_{&systemsound::Beep, &systemsound::SleepMilliseconds};
  SystemShellIcons shellIcons_;
  modMain main_;
};

Folders& SharedFolders() {
  static Folders folders;
  return folders;
}

double LsSeconds(const QString& path) {
  const QByteArray command = "ls -l '" + QFile::encodeName(path) + "' >/dev/null";
  const auto start = Clock::now();
  if (std::system(command.constData()) != 0) {
    qFatal("ls failed");
  }
  return SecondsSince(start);
}

double ReaddirStatxSeconds(const QString& path) {
  const auto start = Clock::now();
  DIR* folder = opendir(QFile::encodeName(path).constData());
  while (const dirent* entry = readdir(folder)) {
    struct statx status {};
    statx(dirfd(folder), entry->d_name, AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS | STATX_BTIME, &status);
  }
  closedir(folder);
  return SecondsSince(start);
}

/// The least of a few runs: what the machine can do when nothing else disturbs it.
template <typename Run>
double Best(int runs, Run run) {
  double best = run();
  for (int i = 1; i < runs; ++i) {
    best = std::min(best, run());
  }
  return best;
}

void BM_ShowFolder(benchmark::State& state) {
  Folders& folders = SharedFolders();
  const QString name = QStringLiteral("files%1").arg(state.range(0));
  Program program(folders);
  program.Show(name);  // warm caches
  double best = 1e9;
  for (auto iteration : state) {
    program.Show(QStringLiteral("empty"));
    const double seconds = program.Show(name);
    state.SetIterationTime(seconds);
    best = std::min(best, seconds);
  }
  const auto count = static_cast<double>(state.range(0));
  state.counters["ns_an_entry"] = best / count * 1e9;
  state.counters["to_ls_l"] = best / Best(3, [&] { return LsSeconds(folders.Path(name)); });
  state.counters["to_readdir_statx"] =
      best / Best(3, [&] { return ReaddirStatxSeconds(folders.Path(name)); });
}
BENCHMARK(BM_ShowFolder)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);

/// One showing in a process that has shown nothing before: what an entry holds in memory while it is shown.
void BM_MemoryAnEntry(benchmark::State& state) {
  Program program(SharedFolders());
  const double before = Resident();
  for (auto iteration : state) {
    program.Show(QStringLiteral("files100000"));
  }
  state.counters["bytes_an_entry"] = (Resident() - before) / 100000;
  state.counters["empty_folder_MiB"] = before / 1048576;
}
BENCHMARK(BM_MemoryAnEntry)->Iterations(1)->Unit(benchmark::kMillisecond);

void BM_SortByColumn(benchmark::State& state) {
  Program program(SharedFolders());
  program.Show(QStringLiteral("files100000"));
  FileListModel& list = program.Window().ListModel();
  const int column = static_cast<int>(state.range(0));
  for (auto iteration : state) {
    state.PauseTiming();
    SortByName(list);
    QCoreApplication::processEvents();
    state.ResumeTiming();
    if (column == 0) {
      ColumnClick(list, 0);  // the other way round
    } else {
      ColumnClick(list, column);
    }
    program.Window().repaint();
    QCoreApplication::processEvents();
  }
  state.SetLabel(list.headerData(column, Qt::Horizontal).toString().toStdString());
}
BENCHMARK(BM_SortByColumn)->DenseRange(0, 6)->Unit(benchmark::kMillisecond)->Iterations(3);

/// A folder of 1,000 files beside 100,000 sibling folders, against one of as many files that stands alone.
void BM_ShowFolderBesideSiblings(benchmark::State& state) {
  Folders& folders = SharedFolders();
  Program program(folders);
  const double alone = Best(5, [&] {
    program.Show(QStringLiteral("empty"));
    return program.Show(QStringLiteral("files1000"));
  });
  program.Show(QStringLiteral("siblings"));
  program.Show(QStringLiteral("siblings\\folder000000"));
  double best = 1e9;
  for (auto iteration : state) {
    program.Show(QStringLiteral("empty"));
    const double seconds = program.Show(QStringLiteral("siblings\\folder000000"));
    state.SetIterationTime(seconds);
    best = std::min(best, seconds);
  }
  state.counters["to_alone"] = best / alone;
}
BENCHMARK(BM_ShowFolderBesideSiblings)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_ShowManyFolders(benchmark::State& state) {
  Program program(SharedFolders());
  for (auto iteration : state) {
    state.SetIterationTime(program.Show(QStringLiteral("siblings")));
  }
}
BENCHMARK(BM_ShowManyFolders)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
}  // namespace trevane::bench

int main(int count, char** values) {
  benchmark::Initialize(&count, values);
  // "--show NAME" shows one of the folders once, for a look at the process from outside.
  const QByteArray show =
      count == 3 && QByteArray(values[1]) == "--show" ? QByteArray(values[2]) : QByteArray();
  int ownPathOnly = 1;
  QApplication application(ownPathOnly, values);
  QApplication::setApplicationName(QStringLiteral("Trevane"));
  QApplication::setQuitOnLastWindowClosed(false);
  trevane::InitResources();
  if (QIcon::themeName().isEmpty() || QIcon::themeName() == u"hicolor") {
    QIcon::setThemeName(QStringLiteral("Adwaita"));
  }
  if (!show.isEmpty()) {
    trevane::bench::Folders folders(QStringLiteral("files10000"));
    trevane::bench::Program program(folders);
    program.Show(QString::fromLatin1(show));
    return 0;
  }
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
