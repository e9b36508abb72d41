#include "engine/model/IxoFile.h"

#include "base/RunTimeError.h"
#include "engine/model/IxoFiles.h"

namespace trevane {

namespace {

constexpr qint32 kReadFault = error::kWin32Error + 30;

/// Releases a child from its collection in every case. A call that fails is repeated once; a second failure
/// cannot be reported.
class ChildRelease {
 public:
  ChildRelease(IxoFiles& files, IxoFile& child) : files_(files), child_(child) {}
  ~ChildRelease() {
    for (int attempt = 0; attempt < 2; ++attempt) {
      try {
        files_.Remove(child_.Index());
        return;
      } catch (const std::exception&) {
        continue;
      }
    }
  }
  ChildRelease(const ChildRelease&) = delete;
  ChildRelease& operator=(const ChildRelease&) = delete;

 private:
  IxoFiles& files_;
  IxoFile& child_;
};

FileEntry EntryOf(IxoFiles& files, const QString& name) {
  const std::shared_ptr<IxoFile> child = files.Item(name);
  if (!child) {
    throw RunTimeError(0, ItemNotFoundText(name));
  }
  const ChildRelease release(files, *child);
  FileEntry entry;
  entry.name = name;
  entry.attributes = child->Attribute();
  entry.leadsNowhere = entry.IsLink() && child->LeadsNowhere();
  entry.size = entry.IsFolder() ? 0 : child->Size64();
  entry.created = DateIn(child->DateCreated());
  entry.accessed = DateIn(child->DateLastAccessed());
  entry.modified = DateIn(child->DateLastModified());
  return entry;
}

}  // namespace

Listing IxoFile::List() {
  const Variant value = FileNames(QString());
  const auto* names = std::get_if<QStringList>(&value);
  if (names == nullptr) {
    throw RunTimeError(kReadFault, QStringLiteral("The folder could not be read: %1").arg(Name()));
  }
  Listing entries;
  entries.reserve(static_cast<size_t>(names->size()));
  if (names->isEmpty()) {
    return entries;
  }
  const std::shared_ptr<IxoFiles> files = Files();
  if (!files) {
    throw RunTimeError(0, QStringLiteral("The folder could not be read: %1").arg(Name()));
  }
  for (const QString& name : *names) {
    try {
      entries.push_back(EntryOf(*files, name));
    } catch (const RunTimeError& failure) {
      if (failure.Number() != error::kNotFound) {
        throw;
      }
    }
  }
  return entries;
}

}  // namespace trevane
