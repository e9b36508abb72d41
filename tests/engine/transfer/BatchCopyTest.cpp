#include "engine/transfer/CopiedLink.h"
#include "tests/engine/transfer/BatchCopyFixture.h"
#include "tests/support/ScriptedServer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace trevane::test {
namespace {

TEST_F(BatchCopyTest, TheTargetIsListedOnceAndNotAskedForEachName) {
  AddFiles(150);
  target().AddFolder(QStringLiteral("in\\tree"));
  world_.prompts.ExpectChoice(1);
  world_.one.faulty->ClearCalls();
  EXPECT_EQ(Copy(), 0);
  EXPECT_EQ(items_, 151);
  // Once the folder, and once after the question that replaced all further ones.
  EXPECT_LE(Calls(world_.one, FileSystemOperation::List), 2);
  const auto asked = std::ranges::count_if(world_.one.faulty->Calls(), [](const FileSystemCall& call) {
    return call.operation == FileSystemOperation::List && call.path.contains(u"f0");
  });
  EXPECT_EQ(asked, 0);
}

TEST_F(BatchCopyTest, WhatStandsBeforeAQuestionHasArrivedByThen) {
  source().AddFile(QStringLiteral("C:\\tree\\a"), "a");
  source().AddFile(QStringLiteral("C:\\tree\\b"), "b");
  source().AddFile(QStringLiteral("C:\\tree\\c"), "new c");
  source().AddFile(QStringLiteral("C:\\tree\\d"), "d");
  target().AddFile(QStringLiteral("in\\tree\\c"), "old c");
  int asked = 0;
  world_.prompts.onQuestion = [&](const AskedQuestion&) {
    if (++asked == 2) {
      EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\a")), "a");
      EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\b")), "b");
      EXPECT_FALSE(target().Exists(QStringLiteral("in\\tree\\d")));
    }
  };
  world_.prompts.ExpectChoice(0);
  world_.prompts.ExpectChoice(QStringLiteral("'c' already existed.\r\nOverwrite?"), 3);
  EXPECT_EQ(Copy(), 0);
  world_.prompts.onQuestion = {};
  EXPECT_EQ(asked, 2);
  EXPECT_EQ(arrived_, Arrival::Cancelled);
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\b")), "b") << "Cancel keeps it";
  EXPECT_FALSE(target().Exists(QStringLiteral("in\\tree\\d")));
}

TEST_F(BatchCopyTest, AFileThatIsAskedForIsLookedAtAgain) {
  source().AddFile(QStringLiteral("C:\\tree\\a"), "before");
  source().AddFile(QStringLiteral("C:\\tree\\b"), "before");
  target().AddFile(QStringLiteral("in\\tree\\a"), "old");
  int asked = 0;
  world_.prompts.onQuestion = [&](const AskedQuestion&) {
    if (++asked == 2) {
      source().AddFile(QStringLiteral("C:\\tree\\b"), "longer than before");
    }
  };
  world_.prompts.ExpectChoice(0);
  world_.prompts.ExpectChoice(0);
  EXPECT_EQ(Copy(), 0);
  world_.prompts.onQuestion = {};
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\b")), "longer than before");
}

TEST_F(BatchCopyTest, AfterOneQuestionFilesAreBatchedAgain) {
  AddFiles(100);
  target().AddFile(QStringLiteral("in\\tree\\f0000"), "old");
  world_.prompts.ExpectChoice(0);
  world_.prompts.ExpectChoice(2);
  world_.local.faulty->ClearCalls();
  EXPECT_EQ(Copy(), 0);
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\f0099")), "content");
  const auto lookedAt = std::ranges::count_if(world_.one.faulty->Calls(), [](const FileSystemCall& call) {
    return call.operation == FileSystemOperation::List;
  });
  EXPECT_LE(lookedAt, 3) << "the target is listed once more, not for each file";
}

TEST_F(BatchCopyTest, AFileThatVanishedKeepsThoseBeforeIt) {
  for (const char* name : {"a", "b", "c", "d"}) {
    source().AddFile(QStringLiteral("C:\\tree\\") + QLatin1String(name), "new");
  }
  target().AddFile(QStringLiteral("in\\tree\\a"), "old");
  int asked = 0;
  world_.prompts.onQuestion = [&](const AskedQuestion&) {
    if (++asked == 2) {
      source().Remove(QStringLiteral("C:\\tree\\d"), {});
    }
  };
  world_.prompts.ExpectChoice(0);
  world_.prompts.ExpectChoice(1);
  EXPECT_EQ(Copy(), error::kNotFound);
  world_.prompts.onQuestion = {};
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\a")), "new");
  EXPECT_TRUE(target().Exists(QStringLiteral("in\\tree\\b")));
  EXPECT_TRUE(target().Exists(QStringLiteral("in\\tree\\c")));
}

TEST_F(BatchCopyTest, AFileThatCannotBeReadKeepsThoseBeforeIt) {
  AddFiles(5);
  world_.local.faulty->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Read && call.path.endsWith(u"f0003")) {
      throw RunTimeError(error::kAccessDenied, QStringLiteral("No"));
    }
  });
  EXPECT_EQ(Copy(), error::kAccessDenied);
  EXPECT_TRUE(target().Exists(QStringLiteral("in\\tree\\f0002")));
  EXPECT_FALSE(target().Exists(QStringLiteral("in\\tree\\f0003")));
  EXPECT_FALSE(target().Exists(QStringLiteral("in\\tree\\f0004")));
  EXPECT_EQ(items_, 4);
}

