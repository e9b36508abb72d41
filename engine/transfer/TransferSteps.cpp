#include "engine/transfer/TransferSteps.h"

#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "engine/model/ContentSteps.h"
#include "engine/transfer/OpenedObjects.h"

#include <algorithm>

namespace trevane {

namespace {

constexpr qint32 kWriteFault = error::kWin32Error + 29;
constexpr qint32 kReadFault = error::kWin32Error + 30;
/// The item changed under the operation.
constexpr qint32 kChanged = error::kWin32Error + 1006;
constexpr qint32 kConnectionLost = error::kWin32Error + 64;

template <class Create>
std::shared_ptr<IxoFile> RequireCreated(const QString& name, const Create& create) {
  std::shared_ptr<IxoFile> child;
  try {
    child = create();
  } catch (const RunTimeError& failure) {
    throw NotCreated(failure);
  }
  if (!child) {
    throw RunTimeError(-1, QStringLiteral("The item could not be created: %1").arg(name));
  }
  return child;
}

}  // namespace

bool EndsCalls(const RunTimeError& failure) noexcept {
  const qint32 number = failure.Number();
  return number == error::kCancelled || number == error::kTimeOut || number == kConnectionLost ||
         number == error::kDeviceNotReady;
}

std::shared_ptr<IxoFile> FindChild(IxoFile& folder, const QString& name) {
  if (const auto found = folder.LookFor(name)) {
    return *found;
  }
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

std::shared_ptr<IxoFile> CreateNewFile(IxoFile& folder, const QString& name) {
  return RequireCreated(name, [&] { return folder.CreateNewFile(name); });
}

std::shared_ptr<IxoFile> CreateNewFolder(IxoFile& folder, const QString& name, bool closed, bool& wasSeen) {
  wasSeen = false;
  return RequireCreated(name, [&] {
    if (auto made = folder.MakeFolder(name, closed)) {
      wasSeen = true;
      return made;
    }
    return closed ? folder.CreateClosedFolder(name) : folder.OpenFile(name, QStringLiteral("@Create=2"));
  });
}

RunTimeError NotCreated(const RunTimeError& failure) {
  return failure.Number() == error::kCancelled ? failure : RunTimeError(-1, failure.Description());
}

void Discard(IxoFile& created) noexcept {
  for (int attempt = 0; attempt < 2 && !created.HasLostLine(); ++attempt) {
    try {
      created.TakeBack();
      return;
    } catch (const RunTimeError& failure) {
      if (EndsCalls(failure)) {
        return;
      }
    } catch (const std::exception&) {
      continue;
    }
  }
}

void RemovePlaced(const std::shared_ptr<IxoFile>& folder, const QString& name, qint64 size,
                  Date modified) noexcept {
  for (int attempt = 0; attempt < 2 && !folder->HasLostLine(); ++attempt) {
    try {
      const auto child = FindChild(*folder, name);
      if (!child) {
        return;
      }
      OpenedObjects opened;
      opened.Remember(folder, child);
      if (child->Size64() == size && DateIn(child->DateLastModified()) == modified &&
          (child->Attribute() & (attribute::kFolder | attribute::kLink)) == 0) {
        child->DeleteAlone();
      }
      return;
    } catch (const RunTimeError& failure) {
      if (EndsCalls(failure)) {
        return;
      }
    } catch (const std::exception&) {
      continue;
    }
  }
}

void RequireRead(qint64 bytes, qint64 size, const QString& name) {
  if (bytes < size) {
    throw RunTimeError(
        kReadFault, QStringLiteral("Only %1 of %2 bytes could be read: %3").arg(bytes).arg(size).arg(name));
  }
}

RunTimeError NotArrived(const QString& name, qint64 size, qint64 written) {
  return RunTimeError(
      kWriteFault, QStringLiteral("Only %1 of %2 bytes have arrived: %3").arg(size).arg(written).arg(name));
}

void RequireArrived(IxoFile& folder, const QString& name, const SeenItem& placed, qint64 written) {
  qint64 size = placed.entry.size;
  if (size < 0) {
    OpenedObjects opened;
    const auto child = folder.OpenFile(name, QString());
    if (!child) {
      throw ItemNotFound(name);
    }
    opened.Borrow(folder, child);
    size = SizeOf(*child->OpenSource());
  }
  if (size != written) {
    throw NotArrived(name, size, written);
  }
}

void RequireInPlace(IxoFile& folder) {
  if (!folder.ListingTellsAll()) {
    return;
  }
  const qint32 there = folder.Attribute();
  if ((there & attribute::kFolder) == 0 || (there & attribute::kLink) != 0) {
    throw RunTimeError(kChanged,
                       QStringLiteral("Another item took the place of the folder: %1").arg(folder.Name()));
  }
}

void RequireSameKind(IxoFile& existing, bool isFolder, const QString& name) {
  const qint32 there = existing.Attribute();
  if (((there & attribute::kFolder) != 0) != isFolder || (there & attribute::kLink) != 0) {
    throw RunTimeError(error::kExists, QStringLiteral("An item of another kind has that name: %1").arg(name));
  }
}

}  // namespace trevane
