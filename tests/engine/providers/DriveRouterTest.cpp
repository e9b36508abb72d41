#include "engine/files/HeldFolder.h"
#include "engine/files/WholeFile.h"
#include "engine/providers/DriveRouter.h"
#include "engine/providers/ProviderTable.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "engine/remote/RemoteContext.h"
#include "engine/remote/RemoteFileSystem.h"
#include "tests/engine/providers/ProviderBed.h"
#include "tests/support/FakeShellIcons.h"
#include "tests/support/FakeVolumes.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/ScriptedWaiter.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <thread>

namespace trevane::test {
namespace {

using Hearing = ScriptedServer::Hearing;

const QString kFixed = QStringLiteral("C:");
const QString kStick = QStringLiteral("D:");
const QString kOther = QStringLiteral("E:");
const QString kNetwork = QStringLiteral("N:");

/// Drives below a temporary folder, whose files are asked through scripted servers: one for the window's
/// thread, and one for each thread in the order in which they were started.
struct RoutedWorld {
  RoutedWorld() {
    for (const QString& name : {kFixed, kStick, kOther, kNetwork}) {
      EXPECT_TRUE(QDir(folder.path()).mkpath(name.first(1)));
    }
    volumes.Set({Drive(kFixed, drivetype::kFixed), Drive(kStick, drivetype::kRemovable),
                 Drive(kOther, drivetype::kRemovable), Drive(kNetwork, drivetype::kRemote)});
    router = std::make_unique<DriveRouter>(
        context, volumes, [this](Volumes& drives, const FileSystemRequest& request) {
          auto server = std::make_shared<ScriptedServer>(std::make_shared<LocalFileSystem>(drives));
          const std::lock_guard lock(mutex);
          servers.push_back(server);
          if (servers.size() == hangingServer) {
            server->HangAt(1, Hearing::Deaf);
          }
          return server->Open(request.control);
        });
  }
  ~RoutedWorld() {
    for (const auto& server : servers) {
      server->Release();
    }
    EXPECT_TRUE(context.controllers->StopAll(std::chrono::seconds(20)));
  }
  RoutedWorld(const RoutedWorld&) = delete;
  RoutedWorld& operator=(const RoutedWorld&) = delete;

  [[nodiscard]] Volume Drive(const QString& name, qint32 kind) const {
    return {name, folder.filePath(name.first(1)) + u'/', kind};
  }
  void AddFile(const QString& path, const QByteArray& content) {
    LocalFileSystem local(volumes);
    static_cast<void>(WriteNewFile(local, path, content, {}));
  }
  [[nodiscard]] QByteArray ContentOf(const QString& path) {
    LocalFileSystem local(volumes);
    return ReadFile(local, path);
  }
  [[nodiscard]] size_t Servers() {
    const std::lock_guard lock(mutex);
    return servers.size();
  }
  /// Waits until it was opened.
  [[nodiscard]] ScriptedServer& Server(size_t number) {
    while (Servers() <= number) {
      std::this_thread::yield();
    }
    const std::lock_guard lock(mutex);
    return *servers.at(number);
  }
  /// Whether all calls that this server has got came from the test's own thread, and some did.
  [[nodiscard]] bool WasCalledHere(size_t number) {
    const std::vector<std::thread::id> threads = Server(number).CalledOn();
    return !threads.empty() && std::all_of(threads.begin(), threads.end(), [](std::thread::id thread) {
      return thread == std::this_thread::get_id();
    });
  }
  [[nodiscard]] bool WasCalledElsewhere(size_t number) {
    const std::vector<std::thread::id> threads = Server(number).CalledOn();
    return !threads.empty() && std::none_of(threads.begin(), threads.end(), [](std::thread::id thread) {
      return thread == std::this_thread::get_id();
    });
  }

