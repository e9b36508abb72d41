#include "engine/transfer/CrossControllerCopy.h"

#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "engine/model/ItemName.h"
#include "engine/model/IxoFiles.h"
#include "engine/transfer/HeldItem.h"
#include "prompts/ItemQuestions.h"
#include "views/addresses/NodeTags.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace trevane {

namespace {

constexpr QStringView kLinkToFolder = u"A link to a folder is not copied";
constexpr qint32 kWriteFault = error::kWin32Error + 29;
constexpr qint32 kReadFault = error::kWin32Error + 30;

bool IsFolder(qint32 attributes) {
  return (attributes & attribute::kFolder) != 0;
}
bool IsLinkToFolder(qint32 attributes) {
  return IsFolder(attributes) && (attributes & attribute::kLink) != 0;
}

/// The child of that name; null when it is known not to be there.
std::shared_ptr<IxoFile> FindChild(IxoFile& folder, const QString& name) {
  if (folder.IsKnownAbsent(name)) {
    return nullptr;
  }
  try {
    if (auto child = folder.OpenFile(name, QString())) {
      return child;
    }
  } catch (const RunTimeError& failure) {
    if (failure.Number() != error::kNotFound) {
      throw;
    }
    return nullptr;
  }
  // A null child does not mean that there is none, and creating one would open an existing item.
  const Variant listed = folder.FileNames(QString());
  const auto* names = std::get_if<QStringList>(&listed);
  const auto isIt = [&name](const QString& other) { return EqualIgnoringCase(other, name); };
  if (names == nullptr || std::any_of(names->begin(), names->end(), isIt)) {
    throw RunTimeError(0, QStringLiteral("The item could not be opened: %1").arg(name));
  }
  return nullptr;
}

/// A new child. When it cannot be created the number of the error is -1.
template <class Create>
std::shared_ptr<IxoFile> RequireCreated(const QString& name, const Create& create) {
  std::shared_ptr<IxoFile> child;
  QString reason = QStringLiteral("The item could not be created: %1").arg(name);
  try {
    child = create();
  } catch (const RunTimeError& failure) {
    reason = failure.Description();
  }
  if (!child) {
    throw RunTimeError(-1, reason);
  }
  return child;
}

std::shared_ptr<IxoFile> CreateFile(IxoFile& folder, const QString& name) {
  return RequireCreated(name, [&] { return folder.CreateNewFile(name); });
}

/// Sets the traits of a new folder after it was filled, because they may forbid writing into it. They are set
/// also when the copy ends early.
class NewFolderTraits {
 public:
  NewFolderTraits() = default;
  ~NewFolderTraits() {
    try {
      Apply();
    } catch (const std::exception&) {
      // The folder stays closed; the failure that ends the copy is reported.
    }
  }
  NewFolderTraits(const NewFolderTraits&) = delete;
  NewFolderTraits& operator=(const NewFolderTraits&) = delete;

  void Await(const std::shared_ptr<IxoFile>& folder, const FileTraits& traits) {
    folder_ = folder;
    traits_ = traits;
  }
  void Apply() {
    if (const auto folder = std::exchange(folder_, nullptr)) {
      folder->SetTraits(traits_);
    }
  }

 private:
  std::shared_ptr<IxoFile> folder_;
  FileTraits traits_;
};

std::shared_ptr<IxoFile> CreateFolder(IxoFile& folder, const QString& name, const FileTraits& traits,
                                      NewFolderTraits& pending) {
  const auto created = RequireCreated(name, [&] {
    return traits.permissions ? folder.CreateClosedFolder(name)
                              : folder.OpenFile(name, QStringLiteral("@Create=2"));
  });
  if (traits.permissions || traits.marks || traits.created.IsPresent()) {
    pending.Await(created, traits);
  }
  return created;
}

/// Deletes a new item whose content could not be written, unless another program has replaced it.
void Discard(IxoFile& created) noexcept {
  for (int attempt = 0; attempt < 2; ++attempt) {
    try {
      created.TakeBack();
      return;
    } catch (const std::exception&) {
      continue;
    }
  }
}

qsizetype ContentSize(const Variant& value, const QString& name) {
  const auto* content = std::get_if<QByteArray>(&value);
  if (content == nullptr) {
    throw RunTimeError(kReadFault, QStringLiteral("The file could not be read: %1").arg(name));
  }
  return content->size();
}

/// The properties of a file that change when it is written.
struct Snapshot {
  explicit Snapshot(IxoFile& file)
      : size(file.Size64()), modified(file.DateLastModified()), identity(file.Identity()) {}
  friend bool operator==(const Snapshot&, const Snapshot&) = default;

  qint64 size;
  Variant modified;
  std::optional<QString> identity;
};

/// Asks the destination for the size: a write without an error is not proof enough.
void RequireArrived(IxoFile& target, qsizetype expected, const QString& name) {
  qint64 size = target.Size64();
  if (size < 0) {
    size = ContentSize(target.Value(), name);
  }
  if (size != expected) {
    throw RunTimeError(
        kWriteFault,
        QStringLiteral("Only %1 of %2 bytes have arrived: %3").arg(size).arg(expected).arg(name));
  }
}

}  // namespace

void CrossControllerCopy::Run(const std::shared_ptr<IxoFile>& source, const std::shared_ptr<IxoFile>& folder,
                              const QString& name) {
  outcome_ = Arrival::Failed;
  arrived_ = 0;
  leftOut_.clear();
  RequireItemName(name);
  overlap_.Begin(*source, *folder);
  ItemAnswer answer = ItemAnswer::Yes;
  const HeldItem from(source);
  const HeldItem into(folder);
  outcome_ = Arrival::Everything;
  try {
    OpenedObjects opened;
    CopyItem(source, folder, name, answer, opened);
  } catch (...) {
    outcome_ = Arrival::Failed;
    throw;
  }
}

