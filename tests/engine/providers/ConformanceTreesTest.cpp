#include "engine/files/MoveItem.h"
#include "engine/files/ProviderError.h"
#include "engine/files/WholeFile.h"
#include "tests/engine/providers/ProviderBed.h"

namespace trevane::test {
namespace {

class ConformanceTrees : public ConformanceTest {
 protected:
  void MakeTree(const QString& top) {
    Files().CreateFolder(At(top));
    WriteFile(Files(), At(top + QStringLiteral("\\a")), "1");
    Files().CreateFolder(At(top + QStringLiteral("\\sub")));
    WriteFile(Files(), At(top + QStringLiteral("\\sub\\b")), "2");
    Files().CreateFolder(At(top + QStringLiteral("\\sub\\empty")));
  }
  [[nodiscard]] static QStringList TreeLines() {
    return {QStringLiteral("a=1"), QStringLiteral("sub\\"), QStringLiteral("sub\\b=2"),
            QStringLiteral("sub\\empty\\")};
  }
};
INSTANTIATE_TEST_SUITE_P(All, ConformanceTrees, ::testing::ValuesIn(AllProviders()), NameOfCase);

TEST_P(ConformanceTrees, AFolderIsCopiedWithEverythingBelowIt) {
  MakeTree(QStringLiteral("d"));
  Files().Copy(At(QStringLiteral("d")), At(QStringLiteral("e")), false);
  EXPECT_EQ(TreeOf(At(QStringLiteral("d"))), TreeLines());
  EXPECT_EQ(TreeOf(At(QStringLiteral("e"))), TreeLines());
  EXPECT_EQ(NamesIn(Bed().Base()), (QStringList{QStringLiteral("d"), QStringLiteral("e")}));
}

TEST_P(ConformanceTrees, AFolderIsMovedWithEverythingBelowIt) {
  if (!Bed().Renames()) {
    GTEST_SKIP() << "nothing is renamed here";
  }
  MakeTree(QStringLiteral("d"));
  Files().CreateFolder(At(QStringLiteral("target")));
  Files().Rename(At(QStringLiteral("d")), At(QStringLiteral("target\\e")), false);
  EXPECT_EQ(NamesIn(Bed().Base()), QStringList{QStringLiteral("target")});
  EXPECT_EQ(TreeOf(At(QStringLiteral("target\\e"))), TreeLines());
}

TEST_P(ConformanceTrees, WithoutOverwriteAnExistingDestinationIsLeftAlone) {
  MakeTree(QStringLiteral("d"));
  WriteFile(Files(), At(QStringLiteral("f")), "new");
  WriteFile(Files(), At(QStringLiteral("g")), "old");
  Files().CreateFolder(At(QStringLiteral("e")));
  const QStringList before = TreeOf(Bed().Base());
  for (const QString& from : {QStringLiteral("d"), QStringLiteral("f")}) {
    for (const QString& to : {QStringLiteral("e"), QStringLiteral("g")}) {
      EXPECT_EQ(ErrorOf([&] { Files().Copy(At(from), At(to), false); }), error::kExists);
      EXPECT_EQ(ErrorOf([&] { Files().Rename(At(from), At(to), false); }), error::kExists);
    }
  }
  EXPECT_EQ(TreeOf(Bed().Base()), before);
}

TEST_P(ConformanceTrees, AFileReplacesAFileWhenThatIsAllowed) {
  WriteFile(Files(), At(QStringLiteral("f")), "new");
  WriteFile(Files(), At(QStringLiteral("g")), "old and longer");
  Files().Copy(At(QStringLiteral("f")), At(QStringLiteral("g")), true);
  EXPECT_EQ(TreeOf(Bed().Base()), (QStringList{QStringLiteral("f=new"), QStringLiteral("g=new")}));
  if (!Bed().Renames()) {
    return;
  }
  WriteFile(Files(), At(QStringLiteral("f")), "newer");
  Files().Rename(At(QStringLiteral("f")), At(QStringLiteral("g")), true);
  EXPECT_EQ(TreeOf(Bed().Base()), QStringList{QStringLiteral("g=newer")});
}

TEST_P(ConformanceTrees, ACopiedFolderIsMergedIntoTheOneThatIsThere) {
  MakeTree(QStringLiteral("d"));
  Files().CreateFolder(At(QStringLiteral("e")));
  WriteFile(Files(), At(QStringLiteral("e\\a")), "old");
  WriteFile(Files(), At(QStringLiteral("e\\own")), "stays");
  Files().CreateFolder(At(QStringLiteral("e\\sub")));
  WriteFile(Files(), At(QStringLiteral("e\\sub\\other")), "stays too");
  Files().Copy(At(QStringLiteral("d")), At(QStringLiteral("e")), true);
  EXPECT_EQ(TreeOf(At(QStringLiteral("e"))),
            (QStringList{QStringLiteral("a=1"), QStringLiteral("own=stays"), QStringLiteral("sub\\"),
                         QStringLiteral("sub\\b=2"), QStringLiteral("sub\\empty\\"),
                         QStringLiteral("sub\\other=stays too")}));
  EXPECT_EQ(TreeOf(At(QStringLiteral("d"))), TreeLines());
}

TEST_P(ConformanceTrees, WhereNothingIsRenamedAMoveChangesNothing) {
  if (Bed().Renames()) {
    GTEST_SKIP() << "items are renamed here";
  }
  MakeTree(QStringLiteral("d"));
  Files().CreateFolder(At(QStringLiteral("empty")));
  WriteFile(Files(), At(QStringLiteral("f")), "new");
  WriteFile(Files(), At(QStringLiteral("g")), "old");
  const QStringList before = TreeOf(Bed().Base());
  const std::pair<QString, QString> moves[] = {{QStringLiteral("d"), QStringLiteral("e")},
                                               {QStringLiteral("d"), QStringLiteral("empty")},
                                               {QStringLiteral("f"), QStringLiteral("h")},
                                               {QStringLiteral("f"), QStringLiteral("g")}};
  for (const auto& [from, to] : moves) {
    EXPECT_EQ(ErrorOf([&, &source = from, &target = to] { Files().Rename(At(source), At(target), true); }),
              error::kNotSupported)
        << from.toStdString() << ' ' << to.toStdString();
    EXPECT_EQ(TreeOf(Bed().Base()), before);
  }
}

TEST_P(ConformanceTrees, AMoveNeverMergesFoldersButReplacesAnEmptyOne) {
  MakeTree(QStringLiteral("d"));
  Files().CreateFolder(At(QStringLiteral("full")));
  WriteFile(Files(), At(QStringLiteral("full\\f")), "x");
  Files().CreateFolder(At(QStringLiteral("empty")));
  EXPECT_EQ(ErrorOf([&] { Files().Rename(At(QStringLiteral("d")), At(QStringLiteral("full")), true); }),
            error::kDirectoryNotEmpty);
  EXPECT_EQ(TreeOf(At(QStringLiteral("d"))), TreeLines());
  EXPECT_EQ(TreeOf(At(QStringLiteral("full"))), QStringList{QStringLiteral("f=x")});
  if (!Bed().Renames()) {
    return;
  }
  Files().Rename(At(QStringLiteral("d")), At(QStringLiteral("empty")), true);
  EXPECT_EQ(TreeOf(At(QStringLiteral("empty"))), TreeLines());
  EXPECT_FALSE(IsThere(At(QStringLiteral("d"))));
}

TEST_P(ConformanceTrees, AClashOfKindsIsRefused) {
  MakeTree(QStringLiteral("d"));
  WriteFile(Files(), At(QStringLiteral("f")), "x");
  const QStringList before = TreeOf(Bed().Base());
  const QString d = At(QStringLiteral("d"));
  const QString f = At(QStringLiteral("f"));
  EXPECT_EQ(ErrorOf([&] { Files().Copy(d, f, true); }), error::kExists);
  EXPECT_EQ(ErrorOf([&] { Files().Copy(f, d, true); }), error::kExists);
  EXPECT_EQ(ErrorOf([&] { Files().Rename(d, f, true); }), error::kExists);
  EXPECT_EQ(ErrorOf([&] { Files().Rename(f, d, true); }), error::kExists);
  EXPECT_EQ(TreeOf(Bed().Base()), before);
}

TEST_P(ConformanceTrees, AClashOfKindsInsideAMergeIsRefusedThere) {
  MakeTree(QStringLiteral("d"));
  Files().CreateFolder(At(QStringLiteral("e")));
  WriteFile(Files(), At(QStringLiteral("e\\sub")), "a file");
  EXPECT_EQ(ErrorOf([&] { Files().Copy(At(QStringLiteral("d")), At(QStringLiteral("e")), true); }),
            error::kExists);
  EXPECT_EQ(ReadFile(Files(), At(QStringLiteral("e\\sub"))), QByteArray("a file"));
  EXPECT_EQ(TreeOf(At(QStringLiteral("d"))), TreeLines());
}

TEST_P(ConformanceTrees, AnItemIsNotCopiedOrMovedOntoItself) {
  MakeTree(QStringLiteral("d"));
  WriteFile(Files(), At(QStringLiteral("f")), "x");
  const QStringList before = TreeOf(Bed().Base());
  for (const QString& name : {QStringLiteral("d"), QStringLiteral("f")}) {
    for (const bool overwrite : {false, true}) {
      EXPECT_NE(ErrorOf([&] { Files().Copy(At(name), At(name), overwrite); }), 0);
      EXPECT_NE(ErrorOf([&] { Files().Rename(At(name), At(name), overwrite); }), 0);
    }
  }
  EXPECT_EQ(TreeOf(Bed().Base()), before);
}

TEST_P(ConformanceTrees, AFolderIsNotCopiedOrMovedBelowItself) {
  MakeTree(QStringLiteral("d"));
  const QStringList before = TreeOf(Bed().Base());
  for (const QString& to : {QStringLiteral("d\\new"), QStringLiteral("d\\sub\\empty\\new")}) {
    for (const bool overwrite : {false, true}) {
      EXPECT_EQ(ErrorOf([&] { Files().Copy(At(QStringLiteral("d")), At(to), overwrite); }),
                error::kInvalidParameter);
      EXPECT_EQ(ErrorOf([&] { Files().Rename(At(QStringLiteral("d")), At(to), overwrite); }),
                error::kInvalidParameter);
    }
  }
  EXPECT_EQ(TreeOf(Bed().Base()), before);
}

TEST_P(ConformanceTrees, AFolderIsNotCopiedBelowItselfThroughALink) {
  MakeTree(QStringLiteral("d"));
  if (!Bed().MakeLink(At(QStringLiteral("l")), At(QStringLiteral("d\\sub")))) {
    GTEST_SKIP() << "no links here";
  }
  const QStringList before = TreeOf(Bed().Base());
  EXPECT_EQ(ErrorOf([&] { Files().Copy(At(QStringLiteral("d")), At(QStringLiteral("l\\new")), true); }),
            error::kInvalidParameter);
  const qint32 moved =
      ErrorOf([&] { Files().Rename(At(QStringLiteral("d")), At(QStringLiteral("l\\new")), true); });
  // A server may refuse it without a reason.
  EXPECT_TRUE(moved == error::kInvalidParameter || (moved != 0 && Bed().IsPlain())) << moved;
  EXPECT_EQ(ErrorOf([&] { Files().Copy(At(QStringLiteral("d\\sub\\b")), At(QStringLiteral("l\\b")), true); }),
            error::kInvalidParameter);
  EXPECT_EQ(TreeOf(Bed().Base()), before);
}

TEST_P(ConformanceTrees, AFolderWithAnotherOfTheSameBeginningIsNoneBelowIt) {
  MakeTree(QStringLiteral("d"));
  Files().CreateFolder(At(QStringLiteral("dd")));
  Files().Copy(At(QStringLiteral("d")), At(QStringLiteral("dd\\new")), false);
  EXPECT_EQ(TreeOf(At(QStringLiteral("dd\\new"))), TreeLines());
}

TEST_P(ConformanceTrees, ALinkIsCopiedAndMovedAsALink) {
  MakeTree(QStringLiteral("d"));
  if (!Bed().MakeLink(At(QStringLiteral("d\\l")), At(QStringLiteral("d\\sub")))) {
    GTEST_SKIP() << "no links here";
  }
  if (Bed().IsPlain()) {
    EXPECT_EQ(ErrorOf([&] { Files().Copy(At(QStringLiteral("d")), At(QStringLiteral("e")), false); }),
              error::kNotSupported);
    EXPECT_EQ(NamesIn(Bed().Base()), QStringList{QStringLiteral("d")});
    return;
  }
  Files().Copy(At(QStringLiteral("d")), At(QStringLiteral("e")), false);
  EXPECT_TRUE(Files().Stat(At(QStringLiteral("e\\l"))).IsLink());
  Files().Copy(At(QStringLiteral("d\\l")), At(QStringLiteral("m")), false);
  EXPECT_TRUE(Files().Stat(At(QStringLiteral("m"))).IsLink());
  Files().Rename(At(QStringLiteral("m")), At(QStringLiteral("n")), false);
  EXPECT_TRUE(Files().Stat(At(QStringLiteral("n"))).IsLink());
  EXPECT_FALSE(IsThere(At(QStringLiteral("m"))));
  EXPECT_EQ(NamesIn(At(QStringLiteral("n"))), (QStringList{QStringLiteral("b"), QStringLiteral("empty")}));
}

TEST_P(ConformanceTrees, AFileCopiedOntoALinkReplacesTheLinkAndNotItsTarget) {
  WriteFile(Files(), At(QStringLiteral("f")), "new");
  WriteFile(Files(), At(QStringLiteral("target")), "old");
  if (!Bed().MakeLink(At(QStringLiteral("l")), At(QStringLiteral("target")))) {
    GTEST_SKIP() << "no links here";
  }
  Files().Copy(At(QStringLiteral("f")), At(QStringLiteral("l")), true);
  EXPECT_EQ(TreeOf(Bed().Base()),
            (QStringList{QStringLiteral("f=new"), QStringLiteral("l=new"), QStringLiteral("target=old")}));
}

TEST_P(ConformanceTrees, RemoveDeletesAFolderWithEverythingBelowIt) {
  MakeTree(QStringLiteral("d"));
  WriteFile(Files(), At(QStringLiteral("f")), "x");
  Files().Remove(At(QStringLiteral("d")));
  EXPECT_EQ(TreeOf(Bed().Base()), QStringList{QStringLiteral("f=x")});
  Files().Remove(At(QStringLiteral("f")));
  EXPECT_TRUE(NamesIn(Bed().Base()).isEmpty());
}

TEST_P(ConformanceTrees, RemoveNeverFollowsALink) {
  MakeTree(QStringLiteral("keep"));
  MakeTree(QStringLiteral("d"));
  if (!Bed().MakeLink(At(QStringLiteral("d\\sub\\l")), At(QStringLiteral("keep")))) {
    GTEST_SKIP() << "no links here";
  }
  ASSERT_TRUE(Bed().MakeLink(At(QStringLiteral("l")), At(QStringLiteral("keep"))));
  Files().Remove(At(QStringLiteral("d")));
  Files().Remove(At(QStringLiteral("l")));
  EXPECT_EQ(NamesIn(Bed().Base()), QStringList{QStringLiteral("keep")});
  EXPECT_EQ(TreeOf(At(QStringLiteral("keep"))), TreeLines());
}

TEST_P(ConformanceTrees, ItemsGoFromOneDriveToAnother) {
  if (!Files().Capabilities().topHoldsDrives) {
    GTEST_SKIP() << "no drives here";
  }
  MakeTree(QStringLiteral("d"));
  Files().Copy(At(QStringLiteral("d")), QStringLiteral("D:\\copy"), false);
  EXPECT_EQ(TreeOf(QStringLiteral("D:\\copy")), TreeLines());
  MoveItem(Files(), At(QStringLiteral("d")), QStringLiteral("D:\\moved"), false);
  EXPECT_EQ(TreeOf(QStringLiteral("D:\\moved")), TreeLines());
  EXPECT_TRUE(NamesIn(Bed().Base()).isEmpty());
}

}  // namespace
}  // namespace trevane::test
