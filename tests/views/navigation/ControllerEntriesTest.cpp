#include "tests/support/ConnectWorld.h"
#include "views/addresses/NodeTags.h"
#include "views/navigation/ControllerEntries.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

std::shared_ptr<clsIxoCtrl> Named(const QString& name) {
  auto record = std::make_shared<clsIxoCtrl>();
  record->SetRealCtrlName(name);
  return record;
}

TEST(ControllerEntriesTest, ANodeStandsLastBelowTheWorkspaceWithImageAndTag) {
  ConnectWorld world;
  EXPECT_TRUE(world.views.AddControllerNode(*Named(QStringLiteral("B")), false));
  EXPECT_TRUE(world.views.AddControllerNode(*Named(QStringLiteral("A")), true));
  EXPECT_EQ(world.Nodes(), (QStringList{QStringLiteral("B"), QStringLiteral("!A")}));
  const FolderNode* node = world.tree.FindByKey(u"workspace\\b");
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(node->Tag(), 0x300000);
  EXPECT_EQ(world.tree.ImageKey(node), QStringLiteral("CONTROLLER"));
  EXPECT_EQ(node->Parent(), world.tree.FindByIndex(1));
}

TEST(ControllerEntriesTest, ANameThatIsThereIsNotAddedAgain) {
  ConnectWorld world;
  EXPECT_TRUE(world.views.AddControllerNode(*Named(QStringLiteral("A")), false));
  EXPECT_FALSE(world.views.AddControllerNode(*Named(QStringLiteral("a")), false));
  EXPECT_FALSE(world.views.AddControllerNode(*Named(QStringLiteral("A")), true));
  EXPECT_FALSE(world.views.AddControllerNode(*Named(QStringLiteral("My Computer")), true));
  EXPECT_FALSE(world.views.AddControllerNode(*Named(QString()), true));
  EXPECT_EQ(world.Nodes(), QStringList{QStringLiteral("A")});
}

TEST(ControllerEntriesTest, AnErrorNodeIsReplacedByTheConnectedNodeAtTheEnd) {
  ConnectWorld world;
  world.AddErrorNode(QStringLiteral("A"));
  EXPECT_TRUE(world.views.AddControllerNode(*Named(QStringLiteral("B")), false));
  EXPECT_TRUE(world.views.AddControllerNode(*Named(QStringLiteral("a")), false));
  EXPECT_EQ(world.Nodes(), (QStringList{QStringLiteral("B"), QStringLiteral("a")}));
}

TEST(ControllerEntriesTest, ItemsFollowTheSameRules) {
  ConnectWorld world;
  EXPECT_TRUE(world.views.AddControllerItem(*Named(QStringLiteral("A")), true));
  EXPECT_EQ(world.Items(), (QStringList{QStringLiteral("My Computer"), QStringLiteral("!A")}));
  EXPECT_TRUE(world.views.AddControllerItem(*Named(QStringLiteral("A")), false));
  EXPECT_FALSE(world.views.AddControllerItem(*Named(QStringLiteral("A")), false));
  EXPECT_EQ(world.Items(), (QStringList{QStringLiteral("My Computer"), QStringLiteral("A")}));
  EXPECT_EQ(world.list.Tag(world.list.FindByText(u"A")), 0x300000);
  world.views.RemoveControllerItem(QStringLiteral("a"));
  EXPECT_EQ(world.Items(), QStringList{QStringLiteral("My Computer")});
  EXPECT_THROW(world.views.RemoveControllerItem(QStringLiteral("A")), RunTimeError);
}

TEST(ControllerEntriesTest, OnlyNodesOfControllersAreRemoved) {
  ConnectWorld world;
  EXPECT_THROW(world.views.RemoveControllerNode(QStringLiteral("Workspace\\My Computer")), RunTimeError);
  EXPECT_THROW(world.views.RemoveControllerNode(QStringLiteral("Workspace\\A")), RunTimeError);
  EXPECT_NE(world.tree.FindByKey(u"Workspace\\My Computer"), nullptr);
}

TEST(ControllerEntriesTest, AnErrorNodeWithAnImpossibleNameIsFoundAndRemoved) {
  ConnectWorld world;
  world.AddErrorNode(QStringLiteral("a\\b"));
  EXPECT_TRUE(world.views.IsErrorNode(QStringLiteral("Workspace\\a\\b")));
  world.views.RemoveControllerNode(QStringLiteral("workspace\\A\\B"));
  EXPECT_TRUE(world.Nodes().isEmpty());
}

TEST(ControllerEntriesTest, RemovingTheDisplayedNodeMakesTheWorkspaceCurrent) {
  for (const QString& below : {QStringLiteral("Workspace\\A"), QStringLiteral("Workspace\\A\\prog"),
                               QStringLiteral("Workspace\\A\\prog\\deep")}) {
    ConnectWorld world;
    world.Connect(QStringLiteral("A"));
    world.Display(QStringLiteral("Workspace\\A"));
    if (below != u"Workspace\\A") {
      world.Display(QStringLiteral("Workspace\\A\\prog"));
    }
    world.Display(below);
    world.views.RemoveControllerNode(QStringLiteral("Workspace\\A"));
    EXPECT_EQ(world.navigator.CurrentNode(), world.tree.FirstRoot());
  }
}

TEST(ControllerEntriesTest, RemovingANodeInTheMiddleOfItsListingEndsTheListing) {
  ConnectWorld world;
  for (int i = 0; i < 60; ++i) {
    world.cell->AddFolder(QStringLiteral("folder%1").arg(i));
  }
  world.Connect(QStringLiteral("A"));
  world.host.onEvents = [&] {
    if (world.host.Turns() != 5) {
      return;
    }
    world.views.RemoveControllerNode(QStringLiteral("Workspace\\A"));
    world.Display(QStringLiteral("Workspace"));
  };
  world.Display(QStringLiteral("Workspace\\A"));
  EXPECT_EQ(world.host.Turns(), 5);
  EXPECT_EQ(world.navigator.CurrentAddress(), QStringLiteral("Workspace"));
  EXPECT_EQ(world.navigator.CurrentNode(), world.tree.FirstRoot());
}

TEST(ControllerEntriesTest, TheWorkspacesListShowsThoseThatFailedToo) {
  ConnectWorld world;
  world.AddErrorNode(QStringLiteral("Bad"));
  world.Connect(QStringLiteral("Good"));
  world.Display(QStringLiteral("Workspace"));
  EXPECT_EQ(world.Items(),
            (QStringList{QStringLiteral("My Computer"), QStringLiteral("Good"), QStringLiteral("!Bad")}));
  world.views.RemoveErrorNodes();
  EXPECT_EQ(world.Nodes(), QStringList{QStringLiteral("Good")});
}

TEST(ControllerEntriesTest, TheProgressTextIsEmptied) {
  ConnectWorld world;
  world.views.ClearProgressText();
  EXPECT_EQ(world.status, QString());
}

}  // namespace
}  // namespace trevane::test
