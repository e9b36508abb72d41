#include "base/RunTimeError.h"
#include "engine/controllers/OpenControllerRoot.h"
#include "engine/model/IxoController.h"
#include "engine/model/IxoFile.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace trevane {
namespace {

class OpenedFile final : public IxoFile {
 public:
  Variant Value() override { return {}; }
  void PutValue(const Variant&) override {}
  qint32 Attribute() override { return 0; }
  Variant DateCreated() override { return {}; }
  Variant DateLastAccessed() override { return {}; }
  Variant DateLastModified() override { return {}; }
  Variant FileNames(const QString&) override { return {}; }
  std::shared_ptr<IxoFiles> Files() override { return nullptr; }
  qint32 Index() override { return 0; }
  QString Name() override { return {}; }
  QString Path() override { return {}; }
  qint32 Size() override { return 0; }
  qint64 Size64() override { return 0; }
  QString Type() override { return {}; }
  std::optional<QString> Identity() override { return std::nullopt; }
  QStringList FolderIdentities() override { return {}; }
  std::shared_ptr<IxoFile> OpenFile(const QString&, const QString&) override { return nullptr; }
  void Copy(const QString&, const QString&, const ItemObserver&) override {}
  void Delete(const QString&, const ItemObserver&) override {}
  void DeleteAlone() override {}
  Variant Execute(const QString&, const Variant&) override { return {}; }
  void Move(const QString&, const QString&) override {}
  Variant Run(const QString&) override { return {}; }
};

/// Opens one given form of the root and nothing else, and records its calls.
class AskedControllers final : public IxoControllers, public IxoController {
 public:
  std::shared_ptr<IxoController> Item(const Variant& index) override {
    indexes.push_back(index);
    return std::shared_ptr<IxoController>(std::shared_ptr<void>(), this);
  }
  void Remove(const Variant&) override {}
  std::shared_ptr<IxoFiles> Files() override { return nullptr; }
  qint32 Index() override { return 5; }
  QString Name() override { return {}; }
  std::shared_ptr<IxoFile> OpenFile(const QString& name, const QString& option) override {
    asked.append(name + QStringLiteral("|") + option);
    if (asked.size() == opensAt) {
      return opened;
    }
    if ((asked.size() == 1 && yieldsFirst) || (asked.size() == 2 && yieldsSecond)) {
      return nullptr;
    }
    if (raises) {
      throw RunTimeError(asked.size() == 1 ? number : second, QStringLiteral("failure %1").arg(asked.size()));
    }
    return nullptr;
  }