void CrossControllerCopy::Skip(Arrival how) {
  if (outcome_ != Arrival::Cancelled) {
    outcome_ = how;
  }
}

void CrossControllerCopy::LeaveOut(const QString& name, const QString& reason) {
  leftOut_.push_back({name, reason});
  Skip(Arrival::Skipped);
}

void CrossControllerCopy::CopyItem(const std::shared_ptr<IxoFile>& source,
                                   const std::shared_ptr<IxoFile>& folder, const QString& name,
                                   ItemAnswer& answer, OpenedObjects& opened) {
  const qint32 attributes = source->Attribute();
  if (IsLinkToFolder(attributes)) {
    LeaveOut(name, kLinkToFolder.toString());
    return;
  }
  const bool isFolder = IsFolder(attributes);
  if (isFolder) {
    overlap_.RefuseDestination(*source, name);
  }
  auto existing = FindChild(*folder, name);
  if (existing) {
    opened.Remember(folder, existing);
    OverlapGuard::RefuseSame(*source, *existing, name);
    if (answer != ItemAnswer::YesAll) {
      answer = AskOverwrite(prompts_, name);
    }
    if (answer == ItemAnswer::No || answer == ItemAnswer::Cancel) {
      Skip(answer == ItemAnswer::Cancel ? Arrival::Cancelled : Arrival::Skipped);
      return;
    }
    // Another program may have replaced it while the question was open.
    existing = FindChild(*folder, name);
  }
  if (existing) {
    opened.Remember(folder, existing);
    OverlapGuard::RefuseSame(*source, *existing, name);
    const qint32 there = existing->Attribute();
    // A link is an item of its own: written through, it would replace an item elsewhere.
    if (IsFolder(there) != isFolder || (there & attribute::kLink) != 0) {
      throw RunTimeError(error::kExists,
                         QStringLiteral("An item of another kind has that name: %1").arg(name));
    }
  }
  if (!isFolder) {
    CopyFile(*source, existing, folder, name, opened);
    ++arrived_;
    return;
  }
  auto target = existing;
  NewFolderTraits traits;
  if (!target) {
    target = CreateFolder(*folder, name, source->Traits(), traits);
    opened.Remember(folder, target);
    // Nothing below an empty folder would show that it was not created.
    const auto seen = FindChild(*folder, name);
    if (!seen) {
      throw RunTimeError(-1, QStringLiteral("The folder was not created: %1").arg(name));
    }
    if (seen != target) {
      opened.Remember(folder, seen);
    }
    if (!IsFolder(seen->Attribute()) || (seen->Attribute() & attribute::kLink) != 0) {
      throw RunTimeError(error::kExists,
                         QStringLiteral("An item of another kind has that name: %1").arg(name));
    }
  }
  overlap_.AddFilled(*target);
  ++arrived_;
  CopyChildren(source, target, answer);
  traits.Apply();
}

void CrossControllerCopy::CopyFile(IxoFile& source, const std::shared_ptr<IxoFile>& existing,
                                   const std::shared_ptr<IxoFile>& folder, const QString& name,
                                   OpenedObjects& opened) {
  // Read before anything is created, so that an unreadable source leaves nothing to clean up.
  const Variant content = source.Value();
  const qsizetype size = ContentSize(content, name);
  if (size < source.Size64()) {
    throw RunTimeError(
        kReadFault,
        QStringLiteral("Only %1 of %2 bytes could be read: %3").arg(size).arg(source.Size64()).arg(name));
  }
  if (existing) {
    const Snapshot before(*existing);
    existing->PutValue(content);
    RequireArrived(*existing, size, name);
    // An old content of the same length has the same size.
    if (before == Snapshot(*existing) && existing->Value() != content) {
      throw RunTimeError(kWriteFault, QStringLiteral("The old content is still there: %1").arg(name));
    }
    return;
  }
  const FileTraits traits = source.Traits();
  const auto created = CreateFile(*folder, name);
  opened.Remember(folder, created);
  try {
    try {
      created->PutNewValue(content, traits);
    } catch (const RunTimeError& failure) {
      // Without its content the item counts as not created.
      throw RunTimeError(-1, failure.Description());
    }
    RequireArrived(*created, size, name);
  } catch (...) {
    Discard(*created);
    throw;
  }
}

void CrossControllerCopy::CopyChildren(const std::shared_ptr<IxoFile>& source,
                                       const std::shared_ptr<IxoFile>& target, ItemAnswer& answer) {
  const Listing entries = source->List();
  for (const QString& name : source->RefusedNames()) {
    LeaveOut(name, QStringLiteral("The name is not valid"));
  }
  for (const FileEntry& entry : entries) {
    const QString& name = entry.name;
    if (observer_ && !observer_({.name = name})) {
      Skip(Arrival::Cancelled);
      return;
    }
    RequireItemName(name);
    // OpenFile looks at the child anew: a question may have stood open since the folder was listed.
    OpenedObjects opened;
    const auto child = source->OpenFile(name, QString());
    if (!child) {
      throw ItemNotFound(name);
    }
    opened.Remember(source, child);
    // Its target may exist only as seen from its own folder, and there is nothing else to copy.
    if ((child->Attribute() & attribute::kLink) != 0 && child->LeadsNowhere()) {
      LeaveOut(name, QStringLiteral("The link leads nowhere"));
      continue;
    }
    CopyItem(child, target, name, answer, opened);
    if (outcome_ == Arrival::Cancelled) {
      return;
    }
  }
}

}  // namespace trevane
