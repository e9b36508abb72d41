#include "engine/files/MoveItem.h"

#include "engine/files/FileSystem.h"
#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"
#include "engine/files/SourceRecord.h"
#include "engine/files/TemporaryName.h"

#include <memory>
#include <optional>

namespace trevane {

namespace {

QString FolderOf(const QString& path) {
  const qsizetype at = path.lastIndexOf(u'\\');
  return at < 0 ? QString() : path.first(at);
}

QString NameOf(const QString& path) {
  return path.sliced(path.lastIndexOf(u'\\') + 1);
}

void RemoveQuietly(FileSystem& files, const QString& path) {
  try {
    files.Remove(path);
  } catch (const RunTimeError&) {
    // The copy is left under its temporary name; the first failure is the one to report.
  }
}

void CopyUnderTemporaryName(FileSystem& files, const QString& from, const QString& temporary,
                            const QString& to) {
  try {
    files.Copy(from, temporary, false);
  } catch (const RunTimeError& failure) {
    QString text = failure.Description();
    throw RunTimeError(failure.Number(), text.replace(NameOf(temporary), NameOf(to)));
  }
}

void MoveAcross(FileSystem& files, const QString& from, const QString& to, bool overwrite) {
  const std::optional<FileEntry> existing = files.Find(to);
  // Refused before anything is copied.
  if (existing && existing->IsFolder() && !existing->IsLink() && !files.List(to).empty()) {
    Fail(error::kDirectoryNotEmpty, to);
  }
  const std::shared_ptr<HeldFolder> source = files.Hold(FolderOf(from));
  SourceRecord record;
  record.Take(*source, NameOf(from));
  // Without identities two paths may lead to the same place; the copy would then replace the source itself.
  if (existing && !record.HasIdentity()) {
    Fail(providererror::kNotSameDevice, to);
  }
  const QString temporary = providerpath::Child(FolderOf(to), MakeTemporaryName());
  CopyUnderTemporaryName(files, from, temporary, to);
  try {
    const std::shared_ptr<HeldFolder> target = files.Hold(FolderOf(to));
    record.RequireArrived(*source, *target, NameOf(temporary));
    const std::optional<SeenItem> copy = target->Find(NameOf(temporary));
    if (existing) {
      files.Flush(temporary);
    }
    files.Rename(temporary, to, overwrite);
    const std::optional<SeenItem> placed = target->Find(NameOf(to));
    if (!copy || !placed || !copy->IsStill(*placed, files.Capabilities().dateStep)) {
      Fail(providererror::kChanged, QStringLiteral("The copy could not be verified; the source was kept"),
           to);
    }
  } catch (const RunTimeError&) {
    RemoveQuietly(files, temporary);
    throw;
  }
  files.Flush(to);
  if (!record.ShowsChanges()) {
    // Neither its size nor its date would show that another program has written to the source.
    record.RequireSameContent(*source, *files.Hold(FolderOf(to)), NameOf(to));
  }
  record.DeleteSource(*source);
}

}  // namespace

void MoveItem(FileSystem& files, const QString& from, const QString& to, bool overwrite) {
  try {
    files.Rename(from, to, overwrite);
    return;
  } catch (const RunTimeError& failure) {
    if (failure.Number() != providererror::kNotSameDevice) {
      throw;
    }
  }
  MoveAcross(files, from, to, overwrite);
}

}  // namespace trevane
