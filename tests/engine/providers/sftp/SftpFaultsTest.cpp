#include "engine/files/FileSystem.h"
#include "engine/files/TemporaryName.h"
#include "engine/files/WholeFile.h"
#include "tests/engine/providers/sftp/FaultChannel.h"
#include "tests/engine/providers/sftp/SftpWorld.h"

#include <QFile>
#include <QMap>

#include <algorithm>
#include <functional>
#include <tuple>
#include <vector>

namespace trevane::test {
namespace {

/// Longer than a block, so that half of it can arrive.
QByteArray Long(char letter) {
  return QByteArray(40000, letter);
}

/// What a work leaves behind, read past the server.
struct Left {
  /// By the path in the folder of the test; folders have a "/" behind them and no content.
  QMap<QString, QByteArray> items;

  [[nodiscard]] bool Has(const QString& path) const { return items.contains(path); }
  /// Under its own name or a temporary one.
  [[nodiscard]] bool HasContent(const QByteArray& content) const {
    return std::any_of(items.begin(), items.end(), [&](const QByteArray& item) { return item == content; });
  }
};

struct Work {
  const char* name;
  std::function<void(SftpWorld& world)> prepare;
  std::function<void(FileSystem& files, const SftpWorld& world)> run;
  /// `failed`: the work has reported a failure.
  std::function<void(const Left& left, bool failed)> check;
};

/// Whether it reported a failure.
bool Fails(const std::function<void()>& work) {
  try {
    work();
  } catch (const RunTimeError& failure) {
    EXPECT_FALSE(failure.Description().isEmpty());
    return true;
  }
  return false;
}

void PrepareTree(SftpWorld& world) {
  world.MakeFolder(QStringLiteral("a/sub"));
  world.Write(QStringLiteral("a/f"), Long('1'));
  world.Write(QStringLiteral("a/sub/g"), "2");
}

void RequireTree(const Left& left, const QString& top) {
  EXPECT_EQ(left.items.value(top + QStringLiteral("/f")), Long('1'));
  EXPECT_EQ(left.items.value(top + QStringLiteral("/sub/g")), "2");
}

/// Nothing of the tree, except under a temporary name.
void RequireNone(const Left& left, const QString& top) {
  EXPECT_FALSE(left.Has(top + u'/'));
  EXPECT_FALSE(left.Has(top + QStringLiteral("/f")));
}

std::vector<NewContent> ThreeFiles(const SftpWorld& world) {
  std::vector<NewContent> files;
  for (const char letter : {'x', 'y', 'z'}) {
    SinkRequest request;
    request.traits = {.permissions = 0644U, .modified = {1000000000000}};
    files.push_back({world.At(QString(QLatin1Char(letter))), Long(letter), request});
  }
  return files;
}

const Work kWorks[] = {
    {"CopyTree", PrepareTree,
     [](FileSystem& files, const SftpWorld& world) {
       files.Copy(world.At(QStringLiteral("a")), world.At(QStringLiteral("b")), false);
     },
     [](const Left& left, bool failed) {
       RequireTree(left, QStringLiteral("a"));
       if (left.Has(QStringLiteral("b/"))) {
         RequireTree(left, QStringLiteral("b"));
       } else {
         EXPECT_TRUE(failed);
       }
     }},
    {"CopyOver",
     [](SftpWorld& world) {
       PrepareTree(world);
       world.MakeFolder(QStringLiteral("b"));
       world.Write(QStringLiteral("b/f"), Long('o'));
     },
     [](FileSystem& files, const SftpWorld& world) {
       files.Copy(world.At(QStringLiteral("a")), world.At(QStringLiteral("b")), true);
     },
     [](const Left& left, bool failed) {
       RequireTree(left, QStringLiteral("a"));
       const QByteArray now = left.items.value(QStringLiteral("b/f"));
       EXPECT_TRUE(now.isEmpty() || now == Long('1') || now == Long('o')) << now.size();
       EXPECT_TRUE(now == Long('1') || left.HasContent(Long('o')));
       if (!failed) {
         RequireTree(left, QStringLiteral("b"));
       }
     }},
    {"MoveTree", PrepareTree,
     [](FileSystem& files, const SftpWorld& world) {
       files.Rename(world.At(QStringLiteral("a")), world.At(QStringLiteral("b")), false);
     },
     [](const Left& left, bool failed) {
       if (left.Has(QStringLiteral("b/"))) {
         RequireTree(left, QStringLiteral("b"));
         RequireNone(left, QStringLiteral("a"));
       } else {
         EXPECT_TRUE(failed);
         RequireTree(left, QStringLiteral("a"));
       }
     }},
    {"MoveOver",
     [](SftpWorld& world) {
       world.Write(QStringLiteral("f"), Long('n'));
       world.Write(QStringLiteral("g"), Long('o'));
     },
     [](FileSystem& files, const SftpWorld& world) {
       files.Rename(world.At(QStringLiteral("f")), world.At(QStringLiteral("g")), true);
     },
     [](const Left& left, bool failed) {
       EXPECT_TRUE(left.HasContent(Long('n')));
       const QByteArray now = left.items.value(QStringLiteral("g"));
       EXPECT_TRUE(now == Long('n') || left.HasContent(Long('o')));
       EXPECT_TRUE(failed || now == Long('n'));
     }},
    {"Replace", [](SftpWorld& world) { world.Write(QStringLiteral("f"), Long('o')); },
     [](FileSystem& files, const SftpWorld& world) {
       WriteFile(files, world.At(QStringLiteral("f")), Long('n'));
     },
     [](const Left& left, bool failed) {
       const QByteArray now = left.items.value(QStringLiteral("f"));
       EXPECT_TRUE(now.isEmpty() || now == Long('n') || now == Long('o')) << now.size();
       EXPECT_TRUE(now == Long('n') || left.HasContent(Long('o')));
       EXPECT_TRUE(failed || now == Long('n'));
     }},
    {"NewFile", [](SftpWorld&) {},
     [](FileSystem& files, const SftpWorld& world) {
       WriteNewFile(files, world.At(QStringLiteral("f")), Long('n'), {.permissions = 0640U});
     },
     [](const Left& left, bool failed) {
       if (left.Has(QStringLiteral("f"))) {
         EXPECT_EQ(left.items.value(QStringLiteral("f")), Long('n'));
       } else {
         EXPECT_TRUE(failed);
       }
     }},
    {"Batch", [](SftpWorld&) {},
     [](FileSystem& files, const SftpWorld& world) {
       for (const WriteResult& result : files.WriteMany(ThreeFiles(world))) {
         if (result.failure) {
           throw *result.failure;
         }
       }
     },
     [](const Left& left, bool failed) {
       for (const char letter : {'x', 'y', 'z'}) {
         const QString name(QLatin1Char{letter});
         if (left.Has(name)) {
           EXPECT_EQ(left.items.value(name), Long(letter));
         } else {
           EXPECT_TRUE(failed);
         }
       }
     }},
    {"RemoveTree",
     [](SftpWorld& world) {
       PrepareTree(world);
       world.MakeFolder(QStringLiteral("keep"));
       world.Write(QStringLiteral("keep/f"), "kept");
       EXPECT_TRUE(QFile::link(QStringLiteral("../keep"), world.OnDisk(QStringLiteral("a/l"))));
     },
     [](FileSystem& files, const SftpWorld& world) { files.Remove(world.At(QStringLiteral("a"))); },
     [](const Left& left, bool failed) {
       EXPECT_EQ(left.items.value(QStringLiteral("keep/f")), "kept");
       EXPECT_TRUE(failed || !left.Has(QStringLiteral("a/")));
     }},
};

struct ServerKind {
  const char* name;
  std::optional<OldServer> old;
};

const ServerKind kServers[] = {
    {"Present", std::nullopt}, {"Old", OldServer{}}, {"OldReplacing", OldServer{.renameReplaces = true}}};

struct FaultKind {
  const char* name;
  LineFault::Kind kind;
};

const FaultKind kFaults[] = {{"LoseRequest", LineFault::Kind::LoseRequest},
                             {"LoseAnswer", LineFault::Kind::LoseAnswer},
                             {"Refuse", LineFault::Kind::Refuse},
                             {"FullDisk", LineFault::Kind::FullDisk},
                             {"Cancel", LineFault::Kind::Cancel}};

using Case = std::tuple<size_t, size_t, size_t>;

class SftpFaults : public SftpTest, public ::testing::WithParamInterface<Case> {
 protected:
  [[nodiscard]] Left WhatIsLeft() const {
    Left left;
    for (const QString& line : world_.Tree()) {
      const qsizetype at = line.indexOf(u'=');
      left.items.insert(at < 0 ? line : line.first(at),
                        at < 0 ? QByteArray() : line.sliced(at + 1).toLatin1());
    }
    return left;
  }
};

TEST_P(SftpFaults, LoseNothingAndLeaveNoHalfFileAtAnyRequest) {
  const Work& work = kWorks[std::get<0>(GetParam())];
  const ServerKind& server = kServers[std::get<1>(GetParam())];
  const LineFault::Kind kind = kFaults[std::get<2>(GetParam())].kind;
  int struck = 0;
  for (int at = 1;; ++at) {
    SCOPED_TRACE(at);
    world_.Clear();
    work.prepare(world_);
    LineFault fault{.kind = kind};
    bool failed = false;
    {
      const auto files = world_.Open([&](std::unique_ptr<SftpChannel> pipe) {
        std::unique_ptr<SftpChannel> line = std::make_unique<FaultChannel>(std::move(pipe), fault);
        if (!server.old) {
          return line;
        }
        line = std::make_unique<OldServerChannel>(std::move(line), *server.old);
        return line;
      });
      // The greeting is another matter.
      fault.seen = 0;
      fault.at = at;
      failed = Fails([&] { work.run(*files, world_); });
    }
    const Left left = WhatIsLeft();
    work.check(left, failed);
    const bool staysClean = kind == LineFault::Kind::Cancel && fault.hasStruck;
    if (staysClean) {
      // What was being built is removed although the call was cancelled.
      for (auto item = left.items.begin(); item != left.items.end(); ++item) {
        EXPECT_FALSE(IsOwnTemporaryName(item.key().split(u'/').first())) << item.key().toStdString();
      }
    }
    if (HasFailure() || !fault.hasStruck) {
      EXPECT_FALSE(failed);
      break;
    }
    ++struck;
  }
  EXPECT_GT(struck, 2);
}

INSTANTIATE_TEST_SUITE_P(Matrix, SftpFaults,
                         ::testing::Combine(::testing::Range(size_t{0}, std::size(kWorks)),
                                            ::testing::Range(size_t{0}, std::size(kServers)),
                                            ::testing::Range(size_t{0}, std::size(kFaults))),
                         [](const ::testing::TestParamInfo<Case>& info) {
                           return std::string(kWorks[std::get<0>(info.param)].name) +
                                  kServers[std::get<1>(info.param)].name +
                                  kFaults[std::get<2>(info.param)].name;
                         });

}  // namespace
}  // namespace trevane::test
