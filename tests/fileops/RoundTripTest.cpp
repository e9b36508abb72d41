#include "dialogs/ShowProperties.h"
#include "engine/items/clsIxoFile.h"
#include "tests/fileops/FileCommandsFixture.h"
#include "tests/support/ScriptedServer.h"
#include "views/navigation/AddressNavigation.h"

#include <algorithm>
#include <ostream>

namespace trevane::test {
namespace {

struct Device {
  bool caseSensitive;
  /// The controller's root; empty for its top.
  QString root;
};

std::ostream& operator<<(std::ostream& out, const Device& device) {
  return out << (device.caseSensitive ? "case counts" : "case does not count") << ", root "
             << device.root.toStdString();
}

std::shared_ptr<ScriptedServer> MakeServer(bool caseSensitive) {
  const auto behind =
      std::make_shared<MemoryFileSystem>(MemoryFileSystemOptions{.caseSensitive = caseSensitive});
  behind->AddFolder(QStringLiteral("jobs\\own\\a\\b\\c\\d\\e"));
  behind->AddFolder(QStringLiteral("a\\b\\c\\d\\e"));
  for (const QString& folder : {QStringLiteral("a"), QStringLiteral("jobs\\own\\a")}) {
    behind->AddFile(folder + QStringLiteral("\\b\\c\\d\\main.pac"), "program");
    behind->AddFile(folder + QStringLiteral("\\b\\other.pac"), "other");
  }
  return std::make_shared<ScriptedServer>(behind);
}

/// What the commands cost over a slow controller that keeps nothing in memory.
class RoundTripTest : public FileCommandsFixture, public testing::WithParamInterface<Device> {
 protected:
  RoundTripTest() : RoundTripTest(MakeServer(GetParam().caseSensitive)) {}

  /// Round trips since the last call. A listing takes three on most devices.
  int Cost(bool withListings = true) {
    const QStringList calls = server_->Calls();
    server_->ClearCalls();
    int cost = 0;
    for (const QString& call : calls) {
      const bool isListing = call.startsWith(QStringLiteral("List "));
      cost += isListing ? (withListings ? 3 : 0) : 1;
    }
    calls_ = calls.join(QStringLiteral(", ")).toStdString();
    return cost;
  }
  [[nodiscard]] const std::string& Calls() const { return calls_; }

  static QString Place(const QString& path) { return QStringLiteral("Workspace\\Device\\") + path; }

  bool GoTo(const QString& path) { return addresses_.GoToAddress(Place(path)).has_value(); }

 private:
  explicit RoundTripTest(const std::shared_ptr<ScriptedServer>& server)
      : FileCommandsFixture(true, server->Open()), server_(server) {
    world_.Register(QStringLiteral("Device"), QStringLiteral("IxoProv.Cell"), GetParam().root);
    tree_.AddTreeNode(tree_.FindByIndex(1), QStringLiteral("CONTROLLER"), QStringLiteral("Device"),
                      kControllerTag);
    // Connecting a controller shows it.
    Display(QStringLiteral("Workspace\\Device"));
    static_cast<void>(Cost());
  }

  std::shared_ptr<ScriptedServer> server_;
  AddressNavigation addresses_{
      {.files = world_.files, .tree = tree_, .navigator = navigator_, .reasonLine = host_}};
  std::string calls_;
};

TEST_P(RoundTripTest, ATypedAddressCostsOneCallALevel) {
  const QStringList levels{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"),
                           QStringLiteral("d")};
  for (qsizetype depth : {4, 1, 2, 3, 4}) {
    ASSERT_TRUE(GoTo(levels.first(depth).join(u'\\')));
    EXPECT_LE(Cost(), depth + 3) << Calls();
  }
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("e"), QStringLiteral("main.pac")}));
}

TEST_P(RoundTripTest, ATypedFileCostsOneCallALevel) {
  ASSERT_TRUE(GoTo(QStringLiteral("a\\b\\other.pac")));
  EXPECT_LE(Cost(), 3 + 3) << Calls();
  EXPECT_EQ(Place(QStringLiteral("a\\b")), navigator_.CurrentAddress());
}

TEST_P(RoundTripTest, RefreshCostsOneListing) {
  for (const QString& path : {QStringLiteral("a"), QStringLiteral("a\\b\\c\\d")}) {
    ASSERT_TRUE(GoTo(path));
    static_cast<void>(Cost());
    navigator_.Refresh();
    EXPECT_EQ(Cost(), 3) << Calls();
  }
}

TEST_P(RoundTripTest, AClickOnAFolderCostsOneListing) {
  ASSERT_TRUE(GoTo(QStringLiteral("a\\b\\c\\d")));
  static_cast<void>(Cost());
  Display(Place(QStringLiteral("a\\b\\c\\d\\e")));
  EXPECT_EQ(Cost(), 3) << Calls();
}

TEST_P(RoundTripTest, ARenamingCostsFourCalls) {
  ASSERT_TRUE(GoTo(QStringLiteral("a\\b\\c\\d")));
  static_cast<void>(Cost());
  EXPECT_FALSE(RenameItem(QStringLiteral("main.pac"), QStringLiteral("first.pac")));
  EXPECT_LE(Cost(), 4) << Calls();
  EXPECT_FALSE(RenameItem(QStringLiteral("e"), QStringLiteral("f")));
  EXPECT_LE(Cost(), 4) << Calls();
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("f"), QStringLiteral("first.pac")}));
}

TEST_P(RoundTripTest, ADeletionCostsFiveCallsBesideTheRefresh) {
  ASSERT_TRUE(GoTo(QStringLiteral("a\\b\\c\\d")));
  Select({QStringLiteral("main.pac")});
  static_cast<void>(Cost());
  prompts_.ExpectChoice(0);
  Execute(CommandId::Delete);
  EXPECT_LE(Cost(), 5 + 3) << Calls();
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("e")});
}

TEST_P(RoundTripTest, PropertiesCostTwoCalls) {
  ASSERT_TRUE(GoTo(QStringLiteral("a\\b\\c\\d")));
  for (const QString& name : {QStringLiteral("main.pac"), QStringLiteral("e")}) {
    static_cast<void>(Cost());
    const auto table = MakePropertyTable(Place(QStringLiteral("a\\b\\c\\d\\") + name), list_.Tag(Item(name)),
                                         {.files = world_.files});
    ASSERT_TRUE(table);
    EXPECT_EQ(table->values[0], name);
    EXPECT_LE(Cost(), 2) << Calls();
  }
}

TEST_P(RoundTripTest, AFolderThatIsGoneIsLookedForAgain) {
  ASSERT_TRUE(GoTo(QStringLiteral("a\\b\\c\\d")));
  ASSERT_TRUE(GoTo(QStringLiteral("a\\b")));
  clsIxoFile parent = world_.files.FileAt(Place(QStringLiteral("a\\b\\c\\d")));
  parent.Delete();
  prompts_.ExpectBox();
  Display(Place(QStringLiteral("a\\b\\c\\d")));
  EXPECT_EQ(navigator_.CurrentAddress(), Place(QStringLiteral("a\\b\\c")));
}

INSTANTIATE_TEST_SUITE_P(Devices, RoundTripTest,
                         testing::Values(Device{true, {}}, Device{false, {}},
                                         Device{true, QStringLiteral("/jobs/own")},
                                         Device{false, QStringLiteral("/jobs/own")}));

}  // namespace
}  // namespace trevane::test