TEST_F(BatchCopyTest, CancelInsideAFileLeavesNothingOfIt) {
  source().AddFile(QStringLiteral("C:\\tree\\a"), "small");
  source().AddFile(QStringLiteral("C:\\tree\\big"), QByteArray(20 * 1024 * 1024, 'x'));
  source().AddFile(QStringLiteral("C:\\tree\\z"), "never");
  observer_ = [](const ItemProgress& item) { return item.bytes < 8 * 1024 * 1024; };
  EXPECT_EQ(Copy(), 0);
  EXPECT_EQ(arrived_, Arrival::Cancelled);
  EXPECT_EQ(target().Tree(), (QStringList{QStringLiteral("in\\"), QStringLiteral("in\\tree\\"),
                                          QStringLiteral("in\\tree\\a=small")}));
}

TEST_F(BatchCopyTest, CancelInsideAFileKeepsTheOldContent) {
  source().AddFile(QStringLiteral("C:\\tree"), QByteArray(20 * 1024 * 1024, 'x'));
  target().AddFile(QStringLiteral("in\\tree"), "old");
  observer_ = [](const ItemProgress& item) { return item.bytes == 0; };
  world_.prompts.ExpectChoice(0);
  EXPECT_EQ(Copy(), 0);
  EXPECT_EQ(arrived_, Arrival::Cancelled);
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree")), "old");
}

TEST_F(BatchCopyTest, TheCountMovesWithEachFileOfABatch) {
  AddFiles(10);
  std::vector<qint64> counts;
  QStringList names;
  observer_ = [&](const ItemProgress& item) {
    if (!item.folder.isEmpty() && (counts.empty() || item.files != counts.back())) {
      counts.push_back(item.files);
      names.append(item.name);
    }
    return true;
  };
  EXPECT_EQ(Copy(), 0) << text_.toStdString();
  EXPECT_EQ(counts, (std::vector<qint64>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
  EXPECT_EQ(names.at(1), QStringLiteral("f0000"));
  EXPECT_EQ(names.back(), QStringLiteral("f0009"));
}

TEST_F(BatchCopyTest, CancelWithinABatchBeginsNothingMore) {
  AddFiles(100);
  // It would be asked for behind the batch.
  target().AddFile(QStringLiteral("in\\tree\\f0064"), "old");
  world_.prompts.ExpectChoice(0);
  observer_ = [](const ItemProgress& item) { return item.files < 5; };
  EXPECT_EQ(Copy(), 0) << text_.toStdString();
  EXPECT_EQ(arrived_, Arrival::Cancelled);
  EXPECT_EQ(items_, 65) << "the folder, and the files of the batch";
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\f0063")), "content");
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\f0064")), "old");
  EXPECT_FALSE(target().Exists(QStringLiteral("in\\tree\\f0065")));
}

TEST_F(BatchCopyTest, BytesAreToldAtLeastEvery16MiB) {
  constexpr qint64 kSize = 40 * 1024 * 1024;
  source().AddFile(QStringLiteral("C:\\tree\\big"), QByteArray(kSize, 'x'));
  source().AddFile(QStringLiteral("C:\\tree\\sub\\small"), "s");
  qint64 last = 0;
  qint64 longest = 0;
  ItemProgress end;
  observer_ = [&](const ItemProgress& item) {
    if (item.name == u"big") {
      EXPECT_EQ(item.folder, QStringLiteral("tree"));
      EXPECT_EQ(item.size, kSize);
      longest = std::max(longest, item.bytes - last);
      last = item.bytes;
    }
    end = item;
    return true;
  };
  EXPECT_EQ(Copy(), 0);
  EXPECT_EQ(last, kSize);
  EXPECT_LE(longest, 16 * 1024 * 1024);
  EXPECT_EQ(end.name, QStringLiteral("small"));
  EXPECT_EQ(end.folder, QStringLiteral("tree\\sub"));
  EXPECT_EQ(end.files, 2);
  EXPECT_EQ(end.filesKnown, 2);
}

TEST_F(BatchCopyTest, ACallThatIsCancelledEndsTheCopyLikeCancel) {
  AddFiles(3);
  world_.one.faulty->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Write && call.path.endsWith(u"f0001")) {
      throw RunTimeError(error::kCancelled, QStringLiteral("Cancelled."));
    }
  });
  EXPECT_EQ(Copy(), 0);
  EXPECT_EQ(arrived_, Arrival::Cancelled);
  EXPECT_TRUE(target().Exists(QStringLiteral("in\\tree\\f0000")));
  EXPECT_FALSE(target().Exists(QStringLiteral("in\\tree\\f0001")));
}

