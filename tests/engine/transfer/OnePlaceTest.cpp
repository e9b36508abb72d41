#include "engine/files/RootedFileSystem.h"
#include "engine/files/TemporaryName.h"
#include "tests/engine/transfer/BatchCopyFixture.h"
#include "tests/support/RawFileSystem.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace trevane::test {
namespace {

/// Two controllers that lead to one place, which has no identities and no exact times.
class OnePlaceTest : public BatchCopyTest {
 protected:
  OnePlaceTest() {
    MemoryFileSystemOptions options;
    options.identity = false;
    options.dateStep = 2000;
    place_ = EngineWorld::MakeMachine(options);
    place_.memory->AddFile(QStringLiteral("in\\only"), "the only copy");
    place_.memory->AddFile(QStringLiteral("in\\tree\\sub\\only"), "the only copy");
    world_.Connect(QStringLiteral("Here"), place_);
    world_.Connect(QStringLiteral("There"), place_);
  }
  EngineWorld::Machine place_;
};

TEST_F(OnePlaceTest, AFileIsNotCopiedOntoItself) {
  const QStringList before = place_.memory->Tree();
  world_.prompts.ExpectChoice(0);
  EXPECT_NE(Copy(QStringLiteral("Workspace\\Here\\in\\only"), QStringLiteral("Workspace\\There\\in")), 0);
  EXPECT_TRUE(text_.contains(QStringLiteral("same place"))) << text_.toStdString();
  EXPECT_EQ(place_.memory->Tree(), before);
}

TEST_F(OnePlaceTest, AFolderIsNotCopiedOntoOrIntoItself) {
  const QStringList before = place_.memory->Tree();
  world_.prompts.ExpectChoice(0);
  EXPECT_NE(Copy(QStringLiteral("Workspace\\Here\\in\\tree"), QStringLiteral("Workspace\\There\\in")), 0);
  EXPECT_EQ(place_.memory->Tree(), before);
  EXPECT_NE(Copy(QStringLiteral("Workspace\\Here\\in"), QStringLiteral("Workspace\\There\\in\\tree")), 0);
  EXPECT_TRUE(text_.contains(QStringLiteral("same place"))) << text_.toStdString();
  EXPECT_EQ(place_.memory->Content(QStringLiteral("in\\tree\\sub\\only")), "the only copy");
  EXPECT_FALSE(place_.memory->Tree().join(u'\n').contains(QStringLiteral("trevane"))) << "no probe stays";
}

TEST_F(OnePlaceTest, AFolderOfFilesAloneIsNotCopiedIntoItself) {
  // No probe is placed before the source is listed: the new folder in it shows that one is needed.
  place_.memory->AddFile(QStringLiteral("flat\\only"), "the only copy");
  place_.memory->AddFile(QStringLiteral("flat\\zoo"), "another one");
  const QStringList before = place_.memory->Tree();
  EXPECT_NE(Copy(QStringLiteral("Workspace\\Here\\flat"), QStringLiteral("Workspace\\There\\flat")), 0);
  EXPECT_TRUE(text_.contains(QStringLiteral("same place"))) << text_.toStdString();
  EXPECT_EQ(place_.memory->Tree(), before);
  EXPECT_EQ(items_, 0);
}

TEST_F(OnePlaceTest, WhatWasMadeBeforeTheProbeWasFoundIsTakenBack) {
  // The destination is far below the source, behind much that is copied before it is reached.
  place_.memory->AddFile(QStringLiteral("top\\a\\first"), "1");
  place_.memory->AddFile(QStringLiteral("top\\a\\sub\\second"), "2");
  place_.memory->CreateLink(QStringLiteral("top\\a\\link"), QStringLiteral("first"));
  place_.memory->AddFile(QStringLiteral("top\\b"), QByteArray(9 * 1024 * 1024, 'b'));
  place_.memory->AddFile(QStringLiteral("top\\m\\n\\kept"), "kept");
  const QStringList before = place_.memory->Tree();
  EXPECT_NE(Copy(QStringLiteral("Workspace\\Here\\top"), QStringLiteral("Workspace\\There\\top\\m\\n")), 0);
  EXPECT_TRUE(text_.contains(QStringLiteral("same place"))) << text_.toStdString();
  EXPECT_EQ(place_.memory->Tree(), before);
  EXPECT_EQ(items_, 0);
}

TEST_F(OnePlaceTest, OnlyWhatTheCopyMadeIsTakenBack) {
  place_.memory->AddFile(QStringLiteral("top\\a\\first"), "1");
  place_.memory->AddFile(QStringLiteral("top\\b"), "b");
  place_.memory->AddFile(QStringLiteral("top\\m\\top\\a\\there"), "there before");
  // Another program works in what the copy has made.
  place_.faulty->SetHook([&, done = false](const FileSystemCall& call) mutable {
    if (call.operation == FileSystemOperation::List && call.path == u"top\\m" && !std::exchange(done, true)) {
      place_.memory->AddFile(QStringLiteral("top\\m\\top\\b"), "another program's");
      place_.memory->AddFile(QStringLiteral("top\\m\\top\\m\\new"), "another program's");
    }
  });
  world_.prompts.ExpectChoice(1);
  EXPECT_NE(Copy(QStringLiteral("Workspace\\Here\\top"), QStringLiteral("Workspace\\There\\top\\m")), 0);
  place_.faulty->SetHook({});
  EXPECT_EQ(
      place_.memory->Tree().filter(QStringLiteral("top\\m\\top\\")),
      (QStringList{QStringLiteral("top\\m\\top\\"), QStringLiteral("top\\m\\top\\a\\"),
                   QStringLiteral("top\\m\\top\\a\\there=there before"),
                   QStringLiteral("top\\m\\top\\b=another program's"), QStringLiteral("top\\m\\top\\m\\"),
                   QStringLiteral("top\\m\\top\\m\\new=another program's")}));
}

TEST_F(OnePlaceTest, AMoveThatNothingShowsToBeSafeStaysACopy) {
  MemoryFileSystemOptions options;
  options.identity = false;
  const auto other = EngineWorld::MakeMachine(options);
  other.memory->AddFile(QStringLiteral("only"), "old");
  world_.Connect(QStringLiteral("Other"), other);
  // The folder of the source cannot be asked for the temporary name.
  place_.faulty->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Stat &&
        IsTemporaryName(call.path.sliced(call.path.lastIndexOf(u'\\') + 1))) {
      throw RunTimeError(error::kAccessDenied, QStringLiteral("No"));
    }
  });
  for (const bool move : {false, true}) {
    SCOPED_TRACE(move);
    const auto file = world_.File(QStringLiteral("Workspace\\Here\\in\\only"));
    if (move) {
      file->RecordSource();
      ASSERT_EQ(file->Result(), 0);
    }
    world_.prompts.ExpectChoice(0);
    EXPECT_EQ(file->CopyDiffCtrl(QStringLiteral("Workspace\\Other"), {}), 0)
        << file->ResultText().toStdString();
    EXPECT_EQ(file->Arrived(), move ? Arrival::Skipped : Arrival::Everything);
    ASSERT_EQ(file->LeftOut().size(), move ? 1U : 0U);
    EXPECT_TRUE(!move || file->LeftOut().front().isCopied);
    EXPECT_EQ(other.memory->Content(QStringLiteral("only")), "the only copy");
    EXPECT_TRUE(place_.memory->Exists(QStringLiteral("in\\only")));
  }
}

