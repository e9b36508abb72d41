// Controllers over FTP, the dialogue alone and as the program uses it, against curl and lftp in the same run,
// by turns. Where the server is "far", a round trip takes 40 ms: such figures hold on other machines.
#include "bench/engine/providers/ftp/FtpDesk.h"
#include "bench/engine/providers/ftp/FtpLine.h"
#include "bench/engine/providers/ftp/OtherFtpClients.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace trevane::bench {
namespace {

FtpLine* line = nullptr;
const OtherFtpClients* others = nullptr;
const QTemporaryDir* own = nullptr;

constexpr qint64 kMib = qint64(1024) * 1024;
constexpr qint64 kBigFile = 256 * kMib;
constexpr qint64 kSmallFile = 4096;
constexpr qint64 kDone = 226;

double SecondsOf(const std::function<void()>& work) {
  QElapsedTimer clock;
  clock.start();
  work();
  return static_cast<double>(clock.nsecsElapsed()) / 1e9;
}

double Median(std::vector<double> times) {
  std::sort(times.begin(), times.end());
  return times.empty() ? 0 : times[times.size() / 2];
}

/// Above 1 where the other one is slower.
void Report(benchmark::State& state, const std::vector<double>& ours, const std::string& name,
            const std::vector<double>& theirs) {
  state.counters["ours_ms"] = Median(ours) * 1000;
  if (!theirs.empty()) {
    state.counters[name + "_ms"] = Median(theirs) * 1000;
    state.counters[name + "/ours"] = Median(theirs) / Median(ours);
  }
}

void WriteFile(const QString& path, qint64 size) {
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly)) {
    std::abort();
  }
  const QByteArray piece(static_cast<qsizetype>(std::min(size, kMib)), 'x');
  for (qint64 left = size; left > 0; left -= piece.size()) {
    file.write(piece);
  }
}

void RequireSize(benchmark::State& state, const QString& path, qint64 size) {
  if (QFileInfo(path).size() != size) {
    state.SkipWithError("the operation failed");
  }
}

bool PutFile(CurlDialogue& dialogue, const QString& from, const QByteArray& to) {
  QFile file(from);
  const std::unique_ptr<FtpUpload> upload = dialogue.Store(to);
  if (!file.open(QIODevice::ReadOnly)) {
    return false;
  }
  for (QByteArray piece = file.read(kMib); !piece.isEmpty(); piece = file.read(kMib)) {
    upload->Write(piece);
  }
  return upload->Finish().code == kDone;
}

bool GetFile(CurlDialogue& dialogue, const QByteArray& from, const QString& to) {
  ftp::Reply refusal;
  const std::unique_ptr<FtpDownload> download = dialogue.Retrieve(from, 0, refusal);
  QFile file(to);
  if (!download || !file.open(QIODevice::WriteOnly)) {
    return false;
  }
  for (QByteArray piece = download->Read(kMib); !piece.isEmpty(); piece = download->Read(kMib)) {
    file.write(piece);
  }
  return download->Finish().code == kDone;
}

void BM_PutBigFile(benchmark::State& state) {
  const QString file = own->filePath(QStringLiteral("big"));
  WriteFile(file, kBigFile);
  const std::unique_ptr<CurlDialogue> dialogue = line->Connect(line->Near());
  std::vector<double> ours;
  std::vector<double> theirs;
  for (auto _ : state) {
    ours.push_back(SecondsOf([&] {
      if (!PutFile(*dialogue, file, line->Name("big"))) {
        state.SkipWithError("the operation failed");
      }
    }));
    state.SetIterationTime(ours.back());
    RequireSize(state, line->At(QStringLiteral("big")), kBigFile);
    if (const std::optional<double> seconds = others->Put(line->Near(), file, QStringLiteral("big"))) {
      theirs.push_back(*seconds);
    }
  }
  Report(state, ours, "curl", theirs);
}
BENCHMARK(BM_PutBigFile)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

void BM_GetBigFile(benchmark::State& state) {
  WriteFile(line->At(QStringLiteral("big")), kBigFile);
  const QString file = own->filePath(QStringLiteral("got"));
  const std::unique_ptr<CurlDialogue> dialogue = line->Connect(line->Near());
  std::vector<double> ours;
  std::vector<double> theirs;
  for (auto _ : state) {
    QFile::remove(file);
    ours.push_back(SecondsOf([&] {
      if (!GetFile(*dialogue, line->Name("big"), file)) {
        state.SkipWithError("the operation failed");
      }
    }));
    state.SetIterationTime(ours.back());
    RequireSize(state, file, kBigFile);
    QFile::remove(file);
    if (const std::optional<double> seconds = others->Get(line->Near(), QStringLiteral("big"), file)) {
      theirs.push_back(*seconds);
    }
  }
  Report(state, ours, "curl", theirs);
}
BENCHMARK(BM_GetBigFile)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

