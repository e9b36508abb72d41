#include "engine/transfer/MadeItems.h"

#include "base/RunTimeError.h"
#include "engine/transfer/OpenedObjects.h"
#include "engine/transfer/TransferSteps.h"

#include <optional>
#include <utility>

namespace trevane {

void MadeItems::AddFolder(const QString& folder, const QString& name) {
  items_.push_back({.kind = Kind::Folder, .folder = folder, .name = name});
}

void MadeItems::AddFile(const QString& folder, const ArrivedFile& file) {
  items_.push_back({.kind = Kind::File,
                    .folder = folder,
                    .name = file.name,
                    .size = file.size,
                    .modified = file.modified});
}

void MadeItems::AddLink(const QString& folder, const QString& name, const QString& text) {
  items_.push_back({.kind = Kind::Link, .folder = folder, .name = name, .text = text});
}

std::shared_ptr<IxoFile> MadeItems::Open(const std::shared_ptr<IxoFile>& top, const QString& path,
                                         OpenedObjects& opened) {
  std::shared_ptr<IxoFile> folder = top;
  for (const QString& name : path.split(u'\\', Qt::SkipEmptyParts)) {
    const auto child = FindChild(*folder, name);
    if (!child) {
      return nullptr;
    }
    opened.Remember(folder, child);
    if ((child->Attribute() & attribute::kFolder) == 0 || (child->Attribute() & attribute::kLink) != 0) {
      return nullptr;
    }
    folder = child;
  }
  return folder;
}

bool MadeItems::IsStill(IxoFile& there, const Item& item) {
  const qint32 attributes = there.Attribute();
  const bool isLink = (attributes & attribute::kLink) != 0;
  const bool isFolder = (attributes & attribute::kFolder) != 0;
  switch (item.kind) {
    case Kind::Link:
      return isLink && there.LinkText() == item.text;
    case Kind::Folder:
      return isFolder && !isLink;
    case Kind::File:
      return !isFolder && !isLink && there.Size64() == item.size &&
             DateIn(there.DateLastModified()) == item.modified;
  }
  return false;
}

bool MadeItems::Remove(const std::shared_ptr<IxoFile>& folder, const Item& item) {
  const auto child = FindChild(*folder, item.name);
  if (!child) {
    return false;
  }
  OpenedObjects opened;
  opened.Remember(folder, child);
  if (!IsStill(*child, item)) {
    return false;
  }
  child->DeleteAlone();
  return true;
}

qint64 MadeItems::TakeBack(const std::shared_ptr<IxoFile>& top) noexcept {
  qint64 removed = 0;
  try {
    std::optional<OpenedObjects> opened;
    std::shared_ptr<IxoFile> folder;
    std::optional<QString> path;
    for (; !items_.empty() && !top->HasLostLine(); items_.pop_back()) {
      const Item& item = items_.back();
      try {
        if (path != item.folder) {
          path = item.folder;
          folder.reset();
          opened.emplace();
          folder = Open(top, item.folder, *opened);
        }
        removed += folder && Remove(folder, item) ? 1 : 0;
      } catch (const RunTimeError& failure) {
        // It stays; the refusal is reported.
        if (EndsCalls(failure)) {
          break;
        }
      }
    }
  } catch (const std::exception&) {
    // What is left stays; the refusal is reported.
  }
  items_.clear();
  return removed;
}

}  // namespace trevane
