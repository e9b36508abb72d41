#include "engine/files/ProviderError.h"
#include "engine/model/ContentSteps.h"
#include "engine/model/IxoController.h"
#include "engine/model/IxoFile.h"
#include "engine/model/IxoFiles.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "engine/substitute/FileSystemSession.h"
#include "engine/substitute/SubstituteController.h"
#include "tests/support/FaultyFileSystem.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace trevane::test {
namespace {

using Operation = FileSystemOperation;

template <class Work>
qint32 ErrorOf(const Work& work) {
  try {
    work();
  } catch (const RunTimeError& failure) {
    return failure.Number();
  }
  return 0;
}

/// A listing as a careless or hostile server gives it.
class HostileFileSystem final : public FileSystem {
 public:
  FileSystemCapabilities Capabilities() const override { return {}; }
  Listing List(const QString&) override {
    Listing entries;
    for (const QString& name :
         {QStringLiteral(""), QStringLiteral("."), QStringLiteral(".."), QStringLiteral("..\\up"),
          QStringLiteral("a/b"), QStringLiteral("a") + QChar(0) + QStringLiteral("b"), QStringLiteral("good"),
          QStringLiteral("good"), QStringLiteral("last")}) {
      FileEntry entry;
      entry.name = name;
      entry.size = std::numeric_limits<qint64>::max();
      entries.push_back(entry);
    }
    return entries;
  }
  std::optional<FileEntry> Find(const QString&) override {
    FileEntry entry;
    entry.name = QStringLiteral("..\\..\\other");
    return entry;
  }
  std::unique_ptr<ContentSource> OpenSource(const QString&, qint64) override {
    return std::make_unique<BytesSource>(QByteArray());
  }
  std::unique_ptr<ContentSink> OpenSink(const QString& path, const SinkRequest&) override {
    Fail(error::kNotSupported, path);
  }
  void CreateFolder(const QString&) override {}
  void Rename(const QString&, const QString&, bool) override {}
  void RemoveAlone(const QString&) override {}
};

class SubstituteFileTest : public testing::Test {
 protected:
  SubstituteFileTest() { Use({}); }

  void Use(const MemoryFileSystemOptions& options) {
    memory_ = std::make_shared<MemoryFileSystem>(options);
    faulty_ = std::make_shared<FaultyFileSystem>(memory_);
    controller_ = std::make_shared<SubstituteController>(
        QStringLiteral("A"), 1, std::make_shared<FileSystemSession>(faulty_, QStringLiteral("P")));
  }

  std::shared_ptr<IxoFile> Top() { return controller_->Files()->Item(qint32(0)); }
  std::shared_ptr<IxoFile> Open(const QString& path) { return controller_->OpenFile(path, {}); }
  int Calls(Operation operation) const {
    return static_cast<int>(
        std::count_if(faulty_->Calls().begin(), faulty_->Calls().end(),
                      [operation](const auto& call) { return call.operation == operation; }));
  }

