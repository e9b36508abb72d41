#include "engine/files/MoveItem.h"
#include "engine/files/ProviderError.h"
#include "engine/files/TemporaryName.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/PlainFileSystem.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>

namespace trevane::test {
namespace {

const QString kFrom = QStringLiteral("C:\\d");
const QString kTo = QStringLiteral("D:\\e");

struct Shown {
  const char* name;
  PlainOptions options;
};

void PrintTo(const Shown& shown, std::ostream* out) {
  *out << shown.name;
}

/// What every file system does over the members that it must have, over one whose calls fail.
class TreeByPathTest : public testing::TestWithParam<Shown> {
 protected:
  TreeByPathTest()
      : memory_(std::make_shared<MemoryFileSystem>(
            MemoryFileSystemOptions{.drives = {QStringLiteral("C:"), QStringLiteral("D:")}})),
        faulty_(std::make_shared<FaultyFileSystem>(memory_)),
        files_(faulty_, GetParam().options) {
    MakeTree();
  }

  void MakeTree() {
    memory_->AddFile(QStringLiteral("C:\\d\\a"), "first");
    memory_->AddFile(QStringLiteral("C:\\d\\sub\\b"), "second");
    memory_->AddFolder(QStringLiteral("C:\\d\\empty"));
    memory_->AddFile(QStringLiteral("C:\\beside"), "stays");
  }
  void Reset() {
    faulty_->Disarm();
    memory_->Vanish(kFrom);
    for (const FileEntry& entry : memory_->List(QStringLiteral("D:"))) {
      memory_->Vanish(QStringLiteral("D:\\") + entry.name);
    }
    MakeTree();
  }
  [[nodiscard]] bool Holds(const QString& path, const QByteArray& content) const {
    return memory_->Exists(path) && memory_->Content(path) == content;
  }
  [[nodiscard]] bool IsWholeAt(const QString& top) const {
    return memory_->Exists(top + QStringLiteral("\\empty")) && Holds(top + QStringLiteral("\\a"), "first") &&
           Holds(top + QStringLiteral("\\sub\\b"), "second");
  }
  [[nodiscard]] static qint32 ErrorOf(const std::function<void()>& work) {
    try {
      work();
    } catch (const RunTimeError& failure) {
      return failure.Number();
    }
    return 0;
  }
  /// Makes each call of `work` fail, in each of the ways, and runs `check` with its error number.
  void FailEachCall(std::initializer_list<Fault> faults, const std::function<void()>& prepare,
                    const std::function<void()>& work,
                    const std::function<void(Fault fault, qint32 error)>& check) {
    for (const Fault fault : faults) {
      for (const FaultSpan span : {FaultSpan::Once, FaultSpan::FromThenOn}) {
        for (int call = 1;; ++call) {
          SCOPED_TRACE(testing::Message() << "fault " << static_cast<int>(fault) << " span "
                                          << static_cast<int>(span) << " call " << call);
          Reset();
          prepare();
          faulty_->Arm(call, span, error::kTimeOut, fault);
          const qint32 result = ErrorOf(work);
          EXPECT_TRUE(result == 0 || faulty_->FaultCount() > 0) << result;
          check(fault, result);
          if (faulty_->FaultCount() == 0 || HasFailure()) {
            EXPECT_GT(call, 5);
            break;
          }
        }
      }
    }
  }

