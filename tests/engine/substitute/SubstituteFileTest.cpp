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

using namespace Qt::StringLiterals;
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
    for (const QString& name : {u""_s, u"."_s, u".."_s, u"..\\up"_s, u"a/b"_s, u"a"_s + QChar(0) + u"b"_s,
                                u"good"_s, u"good"_s, u"last"_s}) {
      FileEntry entry;
      entry.name = name;
      entry.size = std::numeric_limits<qint64>::max();
      entries.push_back(entry);
    }
    return entries;
  }
  FileEntry Stat(const QString&) override {
    FileEntry entry;
    entry.name = u"..\\..\\other"_s;
    return entry;
  }
  QByteArray Read(const QString&) override { return {}; }
  void Write(const QString&, const QByteArray&) override {}
  void CreateFile(const QString&) override {}
  void CreateFolder(const QString&) override {}
  void Copy(const QString&, const QString&, bool, const ItemObserver&) override {}
  void Rename(const QString&, const QString&, bool) override {}
  void Remove(const QString&, const ItemObserver&) override {}
};

class SubstituteFileTest : public testing::Test {
 protected:
  SubstituteFileTest() { Use({}); }

  void Use(const MemoryFileSystemOptions& options) {
    memory_ = std::make_shared<MemoryFileSystem>(options);
    faulty_ = std::make_shared<FaultyFileSystem>(memory_);
    controller_ = std::make_shared<SubstituteController>(
        u"A"_s, 1, std::make_shared<FileSystemSession>(faulty_, u"P"_s));
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
  memory_->AddFile(u"dir\\sub\\file"_s);
  EXPECT_EQ(Top()->Path(), QString());
  const auto dir = Top()->OpenFile(u"dir"_s, {});
  EXPECT_EQ(dir->Path(), u"\\"_s);
  EXPECT_EQ(dir->Path() + dir->Name(), u"\\dir"_s);
  const auto sub = dir->OpenFile(u"sub"_s, {});
  EXPECT_EQ(sub->Path() + sub->Name(), u"\\dir\\sub"_s);
  EXPECT_EQ(sub->Files()->Item(u"file"_s)->Path(), u"\\dir\\sub\\"_s);
  EXPECT_EQ(Open(sub->Path() + sub->Name())->Name(), u"sub"_s);
}

TEST_F(SubstituteFileTest, PathsOnDrivesBeginWithTheDrive) {
  MemoryFileSystemOptions options;
  options.drives = {u"C:"_s};
  Use(options);
  memory_->AddFile(u"C:\\dir\\file"_s);
  EXPECT_EQ(Top()->Path(), QString());
  EXPECT_EQ(Top()->Name(), u"C:"_s);
  const auto dir = Top()->OpenFile(u"dir"_s, {});
  EXPECT_EQ(dir->Path(), u"C:\\"_s);
  EXPECT_EQ(dir->OpenFile(u"file"_s, {})->Path(), u"C:\\dir\\"_s);
}

TEST_F(SubstituteFileTest, ShowingAFolderCostsOneListAndNoCallAnEntry) {
  for (int i = 0; i < 50; ++i) {
    memory_->AddFile(u"dir\\file%1"_s.arg(i), "12345");
  }
  const auto dir = Open(u"dir"_s);
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
    memory_->AddFile(u"dir\\file%1"_s.arg(i), "12345");
  }
  memory_->AddFolder(u"dir\\sub"_s);
  const auto dir = Open(u"dir"_s);
  faulty_->ClearCalls();
  const Listing entries = dir->List();
  ASSERT_EQ(entries.size(), 51U);
  EXPECT_EQ(entries[0].name, u"file0"_s);
  EXPECT_EQ(entries[0].size, 5);
  EXPECT_TRUE(entries[0].modified.IsPresent());
  EXPECT_TRUE(entries[50].IsFolder());
  EXPECT_EQ(faulty_->CallCount(), 1);
  EXPECT_EQ(Calls(Operation::List), 1);
}