  std::shared_ptr<MemoryFileSystem> memory_;
  std::shared_ptr<FaultyFileSystem> faulty_;
  std::shared_ptr<SubstituteController> controller_;
};

TEST_F(SubstituteFileTest, PathFollowedByNameNeverDoublesOrDropsASeparator) {
  memory_->AddFile(QStringLiteral("dir\\sub\\file"));
  EXPECT_EQ(Top()->Path(), QString());
  const auto dir = Top()->OpenFile(QStringLiteral("dir"), {});
  EXPECT_EQ(dir->Path(), QStringLiteral("\\"));
  EXPECT_EQ(dir->Path() + dir->Name(), QStringLiteral("\\dir"));
  const auto sub = dir->OpenFile(QStringLiteral("sub"), {});
  EXPECT_EQ(sub->Path() + sub->Name(), QStringLiteral("\\dir\\sub"));
  EXPECT_EQ(sub->Files()->Item(QStringLiteral("file"))->Path(), QStringLiteral("\\dir\\sub\\"));
  EXPECT_EQ(Open(sub->Path() + sub->Name())->Name(), QStringLiteral("sub"));
}

TEST_F(SubstituteFileTest, PathsOnDrivesBeginWithTheDrive) {
  MemoryFileSystemOptions options;
  options.drives = {QStringLiteral("C:")};
  Use(options);
  memory_->AddFile(QStringLiteral("C:\\dir\\file"));
  EXPECT_EQ(Top()->Path(), QString());
  EXPECT_EQ(Top()->Name(), QStringLiteral("C:"));
  const auto dir = Top()->OpenFile(QStringLiteral("dir"), {});
  EXPECT_EQ(dir->Path(), QStringLiteral("C:\\"));
  EXPECT_EQ(dir->OpenFile(QStringLiteral("file"), {})->Path(), QStringLiteral("C:\\dir\\"));
}

TEST_F(SubstituteFileTest, ShowingAFolderCostsOneListAndNoCallAnEntry) {
  for (int i = 0; i < 50; ++i) {
    memory_->AddFile(QStringLiteral("dir\\file%1").arg(i), "12345");
  }
  const auto dir = Open(QStringLiteral("dir"));
  faulty_->ClearCalls();
  const auto names = std::get<QStringList>(dir->FileNames({}));
  ASSERT_EQ(names.size(), 50);
  for (const QString& name : names) {
    const auto child = dir->Files()->Item(name);
    EXPECT_EQ(child->Size(), 5);
    EXPECT_EQ(child->Attribute() & 0x10, 0);
    EXPECT_TRUE(std::holds_alternative<Date>(child->DateLastModified()));
    EXPECT_FALSE(child->Type().isNull());
    dir->Files()->Remove(child->Index());
  }
  EXPECT_EQ(faulty_->CallCount(), 1);
  EXPECT_EQ(Calls(Operation::List), 1);
}

TEST_F(SubstituteFileTest, AListOfRecordsCostsOneCall) {
  for (int i = 0; i < 50; ++i) {
    memory_->AddFile(QStringLiteral("dir\\file%1").arg(i), "12345");
  }
  memory_->AddFolder(QStringLiteral("dir\\sub"));
  const auto dir = Open(QStringLiteral("dir"));
  faulty_->ClearCalls();
  const Listing entries = dir->List();
  ASSERT_EQ(entries.size(), 51U);
  EXPECT_EQ(entries[0].name, QStringLiteral("file0"));
  EXPECT_EQ(entries[0].size, 5);
  EXPECT_TRUE(entries[0].modified.IsPresent());
  EXPECT_TRUE(entries[50].IsFolder());
  EXPECT_EQ(faulty_->CallCount(), 1);
  EXPECT_EQ(Calls(Operation::List), 1);
}

TEST_F(SubstituteFileTest, RecordsAreListedAnewAndMatchTheObjects) {
  memory_->AddFile(QStringLiteral("dir\\a"), "1");
  memory_->AddLink(QStringLiteral("dir\\broken"), QStringLiteral("dir\\none"));
  memory_->AddFolder(QStringLiteral("dir\\sub"));
  const auto dir = Open(QStringLiteral("dir"));
  static_cast<void>(dir->FileNames({}));
  memory_->AddFile(QStringLiteral("dir\\z"), "12");
  memory_->SetTimes(QStringLiteral("dir\\z"), Date{}, Date{5}, Date{7});
  const Listing records = dir->List();
  const Listing byObject = dir->IxoFile::List();
  ASSERT_EQ(records.size(), 4U);
  EXPECT_TRUE(records[1].leadsNowhere);
  EXPECT_EQ(records, byObject);
}

TEST_F(SubstituteFileTest, AFileGivesNoRecords) {
  memory_->AddFile(QStringLiteral("f"), "1");
  const auto file = Open(QStringLiteral("f"));
  EXPECT_NE(ErrorOf([&] { static_cast<void>(file->List()); }), 0);
  EXPECT_NE(ErrorOf([&] { static_cast<void>(file->IxoFile::List()); }), 0);
}

TEST_F(SubstituteFileTest, AChildIsOneObjectUntilItIsReleased) {
  for (int i = 0; i < 40; ++i) {
    memory_->AddFile(QStringLiteral("dir\\f%1").arg(i), "x");
  }
  const auto files = Open(QStringLiteral("dir"))->Files();
  std::vector<std::weak_ptr<IxoFile>> seen;
  for (int i = 0; i < 40; ++i) {
    const auto child = files->Item(QStringLiteral("f%1").arg(i));
    EXPECT_EQ(files->Item(QStringLiteral("f%1").arg(i)), child);
    seen.push_back(child);
  }
  EXPECT_FALSE(seen[7].expired());
  files->Remove(seen[7].lock()->Index());
  EXPECT_TRUE(seen[7].expired());
  files->Remove(qint32(12345));
  files->Clear();
  for (const auto& child : seen) {
    EXPECT_TRUE(child.expired());
  }
}

TEST_F(SubstituteFileTest, AnObjectStaysUsableAfterItsCollectionWasCleared) {
  memory_->AddFile(QStringLiteral("dir\\f"), "abc");
  auto dir = Open(QStringLiteral("dir"));
  const auto child = dir->Files()->Item(QStringLiteral("f"));
  dir->Files()->Clear();
  dir.reset();
  EXPECT_EQ(child->Value(), Variant(QByteArray("abc")));
  EXPECT_EQ(child->Path() + child->Name(), QStringLiteral("\\dir\\f"));
}

TEST_F(SubstituteFileTest, ClearDropsWhatWasListed) {
  memory_->AddFile(QStringLiteral("dir\\a"));
  const auto dir = Open(QStringLiteral("dir"));
  EXPECT_EQ(dir->Files()->Item(qint32(0))->Name(), QStringLiteral("a"));
  memory_->Vanish(QStringLiteral("dir\\a"));
  memory_->AddFile(QStringLiteral("dir\\b"));
  dir->Files()->Clear();
  EXPECT_EQ(dir->Files()->Item(qint32(0))->Name(), QStringLiteral("b"));
}

TEST_F(SubstituteFileTest, AChangeInAFolderDropsItsCache) {
  memory_->AddFile(QStringLiteral("dir\\a"), "1");
  memory_->AddFolder(QStringLiteral("other"));
  const auto dir = Open(QStringLiteral("dir"));
  const auto a = dir->Files()->Item(QStringLiteral("a"));
  a->PutValue(QByteArray("12345"));
  EXPECT_EQ(a->Size64(), 5);
  EXPECT_EQ(dir->Files()->Item(QStringLiteral("a"))->Size64(), 5);
  Open(QStringLiteral("dir\\a"))->Copy(QStringLiteral("\\dir\\b"), QStringLiteral("OverWrite=False"));
  EXPECT_EQ(dir->Files()->Item(QStringLiteral("b"))->Size64(), 5);
  Open(QStringLiteral("dir\\b"))->Move(QStringLiteral("\\other\\c"), QStringLiteral("OverWrite=False"));
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(dir->Files()->Item(QStringLiteral("b"))); }), error::kNotFound);
  static_cast<void>(
      Open(QStringLiteral("dir"))->OpenFile(QStringLiteral("new"), QStringLiteral("@Create=2")));
  EXPECT_EQ(dir->Files()->Item(QStringLiteral("new"))->Attribute() & 0x10, 0x10);
  a->Delete({});
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(dir->Files()->Item(QStringLiteral("a"))); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(a->Attribute()); }), error::kNotFound);
}

