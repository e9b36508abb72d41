// Controllers over SFTP as the program uses them, against sftp and lftp in the same run, by turns. Where the
// other side is "far", a round trip takes 40 ms: such figures hold on other machines.
#include "bench/engine/providers/sftp/FarServers.h"
#include "bench/engine/providers/sftp/OtherClients.h"
#include "bench/engine/providers/sftp/SftpDesk.h"
#include "engine/providers/SftpProvider.h"
#include "engine/remote/BlockingRemote.h"
#include "engine/remote/RemoteFileSystem.h"
#include "resources/Resources.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <optional>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

namespace trevane::bench {
namespace {

FarServers* servers = nullptr;
const OtherClients* others = nullptr;

constexpr qint64 kMib = 1024 * 1024;

double SecondsOf(const std::function<void()>& work) {
  QElapsedTimer clock;
  clock.start();
  work();
  return static_cast<double>(clock.nsecsElapsed()) / 1e9;
}

/// Of this process.
double ProcessorSeconds() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double Median(std::vector<double> times) {
  std::sort(times.begin(), times.end());
  return times.empty() ? 0 : times[times.size() / 2];
}

/// Both by turns: ours on the near line, too, which tells how many round trips the difference is.
class Comparison {
 public:
  explicit Comparison(benchmark::State& state) : state_(state) {}

  void AddOurs(double seconds) {
    ours_.push_back(seconds);
    state_.SetIterationTime(seconds);
  }
  void AddNear(double seconds) { near_.push_back(seconds); }
  void AddSftp(const std::optional<double>& seconds) { Add(sftp_, seconds); }
  void AddLftp(const std::optional<double>& seconds) { Add(lftp_, seconds); }

  void Report() {
    const double ours = Median(ours_);
    state_.counters["ours_ms"] = ours * 1000;
    if (!near_.empty()) {
      state_.counters["near_ms"] = Median(near_) * 1000;
      state_.counters["trips"] = (ours - Median(near_)) / FarServers::kRoundTrip;
    }
    Report("sftp", sftp_, ours);
    Report("lftp", lftp_, ours);
  }

 private:
  static void Add(std::vector<double>& times, const std::optional<double>& seconds) {
    if (seconds) {
      times.push_back(*seconds);
    }
  }
  /// Above 1 where the other one is slower.
  void Report(const std::string& name, const std::vector<double>& times, double ours) {
    if (!times.empty()) {
      state_.counters[name + "_ms"] = Median(times) * 1000;
      state_.counters[name + "/ours"] = Median(times) / ours;
    }
  }

