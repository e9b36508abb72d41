#include "engine/files/ProviderError.h"
#include "engine/files/StagedSink.h"
#include "engine/model/ContentSteps.h"
#include "tests/support/ScriptedRawFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <new>
#include <optional>
#include <ostream>
#include <utility>

namespace trevane::test {
namespace {

using Fault = ScriptedRawFiles::Fault;

const QString kTarget = QStringLiteral("GRIP.PAC");
const QByteArray kOld("the old content");
const QByteArray kNew("new content, in two pieces");

/// A server of 8.3 names.
bool IsShortName(const QString& name) {
  const qsizetype dot = name.indexOf(u'.');
  const qsizetype base = dot < 0 ? name.size() : dot;
  return base > 0 && base <= 8 && name.size() - base <= 4 && name == name.toUpper() &&
         name.lastIndexOf(u'.') == dot;
}

bool IsPac(const QString& name) {
  return IsShortName(name) && name.endsWith(QStringLiteral(".PAC"));
}

bool IsTarget(const QString& name) {
  return name == kTarget;
}

struct Server {
  const char* name;
  RawQuirks quirks;
};

void PrintTo(const Server& server, std::ostream* out) {
  *out << server.name;
}

std::vector<Server> Servers() {
  return {
      {"Replacing", {.can = {.renameReplaces = true}}},
      {"ReplacingWithExclusiveNames", {.can = {.renameReplaces = true, .exclusiveCreate = true}}},
      {"NotReplacing", {.can = {.renameRefuses = true}}},
      {"NotReplacingWithoutSizes", {.tellsSizes = false}},
      {"ShortNames", {.takesName = IsShortName}},
      {"ShortNamesRefusedLate", {.takesName = IsShortName, .refusesAtClose = true}},
      {"OwnExtension", {.can = {.renameReplaces = true}, .takesName = IsPac}},
      {"OwnExtensionNotReplacing", {.takesName = IsPac}},
      {"OneNameOnly", {.takesName = IsTarget}},
      {"OneNameOnlyRefusedLate", {.takesName = IsTarget, .refusesAtClose = true}},
      {"WithoutRename", {.can = {.canRename = false}}},
      {"WithoutRenameExclusive", {.can = {.canRename = false, .exclusiveCreate = true}}},
      {"WithoutTemporaryNames", {.can = {.temporaryNames = false}, .tellsSizes = false}},
  };
}

class StagedTest : public testing::Test {
 protected:
  explicit StagedTest(RawQuirks quirks = {}) : server_(std::move(quirks)) {}

  [[nodiscard]] StagedPlace Place() {
    return {.files = server_,
            .learnt = learnt_,
            .server = QStringLiteral("cell"),
            .privateFolder = privately_.path(),
            .leaveBehind = [this](const QString& path) { left_ += path; }};
  }
  SeenItem Put(const QByteArray& content, SinkRequest::Mode mode, const QString& path = kTarget) {
    StagedSink sink(Place(), path, {.mode = mode, .expectedSize = content.size()});
    sink.Write(content.first(content.size() / 2));
    sink.Write(content.sliced(content.size() / 2));
    return sink.Commit();
  }
  /// Nothing when it succeeds.
  std::optional<RunTimeError> FailureOf(const QByteArray& content, SinkRequest::Mode mode) {
    try {
      static_cast<void>(Put(content, mode));
    } catch (const RunTimeError& failure) {
      return failure;
    }
    return std::nullopt;
  }
  [[nodiscard]] QStringList PrivateFiles() const {
    return QDir(privately_.path()).entryList(QDir::Files | QDir::Hidden);
  }
  [[nodiscard]] QStringList Names() const {
    QStringList names;
    for (const auto& [name, content] : server_.files) {
      names += name;
    }
    return names;
  }
  /// The old content that a text names, on the server or on this computer.
  [[nodiscard]] bool NamesOldContent(const QString& text) const {
    for (const auto& [name, content] : server_.files) {
      if (name != kTarget && content == kOld && text.contains(name)) {
        return true;
      }
    }
    for (const QString& name : PrivateFiles()) {
      QFile file(privately_.filePath(name));
      if (text.contains(name) && file.open(QIODevice::ReadOnly) && file.readAll() == kOld) {
        return true;
      }
    }
    return false;
  }
  [[nodiscard]] bool StandsWhole() const {
    const auto at = server_.files.find(kTarget);
    return at != server_.files.end() && (at->second == kOld || at->second == kNew);
  }

