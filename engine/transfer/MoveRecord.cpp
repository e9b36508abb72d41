#include "engine/transfer/MoveRecord.h"

#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "engine/model/IxoFiles.h"
#include "engine/transfer/HeldItem.h"
#include "engine/transfer/OpenedObjects.h"
#include "views/addresses/NodeTags.h"

#include <algorithm>

namespace trevane {

namespace {

constexpr qint32 kReadFault = error::kWin32Error + 30;
/// The item changed under the operation.
constexpr qint32 kChanged = error::kWin32Error + 1006;

[[noreturn]] void FailChanged(const QString& name) {
  throw RunTimeError(kChanged, QStringLiteral("The source changed while it was moved: %1").arg(name));
}

[[noreturn]] void FailNotVerified(const QString& name) {
  throw RunTimeError(kReadFault,
                     QStringLiteral("The copy of %1 could not be verified; the source was kept").arg(name));
}

QStringList NamesOf(IxoFile& folder) {
  const Variant listed = folder.FileNames(QString());
  const auto* names = std::get_if<QStringList>(&listed);
  if (names == nullptr) {
    throw RunTimeError(kReadFault, QStringLiteral("The folder could not be read: %1").arg(folder.Name()));
  }
  return *names;
}

std::shared_ptr<IxoFile> Require(std::shared_ptr<IxoFile> child, const QString& name) {
  if (!child) {
    throw ItemNotFound(name);
  }
  return child;
}

/// From the listing that NamesOf has just renewed.
std::shared_ptr<IxoFile> ListedChild(IxoFile& folder, const QString& name) {
  const auto files = folder.Files();
  return Require(files ? files->Item(name) : nullptr, name);
}

void ReportProgress(const ItemObserver& observer, const QString& name) {
  if (observer && !observer(name)) {
    throw RunTimeError(error::kCancelled, QStringLiteral("The move was cancelled"));
  }
}

}  // namespace

void MoveRecord::Take(const std::shared_ptr<IxoFile>& source, const ItemObserver& observer) {
  top_ = Item();
  top_.name = source->Name();
  const HeldItem held(source);
  Take(source, top_, observer);
}

void MoveRecord::Take(const std::shared_ptr<IxoFile>& source, Item& item, const ItemObserver& observer) {
  const qint32 attributes = source->Attribute();
  item.isLink = (attributes & attribute::kLink) != 0;
  item.isFolder = (attributes & attribute::kFolder) != 0 && !item.isLink;
  item.modified = source->DateLastModified();
  item.identity = source->Identity();
  if (!item.isFolder) {
    item.size = source->Size64();
    return;
  }
  QStringList names = NamesOf(*source);
  item.below.reserve(static_cast<size_t>(names.size()));
  for (const QString& name : names) {
    ReportProgress(observer, name);
    OpenedObjects opened;
    const auto child = ListedChild(*source, name);
    opened.Remember(source, child);
    Item& below = item.below.emplace_back();
    below.name = name;
    Take(child, below, observer);
  }
  std::vector<Item*> byName;
  byName.reserve(item.below.size());
  for (Item& below : item.below) {
    byName.push_back(&below);
  }
  std::sort(byName.begin(), byName.end(), [](const Item* left, const Item* right) {
    return CompareIgnoringCase(left->name, right->name) < 0;
  });
  for (size_t i = 1; i < byName.size(); ++i) {
    if (EqualIgnoringCase(byName[i - 1]->name, byName[i]->name)) {
      byName[i - 1]->hasTwin = true;
      byName[i]->hasTwin = true;
    }
  }
}

void MoveRecord::RequireUnchanged(IxoFile& source, const Item& item) {
  const qint32 attributes = source.Attribute();
  const bool isLink = (attributes & attribute::kLink) != 0;
  const bool isFolder = (attributes & attribute::kFolder) != 0 && !isLink;
  if (isLink != item.isLink || isFolder != item.isFolder || source.Identity() != item.identity) {
    FailChanged(item.name);
  }
  // The dates of a folder change with what is done in it. Those of a link belong to its target, which may
  // have gone by now.
  if (!isFolder && !isLink && (source.Size64() != item.size || source.DateLastModified() != item.modified)) {
    FailChanged(item.name);
  }
}

void MoveRecord::RequireArrived(const std::shared_ptr<IxoFile>& source,
                                const std::shared_ptr<IxoFile>& target, Proof proof,
                                const ItemObserver& observer) const {
  Compare(source, target, top_, proof, observer);
}

void MoveRecord::Compare(const std::shared_ptr<IxoFile>& source, const std::shared_ptr<IxoFile>& target,
                         const Item& item, Proof proof, const ItemObserver& observer) {
  RequireUnchanged(*source, item);
  if (!item.isFolder) {
    CompareFile(*source, *target, item, item.hasTwin ? Proof::Content : proof);
    return;
  }
  const qint32 there = target->Attribute();
  if ((there & attribute::kFolder) == 0 || (there & attribute::kLink) != 0) {
    FailNotVerified(item.name);
  }
  if (item.identity && target->Identity() == item.identity) {
    FailNotVerified(item.name);
  }
  QStringList names = NamesOf(*source);
  if (static_cast<size_t>(names.size()) != item.below.size()) {
    FailChanged(item.name);
  }
  // Renews the listing from which its children are taken.
  static_cast<void>(NamesOf(*target));
  for (const Item& below : item.below) {
    ReportProgress(observer, below.name);
    OpenedObjects opened;
    const auto from = ListedChild(*source, below.name);
    opened.Remember(source, from);
    const auto to = ListedChild(*target, below.name);
    opened.Remember(target, to);
    Compare(from, to, below, proof, observer);
  }
}

void MoveRecord::CompareFile(IxoFile& source, IxoFile& target, const Item& item, Proof proof) {
  const qint32 there = target.Attribute();
  const bool toLink = (there & attribute::kLink) != 0;
  if ((there & attribute::kFolder) != 0 && !(item.isLink && toLink)) {
    FailNotVerified(item.name);
  }
  // The size of a link is that of its target, and the copied link may have another target. A link that was
  // copied to another controller has become a file.
  const bool sizeTells = !item.isLink && !toLink && item.size >= 0;
  if (sizeTells && target.Size64() != item.size) {
    FailNotVerified(item.name);
  }
  if (toLink && !item.isLink) {
    FailNotVerified(item.name);
  }
  if (item.size >= 0 && proof == Proof::Size) {
    return;
  }
  // Copies keep their date. A later date than that of the source proves nothing; then the contents are
  // compared.
  if (!item.hasTwin && item.size >= 0 && item.modified != Variant(Missing{}) &&
      target.DateLastModified() == item.modified) {
    return;
  }
  if (source.Value() != target.Value()) {
    FailNotVerified(item.name);
  }
}

void MoveRecord::DeleteSource(const std::shared_ptr<IxoFile>& source, const ItemObserver& observer) const {
  const HeldItem held(source);
  RequireUnchanged(*source, top_);
  Delete(source, top_, observer);
}

void MoveRecord::Delete(const std::shared_ptr<IxoFile>& source, const Item& item,
                        const ItemObserver& observer) {
  for (const Item& below : item.below) {
    if (observer) {
      observer(below.name);
    }
    OpenedObjects opened;
    // Looked for anew, since another program may work here, too.
    const auto child = Require(source->OpenFile(below.name, QString()), below.name);
    opened.Remember(source, child);
    RequireUnchanged(*child, below);
    Delete(child, below, observer);
  }
  source->DeleteAlone();
}

}  // namespace trevane
