#include "base/RunTimeError.h"
#include "engine/files/TreeRecord.h"
#include "engine/model/ContentSteps.h"
#include "engine/model/FileEntry.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace trevane::test {
namespace {

constexpr qint32 kChanged = 1;
constexpr qint32 kNotVerified = 2;

/// One folder in another, and a file in the innermost.
class ChainTree final : public MovableTree {
 public:
  explicit ChainTree(qsizetype depth) : depth_(depth) {}

  [[nodiscard]] bool Find(const QString& name) override {
    found_ = level_;
    if (found_ == vanishedAt) {
      return false;
    }
    return name == NameAt(found_);
  }
  [[nodiscard]] qint32 Attributes() override { return found_ < depth_ ? attribute::kFolder : attributes; }
  [[nodiscard]] qint64 Size() override { return size; }
  [[nodiscard]] Variant Modified() override { return modified; }
  [[nodiscard]] std::optional<QString> Identity() override {
    return identity.isEmpty() ? std::nullopt : std::optional(identity + QString::number(found_));
  }
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource() override {
    ++reads;
    return std::make_unique<BytesSource>(content);
  }
  [[nodiscard]] std::optional<QString> LinkText() override { return linkText; }
  [[nodiscard]] qint64 DateStep() override { return dateStep; }
  void Remove() override { removed.push_back(found_); }
  void Enter() override { ++level_; }
  void Leave() override { --level_; }
  [[nodiscard]] bool FindLeft() override {
    found_ = level_;
    return true;
  }
  [[nodiscard]] QStringList Names() override {
    QStringList names{NameAt(level_)};
    if (level_ == newcomerAt) {
      names.append(QStringLiteral("new"));
    }
    return names;
  }
  [[noreturn]] void FailMissing(const QString& name) override { throw ItemNotFound(name); }
  [[noreturn]] void FailChanged(const QString& name) override { throw RunTimeError(kChanged, name); }
  [[noreturn]] void FailNotVerified(const QString& name) override { throw RunTimeError(kNotVerified, name); }

  /// As when a new walk begins.
  void Rewind() { level_ = 0; }

  qint32 attributes = 0;
  std::optional<QString> linkText;
  qint64 dateStep = 0;
  qint64 size = 3;
  Variant modified = Missing{};
  QString identity;
  QByteArray content = "abc";
  qsizetype newcomerAt = -1;
  qsizetype vanishedAt = -1;
  std::vector<qsizetype> removed;
  int reads = 0;

 private:
  [[nodiscard]] QString NameAt(qsizetype level) const {
    return level < depth_ ? QStringLiteral("d") : QStringLiteral("f");
  }

  qsizetype depth_;
  qsizetype level_ = 0;
  qsizetype found_ = 0;
};

const QString kTop = QStringLiteral("d");

class TreeRecordTest : public testing::Test {
 protected:
  void Record() {
    source_.Rewind();
    record_.Take(source_, kTop);
  }
  qint32 Compare(TreeRecord::Proof proof = TreeRecord::Proof::Size) {
    source_.Rewind();
    target_.Rewind();
    return NumberOf([&] { record_.RequireArrived(source_, target_, kTop, proof); });
  }
  qint32 Delete() {
    source_.Rewind();
    return NumberOf([&] { record_.DeleteSource(source_); });
  }
  template <class Work>
  static qint32 NumberOf(const Work& work) {
    try {
      work();
    } catch (const RunTimeError& failure) {
      return failure.Number();
    }
    return 0;
  }