TEST_F(SubstituteFileTest, RecordsAreListedAnewAndEqualThoseOfTheObjects) {
  memory_->AddFile(u"dir\\a"_s, "1");
  memory_->AddLink(u"dir\\broken"_s, u"dir\\none"_s);
  memory_->AddFolder(u"dir\\sub"_s);
  const auto dir = Open(u"dir"_s);
  static_cast<void>(dir->FileNames({}));
  memory_->AddFile(u"dir\\z"_s, "12");
  memory_->SetTimes(u"dir\\z"_s, Date{}, Date{5}, Date{7});
  const Listing records = dir->List();
  const Listing byObject = dir->IxoFile::List();
  ASSERT_EQ(records.size(), 4U);
  EXPECT_TRUE(records[1].leadsNowhere);
  EXPECT_EQ(records, byObject);
}

TEST_F(SubstituteFileTest, WhatIsNoFolderGivesNoRecords) {
  memory_->AddFile(u"f"_s, "1");
  const auto file = Open(u"f"_s);
  EXPECT_NE(ErrorOf([&] { static_cast<void>(file->List()); }), 0);
  EXPECT_NE(ErrorOf([&] { static_cast<void>(file->IxoFile::List()); }), 0);
}

TEST_F(SubstituteFileTest, AChildIsOneObjectUntilItIsRemovedOrTheCollectionCleared) {
  for (int i = 0; i < 40; ++i) {
    memory_->AddFile(u"dir\\f%1"_s.arg(i), "x");
  }
  const auto files = Open(u"dir"_s)->Files();
  std::vector<std::weak_ptr<IxoFile>> seen;
  for (int i = 0; i < 40; ++i) {
    const auto child = files->Item(u"f%1"_s.arg(i));
    EXPECT_EQ(files->Item(u"f%1"_s.arg(i)), child);
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
  memory_->AddFile(u"dir\\f"_s, "abc");
  auto dir = Open(u"dir"_s);
  const auto child = dir->Files()->Item(u"f"_s);
  dir->Files()->Clear();
  dir.reset();
  EXPECT_EQ(child->Value(), Variant(QByteArray("abc")));
  EXPECT_EQ(child->Path() + child->Name(), u"\\dir\\f"_s);
}

TEST_F(SubstituteFileTest, ClearDropsWhatWasListed) {
  memory_->AddFile(u"dir\\a"_s);
  const auto dir = Open(u"dir"_s);
  EXPECT_EQ(dir->Files()->Item(qint32(0))->Name(), u"a"_s);
  memory_->Vanish(u"dir\\a"_s);
  memory_->AddFile(u"dir\\b"_s);
  dir->Files()->Clear();
  EXPECT_EQ(dir->Files()->Item(qint32(0))->Name(), u"b"_s);
}

TEST_F(SubstituteFileTest, WhateverChangesAFolderDropsWhatWasCachedOfIt) {
  memory_->AddFile(u"dir\\a"_s, "1");
  memory_->AddFolder(u"other"_s);
  const auto dir = Open(u"dir"_s);
  const auto a = dir->Files()->Item(u"a"_s);
  a->PutValue(QByteArray("12345"));
  EXPECT_EQ(a->Size64(), 5);
  EXPECT_EQ(dir->Files()->Item(u"a"_s)->Size64(), 5);
  Open(u"dir\\a"_s)->Copy(u"\\dir\\b"_s, u"OverWrite=False"_s);
  EXPECT_EQ(dir->Files()->Item(u"b"_s)->Size64(), 5);
  Open(u"dir\\b"_s)->Move(u"\\other\\c"_s, u"OverWrite=False"_s);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(dir->Files()->Item(u"b"_s)); }), error::kNotFound);
  static_cast<void>(Open(u"dir"_s)->OpenFile(u"new"_s, u"@Create=2"_s));
  EXPECT_EQ(dir->Files()->Item(u"new"_s)->Attribute() & 0x10, 0x10);
  a->Delete({});
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(dir->Files()->Item(u"a"_s)); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(a->Attribute()); }), error::kNotFound);
}

