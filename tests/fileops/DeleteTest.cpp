#include "tests/fileops/TransferWorld.h"

#include <gtest/gtest.h>

#include <utility>

namespace trevane::test {
namespace {

const QString kIn = QStringLiteral("Workspace\\My Computer\\C:\\in");
const QString kFailed = QStringLiteral("Failed in delete operation.");

class DeleteTest : public testing::Test {
 protected:
  DeleteTest() {
    for (const QString& name : {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}) {
      world.local.memory->AddFile(QStringLiteral("C:\\in\\") + name, "content");
    }
    world.local.memory->AddFile(QStringLiteral("C:\\in\\sub\\deep\\f"), "content");
    world.one.memory->AddFile(QStringLiteral("in\\f"), "content");
  }
  ~DeleteTest() override {
    EXPECT_TRUE(world.host.IsEnabled());
    EXPECT_FALSE(world.Gauge().IsLoaded());
    EXPECT_TRUE(world.Gauge().Captions().isEmpty()) << "a delete shows no gauge";
    EXPECT_EQ(world.engine->HeldFiles(), 0);
    EXPECT_EQ(world.engine->LiveFileNames(), QStringList());
  }
  [[nodiscard]] bool Exists(const QString& name) {
    return world.local.memory->Exists(QStringLiteral("C:\\in\\") + name);
  }

  TransferWorld world;
};

TEST_F(DeleteTest, AsksForEachItemByItsNameAndDeletesIt) {
  world.prompts.ExpectChoice(QStringLiteral("'a' Do you want to Remove it?"), 0);
  world.prompts.ExpectChoice(QStringLiteral("'b' Do you want to Remove it?"), 2);
  world.prompts.ExpectChoice(QStringLiteral("'sub' Do you want to Remove it?"), 0);
  EXPECT_TRUE(world.DeleteItems(kIn, {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("sub")}));
  EXPECT_FALSE(Exists(QStringLiteral("a")));
  EXPECT_TRUE(Exists(QStringLiteral("b")));
  EXPECT_FALSE(Exists(QStringLiteral("sub")));
  EXPECT_EQ(world.Log(),
            QStringList({QStringLiteral("DELETE|C:\\in\\a"), QStringLiteral("DELETE|C:\\in\\sub")}));
  EXPECT_EQ(world.operations.GoneAddresses(),
            QStringList({kIn + QStringLiteral("\\a"), kIn + QStringLiteral("\\sub")}));
  const AskedQuestion& asked = world.prompts.Asked().at(0);
  EXPECT_EQ(asked.title, QStringLiteral("Remove"));
  EXPECT_EQ(asked.icon, PromptIcon::Information);
  EXPECT_EQ(asked.captions, QStringList({QStringLiteral("Yes(&Y)"), QStringLiteral("Yes All(&A)"),
                                         QStringLiteral("No(&N)"), QStringLiteral("Cancel")}));
  EXPECT_EQ(asked.defaultButton, 0);
  EXPECT_EQ(asked.cancelButton, 1);
}

TEST_F(DeleteTest, YesAllAtTheFirstItemDeletesAllOfThem) {
  world.prompts.ExpectChoice(1);
  EXPECT_TRUE(world.DeleteItems(kIn, {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}));
  EXPECT_EQ(world.prompts.Asked().size(), 1U);
  EXPECT_EQ(world.Log().size(), 3);
}

TEST_F(DeleteTest, AFailureNamesTheItemAndTheReason) {
  world.local.faulty->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Remove && call.path.endsWith(u'b')) {
      throw RunTimeError(error::kAccessDenied, QStringLiteral("b is locked"));
    }
  });
  world.prompts.ExpectChoice(1);
  world.prompts.ExpectBox(kFailed);
  EXPECT_FALSE(world.DeleteItems(kIn, {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}));
  EXPECT_EQ(world.prompts.Asked().back().informativeText, QStringLiteral("b\nb is locked"));
  EXPECT_EQ(world.host.reasons, QStringList{QStringLiteral("b is locked")});
}

