#include "tests/engine/providers/ftp/FtpServerWorld.h"

#include "engine/files/WholeFile.h"
#include "engine/providers/ftp/FtpFileSystem.h"
#include "tests/support/ftp/TestFtpConnector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace trevane::test {
namespace {

const char* const kNone = "<none>";

/// A file never holds anything but one of its whole contents.
void RequireWhole(FtpServerWorld& world, const QByteArray& name, const QByteArrayList& contents) {
  const QByteArray now = world.Content(name);
  EXPECT_TRUE(now == kNone || contents.contains(now)) << name.toStdString() << ": " << now.size() << " bytes";
}

}  // namespace

QByteArray LongContent(char letter) {
  return QByteArray(40000, letter);
}

bool Fails(const std::function<void()>& work) {
  try {
    work();
  } catch (const RunTimeError& failure) {
    EXPECT_FALSE(failure.Description().isEmpty());
    return true;
  }
  return false;
}

std::shared_ptr<FileSystem> FtpServerWorld::Open(int timeout) {
  return OpenWith([timeout](FtpSettings& settings) { settings.timeout = timeout; });
}

std::shared_ptr<FileSystem> FtpServerWorld::OpenWith(const std::function<void(FtpSettings&)>& change) {
  FtpSettings settings;
  settings.host = QStringLiteral("127.0.0.1");
  settings.port = server_.Port();
  settings.user = QStringLiteral("joe");
  change(settings);
  switch (server_.Script().Vices().tls) {
    case FtpVices::Tls::Off:
      break;
    case FtpVices::Tls::Explicit:
      settings.tls = FtpSettings::Tls::Explicit;
      break;
    case FtpVices::Tls::Implicit:
      settings.tls = FtpSettings::Tls::Implicit;
      break;
  }
  const FtpLogOn logOn{.user = settings.user,
                       .password = Secret(QByteArrayView("secret")),
                       .trustedFingerprint = server_.Fingerprint()};
  const auto keep = [this](std::unique_ptr<FtpDialogue> dialogue) {
    last_ = dialogue.get();
    return dialogue;
  };
  return OpenFtpFileSystem(
      std::make_unique<TestFtpConnector>(settings, logOn, std::shared_ptr<CallControl>(), keep), settings,
      {});
}

void FtpServerWorld::Cut() {
  server_.DropAll();
  // Only a server that hangs needs so many turns.
  for (int turn = 0; turn < 60'000 && !last_->IsBroken(); ++turn) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_TRUE(last_->IsBroken());
}

void FtpServerWorld::Clear() {
  server_.Tree().Clear();
  server_.Tree().AddFolder("/W");
}

void FtpServerWorld::Write(const QByteArray& name, const QByteArray& content) {
  server_.Tree().AddFile("/W/" + name, content);
}

QByteArray FtpServerWorld::Content(const QByteArray& name) {
  return server_.Tree().ContentOf("/W/" + name);
}

bool FtpServerWorld::Has(const QByteArray& content) {
  const std::vector<FtpTestItem> items = server_.Tree().ChildrenOf("/W");
  return std::any_of(items.begin(), items.end(),
                     [&](const FtpTestItem& item) { return item.content == content; });
}

void FtpServerWorld::AwaitQuiet() {
  // Only a server that hangs needs so many turns.
  for (int turn = 0; turn < 60'000 && server_.Counts().clients > 0; ++turn) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_EQ(server_.Counts().clients, 0);
}

const std::vector<FtpWork>& FtpWorks() {
  static const std::vector<FtpWork> kWorks{
      {"Upload", [](FtpServerWorld&) {},
       [](FileSystem& files) { WriteNewFile(files, FtpServerWorld::At("F.SRC"), LongContent('n')); },
       [](FtpServerWorld& world, bool failed) {
         RequireWhole(world, "F.SRC", {LongContent('n')});
         EXPECT_TRUE(failed || world.Content("F.SRC") == LongContent('n'));
       }},
      {"Replace", [](FtpServerWorld& world) { world.Write("F.SRC", LongContent('o')); },
       [](FileSystem& files) { WriteFile(files, FtpServerWorld::At("F.SRC"), LongContent('n')); },
       [](FtpServerWorld& world, bool failed) {
         RequireWhole(world, "F.SRC", {LongContent('n'), LongContent('o')});
         EXPECT_TRUE(world.Content("F.SRC") == LongContent('n') || world.Has(LongContent('o')));
         EXPECT_TRUE(failed || world.Content("F.SRC") == LongContent('n'));
       }},
      {"Download", [](FtpServerWorld& world) { world.Write("F.SRC", LongContent('o')); },
       [](FileSystem& files) { EXPECT_EQ(ReadFile(files, FtpServerWorld::At("F.SRC")), LongContent('o')); },
       [](FtpServerWorld& world, bool /*failed*/) { EXPECT_EQ(world.Content("F.SRC"), LongContent('o')); }},
      {"Rename", [](FtpServerWorld& world) { world.Write("F.SRC", LongContent('o')); },
       [](FileSystem& files) {
         files.Rename(FtpServerWorld::At("F.SRC"), FtpServerWorld::At("G.SRC"), false);
       },
       [](FtpServerWorld& world, bool failed) {
         const bool isNew = world.Content("G.SRC") == LongContent('o');
         EXPECT_NE(isNew, world.Content("F.SRC") == LongContent('o'));
         EXPECT_TRUE(failed || isNew);
       }},
      {"RenameOver",
       [](FtpServerWorld& world) {
         world.Write("F.SRC", LongContent('n'));
         world.Write("G.SRC", LongContent('o'));
       },
       [](FileSystem& files) {
         files.Rename(FtpServerWorld::At("F.SRC"), FtpServerWorld::At("G.SRC"), true);
       },
       [](FtpServerWorld& world, bool failed) {
         EXPECT_TRUE(world.Has(LongContent('n')));
         EXPECT_TRUE(world.Content("G.SRC") == LongContent('n') || world.Has(LongContent('o')));
         EXPECT_TRUE(failed || world.Content("G.SRC") == LongContent('n'));
       }},
      {"Remove",
       [](FtpServerWorld& world) {
         world.Write("F.SRC", LongContent('o'));
         world.Write("G.SRC", LongContent('k'));
       },
       [](FileSystem& files) { files.Remove(FtpServerWorld::At("F.SRC")); },
       [](FtpServerWorld& world, bool failed) {
         EXPECT_EQ(world.Content("G.SRC"), LongContent('k'));
         EXPECT_TRUE(failed || world.Content("F.SRC") == kNone);
       }},
      {"List",
       [](FtpServerWorld& world) {
         world.Write("F.SRC", LongContent('o'));
         world.Server().Tree().AddFolder("/W/D");
       },
       [](FileSystem& files) {
         QStringList names;
         for (const FileEntry& entry : files.List(QStringLiteral("W"))) {
           names.append(entry.name + (entry.IsFolder() ? QStringLiteral("\\") : QString()));
         }
         names.sort();
         EXPECT_EQ(names, (QStringList{QStringLiteral("D\\"), QStringLiteral("F.SRC")}));
       },
       [](FtpServerWorld&, bool /*failed*/) {}},
  };
  return kWorks;
}

}  // namespace trevane::test