TEST_F(OnePlaceTest, TwoPlacesAreToldApart) {
  MemoryFileSystemOptions options;
  options.identity = false;
  const auto other = EngineWorld::MakeMachine(options);
  other.memory->AddFile(QStringLiteral("only"), "old");
  other.memory->AddFile(QStringLiteral("tree\\sub\\only"), "old");
  world_.Connect(QStringLiteral("Other"), other);
  world_.prompts.AnswerAllChoices(1);
  EXPECT_EQ(Copy(QStringLiteral("Workspace\\Here\\in\\only"), QStringLiteral("Workspace\\Other")), 0)
      << text_.toStdString();
  EXPECT_EQ(Copy(QStringLiteral("Workspace\\Here\\in\\tree"), QStringLiteral("Workspace\\Other")), 0)
      << text_.toStdString();
  EXPECT_EQ(other.memory->Tree(),
            (QStringList{QStringLiteral("only=the only copy"), QStringLiteral("tree\\"),
                         QStringLiteral("tree\\sub\\"), QStringLiteral("tree\\sub\\only=the only copy")}));
}

/// A controller whose identities are those of paths, with a key that it may share with others.
class KeyedDevice final : public RootedFileSystem {
 public:
  explicit KeyedDevice(std::shared_ptr<FileSystem> disk)
      : RootedFileSystem(std::move(disk), QStringLiteral("disk"), QString()) {}
  [[nodiscard]] FileSystemCapabilities Capabilities() const override {
    FileSystemCapabilities capabilities = RootedFileSystem::Capabilities();
    capabilities.identity = true;
    capabilities.identityOfPath = true;
    return capabilities;
  }
  [[nodiscard]] std::optional<FileIdentity> Identity(const QString& path) override {
    FileIdentity identity;
    identity.text = QStringLiteral("key:\\") + path;
    return identity;
  }
  [[nodiscard]] std::vector<FileIdentity> FolderIdentities(const QString& folder) override {
    std::vector<FileIdentity> identities{*Identity(folder)};
    for (QString path = folder; path.contains(u'\\');) {
      path.truncate(path.lastIndexOf(u'\\'));
      identities.push_back(*Identity(path));
    }
    return identities;
  }
};

