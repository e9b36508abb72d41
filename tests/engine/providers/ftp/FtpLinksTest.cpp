#include "base/RunTimeError.h"
#include "engine/files/FileSystem.h"
#include "engine/files/HeldFolder.h"
#include "engine/files/ProviderError.h"
#include "engine/files/WholeFile.h"
#include "tests/engine/providers/ftp/FakeFtpServer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace trevane::test {
namespace {

using Follows = FakeFtpVices::Follows;

QString T(const char* text) {
  return QString::fromUtf8(text);
}

/// The number of the failure of a call; 0 for none.
template <class Work>
qint32 NumberOf(const Work& work) {
  try {
    work();
  } catch (const RunTimeError& failure) {
    return failure.Number();
  }
  return 0;
}

FileEntry EntryIn(const Listing& listing, const QString& name) {
  const auto found = std::find_if(listing.begin(), listing.end(),
                                  [&](const FileEntry& entry) { return entry.name == name; });
  return found == listing.end() ? FileEntry() : *found;
}

/// How a server shows links.
struct Shape {
  const char* name;
  FakeFtpVices vices;
};

const std::vector<Shape>& Shapes() {
  static const std::vector<Shape> kShapes = [] {
    const auto vices = [](Follows follows, bool unique, bool modes) {
      FakeFtpVices made;
      made.factsFollow = follows;
      made.tellsUnique = unique;
      made.tellsModes = modes;
      return made;
    };
    FakeFtpVices dots = vices(Follows::Everywhere, true, false);
    dots.linesLeaveOutDots = true;
    FakeFtpVices lines;
    lines.features = {"SIZE", "MDTM", "MFMT"};
    lines.missing = {"MLSD", "MLST"};
    return std::vector<Shape>{{"Told", vices(Follows::Nothing, true, true)},
                              {"Followed", vices(Follows::Everywhere, true, false)},
                              {"FollowedWithoutUnique", vices(Follows::Everywhere, false, true)},
                              {"FollowedInOneItem", vices(Follows::InOneItem, true, true)},
                              {"DotsLeftOut", dots},
                              {"Lines", lines}};
  }();
  return kShapes;
}

class FtpLinks : public ::testing::TestWithParam<size_t> {
 protected:
  FtpLinks() { server_.vices = Shapes()[GetParam()].vices; }

  /// A tree with links of all kinds, and what they lead to.
  void MakeTree() {
    server_.AddFolder("/keep");
    server_.AddFile("/keep/precious", "precious");
    server_.AddFolder("/tree");
    server_.AddFile("/tree/a", "a");
    server_.AddFolder("/tree/sub");
    server_.AddLink("/tree/sub/folder", "/keep");
    server_.AddLink("/tree/sub/file", "/keep/precious");
    server_.AddLink("/tree/sub/nowhere", "/none");
    server_.AddLink("/tree/sub/up", "..");
    server_.AddLink("/tree/sub/self", ".");
    server_.AddFolder("/tree/leaf");
    server_.AddLink("/tree/leaf/nowhere", "/none");
    server_.AddLink("/tree/link", "/keep");
  }
  [[nodiscard]] static QStringList Kept() { return {T("/keep/"), T("/keep/precious=precious")}; }

