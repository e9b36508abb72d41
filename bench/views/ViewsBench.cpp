// The models and views of tree and list: filling, sorting, merging, and what an entry costs in memory.

#include "base/DateFormatter.h"
#include "platform/ShellIcons.h"
#include "views/ImageList.h"
#include "views/addresses/ImageKeys.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileListModel.h"
#include "views/list/FileListView.h"
#include "views/list/FileTypes.h"
#include "views/list/ListSorting.h"
#include "views/tree/FolderTreeModel.h"
#include "views/tree/FolderTreeView.h"

#include <QApplication>
#include <QDateTime>
#include <QPixmap>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include <malloc.h>

namespace trevane {
namespace {

class NamedTypes final : public ShellIcons {
 public:
  std::optional<ShellFileInfo> ForExtension(const QString& probe) override {
    return ShellFileInfo{{}, probe.mid(1).toLower() + QStringLiteral(" document")};
  }
  std::optional<ShellFileInfo> ForFolder(bool /*open*/) override {
    return ShellFileInfo{{}, QStringLiteral("Folder")};
  }
};

struct Entry {
  QString name;
  qint64 size;
  qint64 time;
};

/// Names as cameras and programs give them, in no order.
std::vector<Entry> MakeEntries(int count) {
  static const char* const kEndings[] = {"txt", "jpg", "cpp", "h", "pdf", "log"};
  std::mt19937_64 random(1);
  std::vector<Entry> entries;
  entries.reserve(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) {
    const QString name = QStringLiteral("File_%1.%2")
                             .arg(i, 6, 10, QChar(u'0'))
                             .arg(QLatin1StringView(kEndings[random() % std::size(kEndings)]));
    entries.push_back({name, static_cast<qint64>(random() % 100'000'000),
                       1'600'000'000'000 + static_cast<qint64>(random() % 160'000'000'000)});
  }
  std::shuffle(entries.begin(), entries.end(), random);
  return entries;
}

/// What the window has once, whatever folder it shows.
struct Fixture {
  NamedTypes names;
  ImageList images{QStringLiteral(":/none/")};
  FileTypes types{names, images};
  DateFormatter dates;
};

void AddAll(FileListModel& list, FileTypes& types, const std::vector<Entry>& entries, size_t flushEvery = 0) {
  list.Reserve(static_cast<qsizetype>(entries.size()));
  size_t added = 0;
  for (const Entry& entry : entries) {
    const FileTypeRecord& type = types.GetFileType(entry.name);
    // The name is a copy, as it is when the listing that it came from is gone.
    const auto item =
        list.AddListItem({}, 0x20, QString(entry.name.constData(), entry.name.size()), type.imageKey);
    list.SetDetails(item, {entry.size, Date{entry.time}, Date{entry.time}, Date{entry.time}, type.id});
    if (flushEvery != 0 && ++added % flushEvery == 0) {
      list.FlushStaged();
      QCoreApplication::processEvents();
    }
  }
  list.FlushStaged();
}

void FillSortAndPaintList(benchmark::State& state) {
  Fixture fixture;
  const std::vector<Entry> entries = MakeEntries(static_cast<int>(state.range(0)));
  FileListModel list(&fixture.images, &fixture.types, &fixture.dates);
  SortByName(list);
  FileListView view(&fixture.images);
  view.SetFiles(&list);
  view.resize(900, 600);
  view.show();
  QCoreApplication::processEvents();
  for (auto _ : state) {
    list.Clear();
    AddAll(list, fixture.types, entries, static_cast<size_t>(state.range(1)));
    QCoreApplication::processEvents();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(FillSortAndPaintList)
    ->ArgNames({"entries", "flushEvery"})
    ->Args({10'000, 0})
    ->Args({100'000, 0})
    ->Args({100'000, 10'000})
    ->Unit(benchmark::kMillisecond);

void MemoryOfList(benchmark::State& state) {
  Fixture fixture;
  const std::vector<Entry> entries = MakeEntries(static_cast<int>(state.range(0)));
  double bytes = 0;
  for (auto _ : state) {
    FileListModel list(&fixture.images, &fixture.types, &fixture.dates);
    SortByName(list);
    FileListView view(&fixture.images);
    view.SetFiles(&list);
    view.resize(900, 600);
    view.show();
    QCoreApplication::processEvents();
    const struct mallinfo2 before = mallinfo2();
    AddAll(list, fixture.types, entries);
    QCoreApplication::processEvents();
    view.grab();
    const struct mallinfo2 after = mallinfo2();
    bytes = static_cast<double>(after.uordblks + after.hblkhd) -
            static_cast<double>(before.uordblks + before.hblkhd);
  }
  state.counters["bytes_an_entry"] = bytes / static_cast<double>(state.range(0));
}
BENCHMARK(MemoryOfList)->Arg(10'000)->Arg(100'000)->Iterations(1)->Unit(benchmark::kMillisecond);

/// With a view, as the user has it; from one column to another and back, half of it each.
void SortByColumn(benchmark::State& state) {
  Fixture fixture;
  const std::vector<Entry> entries = MakeEntries(static_cast<int>(state.range(0)));
  FileListModel list(&fixture.images, &fixture.types, &fixture.dates);
  SortByName(list);
  FileListView view(&fixture.images);
  view.SetFiles(&list);
  view.resize(900, 600);
  view.show();
  AddAll(list, fixture.types, entries);
  QCoreApplication::processEvents();
  const auto column = static_cast<int>(state.range(1));
  for (auto _ : state) {
    state.PauseTiming();
    list.SetSorting({true, column == 0 ? 1 : 0, false});
    QCoreApplication::processEvents();
    state.ResumeTiming();
    list.SetSorting({true, column, false});
    QCoreApplication::processEvents();
  }
}
BENCHMARK(SortByColumn)
    ->ArgNames({"entries", "column"})
    ->ArgsProduct({{100'000}, {0, 1, 2, 3, 6}})
    ->Unit(benchmark::kMillisecond);

struct Tree {
  explicit Tree(const ImageList* images) : model(images) {
    FolderNode* root =
        model.AddTreeNode(nullptr, imagekey::kWorkspace, QStringLiteral("Workspace"), TAG_WORKSPACE);
    FolderNode* computer =
        model.AddTreeNode(root, imagekey::kMyCom, QStringLiteral("My Computer"), kMyComputerTag);
    drive = model.AddTreeNode(computer, imagekey::kHdd, QStringLiteral("C:"), TAG_DRIVE | TAG_HDD);
    model.SetSorted(drive, true);
  }
  FolderNode* AddFolder(FolderNode* parent, const QString& name) {
    FolderNode* node = model.AddTreeNode(parent, imagekey::kFolderClosed, name, 0x10);
    model.SetExpandedImageKey(node, imagekey::kFolderOpen);
    model.SetSorted(node, true);
    return node;
  }
  FolderTreeModel model;
  FolderNode* drive = nullptr;
};

void FillTreeInABatch(benchmark::State& state) {
  Fixture fixture;
  const std::vector<Entry> entries = MakeEntries(static_cast<int>(state.range(0)));
  Tree tree(&fixture.images);
  FolderTreeView view(&fixture.images);
  view.SetFolders(&tree.model);
  view.resize(300, 600);
  view.expandAll();
  view.show();
  double bytes = 0;
  for (auto _ : state) {
    state.PauseTiming();
    tree.model.RemoveChildren(tree.drive);
    view.expand(tree.model.IndexOf(tree.drive));
    QCoreApplication::processEvents();
    const struct mallinfo2 before = mallinfo2();
    state.ResumeTiming();
    tree.model.BeginBatch(tree.drive);
    for (const Entry& entry : entries) {
      if (tree.model.FindChild(tree.drive, entry.name) == nullptr) {
        tree.AddFolder(tree.drive, entry.name);
      }
    }
    tree.model.EndBatch();
    view.expand(tree.model.IndexOf(tree.drive));
    QCoreApplication::processEvents();
    const struct mallinfo2 after = mallinfo2();
    bytes = static_cast<double>(after.uordblks + after.hblkhd) -
            static_cast<double>(before.uordblks + before.hblkhd);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  // Names are shared with the entries here, as they are with the list.
  state.counters["bytes_an_entry"] = bytes / static_cast<double>(state.range(0));
}
BENCHMARK(FillTreeInABatch)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

/// Showing a folder of 1,000 subfolders beside as many siblings as fill the window, and beside 100,000.
void AThousandFolders(benchmark::State& state) {
  Fixture fixture;
  const std::vector<Entry> siblings = MakeEntries(static_cast<int>(state.range(0)));
  const std::vector<Entry> inside = MakeEntries(1000);
  Tree tree(&fixture.images);
  FolderTreeView view(&fixture.images);
  view.SetFolders(&tree.model);
  view.resize(300, 600);
  view.show();
  tree.model.BeginBatch(tree.drive);
  for (const Entry& entry : siblings) {
    tree.AddFolder(tree.drive, entry.name);
  }
  FolderNode* folder = tree.AddFolder(tree.drive, QStringLiteral("File_050000"));
  tree.model.EndBatch();
  for (FolderNode* node = tree.drive; node != nullptr; node = node->Parent()) {
    view.expand(tree.model.IndexOf(node));
  }
  view.SelectNode(folder);
  QCoreApplication::processEvents();
  for (auto _ : state) {
    state.PauseTiming();
    tree.model.RemoveChildren(folder);
    QCoreApplication::processEvents();
    state.ResumeTiming();
    tree.model.BeginBatch(folder);
    for (const Entry& entry : inside) {
      if (tree.model.FindChild(folder, entry.name) == nullptr) {
        tree.AddFolder(folder, entry.name);
      }
    }
    tree.model.EndBatch();
    QCoreApplication::processEvents();
  }
}
BENCHMARK(AThousandFolders)->ArgName("siblings")->Arg(40)->Arg(100'000)->Unit(benchmark::kMicrosecond);

void DateTextOurs(benchmark::State& state) {
  const std::vector<Entry> entries = MakeEntries(10'000);
  const DateFormatter dates(QLocale(QStringLiteral("en_US")));
  size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(dates.Format(Date{entries[i++ % entries.size()].time}));
  }
}
BENCHMARK(DateTextOurs);

void DateTextOfTheLocale(benchmark::State& state) {
  const std::vector<Entry> entries = MakeEntries(10'000);
  const QLocale locale(QStringLiteral("en_US"));
  size_t i = 0;
  for (auto _ : state) {
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(entries[i++ % entries.size()].time);
    benchmark::DoNotOptimize(QString(locale.toString(time.date(), QLocale::ShortFormat) + u' ' +
                                     locale.toString(time.time(), QLocale::LongFormat)));
  }
}
BENCHMARK(DateTextOfTheLocale);

}  // namespace
}  // namespace trevane

int main(int argc, char** argv) {
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  QApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