/// 100 files of 4 KiB, each straight under its name.
void BM_PutSmallFilesFar(benchmark::State& state) {
  constexpr int kFiles = 100;
  QDir(own->path()).mkdir(QStringLiteral("small"));
  for (int i = 0; i < kFiles; ++i) {
    WriteFile(own->filePath(QStringLiteral("small/%1").arg(i)), kSmallFile);
  }
  const std::unique_ptr<CurlDialogue> dialogue = line->Connect(line->Far());
  std::vector<double> ours;
  std::vector<double> theirs;
  for (auto _ : state) {
    ours.push_back(SecondsOf([&] {
      for (int i = 0; i < kFiles; ++i) {
        if (!PutFile(*dialogue, own->filePath(QStringLiteral("small/%1").arg(i)),
                     line->Name(QByteArray::number(i)))) {
          state.SkipWithError("the operation failed");
        }
      }
    }));
    state.SetIterationTime(ours.back());
    if (const std::optional<double> seconds = others->Lftp(
            line->Far(), QStringLiteral("lcd %1; mput *").arg(own->filePath(QStringLiteral("small"))))) {
      theirs.push_back(*seconds);
    }
  }
  Report(state, ours, "lftp", theirs);
  state.counters["trips_each"] = Median(ours) / FtpLine::kRoundTrip / kFiles;
}
BENCHMARK(BM_PutSmallFilesFar)->UseManualTime()->Iterations(2)->Unit(benchmark::kMillisecond);

/// 100 files of 4 KiB as a paste sends them: in batches, each file under a temporary name first, with its
/// date, onto a server of which nothing is known.
void BM_PasteSmallFilesFar(benchmark::State& state) {
  constexpr int kFiles = 100;
  constexpr int kMostInBatch = 64;
  constexpr qint64 kDate = 1'700'000'000'000;
  const QString small = own->filePath(QStringLiteral("small"));
  QDir(own->path()).mkdir(QStringLiteral("small"));
  for (int i = 0; i < kFiles; ++i) {
    WriteFile(QStringLiteral("%1/%2").arg(small).arg(i), kSmallFile);
  }
  std::vector<double> ours;
  std::vector<double> near;
  std::vector<double> theirs;
  const QString in = line->At(QStringLiteral("in"));
  const auto clear = [&in] {
    QDir(in).removeRecursively();
    QDir().mkpath(in);
  };
  const auto paste = [&](quint16 port) {
    clear();
    const std::shared_ptr<FileSystem> files = line->Open(port);
    const QString folder = QString::fromUtf8(line->Name("in")).sliced(1).replace(u'/', u'\\');
    const double seconds = SecondsOf([&] {
      for (int first = 0; first < kFiles; first += kMostInBatch) {
        std::vector<NewContent> batch;
        for (int i = first; i < std::min(first + kMostInBatch, kFiles); ++i) {
          NewContent file{QStringLiteral("%1\\%2").arg(folder).arg(i), QByteArray(kSmallFile, 'x')};
          file.request.traits.modified.msecs = kDate;
          batch.push_back(std::move(file));
        }
        for (const WriteResult& result : files->WriteMany(batch)) {
          if (!result.item) {
            state.SkipWithError(result.failure ? result.failure->what() : "the operation failed");
          }
        }
      }
    });
    if (QDir(in).entryList(QDir::Files | QDir::Hidden).size() != kFiles) {
      state.SkipWithError("the operation failed");
    }
    return seconds;
  };
  for (auto _ : state) {
    ours.push_back(paste(line->Far()));
    state.SetIterationTime(ours.back());
    near.push_back(paste(line->Near()));
    clear();
    if (const std::optional<double> seconds = others->Lftp(
            line->Far(),
            QStringLiteral("lcd %1; cd %2; mput *").arg(small, QString::fromUtf8(line->Name("in"))))) {
      theirs.push_back(*seconds);
    }
  }
  Report(state, ours, "lftp", theirs);
  state.counters["trips_each"] = (Median(ours) - Median(near)) / FtpLine::kRoundTrip / kFiles;
}
BENCHMARK(BM_PasteSmallFilesFar)->UseManualTime()->Iterations(2)->Unit(benchmark::kMillisecond);

constexpr int kEntries = 1000;
constexpr char kDeep[] = "a\\b\\c\\d";

void MakeDeep() {
  const QString folder = line->At(QStringLiteral("a/b/c/d/e"));
  QDir().mkpath(folder);
  for (int i = 0; i < kEntries; ++i) {
    WriteFile(QStringLiteral("%1/file %2").arg(folder).arg(i), 1);
  }
}

