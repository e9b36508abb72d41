#include "engine/items/clsIxoFile.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "tests/engine/providers/ftp/FakeFtpServer.h"
#include "tests/support/SessionWorld.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace trevane::test {
namespace {

using Fault = FakeFtpFault::Kind;

const QString kDisk = QStringLiteral("Workspace\\My Computer\\C:\\");
const QString kOther = QStringLiteral("Workspace\\Other\\");
const QString kCell = QStringLiteral("Workspace\\Cell\\in");

/// A disk, a controller, and an FTP controller that cannot rename: its files are written in place.
struct InPlaceWorld : SessionWorld {
  InPlaceWorld() {
    server.vices.missing = {"RNFR", "RNTO"};
    server.AddFolder("/in");
    MemoryFileSystemOptions options;
    options.drives = {QStringLiteral("C:")};
    local = std::make_shared<MemoryFileSystem>(options);
    const auto other = std::make_shared<MemoryFileSystem>();
    Open({ProviderOf(QStringLiteral("IxoProv.LocalFile"), local),
          ProviderOf(QStringLiteral("IxoProv.Other"), other),
          {QStringLiteral("IxoProv.Ftp"), [this](const FileSystemRequest&) {
             return server.Open({.host = QStringLiteral("copied in place")});
           }}});
    volumes.Set({{QStringLiteral("C:"), QString(), drivetype::kFixed}});
    drives.RefreshDrives();
    Register(QStringLiteral("Other"), QStringLiteral("IxoProv.Other"), QStringLiteral("/"));
    Register(QStringLiteral("Cell"), QStringLiteral("IxoProv.Ftp"), QStringLiteral("/"));
    for (const auto& files : {local, other}) {
      const QString at = files == local ? QStringLiteral("C:\\tree\\") : QStringLiteral("tree\\");
      files->AddFile(at + QStringLiteral("a"), "new content a");
      files->AddFile(at + QStringLiteral("b"), "new content b");
      files->AddFile(at + QStringLiteral("sub\\c"), "new content c");
      files->AddFile(at + QStringLiteral("z"), Large());
    }
  }

  /// Too large for a batch.
  static QByteArray Large() { return QByteArray(9 * 1024 * 1024, 'z'); }
  [[nodiscard]] qint32 CopyTree(const QString& from) {
    clsIxoFile file = files.FileAt(from + QStringLiteral("tree"));
    clsIxoFile into = files.FileAt(kCell);
    EXPECT_EQ(into.Result(), 0);
    const qint32 result = file.CopyDiffCtrl(into, {});
    arrived = file.Arrived();
    text = file.ResultText();
    return result;
  }