TEST_F(BatchCopyTest, LinksThatStayInsideAreCopiedAsLinks) {
  source().AddFile(QStringLiteral("C:\\tree\\a"), "a");
  source().AddFolder(QStringLiteral("C:\\tree\\sub"));
  source().CreateLink(QStringLiteral("C:\\tree\\near"), QStringLiteral("a"));
  source().CreateLink(QStringLiteral("C:\\tree\\sub\\up"), QStringLiteral("..\\a"));
  source().CreateLink(QStringLiteral("C:\\tree\\sub\\lost"), QStringLiteral("nowhere"));
  source().CreateLink(QStringLiteral("C:\\tree\\sub\\out"), QStringLiteral("..\\..\\other"));
  EXPECT_EQ(Copy(), 0);
  EXPECT_EQ(arrived_, Arrival::Skipped);
  ASSERT_EQ(leftOut_.size(), 1U);
  EXPECT_EQ(leftOut_[0].name, QStringLiteral("out"));
  EXPECT_EQ(target().ReadLink(QStringLiteral("in\\tree\\near")), QStringLiteral("a"));
  EXPECT_EQ(target().ReadLink(QStringLiteral("in\\tree\\sub\\up")), QStringLiteral("..\\a"));
  EXPECT_EQ(target().ReadLink(QStringLiteral("in\\tree\\sub\\lost")), QStringLiteral("nowhere"));
  EXPECT_FALSE(target().Exists(QStringLiteral("in\\tree\\sub\\out")));
}

TEST_F(BatchCopyTest, AFolderWithALinkToItsOwnFileIsMoved) {
  source().AddFile(QStringLiteral("C:\\tree\\a"), "a");
  source().CreateLink(QStringLiteral("C:\\tree\\z"), QStringLiteral("a"));
  const auto file = world_.File(kTree);
  file->RecordSource();
  ASSERT_EQ(file->CopyDiffCtrl(kIn, {}), 0);
  EXPECT_EQ(file->Arrived(), Arrival::Everything);
  clsIxoFile into = world_.files.FileAt(kIn);
  file->DeleteMoved(into, {}, false);
  EXPECT_EQ(file->Result(), 0) << file->ResultText().toStdString();
  EXPECT_FALSE(source().Exists(QStringLiteral("C:\\tree")));
  EXPECT_EQ(target().ReadLink(QStringLiteral("in\\tree\\z")), QStringLiteral("a"));
}