  benchmark::State& state_;
  std::vector<double> ours_;
  std::vector<double> near_;
  std::vector<double> sftp_;
  std::vector<double> lftp_;
};

QString At(const QString& path) {
  return servers->Root() + u'/' + path;
}

void Clear(const QString& path) {
  if (QFileInfo(At(path)).isDir()) {
    QDir(At(path)).removeRecursively();
  } else {
    QFile::remove(At(path));
  }
}

void Write(const QString& path, qint64 size) {
  QDir().mkpath(QFileInfo(At(path)).path());
  QFile file(At(path));
  if (!file.open(QIODevice::WriteOnly)) {
    std::abort();
  }
  const QByteArray piece(static_cast<qsizetype>(std::min(size, kMib)), 'x');
  for (qint64 left = size; left > 0; left -= piece.size()) {
    file.write(piece);
  }
}

void WriteFiles(const QString& folder, int count, qint64 size) {
  QDir().mkpath(At(folder));
  for (int i = 0; i < count; ++i) {
    Write(QStringLiteral("%1/file %2").arg(folder).arg(i), size);
  }
}

void RequireSize(benchmark::State& state, const QString& path, qint64 size) {
  if (QFileInfo(At(path)).size() != size) {
    state.SkipWithError("the operation failed");
  }
}

/// As the views have it, below the workspace.
QString Place(const QByteArray& controller, const char* folder) {
  return QString::fromLatin1(controller + '\\' + folder);
}

/// Seconds of a copy of `name` into the folder "in" of `to`, which is removed again.
double CopyOf(benchmark::State& state, SftpDesk& desk, const QString& from, const QString& name,
              const QByteArray& to, qint64 fileSize) {
  Clear(QStringLiteral("in"));
  QDir().mkpath(At(QStringLiteral("in")));
  desk.TakeUp(from, name, Place(to, "in"));
  const double seconds = SecondsOf([&desk] { desk.Paste(); });
  const QString copied = QStringLiteral("in/") + name;
  RequireSize(state, fileSize < 0 ? copied + QStringLiteral("/file 99") : copied,
              fileSize < 0 ? 4096 : fileSize);
  return seconds;
}

constexpr qint64 kHundred = -1;
const char kDisk[] = "My Computer\\C:";

/// `verb` is the command of the others, "put" or "get"; empty where they have none.
void CompareCopy(benchmark::State& state, const char* from, const char* to, const char* verb,
                 const QString& name, qint64 size, bool far) {
  SftpDesk desk(*servers);
  Comparison times(state);
  const quint16 port = far ? servers->Far(0) : servers->Near(0);
  const auto nearOf = [](const char* place) { return QByteArray(place).replace("Far", "Near"); };
  double processor = 0;
  for (auto iteration : state) {
    const double before = ProcessorSeconds();
    times.AddOurs(CopyOf(state, desk, Place(from, "out"), name, to, size));
    processor += ProcessorSeconds() - before;
    if (far) {
      times.AddNear(CopyOf(state, desk, Place(nearOf(from), "out"), name, nearOf(to), size));
    }
    if (*verb == '\0') {
      continue;
    }
    Clear(QStringLiteral("in"));
    QDir().mkpath(At(QStringLiteral("in")));
    const QString what =
        QStringLiteral("\"%1\" \"%2\"").arg(At(QStringLiteral("out/") + name), At(QStringLiteral("in")));
    times.AddSftp(others->Sftp(port, QStringLiteral("%1 -pr %2").arg(QString::fromLatin1(verb), what)));
    Clear(QStringLiteral("in"));
    QDir().mkpath(At(QStringLiteral("in")));
    if (size == kHundred) {
      times.AddLftp(others->Lftp(
          port,
          QStringLiteral("mirror -P 4 %1 %2").arg(*verb == 'p' ? QStringLiteral("-R") : QString(), what)));
    }
  }
  times.Report();
  state.counters["cpu_ms"] = processor * 1000 / static_cast<double>(state.iterations());
  Clear(QStringLiteral("in"));
}

void BM_HundredFilesUp(benchmark::State& state) {
  WriteFiles(QStringLiteral("out/hundred"), 100, 4096);
  CompareCopy(state, kDisk, "Far0", "put", QStringLiteral("hundred"), kHundred, true);
}
void BM_HundredFilesDown(benchmark::State& state) {
  WriteFiles(QStringLiteral("out/hundred"), 100, 4096);
  CompareCopy(state, "Far0", kDisk, "get", QStringLiteral("hundred"), kHundred, true);
}
void BM_HundredFilesBetweenTwo(benchmark::State& state) {
  WriteFiles(QStringLiteral("out/hundred"), 100, 4096);
  CompareCopy(state, "Far0", "Far1", "", QStringLiteral("hundred"), kHundred, true);
}
BENCHMARK(BM_HundredFilesUp)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_HundredFilesDown)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_HundredFilesBetweenTwo)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_LargeFileDownFar(benchmark::State& state) {
  Write(QStringLiteral("out/large"), 64 * kMib);
  CompareCopy(state, "Far0", kDisk, "get", QStringLiteral("large"), 64 * kMib, true);
}
void BM_LargeFileUp(benchmark::State& state) {
  Write(QStringLiteral("out/large"), 256 * kMib);
  CompareCopy(state, kDisk, "Near0", "put", QStringLiteral("large"), 256 * kMib, false);
}
void BM_LargeFileDown(benchmark::State& state) {
  Write(QStringLiteral("out/large"), 256 * kMib);
  CompareCopy(state, "Near0", kDisk, "get", QStringLiteral("large"), 256 * kMib, false);
}
BENCHMARK(BM_LargeFileDownFar)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_LargeFileUp)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_LargeFileDown)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

/// In a process of its own (--benchmark_filter), since a peak never falls.
void BM_MemoryOfOneGib(benchmark::State& state) {
  Write(QStringLiteral("out/huge"), 1024 * kMib);
  Write(QStringLiteral("out/little"), 4 * kMib);
  SftpDesk desk(*servers);
  static_cast<void>(CopyOf(state, desk, Place("Near0", "out"), QStringLiteral("little"), "Near1", 4 * kMib));
  rusage before{};
  ::getrusage(RUSAGE_SELF, &before);
  for (auto iteration : state) {
    state.SetIterationTime(
        CopyOf(state, desk, Place("Near0", "out"), QStringLiteral("huge"), "Near1", 1024 * kMib));
  }
  rusage after{};
  ::getrusage(RUSAGE_SELF, &after);
  state.counters["peak_growth_mib"] = static_cast<double>(after.ru_maxrss - before.ru_maxrss) / 1024;
  Clear(QStringLiteral("out"));
  Clear(QStringLiteral("in"));
}
BENCHMARK(BM_MemoryOfOneGib)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);

