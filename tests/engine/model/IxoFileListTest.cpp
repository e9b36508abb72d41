#include "base/RunTimeError.h"
#include "engine/model/IxoFile.h"
#include "engine/model/IxoFiles.h"

#include <gtest/gtest.h>

#include <vector>

namespace trevane::test {
namespace {

/// The answer of a plain engine when one of its objects is asked for.
enum class Behaviour { Answers, IsMissing, VanishesWhileRead, YieldsNothing, Fails };

struct PlainItem {
  QString name;
  Behaviour behaviour = Behaviour::Answers;
};

[[noreturn]] void Refuse(qint32 number) {
  throw RunTimeError(number, QStringLiteral("refused"));
}

/// A file of an engine that implements only the members without a default.
class PlainFile final : public IxoFile {
 public:
  class Children final : public IxoFiles {
   public:
    explicit Children(PlainFile& folder) : folder_(folder) {}
    std::shared_ptr<IxoFile> Item(const Variant& index) override { return folder_.Open(index); }
    void Remove(const Variant& index) override { folder_.removed_.push_back(std::get<qint32>(index)); }
    void Clear() override {}

   private:
    PlainFile& folder_;
  };

  explicit PlainFile(const PlainItem& item, qint32 index = 0) : item_(item), index_(index) {}

  void Add(const PlainItem& item) { items_.push_back(item); }
  void GiveNoNames() { givesNames_ = false; }
  void GiveNoCollection() { givesCollection_ = false; }
  [[nodiscard]] const std::vector<qint32>& Removed() const { return removed_; }
  [[nodiscard]] int Opened() const { return opened_; }

  Variant Value() override { return QByteArray(); }
  void PutValue(const Variant&) override {}
  qint32 Attribute() override {
    if (item_.behaviour == Behaviour::VanishesWhileRead) {
      Refuse(error::kNotFound);
    }
    return attribute::kArchive;
  }
  Variant DateCreated() override { return Date{1}; }
  Variant DateLastAccessed() override { return Missing{}; }
  Variant DateLastModified() override { return Date{3}; }
  Variant FileNames(const QString&) override {
    if (!givesNames_) {
      return Missing{};
    }
    QStringList names;
    for (const PlainItem& item : items_) {
      names.append(item.name);
    }
    return names;
  }
  std::shared_ptr<IxoFiles> Files() override {
    return givesCollection_ ? std::make_shared<Children>(*this) : nullptr;
  }
  qint32 Index() override { return index_; }
  QString Name() override { return item_.name; }
  QString Path() override { return QStringLiteral("\\"); }
  qint32 Size() override { return 7; }
  qint64 Size64() override { return 7; }
  QString Type() override { return QStringLiteral("File"); }
  std::shared_ptr<IxoFile> OpenFile(const QString&, const QString&) override { return nullptr; }
  void Copy(const QString&, const QString&, const ItemObserver&) override {}
  void Delete(const QString&, const ItemObserver&) override {}
  void DeleteAlone() override {}
  Variant Execute(const QString&, const Variant&) override { return Missing{}; }
  void Move(const QString&, const QString&) override {}
  Variant Run(const QString&) override { return Missing{}; }

 private:
  std::shared_ptr<IxoFile> Open(const Variant& index) {
    for (const PlainItem& item : items_) {
      if (Variant(item.name) != index) {
        continue;
      }
      switch (item.behaviour) {
        case Behaviour::IsMissing:
          Refuse(error::kNotFound);
        case Behaviour::Fails:
          Refuse(error::kTimeOut);
        case Behaviour::YieldsNothing:
          return nullptr;
        case Behaviour::Answers:
        case Behaviour::VanishesWhileRead:
          break;
      }
      return std::make_shared<PlainFile>(item, ++opened_);
    }
    Refuse(error::kNotFound);
  }

  PlainItem item_;
  qint32 index_;
  std::vector<PlainItem> items_;
  bool givesNames_ = true;
  bool givesCollection_ = true;
  int opened_ = 0;
  std::vector<qint32> removed_;
};

qint32 ErrorOfList(IxoFile& folder) {
  try {
    static_cast<void>(folder.List());
  } catch (const RunTimeError& failure) {
    return failure.Number();
  }
  ADD_FAILURE() << "the folder was listed";
  return 0;
}

class IxoFileListTest : public testing::Test {
 protected:
  PlainFile folder_{{QStringLiteral("folder")}};
};

TEST_F(IxoFileListTest, AsksOneObjectForEachNameAndReleasesIt) {
  folder_.Add({QStringLiteral("a")});
  folder_.Add({QStringLiteral("b")});
  const Listing entries = folder_.List();
  ASSERT_EQ(entries.size(), 2U);
  FileEntry expected;
  expected.name = QStringLiteral("a");
  expected.attributes = attribute::kArchive;
  expected.size = 7;
  expected.created = Date{1};
  expected.modified = Date{3};
  EXPECT_EQ(entries[0], expected);
  EXPECT_EQ(entries[1].name, QStringLiteral("b"));
  EXPECT_EQ(folder_.Removed(), (std::vector<qint32>{1, 2}));
}

TEST_F(IxoFileListTest, LeavesOutAChildThatVanished) {
  folder_.Add({QStringLiteral("gone"), Behaviour::IsMissing});
  folder_.Add({QStringLiteral("going"), Behaviour::VanishesWhileRead});
  folder_.Add({QStringLiteral("there")});
  const Listing entries = folder_.List();
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_EQ(entries[0].name, QStringLiteral("there"));
  EXPECT_EQ(folder_.Removed(), (std::vector<qint32>{1, 2}));
}

TEST_F(IxoFileListTest, RaisesEveryOtherFailure) {
  folder_.Add({QStringLiteral("a")});
  folder_.Add({QStringLiteral("b"), Behaviour::Fails});
  EXPECT_EQ(ErrorOfList(folder_), error::kTimeOut);
  EXPECT_EQ(folder_.Removed(), std::vector<qint32>{1});
}

TEST_F(IxoFileListTest, AnObjectThatIsNotYieldedIsAFailure) {
  folder_.Add({QStringLiteral("a"), Behaviour::YieldsNothing});
  EXPECT_EQ(ErrorOfList(folder_), 0);
}

TEST_F(IxoFileListTest, AFolderWithoutNamesIsNoEmptyFolder) {
  folder_.GiveNoNames();
  EXPECT_EQ(ErrorOfList(folder_), error::kWin32Error + 30);
}

TEST_F(IxoFileListTest, AFolderWithoutACollectionIsNoEmptyFolder) {
  folder_.Add({QStringLiteral("a")});
  folder_.GiveNoCollection();
  EXPECT_EQ(ErrorOfList(folder_), 0);
}

TEST_F(IxoFileListTest, AnEmptyFolderHasNoEntriesAndOpensNothing) {
  EXPECT_TRUE(folder_.List().empty());
  EXPECT_EQ(folder_.Opened(), 0);
}

}  // namespace
}  // namespace trevane::test
