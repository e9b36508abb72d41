#include "engine/files/SourceRecord.h"

#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"

#include <chrono>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace trevane {

namespace {

/// Changes are stamped with the time of the clock's last tick: two changes within one tick look alike.
constexpr std::chrono::milliseconds kTick{20};

class HeldTree final : public MovableTree {
 public:
  explicit HeldTree(HeldFolder& folder) : top_(folder) {}
  ~HeldTree() override {
    // A folder keeps the one above: from the inside out, no destructor calls another.
    while (!levels_.empty()) {
      levels_.pop_back();
    }
  }

  [[nodiscard]] bool Find(const QString& name) override {
    name_ = name;
    std::optional<SeenItem> seen = Current().Find(name);
    const bool isThere = seen.has_value();
    seen_ = isThere ? *std::move(seen) : SeenItem();
    return isThere;
  }
  [[nodiscard]] qint32 Attributes() override { return seen_.entry.attributes; }
  [[nodiscard]] qint64 Size() override { return seen_.entry.size; }
  [[nodiscard]] Variant Modified() override {
    return seen_.entry.modified.IsPresent() ? Variant(seen_.entry.modified) : Variant(Missing{});
  }
  [[nodiscard]] std::optional<QString> Identity() override {
    if (!seen_.identity) {
      return std::nullopt;
    }
    return QStringLiteral("%1:%2:").arg(seen_.identity->volume, 0, 16).arg(seen_.identity->file, 0, 16) +
           seen_.identity->text;
  }
  [[nodiscard]] std::optional<qint64> StateStamp() override { return seen_.stateStamp; }
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource() override { return Current().OpenSource(name_); }
  /// Links are copied as links here: one whose text cannot be read is taken for its copy.
  [[nodiscard]] std::optional<QString> LinkText() override {
    return Current().ReadLink(name_).value_or(QString());
  }
  [[nodiscard]] qint64 DateStep() override { return top_.DateStep(); }
  void RequireMovable() override {
    if (seen_.isMountPoint) {
      Fail(providererror::kBusy, QStringLiteral("A drive is mounted here"), PathOf(name_));
    }
  }

  void Remove() override { Current().RemoveAlone(name_, seen_); }

  void Enter() override {
    std::shared_ptr<HeldFolder> folder = Current().Enter(name_);
    levels_.push_back({std::move(folder), name_});
  }
  void Leave() override {
    left_ = std::move(levels_.back().name);
    levels_.pop_back();
  }
  [[nodiscard]] bool FindLeft() override { return Find(left_); }
  [[nodiscard]] QStringList Names() override {
    QStringList names;
    for (FileEntry& entry : Current().List()) {
      names.append(std::move(entry.name));
    }
    return names;
  }

  [[noreturn]] void FailMissing(const QString& name) override { Fail(error::kNotFound, PathOf(name)); }
  [[noreturn]] void FailChanged(const QString& name) override {
    Fail(providererror::kChanged, QStringLiteral("The source changed while it was moved"), PathOf(name));
  }
  [[noreturn]] void FailNotVerified(const QString& name) override {
    Fail(providererror::kChanged, QStringLiteral("The copy could not be verified; the source was kept"),
         PathOf(name));
  }

 private:
  struct Level {
    std::shared_ptr<HeldFolder> folder;
    QString name;
  };

  [[nodiscard]] HeldFolder& Current() { return levels_.empty() ? top_ : *levels_.back().folder; }
  [[nodiscard]] QString PathOf(const QString& name) { return providerpath::Child(Current().Path(), name); }

  HeldFolder& top_;
  std::vector<Level> levels_;
  QString name_;
  QString left_;
  SeenItem seen_;
};

}  // namespace

void SourceRecord::Take(HeldFolder& folder, const QString& name) {
  HeldTree tree(folder);
  record_.Take(tree, name);
  if (record_.HasStateStamp()) {
    std::this_thread::sleep_for(kTick);
  }
}

void SourceRecord::RequireArrived(HeldFolder& folder, HeldFolder& target, const QString& copyName) const {
  HeldTree source(folder);
  HeldTree copy(target);
  record_.RequireArrived(source, copy, copyName, TreeRecord::Proof::NewTree);
}

void SourceRecord::RequireSameContent(HeldFolder& folder, HeldFolder& target, const QString& copyName) const {
  HeldTree source(folder);
  HeldTree copy(target);
  record_.RequireArrived(source, copy, copyName, TreeRecord::Proof::Content);
}

void SourceRecord::DeleteSource(HeldFolder& folder) {
  HeldTree tree(folder);
  record_.DeleteSource(tree);
}

}  // namespace trevane
