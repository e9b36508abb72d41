#include "engine/files/HeldFolder.h"
#include "engine/files/ProviderError.h"
#include "engine/files/TemporaryName.h"
#include "engine/files/WholeFile.h"
#include "engine/model/ContentSteps.h"
#include "tests/engine/providers/ProviderBed.h"

#include <set>

namespace trevane::test {
namespace {

class ConformanceStreams : public ConformanceTest {
 protected:
  [[nodiscard]] QByteArray ContentOf(const QString& name) { return ReadFile(Files(), At(name)); }
  /// More than a batch; a plain provider has one for any number, and some of them make each file slowly.
  [[nodiscard]] int ManyFiles() { return Bed().IsPlain() ? 30 : 300; }
};
INSTANTIATE_TEST_SUITE_P(All, ConformanceStreams, ::testing::ValuesIn(AllProviders()), NameOfCase);

QByteArray Numbered(qsizetype size) {
  QByteArray bytes(size, Qt::Uninitialized);
  for (qsizetype i = 0; i < size; ++i) {
    bytes[i] = static_cast<char>(i * 7 + i / 256);
  }
  return bytes;
}

SinkRequest Replacing() {
  return {.mode = SinkRequest::Mode::Replace};
}

TEST_P(ConformanceStreams, PiecesBecomeOneContentWithCommit) {
  const QByteArray whole = Numbered(3 * content::kSmallestPiece + 5);
  const auto sink = Files().OpenSink(At(QStringLiteral("f")), {.expectedSize = whole.size()});
  for (qsizetype at = 0; at < whole.size(); at += content::kSmallestPiece) {
    sink->Write(whole.mid(at, content::kSmallestPiece));
  }
  EXPECT_FALSE(IsThere(At(QStringLiteral("f"))));
  EXPECT_EQ(sink->Commit().entry.size, whole.size());
  EXPECT_TRUE(ContentOf(QStringLiteral("f")) == whole);
  EXPECT_EQ(NamesIn(Bed().Base()), QStringList{QStringLiteral("f")});
}

TEST_P(ConformanceStreams, ASinkWithoutPiecesMakesAnEmptyFile) {
  EXPECT_EQ(Files().OpenSink(At(QStringLiteral("f")), {})->Commit().entry.size, 0);
  EXPECT_EQ(ContentOf(QStringLiteral("f")), QByteArray());
}

TEST_P(ConformanceStreams, ASinkThatIsDroppedLeavesNothing) {
  Files().OpenSink(At(QStringLiteral("new")), {})->Write("content");
  EXPECT_EQ(NamesIn(Bed().Base()), QStringList());
  WriteFile(Files(), At(QStringLiteral("f")), "old");
  Files().OpenSink(At(QStringLiteral("f")), Replacing())->Write("new");
  EXPECT_EQ(NamesIn(Bed().Base()), QStringList{QStringLiteral("f")});
  EXPECT_EQ(ContentOf(QStringLiteral("f")), "old");
}

TEST_P(ConformanceStreams, TheTemporaryNameIsThereWithTheFirstPiece) {
  const auto sink = Files().OpenSink(At(QStringLiteral("f")), {});
  sink->Write(QByteArray());
  const std::optional<QString> name = sink->TemporaryName();
  if (!name) {
    GTEST_SKIP() << "built elsewhere";
  }
  EXPECT_TRUE(IsOwnTemporaryName(*name));
  EXPECT_EQ(NamesIn(Bed().Base()), QStringList{*name});
}

TEST_P(ConformanceStreams, ANewFileNeverReplacesAnything) {
  const auto early = Files().OpenSink(At(QStringLiteral("f")), {});
  early->Write("early");
  WriteFile(Files(), At(QStringLiteral("f")), "theirs");
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(early->Commit()); }), error::kExists);
  Files().CreateFolder(At(QStringLiteral("d")));
  for (const QString& name : {QStringLiteral("f"), QStringLiteral("d")}) {
    EXPECT_EQ(ErrorOf([&] { WriteNewFile(Files(), At(name), "mine"); }), error::kExists);
  }
  EXPECT_EQ(ContentOf(QStringLiteral("f")), "theirs");
}

TEST_P(ConformanceStreams, ANewFileLeavesALinkAlone) {
  if (!Bed().MakeLink(At(QStringLiteral("l")), At(QStringLiteral("nothing")))) {
    GTEST_SKIP() << "no links";
  }
  EXPECT_EQ(ErrorOf([&] { WriteNewFile(Files(), At(QStringLiteral("l")), "mine"); }), error::kExists);
  EXPECT_TRUE(Files().Stat(At(QStringLiteral("l"))).IsLink());
  EXPECT_FALSE(IsThere(At(QStringLiteral("nothing"))));
}