  QTemporaryDir privately_;
  ScriptedRawFiles server_;
  LearntNaming learnt_;
  QStringList left_;
};

class StagedServerTest : public StagedTest, public testing::WithParamInterface<Server> {
 protected:
  StagedServerTest() : StagedTest(GetParam().quirks) {}

  void Reset() {
    server_.Disarm();
    server_.files.clear();
    learnt_.~LearntNaming();
    new (&learnt_) LearntNaming();
    left_.clear();
    for (const QString& name : PrivateFiles()) {
      QFile::remove(privately_.filePath(name));
    }
  }
};

INSTANTIATE_TEST_SUITE_P(Servers, StagedServerTest, testing::ValuesIn(Servers()),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(StagedServerTest, NewContentTakesThePlaceOfTheOld) {
  server_.files[kTarget] = kOld;
  const SeenItem placed = Put(kNew, SinkRequest::Mode::Replace);
  EXPECT_EQ(placed.entry.name, kTarget);
  EXPECT_EQ(placed.entry.size, GetParam().quirks.tellsSizes ? kNew.size() : -1);
  EXPECT_EQ(server_.files, (std::map<QString, QByteArray>{{kTarget, kNew}}));
  EXPECT_TRUE(left_.isEmpty());
  EXPECT_TRUE(PrivateFiles().isEmpty());
}

TEST_P(StagedServerTest, AMissingFileIsMade) {
  for (const SinkRequest::Mode mode : {SinkRequest::Mode::New, SinkRequest::Mode::Replace}) {
    Reset();
    static_cast<void>(Put(kNew, mode));
    EXPECT_EQ(server_.files, (std::map<QString, QByteArray>{{kTarget, kNew}}));
  }
}

TEST_P(StagedServerTest, ANewFileReplacesNone) {
  server_.files[kTarget] = kOld;
  const std::optional<RunTimeError> failure = FailureOf(kNew, SinkRequest::Mode::New);
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->Number(), error::kExists);
  EXPECT_EQ(server_.files, (std::map<QString, QByteArray>{{kTarget, kOld}}));
}

TEST_P(StagedServerTest, ASinkThatIsDroppedLeavesNothing) {
  server_.files[kTarget] = kOld;
  {
    StagedSink sink(Place(), kTarget, {.mode = SinkRequest::Mode::Replace});
    sink.Write(kNew);
  }
  EXPECT_EQ(server_.files, (std::map<QString, QByteArray>{{kTarget, kOld}}));
  EXPECT_TRUE(PrivateFiles().isEmpty());
}

TEST_P(StagedServerTest, AnEmptyFileIsWritten) {
  StagedSink sink(Place(), kTarget, {});
  static_cast<void>(sink.Commit());
  EXPECT_EQ(server_.files, (std::map<QString, QByteArray>{{kTarget, {}}}));
}

// Whichever call fails, and however: the old content or the new one is whole under its name, or the old one
// is where the error tells.
TEST_P(StagedServerTest, NoFaultLosesBothContents) {
  for (const Fault fault : {Fault::Refuse, Fault::DoAndFail, Fault::LoseLine, Fault::LoseAnswer}) {
    for (const FaultSpan span : {FaultSpan::Once, FaultSpan::FromThenOn}) {
      for (const qint32 number : {error::kTimeOut, error::kAccessDenied, error::kDiskFull}) {
        for (int call = 1;; ++call) {
          SCOPED_TRACE(testing::Message()
                       << "fault " << static_cast<int>(fault) << " span " << static_cast<int>(span)
                       << " number " << number << " call " << call);
          Reset();
          server_.files[kTarget] = kOld;
          server_.Arm(call, fault, span, number);
          const std::optional<RunTimeError> failure = FailureOf(kNew, SinkRequest::Mode::Replace);
          const bool wasFaulty = server_.FaultCount() > 0;
          if (!failure) {
            EXPECT_EQ(server_.files[kTarget], kNew);
          } else {
            EXPECT_TRUE(StandsWhole() || NamesOldContent(failure->Description()))
                << failure->what() << "\n"
                << Names().join(u' ').toStdString();
            EXPECT_TRUE(wasFaulty) << failure->what();
          }
          // Nothing is left that nobody was told of.
          for (const QString& name : Names()) {
            EXPECT_TRUE(name == kTarget || left_.contains(name) ||
                        (failure && failure->Description().contains(name)))
                << name.toStdString();
          }
          for (const QString& name : PrivateFiles()) {
            EXPECT_TRUE(failure && failure->Description().contains(name)) << name.toStdString();
          }
          if (!wasFaulty) {
            break;
          }
          ASSERT_LT(call, 100);
        }
      }
    }
  }
}

// Whenever it comes: nothing has to be told, because what it interrupts is put back all the same.
TEST_P(StagedServerTest, CancelNeverKeepsTheOldFromComingBack) {
  for (int call = 1;; ++call) {
    SCOPED_TRACE(call);
    Reset();
    server_.files[kTarget] = kOld;
    server_.Arm(call, Fault::Cancel);
    const std::optional<RunTimeError> failure = FailureOf(kNew, SinkRequest::Mode::Replace);
    const bool wasFaulty = server_.FaultCount() > 0;
    EXPECT_TRUE(StandsWhole());
    EXPECT_EQ(Names(), QStringList{kTarget});
    EXPECT_EQ(left_, QStringList());
    EXPECT_EQ(PrivateFiles(), QStringList());
    if (failure) {
      EXPECT_EQ(failure->Number(), error::kCancelled) << failure->what();
    }
    if (!wasFaulty) {
      EXPECT_FALSE(failure);
      break;
    }
    ASSERT_LT(call, 100);
  }
}

TEST_P(StagedServerTest, CancelLeavesNothingOfANewFile) {
  for (int call = 1;; ++call) {
    SCOPED_TRACE(call);
    Reset();
    server_.Arm(call, Fault::Cancel);
    const std::optional<RunTimeError> failure = FailureOf(kNew, SinkRequest::Mode::New);
    const auto at = server_.files.find(kTarget);
    EXPECT_TRUE(at == server_.files.end() || at->second == kNew);
    EXPECT_EQ(left_, QStringList());
    if (server_.FaultCount() == 0) {
      EXPECT_FALSE(failure);
      break;
    }
    ASSERT_LT(call, 100);
  }
}

TEST_P(StagedServerTest, NoFaultLeavesAHalfNewFile) {
  for (const Fault fault : {Fault::Refuse, Fault::DoAndFail}) {
    for (int call = 1;; ++call) {
      SCOPED_TRACE(testing::Message() << "fault " << static_cast<int>(fault) << " call " << call);
      Reset();
      server_.Arm(call, fault);
      const std::optional<RunTimeError> failure = FailureOf(kNew, SinkRequest::Mode::New);
      const auto at = server_.files.find(kTarget);
      EXPECT_TRUE(at == server_.files.end() || at->second == kNew ||
                  (failure && failure->Description().contains(QStringLiteral("A part of the new content"))))
          << at->second.toStdString() << (failure ? failure->what() : "");
      EXPECT_TRUE(failure || at != server_.files.end());
      if (server_.FaultCount() == 0) {
        break;
      }
      ASSERT_LT(call, 100);
    }
  }
}

// Another program makes the file at any moment.
TEST_P(StagedServerTest, ANewFileNeverReplacesAnothersFile) {
  const RawCapabilities can = GetParam().quirks.can;
  for (int call = 1; call < 30; ++call) {
    SCOPED_TRACE(call);
    Reset();
    int count = 0;
    QString at;
    server_.SetHook([&](const QString& what) {
      if (++count == call) {
        at = what;
        server_.files.try_emplace(kTarget, kOld);
      }
    });
    const std::optional<RunTimeError> failure = FailureOf(kNew, SinkRequest::Mode::New);
    server_.SetHook({});
    // Between the look and the call that follows it, a server that offers nothing better is open.
    const bool isOpen = at.startsWith(QStringLiteral("Rename"))    ? can.renameReplaces && !can.renameRefuses
                        : at == QStringLiteral("Store ") + kTarget ? !can.exclusiveCreate
                                                                   : false;
    if (failure && failure->Number() == error::kExists) {
      EXPECT_EQ(server_.files[kTarget], kOld);
    } else if (!isOpen) {
      EXPECT_TRUE(!failure) << failure->what();
      EXPECT_EQ(server_.files[kTarget], kNew);
    }
  }
}

TEST_P(StagedServerTest, ABatchIsAskedForByOneListing) {
  const auto takes = GetParam().quirks.takesName;
  if (takes && !takes(QStringLiteral("B.PAC"))) {
    GTEST_SKIP() << "one file only";
  }
  const std::vector<WriteResult> results =
      WriteManyStaged(Place(), {{QStringLiteral("A.PAC"), "a", {}}, {QStringLiteral("B.PAC"), "bb", {}}});
  ASSERT_EQ(results.size(), 2u);
  EXPECT_EQ(results[1].item->entry.name, QStringLiteral("B.PAC"));
  EXPECT_EQ(server_.files.at(QStringLiteral("B.PAC")), "bb");
  EXPECT_EQ(server_.Calls().count(QStringLiteral("List")), 1);
  EXPECT_EQ(server_.Calls().last(), QStringLiteral("List"));
}

class ReplacingTest : public StagedTest {
 protected:
  ReplacingTest() : StagedTest({.can = {.renameReplaces = true, .traits = true}}) {}
};

TEST_F(ReplacingTest, TheTemporaryNameIsToldAndStandsThere) {
  StagedSink sink(Place(), QStringLiteral("prog\\a.pac"), {});
  EXPECT_EQ(sink.TemporaryName(), std::nullopt);
  sink.Write({});
  ASSERT_TRUE(sink.TemporaryName().has_value());
  EXPECT_TRUE(IsOwnTemporaryName(*sink.TemporaryName()));
  EXPECT_EQ(Names(), QStringList{QStringLiteral("prog\\") + *sink.TemporaryName()});
}

TEST_F(ReplacingTest, AReplacedFileKeepsItsPermissions) {
  server_.files[kTarget] = kOld;
  server_.traits[kTarget].permissions = 0640;
  StagedSink sink(
      Place(), kTarget,
      {.mode = SinkRequest::Mode::Replace, .traits = {.permissions = 0777, .modified = {.msecs = 4000}}});
  sink.Write(kNew);
  EXPECT_EQ(server_.traits[*sink.TemporaryName()].permissions, 0600u);
  static_cast<void>(sink.Commit());
  EXPECT_EQ(server_.traits[kTarget].permissions, 0640u);
  EXPECT_EQ(server_.traits[kTarget].modified, Date{.msecs = 4000});
}

TEST_F(ReplacingTest, AFullDiskAndALostLineLeaveNoRung) {
  for (const qint32 number : {error::kDiskFull, error::kTimeOut, error::kWin32Error + 64}) {
    server_.ClearCalls();
    server_.Arm(1, Fault::Refuse, FaultSpan::FromThenOn, number);
    EXPECT_EQ(FailureOf(kNew, SinkRequest::Mode::New)->Number(), number);
    EXPECT_LE(server_.Calls().filter(QStringLiteral("Store")).size(), 1);
    EXPECT_EQ(learnt_.FirstRung(QStringLiteral("cell"), {}), NameRung::Long);
    server_.Disarm();
  }
}

TEST_F(ReplacingTest, AFullDiskIsToldOfTheFileItself) {
  server_.files[kTarget] = kOld;
  server_.SetHook([](const QString& call) {
    if (call.startsWith(QStringLiteral("Store "))) {
      Fail(error::kDiskFull, call.sliced(6));
    }
  });
  const std::optional<RunTimeError> failure = FailureOf(kNew, SinkRequest::Mode::Replace);
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->Number(), error::kDiskFull);
  EXPECT_TRUE(failure->Description().endsWith(QStringLiteral(": ") + kTarget))
      << failure->Description().toStdString();
}

// The file is in use: its content was taken under the temporary name.
TEST_F(ReplacingTest, ARefusedReplacementTeachesNothing) {
  server_.files[kTarget] = kOld;
  for (const qint32 number : {error::kAccessDenied, error::kInvalidName, error::kNotSupported}) {
    server_.ClearCalls();
    server_.SetHook([number](const QString& call) {
      if (call.startsWith(QStringLiteral("Rename"))) {
        Fail(number, call);
      }
    });
    EXPECT_EQ(FailureOf(kNew, SinkRequest::Mode::Replace)->Number(), number);
    EXPECT_EQ(server_.Calls().filter(QStringLiteral("Store")).size(), 1);
    EXPECT_EQ(server_.files, (std::map<QString, QByteArray>{{kTarget, kOld}}));
    EXPECT_EQ(learnt_.FirstRung(QStringLiteral("cell"), {}), NameRung::Long);
  }
}

TEST_F(ReplacingTest, AFolderWithoutRightsTeachesNothingOfOthers) {
  const QString target = QStringLiteral("shut\\A.PAC");
  server_.files[target] = kOld;
  server_.SetHook([&](const QString& call) {
    if (call.startsWith(QStringLiteral("Store shut")) && !call.endsWith(target)) {
      Fail(error::kAccessDenied, call);
    }
  });
  static_cast<void>(Put(kNew, SinkRequest::Mode::Replace, target));
  EXPECT_EQ(server_.files[target], kNew);
  EXPECT_EQ(learnt_.FirstRung(QStringLiteral("cell"), QStringLiteral("shut\\")), NameRung::InPlace);
  EXPECT_EQ(learnt_.FirstRung(QStringLiteral("cell"), QStringLiteral("prog\\")), NameRung::Long);
  server_.ClearCalls();
  static_cast<void>(Put(kOld, SinkRequest::Mode::Replace, target));
  EXPECT_EQ(server_.Calls().filter(QStringLiteral("Store")).size(), 1);
}

class ShortNamesTest : public StagedTest {
 protected:
  ShortNamesTest() : StagedTest({.takesName = IsShortName}) {}
};

TEST_F(ShortNamesTest, TheNextFileTriesNoRefusedRung) {
  static_cast<void>(Put(kNew, SinkRequest::Mode::New));
  EXPECT_EQ(server_.Calls().filter(QStringLiteral("Store")).size(), 2);
  server_.ClearCalls();
  static_cast<void>(Put(kNew, SinkRequest::Mode::New, QStringLiteral("OTHER\\B.PAC").sliced(6)));
  EXPECT_EQ(server_.Calls().filter(QStringLiteral("Store")).size(), 1);
  EXPECT_EQ(learnt_.FirstRung(QStringLiteral("cell"), QStringLiteral("prog\\")), NameRung::Short);
  EXPECT_EQ(learnt_.FirstRung(QStringLiteral("another"), {}), NameRung::Long);
}

TEST_F(ShortNamesTest, ALeftoverIsTold) {
  server_.files[kTarget] = kOld;
  static_cast<void>(Put(kNew, SinkRequest::Mode::Replace));
  server_.SetHook([](const QString& call) {
    if (call.startsWith(QStringLiteral("Remove"))) {
      Fail(error::kAccessDenied, call);
    }
  });
  static_cast<void>(Put(kOld, SinkRequest::Mode::Replace));
  ASSERT_EQ(left_.size(), 1);
  EXPECT_TRUE(IsTemporaryName(left_.front()));
  EXPECT_FALSE(IsOwnTemporaryName(left_.front()));
  EXPECT_EQ(server_.files[left_.front()], kNew);
}

class NotReplacingTest : public StagedTest {
 protected:
  NotReplacingTest() : StagedTest({.can = {.renameRefuses = true}}) {}
};

// It takes the name right after the new content got it.
TEST_F(NotReplacingTest, AnotherProgramsFileIsNeverRemoved) {
  const QByteArray foreign("of another program, and much longer than both contents");
  server_.files[kTarget] = kOld;
  bool isPlaced = false;
  server_.SetHook([&](const QString& call) {
    if (std::exchange(isPlaced, call.startsWith(QStringLiteral("Rename")) && call.endsWith(u' ' + kTarget))) {
      server_.files[kTarget] = foreign;
    }
  });
  const std::optional<RunTimeError> failure = FailureOf(kNew, SinkRequest::Mode::Replace);
  ASSERT_TRUE(failure);
  EXPECT_EQ(server_.files[kTarget], foreign);
  EXPECT_TRUE(NamesOldContent(failure->Description())) << failure->what();
}

TEST_F(NotReplacingTest, NothingThatIsRaisedLeavesTheDestructor) {
  server_.SetHook([](const QString& call) {
    if (call.startsWith(QStringLiteral("Remove"))) {
      throw std::bad_alloc();
    }
  });
  StagedPlace place = Place();
  place.leaveBehind = [this](const QString& path) {
    left_ += path;
    throw std::bad_alloc();
  };
  {
    StagedSink sink(place, kTarget, {});
    sink.Write(kNew);
  }
  ASSERT_EQ(left_.size(), 1);
  EXPECT_EQ(Names(), left_);
}

class OneNameTest : public StagedTest {
 protected:
  explicit OneNameTest(RawQuirks quirks = {.takesName = IsTarget}) : StagedTest(std::move(quirks)) {}
};

TEST_F(OneNameTest, NoTemporaryNameIsToldAndNothingIsWritten) {
  server_.files[kTarget] = kOld;
  StagedSink sink(Place(), kTarget, {.mode = SinkRequest::Mode::Replace});
  sink.Write(kNew);
  EXPECT_EQ(sink.TemporaryName(), std::nullopt);
  EXPECT_EQ(server_.files, (std::map<QString, QByteArray>{{kTarget, kOld}}));
}

TEST_F(OneNameTest, EqualContentsAreNotWritten) {
  server_.files[kTarget] = kNew;
  static_cast<void>(Put(kNew, SinkRequest::Mode::Replace));
  EXPECT_FALSE(server_.Calls().contains(QStringLiteral("Store ") + kTarget));
  EXPECT_EQ(server_.files[kTarget], kNew);
}

TEST_F(OneNameTest, TheOldContentIsPrivateWhileItIsReplaced) {
  server_.files[kTarget] = kOld;
  bool seen = false;
  server_.SetHook([&](const QString& call) {
    if (call != QStringLiteral("Store ") + kTarget) {
      return;
    }
    for (const QString& name : PrivateFiles()) {
      QFile file(privately_.filePath(name));
      ASSERT_TRUE(file.open(QIODevice::ReadOnly));
      seen = seen || file.readAll() == kOld;
#ifndef Q_OS_WIN
      // On Windows a file has the rights of its folder, and that of the user's temporary files is private.
      EXPECT_FALSE(file.permissions() & (QFile::ReadGroup | QFile::ReadOther)) << name.toStdString();
#endif
    }
  });
  static_cast<void>(Put(kNew, SinkRequest::Mode::Replace));
  EXPECT_TRUE(seen);
}

TEST_F(OneNameTest, WithoutAPrivatePlaceNothingIsWritten) {
  server_.files[kTarget] = kOld;
  StagedPlace place = Place();
  place.privateFolder = privately_.filePath(QStringLiteral("missing"));
  StagedSink sink(place, kTarget, {.mode = SinkRequest::Mode::Replace});
  EXPECT_THROW(
      {
        sink.Write(kNew);
        static_cast<void>(sink.Commit());
      },
      RunTimeError);
  EXPECT_EQ(server_.files, (std::map<QString, QByteArray>{{kTarget, kOld}}));
}

TEST_F(OneNameTest, APrivateCopyThatDoesNotFitIsRefused) {
  try {
    const StagedPrivateFile file(privately_.path(), std::numeric_limits<qint64>::max());
    FAIL();
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kDiskFull);
  }
  EXPECT_TRUE(PrivateFiles().isEmpty());
}

