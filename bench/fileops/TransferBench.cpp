// The whole way of a paste and a delete, from the clipboard set to the disk, against cp and rm in the same
// run. What the provider alone costs is measured in bench/engine/providers/local.
#include "engine/controllers/ControllerConnector.h"
#include "engine/model/IxoControllers.h"
#include "engine/model/IxoEngine.h"
#include "engine/model/IxoWorkspace.h"
#include "engine/model/IxoWorkspaces.h"
#include "engine/providers/ProviderTable.h"
#include "engine/substitute/SubstituteEngine.h"
#include "platform/SystemVolumes.h"
#include "tests/fileops/LocalTransferWorld.h"

#include <QDir>
#include <QFile>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

namespace trevane::bench {
namespace {

using Clock = std::chrono::steady_clock;
const QString kDrive = QStringLiteral("Workspace\\My Computer\\C:");

double SecondsOf(const std::function<void()>& work) {
  const auto start = Clock::now();
  work();
  const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  ::sync();
  return seconds;
}

double ProcessorSeconds(int of) {
  rusage usage{};
  ::getrusage(of, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Beside the time that passes, which other programs lengthen: that of the processor.
struct Times {
  std::vector<double> passed;
  std::vector<double> processor;

  /// `of` is RUSAGE_SELF, or RUSAGE_CHILDREN for what a shell does.
  void Add(int of, const std::function<void()>& work) {
    const double before = ProcessorSeconds(of);
    const auto start = Clock::now();
    work();
    passed.push_back(std::chrono::duration<double>(Clock::now() - start).count());
    processor.push_back(ProcessorSeconds(of) - before);
    ::sync();
  }
};

double Median(std::vector<double> times) {
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

void Require(benchmark::State& state, bool done) {
  if (!done) {
    state.SkipWithError("the operation failed");
  }
}

void Shell(benchmark::State& state, const QString& command) {
  Require(state, std::system(QFile::encodeName(command).constData()) == 0);
}

void MakeTree(const QString& root) {
  const QByteArray content(4096, 'x');
  for (int folder = 0; folder < 200; ++folder) {
    const QString path = root + QStringLiteral("tree/folder %1").arg(folder);
    QDir().mkpath(path);
    for (int i = 0; i < 50; ++i) {
      QFile file(path + QStringLiteral("/file %1").arg(i));
      if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        std::abort();
      }
    }
  }
}

/// Theirs and ours by turns, since the one that comes second finds what the first has warmed up.
void Compete(benchmark::State& state, const char* name, const std::function<void()>& theirs,
             const std::function<void()>& ours, const std::function<void()>& cleanUp) {
  Times their;
  Times our;
  bool oursFirst = false;
  ::sync();
  for (auto iteration : state) {
    if (oursFirst) {
      our.Add(RUSAGE_SELF, ours);
      their.Add(RUSAGE_CHILDREN, theirs);
    } else {
      their.Add(RUSAGE_CHILDREN, theirs);
      our.Add(RUSAGE_SELF, ours);
    }
    oursFirst = !oursFirst;
    cleanUp();
    ::sync();
    state.SetIterationTime(our.passed.back());
  }
  state.counters[std::string(name) + "_ms"] = Median(their.passed) * 1000;
  state.counters["ours_ms"] = Median(our.passed) * 1000;
  state.counters["ratio"] = Median(our.passed) / Median(their.passed);
  state.counters["cpu_ratio"] = Median(our.processor) / Median(their.processor);
}

/// Copies `name` of C: into a folder of the same (0) or of another controller (1).
void CopyAgainstCp(benchmark::State& state, test::LocalTransferWorld& world, const QString& name,
                   qint32 tag) {
  const bool across = state.range(0) != 0;
  QDir(world.Root()).mkpath(QStringLiteral("in"));
  QDir(world.DiskRoot()).mkpath(QStringLiteral("in"));
  const QString target = (across ? world.DiskRoot() : world.Root()) + QStringLiteral("in");
  Compete(
      state, "cp",
      [&] { Shell(state, QStringLiteral("cp -a '%1%2' '%3/theirs'").arg(world.Root(), name, target)); },
      [&] {
        Require(state, world.Paste(OperationState::kCopy, kDrive, name, tag,
                                   across ? QStringLiteral("Workspace\\Disk\\in")
                                          : QStringLiteral("Workspace\\My Computer\\C:\\in")));
      },
      [&] { Shell(state, QStringLiteral("rm -rf '%1/theirs' '%1/%2'").arg(target, name)); });
}

void BM_CopyTree(benchmark::State& state) {
  test::LocalTransferWorld world;
  MakeTree(world.Root());
  CopyAgainstCp(state, world, QStringLiteral("tree"), 0x10);
}
BENCHMARK(BM_CopyTree)->Arg(0)->Arg(1)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(6);

/// That many files of 4 KiB in the folder "files" of C:, and their names.
QStringList MakeFiles(const QString& root, int count) {
  const QByteArray content(4096, 'x');
  QDir().mkpath(root + QStringLiteral("files"));
  QStringList names;
  for (int i = 0; i < count; ++i) {
    names += QStringLiteral("file %1").arg(i);
    QFile file(root + QStringLiteral("files/") + names.back());
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
      std::abort();
    }
  }
  return names;
}

/// The way of many selected files: each is an entry of the set of its own.
void BM_CopySelectedFiles(benchmark::State& state) {
  test::LocalTransferWorld world;
  const QStringList names = MakeFiles(world.Root(), 10'000);
  const bool across = state.range(0) != 0;
  const QString target = (across ? world.DiskRoot() : world.Root()) + QStringLiteral("in");
  QDir().mkpath(target);
  Compete(
      state, "cp",
      [&] { Shell(state, QStringLiteral("cp -a '%1files' '%2/theirs'").arg(world.Root(), target)); },
      [&] {
        Require(state, world.PasteAll(
                           OperationState::kCopy, kDrive + QStringLiteral("\\files"), names,
                           across ? QStringLiteral("Workspace\\Disk\\in") : kDrive + QStringLiteral("\\in")));
      },
      [&] { Shell(state, QStringLiteral("rm -rf '%1' && mkdir '%1'").arg(target)); });
}
BENCHMARK(BM_CopySelectedFiles)
    ->Arg(0)
    ->Arg(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(4);

/// A move between two controllers against a copy of the same files.
void BM_MoveSelectedFiles(benchmark::State& state) {
  test::LocalTransferWorld world;
  const QString from = kDrive + QStringLiteral("\\files");
  const QString into = QStringLiteral("Workspace\\Disk\\in");
  const QString target = world.DiskRoot() + QStringLiteral("in");
  QDir().mkpath(target);
  const auto clear = [&] {
    Shell(state, QStringLiteral("rm -rf '%1' && mkdir '%1'").arg(target));
    static_cast<void>(MakeFiles(world.Root(), 3'000));
  };
  const QStringList names = MakeFiles(world.Root(), 3'000);
  std::vector<double> copies;
  std::vector<double> moves;
  for (auto iteration : state) {
    copies.push_back(
        SecondsOf([&] { Require(state, world.PasteAll(OperationState::kCopy, from, names, into)); }));
    clear();
    moves.push_back(
        SecondsOf([&] { Require(state, world.PasteAll(OperationState::kCut, from, names, into)); }));
    clear();
    state.SetIterationTime(moves.back());
  }
  state.counters["copy_ms"] = Median(copies) * 1000;
  state.counters["move_ms"] = Median(moves) * 1000;
  state.counters["ratio"] = Median(moves) / Median(copies);
}
BENCHMARK(BM_MoveSelectedFiles)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(4);

void BM_CopyLargeFile(benchmark::State& state) {
  test::LocalTransferWorld world;
  {
    QFile file(world.Root() + QStringLiteral("large"));
    if (!file.open(QIODevice::WriteOnly)) {
      std::abort();
    }
    const QByteArray content(1 << 20, 'x');
    for (int i = 0; i < 1024; ++i) {
      file.write(content);
    }
  }
  rusage before{};
  ::getrusage(RUSAGE_SELF, &before);
  CopyAgainstCp(state, world, QStringLiteral("large"), 0);
  rusage after{};
  ::getrusage(RUSAGE_SELF, &after);
  state.counters["peak_growth_mib"] = static_cast<double>(after.ru_maxrss - before.ru_maxrss) / 1024;
}
BENCHMARK(BM_CopyLargeFile)->Arg(0)->Arg(1)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(4);

void BM_DeleteTree(benchmark::State& state) {
  test::LocalTransferWorld world;
  world.prompts.AnswerAllChoices(0);
  const auto make = [&] {
    MakeTree(world.Root());
    Shell(state, QStringLiteral("cp -a '%1tree' '%1theirs'").arg(world.Root()));
  };
  make();
  Compete(
      state, "rm", [&] { Shell(state, QStringLiteral("rm -r '%1theirs'").arg(world.Root())); },
      [&] { Require(state, world.DeleteItem(kDrive, QStringLiteral("tree"))); }, make);
}
BENCHMARK(BM_DeleteTree)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(6);

/// Shows nothing: what connecting itself takes.
class NoViews final : public ControllerDisplay {
 public:
  bool AddControllerNode(const clsIxoCtrl&, bool) override { return true; }
  bool AddControllerItem(const clsIxoCtrl&, bool) override { return true; }
  void RemoveControllerNode(const QString&) override {}
  void RemoveControllerItem(const QString&) override {}
  [[nodiscard]] bool IsErrorNode(const QString&) const override { return false; }
  void RemoveErrorNodes() override {}
  void ClearProgressText() override {}
};

/// Connects a folder of the local disk as a controller; its milliseconds are the whole result.
void BM_Connect(benchmark::State& state) {
  SystemVolumes volumes;
  Require(state, volumes.Refresh());
  QTemporaryDir folder;
  test::RecordingLog log;
  NoViews views;
  EngineSession session;
  session.gIxoEngine = std::make_shared<SubstituteEngine>(ShippedProviders(volumes));
  session.gIxoWorkspace = session.gIxoEngine->Workspaces()->Item(qint16(0));
  session.gIxoControllers = session.gIxoWorkspace->Controllers();
  const ControllerConnector connector(session, views, log);
  for (auto iteration : state) {
    const auto ctrl = std::make_shared<clsIxoCtrl>();
    ctrl->SetCtrlName(QStringLiteral("Cell"));
    ctrl->SetProvName(QStringLiteral("IxoProv.LocalFile"));
    ctrl->SetRoot(folder.path());
    Require(state, bool(connector.ConnectController(ctrl)));
    state.PauseTiming();
    Require(state, bool(connector.DisconnectController(QStringLiteral("Workspace\\") + ctrl->RealCtrlName(),
                                                       ctrl->RealCtrlName(), DisconnectFrom::Tree)));
    state.ResumeTiming();
  }
}
BENCHMARK(BM_Connect)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace trevane::bench