TEST_F(SubstituteFileTest, NamesAreListedAnewEachTime) {
  memory_->AddFile(u"dir\\a"_s);
  const auto dir = Open(u"dir"_s);
  EXPECT_EQ(dir->FileNames({}), Variant(QStringList{u"a"_s}));
  memory_->AddFile(u"dir\\b"_s);
  EXPECT_EQ(dir->FileNames({}), Variant(QStringList({u"a"_s, u"b"_s})));
}

TEST_F(SubstituteFileTest, OpeningAMissingNameFailsAndCreatesNothing) {
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(Top()->OpenFile(u"no"_s, {})); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(Top()->OpenFile(u"no"_s, u"Path=,"_s)); }), error::kNotFound);
  EXPECT_TRUE(memory_->Tree().isEmpty());
}

TEST_F(SubstituteFileTest, NamesThatAreNoNamesAreRefused) {
  memory_->AddFile(u"dir\\sub\\f"_s);
  for (const QString& name : {u""_s, u"."_s, u".."_s, u"dir\\sub"_s, u"dir/sub"_s, u"a"_s + QChar(0)}) {
    for (const QString& option : {u""_s, u"@Create=1"_s, u"@Create=2"_s}) {
      EXPECT_EQ(ErrorOf([&] { static_cast<void>(Top()->OpenFile(name, option)); }), error::kInvalidName);
    }
  }
}

TEST_F(SubstituteFileTest, PathsOfCallersFollowTheRuleOfTheFileSystems) {
  memory_->AddFile(u"dir\\sub\\f"_s, "x");
  const auto file = Top()->OpenFile(u"dir"_s, {});
  EXPECT_EQ(controller_->OpenFile(u"f"_s, u"Path=/dir/sub/"_s)->Path(), u"\\dir\\sub\\"_s);
  // A root that ends with a separator, and what is put behind it.
  for (const QString& path : {u"/\\dir\\one"_s, u"\\\\dir/two"_s, u"dir\\three\\"_s}) {
    Open(u"dir\\sub\\f"_s)->Copy(path, u"OverWrite=False"_s);
  }
  EXPECT_EQ(file->FileNames({}), Variant(QStringList({u"one"_s, u"sub"_s, u"three"_s, u"two"_s})));
  for (const QString& path : {u"dir\\\\sub\\f"_s, u"dir\\..\\f"_s, u"dir\\sub//f"_s}) {
    EXPECT_EQ(ErrorOf([&] { file->Copy(path, u"OverWrite=False"_s); }), error::kInvalidName)
        << path.toStdString();
  }
}

TEST_F(SubstituteFileTest, ANewFileTakesItsNameWhenItsContentIsPut) {
  const auto file = Top()->OpenFile(u"new"_s, u"@Create=1"_s);
  EXPECT_FALSE(memory_->Exists(u"new"_s));
  file->PutValue(QByteArray("content"));
  EXPECT_EQ(memory_->Content(u"new"_s), "content");
  EXPECT_EQ(file->Size64(), 7);
  EXPECT_EQ(Calls(Operation::CreateFile), 0);
}

TEST_F(SubstituteFileTest, ANewFileTakesItsNameWhenItIsReleasedWithoutContent) {
  auto file = Top()->OpenFile(u"new"_s, u"@Create=1"_s);
  EXPECT_EQ(Top()->OpenFile(u"new"_s, u"@Create=1"_s), file);
  Top()->Files()->Remove(file->Index());
  EXPECT_FALSE(memory_->Exists(u"new"_s));
  file.reset();
  EXPECT_EQ(memory_->Tree(), QStringList{u"new="_s});
}

TEST_F(SubstituteFileTest, ANewFileWhoseContentCannotBePutNeverAppears) {
  auto file = Top()->OpenFile(u"new"_s, u"@Create=1"_s);
  faulty_->Arm(1);
  EXPECT_EQ(ErrorOf([&] { file->PutValue(QByteArray("content")); }), error::kTimeOut);
  faulty_->Disarm();
  Top()->Files()->Clear();
  file.reset();
  EXPECT_TRUE(memory_->Tree().isEmpty());
}