// Not only the failures of servers: memory may run out at any call.
TEST_P(StagedServerTest, NothingThatIsRaisedLosesTheOldContent) {
  for (const bool isOnce : {true, false}) {
    for (int call = 1; call < 100; ++call) {
      SCOPED_TRACE(testing::Message() << "once " << isOnce << " call " << call);
      Reset();
      server_.files[kTarget] = kOld;
      int count = 0;
      server_.SetHook([&](const QString&) {
        ++count;
        if (count == call || (count > call && !isOnce)) {
          throw std::bad_alloc();
        }
      });
      QString text;
      try {
        static_cast<void>(Put(kNew, SinkRequest::Mode::Replace));
      } catch (const RunTimeError& failure) {
        text = failure.Description();
      } catch (const std::bad_alloc&) {
        EXPECT_TRUE(StandsWhole());
      }
      EXPECT_TRUE(StandsWhole() || NamesOldContent(text)) << text.toStdString();
      for (const QString& name : PrivateFiles()) {
        EXPECT_TRUE(text.contains(name)) << name.toStdString();
        QFile::remove(privately_.filePath(name));
      }
      if (count < call) {
        break;
      }
    }
  }
}

class ChangingTest : public OneNameTest {
 protected:
  ChangingTest() : OneNameTest({.takesName = IsTarget, .appends = "\n"}) {}
};