/// Two controllers of one key: of the same disk, or of two with the same paths.
class OneKeyTest : public BatchCopyTest {
 protected:
  OneKeyTest() {
    for (EngineWorld::Machine* machine : {&here_, &there_}) {
      MemoryFileSystemOptions options;
      options.identity = false;
      *machine = EngineWorld::MakeMachine(options);
      machine->memory->AddFile(QStringLiteral("disk\\tree\\sub\\f"), "content");
    }
    Connect(QStringLiteral("Here"), here_);
    Connect(QStringLiteral("Same"), here_);
    Connect(QStringLiteral("Clone"), there_);
    there_.memory->AddFile(QStringLiteral("disk\\tree\\sub\\f"), "old");
  }
  void Connect(const QString& name, const EngineWorld::Machine& disk) {
    EngineWorld::Machine machine = disk;
    machine.faulty = std::make_shared<FaultyFileSystem>(std::make_shared<KeyedDevice>(disk.faulty));
    world_.Connect(name, machine);
  }
  EngineWorld::Machine here_;
  EngineWorld::Machine there_;
};

TEST_F(OneKeyTest, OneDiskIsRefusedBeforeAnythingIsAskedOrCopied) {
  here_.memory->AddFile(QStringLiteral("disk\\tree\\a"), "before the destination");
  const QStringList before = here_.memory->Tree();
  for (const auto& [from, into] :
       {std::pair(QStringLiteral("\\tree"), QString()),
        std::pair(QStringLiteral("\\tree"), QStringLiteral("\\tree\\sub")),
        std::pair(QStringLiteral("\\tree\\sub\\f"), QStringLiteral("\\tree\\sub"))}) {
    SCOPED_TRACE(into.toStdString());
    here_.faulty->ClearCalls();
    EXPECT_EQ(Copy(QStringLiteral("Workspace\\Here") + from, QStringLiteral("Workspace\\Same") + into),
              error::kInvalidParameter);
    EXPECT_TRUE(text_.contains(QStringLiteral("same place"))) << text_.toStdString();
    EXPECT_EQ(Calls(here_, FileSystemOperation::CreateFolder), 0);
    EXPECT_EQ(here_.memory->Tree(), before);
  }
}

TEST_F(OneKeyTest, EqualPathsOfTwoDisksAreCopiedAndMoved) {
  world_.prompts.AnswerAllChoices(1);
  EXPECT_EQ(
      Copy(QStringLiteral("Workspace\\Here\\tree\\sub\\f"), QStringLiteral("Workspace\\Clone\\tree\\sub")), 0)
      << text_.toStdString();
  EXPECT_EQ(there_.memory->Content(QStringLiteral("disk\\tree\\sub\\f")), "content");
  EXPECT_EQ(Copy(QStringLiteral("Workspace\\Here\\tree"), QStringLiteral("Workspace\\Clone\\tree\\sub")), 0)
      << text_.toStdString();
  EXPECT_EQ(there_.memory->Content(QStringLiteral("disk\\tree\\sub\\tree\\sub\\f")), "content");
  const auto tree = world_.File(QStringLiteral("Workspace\\Here\\tree"));
  const auto clone = world_.File(QStringLiteral("Workspace\\Clone"));
  tree->RecordSource();
  EXPECT_EQ(tree->CopyDiffCtrl(*clone, {}), 0) << tree->ResultText().toStdString();
  tree->DeleteMoved(*clone, {}, true);
  EXPECT_EQ(tree->Result(), 0) << tree->ResultText().toStdString();
  EXPECT_FALSE(here_.memory->Exists(QStringLiteral("disk\\tree")));
  EXPECT_EQ(there_.memory->Content(QStringLiteral("disk\\tree\\sub\\f")), "content");
}