TEST_F(SubstituteFileTest, ANewFileThatIsDeletedBeforeItsContentNeverAppears) {
  auto file = Top()->OpenFile(u"new"_s, u"@Create=1"_s);
  file->Delete({});
  file.reset();
  EXPECT_TRUE(memory_->Tree().isEmpty());
}

TEST_F(SubstituteFileTest, WhatAFailedPutLeftThereAllTheSameIsDeleted) {
  const auto file = Top()->OpenFile(u"new"_s, u"@Create=1"_s);
  faulty_->Arm(1, FaultSpan::Once, error::kTimeOut, Fault::DoAndFail);
  EXPECT_EQ(ErrorOf([&] { file->PutValue(QByteArray("content")); }), error::kTimeOut);
  EXPECT_TRUE(memory_->Exists(u"new"_s));
  file->Delete({});
  EXPECT_FALSE(memory_->Exists(u"new"_s));
}

TEST_F(SubstituteFileTest, WhatAFailedPutLeftThereAllTheSameIsTakenBack) {
  const auto file = Top()->OpenFile(u"new"_s, u"@Create=1"_s);
  faulty_->Arm(1, FaultSpan::Once, error::kTimeOut, Fault::DoAndFail);
  EXPECT_EQ(ErrorOf([&] { file->PutValue(QByteArray("content")); }), error::kTimeOut);
  EXPECT_TRUE(memory_->Exists(u"new"_s));
  file->TakeBack();
  EXPECT_FALSE(memory_->Exists(u"new"_s));
}

TEST_F(SubstituteFileTest, AnothersFileIsNotTakenBack) {
  for (const bool failed : {false, true}) {
    auto file = Top()->OpenFile(u"new"_s, u"@Create=1"_s);
    if (failed) {
      faulty_->Arm(1);
      EXPECT_EQ(ErrorOf([&] { file->PutValue(QByteArray("content")); }), error::kTimeOut);
      faulty_->Disarm();
    } else {
      file->PutValue(QByteArray("content"));
    }
    memory_->AddFile(u"new"_s, "theirs!");
    file->TakeBack();
    file.reset();
    EXPECT_EQ(memory_->Tree(), QStringList{u"new=theirs!"_s}) << failed;
    memory_->Vanish(u"new"_s);
  }
}

TEST_F(SubstituteFileTest, AFileThatWaitsForItsContentIsTakenBackToNothing) {
  auto file = Top()->OpenFile(u"new"_s, u"@Create=1"_s);
  memory_->AddFile(u"new"_s, "theirs");
  file->TakeBack();
  file.reset();
  EXPECT_EQ(memory_->Tree(), QStringList{u"new=theirs"_s});
}

TEST_F(SubstituteFileTest, AChildThatIsKnownAbsentIsNotLookedForAgainWhenItIsMade) {
  const auto top = Top();
  EXPECT_TRUE(top->IsKnownAbsent(u"new"_s));
  faulty_->ClearCalls();
  const auto file = top->OpenFile(u"new"_s, u"@Create=1"_s);
  EXPECT_EQ(faulty_->CallCount(), 0);
  file->PutValue(QByteArray("content"));
  EXPECT_FALSE(top->IsKnownAbsent(u"new"_s));
  // What was put since tells that the file may be there now.
  EXPECT_TRUE(top->IsKnownAbsent(u"other"_s));
  memory_->AddFile(u"other"_s, "theirs");
  const auto other = top->OpenFile(u"other"_s, u"@Create=1"_s);
  EXPECT_EQ(ErrorOf([&] { other->PutValue(QByteArray("ours")); }), error::kExists);
  EXPECT_EQ(memory_->Content(u"other"_s), "theirs");
}

TEST_F(SubstituteFileTest, AFlushReachesTheFileSystem) {
  memory_->AddFile(u"f"_s, "x");
  const auto file = Top()->OpenFile(u"f"_s, {});
  faulty_->ClearCalls();
  file->Flush();
  ASSERT_FALSE(faulty_->Calls().empty());
  EXPECT_EQ(faulty_->Calls().back().operation, Operation::Flush);
}