  QTemporaryDir folder;
  FakeVolumes volumes;
  WindowQueue queue;
  ScriptedWaiter waiter;
  RemoteContext context{queue, waiter};
  std::mutex mutex;
  std::vector<std::shared_ptr<ScriptedServer>> servers;
  /// The one of that number hangs at its first call, counted from 1.
  size_t hangingServer = 0;
  std::unique_ptr<DriveRouter> router;
};

/// Every member that has one path, on the drive `drive`, which holds the file "file" and the folder "folder".
std::vector<std::function<void(FileSystem&)>> MembersOn(const QString& drive) {
  const QString file = drive + QStringLiteral("\\file");
  const QString inside = drive + QStringLiteral("\\folder");
  return {
      [=](FileSystem& files) { EXPECT_FALSE(files.List(drive).empty()); },
      [=](FileSystem& files) { files.ListInBatches(drive, [](Listing&&) { return true; }); },
      [=](FileSystem& files) { EXPECT_EQ(files.Stat(file).size, 4); },
      [=](FileSystem& files) { EXPECT_TRUE(files.Find(file)); },
      [=](FileSystem& files) { EXPECT_EQ(ReadFile(files, file), "text"); },
      [=](FileSystem& files) { EXPECT_EQ(files.ReadMany({file}).size(), 1U); },
      [=](FileSystem& files) {
        EXPECT_EQ(files.WriteMany({{inside + QStringLiteral("\\many"), "1", {}}}).size(), 1U);
      },
      [=](FileSystem& files) { WriteFile(files, inside + QStringLiteral("\\written"), "2"); },
      [=](FileSystem& files) { EXPECT_FALSE(files.ReadLink(file)); },
      [=](FileSystem& files) { static_cast<void>(files.Traits(file)); },
      [=](FileSystem& files) { files.SetTraits(file, {}); },
      [=](FileSystem& files) { files.CreateFile(inside + QStringLiteral("\\created")); },
      [=](FileSystem& files) { files.CreateFolder(inside + QStringLiteral("\\made")); },
      [=](FileSystem& files) { files.CreateClosedFolder(inside + QStringLiteral("\\closed")); },
      [=](FileSystem& files) { EXPECT_EQ(files.Hold(inside)->Path(), inside); },
      [=](FileSystem& files) { static_cast<void>(files.Hold(inside)->List()); },
      [=](FileSystem& files) { files.Copy(file, inside + QStringLiteral("\\copy"), false); },
      [=](FileSystem& files) {
        files.Rename(inside + QStringLiteral("\\copy"), inside + QStringLiteral("\\new"), false);
      },
      [=](FileSystem& files) { files.RemoveAlone(inside + QStringLiteral("\\new")); },
      [=](FileSystem& files) { files.Remove(inside); },
      [=](FileSystem& files) { EXPECT_TRUE(files.Identity(file)); },
      [=](FileSystem& files) { EXPECT_FALSE(files.FolderIdentities(drive).empty()); },
  };
}

void AddItems(RoutedWorld& world, const QString& drive) {
  world.AddFile(drive + QStringLiteral("\\file"), "text");
  LocalFileSystem(world.volumes).CreateFolder(drive + QStringLiteral("\\folder"));
}

TEST(DriveRouterTest, CallsOfAFixedDriveRunOnTheWindowsThread) {
  RoutedWorld world;
  AddItems(world, kFixed);
  for (const auto& member : MembersOn(kFixed)) {
    member(*world.router);
  }
  EXPECT_EQ(world.Servers(), 1U);
  EXPECT_EQ(world.waiter.Waits(), 0);
  EXPECT_TRUE(world.WasCalledHere(0));
}

TEST(DriveRouterTest, CallsOfASlowDriveRunOnItsThread) {
  for (const QString& drive : {kStick, kNetwork}) {
    RoutedWorld world;
    AddItems(world, drive);
    for (const auto& member : MembersOn(drive)) {
      member(*world.router);
    }
    ASSERT_EQ(world.Servers(), 2U);
    EXPECT_TRUE(world.Server(0).Calls().isEmpty());
    EXPECT_TRUE(world.WasCalledElsewhere(1));
  }
}

TEST(DriveRouterTest, TheKindOfADriveCountsAndNotTheSpelling) {
  RoutedWorld world;
  world.AddFile(QStringLiteral("D:\\file"), "text");
  for (const QString& path :
       {QStringLiteral("d:\\file"), QStringLiteral("\\D:\\file"), QStringLiteral("D:/file")}) {
    EXPECT_TRUE(world.router->Find(path)) << path.toStdString();
    EXPECT_TRUE(world.Server(0).Calls().isEmpty());
  }
  EXPECT_EQ(world.Servers(), 2U);
  // Without a drive it starts at the first one.
  EXPECT_FALSE(world.router->Find(QStringLiteral("file")));
  EXPECT_TRUE(world.WasCalledHere(0));
}

TEST(DriveRouterTest, TheTopIsListedWithoutASlowDrive) {
  RoutedWorld world;
  QStringList names;
  for (const FileEntry& entry : world.router->List({})) {
    names.append(entry.name);
  }
  EXPECT_EQ(names, QStringList({kFixed, kStick, kOther, kNetwork}));
  EXPECT_EQ(world.Servers(), 1U);
  EXPECT_EQ(world.waiter.Waits(), 0);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(world.router->Stat(QStringLiteral("Z:\\a"))); }),
            error::kNotFound);
  EXPECT_EQ(world.waiter.Waits(), 0);
}