TEST_F(SubstituteFileTest, NamesAreListedAnewEachTime) {
  memory_->AddFile(QStringLiteral("dir\\a"));
  const auto dir = Open(QStringLiteral("dir"));
  EXPECT_EQ(dir->FileNames({}), Variant(QStringList{QStringLiteral("a")}));
  memory_->AddFile(QStringLiteral("dir\\b"));
  EXPECT_EQ(dir->FileNames({}), Variant(QStringList({QStringLiteral("a"), QStringLiteral("b")})));
}

TEST_F(SubstituteFileTest, OpeningAMissingNameFailsAndCreatesNothing) {
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(Top()->OpenFile(QStringLiteral("no"), {})); }), error::kNotFound);
  EXPECT_EQ(
      ErrorOf([&] { static_cast<void>(Top()->OpenFile(QStringLiteral("no"), QStringLiteral("Path=,"))); }),
      error::kNotFound);
  EXPECT_TRUE(memory_->Tree().isEmpty());
}

TEST_F(SubstituteFileTest, InvalidNamesAreRefused) {
  memory_->AddFile(QStringLiteral("dir\\sub\\f"));
  for (const QString& name :
       {QStringLiteral(""), QStringLiteral("."), QStringLiteral(".."), QStringLiteral("dir\\sub"),
        QStringLiteral("dir/sub"), QStringLiteral("a") + QChar(0)}) {
    for (const QString& option :
         {QStringLiteral(""), QStringLiteral("@Create=1"), QStringLiteral("@Create=2")}) {
      EXPECT_EQ(ErrorOf([&] { static_cast<void>(Top()->OpenFile(name, option)); }), error::kInvalidName);
    }
  }
}

TEST_F(SubstituteFileTest, PathsOfCallersFollowTheRuleOfTheFileSystems) {
  memory_->AddFile(QStringLiteral("dir\\sub\\f"), "x");
  const auto file = Top()->OpenFile(QStringLiteral("dir"), {});
  EXPECT_EQ(controller_->OpenFile(QStringLiteral("f"), QStringLiteral("Path=/dir/sub/"))->Path(),
            QStringLiteral("\\dir\\sub\\"));
  // A root that ends with a separator, and what is put behind it.
  for (const QString& path :
       {QStringLiteral("/\\dir\\one"), QStringLiteral("\\\\dir/two"), QStringLiteral("dir\\three\\")}) {
    Open(QStringLiteral("dir\\sub\\f"))->Copy(path, QStringLiteral("OverWrite=False"));
  }
  EXPECT_EQ(file->FileNames({}), Variant(QStringList({QStringLiteral("one"), QStringLiteral("sub"),
                                                      QStringLiteral("three"), QStringLiteral("two")})));
  for (const QString& path :
       {QStringLiteral("dir\\\\sub\\f"), QStringLiteral("dir\\..\\f"), QStringLiteral("dir\\sub//f")}) {
    EXPECT_EQ(ErrorOf([&] { file->Copy(path, QStringLiteral("OverWrite=False")); }), error::kInvalidName)
        << path.toStdString();
  }
}

TEST_F(SubstituteFileTest, ANewFileTakesItsNameWhenItsContentIsPut) {
  const auto file = Top()->CreateNewFile(QStringLiteral("new"));
  EXPECT_FALSE(memory_->Exists(QStringLiteral("new")));
  file->PutValue(QByteArray("content"));
  EXPECT_EQ(memory_->Content(QStringLiteral("new")), "content");
  EXPECT_EQ(file->Size64(), 7);
  EXPECT_EQ(Calls(Operation::CreateFile), 0);
}

TEST_F(SubstituteFileTest, AFileThatIsOpenedToBeCreatedIsThereAtOnce) {
  const auto file = Top()->OpenFile(QStringLiteral("new"), QStringLiteral("@Create=1"));
  EXPECT_EQ(memory_->Tree(), QStringList{QStringLiteral("new=")});
  EXPECT_EQ(Top()->OpenFile(QStringLiteral("new"), QStringLiteral("@Create=1")), file);
  file->PutValue(QByteArray("content"));
  EXPECT_EQ(memory_->Tree(), QStringList{QStringLiteral("new=content")});
  file->TakeBack();
  EXPECT_TRUE(memory_->Tree().isEmpty());
}