TEST_F(SubstituteFileTest, ANewFileNeverReplacesWhatCameMeanwhile) {
  auto file = Top()->OpenFile(u"new"_s, u"@Create=1"_s);
  memory_->AddFile(u"new"_s, "theirs");
  EXPECT_EQ(ErrorOf([&] { file->PutValue(QByteArray("ours")); }), error::kExists);
  file->Delete({});
  file.reset();
  EXPECT_EQ(memory_->Content(u"new"_s), "theirs");
}

TEST_F(SubstituteFileTest, ANewFileNeverReplacesWhatComesAtTheLastMomentNorTakesItAwayAfterwards) {
  auto file = Top()->OpenFile(u"new"_s, u"@Create=1"_s);
  faulty_->SetHook([this](const FileSystemCall& call) {
    if (call.operation == Operation::Write) {
      memory_->AddFile(u"new"_s, "theirs");
    }
  });
  EXPECT_EQ(ErrorOf([&] { file->PutValue(QByteArray("ours")); }), error::kExists);
  faulty_->SetHook({});
  EXPECT_EQ(memory_->Content(u"new"_s), "theirs");
  file->Delete({});
  file.reset();
  EXPECT_EQ(memory_->Content(u"new"_s), "theirs");
}

TEST_F(SubstituteFileTest, CreatingWhatExistsYieldsIt) {
  memory_->AddFile(u"file"_s, "old");
  memory_->AddFile(u"dir\\inner"_s, "x");
  EXPECT_EQ(Top()->OpenFile(u"file"_s, u"@Create=1"_s)->Value(), Variant(QByteArray("old")));
  EXPECT_EQ(Top()->OpenFile(u"dir"_s, u"@Create=2"_s)->FileNames({}), Variant(QStringList{u"inner"_s}));
}

TEST_F(SubstituteFileTest, CreatingWhatExistsAsAnotherKindFails) {
  memory_->AddFile(u"file"_s, "old");
  memory_->AddFolder(u"dir"_s);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(Top()->OpenFile(u"dir"_s, u"@Create=1"_s)); }), error::kExists);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(Top()->OpenFile(u"file"_s, u"@Create=2"_s)); }), error::kExists);
  EXPECT_EQ(memory_->Content(u"file"_s), "old");
}

TEST_F(SubstituteFileTest, AFolderIsCreatedAtOnce) {
  const auto folder = Top()->OpenFile(u"new"_s, u"@Create=2"_s);
  EXPECT_EQ(memory_->Tree(), QStringList{u"new\\"_s});
  EXPECT_EQ(folder->Attribute() & 0x10, 0x10);
}

TEST_F(SubstituteFileTest, NothingIsCreatedInAFile) {
  memory_->AddFile(u"file"_s, "x");
  const auto file = Top()->OpenFile(u"file"_s, {});
  EXPECT_NE(ErrorOf([&] { static_cast<void>(file->OpenFile(u"a"_s, u"@Create=1"_s)); }), 0);
  EXPECT_NE(ErrorOf([&] { static_cast<void>(file->OpenFile(u"a"_s, u"@Create=2"_s)); }), 0);
  EXPECT_EQ(memory_->Tree(), QStringList{u"file=x"_s});
}

TEST_F(SubstituteFileTest, ALookUpThatCouldNotBeMadeIsNotReadAsMissing) {
  const auto top = Top();
  faulty_->Arm(1);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(top->OpenFile(u"new"_s, u"@Create=2"_s)); }), error::kTimeOut);
  EXPECT_TRUE(memory_->Tree().isEmpty());
}

