#include "engine/substitute/SubstituteFiles.h"

#include "engine/files/ProviderPath.h"
#include "engine/substitute/SeenNames.h"
#include "engine/substitute/SubstituteFile.h"

namespace trevane {

namespace {

[[noreturn]] void RefuseIndex() {
  throw RunTimeError(error::kInvalidParameter,
                     QStringLiteral("A file is selected by a name or by a position"));
}

}  // namespace

SubstituteFiles::SubstituteFiles(std::shared_ptr<FileSystemSession> session, Kind kind,
                                 FolderReference folder)
    : session_(std::move(session)), kind_(kind), folder_(std::move(folder)) {}

SubstituteFiles::~SubstituteFiles() = default;

const FolderListing& SubstituteFiles::Listed() {
  if (kind_ == Kind::TopFolder) {
    if (!listing_) {
      listing_.emplace(Listing{session_->Stat(QString())});
    }
  } else if (!listing_ || kind_ == Kind::Drives || listedAt_ != session_->Revision()) {
    listing_.emplace(ListAnew());
    listedAt_ = session_->Revision();
  }
  return *listing_;
}

FolderListing SubstituteFiles::ListAnew() {
  listing_.reset();
  refused_.clear();
  return FolderListing(session_->List(folder_, refused_));
}

Listing SubstituteFiles::List() {
  return ListAnew().TakeEntries();
}

void SubstituteFiles::ListInBatches(const ListingReceiver& receive) {
  listing_.reset();
  refused_.clear();
  SeenNames seen;
  session_->ListInBatches(folder_, refused_, [&](Listing&& entries) {
    seen.DropRepeated(entries);
    return entries.empty() || receive(std::move(entries));
  });
}

std::shared_ptr<IxoFile> SubstituteFiles::Item(const Variant& index) {
  std::optional<size_t> position;
  if (const auto* name = std::get_if<QString>(&index)) {
    position = Listed().Find(*name, kind_ == Kind::Drives ? Qt::CaseInsensitive : session_->NameCase());
    if (!position) {
      throw ItemNotFound(folder_.PathOf(*name));
    }
  } else if (const auto number = IntegerIn(index)) {
    const size_t count = Listed().Entries().size();
    if (*number < 0 || static_cast<size_t>(*number) >= count) {
      throw RunTimeError(error::kOutOfRange,
                         QStringLiteral("There is no file at the position %1").arg(*number));
    }
    position = static_cast<size_t>(*number);
  } else {
    RefuseIndex();
  }
  return Adopt({listing_->Entries()[*position], std::nullopt});
}

void SubstituteFiles::Remove(const Variant& index) {
  const auto number = IntegerIn(index);
  if (!number) {
    RefuseIndex();
  }
  Forget(*number);
}

void SubstituteFiles::Clear() {
  listing_.reset();
  byName_.clear();
  std::map<qint32, std::shared_ptr<SubstituteFile>> leaving;
  leaving.swap(children_);
}

QStringList SubstituteFiles::Names() {
  listing_.reset();
  return Listed().Names();
}

std::shared_ptr<SubstituteFile> SubstituteFiles::FindCached(const QString& name) const {
  const auto index = byName_.constFind(name);
  return index == byName_.cend() ? nullptr : children_.at(*index);
}

std::shared_ptr<SubstituteFile> SubstituteFiles::Cache(const std::shared_ptr<SubstituteFile>& child) {
  children_.emplace(child->CachedIndex(), child);
  byName_.insert(child->CachedName(), child->CachedIndex());
  return child;
}

std::shared_ptr<SubstituteFile> SubstituteFiles::Adopt(const SeenItem& seen) {
  if (auto child = FindCached(seen.entry.name); child && child->IsThere()) {
    child->Update(seen);
    return child;
  }
  return Cache(std::make_shared<SubstituteFile>(session_, weak_from_this(), folder_, seen, ++lastIndex_));
}

std::shared_ptr<SubstituteFile> SubstituteFiles::AdoptPending(const QString& name) {
  if (auto child = FindCached(name); child && child->IsPending()) {
    return child;
  }
  SeenItem seen;
  seen.entry.name = name;
  seen.entry.attributes = attribute::kArchive;
  const auto child =
      std::make_shared<SubstituteFile>(session_, weak_from_this(), folder_, seen, ++lastIndex_);
  child->AwaitContent();
  return Cache(child);
}

void SubstituteFiles::Forget(qint32 index) noexcept {
  const auto child = children_.find(index);
  if (child == children_.end()) {
    return;
  }
  const auto leaving = child->second;
  const auto named = byName_.constFind(leaving->CachedName());
  if (named != byName_.cend() && *named == index) {
    byName_.erase(named);
  }
  children_.erase(child);
}

}  // namespace trevane
