#include "tests/fileops/TransferWorld.h"

#include <gtest/gtest.h>

#include <utility>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

const QString kIn = u"Workspace\\My Computer\\C:\\in"_s;
const QString kFailed = u"Failed in delete operation."_s;

class DeleteTest : public testing::Test {
 protected:
  DeleteTest() {
    for (const QString& name : {u"a"_s, u"b"_s, u"c"_s})
      world.local.memory->AddFile(u"C:\\in\\"_s + name, "content");
    world.local.memory->AddFile(u"C:\\in\\sub\\deep\\f"_s, "content");
    world.one.memory->AddFile(u"in\\f"_s, "content");
  }
  ~DeleteTest() override {
    EXPECT_TRUE(world.host.IsEnabled());
    EXPECT_FALSE(world.Gauge().IsLoaded());
    EXPECT_TRUE(world.Gauge().Captions().isEmpty()) << "a delete shows no gauge";
    EXPECT_EQ(world.engine->HeldFiles(), 0);
    EXPECT_EQ(world.engine->LiveFileNames(), QStringList());
  }
  [[nodiscard]] bool Exists(const QString& name) { return world.local.memory->Exists(u"C:\\in\\"_s + name); }

  TransferWorld world;
};

TEST_F(DeleteTest, AsksForEachItemByItsNameAndDeletesIt) {
  world.prompts.ExpectChoice(u"'a' Do you want to Remove it?"_s, 0);
  world.prompts.ExpectChoice(u"'b' Do you want to Remove it?"_s, 2);
  world.prompts.ExpectChoice(u"'sub' Do you want to Remove it?"_s, 0);
  EXPECT_TRUE(world.DeleteItems(kIn, {u"a"_s, u"b"_s, u"sub"_s}));
  EXPECT_FALSE(Exists(u"a"_s));
  EXPECT_TRUE(Exists(u"b"_s));
  EXPECT_FALSE(Exists(u"sub"_s));
  EXPECT_EQ(world.Log(), QStringList({u"DELETE|C:\\in\\a"_s, u"DELETE|C:\\in\\sub"_s}));
  EXPECT_EQ(world.operations.GoneAddresses(), QStringList({kIn + u"\\a"_s, kIn + u"\\sub"_s}));
  const AskedQuestion& asked = world.prompts.Asked().at(0);
  EXPECT_EQ(asked.title, u"Remove"_s);
  EXPECT_EQ(asked.icon, PromptIcon::Information);
  EXPECT_EQ(asked.captions, QStringList({u"Yes(&Y)"_s, u"Yes All(&A)"_s, u"No(&N)"_s, u"Cancel"_s}));
  EXPECT_EQ(asked.defaultButton, 0);
  EXPECT_EQ(asked.cancelButton, 1);
}

TEST_F(DeleteTest, YesAllAtTheFirstOfThreeDeletesAllWithOneQuestion) {
  world.prompts.ExpectChoice(1);
  EXPECT_TRUE(world.DeleteItems(kIn, {u"a"_s, u"b"_s, u"c"_s}));
  EXPECT_EQ(world.prompts.Asked().size(), 1U);
  EXPECT_EQ(world.Log().size(), 3);
}

TEST_F(DeleteTest, AFailureTellsTheItemAndTheEnginesReason) {
  world.local.faulty->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Remove && call.path.endsWith(u'b'))
      throw RunTimeError(error::kAccessDenied, u"b is locked"_s);
  });
  world.prompts.ExpectChoice(1);
  world.prompts.ExpectBox(kFailed);
  EXPECT_FALSE(world.DeleteItems(kIn, {u"a"_s, u"b"_s, u"c"_s}));
  EXPECT_EQ(world.prompts.Asked().back().informativeText, u"b\nb is locked"_s);
  EXPECT_EQ(world.host.reasons, QStringList{u"b is locked"_s});
}

TEST_F(DeleteTest, AnItemThatIsStillThereAfterItsDeletionIsTold) {
  bool removed = false;
  world.local.faulty->SetHook([&](const FileSystemCall& call) {
    if (std::exchange(removed, removed || call.operation == FileSystemOperation::Remove))
      world.local.memory->AddFile(u"C:\\in\\a"_s, "another program's");
  });
  world.prompts.ExpectChoice(0);
  world.prompts.ExpectBox(kFailed);
  EXPECT_FALSE(world.DeleteItems(kIn, {u"a"_s}));
  EXPECT_EQ(world.prompts.Asked().back().informativeText, u"a\nIt is still there: C:\\in\\a"_s);
}

TEST_F(DeleteTest, CancelEndsAtOnceAndIsNoFailure) {
  world.prompts.ExpectChoice(0);
  world.prompts.ExpectChoice(3);
  EXPECT_TRUE(world.DeleteItems(kIn, {u"a"_s, u"b"_s, u"c"_s}));
  EXPECT_FALSE(Exists(u"a"_s));
  EXPECT_TRUE(Exists(u"b"_s));
  EXPECT_TRUE(Exists(u"c"_s));
}

TEST_F(DeleteTest, AFailureEndsItAndTellsWhatIsGone) {
  world.prompts.ExpectChoice(1);
  world.prompts.ExpectBox(kFailed);
  EXPECT_FALSE(world.DeleteItems(kIn, {u"a"_s, u"missing"_s, u"c"_s}));
  EXPECT_TRUE(Exists(u"c"_s));
  EXPECT_EQ(world.prompts.Asked().back().icon, PromptIcon::Exclamation);
  // The one that failed because it was gone already is gone, too.
  EXPECT_EQ(world.operations.GoneAddresses(), QStringList({kIn + u"\\a"_s, kIn + u"\\missing"_s}));
  EXPECT_EQ(world.Log(), QStringList(u"DELETE|C:\\in\\a"_s));
}