TEST_F(SubstituteFileTest, PathOptionOpensAndCreatesInAnotherFolder) {
  memory_->AddFile(u"a,b\\f"_s, "x");
  EXPECT_EQ(Top()->OpenFile(u"f"_s, u"Path=\\a,b,"_s)->Path(), u"\\a,b\\"_s);
  static_cast<void>(Top()->OpenFile(u"new"_s, u"Path=/a,b,@Create=2"_s));
  EXPECT_TRUE(memory_->Exists(u"a,b\\new"_s));
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(Top()->OpenFile(u"new"_s, u"Path=no,@Create=2"_s)); }),
            error::kNotFound);
}

TEST_F(SubstituteFileTest, ExactNamesOnlyWhereCaseTellsApart) {
  memory_->AddFile(u"Name"_s, "1");
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(Top()->OpenFile(u"name"_s, {})); }), error::kNotFound);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(Top()->Files()->Item(u"name"_s)); }), error::kNotFound);
}

TEST_F(SubstituteFileTest, AnyCaseWhereCaseTellsNothingApartWithTheNameAsItStands) {
  MemoryFileSystemOptions options;
  options.caseSensitive = false;
  Use(options);
  memory_->AddFile(u"Name"_s, "1");
  EXPECT_EQ(Top()->OpenFile(u"nAME"_s, {})->Name(), u"Name"_s);
  EXPECT_EQ(Top()->Files()->Item(u"nAME"_s)->Name(), u"Name"_s);
  EXPECT_EQ(Top()->OpenFile(u"NAME"_s, u"@Create=1"_s)->Value(), Variant(QByteArray("1")));
}

TEST_F(SubstituteFileTest, SizeSaturatesAndSize64DoesNot) {
  const auto session = std::make_shared<FileSystemSession>(std::make_shared<HostileFileSystem>(), u"P"_s);
  SubstituteController controller(u"A"_s, 1, session);
  const auto file = controller.Files()->Item(qint32(0))->Files()->Item(u"good"_s);
  EXPECT_EQ(file->Size(), 2147483647);
  EXPECT_EQ(file->Size64(), std::numeric_limits<qint64>::max());
}

TEST_F(SubstituteFileTest, HostileNamesOfAListingAreDropped) {
  const auto session = std::make_shared<FileSystemSession>(std::make_shared<HostileFileSystem>(), u"P"_s);
  SubstituteController controller(u"A"_s, 1, session);
  const auto top = controller.Files()->Item(qint32(0));
  EXPECT_EQ(top->FileNames({}), Variant(QStringList({u"good"_s, u"last"_s})));
  for (const Listing& entries : {top->List(), top->IxoFile::List()}) {
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].name, u"good"_s);
    EXPECT_EQ(entries[1].name, u"last"_s);
    EXPECT_EQ(top->RefusedNames().size(), 6);
  }
  EXPECT_EQ(top->OpenFile(u"asked"_s, {})->Name(), u"asked"_s);
}

TEST_F(SubstituteFileTest, DatesAreMissingWhereTheFileSystemDoesNotKnowThem) {
  memory_->AddFile(u"f"_s);
  memory_->SetTimes(u"f"_s, Date{}, Date{5}, Date{7});
  const auto file = Top()->OpenFile(u"f"_s, {});
  EXPECT_EQ(file->DateCreated(), Variant(Missing{}));
  EXPECT_EQ(file->DateLastAccessed(), Variant(Date{5}));
  EXPECT_EQ(file->DateLastModified(), Variant(Date{7}));
}

TEST_F(SubstituteFileTest, ValueTakesAByteArrayAndNothingElse) {
  memory_->AddFile(u"f"_s, "old");
  const auto file = Top()->OpenFile(u"f"_s, {});
  EXPECT_EQ(ErrorOf([&] { file->PutValue(u"text"_s); }), error::kInvalidParameter);
  EXPECT_EQ(memory_->Content(u"f"_s), "old");
}