TEST_P(ConformanceStreams, CommitReturnsWhatStandsThere) {
  for (const SinkRequest& request : {SinkRequest{}, Replacing()}) {
    const auto sink = Files().OpenSink(At(QStringLiteral("f")), request);
    sink->Write("content");
    const SeenItem placed = sink->Commit();
    const auto held = Files().Hold(Bed().Base())->Find(QStringLiteral("f"));
    ASSERT_TRUE(held);
    EXPECT_EQ(placed.entry.name, QStringLiteral("f"));
    EXPECT_EQ(placed.entry.size, 7);
    EXPECT_EQ(placed.entry.modified, held->entry.modified);
    EXPECT_EQ(placed.entry.attributes, held->entry.attributes);
    EXPECT_EQ(placed.identity, held->identity);
    EXPECT_TRUE(placed.IsStill(*held));
  }
}

TEST_P(ConformanceStreams, AReplacementIsRefusedOnceAnotherFileStandsThere) {
  if (!TellsItemsApart()) {
    GTEST_SKIP() << "no identities of items";
  }
  WriteFile(Files(), At(QStringLiteral("f")), "old");
  const auto sink = Files().OpenSink(At(QStringLiteral("f")), Replacing());
  sink->Write("mine");
  Files().Rename(At(QStringLiteral("f")), At(QStringLiteral("away")), false);
  WriteFile(Files(), At(QStringLiteral("f")), "theirs");
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(sink->Commit()); }), providererror::kChanged);
  EXPECT_EQ(ContentOf(QStringLiteral("f")), "theirs");
  EXPECT_EQ(ContentOf(QStringLiteral("away")), "old");
}

TEST_P(ConformanceStreams, AReplacementWritesNoFolder) {
  Files().CreateFolder(At(QStringLiteral("d")));
  EXPECT_EQ(ErrorOf([&] { WriteFile(Files(), At(QStringLiteral("d")), "x"); }), error::kAccessDenied);
  EXPECT_NE(ErrorOf([&] { WriteFile(Files(), At(QStringLiteral("none\\f")), "x"); }), 0);
}

TEST_P(ConformanceStreams, TheDateThatIsAskedForIsSet) {
  if (!Bed().SetsDates()) {
    GTEST_SKIP() << "no dates to set";
  }
  const Date date{1000000000000};
  WriteNewFile(Files(), At(QStringLiteral("new")), "x", {.modified = date});
  WriteFile(Files(), At(QStringLiteral("old")), "x");
  const auto sink = Files().OpenSink(At(QStringLiteral("old")),
                                     {.mode = SinkRequest::Mode::Replace, .traits = {.modified = date}});
  sink->Write("y");
  static_cast<void>(sink->Commit());
  Files().CreateFolder(At(QStringLiteral("d")));
  Files().SetTraits(At(QStringLiteral("d")), {.modified = date});
  for (const QString& name : {QStringLiteral("new"), QStringLiteral("old"), QStringLiteral("d")}) {
    if (!Files().Traits(At(name)).modified.IsPresent()) {
      GTEST_SKIP() << "no dates to keep";
    }
    if (name == u'd' && Bed().IsPlain()) {
      continue;
    }
    EXPECT_LE(std::abs(Files().Stat(At(name)).modified.msecs - date.msecs), Bed().TimePrecision());
    EXPECT_LE(std::abs(Files().Traits(At(name)).modified.msecs - date.msecs), Bed().TimePrecision());
  }
}

TEST_P(ConformanceStreams, SourcesAndSinksTellTheKindOfFailure) {
  Files().CreateFolder(At(QStringLiteral("d")));
  WriteFile(Files(), At(QStringLiteral("f")), "x");
  const auto errorOfSource = [this](const QString& path) {
    return ErrorOf([&] { static_cast<void>(ReadAll(*Files().OpenSource(path))); });
  };
  const auto errorOfSink = [this](const QString& path, const SinkRequest& request) {
    return ErrorOf([&] { static_cast<void>(Files().OpenSink(path, request)->Commit()); });
  };
  EXPECT_EQ(errorOfSource(At(QStringLiteral("none"))), error::kNotFound);
  EXPECT_EQ(errorOfSource(At(QStringLiteral("none\\f"))), error::kNotFound);
  EXPECT_EQ(errorOfSource(At(QStringLiteral("d"))), error::kAccessDenied);
  EXPECT_EQ(errorOfSource(At(QStringLiteral(".."))), error::kInvalidName);
  EXPECT_EQ(errorOfSink(At(QStringLiteral("none\\f")), {}), error::kNotFound);
  EXPECT_EQ(errorOfSink(At(QStringLiteral("none\\f")), Replacing()), error::kNotFound);
  EXPECT_EQ(errorOfSink(At(QStringLiteral("f")), {}), error::kExists);
  EXPECT_EQ(errorOfSink(At(QStringLiteral("d")), {}), error::kExists);
  EXPECT_EQ(errorOfSink(At(QStringLiteral("d")), Replacing()), error::kAccessDenied);
  EXPECT_EQ(errorOfSink(At(QStringLiteral("..")), {}), error::kInvalidName);
  EXPECT_EQ(TreeOf(Bed().Base()), (QStringList{QStringLiteral("d\\"), QStringLiteral("f=x")}));
}

