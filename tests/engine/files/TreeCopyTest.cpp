#include "engine/files/ProviderError.h"
#include "engine/files/TemporaryName.h"
#include "engine/files/TreeCopy.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace trevane::test {
namespace {

struct Node;
using NodePtr = std::shared_ptr<Node>;

struct Node {
  bool isFolder = false;
  QByteArray content;
  quint64 number = 0;
  bool hasAttributes = false;
  /// By the name that the file system compares.
  std::map<QString, std::pair<QString, NodePtr>> items;
};

struct NodesOptions {
  /// Whether the destination takes "A" and "a" for one name.
  bool foldsCase = false;
  bool identity = true;
};

/// Two folders in memory, for CopyTree. Any of its calls can be made to fail.
class Nodes {
 public:
  using Name = QString;
  struct Status {
    bool isFolder = false;
  };
  struct Item {
    QString name;
    NodePtr node;
  };

  explicit Nodes(const NodesOptions& options = {}) : options_(options) {
    from_.push_back(MakeNode(true));
    to_.push_back(MakeNode(true));
  }

  [[nodiscard]] static QString TextFromName(const QString& name) { return name; }
  [[nodiscard]] static QString NameFromText(const QString& text) { return text; }
  [[nodiscard]] static QString NameOf(const Item& item) { return item.name; }
  [[nodiscard]] static bool IsFolder(const Item& item) { return item.node->isFolder; }
  [[nodiscard]] static std::optional<FileIdentity> IdentityOf(const Item& /*item*/) { return std::nullopt; }
  [[nodiscard]] static std::optional<FileIdentity> IdentityOf(const Status& /*existing*/) {
    return std::nullopt;
  }
  [[nodiscard]] QString SourceTextOf(const Item& item) const { return item.name; }
  [[nodiscard]] QString Text() const { return QStringLiteral("to"); }
  [[nodiscard]] QString TextOf(const QString& name) const { return QStringLiteral("to\\") + name; }

  [[nodiscard]] std::vector<Item> List() {
    Call();
    std::vector<Item> items;
    for (const auto& [key, item] : from_.back()->items) {
      items.push_back({item.first, item.second});
    }
    return items;
  }
  void Examine(Item& /*item*/, bool /*withIdentity*/) { Call(); }
  [[nodiscard]] std::optional<FileIdentity> EnterSource(const Item& item) {
    Call();
    from_.push_back(item.node);
    return Identity(*item.node);
  }
  void LeaveSource() {
    Call();
    from_.pop_back();
  }

  [[nodiscard]] std::optional<Status> Find(const QString& name) {
    Call();
    const NodePtr node = ItemAt(name);
    return node ? std::optional(Status{node->isFolder}) : std::nullopt;
  }
  [[nodiscard]] std::optional<FileIdentity> IdentityAt(const QString& name) const {
    const NodePtr node = ItemAt(name);
    return node ? Identity(*node) : std::nullopt;
  }
  void RequireReplaceable(const Item& source, const Status& existing, const QString& name) {
    Call();
    if (source.node->isFolder != existing.isFolder) {
      Fail(error::kExists, TextOf(name));
    }
  }
  void MakeFolder(const QString& name, const QString& madeName) {
    Call();
    Put(name, madeName, MakeNode(true));
  }
  [[nodiscard]] std::optional<FileIdentity> EnterDestination(const QString& /*name*/, const QString& madeName,
                                                             bool isNew) {
    Call();
    to_.push_back(ItemAt(madeName));
    return isNew ? std::nullopt : Identity(*to_.back());
  }
  void LeaveDestination() { to_.pop_back(); }
  [[nodiscard]] std::vector<FileIdentity> FoldersAbove() const { return above; }
  [[nodiscard]] bool HasTemporaryNames() const { return hasTemporaryNames; }
  void SearchLeftovers() { ++searches; }
  void Rename(const QString& from, const QString& to, bool replace) {
    Call();
    if (!replace && ItemAt(to)) {
      Fail(error::kExists, TextOf(to));
    }
    const NodePtr node = ItemAt(from);
    to_.back()->items.erase(Key(from));
    to_.back()->items[Key(to)] = {to, node};
  }
  void RemoveUnfinished(const QString& name) noexcept { to_.back()->items.erase(Key(name)); }

