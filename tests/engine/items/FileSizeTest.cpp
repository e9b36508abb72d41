#include "engine/files/ProviderError.h"
#include "engine/items/clsIxoFile.h"
#include "engine/model/ContentSteps.h"
#include "tests/support/EngineWorld.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>

namespace trevane::test {
namespace {

/// One file with a size that the test sets.
class SizedFileSystem final : public FileSystem {
 public:
  explicit SizedFileSystem(qint64 size) {
    entry_.name = QStringLiteral("f");
    entry_.size = size;
  }

  FileSystemCapabilities Capabilities() const override { return {}; }
  Listing List(const QString&) override { return {entry_}; }
  std::optional<FileEntry> Find(const QString& path) override {
    return path == entry_.name ? std::optional(entry_) : std::nullopt;
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

 private:
  FileEntry entry_;
};

struct SizeCase {
  const char* name;
  qint64 size;
  QString text;
  qint32 narrow;
};

class FileSize : public testing::TestWithParam<SizeCase> {};

TEST_P(FileSize, IsToldWhole) {
  EngineWorld world;
  EngineWorld::Machine machine;
  machine.faulty = std::make_shared<FaultyFileSystem>(std::make_shared<SizedFileSystem>(GetParam().size));
  world.Connect(QStringLiteral("Sized"), machine);
  const auto file = world.File(QStringLiteral("Workspace\\Sized\\f"));
  ASSERT_EQ(file->Result(), 0);
  EXPECT_EQ(file->FileSize(), GetParam().text);
  EXPECT_EQ(QString::number(file->Size64()), GetParam().text);
  EXPECT_EQ(file->IxoFile()->Size(), GetParam().narrow);
  EXPECT_EQ(file->IxoFile()->Size64(), GetParam().size);
  EXPECT_EQ(file->Result(), 0);
}

constexpr qint32 kMost = std::numeric_limits<qint32>::max();

INSTANTIATE_TEST_SUITE_P(All, FileSize,
                         testing::Values(SizeCase{"Empty", 0, QStringLiteral("0"), 0},
                                         SizeCase{"BeyondTwoGigabytes", 5000000000,
                                                  QStringLiteral("5000000000"), kMost},
                                         SizeCase{"TheMostThereIs", std::numeric_limits<qint64>::max(),
                                                  QStringLiteral("9223372036854775807"), kMost},
                                         SizeCase{"UnknownIsShownAsNothing", -1, QStringLiteral("0"), 0}),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace trevane::test