TEST_F(DeleteTest, WithNeitherSideNothingHappens) {
  DeleteRequest request;
  request.basePath = kIn;
  request.items = {{u"a"_s, 0x20}};
  EXPECT_TRUE(world.operations.Delete(request));
  EXPECT_TRUE(Exists(u"a"_s));
}

TEST_F(DeleteTest, ATreeFolderIsAskedForByItsEnginePathWithYesAndNo) {
  world.prompts.ExpectBox(u"'C:\\in\\sub'\r\nRemove this file?"_s, PromptAnswer::Yes);
  EXPECT_TRUE(world.DeleteNode(kIn + u"\\sub"_s, kFolderBit));
  EXPECT_EQ(world.prompts.Asked()[0].buttons, PromptButtons::YesNo);
  EXPECT_EQ(world.prompts.Asked()[0].icon, PromptIcon::Question);
  EXPECT_EQ(world.prompts.Asked()[0].defaultAnswer, PromptAnswer::No);
  EXPECT_FALSE(Exists(u"sub"_s));
  EXPECT_EQ(world.Log(), QStringList(u"DELETE|C:\\in\\sub"_s));
}

TEST_F(DeleteTest, AFolderOfAControllerIsReachedByItsAddress) {
  world.prompts.ExpectBox(u"'Ctrl1\\in'\r\nRemove this file?"_s, PromptAnswer::Yes);
  EXPECT_TRUE(world.DeleteNode(u"Workspace\\Ctrl1\\in"_s, TAG_CONTROLLER | kFolderBit));
  EXPECT_EQ(world.one.memory->Tree(), QStringList());
  EXPECT_EQ(world.Log(), QStringList(u"DELETE|Ctrl1\\in"_s));
}

TEST_F(DeleteTest, AnythingButYesKeepsTheTreeFolder) {
  world.prompts.ExpectBox(PromptAnswer::No);
  EXPECT_TRUE(world.DeleteNode(kIn + u"\\sub"_s, kFolderBit));
  EXPECT_TRUE(Exists(u"sub"_s));
}

TEST_F(DeleteTest, ATreeNodeThatIsNoFolderIsNeitherAskedForNorDeleted) {
  EXPECT_TRUE(world.DeleteNode(u"Workspace\\My Computer\\C:"_s, TAG_DRIVE | TAG_HDD));
  EXPECT_TRUE(world.DeleteNode(u"Workspace\\Ctrl1"_s, kControllerTag));
  EXPECT_TRUE(world.DeleteNode(u"Workspace\\Ctrl1"_s, kControllerTag | kFolderBit));
  EXPECT_TRUE(world.DeleteNode(u"Workspace\\My Computer"_s, kMyComputerTag));
  EXPECT_TRUE(world.DeleteNode(u"Workspace"_s, TAG_WORKSPACE));
  EXPECT_EQ(world.local.memory->CallCount(), 0);
}

TEST_F(DeleteTest, ADriveOfTheListIsRefused) {
  world.prompts.ExpectChoice(0);
  world.prompts.ExpectBox(kFailed);
  EXPECT_FALSE(world.DeleteItems(u"Workspace\\My Computer"_s, {u"C:"_s}));
  EXPECT_TRUE(Exists(u"a"_s));
}

TEST_F(DeleteTest, TheDisabledWindowLivesWhileAFolderIsDeleted) {
  world.prompts.ExpectBox(PromptAnswer::Yes);
  bool enabled = true;
  world.host.onEvents = [&] { enabled = world.host.IsEnabled(); };
  EXPECT_TRUE(world.DeleteNode(kIn + u"\\sub"_s, kFolderBit));
  EXPECT_GE(world.host.Turns(), 2) << "once before, and once inside";
  EXPECT_FALSE(enabled) << "no input is let through";
}

TEST_F(DeleteTest, NothingMoreIsDeletedOnceTheProgramEnds) {
  world.prompts.ExpectChoice(1);
  world.host.onEvents = [&] { world.prompts.End(UserPrompts::Ending::ByUser); };
  DeleteRequest request;
  request.side = DeleteRequest::Side::List;
  request.basePath = kIn;
  request.items = {{u"a"_s, 0x20}, {u"b"_s, 0x20}};
  EXPECT_TRUE(world.operations.Delete(request));
  EXPECT_TRUE(Exists(u"a"_s));
  EXPECT_TRUE(Exists(u"b"_s));
}

TEST_F(DeleteTest, WhatIsDeletedIsFixedWhenTheCommandIsGiven) {
  DeleteRequest request;
  request.side = DeleteRequest::Side::List;
  request.basePath = kIn;
  request.items = {{u"a"_s, 0x20}, {u"b"_s, 0x20}};
  world.prompts.onQuestion = [&](const AskedQuestion&) {
    request.basePath = u"Workspace\\Ctrl1\\in"_s;
    request.items = {{u"f"_s, 0x20}};
  };
  world.prompts.ExpectChoice(1);
  EXPECT_TRUE(world.operations.Delete(request));
  EXPECT_FALSE(Exists(u"a"_s));
  EXPECT_FALSE(Exists(u"b"_s));
  EXPECT_TRUE(world.one.memory->Exists(u"in\\f"_s));
}

TEST_F(DeleteTest, ALinkGoesAndWhatItLeadsToStays) {
  world.local.memory->AddLink(u"C:\\in\\link"_s, u"C:\\in\\sub"_s);
  world.prompts.ExpectChoice(0);
  EXPECT_TRUE(world.DeleteItems(kIn, {u"link"_s}));
  EXPECT_FALSE(Exists(u"link"_s));
  EXPECT_TRUE(Exists(u"sub\\deep\\f"_s));
}

}  // namespace
}  // namespace trevane::test