/// A folder of 1,000 entries five levels deep, in the window; the difference to the line without delay tells
/// the round trips.
void CompareOpening(benchmark::State& state,
                    const std::function<double(FtpDesk& desk, const QString& controller)>& open) {
  MakeDeep();
  std::vector<double> far;
  std::vector<double> near;
  const auto add = [&](FtpDesk& desk, std::vector<double>& times, const QString& controller) {
    times.push_back(open(desk, QStringLiteral("Workspace\\") + controller + u'\\' + QLatin1String(kDeep)));
    if (desk.Rows() != kEntries) {
      state.SkipWithError("the folder is not shown");
    }
  };
  for (auto _ : state) {
    FtpDesk desk(*line);
    // The first picture of so many rows takes longer.
    desk.Enter(QStringLiteral("Workspace\\My Computer\\C:\\a\\b\\c\\d\\e"));
    add(desk, far, QStringLiteral("Far"));
    state.SetIterationTime(far.back());
    add(desk, near, QStringLiteral("Near"));
  }
  state.counters["near_ms"] = Median(near) * 1000;
  state.counters["trips"] = (Median(far) - Median(near)) / FtpLine::kRoundTrip;
  // What a client that knows nothing but the path needs at least.
  if (const std::optional<double> seconds = others->Lftp(
          line->Far(),
          QStringLiteral("cls \"%1\" > /dev/null").arg(QString::fromUtf8(line->Name("a/b/c/d/e"))))) {
    state.counters["lftp_trips"] = *seconds / FtpLine::kRoundTrip;
  }
  QDir(line->At(QStringLiteral("a"))).removeRecursively();
}

/// In the list that shows the folder.
void BM_OpenShownFolder(benchmark::State& state) {
  CompareOpening(state, [](FtpDesk& desk, const QString& above) {
    desk.Enter(above);
    FtpDesk::LetTimePass();
    return SecondsOf([&desk] { desk.EnterItem(QStringLiteral("e")); });
  });
}
BENCHMARK(BM_OpenShownFolder)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

/// By its address, when nothing of the controller was shown yet.
void BM_OpenTypedAddress(benchmark::State& state) {
  CompareOpening(state, [](FtpDesk& desk, const QString& above) {
    FtpDesk::LetTimePass();
    return SecondsOf([&] { desk.Enter(above + QStringLiteral("\\e")); });
  });
}
BENCHMARK(BM_OpenTypedAddress)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

/// Small transfers in a row, beside three other clients that do the same.
void BM_ManySmallTransfers(benchmark::State& state) {
  constexpr int kTransfers = 900;
  constexpr int kOthers = 3;
  double longest = 0;
  for (auto _ : state) {
    std::atomic<bool> isOver = false;
    std::vector<std::thread> beside;
    beside.reserve(kOthers);
    for (int i = 0; i < kOthers; ++i) {
      beside.emplace_back([&isOver, i] {
        const std::unique_ptr<CurlDialogue> dialogue = line->Connect(line->Near());
        while (!isOver) {
          const std::unique_ptr<FtpUpload> upload =
              dialogue->Store(line->Name("beside" + QByteArray::number(i)));
          upload->Write(QByteArray(4096, 'x'));
          static_cast<void>(upload->Finish());
        }
      });
    }
    const std::unique_ptr<CurlDialogue> dialogue = line->Connect(line->Near());
    double all = 0;
    for (int i = 0; i < kTransfers; ++i) {
      const double seconds = SecondsOf([&] {
        if (i % 2 == 0) {
          const std::unique_ptr<FtpUpload> upload = dialogue->Store(line->Name("small"));
          upload->Write(QByteArray(4096, 'x'));
          static_cast<void>(upload->Finish());
        } else if (!GetFile(*dialogue, line->Name("small"), own->filePath(QStringLiteral("small file")))) {
          state.SkipWithError("the operation failed");
        }
      });
      all += seconds;
      longest = std::max(longest, seconds);
    }
    state.SetIterationTime(all);
    isOver = true;
    for (std::thread& each : beside) {
      each.join();
    }
  }
  state.counters["longest_ms"] = longest * 1000;
}
BENCHMARK(BM_ManySmallTransfers)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace trevane::bench

int main(int argc, char** argv) {
  if (!trevane::test::FtpDaemon::IsAvailable()) {
    std::puts(qPrintable(trevane::test::FtpDaemon::MissingText()));
    return 0;
  }
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  using Program = trevane::bench::FtpLine::Program;
  // vsftpd tells no facts of a single item.
  const bool isProFtpd = argc > 1 && QByteArray(argv[1]) == "proftpd";
  trevane::bench::FtpLine line(isProFtpd ? Program::ProFtpd : Program::Vsftpd);
  const trevane::bench::OtherFtpClients others(line);
  const QTemporaryDir own;
  trevane::bench::line = &line;
  trevane::bench::others = &others;
  trevane::bench::own = &own;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