  std::shared_ptr<MemoryFileSystem> memory_;
  std::shared_ptr<FaultyFileSystem> faulty_;
  PlainFileSystem files_;
};

TEST_P(TreeByPathTest, AFaultAtAnyCallOfACopyLosesNothing) {
  FailEachCall(
      {Fault::Refuse, Fault::DoAndFail, Fault::Lie}, [] {}, [this] { files_.Copy(kFrom, kTo, false); },
      [this](Fault fault, qint32 error) {
        EXPECT_TRUE(IsWholeAt(kFrom));
        EXPECT_TRUE(error != 0 || fault == Fault::Lie || IsWholeAt(kTo));
        // Under its final name a copy is whole.
        if (GetParam().options.temporaryNames) {
          EXPECT_TRUE(IsWholeAt(kTo) || !memory_->Exists(kTo) || fault == Fault::Lie);
        }
        // A half of a content under its own name is told where the server lies about its removal, too.
        const bool mayBeHalf = fault == Fault::Lie && !GetParam().options.temporaryNames && error != 0;
        for (const QString& path : {QStringLiteral("\\a"), QStringLiteral("\\sub\\b")}) {
          EXPECT_TRUE(!memory_->Exists(kTo + path) || mayBeHalf ||
                      memory_->Content(kTo + path) == memory_->Content(kFrom + path));
        }
      });
}

TEST_P(TreeByPathTest, AFaultInAMergeLeavesOldOrNewContents) {
  FailEachCall(
      {Fault::Refuse, Fault::DoAndFail, Fault::Lie},
      [this] {
        memory_->AddFile(QStringLiteral("D:\\e\\a"), "old");
        memory_->AddFile(QStringLiteral("D:\\e\\own"), "own");
      },
      [this] { files_.Copy(kFrom, kTo, true); },
      [this](Fault fault, qint32 error) {
        EXPECT_TRUE(IsWholeAt(kFrom));
        EXPECT_TRUE(error != 0 || fault == Fault::Lie || IsWholeAt(kTo));
        EXPECT_TRUE(Holds(QStringLiteral("D:\\e\\own"), "own"));
        const QByteArray a = memory_->Content(QStringLiteral("D:\\e\\a"));
        // Where the server lies about a content that is written in place, the old one cannot be kept.
        const bool isHalf = fault == Fault::Lie && !GetParam().options.temporaryNames;
        EXPECT_TRUE(a == "old" || a == "first" || isHalf) << a.toStdString();
        EXPECT_TRUE(!isHalf || error != 0 || a == "old" || a == "first") << a.toStdString();
      });
}

TEST_P(TreeByPathTest, AFaultInARemovalTouchesNothingElse) {
  FailEachCall(
      {Fault::Refuse, Fault::DoAndFail, Fault::Lie}, [] {}, [this] { files_.Remove(kFrom); },
      [this](Fault fault, qint32 error) {
        EXPECT_TRUE(Holds(QStringLiteral("C:\\beside"), "stays"));
        EXPECT_TRUE(error != 0 || fault == Fault::Lie || !memory_->Exists(kFrom));
      });
}

TEST_P(TreeByPathTest, AFaultAtAnyCallOfAMoveLosesNothing) {
  FailEachCall(
      {Fault::Refuse, Fault::DoAndFail, Fault::Lie, Fault::LieAndReckon}, [] {},
      [this] { MoveItem(files_, kFrom, kTo, false); },
      [this](Fault /*fault*/, qint32 /*error*/) { EXPECT_TRUE(IsWholeAt(kFrom) || IsWholeAt(kTo)); });
}

TEST_P(TreeByPathTest, ACancelledCopyLeavesNothing) {
  for (const QString& last : {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("empty")}) {
    const auto observer = [&](const ItemProgress& item) { return item.name != last; };
    EXPECT_EQ(ErrorOf([&] { files_.Copy(kFrom, kTo, false, observer); }), error::kCancelled);
    EXPECT_TRUE(memory_->List(QStringLiteral("D:")).empty());
    EXPECT_TRUE(IsWholeAt(kFrom));
  }
}

TEST_P(TreeByPathTest, ASourceThatShrinksIsAFailure) {
  faulty_->SetHook([this](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::OpenSource && call.path.endsWith(QStringLiteral("\\b"))) {
      memory_->AddFile(QStringLiteral("C:\\d\\sub\\b"), "se");
    }
  });
  EXPECT_EQ(ErrorOf([&] { files_.Copy(kFrom, kTo, false); }), providererror::kChanged);
  EXPECT_TRUE(memory_->List(QStringLiteral("D:")).empty());
}

TEST_P(TreeByPathTest, ASourceThatGrowsIsCopiedAsItIsRead) {
  faulty_->SetHook([this](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::OpenSource && call.path.endsWith(QStringLiteral("\\b"))) {
      memory_->AddFile(QStringLiteral("C:\\d\\sub\\b"), "second and more");
    }
  });
  files_.Copy(kFrom, kTo, false);
  EXPECT_EQ(memory_->Content(QStringLiteral("D:\\e\\sub\\b")), "second and more");
}

TEST_P(TreeByPathTest, OwnNamesAreUsedWhereThereAreNoOthers) {
  bool sawTemporary = false;
  faulty_->SetHook([&](const FileSystemCall& call) {
    for (const QString& path : {call.path, call.destination}) {
      for (const QString& name : path.split(u'\\')) {
        sawTemporary = sawTemporary || IsOwnTemporaryName(name);
      }
    }
  });
  files_.Copy(kFrom, kTo, false);
  files_.Copy(QStringLiteral("C:\\d\\a"), QStringLiteral("D:\\e\\sub\\b"), true);
  EXPECT_EQ(sawTemporary, GetParam().options.temporaryNames);
  EXPECT_TRUE(Holds(QStringLiteral("D:\\e\\sub\\b"), "first"));
}

TEST_P(TreeByPathTest, ADestinationBehindALinkIsFoundInside) {
  memory_->AddLink(QStringLiteral("C:\\l"), QStringLiteral("C:\\d\\sub"));
  EXPECT_NE(ErrorOf([&] { files_.Copy(kFrom, QStringLiteral("C:\\l\\new"), true); }), 0);
  EXPECT_EQ(memory_->List(QStringLiteral("C:\\d\\sub")).size(), 1U);
  EXPECT_TRUE(IsWholeAt(kFrom));
}

TEST_P(TreeByPathTest, ALinkIsNeverWrittenThrough) {
  memory_->AddFile(QStringLiteral("D:\\target"), "kept");
  memory_->AddLink(QStringLiteral("D:\\l"), QStringLiteral("D:\\target"));
  const qint32 error =
      ErrorOf([&] { files_.Copy(QStringLiteral("C:\\d\\a"), QStringLiteral("D:\\l"), true); });
  EXPECT_EQ(error, GetParam().options.temporaryNames ? 0 : error::kExists);
  EXPECT_TRUE(Holds(QStringLiteral("D:\\target"), "kept"));
}

INSTANTIATE_TEST_SUITE_P(All, TreeByPathTest,
                         testing::Values(Shown{"Plain", {}}, Shown{"WithIdentities", {.identities = true}},
                                         Shown{"WithoutTemporaryNames", {.temporaryNames = false}}),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace trevane::test