TEST_F(SubstituteFileTest, DroppingANewFileAsksTheFileSystemNothing) {
  auto file = Top()->CreateNewFile(QStringLiteral("new"));
  Top()->Files()->Remove(file->Index());
  faulty_->ClearCalls();
  file.reset();
  EXPECT_EQ(faulty_->CallCount(), 0);
  EXPECT_TRUE(memory_->Tree().isEmpty());
}

TEST_F(SubstituteFileTest, ASinkThatIsDroppedLeavesNothing) {
  memory_->AddFile(QStringLiteral("old"), "old content");
  const auto made = Top()->CreateNewFile(QStringLiteral("new"));
  const auto old = Open(QStringLiteral("old"));
  for (const auto& file : {made, old}) {
    const auto sink = file->OpenSink({});
    sink->Write("piece");
  }
  EXPECT_EQ(memory_->Tree(), QStringList{QStringLiteral("old=old content")});
}

TEST_F(SubstituteFileTest, ContentOutlivesItsFileAndTheHeldFolder) {
  memory_->AddFile(QStringLiteral("folder\\old"), "old content");
  for (const bool held : {false, true}) {
    SCOPED_TRACE(held);
    auto folder = Open(QStringLiteral("folder"));
    if (held) {
      folder->Hold();
    }
    auto made = folder->CreateNewFile(held ? QStringLiteral("second") : QStringLiteral("first"));
    auto old = folder->OpenFile(QStringLiteral("old"), {});
    const auto source = old->OpenSource();
    const auto sink = made->OpenSink({});
    folder->Files()->Clear();
    if (held) {
      folder->LetGo();
    }
    made.reset();
    old.reset();
    folder.reset();
    Top()->Files()->Clear();
    EXPECT_EQ(ReadAll(*source), "old content");
    sink->Write("new");
    sink->Write(" content");
    EXPECT_EQ(sink->Commit().entry.size, 11);
  }
  EXPECT_EQ(memory_->Content(QStringLiteral("folder\\first")), "new content");
  EXPECT_EQ(memory_->Content(QStringLiteral("folder\\second")), "new content");
}

TEST_F(SubstituteFileTest, ACommitGivesTheItemAndNothingIsAskedAgain) {
  const auto file = Top()->CreateNewFile(QStringLiteral("new"));
  const auto sink = file->OpenSink({});
  sink->Write("con");
  sink->Write("tent");
  const SeenItem placed = sink->Commit();
  EXPECT_EQ(placed.entry.name, QStringLiteral("new"));
  EXPECT_EQ(placed.entry.size, 7);
  faulty_->ClearCalls();
  EXPECT_EQ(file->Size64(), 7);
  EXPECT_EQ(faulty_->CallCount(), 0);
}

TEST_F(SubstituteFileTest, AFailedCommitLeavesNothingKnown) {
  memory_->AddFile(QStringLiteral("old"), "old");
  const auto file = Open(QStringLiteral("old"));
  const auto sink = file->OpenSink({});
  sink->Write("longer content");
  faulty_->Arm(1, FaultSpan::Once, error::kTimeOut, Fault::DoAndFail);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(sink->Commit()); }), error::kTimeOut);
  EXPECT_EQ(file->Size64(), 14);
}

TEST_F(SubstituteFileTest, ASourceBeginsAtItsOffset) {
  memory_->AddFile(QStringLiteral("f"), "0123456789");
  EXPECT_EQ(ReadAll(*Open(QStringLiteral("f"))->OpenSource(4)), "456789");
  EXPECT_EQ(ReadAll(*Open(QStringLiteral("f"))->OpenSource(40)), "");
}

TEST_F(SubstituteFileTest, BatchesAreWrittenAndReadInAFolder) {
  for (const bool held : {false, true}) {
    memory_->AddFolder(QStringLiteral("dir"));
    const auto dir = Open(QStringLiteral("dir"));
    if (held) {
      dir->Hold();
    }
    const auto written = dir->WriteMany(
        {{.name = QStringLiteral("a"), .content = "one"}, {.name = QStringLiteral("b"), .content = "three"}});
    ASSERT_EQ(written.size(), 2U);
    EXPECT_EQ(written[1].item->entry.size, 5);
    const std::vector<NewContent> hostile = {{.name = QStringLiteral("a\\b")}};
    const auto read = dir->ReadMany({QStringLiteral("b"), QStringLiteral("a")});
    ASSERT_EQ(read.size(), 2U);
    EXPECT_EQ(read[0].content, "three");
    EXPECT_EQ(read[1].content, "one");
    EXPECT_EQ(ErrorOf([&] { static_cast<void>(dir->ReadMany({QStringLiteral("..")})); }),
              error::kInvalidName);
    EXPECT_EQ(ErrorOf([&] { static_cast<void>(dir->WriteMany(hostile)); }), error::kInvalidName);
    if (held) {
      dir->LetGo();
    }
    memory_->Vanish(QStringLiteral("dir"));
  }
}

TEST_F(SubstituteFileTest, NothingIsLeftOfABatchsFileThatFailed) {
  const auto top = Top();
  for (int call = 1;; ++call) {
    faulty_->Arm(call, FaultSpan::Once, error::kTimeOut, Fault::DoAndFail);
    const auto written = top->WriteMany(
        {{.name = QStringLiteral("a"), .content = "one"}, {.name = QStringLiteral("b"), .content = "two"}});
    QStringList there;
    for (size_t i = 0; i < written.size(); ++i) {
      if (written[i].item) {
        there.append(i == 0 ? QStringLiteral("a=one") : QStringLiteral("b=two"));
      }
    }
    EXPECT_EQ(memory_->Tree(), there) << call;
    if (faulty_->FaultCount() == 0) {
      break;
    }
    memory_->Vanish(QStringLiteral("a"));
    memory_->Vanish(QStringLiteral("b"));
  }
}