TEST_F(DeleteTest, AnItemThatStaysAfterItsDeletionIsReported) {
  bool removed = false;
  world.local.faulty->SetHook([&](const FileSystemCall& call) {
    if (std::exchange(removed, removed || call.operation == FileSystemOperation::Remove)) {
      world.local.memory->AddFile(QStringLiteral("C:\\in\\a"), "another program's");
    }
  });
  world.prompts.ExpectChoice(0);
  world.prompts.ExpectBox(kFailed);
  EXPECT_FALSE(world.DeleteItems(kIn, {QStringLiteral("a")}));
  EXPECT_EQ(world.prompts.Asked().back().informativeText, QStringLiteral("a\nIt is still there: C:\\in\\a"));
}

TEST_F(DeleteTest, CancelEndsAtOnceWithoutAFailure) {
  world.prompts.ExpectChoice(0);
  world.prompts.ExpectChoice(3);
  EXPECT_TRUE(world.DeleteItems(kIn, {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}));
  EXPECT_FALSE(Exists(QStringLiteral("a")));
  EXPECT_TRUE(Exists(QStringLiteral("b")));
  EXPECT_TRUE(Exists(QStringLiteral("c")));
}

TEST_F(DeleteTest, AFailureEndsTheDeleteAndListsTheDeleted) {
  world.prompts.ExpectChoice(1);
  world.prompts.ExpectBox(kFailed);
  EXPECT_FALSE(world.DeleteItems(kIn, {QStringLiteral("a"), QStringLiteral("missing"), QStringLiteral("c")}));
  EXPECT_TRUE(Exists(QStringLiteral("c")));
  EXPECT_EQ(world.prompts.Asked().back().icon, PromptIcon::Exclamation);
  // The one that failed because it was gone already is gone, too.
  EXPECT_EQ(world.operations.GoneAddresses(),
            QStringList({kIn + QStringLiteral("\\a"), kIn + QStringLiteral("\\missing")}));
  EXPECT_EQ(world.Log(), QStringList(QStringLiteral("DELETE|C:\\in\\a")));
}

TEST_F(DeleteTest, WithNeitherSideNothingHappens) {
  DeleteRequest request;
  request.basePath = kIn;
  request.items = {{QStringLiteral("a"), 0x20}};
  EXPECT_TRUE(world.operations.Delete(request));
  EXPECT_TRUE(Exists(QStringLiteral("a")));
}

TEST_F(DeleteTest, ATreeFolderIsAskedForByItsEnginePath) {
  world.prompts.ExpectBox(QStringLiteral("'C:\\in\\sub'\r\nRemove this file?"), PromptAnswer::Yes);
  EXPECT_TRUE(world.DeleteNode(kIn + QStringLiteral("\\sub"), kFolderBit));
  EXPECT_EQ(world.prompts.Asked()[0].buttons, PromptButtons::YesNo);
  EXPECT_EQ(world.prompts.Asked()[0].icon, PromptIcon::Question);
  EXPECT_EQ(world.prompts.Asked()[0].defaultAnswer, PromptAnswer::No);
  EXPECT_FALSE(Exists(QStringLiteral("sub")));
  EXPECT_EQ(world.Log(), QStringList(QStringLiteral("DELETE|C:\\in\\sub")));
}

TEST_F(DeleteTest, AFolderOfAControllerIsReachedByItsAddress) {
  world.prompts.ExpectBox(QStringLiteral("'Ctrl1\\in'\r\nRemove this file?"), PromptAnswer::Yes);
  EXPECT_TRUE(world.DeleteNode(QStringLiteral("Workspace\\Ctrl1\\in"), TAG_CONTROLLER | kFolderBit));
  EXPECT_EQ(world.one.memory->Tree(), QStringList());
  EXPECT_EQ(world.Log(), QStringList(QStringLiteral("DELETE|Ctrl1\\in")));
}

TEST_F(DeleteTest, AnythingButYesKeepsTheTreeFolder) {
  world.prompts.ExpectBox(PromptAnswer::No);
  EXPECT_TRUE(world.DeleteNode(kIn + QStringLiteral("\\sub"), kFolderBit));
  EXPECT_TRUE(Exists(QStringLiteral("sub")));
}

