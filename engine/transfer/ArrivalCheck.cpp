#include "engine/transfer/ArrivalCheck.h"

#include "base/LowerCase.h"
#include "engine/transfer/OpenedObjects.h"
#include "engine/transfer/TransferSteps.h"

#include <QHash>

#include <functional>
#include <utility>

namespace trevane {
namespace {

/// Nothing where the item is missing, and -1 where its size is not known.
std::optional<qint64> SizeThere(const std::shared_ptr<IxoFile>& folder, const QString& name) {
  const auto child = FindChild(*folder, name);
  if (!child) {
    return std::nullopt;
  }
  OpenedObjects opened;
  opened.Remember(folder, child);
  if ((child->Attribute() & (attribute::kFolder | attribute::kLink)) != 0) {
    return std::nullopt;
  }
  return child->Size64();
}

/// A size that is not known was counted when the file was written.
bool IsWhole(const ArrivedFile& file, const std::optional<qint64>& there) {
  return there && (*there < 0 || *there == file.size);
}

std::vector<ArrivalCheck::Failure> FailuresOf(
    const std::shared_ptr<IxoFile>& folder, const std::vector<ArrivedFile>& files,
    const std::function<std::optional<qint64>(const ArrivedFile& file)>& sizeOf) {
  std::vector<ArrivalCheck::Failure> failures;
  for (const ArrivedFile& file : files) {
    const std::optional<qint64> there = sizeOf(file);
    if (IsWhole(file, there)) {
      continue;
    }
    failures.push_back({file.name, NotArrived(file.name, there.value_or(0), file.size)});
    if (there && file.isNew) {
      RemovePlaced(folder, file.name, *there, file.modified);
    }
  }
  return failures;
}

}  // namespace

std::vector<ArrivalCheck::Failure> ArrivalCheck::List(const std::shared_ptr<IxoFile>& folder) {
  const std::vector<ArrivedFile> files = std::exchange(files_, {});
  if (folder->SeesArrivals()) {
    return {};
  }
  QHash<QString, qint64> sizes;
  const Listing entries = folder->List();
  for (const bool exact : {false, true}) {
    // The spelling that was asked for counts where there are two.
    for (const FileEntry& entry : entries) {
      if (!entry.IsFolder() && !entry.IsLink()) {
        sizes.insert(exact ? entry.name : LowerCase(entry.name), entry.size);
      }
    }
  }
  return FailuresOf(folder, files, [&](const ArrivedFile& file) {
    for (const QString& name : {file.name, LowerCase(file.name)}) {
      const auto size = sizes.constFind(name);
      if (size != sizes.cend()) {
        return std::optional(*size);
      }
    }
    // It may be listed under another spelling.
    return SizeThere(folder, file.name);
  });
}

std::vector<ArrivalCheck::Failure> ArrivalCheck::Find(const std::shared_ptr<IxoFile>& folder) {
  const std::vector<ArrivedFile> files = std::exchange(files_, {});
  if (folder->SeesArrivals()) {
    return {};
  }
  return FailuresOf(folder, files, [&](const ArrivedFile& file) { return SizeThere(folder, file.name); });
}

}  // namespace trevane