TEST(DriveRouterTest, AHangingDriveDoesNotHoldAFixedOne) {
  RoutedWorld world;
  world.AddFile(QStringLiteral("C:\\file"), "text");
  world.hangingServer = 2;
  world.waiter.SetTurn([&](RunningCall& call) {
    if (!call.IsCancelled()) {
      if (!world.Server(1).WaitUntilHanging(call)) {
        return false;
      }
      call.Cancel();
    }
    return call.IsCancelled();
  });
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(world.router->List(kStick)); }), error::kCancelled);
  const int waits = world.waiter.Waits();
  EXPECT_EQ(world.router->List(kFixed).size(), 1U);
  EXPECT_EQ(world.router->List({}).size(), 4U);
  EXPECT_TRUE(world.router->TakeLeftovers().empty());
  EXPECT_EQ(world.waiter.Waits(), waits);
  // Another slow one works, too, and the hanging one over a new thread.
  world.waiter.SetTurn({});
  EXPECT_TRUE(world.router->List(kOther).empty());
  EXPECT_TRUE(world.router->List(kStick).empty());
  EXPECT_EQ(world.Servers(), 4U);
}

TEST(DriveRouterTest, ASilentDriveIsNamedByItsFailure) {
  RoutedWorld world;
  world.hangingServer = 2;
  size_t attempt = 0;
  const RunningCall* last = nullptr;
  world.waiter.SetTurn([&](RunningCall& call) {
    if (&call != last) {
      last = &call;
      world.Server(++attempt).WaitUntilHanging();
      // The reading is tried once more.
      world.hangingServer = 3;
    }
    return true;
  });
  EXPECT_EQ(ErrorTextOf([&] { static_cast<void>(world.router->List(kStick)); }),
            QStringLiteral("The drive D: has not answered for 10 seconds: D:"));
}

