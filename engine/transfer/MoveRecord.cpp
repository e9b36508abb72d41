#include "engine/transfer/MoveRecord.h"

#include "base/RunTimeError.h"
#include "engine/model/IxoFiles.h"
#include "engine/transfer/HeldItem.h"
#include "engine/transfer/OpenedObjects.h"

#include <optional>
#include <utility>
#include <vector>

namespace trevane {

namespace {

constexpr qint32 kReadFault = error::kWin32Error + 30;
/// The item changed under the operation.
constexpr qint32 kChanged = error::kWin32Error + 1006;

/// The objects that it opens are released as soon as the walk has passed their items.
class ItemTree final : public MovableTree {
 public:
  enum class LookUp {
    /// In the listing of the folder, which is renewed when the folder becomes the current one.
    Listing,
    /// Anew for each item, because other programs may work here, too.
    Anew
  };

  ItemTree(std::shared_ptr<IxoFile> top, LookUp lookUp) : top_(std::move(top)), lookUp_(lookUp) {}
  ~ItemTree() override {
    ReleaseFound();
    while (!folders_.empty()) {
      Leave();
      ReleaseFound();
    }
  }

  [[nodiscard]] bool Find(const QString& name) override {
    ReleaseFound();
    found_ = folders_.empty() ? top_ : Child(*folders_.back(), name);
    if (!found_) {
      FailMissing(name);
    }
    return true;
  }

  [[nodiscard]] bool FindRecorded(const FileEntry& folder) override {
    ReleaseFound();
    found_ = folders_.empty() ? top_ : folders_.back()->OpenListed(folder);
    if (!found_) {
      FailMissing(folder.name);
    }
    return true;
  }

  [[nodiscard]] qint32 Attributes() override { return found_->Attribute(); }
  [[nodiscard]] qint64 Size() override { return found_->Size64(); }
  [[nodiscard]] Variant Modified() override { return found_->DateLastModified(); }
  /// Equal ones of two items that are not comparable would prove nothing.
  [[nodiscard]] std::optional<QString> Identity() override {
    const auto identity = found_->Identity();
    return identity ? std::optional(found_->IdentityScope() + u'|' + *identity) : std::nullopt;
  }
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource() override { return found_->OpenSource(); }
  [[nodiscard]] std::optional<QString> LinkText() override { return found_->LinkText(); }
  [[nodiscard]] qint64 DateStep() override { return found_->DateStep(); }

  void Remove() override { found_->DeleteAlone(); }
  /// A held folder is looked at when it is removed; there is no identity that would tell more.
  [[nodiscard]] bool RemovesOnlyTheSame() override { return found_->ListingTellsAll(); }
  [[nodiscard]] bool ListingTellsAll() override {
    return (folders_.empty() ? top_ : folders_.back())->ListingTellsAll();
  }
  void RemoveRecorded(const Listing& files) override {
    ReleaseFound();
    folders_.back()->DeleteSeen(files);
  }

  void Enter() override {
    folders_.push_back(std::exchange(found_, nullptr));
    if (lookUp_ == LookUp::Listing) {
      names_ = ListedNames(*folders_.back());
    }
  }
  void Leave() override {
    ReleaseFound();
    found_ = std::move(folders_.back());
    folders_.pop_back();
  }
  /// It is still open.
  [[nodiscard]] bool FindLeft() override { return true; }
  [[nodiscard]] QStringList Names() override { return std::exchange(names_, {}); }

  [[noreturn]] void FailMissing(const QString& name) override { throw ItemNotFound(name); }
  [[noreturn]] void FailChanged(const QString& name) override {
    throw RunTimeError(kChanged, QStringLiteral("The source changed while it was moved: %1").arg(name));
  }
  [[noreturn]] void FailNotVerified(const QString& name) override {
    throw RunTimeError(kReadFault,
                       QStringLiteral("The copy of %1 could not be verified; the source was kept").arg(name));
  }

 private:
  [[nodiscard]] static QStringList ListedNames(IxoFile& folder) {
    const Variant listed = folder.FileNames(QString());
    const auto* names = std::get_if<QStringList>(&listed);
    if (names == nullptr) {
      throw RunTimeError(kReadFault, QStringLiteral("The folder could not be read: %1").arg(folder.Name()));
    }
    return *names;
  }
  [[nodiscard]] std::shared_ptr<IxoFile> Child(IxoFile& folder, const QString& name) const {
    if (lookUp_ == LookUp::Anew) {
      return folder.OpenFile(name, QString());
    }
    const auto files = folder.Files();
    return files ? files->Item(name) : nullptr;
  }
  void ReleaseFound() noexcept {
    if (found_ && !folders_.empty()) {
      ReleaseObject(folders_.back(), found_);
    }
    found_.reset();
  }

  std::shared_ptr<IxoFile> top_;
  LookUp lookUp_;
  /// From the top to the current one.
  std::vector<std::shared_ptr<IxoFile>> folders_;
  std::shared_ptr<IxoFile> found_;
  /// Of the folder that was entered last.
  QStringList names_;
};

}  // namespace

void MoveRecord::Take(const std::shared_ptr<IxoFile>& source, const ItemObserver& observer) {
  const HeldItem held(source);
  ItemTree tree(source, ItemTree::LookUp::Listing);
  record_.Take(tree, source->Name(), observer);
}

void MoveRecord::RequireArrived(const std::shared_ptr<IxoFile>& source,
                                const std::shared_ptr<IxoFile>& target, Proof proof,
                                const ItemObserver& observer) const {
  ItemTree from(source, ItemTree::LookUp::Listing);
  ItemTree to(target, ItemTree::LookUp::Listing);
  record_.RequireArrived(from, to, QString(), proof, observer);
}

void MoveRecord::DeleteSource(const std::shared_ptr<IxoFile>& source, const ItemObserver& observer) {
  const HeldItem held(source);
  ItemTree tree(source, ItemTree::LookUp::Anew);
  record_.DeleteSource(tree, observer);
}

}  // namespace trevane