  FakeFtpServer server_;
};

INSTANTIATE_TEST_SUITE_P(Shapes, FtpLinks, ::testing::Range(size_t{0}, Shapes().size()),
                         [](const ::testing::TestParamInfo<size_t>& info) {
                           return std::string(Shapes()[info.param].name);
                         });

TEST_P(FtpLinks, RemovingATreeRemovesNoTarget) {
  MakeTree();
  server_.Open()->Remove(T("tree"));
  EXPECT_EQ(server_.Tree(), Kept());
}

TEST_P(FtpLinks, RemovingALinkRemovesNoTarget) {
  MakeTree();
  const auto files = server_.Open();
  files->Remove(T("tree\\link"));
  files->RemoveAlone(T("tree\\sub\\folder"));
  files->Remove(T("tree\\sub\\file"));
  files->Remove(T("tree\\sub\\up"));
  EXPECT_EQ(server_.ContentOf("/keep/precious"), "precious");
  EXPECT_EQ(server_.ContentOf("/tree/a"), "a");
  files->Remove(T("tree"));
  EXPECT_EQ(server_.Tree(), Kept());
}

TEST_P(FtpLinks, CopyingATreeFollowsNoLink) {
  MakeTree();
  const auto files = server_.Open();
  // The link itself is the item, and none can be made.
  EXPECT_EQ(NumberOf([&] { files->Copy(T("tree"), T("copy"), false); }), error::kNotSupported);
  for (const QString& path : server_.Tree()) {
    EXPECT_FALSE(path.startsWith(T("/copy")) && path.contains(T("precious"))) << path.toStdString();
  }
}

TEST_P(FtpLinks, AHeldFolderShowsLinksAsLinks) {
  MakeTree();
  const auto files = server_.Open();
  // As a window has shown it before.
  const Listing before = files->List(T("tree"));
  const auto tree = files->Hold(QString())->Enter(T("tree"));
  const Listing listing = tree->List();
  EXPECT_TRUE(EntryIn(listing, T("link")).IsLink());
  EXPECT_FALSE(EntryIn(listing, T("sub")).IsLink());
  EXPECT_TRUE(EntryIn(listing, T("sub")).IsFolder());
  const Listing below = tree->EnterSeen(T("sub"), {EntryIn(before, T("sub")), {}})->List();
  for (const char* name : {"folder", "up", "self"}) {
    EXPECT_TRUE(EntryIn(below, T(name)).IsLink()) << name;
    EXPECT_NE(NumberOf([&] { static_cast<void>(tree->Enter(T("sub"))->Enter(T(name))); }), 0) << name;
  }
  EXPECT_EQ(NumberOf([&] {
              static_cast<void>(tree->EnterSeen(T("link"), {EntryIn(before, T("link")), {}}));
            }),
            providererror::kNotAFolder);
}

TEST_P(FtpLinks, ALinkInPlaceOfAHeldFolderIsNotFollowed) {
  const bool tellsNothing = server_.vices.factsFollow == Follows::Everywhere && !server_.vices.tellsUnique;
  if (tellsNothing) {
    GTEST_SKIP() << "nothing but a listing for each change would show it";
  }
  for (const bool isNew : {true, false}) {
    server_.items.erase("/sub");
    server_.AddFolder("/keep");
    server_.AddFile("/keep/precious", "precious");
    if (!isNew) {
      server_.AddFolder("/sub");
    }
    const auto files = server_.Open();
    const auto top = files->Hold(QString());
    if (isNew) {
      top->CreateFolder(T("sub"), false);
    }
    const auto sub = top->Enter(T("sub"));
    sub->CreateFolder(T("first"), false);
    server_.items.erase("/sub/first");
    server_.AddLink("/sub", "/keep");
    EXPECT_EQ(NumberOf([&] { sub->CreateFolder(T("x"), false); }), providererror::kChanged);
    EXPECT_EQ(NumberOf([&] { static_cast<void>(sub->OpenSink(T("precious"), {}, {})); }),
              providererror::kChanged);
    EXPECT_EQ(NumberOf([&] {
                static_cast<void>(sub->WriteMany({{T("x"), "x", {}}}));
              }),
              providererror::kChanged);
    FileEntry precious;
    precious.name = T("precious");
    precious.size = 8;
    EXPECT_NE(NumberOf([&] { sub->RemoveAlone(T("precious"), {precious, {}}); }), 0);
    EXPECT_EQ(server_.Tree(), (QStringList{T("/keep/"), T("/keep/precious=precious"), T("/sub->/keep")}));
    server_.items.erase("/sub");
  }
}

TEST_P(FtpLinks, ShowingAFolderCostsOneListing) {
  MakeTree();
  const auto files = server_.Open();
  static_cast<void>(files->List(T("tree")));
  server_.log.clear();
  static_cast<void>(files->List(T("tree")));
  EXPECT_EQ(server_.log.size(), 1) << server_.log.join(", ").toStdString();
}

TEST_P(FtpLinks, ATreeCostsNoQuestionForEachEntry) {
  constexpr int kFolders = 20;
  server_.AddFolder("/tree");
  for (int i = 0; i < kFolders; ++i) {
    const QByteArray folder = "/tree/f" + QByteArray::number(i);
    server_.AddFolder(folder);
    server_.AddFile(folder + "/a", "a");
  }
  const auto files = server_.Open();
  // It learns what the server lists.
  static_cast<void>(files->Hold(QString())->List());
  const auto tree = files->Hold(QString())->Enter(T("tree"));
  server_.log.clear();
  const Listing listing = tree->List();
  // Its facts, and its lines.
  EXPECT_LE(server_.log.size(), 2) << server_.log.join(", ").toStdString();
  server_.log.clear();
  for (const FileEntry& entry : listing) {
    static_cast<void>(tree->EnterSeen(entry.name, {entry, {}})->List());
  }
  // Once the zone of its clock is learnt.
  EXPECT_LE(server_.log.size(), kFolders + 1) << server_.log.join(", ").toStdString();
}

TEST_P(FtpLinks, ARemovalListsAFolderOnceForItsEntries) {
  constexpr int kFolders = 20;
  server_.AddFolder("/tree");
  for (int i = 0; i < kFolders; ++i) {
    server_.AddFolder("/tree/f" + QByteArray::number(i));
  }
  const auto files = server_.Open();
  server_.log.clear();
  files->Remove(T("tree"));
  EXPECT_TRUE(server_.Tree().isEmpty());
  if (server_.Count("MLST") == 0) {
    // Without it a listing is all there is.
    return;
  }
  // Before, and after all are gone.
  EXPECT_LE(server_.log.count("MLSD /tree"), 2);
  EXPECT_LE(server_.log.count("LIST /tree") + server_.log.count("LIST -a /tree"), 2);
  // Entered and removed: each time one look, one listing of its own and no more.
  EXPECT_LE(server_.log.size(), 5 * kFolders + 12) << server_.log.join(", ").toStdString();
}

TEST_P(FtpLinks, ChangesInAHeldFolderAskForItAlone) {
  server_.AddFolder("/sub");
  const auto files = server_.Open();
  const auto sub = files->Hold(QString())->Enter(T("sub"));
  sub->CreateFolder(T("first"), false);
  server_.log.clear();
  sub->CreateFolder(T("second"), false);
  // Whether it is still there, and the command.
  EXPECT_LE(server_.log.size(), 2) << server_.log.join(", ").toStdString();
}

TEST_P(FtpLinks, AreListedOnceTheyWereSeen) {
  MakeTree();
  const auto files = server_.Open();
  static_cast<void>(files->Hold(T("tree"))->List());
  const FileEntry link = EntryIn(files->List(T("tree")), T("link"));
  EXPECT_TRUE(link.IsLink());
  EXPECT_TRUE(files->Find(T("tree\\sub"))->IsFolder());
}

}  // namespace
}  // namespace trevane::test