  void RequireCopyable(const Item& /*item*/, const QString& /*name*/) { Call(); }
  void CopyContent(const Item& item, const QString& name, const QString& madeName, bool /*replaces*/,
                   const CopyProgress& progress) {
    Call();
    const NodePtr copy = MakeNode(false);
    copy->content = item.node->content;
    if (progress && !progress(copy->content.size(), copy->content.size())) {
      Fail(error::kCancelled, item.name);
    }
    Put(name, madeName, copy);
  }
  void CopyAttributes() {
    Call();
    EXPECT_TRUE(to_.back()->items.size() == from_.back()->items.size());
    to_.back()->hasAttributes = true;
  }

  NodePtr MakeNode(bool isFolder) {
    auto node = std::make_shared<Node>();
    node->isFolder = isFolder;
    node->number = ++numbers_;
    return node;
  }
  NodePtr AddFolder(const NodePtr& folder, const QString& name) {
    NodePtr node = MakeNode(true);
    folder->items[name] = {name, node};
    return node;
  }
  void AddFile(const NodePtr& folder, const QString& name, const QByteArray& content) {
    NodePtr node = MakeNode(false);
    node->content = content;
    folder->items[name] = {name, node};
  }
  [[nodiscard]] NodePtr Source() const { return from_.front(); }
  [[nodiscard]] NodePtr Destination() const { return to_.front(); }

  /// Copies "d" of the source; the number of the error, 0 without one.
  qint32 Copy(bool replace, const ItemObserver& observer = {}) {
    try {
      CopyTree(*this, Item{QStringLiteral("d"), Source()->items.at(QStringLiteral("d")).second},
               QStringLiteral("d"), replace, observer);
      return 0;
    } catch (const RunTimeError& failure) {
      return failure.Number();
    }
  }

  std::vector<FileIdentity> above;
  int searches = 0;
  bool hasTemporaryNames = true;
  /// The call that fails; 0 for none.
  int failing = 0;

 private:
  void Call() {
    if (++calls_ == failing) {
      Fail(error::kAccessDenied, QStringLiteral("here"));
    }
  }
  [[nodiscard]] QString Key(const QString& name) const { return options_.foldsCase ? name.toLower() : name; }
  [[nodiscard]] NodePtr ItemAt(const QString& name) const {
    const auto found = to_.back()->items.find(Key(name));
    return found == to_.back()->items.end() ? nullptr : found->second.second;
  }
  [[nodiscard]] std::optional<FileIdentity> Identity(const Node& node) const {
    return options_.identity ? std::optional(FileIdentity{1, node.number}) : std::nullopt;
  }
  void Put(const QString& name, const QString& madeName, const NodePtr& node) {
    if (ItemAt(madeName)) {
      Fail(error::kExists, TextOf(name));
    }
    to_.back()->items[Key(madeName)] = {madeName, node};
  }