TEST_P(ConformanceStreams, ASourceBeginsAtItsOffset) {
  const QByteArray whole = Numbered(content::kSmallestPiece + 100);
  WriteFile(Files(), At(QStringLiteral("f")), whole);
  for (const qint64 offset : {qint64{0}, qint64{1}, content::kSmallestPiece, whole.size() - 1}) {
    const auto source = Files().OpenSource(At(QStringLiteral("f")), offset);
    EXPECT_TRUE(ReadAll(*source) == whole.sliced(offset)) << offset;
  }
}

TEST_P(ConformanceStreams, BehindTheEndIsNothing) {
  WriteFile(Files(), At(QStringLiteral("f")), "1234");
  for (const qint64 offset : {4, 5, 1000000}) {
    EXPECT_EQ(Files().OpenSource(At(QStringLiteral("f")), offset)->Read(10), QByteArray()) << offset;
  }
}

TEST_P(ConformanceStreams, APieceIsNeverLargerThanAskedFor) {
  const QByteArray whole = Numbered(1000);
  WriteFile(Files(), At(QStringLiteral("f")), whole);
  const auto source = Files().OpenSource(At(QStringLiteral("f")));
  QByteArray all;
  for (;;) {
    const QByteArray piece = source->Read(7);
    ASSERT_LE(piece.size(), 7);
    if (piece.isEmpty()) {
      break;
    }
    all += piece;
  }
  EXPECT_TRUE(all == whole);
}

TEST_P(ConformanceStreams, AFolderCannotBeASource) {
  Files().CreateFolder(At(QStringLiteral("d")));
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(Files().OpenSource(At(QStringLiteral("d")))); }),
            error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(Files().OpenSource(At(QStringLiteral("none")))); }),
            error::kNotFound);
  if (Bed().MakeDevice(At(QStringLiteral("dev")))) {
    EXPECT_EQ(ErrorOf([&] { static_cast<void>(Files().OpenSource(At(QStringLiteral("dev")))); }),
              error::kAccessDenied);
  }
}

TEST_P(ConformanceStreams, TheSourceOfALinkIsItsTarget) {
  WriteFile(Files(), At(QStringLiteral("f")), "content");
  if (!Bed().MakeLink(At(QStringLiteral("l")), At(QStringLiteral("f")))) {
    GTEST_SKIP() << "no links";
  }
  EXPECT_EQ(ContentOf(QStringLiteral("l")), "content");
  if (!Bed().WritesThroughLinks()) {
    return;
  }
  WriteFile(Files(), At(QStringLiteral("l")), "changed");
  EXPECT_TRUE(Files().Stat(At(QStringLiteral("l"))).IsLink());
  EXPECT_EQ(ContentOf(QStringLiteral("f")), "changed");
}

TEST_P(ConformanceStreams, NamesThatAreNoTextAreStreamed) {
  if (!Bed().HoldsAnyBytes()) {
    GTEST_SKIP() << "names are text";
  }
  const QString name = QStringLiteral("a") + QChar(0xDC80) + QStringLiteral("z");
  const SeenItem placed = WriteNewFile(Files(), At(name), "content");
  EXPECT_EQ(placed.entry.name, name);
  EXPECT_EQ(ContentOf(name), "content");
}

TEST_P(ConformanceStreams, BatchesAreReadAndWritten) {
  std::vector<NewContent> files;
  QStringList paths;
  for (int i = 0; i < 5; ++i) {
    paths.append(At(QString::number(i)));
    files.push_back({paths.back(), QByteArray::number(i), {}});
  }
  const std::vector<WriteResult> written = Files().WriteMany(files);
  const std::vector<ReadResult> read = Files().ReadMany(paths);
  ASSERT_EQ(written.size(), 5U);
  ASSERT_EQ(read.size(), 5U);
  for (size_t i = 0; i < 5; ++i) {
    ASSERT_TRUE(written[i].item);
    EXPECT_EQ(written[i].item->entry.name, QString::number(i));
    EXPECT_EQ(read[i].content, QByteArray::number(static_cast<int>(i)));
  }
}