TEST_F(SubstituteFileTest, ABatchLeavesAnothersFileAlone) {
  memory_->AddFile(QStringLiteral("a"), "one");
  const auto written = Top()->WriteMany({{.name = QStringLiteral("a"), .content = "one"}});
  ASSERT_TRUE(written[0].failure);
  EXPECT_EQ(written[0].failure->Number(), error::kExists);
  EXPECT_EQ(memory_->Tree(), QStringList{QStringLiteral("a=one")});
}

TEST_F(SubstituteFileTest, ANewFileWhoseContentCannotBePutNeverAppears) {
  auto file = Top()->CreateNewFile(QStringLiteral("new"));
  faulty_->Arm(1);
  EXPECT_EQ(ErrorOf([&] { file->PutValue(QByteArray("content")); }), error::kTimeOut);
  faulty_->Disarm();
  Top()->Files()->Clear();
  file.reset();
  EXPECT_TRUE(memory_->Tree().isEmpty());
}

TEST_F(SubstituteFileTest, ANewFileThatIsDeletedBeforeItsContentNeverAppears) {
  auto file = Top()->CreateNewFile(QStringLiteral("new"));
  file->Delete({});
  file.reset();
  EXPECT_TRUE(memory_->Tree().isEmpty());
}

TEST_F(SubstituteFileTest, TheLeftoverOfAFailedPutIsDeleted) {
  const auto file = Top()->CreateNewFile(QStringLiteral("new"));
  faulty_->Arm(3, FaultSpan::Once, error::kTimeOut, Fault::DoAndFail);
  EXPECT_EQ(ErrorOf([&] { file->PutValue(QByteArray("content")); }), error::kTimeOut);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("new")));
  file->Delete({});
  EXPECT_FALSE(memory_->Exists(QStringLiteral("new")));
}

TEST_F(SubstituteFileTest, TheLeftoverOfAFailedPutIsTakenBack) {
  const auto file = Top()->CreateNewFile(QStringLiteral("new"));
  faulty_->Arm(3, FaultSpan::Once, error::kTimeOut, Fault::DoAndFail);
  EXPECT_EQ(ErrorOf([&] { file->PutValue(QByteArray("content")); }), error::kTimeOut);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("new")));
  file->TakeBack();
  EXPECT_FALSE(memory_->Exists(QStringLiteral("new")));
}

TEST_F(SubstituteFileTest, AnothersFileIsNotTakenBack) {
  for (const bool failed : {false, true}) {
    auto file = Top()->CreateNewFile(QStringLiteral("new"));
    if (failed) {
      faulty_->Arm(1);
      EXPECT_EQ(ErrorOf([&] { file->PutValue(QByteArray("content")); }), error::kTimeOut);
      faulty_->Disarm();
    } else {
      file->PutValue(QByteArray("content"));
    }
    memory_->AddFile(QStringLiteral("new"), "theirs!");
    file->TakeBack();
    file.reset();
    EXPECT_EQ(memory_->Tree(), QStringList{QStringLiteral("new=theirs!")}) << failed;
    memory_->Vanish(QStringLiteral("new"));
  }
}

TEST_F(SubstituteFileTest, AFileWithoutContentIsTakenBackWithoutATrace) {
  auto file = Top()->CreateNewFile(QStringLiteral("new"));
  memory_->AddFile(QStringLiteral("new"), "theirs");
  file->TakeBack();
  file.reset();
  EXPECT_EQ(memory_->Tree(), QStringList{QStringLiteral("new=theirs")});
}

TEST_F(SubstituteFileTest, ANewFileIsMadeWithoutALookUp) {
  const auto top = Top();
  EXPECT_TRUE(top->IsKnownAbsent(QStringLiteral("new")));
  faulty_->ClearCalls();
  const auto file = top->CreateNewFile(QStringLiteral("new"));
  EXPECT_EQ(faulty_->CallCount(), 0);
  file->PutValue(QByteArray("content"));
  EXPECT_FALSE(top->IsKnownAbsent(QStringLiteral("new")));
  EXPECT_EQ(memory_->Content(QStringLiteral("new")), "content");
}

TEST_F(SubstituteFileTest, ANewFileIsRefusedWhereAnotherOneIs) {
  for (const QString& name : {QStringLiteral("before"), QStringLiteral("meanwhile")}) {
    if (name == QStringLiteral("before")) {
      memory_->AddFile(name, "theirs");
    }
    const auto file = Top()->CreateNewFile(name);
    memory_->AddFile(name, "theirs");
    EXPECT_EQ(ErrorOf([&] { file->PutValue(QByteArray("ours")); }), error::kExists);
    file->TakeBack();
    EXPECT_EQ(memory_->Content(name), "theirs");
  }
}