  std::shared_ptr<MemoryFileSystem> local;
  FakeFtpServer server;
  Arrival arrived = Arrival::Failed;
  QString text;
};

class InPlaceCopyTest : public testing::TestWithParam<QString> {};

TEST_P(InPlaceCopyTest, NewFilesArriveWhole) {
  InPlaceWorld world;
  EXPECT_EQ(world.CopyTree(GetParam()), 0) << world.text.toStdString();
  EXPECT_EQ(world.arrived, Arrival::Everything);
  EXPECT_EQ(world.server.ContentOf("/in/tree/a"), "new content a");
  EXPECT_EQ(world.server.ContentOf("/in/tree/b"), "new content b");
  EXPECT_EQ(world.server.ContentOf("/in/tree/sub/c"), "new content c");
  EXPECT_EQ(world.server.ContentOf("/in/tree/z"), InPlaceWorld::Large());
  // Top, "in", "tree", "sub" and the files.
  EXPECT_EQ(world.server.items.size(), 8U);
  EXPECT_EQ(world.server.Count("RNFR"), 0);
}

TEST_P(InPlaceCopyTest, AFileThatExistsIsAskedFor) {
  InPlaceWorld world;
  world.server.AddFolder("/in/tree");
  for (const char* name : {"/in/tree/a", "/in/tree/b", "/in/tree/z"}) {
    world.server.AddFile(name, QByteArray("old content of ") + name);
  }
  world.prompts.ExpectChoice(QStringLiteral("'tree' already existed.\r\nOverwrite?"), 0);
  world.prompts.ExpectChoice(QStringLiteral("'a' already existed.\r\nOverwrite?"), 0);
  world.prompts.ExpectChoice(QStringLiteral("'b' already existed.\r\nOverwrite?"), 2);
  world.prompts.ExpectChoice(QStringLiteral("'z' already existed.\r\nOverwrite?"), 0);
  EXPECT_EQ(world.CopyTree(GetParam()), 0) << world.text.toStdString();
  EXPECT_EQ(world.arrived, Arrival::Skipped);
  EXPECT_EQ(world.server.ContentOf("/in/tree/a"), "new content a");
  EXPECT_EQ(world.server.ContentOf("/in/tree/b"), "old content of /in/tree/b");
  EXPECT_EQ(world.server.ContentOf("/in/tree/sub/c"), "new content c");
  EXPECT_EQ(world.server.ContentOf("/in/tree/z"), InPlaceWorld::Large());
  EXPECT_EQ(world.server.items.size(), 8U);
}

TEST_P(InPlaceCopyTest, TheOldContentIsPutBackAfterALostLine) {
  const QByteArray old = "old content, longer than the new one";
  for (const Fault kind : {Fault::LoseBefore, Fault::LoseAfter, Fault::Refuse}) {
    int failures = 0;
    int kept = 0;
    for (int call = 0;; ++call) {
      InPlaceWorld world;
      world.server.AddFile("/in/a", old);
      world.server.AddFile("/in/beside", "beside");
      clsIxoFile file = world.files.FileAt(GetParam() + QStringLiteral("tree\\a"));
      clsIxoFile into = world.files.FileAt(kCell);
      ASSERT_EQ(into.Result(), 0);
      world.prompts.AnswerAllChoices(0);
      world.server.fault = {.kind = kind};
      world.server.faultAt = world.server.calls + call;
      const qint32 result = file.CopyDiffCtrl(into, {});
      const QByteArray now = world.server.ContentOf("/in/a");
      SCOPED_TRACE(testing::Message() << "call " << call << ": " << file.ResultText().toStdString()
                                      << world.server.Tree().join(u' ').toStdString());
      EXPECT_TRUE(now == old || now == "new content a") << now.toStdString();
      EXPECT_TRUE(result != 0 || now == "new content a");
      EXPECT_EQ(world.server.ContentOf("/in/beside"), "beside");
      // Nothing is cleaned up over a line that died: an empty file may stay that showed the places apart.
      const QStringList probes = world.server.Tree().filter(QStringLiteral("<temporary>"));
      EXPECT_TRUE(probes.isEmpty() ||
                  (kind != Fault::Refuse && probes == QStringList{QStringLiteral("/in/<temporary>=")}));
      EXPECT_EQ(world.server.items.size(), 4U + static_cast<size_t>(probes.size()));
      failures += result != 0 ? 1 : 0;
      kept += now == old ? 1 : 0;
      if (world.server.calls <= world.server.faultAt || HasFailure()) {
        EXPECT_EQ(result, 0);
        break;
      }
    }
    EXPECT_GT(failures, 3);
    EXPECT_GT(kept, 3);
  }
}

TEST_P(InPlaceCopyTest, ANewFileThatIsLostMidwayIsRemoved) {
  for (const Fault kind : {Fault::LoseBefore, Fault::LoseAfter}) {
    int failures = 0;
    for (int call = 0;; ++call) {
      InPlaceWorld world;
      clsIxoFile file = world.files.FileAt(GetParam() + QStringLiteral("tree\\a"));
      clsIxoFile into = world.files.FileAt(kCell);
      ASSERT_EQ(into.Result(), 0);
      world.server.fault = {.kind = kind};
      world.server.faultAt = world.server.calls + call;
      const qint32 result = file.CopyDiffCtrl(into, {});
      SCOPED_TRACE(testing::Message() << "call " << call << ": " << file.ResultText().toStdString());
      const QByteArray now = world.server.ContentOf("/in/a");
      EXPECT_TRUE(now == "<none>" || now == "new content a") << now.toStdString();
      EXPECT_TRUE(result != 0 || now == "new content a");
      failures += result != 0 ? 1 : 0;
      if (world.server.calls <= world.server.faultAt || HasFailure()) {
        EXPECT_EQ(result, 0);
        break;
      }
    }
    EXPECT_GT(failures, 3);
  }
}

INSTANTIATE_TEST_SUITE_P(From, InPlaceCopyTest, testing::Values(kDisk, kOther),
                         [](const testing::TestParamInfo<QString>& info) {
                           return std::string(info.index == 0 ? "Disk" : "Controller");
                         });

}  // namespace
}  // namespace trevane::test