TEST_P(ConformanceStreams, ABatchReadsNoFileThatHasGrownBeyondItsLimit) {
  WriteFile(Files(), At(QStringLiteral("small")), "small");
  WriteFile(Files(), At(QStringLiteral("large")), QByteArray(content::kMostBytes + 1, 'x'));
  const std::vector<ReadResult> read = Files().ReadMany(
      {At(QStringLiteral("small")), At(QStringLiteral("large")), At(QStringLiteral("small"))});
  ASSERT_EQ(read.size(), 3U);
  EXPECT_EQ(read[0].content, "small");
  EXPECT_TRUE(read[1].isTooLarge);
  EXPECT_FALSE(read[1].content || read[1].failure);
  EXPECT_EQ(read[2].content, "small");
}

TEST_P(ConformanceStreams, AFailureInABatchLeavesTheRestOut) {
  WriteFile(Files(), At(QStringLiteral("1")), "theirs");
  std::vector<NewContent> files;
  files.reserve(3);
  for (int i = 0; i < 3; ++i) {
    files.push_back({At(QString::number(i)), "mine", {}});
  }
  const std::vector<WriteResult> written = Files().WriteMany(files);
  ASSERT_EQ(written.size(), 3U);
  EXPECT_TRUE(written[0].item);
  ASSERT_TRUE(written[1].failure);
  EXPECT_EQ(written[1].failure->Number(), error::kExists);
  EXPECT_FALSE(written[2].item || written[2].failure);
  EXPECT_EQ(ContentOf(QStringLiteral("1")), "theirs");
}

TEST_P(ConformanceStreams, AListingComesInBatches) {
  std::set<QString> expected;
  for (int i = 0; i < ManyFiles(); ++i) {
    expected.insert(QString::number(i));
    Files().CreateFile(At(QString::number(i)));
  }
  const auto held = Files().Hold(Bed().Base());
  for (const bool holds : {false, true}) {
    std::set<QString> names;
    std::vector<size_t> sizes;
    const ListingReceiver receive = [&](Listing&& entries) {
      sizes.push_back(entries.size());
      for (const FileEntry& entry : entries) {
        EXPECT_TRUE(names.insert(entry.name).second);
      }
      return true;
    };
    if (holds) {
      held->ListInBatches(receive);
    } else {
      Files().ListInBatches(Bed().Base(), receive);
    }
    EXPECT_EQ(names, expected);
    if (Bed().IsPlain()) {
      EXPECT_EQ(sizes.size(), 1U);
      continue;
    }
    ASSERT_GE(sizes.size(), 2U);
    EXPECT_LE(sizes.front(), 64U);
  }
}

TEST_P(ConformanceStreams, TheReceiverCanEndAListing) {
  for (int i = 0; i < ManyFiles(); ++i) {
    Files().CreateFile(At(QString::number(i)));
  }
  int batches = 0;
  Files().ListInBatches(Bed().Base(), [&batches](Listing&&) {
    ++batches;
    return false;
  });
  EXPECT_EQ(batches, 1);
}

TEST_P(ConformanceStreams, ABatchedListingFailsAsAListing) {
  WriteFile(Files(), At(QStringLiteral("f")), "x");
  const ListingReceiver receive = [](Listing&& entries) {
    EXPECT_TRUE(entries.empty());
    return true;
  };
  EXPECT_EQ(ErrorOf([&] { Files().ListInBatches(At(QStringLiteral("f")), receive); }),
            providererror::kNotAFolder);
  EXPECT_EQ(ErrorOf([&] { Files().ListInBatches(At(QStringLiteral("none")), receive); }), error::kNotFound);
}

TEST_P(ConformanceStreams, AHeldFolderStreams) {
  Files().CreateFolder(At(QStringLiteral("d")));
  const auto held = Files().Hold(At(QStringLiteral("d")));
  const auto sink = held->OpenSink(QStringLiteral("f"), {}, std::nullopt);
  sink->Write("con");
  sink->Write("tent");
  const SeenItem placed = sink->Commit();
  EXPECT_EQ(placed.entry.size, 7);
  EXPECT_EQ(ReadAll(*held->OpenSource(QStringLiteral("f"), 3)), "tent");
  const auto again = held->OpenSink(QStringLiteral("f"), Replacing(), placed);
  again->Write("new");
  EXPECT_EQ(held->List().size(), 1U + (NamesIn(At(QStringLiteral("d"))).size() == 2 ? 1U : 0U));
  static_cast<void>(again->Commit());
  EXPECT_EQ(ContentOf(QStringLiteral("d\\f")), "new");
  // Without an item that was seen it is a new file.
  EXPECT_EQ(ErrorOf([&] {
              static_cast<void>(held->OpenSink(QStringLiteral("f"), Replacing(), std::nullopt)->Commit());
            }),
            error::kExists);
  EXPECT_EQ(NamesIn(At(QStringLiteral("d"))), QStringList{QStringLiteral("f")});
}