TEST_F(SubstituteFileTest, APrivateFolderIsRefusedWhereAnotherItemIs) {
  memory_->AddFile(QStringLiteral("dir\\f"), "x");
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(Top()->CreateClosedFolder(QStringLiteral("dir"))); }),
            error::kExists);
  EXPECT_EQ(
      ErrorOf([&] { static_cast<void>(Open(QStringLiteral("dir\\f"))->CreateNewFile(QStringLiteral("a"))); }),
      error::kWin32Error + 267);
}

TEST_F(SubstituteFileTest, AFlushReachesTheFileSystem) {
  memory_->AddFile(QStringLiteral("f"), "x");
  const auto file = Top()->OpenFile(QStringLiteral("f"), {});
  faulty_->ClearCalls();
  file->Flush();
  ASSERT_FALSE(faulty_->Calls().empty());
  EXPECT_EQ(faulty_->Calls().back().operation, Operation::Flush);
}

TEST_F(SubstituteFileTest, ANewFileNeverReplacesWhatCameMeanwhile) {
  auto file = Top()->CreateNewFile(QStringLiteral("new"));
  memory_->AddFile(QStringLiteral("new"), "theirs");
  EXPECT_EQ(ErrorOf([&] { file->PutValue(QByteArray("ours")); }), error::kExists);
  file->Delete({});
  file.reset();
  EXPECT_EQ(memory_->Content(QStringLiteral("new")), "theirs");
}

TEST_F(SubstituteFileTest, ANewFileNeverReplacesOrDeletesALateArrival) {
  auto file = Top()->CreateNewFile(QStringLiteral("new"));
  faulty_->SetHook([this](const FileSystemCall& call) {
    if (call.operation == Operation::Write) {
      memory_->AddFile(QStringLiteral("new"), "theirs");
    }
  });
  EXPECT_EQ(ErrorOf([&] { file->PutValue(QByteArray("ours")); }), error::kExists);
  faulty_->SetHook({});
  EXPECT_EQ(memory_->Content(QStringLiteral("new")), "theirs");
  file->Delete({});
  file.reset();
  EXPECT_EQ(memory_->Content(QStringLiteral("new")), "theirs");
}

TEST_F(SubstituteFileTest, CreatingAnExistingItemYieldsIt) {
  memory_->AddFile(QStringLiteral("file"), "old");
  memory_->AddFile(QStringLiteral("dir\\inner"), "x");
  EXPECT_EQ(Top()->OpenFile(QStringLiteral("file"), QStringLiteral("@Create=1"))->Value(),
            Variant(QByteArray("old")));
  EXPECT_EQ(Top()->OpenFile(QStringLiteral("dir"), QStringLiteral("@Create=2"))->FileNames({}),
            Variant(QStringList{QStringLiteral("inner")}));
}

TEST_F(SubstituteFileTest, CreatingAnExistingItemOfAnotherKindFails) {
  memory_->AddFile(QStringLiteral("file"), "old");
  memory_->AddFolder(QStringLiteral("dir"));
  EXPECT_EQ(ErrorOf([&] {
              static_cast<void>(Top()->OpenFile(QStringLiteral("dir"), QStringLiteral("@Create=1")));
            }),
            error::kExists);
  EXPECT_EQ(ErrorOf([&] {
              static_cast<void>(Top()->OpenFile(QStringLiteral("file"), QStringLiteral("@Create=2")));
            }),
            error::kExists);
  EXPECT_EQ(memory_->Content(QStringLiteral("file")), "old");
}

TEST_F(SubstituteFileTest, AFolderIsCreatedAtOnce) {
  const auto folder = Top()->OpenFile(QStringLiteral("new"), QStringLiteral("@Create=2"));
  EXPECT_EQ(memory_->Tree(), QStringList{QStringLiteral("new\\")});
  EXPECT_EQ(folder->Attribute() & 0x10, 0x10);
}

TEST_F(SubstituteFileTest, NothingIsCreatedInAFile) {
  memory_->AddFile(QStringLiteral("file"), "x");
  const auto file = Top()->OpenFile(QStringLiteral("file"), {});
  EXPECT_NE(
      ErrorOf([&] { static_cast<void>(file->OpenFile(QStringLiteral("a"), QStringLiteral("@Create=1"))); }),
      0);
  EXPECT_NE(
      ErrorOf([&] { static_cast<void>(file->OpenFile(QStringLiteral("a"), QStringLiteral("@Create=2"))); }),
      0);
  EXPECT_EQ(memory_->Tree(), QStringList{QStringLiteral("file=x")});
}

TEST_F(SubstituteFileTest, AFailedLookUpIsNotTakenForAMissingItem) {
  const auto top = Top();
  faulty_->Arm(1);
  EXPECT_EQ(
      ErrorOf([&] { static_cast<void>(top->OpenFile(QStringLiteral("new"), QStringLiteral("@Create=2"))); }),
      error::kTimeOut);
  EXPECT_TRUE(memory_->Tree().isEmpty());
}

TEST_F(SubstituteFileTest, PathOptionOpensAndCreatesInAnotherFolder) {
  memory_->AddFile(QStringLiteral("a,b\\f"), "x");
  EXPECT_EQ(Top()->OpenFile(QStringLiteral("f"), QStringLiteral("Path=\\a,b,"))->Path(),
            QStringLiteral("\\a,b\\"));
  static_cast<void>(Top()->OpenFile(QStringLiteral("new"), QStringLiteral("Path=/a,b,@Create=2")));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("a,b\\new")));
  EXPECT_EQ(ErrorOf([&] {
              static_cast<void>(Top()->OpenFile(QStringLiteral("new"), QStringLiteral("Path=no,@Create=2")));
            }),
            error::kNotFound);
}