  NodesOptions options_;
  int calls_ = 0;
  quint64 numbers_ = 0;
  std::vector<NodePtr> from_;
  std::vector<NodePtr> to_;
};

/// The paths below a folder with the contents of the files.
void Describe(const Node& folder, const QString& path, QStringList& lines) {
  for (const auto& [key, item] : folder.items) {
    const QString at = path + item.first;
    lines.push_back(item.second->isFolder ? at + u'/'
                                          : at + u'=' + QString::fromLatin1(item.second->content));
    Describe(*item.second, at + u'/', lines);
  }
}

QString Described(const NodePtr& folder) {
  QStringList lines;
  Describe(*folder, {}, lines);
  return lines.join(u' ');
}

void FillSource(Nodes& nodes) {
  const NodePtr top = nodes.AddFolder(nodes.Source(), QStringLiteral("d"));
  const NodePtr sub = nodes.AddFolder(top, QStringLiteral("a"));
  nodes.AddFile(sub, QStringLiteral("f"), "1");
  nodes.AddFile(top, QStringLiteral("g"), "2");
}

TEST(TreeCopyTest, FilesOfAFolderAreCopiedBeforeItsFolders) {
  Nodes nodes;
  FillSource(nodes);
  QStringList seen;
  EXPECT_EQ(nodes.Copy(false,
                       [&](const ItemProgress& item) {
                         if (item.bytes == 0) {
                           seen.push_back(item.name);
                         }
                         return true;
                       }),
            0);
  EXPECT_EQ(seen.join(u' '), QStringLiteral("g a f"));
  EXPECT_EQ(Described(nodes.Destination()), QStringLiteral("d/ d/a/ d/a/f=1 d/g=2"));
  const NodePtr copy = nodes.Destination()->items.at(QStringLiteral("d")).second;
  EXPECT_TRUE(copy->hasAttributes);
  EXPECT_TRUE(copy->items.at(QStringLiteral("a")).second->hasAttributes);
  EXPECT_EQ(nodes.searches, 0);
}

TEST(TreeCopyTest, TheObserverSeesFolderBytesAndFiles) {
  Nodes nodes;
  FillSource(nodes);
  QStringList seen;
  EXPECT_EQ(nodes.Copy(false,
                       [&](const ItemProgress& item) {
                         seen.push_back(QStringLiteral("%1|%2 %3/%4 %5/%6")
                                            .arg(item.folder, item.name)
                                            .arg(item.bytes)
                                            .arg(item.size)
                                            .arg(item.files)
                                            .arg(item.filesKnown));
                         return true;
                       }),
            0);
  EXPECT_EQ(seen, (QStringList{QStringLiteral("d|g 0/-1 0/1"), QStringLiteral("d|g 1/1 0/1"),
                               QStringLiteral("d|a 0/-1 1/1"), QStringLiteral("d\\a|f 0/-1 1/2"),
                               QStringLiteral("d\\a|f 1/1 1/2")}));
}

TEST(TreeCopyTest, ACopyThatIsCancelledInsideAFileIsRemoved) {
  for (const QString& last : {QStringLiteral("g"), QStringLiteral("f")}) {
    Nodes nodes;
    FillSource(nodes);
    EXPECT_EQ(
        nodes.Copy(false, [&](const ItemProgress& item) { return item.name != last || item.bytes == 0; }),
        error::kCancelled);
    EXPECT_EQ(Described(nodes.Destination()), QString());
  }
}

TEST(TreeCopyTest, ANewFolderGetsItsNameWhenItIsWhole) {
  Nodes nodes;
  FillSource(nodes);
  EXPECT_EQ(nodes.Copy(false,
                       [&](const ItemProgress&) {
                         EXPECT_EQ(nodes.Destination()->items.size(), 1U);
                         EXPECT_TRUE(IsOwnTemporaryName(nodes.Destination()->items.begin()->second.first));
                         return true;
                       }),
            0);
  EXPECT_TRUE(nodes.Destination()->items.contains(QStringLiteral("d")));
}

TEST(TreeCopyTest, WithoutTemporaryNamesItemsHaveTheirOwn) {
  Nodes nodes;
  nodes.hasTemporaryNames = false;
  FillSource(nodes);
  EXPECT_EQ(nodes.Copy(false,
                       [&](const ItemProgress&) {
                         EXPECT_TRUE(nodes.Destination()->items.contains(QStringLiteral("d")));
                         return true;
                       }),
            0);
  EXPECT_EQ(Described(nodes.Destination()), QStringLiteral("d/ d/a/ d/a/f=1 d/g=2"));
  Nodes cancelled;
  cancelled.hasTemporaryNames = false;
  FillSource(cancelled);
  EXPECT_EQ(cancelled.Copy(false, [](const ItemProgress& item) { return item.name != QStringLiteral("f"); }),
            error::kCancelled);
  EXPECT_EQ(Described(cancelled.Destination()), QString());
}

TEST(TreeCopyTest, AnExistingDestinationIsMergedOnlyOnRequest) {
  Nodes nodes;
  FillSource(nodes);
  const NodePtr existing = nodes.AddFolder(nodes.Destination(), QStringLiteral("d"));
  nodes.AddFile(existing, QStringLiteral("g"), "old");
  nodes.AddFile(existing, QStringLiteral("h"), "3");
  EXPECT_EQ(nodes.Copy(false), error::kExists);
  EXPECT_EQ(Described(nodes.Destination()), QStringLiteral("d/ d/g=old d/h=3"));
  Nodes merged;
  FillSource(merged);
  merged.Destination()->items[QStringLiteral("d")] = {QStringLiteral("d"), existing};
  EXPECT_EQ(merged.Copy(true), 0);
  EXPECT_EQ(Described(merged.Destination()), QStringLiteral("d/ d/a/ d/a/f=1 d/g=2 d/h=3"));
  EXPECT_FALSE(existing->hasAttributes);
  EXPECT_EQ(merged.searches, 1);
}

TEST(TreeCopyTest, TwoNamesThatBecomeOneNeverReplaceEachOther) {
  for (const bool identity : {true, false}) {
    for (const bool merge : {true, false}) {
      for (const bool folders : {true, false}) {
        SCOPED_TRACE(testing::Message() << identity << merge << folders);
        Nodes nodes({.foldsCase = true, .identity = identity});
        const NodePtr top = nodes.AddFolder(nodes.Source(), QStringLiteral("d"));
        for (const QString& name : {QStringLiteral("A"), QStringLiteral("a")}) {
          nodes.AddFile(folders ? nodes.AddFolder(top, name) : top, folders ? QStringLiteral("f") : name,
                        name.toLatin1());
        }
        if (merge) {
          nodes.AddFolder(nodes.Destination(), QStringLiteral("d"));
        }
        EXPECT_EQ(nodes.Copy(true), error::kExists);
        // The item that was put first, whole; without a merge nothing is left.
        EXPECT_EQ(Described(nodes.Destination()), !merge    ? QString()
                                                  : folders ? QStringLiteral("d/ d/a/ d/a/f=a")
                                                            : QStringLiteral("d/ d/A=A"));
      }
    }
  }
}

TEST(TreeCopyTest, AFailureAtAnyCallLeavesNoUnfinishedCopy) {
  for (const bool merge : {true, false}) {
    int failures = 0;
    for (int failing = 1;; ++failing) {
      SCOPED_TRACE(testing::Message() << "call " << failing << (merge ? " of a merge" : ""));
      Nodes nodes;
      FillSource(nodes);
      if (merge) {
        nodes.AddFile(nodes.AddFolder(nodes.Destination(), QStringLiteral("d")), QStringLiteral("g"), "old");
      }
      nodes.failing = failing;
      const qint32 number = nodes.Copy(true);
      const QString left = Described(nodes.Destination());
      if (number == 0) {
        EXPECT_EQ(left, QStringLiteral("d/ d/a/ d/a/f=1 d/g=2"));
        break;
      }
      ++failures;
      EXPECT_EQ(number, error::kAccessDenied);
      if (merge) {
        EXPECT_TRUE(left == QStringLiteral("d/ d/g=old") || left == QStringLiteral("d/ d/g=2") ||
                    left == QStringLiteral("d/ d/a/ d/a/f=1 d/g=2"))
            << qPrintable(left);
      } else {
        EXPECT_EQ(left, QString());
      }
    }
    EXPECT_GT(failures, 10);
  }
}

TEST(TreeCopyTest, ACancelledCopyIsRemoved) {
  for (const QString& last : {QStringLiteral("g"), QStringLiteral("a"), QStringLiteral("f")}) {
    Nodes nodes;
    FillSource(nodes);
    EXPECT_EQ(nodes.Copy(false, [&](const ItemProgress& item) { return item.name != last; }),
              error::kCancelled);
    EXPECT_EQ(Described(nodes.Destination()), QString());
  }
}

TEST(TreeCopyTest, AFolderThatHoldsTheDestinationIsRefused) {
  Nodes nodes;
  FillSource(nodes);
  const NodePtr top = nodes.Source()->items.at(QStringLiteral("d")).second;
  nodes.above = {{1, top->items.at(QStringLiteral("a")).second->number}};
  EXPECT_EQ(nodes.Copy(false), error::kInvalidParameter);
  EXPECT_EQ(Described(nodes.Destination()), QString());
}

TEST(TreeCopyTest, AFolderIsNotMergedIntoItself) {
  Nodes nodes;
  FillSource(nodes);
  nodes.Destination()->items = nodes.Source()->items;
  EXPECT_EQ(nodes.Copy(true), error::kInvalidParameter);
  EXPECT_EQ(Described(nodes.Source()), QStringLiteral("d/ d/a/ d/a/f=1 d/g=2"));
}

TEST(TreeCopyTest, AVeryDeepTreeIsCopied) {
  constexpr int kLevels = 5000;
  Nodes nodes;
  std::vector<NodePtr> folders{nodes.AddFolder(nodes.Source(), QStringLiteral("d"))};
  for (int i = 1; i < kLevels; ++i) {
    folders.push_back(nodes.AddFolder(folders.back(), QStringLiteral("d")));
  }
  EXPECT_EQ(nodes.Copy(false), 0);
  std::vector<NodePtr> copies{nodes.Destination()};
  while (!copies.back()->items.empty()) {
    copies.push_back(copies.back()->items.at(QStringLiteral("d")).second);
  }
  EXPECT_EQ(copies.size(), kLevels + 1U);
  // From below, so that no folder deletes another one on the stack.
  while (!folders.empty()) {
    folders.back()->items.clear();
    folders.pop_back();
  }
  while (!copies.empty()) {
    copies.back()->items.clear();
    copies.pop_back();
  }
}

}  // namespace
}  // namespace trevane::test
