#include "engine/substitute/FileSystemSession.h"

#include "engine/files/ProviderPath.h"
#include "engine/model/ItemName.h"

#include <algorithm>

namespace trevane {

namespace {

constexpr QLatin1StringView kShareStart("\\\\");

Listing WithoutRefused(Listing entries, QStringList* refused) {
  std::erase_if(entries, [refused](const FileEntry& entry) {
    const bool isRefused = !IsValidItemName(entry.name);
    if (isRefused && refused != nullptr) {
      refused->append(entry.name);
    }
    return isRefused;
  });
  return entries;
}

}  // namespace

QString FileSystemSession::ToPath(const QString& enginePath) {
  QStringList pieces = providerpath::Split(enginePath);
  if (capabilities_.topHoldsDrives) {
    if (providerpath::IsShare(enginePath)) {
      // Never a folder of a drive: what is copied to it would stay on this machine.
      if (!capabilities_.shares) {
        throw RunTimeError(
            error::kNotSupported,
            QStringLiteral("Shares of other machines cannot be opened here: %1").arg(enginePath));
      }
      if (pieces.size() < 2) {
        throw RunTimeError(
            error::kInvalidName,
            QStringLiteral("A share has two names, the server's and its own: %1").arg(enginePath));
      }
      return kShareStart + pieces.join(u'\\');
    }
    if (!pieces.isEmpty() && providerpath::IsDriveName(pieces.first())) {
      pieces.first() = pieces.first().toUpper();
    } else {
      const Listing drives = List(QString());
      if (drives.empty()) {
        throw ItemNotFound(enginePath);
      }
      pieces.prepend(drives.front().name);
    }
  }
  return pieces.join(u'\\');
}

bool FileSystemSession::IsTop(const QString& path) const {
  if (path.isEmpty() || !capabilities_.topHoldsDrives) {
    return path.isEmpty();
  }
  // Two in front of a share and one in it.
  return path.count(u'\\') <= (providerpath::IsShare(path) ? 3 : 0);
}

FileEntry FileSystemSession::Stat(const QString& path) {
  std::optional<FileEntry> entry = Find(path);
  if (!entry) {
    throw ItemNotFound(path);
  }
  return *std::move(entry);
}

std::optional<FileEntry> FileSystemSession::Find(const QString& path) {
  if (path.isEmpty()) {
    FileEntry top;
    top.attributes = attribute::kFolder;
    return top;
  }
  if (IsTop(path) && !providerpath::IsShare(path)) {
    const Listing drives = List(QString());
    const auto drive = std::find_if(drives.begin(), drives.end(), [&path](const FileEntry& entry) {
      return EqualIgnoringCase(entry.name, path);
    });
    return drive == drives.end() ? std::nullopt : std::optional(*drive);
  }
  std::optional<FileEntry> entry = Files().Find(path);
  if (!entry) {
    return entry;
  }
  Spell(*entry, path.mid(path.lastIndexOf(u'\\') + 1));
  return entry;
}

void FileSystemSession::Spell(FileEntry& entry, const QString& asked) const {
  if (!IsValidItemName(entry.name) || !IsSameName(entry.name, asked)) {
    entry.name = asked;
  }
}

std::optional<SeenItem> FileSystemSession::Find(const FolderReference& folder, const QString& name) {
  RequireOutsideOfCalls(name);
  if (!folder.Held()) {
    std::optional<FileEntry> entry = Find(folder.PathOf(name));
    return entry ? std::optional(SeenItem{*std::move(entry), std::nullopt}) : std::nullopt;
  }
  std::optional<SeenItem> seen = folder.Held()->Find(name);
  if (seen) {
    Spell(seen->entry, name);
  }
  return seen;
}

Listing FileSystemSession::List(const QString& path, QStringList* refused) {
  return WithoutRefused(Files().List(path), refused);
}

Listing FileSystemSession::List(const FolderReference& folder, QStringList& refused) {
  return folder.Held() ? WithoutRefused(folder.Held()->List(), &refused) : List(folder.Path(), &refused);
}

void FileSystemSession::ListInBatches(const FolderReference& folder, QStringList& refused,
                                      const ListingReceiver& receive) {
  RequireOutsideOfCalls(folder.Path());
  const auto pass = [&](Listing&& entries) {
    const WithinCall within;
    Listing kept = WithoutRefused(std::move(entries), &refused);
    return kept.empty() || receive(std::move(kept));
  };
  if (folder.Held()) {
    folder.Held()->ListInBatches(pass);
  } else {
    Files().ListInBatches(folder.Path(), pass);
  }
}

}  // namespace trevane