TEST(DriveRouterTest, ASlowMediumMayTakeItsTimeToWrite) {
  RoutedWorld world;
  world.hangingServer = 2;
  world.waiter.SetTurn([&](RunningCall& call) {
    if (world.waiter.Now() < 60'000) {
      world.Server(1).WaitUntilHanging();
      EXPECT_FALSE(call.IsCancelled());
      return true;
    }
    world.Server(1).Release();
    return false;
  });
  world.router->CreateFolder(QStringLiteral("D:\\new"));
  EXPECT_GE(world.waiter.Now(), 60'000);
  EXPECT_TRUE(LocalFileSystem(world.volumes).Find(QStringLiteral("D:\\new")));
}

TEST(DriveRouterTest, ACallWithTwoPathsIsThatOfTheSlowerDrive) {
  struct Case {
    QString from;
    QString to;
    /// The drive whose thread does it; empty for none.
    QString drive;
  };
  for (const Case& one :
       {Case{kFixed, kFixed, {}}, Case{kFixed, kStick, kStick}, Case{kStick, kFixed, kStick},
        Case{kStick, kNetwork, kNetwork}, Case{kNetwork, kStick, kNetwork}, Case{kStick, kOther, kOther}}) {
    RoutedWorld world;
    world.AddFile(one.from + QStringLiteral("\\file"), "text");
    if (!one.drive.isEmpty()) {
      // Starts its thread.
      static_cast<void>(world.router->List(one.drive));
    }
    world.router->Copy(one.from + QStringLiteral("\\file"), one.to + QStringLiteral("\\copy"), false);
    EXPECT_EQ(world.ContentOf(one.to + QStringLiteral("\\copy")), "text");
    EXPECT_EQ(world.Servers(), one.drive.isEmpty() ? 1U : 2U)
        << one.from.toStdString() << " " << one.to.toStdString();
    world.router->Rename(one.from + QStringLiteral("\\file"), one.to + QStringLiteral("\\moved"), false);
    EXPECT_EQ(world.Servers(), one.drive.isEmpty() ? 1U : 2U);
  }
}

TEST(DriveRouterTest, ABatchMayNameSeveralDrives) {
  RoutedWorld world;
  const std::vector<WriteResult> written = world.router->WriteMany({{QStringLiteral("C:\\a"), "1", {}},
                                                                    {QStringLiteral("D:\\b"), "2", {}},
                                                                    {QStringLiteral("N:\\c"), "3", {}}});
  ASSERT_EQ(written.size(), 3U);
  for (const WriteResult& result : written) {
    EXPECT_FALSE(result.failure);
  }
  const std::vector<ReadResult> read =
      world.router->ReadMany({QStringLiteral("C:\\a"), QStringLiteral("D:\\b"), QStringLiteral("N:\\c")});
  ASSERT_EQ(read.size(), 3U);
  EXPECT_EQ(read[0].content, "1");
  EXPECT_EQ(read[1].content, "2");
  EXPECT_EQ(read[2].content, "3");
}

TEST(DriveRouterTest, ADriveThatBecomesFixedIsAskedDirectly) {
  RoutedWorld world;
  world.AddFile(QStringLiteral("D:\\file"), "text");
  EXPECT_EQ(world.router->List(kStick).size(), 1U);
  world.volumes.Set({world.Drive(kFixed, drivetype::kFixed), world.Drive(kStick, drivetype::kFixed)});
  const int waits = world.waiter.Waits();
  EXPECT_EQ(world.router->List(kStick).size(), 1U);
  EXPECT_EQ(world.waiter.Waits(), waits);
  EXPECT_TRUE(world.WasCalledHere(0));
}

TEST(DriveRouterTest, AnotherMediumUnderTheSameLetterIsSeen) {
  RoutedWorld world;
  world.AddFile(QStringLiteral("D:\\old"), "text");
  world.AddFile(QStringLiteral("E:\\new"), "text");
  EXPECT_EQ(world.router->List(kStick).front().name, QStringLiteral("old"));
  Volume other = world.Drive(kOther, drivetype::kRemovable);
  other.name = kStick;
  world.volumes.Set({world.Drive(kFixed, drivetype::kFixed), other});
  EXPECT_EQ(world.router->List(kStick).front().name, QStringLiteral("new"));
  EXPECT_EQ(world.Servers(), 3U);
}

TEST(DriveRouterTest, AnUnpluggedDriveIsNotFound) {
  RoutedWorld world;
  world.AddFile(QStringLiteral("D:\\file"), "text");
  const std::shared_ptr<HeldFolder> held = world.router->Hold(kStick);
  world.volumes.Set({world.Drive(kFixed, drivetype::kFixed)});
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(world.router->List(kStick)); }), error::kNotFound);
  // What was opened before has its thread still.
  EXPECT_EQ(held->List().size(), 1U);
}