TEST_F(ChangingTest, ContentThatDoesNotArriveAsSentIsPutBack) {
  server_.files[kTarget] = kOld;
  const std::optional<RunTimeError> failure = FailureOf(kNew, SinkRequest::Mode::Replace);
  ASSERT_TRUE(failure);
  // The old content does not arrive as it was either, so that the copy of it stays and is told.
  EXPECT_TRUE(NamesOldContent(failure->Description())) << failure->what();
}

TEST(StagedFolderTest, WithoutFoldersNothingIsAsked) {
  ScriptedRawFiles server({.can = {.folders = false}});
  try {
    CreateFolderStaged(server, QStringLiteral("prog"));
    FAIL();
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kNotSupported);
    EXPECT_EQ(failure.Description(), QStringLiteral("This controller has no folders: prog"));
  }
  EXPECT_EQ(server.CallCount(), 0);
}

TEST(StagedFolderTest, AFolderIsMadeWhereNothingHasItsName) {
  ScriptedRawFiles server;
  CreateFolderStaged(server, QStringLiteral("prog"));
  EXPECT_EQ(server.Calls().last(), QStringLiteral("CreateFolder prog"));
  server.files[QStringLiteral("a")] = "";
  EXPECT_THROW(CreateFolderStaged(server, QStringLiteral("a")), RunTimeError);
}

}  // namespace
}  // namespace trevane::test