constexpr char kDeep[] = "a\\b\\c\\d";

void MakeDeep() {
  WriteFiles(QStringLiteral("a/b/c/d/e"), 1000, 16);
}

void RequireRows(benchmark::State& state, SftpDesk& desk, int rows) {
  if (desk.Rows() != rows) {
    state.SkipWithError("the folder is not shown");
  }
}

/// 1,000 entries five levels deep, opened in the list that shows the folder.
void BM_OpenShownFolder(benchmark::State& state) {
  MakeDeep();
  Comparison times(state);
  SftpDesk desk(*servers);
  const auto open = [&](const char* controller) {
    desk.Enter(QStringLiteral("Workspace\\") + Place(controller, kDeep));
    SftpDesk::LetTimePass();
    const double seconds = SecondsOf([&desk] { desk.EnterItem(QStringLiteral("e")); });
    RequireRows(state, desk, 1000);
    return seconds;
  };
  for (auto iteration : state) {
    times.AddOurs(open("Far0"));
    times.AddNear(open("Near0"));
  }
  times.Report();
}
BENCHMARK(BM_OpenShownFolder)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

/// The same by its address, when nothing of the controller was shown yet.
void BM_OpenTypedAddress(benchmark::State& state) {
  MakeDeep();
  Comparison times(state);
  SftpDesk desk(*servers);
  const auto open = [&](const char* controller) {
    SftpDesk::LetTimePass();
    const QString address = QStringLiteral("Workspace\\") + Place(controller, kDeep) + QStringLiteral("\\e");
    const double seconds = SecondsOf([&] { desk.Enter(address); });
    RequireRows(state, desk, 1000);
    return seconds;
  };
  for (auto iteration : state) {
    times.AddOurs(open("Far0"));
    times.AddNear(open("Near0"));
  }
  times.Report();
}
BENCHMARK(BM_OpenTypedAddress)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);

/// The provider behind its thread, without a window.
class Connected {
 public:
  explicit Connected(quint16 port)
      : files_(remote_.Context(),
               {QStringLiteral("Cell"), SftpProvider(nullptr).newOpener(),
                FileSystemRequest{.machine = FarServers::Machine(port), .option = {}, .control = {}}}) {}
  ~Connected() { remote_.Context().controllers->StopAll(std::chrono::seconds(20)); }
  Connected(const Connected&) = delete;
  Connected& operator=(const Connected&) = delete;

  FileSystem& Files() { return files_; }

 private:
  BlockingRemote remote_;
  RemoteFileSystem files_;
};

void BM_ListTenThousand(benchmark::State& state) {
  WriteFiles(QStringLiteral("many"), 10'000, 0);
  Comparison times(state);
  Connected far(servers->Far(0));
  Connected near(servers->Near(0));
  const auto list = [&](Connected& cell) {
    return SecondsOf([&] {
      const QString path = At(QStringLiteral("many")).sliced(1).replace(u'/', u'\\');
      if (cell.Files().List(path).size() != 10'000) {
        state.SkipWithError("the listing is not whole");
      }
    });
  };
  for (auto iteration : state) {
    times.AddOurs(list(far));
    times.AddNear(list(near));
    times.AddSftp(
        others->Sftp(servers->Far(0), QStringLiteral("ls -1f \"%1\"").arg(At(QStringLiteral("many")))));
  }
  times.Report();
  Clear(QStringLiteral("many"));
}
BENCHMARK(BM_ListTenThousand)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_Connect(benchmark::State& state) {
  Comparison times(state);
  for (auto iteration : state) {
    times.AddOurs(SecondsOf([] { Connected(servers->Far(0)); }));
    times.AddNear(SecondsOf([] { Connected(servers->Near(0)); }));
  }
  times.Report();
}
BENCHMARK(BM_Connect)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace
}  // namespace trevane::bench

int main(int count, char** values) {
  using namespace trevane;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(count, values);
  benchmark::Initialize(&count, values);
  if (!test::Sshd::IsAvailable()) {
    std::puts("The SSH servers were not fetched: see CONTRIBUTING. Nothing is measured.");
    return 0;
  }
  bench::FarServers servers;
  const bench::OtherClients others(servers);
  bench::servers = &servers;
  bench::others = &others;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