TEST_F(SubstituteFileTest, OnlyExactNamesAreFoundWhereCaseMatters) {
  memory_->AddFile(QStringLiteral("Name"), "1");
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(Top()->OpenFile(QStringLiteral("name"), {})); }),
            error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(Top()->Files()->Item(QStringLiteral("name"))); }),
            error::kNotFound);
}

TEST_F(SubstituteFileTest, NamesAreFoundInAnyCaseAndKeepTheirSpelling) {
  MemoryFileSystemOptions options;
  options.caseSensitive = false;
  Use(options);
  memory_->AddFile(QStringLiteral("Name"), "1");
  EXPECT_EQ(Top()->OpenFile(QStringLiteral("nAME"), {})->Name(), QStringLiteral("Name"));
  EXPECT_EQ(Top()->Files()->Item(QStringLiteral("nAME"))->Name(), QStringLiteral("Name"));
  EXPECT_EQ(Top()->OpenFile(QStringLiteral("NAME"), QStringLiteral("@Create=1"))->Value(),
            Variant(QByteArray("1")));
}

TEST_F(SubstituteFileTest, SizeSaturatesAndSize64DoesNot) {
  const auto session =
      std::make_shared<FileSystemSession>(std::make_shared<HostileFileSystem>(), QStringLiteral("P"));
  SubstituteController controller(QStringLiteral("A"), 1, session);
  const auto file = controller.Files()->Item(qint32(0))->Files()->Item(QStringLiteral("good"));
  EXPECT_EQ(file->Size(), 2147483647);
  EXPECT_EQ(file->Size64(), std::numeric_limits<qint64>::max());
}

TEST_F(SubstituteFileTest, BatchesHoldWhatAListingHolds) {
  for (int i = 0; i < 25; ++i) {
    memory_->AddFile(QStringLiteral("dir\\f%1").arg(i));
  }
  faulty_->SetBatches(10);
  QStringList names;
  QList<size_t> sizes;
  Open(QStringLiteral("dir"))->ListInBatches([&](Listing&& entries) {
    sizes.append(entries.size());
    for (const FileEntry& entry : entries) {
      names.append(entry.name);
    }
    return true;
  });
  EXPECT_EQ(sizes, (QList<size_t>{10, 10, 5}));
  EXPECT_EQ(Variant(names), Open(QStringLiteral("dir"))->FileNames({}));
}

TEST_F(SubstituteFileTest, AReceiverEndsTheBatches) {
  memory_->AddFile(QStringLiteral("dir\\a"));
  memory_->AddFile(QStringLiteral("dir\\b"));
  faulty_->SetBatches(1);
  int batches = 0;
  Open(QStringLiteral("dir"))->ListInBatches([&](Listing&&) {
    ++batches;
    return false;
  });
  EXPECT_EQ(batches, 1);
}

TEST_F(SubstituteFileTest, HostileNamesOfBatchesAreDropped) {
  const auto controller = std::make_shared<SubstituteController>(
      QStringLiteral("A"), 1,
      std::make_shared<FileSystemSession>(std::make_shared<HostileFileSystem>(), QStringLiteral("P")));
  const auto top = controller->Files()->Item(qint32(0));
  QStringList names;
  top->ListInBatches([&](Listing&& entries) {
    for (const FileEntry& entry : entries) {
      names.append(entry.name);
    }
    return true;
  });
  EXPECT_EQ(names, (QStringList{QStringLiteral("good"), QStringLiteral("last")}));
  EXPECT_EQ(top->RefusedNames().size(), 6);
}

TEST_F(SubstituteFileTest, HostileNamesOfAListingAreDropped) {
  const auto session =
      std::make_shared<FileSystemSession>(std::make_shared<HostileFileSystem>(), QStringLiteral("P"));
  SubstituteController controller(QStringLiteral("A"), 1, session);
  const auto top = controller.Files()->Item(qint32(0));
  EXPECT_EQ(top->FileNames({}), Variant(QStringList({QStringLiteral("good"), QStringLiteral("last")})));
  for (const Listing& entries : {top->List(), top->IxoFile::List()}) {
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].name, QStringLiteral("good"));
    EXPECT_EQ(entries[1].name, QStringLiteral("last"));
    EXPECT_EQ(top->RefusedNames().size(), 6);
  }
  EXPECT_EQ(top->OpenFile(QStringLiteral("asked"), {})->Name(), QStringLiteral("asked"));
}

TEST_F(SubstituteFileTest, UnknownDatesAreMissing) {
  memory_->AddFile(QStringLiteral("f"));
  memory_->SetTimes(QStringLiteral("f"), Date{}, Date{5}, Date{7});
  const auto file = Top()->OpenFile(QStringLiteral("f"), {});
  EXPECT_EQ(file->DateCreated(), Variant(Missing{}));
  EXPECT_EQ(file->DateLastAccessed(), Variant(Date{5}));
  EXPECT_EQ(file->DateLastModified(), Variant(Date{7}));
}