TEST_F(SubstituteFileTest, CopyAndMoveReplaceOnlyWhenAllowed) {
  memory_->AddFile(u"a"_s, "a");
  memory_->AddFile(u"b"_s, "b");
  const auto a = Top()->OpenFile(u"a"_s, {});
  EXPECT_EQ(ErrorOf([&] { a->Copy(u"\\b"_s, u"OverWrite=False"_s); }), error::kExists);
  EXPECT_EQ(ErrorOf([&] { a->Move(u"\\b"_s, u"OverWrite=False"_s); }), error::kExists);
  EXPECT_EQ(ErrorOf([&] { a->Copy(u"\\b"_s, u"@Create=1"_s); }), error::kInvalidParameter);
  a->Copy(u"\\b"_s, u"OverWrite=True"_s);
  EXPECT_EQ(memory_->Content(u"b"_s), "a");
  a->Move(u"\\b"_s, u"OverWrite=True"_s);
  EXPECT_EQ(memory_->Tree(), QStringList{u"b=a"_s});
  EXPECT_EQ(a->Name(), u"b"_s);
  EXPECT_EQ(a->Value(), Variant(QByteArray("a")));
}

TEST_F(SubstituteFileTest, ATopIsNeverDeletedMovedOrReplaced) {
  MemoryFileSystemOptions options;
  options.drives = {u"C:"_s, u"D:"_s};
  Use(options);
  memory_->AddFile(u"C:\\f"_s, "x");
  const QStringList before = memory_->Tree();
  const auto drive = Top();
  EXPECT_EQ(ErrorOf([&] { drive->Delete({}); }), error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { drive->Move(u"D:\\x"_s, u"OverWrite=True"_s); }), error::kAccessDenied);
  const auto file = drive->OpenFile(u"f"_s, {});
  EXPECT_EQ(ErrorOf([&] { file->Move(u"D:"_s, u"OverWrite=True"_s); }), error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { file->Copy(u"/"_s, u"OverWrite=True"_s); }), error::kAccessDenied);
  EXPECT_EQ(memory_->Tree(), before);
}

TEST_F(SubstituteFileTest, RunAndAnEmptyExecuteDoTheSame) {
  memory_->AddFile(u"f"_s);
  const auto file = Top()->OpenFile(u"f"_s, {});
  faulty_->ClearCalls();
  EXPECT_EQ(file->Run({}), file->Execute({}, Missing{}));
  ASSERT_EQ(faulty_->CallCount(), 2);
  const FileSystemCall open{Operation::Execute, u"f"_s, QString(), Missing{}};
  EXPECT_EQ(faulty_->Calls()[0], open);
  EXPECT_EQ(faulty_->Calls()[1], open);
}

TEST_F(SubstituteFileTest, ACommandAndItsParameterReachTheFileSystemAsTheyAre) {
  memory_->AddFile(u"f"_s);
  const auto file = Top()->OpenFile(u"f"_s, {});
  faulty_->ClearCalls();
  EXPECT_EQ(file->Execute(u" Print, @x "_s, Variant(u"a,b"_s)), Variant(u" Print, @x "_s));
  static_cast<void>(file->Execute(u"Stop"_s, Variant(qint32(7))));
  ASSERT_EQ(faulty_->CallCount(), 2);
  EXPECT_EQ(faulty_->Calls()[0],
            (FileSystemCall{Operation::Execute, u"f"_s, u" Print, @x "_s, Variant(u"a,b"_s)}));
  EXPECT_EQ(faulty_->Calls()[1], (FileSystemCall{Operation::Execute, u"f"_s, u"Stop"_s, Variant(qint32(7))}));
}

TEST_F(SubstituteFileTest, IdentityIsSharedByTwoWaysToOneItem) {
  memory_->AddFile(u"f"_s);
  memory_->AddFile(u"g"_s);
  SubstituteController other(u"B"_s, 2, std::make_shared<FileSystemSession>(memory_, u"P"_s));
  const auto again = other.OpenFile(u"f"_s, {});
  ASSERT_TRUE(Top()->OpenFile(u"f"_s, {})->Identity().has_value());
  EXPECT_EQ(Top()->OpenFile(u"f"_s, {})->Identity(), again->Identity());
  EXPECT_NE(Top()->OpenFile(u"g"_s, {})->Identity(), again->Identity());
}

}  // namespace
}  // namespace trevane::test