TEST_F(DeleteTest, OtherTreeNodesAreNotDeleted) {
  EXPECT_TRUE(world.DeleteNode(QStringLiteral("Workspace\\My Computer\\C:"), TAG_DRIVE | TAG_HDD));
  EXPECT_TRUE(world.DeleteNode(QStringLiteral("Workspace\\Ctrl1"), kControllerTag));
  EXPECT_TRUE(world.DeleteNode(QStringLiteral("Workspace\\Ctrl1"), kControllerTag | kFolderBit));
  EXPECT_TRUE(world.DeleteNode(QStringLiteral("Workspace\\My Computer"), kMyComputerTag));
  EXPECT_TRUE(world.DeleteNode(QStringLiteral("Workspace"), TAG_WORKSPACE));
  EXPECT_EQ(world.local.memory->CallCount(), 0);
}

TEST_F(DeleteTest, ADriveOfTheListIsRefused) {
  world.prompts.ExpectChoice(0);
  world.prompts.ExpectBox(kFailed);
  EXPECT_FALSE(world.DeleteItems(QStringLiteral("Workspace\\My Computer"), {QStringLiteral("C:")}));
  EXPECT_TRUE(Exists(QStringLiteral("a")));
}

TEST_F(DeleteTest, TheWindowPaintsWhileAFolderIsDeleted) {
  world.prompts.ExpectBox(PromptAnswer::Yes);
  bool enabled = true;
  world.host.onEvents = [&] { enabled = world.host.IsEnabled(); };
  EXPECT_TRUE(world.DeleteNode(kIn + QStringLiteral("\\sub"), kFolderBit));
  EXPECT_GE(world.host.Turns(), 2) << "once before, and once inside";
  EXPECT_FALSE(enabled) << "no input is let through";
}

TEST_F(DeleteTest, NothingIsDeletedOnceTheProgramEnds) {
  world.prompts.ExpectChoice(1);
  world.host.onEvents = [&] { world.prompts.End(UserPrompts::Ending::ByUser); };
  DeleteRequest request;
  request.side = DeleteRequest::Side::List;
  request.basePath = kIn;
  request.items = {{QStringLiteral("a"), 0x20}, {QStringLiteral("b"), 0x20}};
  EXPECT_TRUE(world.operations.Delete(request));
  EXPECT_TRUE(Exists(QStringLiteral("a")));
  EXPECT_TRUE(Exists(QStringLiteral("b")));
}

TEST_F(DeleteTest, TheItemsAreFixedWhenTheCommandIsGiven) {
  DeleteRequest request;
  request.side = DeleteRequest::Side::List;
  request.basePath = kIn;
  request.items = {{QStringLiteral("a"), 0x20}, {QStringLiteral("b"), 0x20}};
  world.prompts.onQuestion = [&](const AskedQuestion&) {
    request.basePath = QStringLiteral("Workspace\\Ctrl1\\in");
    request.items = {{QStringLiteral("f"), 0x20}};
  };
  world.prompts.ExpectChoice(1);
  EXPECT_TRUE(world.operations.Delete(request));
  EXPECT_FALSE(Exists(QStringLiteral("a")));
  EXPECT_FALSE(Exists(QStringLiteral("b")));
  EXPECT_TRUE(world.one.memory->Exists(QStringLiteral("in\\f")));
}

TEST_F(DeleteTest, DeletingALinkKeepsItsTarget) {
  world.local.memory->AddLink(QStringLiteral("C:\\in\\link"), QStringLiteral("C:\\in\\sub"));
  world.prompts.ExpectChoice(0);
  EXPECT_TRUE(world.DeleteItems(kIn, {QStringLiteral("link")}));
  EXPECT_FALSE(Exists(QStringLiteral("link")));
  EXPECT_TRUE(Exists(QStringLiteral("sub\\deep\\f")));
}

}  // namespace
}  // namespace trevane::test