TEST_F(BatchCopyTest, DatesAreKept) {
  const Date made{1'000'000'000'000};
  source().AddFile(QStringLiteral("C:\\tree\\small"), "s");
  source().AddFile(QStringLiteral("C:\\tree\\big"), QByteArray(9 * 1024 * 1024, 'x'));
  source().AddFile(QStringLiteral("C:\\tree\\old"), "new content");
  for (const QString& name : {QStringLiteral("small"), QStringLiteral("big"), QStringLiteral("old")}) {
    source().SetTimes(QStringLiteral("C:\\tree\\") + name, made, made, made);
  }
  target().AddFile(QStringLiteral("in\\tree\\old"), "old content");
  world_.prompts.ExpectChoice(1);
  EXPECT_EQ(Copy(), 0);
  for (const QString& name : {QStringLiteral("small"), QStringLiteral("big"), QStringLiteral("old")}) {
    EXPECT_EQ(target().Stat(QStringLiteral("in\\tree\\") + name).modified, made) << name.toStdString();
  }
}

TEST_F(BatchCopyTest, TheDateOfAFolderIsKeptWhereTheTargetKeepsDates) {
  const Date made{1'000'000'000'000};
  EngineWorld::Machine device = EngineWorld::MakeMachine({});
  device.memory->AddFile(QStringLiteral("tree\\sub\\file"), "f");
  for (const QString& folder : {QStringLiteral("tree\\sub"), QStringLiteral("tree")}) {
    device.memory->SetTimes(folder, made, made, made);
  }
  // It tells dates in listings only, and sets none.
  const auto server = std::make_shared<ScriptedServer>(device.memory, ScriptedOptions{.traits = false});
  device.faulty = std::make_shared<FaultyFileSystem>(server->Open());
  world_.Connect(QStringLiteral("Device"), device);
  EXPECT_EQ(Copy(QStringLiteral("Workspace\\Device\\tree")), 0) << text_.toStdString();
  EXPECT_EQ(target().Stat(QStringLiteral("in\\tree")).modified, made);
  EXPECT_EQ(target().Stat(QStringLiteral("in\\tree\\sub")).modified, made);
  device.memory->AddFolder(QStringLiteral("back"));
  device.faulty->ClearCalls();
  EXPECT_EQ(Copy(QStringLiteral("Workspace\\Ctrl1\\in\\tree"), QStringLiteral("Workspace\\Device\\back")), 0);
  const auto sets = std::ranges::count_if(device.faulty->Calls(), [](const FileSystemCall& call) {
    return call.operation == FileSystemOperation::Write && !call.path.endsWith(u"file");
  });
  EXPECT_EQ(sets, 0) << "it would change nothing";
}

TEST_F(BatchCopyTest, AFolderIsRefusedWhereNoneCanBeMade) {
  MemoryFileSystemOptions options;
  options.folders = false;
  const auto flat = EngineWorld::MakeMachine(options);
  world_.Connect(QStringLiteral("Flat"), flat);
  AddFiles(1);
  source().AddFile(QStringLiteral("C:\\single"), "s");
  EXPECT_EQ(Copy(kTree, QStringLiteral("Workspace\\Flat")), error::kNotSupported);
  EXPECT_FALSE(text_.isEmpty());
  EXPECT_TRUE(flat.memory->Tree().isEmpty());
  EXPECT_EQ(Copy(QStringLiteral("Workspace\\My Computer\\C:\\single"), QStringLiteral("Workspace\\Flat")), 0);
  EXPECT_TRUE(flat.memory->Exists(QStringLiteral("single")));
}

TEST(CopiedLinkTest, KnowsWhetherATextStaysInside) {
  for (const QString& text : {QStringLiteral("a"), QStringLiteral("./a"), QStringLiteral("sub/../a"),
                              QStringLiteral("a/b"), QStringLiteral("..\\x")}) {
    EXPECT_TRUE(StaysInside(text, 1)) << text.toStdString();
  }
  for (const QString& text :
       {QStringLiteral(""), QStringLiteral("/a"), QStringLiteral("\\a"), QStringLiteral("C:\\a"),
        QStringLiteral("../.."), QStringLiteral("a/../../../b"), QStringLiteral("../../tree/a")}) {
    EXPECT_FALSE(StaysInside(text, 1)) << text.toStdString();
  }
  EXPECT_FALSE(StaysInside(QStringLiteral("a"), -1)) << "nothing is copied with it";
  EXPECT_FALSE(StaysInside(QStringLiteral("../a"), -1));
}

}  // namespace
}  // namespace trevane::test