TEST_P(ConformanceStreams, AHeldFolderThatIsReplacedTakesNothing) {
  Files().CreateFolder(At(QStringLiteral("d")));
  Files().CreateFolder(At(QStringLiteral("d\\sub")));
  const auto sub = Files().Hold(At(QStringLiteral("d")))->Enter(QStringLiteral("sub"));
  const auto sink = sub->OpenSink(QStringLiteral("f"), {}, std::nullopt);
  sink->Write("con");
  sink->Write("tent");
  // A file system may also prevent it.
  if (!TellsItemsApart() || ErrorOf([&] {
                              Files().Rename(At(QStringLiteral("d\\sub")), At(QStringLiteral("away")), false);
                            }) != 0) {
    GTEST_SKIP() << "the folder cannot be replaced";
  }
  Files().CreateFolder(At(QStringLiteral("d\\sub")));
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(sink->Commit()); }), providererror::kChanged);
  EXPECT_EQ(NamesIn(At(QStringLiteral("d\\sub"))), QStringList());
}

TEST_P(ConformanceStreams, ALinkIsReadAndMadeByItsText) {
  WriteFile(Files(), At(QStringLiteral("f")), "content");
  Files().CreateFolder(At(QStringLiteral("d")));
  const QString path = At(QStringLiteral("d\\l"));
  if (const qint32 refused = ErrorOf([&] { Files().CreateLink(path, QStringLiteral("../f")); });
      refused != 0) {
    EXPECT_TRUE(refused == error::kNotSupported || refused == error::kAccessDenied ||
                refused == error::kWin32Error + 1314)
        << refused;
    GTEST_SKIP() << "no links";
  }
  EXPECT_TRUE(Files().Stat(path).IsLink());
  EXPECT_EQ(ReadFile(Files(), path), "content");
  const auto text = Files().ReadLink(path);
  ASSERT_TRUE(text);
  EXPECT_TRUE(*text == QStringLiteral("../f") || *text == QStringLiteral("..\\f")) << text->toStdString();
  EXPECT_EQ(Files().ReadLink(At(QStringLiteral("f"))), std::nullopt);
  EXPECT_EQ(Files().ReadLink(At(QStringLiteral("d"))), std::nullopt);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(Files().ReadLink(At(QStringLiteral("none")))); }),
            error::kNotFound);
  for (const QString& name : {QStringLiteral("f"), QStringLiteral("d"), QStringLiteral("d\\l")}) {
    EXPECT_EQ(ErrorOf([&] { Files().CreateLink(At(name), QStringLiteral("x")); }), error::kExists);
  }
  const auto held = Files().Hold(At(QStringLiteral("d")));
  EXPECT_EQ(held->ReadLink(QStringLiteral("l")), text);
  held->CreateLink(QStringLiteral("m"), *text);
  EXPECT_EQ(held->ReadLink(QStringLiteral("m")), text);
}

TEST_P(ConformanceStreams, ALinkMayLeadNowhere) {
  const QString path = At(QStringLiteral("l"));
  if (ErrorOf([&] { Files().CreateLink(path, QStringLiteral("nothing/here")); }) != 0) {
    GTEST_SKIP() << "no links";
  }
  EXPECT_TRUE(Files().Stat(path).leadsNowhere);
  EXPECT_NE(ErrorOf([&] { Files().CreateLink(At(QStringLiteral("e")), QString()); }), 0);
  EXPECT_FALSE(IsThere(At(QStringLiteral("e"))));
}

TEST_P(ConformanceStreams, LinkTextsThatAreNoTextAreKept) {
  if (!Bed().HoldsAnyBytes()) {
    GTEST_SKIP() << "names are text";
  }
  const QString target = QStringLiteral("d/a") + QChar(0xDC80) + QChar(0xF05C) + QStringLiteral("z");
  if (ErrorOf([&] { Files().CreateLink(At(QStringLiteral("l")), target); }) == error::kNotSupported) {
    GTEST_SKIP() << "makes no links";
  }
  EXPECT_EQ(Files().ReadLink(At(QStringLiteral("l"))), target);
}

}  // namespace
}  // namespace trevane::test
