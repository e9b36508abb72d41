#include "tests/support/ConnectWorld.h"
#include "views/addresses/NodeTags.h"
#include "views/navigation/ControllerEntries.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

std::shared_ptr<clsIxoCtrl> Named(const QString& name) {
  auto record = std::make_shared<clsIxoCtrl>();
  record->SetRealCtrlName(name);
  return record;
}

TEST(ControllerEntriesTest, ANodeStandsLastBelowTheWorkspaceWithImageAndTag) {
  ConnectWorld world;
  EXPECT_TRUE(world.views.AddControllerNode(*Named(u"B"_s), false));
  EXPECT_TRUE(world.views.AddControllerNode(*Named(u"A"_s), true));
  EXPECT_EQ(world.Nodes(), (QStringList{u"B"_s, u"!A"_s}));
  const FolderNode* node = world.tree.FindByKey(u"workspace\\b");
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(node->Tag(), 0x300000);
  EXPECT_EQ(world.tree.ImageKey(node), u"CONTROLLER"_s);
  EXPECT_EQ(node->Parent(), world.tree.FindByIndex(1));
}

TEST(ControllerEntriesTest, ANameThatIsThereIsNotAddedAgain) {
  ConnectWorld world;
  EXPECT_TRUE(world.views.AddControllerNode(*Named(u"A"_s), false));
  EXPECT_FALSE(world.views.AddControllerNode(*Named(u"a"_s), false));
  EXPECT_FALSE(world.views.AddControllerNode(*Named(u"A"_s), true));
  EXPECT_FALSE(world.views.AddControllerNode(*Named(u"My Computer"_s), true));
  EXPECT_FALSE(world.views.AddControllerNode(*Named(QString()), true));
  EXPECT_EQ(world.Nodes(), QStringList{u"A"_s});
}

TEST(ControllerEntriesTest, AnErrorNodeIsReplacedByTheConnectedNodeAtTheEnd) {
  ConnectWorld world;
  world.AddErrorNode(u"A"_s);
  EXPECT_TRUE(world.views.AddControllerNode(*Named(u"B"_s), false));
  EXPECT_TRUE(world.views.AddControllerNode(*Named(u"a"_s), false));
  EXPECT_EQ(world.Nodes(), (QStringList{u"B"_s, u"a"_s}));
}

TEST(ControllerEntriesTest, ItemsFollowTheSameRules) {
  ConnectWorld world;
  EXPECT_TRUE(world.views.AddControllerItem(*Named(u"A"_s), true));
  EXPECT_EQ(world.Items(), (QStringList{u"My Computer"_s, u"!A"_s}));
  EXPECT_TRUE(world.views.AddControllerItem(*Named(u"A"_s), false));
  EXPECT_FALSE(world.views.AddControllerItem(*Named(u"A"_s), false));
  EXPECT_EQ(world.Items(), (QStringList{u"My Computer"_s, u"A"_s}));
  EXPECT_EQ(world.list.Tag(world.list.FindByText(u"A")), 0x300000);
  world.views.RemoveControllerItem(u"a"_s);
  EXPECT_EQ(world.Items(), QStringList{u"My Computer"_s});
  EXPECT_THROW(world.views.RemoveControllerItem(u"A"_s), RunTimeError);
}

TEST(ControllerEntriesTest, OnlyNodesOfControllersAreRemoved) {
  ConnectWorld world;
  EXPECT_THROW(world.views.RemoveControllerNode(u"Workspace\\My Computer"_s), RunTimeError);
  EXPECT_THROW(world.views.RemoveControllerNode(u"Workspace\\A"_s), RunTimeError);
  EXPECT_NE(world.tree.FindByKey(u"Workspace\\My Computer"), nullptr);
}

TEST(ControllerEntriesTest, AnErrorNodeWithAnImpossibleNameIsFoundAndRemoved) {
  ConnectWorld world;
  world.AddErrorNode(u"a\\b"_s);
  EXPECT_TRUE(world.views.IsErrorNode(u"Workspace\\a\\b"_s));
  world.views.RemoveControllerNode(u"workspace\\A\\B"_s);
  EXPECT_TRUE(world.Nodes().isEmpty());
}

TEST(ControllerEntriesTest, RemovingTheDisplayedNodeMakesTheWorkspaceCurrent) {
  for (const QString& below : {u"Workspace\\A"_s, u"Workspace\\A\\prog"_s, u"Workspace\\A\\prog\\deep"_s}) {
    ConnectWorld world;
    world.Connect(u"A"_s);
    world.Display(u"Workspace\\A"_s);
    if (below != u"Workspace\\A")
      world.Display(u"Workspace\\A\\prog"_s);
    world.Display(below);
    world.views.RemoveControllerNode(u"Workspace\\A"_s);
    EXPECT_EQ(world.navigator.CurrentNode(), world.tree.FirstRoot());
  }
}

TEST(ControllerEntriesTest, RemovingANodeInTheMiddleOfItsListingEndsTheListing) {
  ConnectWorld world;
  for (int i = 0; i < 60; ++i)
    world.cell->AddFolder(u"folder%1"_s.arg(i));
  world.Connect(u"A"_s);
  world.host.onEvents = [&] {
    if (world.host.Turns() != 5)
      return;
    world.views.RemoveControllerNode(u"Workspace\\A"_s);
    world.Display(u"Workspace"_s);
  };
  world.Display(u"Workspace\\A"_s);
  EXPECT_EQ(world.host.Turns(), 5);
  EXPECT_EQ(world.navigator.CurrentAddress(), u"Workspace"_s);
  EXPECT_EQ(world.navigator.CurrentNode(), world.tree.FirstRoot());
}

TEST(ControllerEntriesTest, TheWorkspacesListShowsThoseThatFailedToo) {
  ConnectWorld world;
  world.AddErrorNode(u"Bad"_s);
  world.Connect(u"Good"_s);
  world.Display(u"Workspace"_s);
  EXPECT_EQ(world.Items(), (QStringList{u"My Computer"_s, u"Good"_s, u"!Bad"_s}));
  world.views.RemoveErrorNodes();
  EXPECT_EQ(world.Nodes(), QStringList{u"Good"_s});
}

TEST(ControllerEntriesTest, TheProgressTextIsEmptied) {
  ConnectWorld world;
  world.views.ClearProgressText();
  EXPECT_EQ(world.status, QString());
}

}  // namespace
}  // namespace trevane::test