TEST(DriveRouterTest, ADriveThatComesLaterIsKnownToTheSlowOne) {
  RoutedWorld world;
  world.volumes.Set({world.Drive(kFixed, drivetype::kFixed), world.Drive(kStick, drivetype::kRemovable)});
  EXPECT_TRUE(world.router->List(kStick).empty());
  world.volumes.Set({world.Drive(kFixed, drivetype::kFixed), world.Drive(kStick, drivetype::kRemovable),
                     world.Drive(kOther, drivetype::kFixed)});
  world.AddFile(QStringLiteral("E:\\file"), "text");
  world.router->Copy(QStringLiteral("E:\\file"), QStringLiteral("D:\\copy"), false);
  EXPECT_EQ(world.ContentOf(QStringLiteral("D:\\copy")), "text");
}

TEST(DriveRouterTest, NothingRunsHereWhenItEnds) {
  RoutedWorld world;
  world.AddFile(QStringLiteral("D:\\file"), "text");
  auto source = world.router->OpenSource(QStringLiteral("D:\\file"));
  const int waits = world.waiter.Waits();
  source.reset();
  world.router.reset();
  EXPECT_EQ(world.waiter.Waits(), waits);
  ASSERT_TRUE(world.context.controllers->StopAll(std::chrono::seconds(20)));
  for (const std::thread::id thread : world.Server(1).EndedOn()) {
    EXPECT_NE(thread, std::this_thread::get_id());
  }
}

TEST(DriveRouterTest, TheShippedProgramRoutesSlowDrives) {
  RoutedWorld world;
  world.AddFile(QStringLiteral("C:\\file"), "text");
  world.AddFile(QStringLiteral("D:\\file"), "text");
  FakeShellIcons icons;
  icons.Know(QStringLiteral(".TXT"), QStringLiteral("Text Document"));
  const std::shared_ptr<FileSystem> files =
      ShippedProviders(world.volumes, &icons, &world.context).front().open({});
  const auto isThreadRunning = [&] {
    return !world.context.controllers->Running()->WaitForNone(std::chrono::milliseconds(0));
  };
  EXPECT_EQ(files->List(kFixed).size(), 1U);
  EXPECT_FALSE(isThreadRunning());
  EXPECT_EQ(files->List(kStick).size(), 1U);
  EXPECT_TRUE(isThreadRunning());
  const int waits = world.waiter.Waits();
  FileEntry entry;
  entry.name = QStringLiteral("a.txt");
  EXPECT_EQ(files->TypeName(entry), QStringLiteral("Text Document"));
  EXPECT_EQ(world.waiter.Waits(), waits);
}

TEST(DriveRouterTest, AShareDescribesTypesLikeADrive) {
  RoutedWorld world;
  FakeShellIcons icons;
  icons.Know(QStringLiteral(".TXT"), QStringLiteral("Text Document"));
  const ProviderTable table = ShippedProviders(world.volumes, &icons, &world.context);
  const std::shared_ptr<FileSystem> local = table.front().open({});
  const Provider& share = table.at(1);
  ASSERT_TRUE(share.isSlow);
  RemoteConnection::Opening opening{
      share.name, share.open, {.machine = world.folder.filePath(QStringLiteral("D")), .option = {}}};
  opening.typeName = share.typeName;
  RemoteFileSystem files(world.context, opening);
  for (const QString& name : {QStringLiteral("a.txt"), QStringLiteral("a.TXT"), QStringLiteral("a.zzz"),
                              QStringLiteral("a"), QStringLiteral(".txt")}) {
    FileEntry entry;
    entry.name = name;
    EXPECT_EQ(files.TypeName(entry), local->TypeName(entry)) << name.toStdString();
    entry.attributes = attribute::kFolder;
    EXPECT_EQ(files.TypeName(entry), local->TypeName(entry)) << name.toStdString();
  }
}

}  // namespace
}  // namespace trevane::test
