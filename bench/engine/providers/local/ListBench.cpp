// List of the local file system against what a C program does at least: readdir and one statx an entry. Both
// run by turns in one benchmark, so that the ratio stands on one machine in one state.
#include "bench/providers/BenchVolumes.h"
#include "engine/providers/local/LocalFileSystem.h"

#include <QFile>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

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

double Median(std::vector<double>& times) {
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

long ReaddirAndStatx(const char* folder) {
  DIR* open = ::opendir(folder);
  long bytes = 0;
  while (const dirent* entry = ::readdir(open)) {
    struct statx status {};
    if (::statx(::dirfd(open), entry->d_name, AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS | STATX_BTIME,
                &status) == 0) {
      bytes += static_cast<long>(status.stx_size);
    }
  }
  ::closedir(open);
  return bytes;
}

void BM_ListAgainstReaddirAndStatx(benchmark::State& state) {
  BenchVolumes volumes;
  const QByteArray folder = QFile::encodeName(volumes.Root());
  for (int64_t i = 0; i < state.range(0); ++i) {
    const QByteArray path = folder + "some file name " + QByteArray::number(static_cast<qint64>(i)) + ".txt";
    ::close(::open(path.constData(), O_WRONLY | O_CREAT, 0644));
  }
  LocalFileSystem files(volumes);
  benchmark::DoNotOptimize(ReaddirAndStatx(folder.constData()));
  std::vector<double> plain;
  std::vector<double> ours;
  for (auto iteration : state) {
    auto start = Clock::now();
    benchmark::DoNotOptimize(ReaddirAndStatx(folder.constData()));
    plain.push_back(SecondsSince(start));
    start = Clock::now();
    const Listing listing = files.List(QStringLiteral("C:"));
    ours.push_back(SecondsSince(start));
    benchmark::DoNotOptimize(listing.data());
    state.SetIterationTime(ours.back());
  }
  const double plainSeconds = Median(plain);
  const double ourSeconds = Median(ours);
  state.counters["c_ms"] = plainSeconds * 1000;
  state.counters["list_ms"] = ourSeconds * 1000;
  state.counters["ratio"] = ourSeconds / plainSeconds;
}
BENCHMARK(BM_ListAgainstReaddirAndStatx)
    ->Arg(10000)
    ->Arg(100000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2.0);

}  // namespace
}  // namespace trevane::bench