TEST_F(SubstituteFileTest, ValueTakesAByteArrayAndNothingElse) {
  memory_->AddFile(QStringLiteral("f"), "old");
  const auto file = Top()->OpenFile(QStringLiteral("f"), {});
  EXPECT_EQ(ErrorOf([&] { file->PutValue(QStringLiteral("text")); }), error::kInvalidParameter);
  EXPECT_EQ(memory_->Content(QStringLiteral("f")), "old");
}

TEST_F(SubstituteFileTest, CopyAndMoveReplaceOnlyWhenAllowed) {
  memory_->AddFile(QStringLiteral("a"), "a");
  memory_->AddFile(QStringLiteral("b"), "b");
  const auto a = Top()->OpenFile(QStringLiteral("a"), {});
  EXPECT_EQ(ErrorOf([&] { a->Copy(QStringLiteral("\\b"), QStringLiteral("OverWrite=False")); }),
            error::kExists);
  EXPECT_EQ(ErrorOf([&] { a->Move(QStringLiteral("\\b"), QStringLiteral("OverWrite=False")); }),
            error::kExists);
  EXPECT_EQ(ErrorOf([&] { a->Copy(QStringLiteral("\\b"), QStringLiteral("@Create=1")); }),
            error::kInvalidParameter);
  a->Copy(QStringLiteral("\\b"), QStringLiteral("OverWrite=True"));
  EXPECT_EQ(memory_->Content(QStringLiteral("b")), "a");
  a->Move(QStringLiteral("\\b"), QStringLiteral("OverWrite=True"));
  EXPECT_EQ(memory_->Tree(), QStringList{QStringLiteral("b=a")});
  EXPECT_EQ(a->Name(), QStringLiteral("b"));
  EXPECT_EQ(a->Value(), Variant(QByteArray("a")));
}

TEST_F(SubstituteFileTest, ATopIsNeverDeletedMovedOrReplaced) {
  MemoryFileSystemOptions options;
  options.drives = {QStringLiteral("C:"), QStringLiteral("D:")};
  Use(options);
  memory_->AddFile(QStringLiteral("C:\\f"), "x");
  const QStringList before = memory_->Tree();
  const auto drive = Top();
  EXPECT_EQ(ErrorOf([&] { drive->Delete({}); }), error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { drive->Move(QStringLiteral("D:\\x"), QStringLiteral("OverWrite=True")); }),
            error::kAccessDenied);
  const auto file = drive->OpenFile(QStringLiteral("f"), {});
  EXPECT_EQ(ErrorOf([&] { file->Move(QStringLiteral("D:"), QStringLiteral("OverWrite=True")); }),
            error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { file->Copy(QStringLiteral("/"), QStringLiteral("OverWrite=True")); }),
            error::kAccessDenied);
  EXPECT_EQ(memory_->Tree(), before);
}

TEST_F(SubstituteFileTest, RunAndAnEmptyExecuteDoTheSame) {
  memory_->AddFile(QStringLiteral("f"));
  const auto file = Top()->OpenFile(QStringLiteral("f"), {});
  faulty_->ClearCalls();
  EXPECT_EQ(file->Run({}), file->Execute({}, Missing{}));
  ASSERT_EQ(faulty_->CallCount(), 2);
  const FileSystemCall open{Operation::Execute, QStringLiteral("f"), QString(), Missing{}};
  EXPECT_EQ(faulty_->Calls()[0], open);
  EXPECT_EQ(faulty_->Calls()[1], open);
}

TEST_F(SubstituteFileTest, ACommandReachesTheFileSystemUnchanged) {
  memory_->AddFile(QStringLiteral("f"));
  const auto file = Top()->OpenFile(QStringLiteral("f"), {});
  faulty_->ClearCalls();
  EXPECT_EQ(file->Execute(QStringLiteral(" Print, @x "), Variant(QStringLiteral("a,b"))),
            Variant(QStringLiteral(" Print, @x ")));
  static_cast<void>(file->Execute(QStringLiteral("Stop"), Variant(qint32(7))));
  ASSERT_EQ(faulty_->CallCount(), 2);
  EXPECT_EQ(faulty_->Calls()[0],
            (FileSystemCall{Operation::Execute, QStringLiteral("f"), QStringLiteral(" Print, @x "),
                            Variant(QStringLiteral("a,b"))}));
  EXPECT_EQ(faulty_->Calls()[1], (FileSystemCall{Operation::Execute, QStringLiteral("f"),
                                                 QStringLiteral("Stop"), Variant(qint32(7))}));
}

TEST_F(SubstituteFileTest, IdentityIsSharedByTwoWaysToOneItem) {
  memory_->AddFile(QStringLiteral("f"));
  memory_->AddFile(QStringLiteral("g"));
  SubstituteController other(QStringLiteral("B"), 2,
                             std::make_shared<FileSystemSession>(memory_, QStringLiteral("P")));
  const auto again = other.OpenFile(QStringLiteral("f"), {});
  ASSERT_TRUE(Top()->OpenFile(QStringLiteral("f"), {})->Identity().has_value());
  EXPECT_EQ(Top()->OpenFile(QStringLiteral("f"), {})->Identity(), again->Identity());
  EXPECT_NE(Top()->OpenFile(QStringLiteral("g"), {})->Identity(), again->Identity());
}

}  // namespace
}  // namespace trevane::test