  bool raises = false;
  /// The calls that yield nothing.
  bool yieldsFirst = false;
  bool yieldsSecond = false;
  /// The errors that the first and the second call raise.
  qint32 number = error::kNotFound;
  qint32 second = error::kInvalidName;
  /// The call that opens the root, from 1.
  qsizetype opensAt = 0;
  const std::shared_ptr<IxoFile> opened = std::make_shared<OpenedFile>();
  QStringList asked;
  std::vector<Variant> indexes;
};

struct RootCase {
  const char* name;
  QString root;
  QString second;
};

class RootSplit : public testing::TestWithParam<RootCase> {};

TEST_P(RootSplit, IsTriedAsANameInItsParent) {
  AskedControllers controllers;
  EXPECT_EQ(OpenControllerRoot(controllers, 5, GetParam().root), nullptr);
  EXPECT_EQ(controllers.asked, (QStringList{GetParam().root + QStringLiteral("|"), GetParam().second}));
  EXPECT_EQ(controllers.indexes, (std::vector<Variant>{qint32(5), qint32(5)}));
  controllers.raises = true;
  EXPECT_THROW(static_cast<void>(OpenControllerRoot(controllers, 5, GetParam().root)), RunTimeError);
  EXPECT_EQ(controllers.asked.size(), 4);
}

TEST_P(RootSplit, IsNotTriedWhereTheWholePathOpens) {
  AskedControllers controllers;
  controllers.opensAt = 1;
  EXPECT_EQ(OpenControllerRoot(controllers, 5, GetParam().root), controllers.opened);
  EXPECT_EQ(controllers.asked, QStringList{GetParam().root + QStringLiteral("|")});
}

TEST_P(RootSplit, IsOpenedAsANameInItsParentWhereTheWholePathIsNot) {
  for (const bool raises : {false, true}) {
    AskedControllers controllers;
    controllers.opensAt = 2;
    controllers.raises = raises;
    EXPECT_EQ(OpenControllerRoot(controllers, 5, GetParam().root), controllers.opened);
    EXPECT_EQ(controllers.asked, (QStringList{GetParam().root + QStringLiteral("|"), GetParam().second}));
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, RootSplit,
    testing::Values(
        RootCase{"TwoFoldersDeep", QStringLiteral("a\\b"), QStringLiteral("b|Path=a")},
        RootCase{"Slashes", QStringLiteral("/a/b"), QStringLiteral("b|Path=/a")},
        RootCase{"SlashBeforeTheFirstBackslash", QStringLiteral("a/b\\c"), QStringLiteral("c|Path=a/b")},
        RootCase{"BackslashBeforeTheFirstSlash", QStringLiteral("a\\b/c"), QStringLiteral("c|Path=a\\b")},
        RootCase{"NoSeparator", QStringLiteral("a"), QStringLiteral("a|Path=")},
        RootCase{"CommaInTheParent", QStringLiteral("/a,b/c"), QStringLiteral("c|Path=/a,b")},
        RootCase{"Empty", QStringLiteral(""), QStringLiteral("|Path=")}),
    [](const auto& info) { return std::string(info.param.name); });

/// The number that opening fails with, and its text.
std::pair<qint32, QString> FailureOf(AskedControllers& controllers) {
  try {
    static_cast<void>(OpenControllerRoot(controllers, 5, QStringLiteral("a/b")));
  } catch (const RunTimeError& failure) {
    return {failure.Number(), failure.Description()};
  }
  return {0, {}};
}

TEST(OpenControllerRootTest, TheFirstFailureIsTheResult) {
  for (const qint32 number : {error::kNotFound, error::kInvalidName, 0, -1, error::kWin32Error + 31}) {
    AskedControllers controllers;
    controllers.raises = true;
    controllers.number = number;
    EXPECT_EQ(FailureOf(controllers), std::pair(number, QStringLiteral("failure 1")));
    EXPECT_EQ(controllers.asked, (QStringList{QStringLiteral("a/b|"), QStringLiteral("b|Path=a")}));
  }
}

TEST(OpenControllerRootTest, IsNotTriedAgainAfterATimeOutOrARefusal) {
  for (const qint32 number :
       {error::kTimeOut, error::kAccessDenied, error::kLogonFailure, error::kCancelled,
        error::kDeviceNotReady, error::kWin32Error + 64, error::kWin32Error + 170, error::kWin32Error + 53,
        error::kWin32Error + 1225, error::kWin32Error + 1231, error::kWin32Error + 1232}) {
    AskedControllers controllers;
    controllers.raises = true;
    controllers.opensAt = 2;
    controllers.number = number;
    EXPECT_EQ(FailureOf(controllers), std::pair(number, QStringLiteral("failure 1")));
    EXPECT_EQ(controllers.asked, QStringList{QStringLiteral("a/b|")});
  }
}

TEST(OpenControllerRootTest, AfterNothingTheSecondFailureIsTheResult) {
  AskedControllers controllers;
  controllers.yieldsFirst = true;
  controllers.raises = true;
  controllers.second = error::kTimeOut;
  EXPECT_EQ(FailureOf(controllers), std::pair(error::kTimeOut, QStringLiteral("failure 2")));
}

TEST(OpenControllerRootTest, NothingAfterAFailureIsThatFailure) {
  AskedControllers controllers;
  controllers.raises = true;
  controllers.yieldsSecond = true;
  EXPECT_EQ(FailureOf(controllers), std::pair(error::kNotFound, QStringLiteral("failure 1")));
}

}  // namespace
}  // namespace trevane