  ChainTree source_{3};
  ChainTree target_{3};
  TreeRecord record_;
};

TEST_F(TreeRecordTest, DepthCostsNoStack) {
  constexpr qsizetype kDepth = 50000;
  ChainTree source(kDepth);
  ChainTree target(kDepth);
  TreeRecord record;
  record.Take(source, kTop);
  source.Rewind();
  record.RequireArrived(source, target, kTop, TreeRecord::Proof::Size);
  source.Rewind();
  record.DeleteSource(source);
  EXPECT_EQ(source.removed.size(), static_cast<size_t>(kDepth + 1));
}

TEST_F(TreeRecordTest, FoldersAreDeletedAfterTheirContents) {
  Record();
  EXPECT_EQ(Compare(), 0);
  EXPECT_EQ(Delete(), 0);
  EXPECT_EQ(source_.removed, (std::vector<qsizetype>{3, 2, 1, 0}));
}

TEST_F(TreeRecordTest, NewSourceItemsEndTheComparison) {
  Record();
  source_.newcomerAt = 2;
  EXPECT_EQ(Compare(), kChanged);
}

TEST_F(TreeRecordTest, ChangedSourcesAreNotDeleted) {
  Record();
  source_.size = 4;
  EXPECT_EQ(Compare(), kChanged);
  EXPECT_EQ(Delete(), kChanged);
  EXPECT_TRUE(source_.removed.empty());
}

TEST_F(TreeRecordTest, ReplacedSourcesAreNotDeleted) {
  source_.identity = QStringLiteral("one");
  Record();
  source_.identity = QStringLiteral("other");
  EXPECT_EQ(Compare(), kChanged);
  EXPECT_EQ(Delete(), kChanged);
  EXPECT_TRUE(source_.removed.empty());
}

TEST_F(TreeRecordTest, ASourceIsNoCopyOfItself) {
  source_.identity = QStringLiteral("one");
  target_.identity = QStringLiteral("one");
  Record();
  EXPECT_EQ(Compare(), kNotVerified);
}

TEST_F(TreeRecordTest, VanishedItemsAreNoFailureOfADeletion) {
  Record();
  source_.vanishedAt = 2;
  EXPECT_EQ(Compare(), kChanged);
  EXPECT_EQ(Delete(), 0);
  EXPECT_EQ(source_.removed, (std::vector<qsizetype>{1, 0}));
}

TEST_F(TreeRecordTest, MissingCopiesAreNotVerified) {
  Record();
  target_.vanishedAt = 3;
  EXPECT_EQ(Compare(), kNotVerified);
}

TEST_F(TreeRecordTest, AnotherSizeIsNoCopy) {
  Record();
  target_.size = 2;
  EXPECT_EQ(Compare(), kNotVerified);
  EXPECT_EQ(source_.reads, 0);
}

TEST_F(TreeRecordTest, ContentsAreComparedWhereASizeIsUnknown) {
  for (const auto& [from, to] : {std::pair<qint64, qint64>{-1, 3}, {3, -1}, {-1, -1}}) {
    source_.size = from;
    target_.size = to;
    Record();
    target_.content = "abc";
    EXPECT_EQ(Compare(), 0);
    target_.content = "abd";
    EXPECT_EQ(Compare(), kNotVerified);
  }
}

TEST_F(TreeRecordTest, MoreProofNeedsTheDateOrTheContent) {
  source_.modified = target_.modified = Variant(qint32{1});
  Record();
  target_.content = "abd";
  EXPECT_EQ(Compare(TreeRecord::Proof::Content), 0);
  EXPECT_EQ(source_.reads, 0);
  target_.modified = Variant(qint32{2});
  EXPECT_EQ(Compare(TreeRecord::Proof::Content), kNotVerified);
  target_.content = "abc";
  EXPECT_EQ(Compare(TreeRecord::Proof::Content), 0);
}

TEST_F(TreeRecordTest, ALinkHasArrivedWhenItsTextHas) {
  source_.attributes = attribute::kLink;
  target_.attributes = attribute::kLink;
  source_.linkText = QStringLiteral("a");
  target_.linkText = QStringLiteral("a");
  Record();
  EXPECT_EQ(Compare(), 0);
  target_.linkText = QStringLiteral("b");
  EXPECT_EQ(Compare(), kNotVerified);
  EXPECT_EQ(source_.reads, 0);
}

TEST_F(TreeRecordTest, DatesWithinTheStepShowNoChange) {
  source_.dateStep = 2000;
  source_.modified = Date{10'000};
  Record();
  source_.modified = Date{11'999};
  EXPECT_EQ(Compare(), 0);
  source_.modified = Date{12'000};
  EXPECT_EQ(Compare(), kChanged);
}

TEST_F(TreeRecordTest, ADateThatIsNotExactProvesNoContent) {
  source_.modified = Date{10'000};
  target_.modified = Date{10'000};
  Record();
  target_.content = "xyz";
  EXPECT_EQ(Compare(TreeRecord::Proof::Content), 0);
  target_.dateStep = 1000;
  EXPECT_EQ(Compare(TreeRecord::Proof::Content), kNotVerified);
}

}  // namespace
}  // namespace trevane::test