/// A controller that builds nothing beside a file and has no identities.
class NothingBesideTest : public BatchCopyTest {
 protected:
  void Connect(const RawCapabilities& can) {
    MemoryFileSystemOptions options;
    options.identity = false;
    place_.memory = std::make_shared<MemoryFileSystem>(options);
    place_.faulty = std::make_shared<FaultyFileSystem>(std::make_shared<RawFileSystem>(place_.memory, can));
    place_.memory->AddFile(QStringLiteral("in\\A.PAC"), "old");
    place_.memory->AddFile(QStringLiteral("in\\tree\\B.PAC"), "old");
    world_.Connect(QStringLiteral("Here"), place_);
    world_.Connect(QStringLiteral("There"), place_);
    source().AddFile(QStringLiteral("C:\\A.PAC"), "content");
    source().AddFile(QStringLiteral("C:\\tree\\B.PAC"), "content");
    place_.faulty->ClearCalls();
  }
  /// Calls that change something, except the removal of what they made.
  [[nodiscard]] std::vector<FileSystemCall> Changes() const {
    std::vector<FileSystemCall> changes;
    std::ranges::copy_if(place_.faulty->Calls(), std::back_inserter(changes), [](const FileSystemCall& call) {
      return call.operation == FileSystemOperation::Write || call.operation == FileSystemOperation::Commit ||
             call.operation == FileSystemOperation::CreateFolder;
    });
    return changes;
  }
  /// From now on only names that pass are taken.
  void TakeOnly(std::function<bool(const QString& name)> passes) {
    place_.faulty->SetHook([this, passes = std::move(passes)](const FileSystemCall& call) {
      const QString name = call.path.sliced(call.path.lastIndexOf(u'\\') + 1);
      if (call.operation != FileSystemOperation::Commit || name == QStringLiteral("B.PAC")) {
        return;
      }
      if (name != QStringLiteral("A.PAC")) {
        probes_ += name;
      }
      if (!passes(name)) {
        throw RunTimeError(error::kInvalidName, call.path);
      }
    });
  }

  EngineWorld::Machine place_;
  QStringList probes_;
};

TEST_F(NothingBesideTest, WithoutTemporaryNamesNothingIsWritten) {
  Connect({.temporaryNames = false});
  const QStringList before = place_.memory->Tree();
  world_.prompts.ExpectChoice(0);
  for (const auto& [from, into] :
       {std::pair(QStringLiteral("Workspace\\Here\\in\\A.PAC"), QStringLiteral("Workspace\\There\\in")),
        std::pair(QStringLiteral("Workspace\\Here\\in"), QStringLiteral("Workspace\\There\\in\\tree"))}) {
    EXPECT_EQ(Copy(from, into), error::kNotSupported);
    EXPECT_TRUE(text_.contains(QStringLiteral("Nothing shows that both"))) << text_.toStdString();
    EXPECT_TRUE(Changes().empty());
    EXPECT_EQ(place_.memory->Tree(), before);
  }
}

TEST_F(NothingBesideTest, InPlaceNothingIsWrittenWhereTheSourceCannotBeAsked) {
  Connect({.canRename = false});
  place_.memory->AddFile(QStringLiteral("other\\A.PAC"), "content");
  // A file that is built beside the old one could be copied, one that is written in place cannot.
  place_.faulty->SetHook([](const FileSystemCall& call) {
    const QString name = call.path.sliced(call.path.lastIndexOf(u'\\') + 1);
    if (call.operation == FileSystemOperation::Stat && call.path.startsWith(u"other") &&
        IsTemporaryName(name)) {
      throw RunTimeError(error::kAccessDenied, QStringLiteral("No"));
    }
  });
  world_.prompts.ExpectChoice(0);
  EXPECT_EQ(Copy(QStringLiteral("Workspace\\Here\\other\\A.PAC"), QStringLiteral("Workspace\\There\\in")),
            error::kNotSupported);
  EXPECT_TRUE(text_.contains(QStringLiteral("Nothing shows that both"))) << text_.toStdString();
  EXPECT_EQ(place_.memory->Content(QStringLiteral("in\\A.PAC")), "old");
}

TEST_F(NothingBesideTest, TheProbeHasANameThatIsTakenAndKnown) {
  Connect({.canRename = false});
  world_.prompts.AnswerAllChoices(1);
  TakeOnly([](const QString& name) { return name.endsWith(QStringLiteral(".PAC")); });
  EXPECT_EQ(Copy(QStringLiteral("Workspace\\My Computer\\C:\\A.PAC"), QStringLiteral("Workspace\\There\\in")),
            0)
      << text_.toStdString();
  EXPECT_EQ(place_.memory->Content(QStringLiteral("in\\A.PAC")), "content");
  ASSERT_EQ(probes_.size(), 3);
  TakeOnly([](const QString& name) { return name.indexOf(u'.') == 8; });
  EXPECT_EQ(Copy(kTree, QStringLiteral("Workspace\\There\\in")), 0) << text_.toStdString();
  EXPECT_EQ(place_.memory->Content(QStringLiteral("in\\tree\\B.PAC")), "content");
  ASSERT_EQ(probes_.size(), 5);
  for (const QString& name : probes_) {
    EXPECT_TRUE(IsTemporaryName(name)) << name.toStdString();
    EXPECT_FALSE(place_.memory->Tree().join(u'\n').contains(name)) << "no probe stays";
  }
  EXPECT_TRUE(IsOwnTemporaryName(probes_.back())) << "found when its program was killed";
}

}  // namespace
}  // namespace trevane::test
