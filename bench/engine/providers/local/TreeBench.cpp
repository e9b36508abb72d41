// Copying and deleting a tree and copying one large file, against cp and rm in the same run.
#include "bench/providers/BenchVolumes.h"
#include "engine/providers/local/LocalFileSystem.h"

#include <QDir>
#include <QFile>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include <unistd.h>

namespace trevane::bench {
namespace {

using Clock = std::chrono::steady_clock;

double SecondsOf(const std::function<void()>& work) {
  const auto start = Clock::now();
  work();
  return std::chrono::duration<double>(Clock::now() - start).count();
}

double Median(std::vector<double>& times) {
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

void Shell(benchmark::State& state, const QString& command) {
  if (std::system(QFile::encodeName(command).constData()) != 0) {
    state.SkipWithError("the command failed");
  }
}

void Put(const QString& path, const QByteArray& content, int times = 1) {
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly)) {
    std::abort();
  }
  for (int i = 0; i < times; ++i) {
    file.write(content);
  }
}

void Report(benchmark::State& state, const char* other, std::vector<double>& theirs,
            std::vector<double>& ours) {
  const double their = Median(theirs);
  const double our = Median(ours);
  state.counters[std::string(other) + "_ms"] = their * 1000;
  state.counters["ours_ms"] = our * 1000;
  state.counters["ratio"] = our / their;
}

// 10,000 files of 4 KiB in 200 folders. What was written goes to the disk between the turns, outside of the
// times.
void BM_TreeAgainstCpAndRm(benchmark::State& state) {
  BenchVolumes volumes;
  const QString root = volumes.Root();
  for (int folder = 0; folder < 200; ++folder) {
    const QString path = root + QStringLiteral("tree/folder %1").arg(folder);
    QDir().mkpath(path);
    for (int file = 0; file < 50; ++file) {
      Put(path + QStringLiteral("/file %1").arg(file), QByteArray(4096, 'x'));
    }
  }
  LocalFileSystem files(volumes);
  std::vector<double> cp;
  std::vector<double> copy;
  std::vector<double> rm;
  std::vector<double> remove;
  ::sync();
  // By turns first and second, since the one that comes second finds what the first has warmed up.
  bool oursFirst = false;
  for (auto iteration : state) {
    const auto theirCopy = [&] {
      cp.push_back(SecondsOf([&] { Shell(state, QStringLiteral("cp -a '%1tree' '%1theirs'").arg(root)); }));
      ::sync();
    };
    const auto ourCopy = [&] {
      copy.push_back(SecondsOf([&] { files.Copy(QStringLiteral("tree"), QStringLiteral("ours"), false); }));
      ::sync();
    };
    const auto theirRemove = [&] {
      rm.push_back(SecondsOf([&] { Shell(state, QStringLiteral("rm -r '%1theirs'").arg(root)); }));
      ::sync();
    };
    const auto ourRemove = [&] {
      remove.push_back(SecondsOf([&] { files.Remove(QStringLiteral("ours")); }));
      ::sync();
    };
    if (oursFirst) {
      ourCopy();
      theirCopy();
      ourRemove();
      theirRemove();
    } else {
      theirCopy();
      ourCopy();
      theirRemove();
      ourRemove();
    }
    oursFirst = !oursFirst;
    state.SetIterationTime(copy.back());
  }
  Report(state, "cp", cp, copy);
  const double theirs = Median(rm);
  const double ours = Median(remove);
  state.counters["rm_ms"] = theirs * 1000;
  state.counters["remove_ms"] = ours * 1000;
  state.counters["remove_ratio"] = ours / theirs;
}
BENCHMARK(BM_TreeAgainstCpAndRm)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(8);

void BM_LargeFileAgainstCp(benchmark::State& state) {
  BenchVolumes volumes;
  const QString root = volumes.Root();
  Put(root + QStringLiteral("large"), QByteArray(1 << 20, 'x'), static_cast<int>(state.range(0)));
  LocalFileSystem files(volumes);
  std::vector<double> cp;
  std::vector<double> copy;
  ::sync();
  bool oursFirst = false;
  for (auto iteration : state) {
    const auto theirs = [&] {
      cp.push_back(SecondsOf([&] { Shell(state, QStringLiteral("cp -a '%1large' '%1theirs'").arg(root)); }));
      QFile::remove(root + QStringLiteral("theirs"));
      ::sync();
    };
    const auto ours = [&] {
      copy.push_back(SecondsOf([&] { files.Copy(QStringLiteral("large"), QStringLiteral("ours"), false); }));
      QFile::remove(root + QStringLiteral("ours"));
      ::sync();
    };
    if (oursFirst) {
      ours();
      theirs();
    } else {
      theirs();
      ours();
    }
    oursFirst = !oursFirst;
    state.SetIterationTime(copy.back());
  }
  Report(state, "cp", cp, copy);
}
BENCHMARK(BM_LargeFileAgainstCp)->Arg(1024)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(4);

}  // namespace
}  // namespace trevane::bench
