#include "engine/files/HeldFolder.h"

#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"
#include "engine/model/ContentSteps.h"

namespace trevane {

std::vector<ReadResult> HeldFolder::ReadMany(const QStringList& names) {
  return ReadOneByOne(names, [this](const QString& name) { return OpenSource(name); });
}

std::vector<WriteResult> HeldFolder::WriteMany(const std::vector<NewContent>& files) {
  return WriteOneByOne(files, [this](const NewContent& file) { return OpenInBatch(file); });
}

std::unique_ptr<ContentSink> HeldFolder::OpenInBatch(const NewContent& file) {
  std::optional<SeenItem> replaced;
  if (file.request.mode == SinkRequest::Mode::Replace) {
    replaced = Find(file.name);
    if (replaced) {
      RequireReplaceable(replaced->entry, providerpath::Child(Path(), file.name));
    }
  }
  SinkRequest request = file.request;
  request.mode = replaced ? SinkRequest::Mode::Replace : SinkRequest::Mode::New;
  return OpenSink(file.name, request, replaced);
}

void HeldFolder::RequireReplaceable(const FileEntry& there, const QString& path) {
  if (there.IsFolder() || there.IsLink()) {
    Fail(error::kExists, QStringLiteral("An item of another kind has that name"), path);
  }
}

std::shared_ptr<HeldFolder> HeldFolder::EnterSeen(const QString& name, const SeenItem& seen) {
  Q_UNUSED(seen);
  return Enter(name);
}

void HeldFolder::SetTraitsOf(const SeenItem& seen, const FileTraits& traits) {
  const QString& name = seen.entry.name;
  const std::optional<SeenItem> now = Find(name);
  if (!now || now->identity != seen.identity || now->entry.IsFolder() != seen.entry.IsFolder() ||
      now->entry.IsLink()) {
    Fail(providererror::kChanged, providerpath::Child(Path(), name));
  }
  SetTraits(name, traits);
}

std::optional<SeenItem> HeldFolder::MakeFolder(const QString& name, bool closed) {
  CreateFolder(name, closed);
  return Find(name);
}

void HeldFolder::RemoveMany(const std::vector<SeenItem>& items) {
  for (const SeenItem& item : items) {
    RemoveAlone(item.entry.name, item);
  }
}

std::optional<QString> HeldFolder::ReadLink(const QString& name) {
  Q_UNUSED(name);
  return std::nullopt;
}

void HeldFolder::CreateLink(const QString& name, const QString& target) {
  Q_UNUSED(target);
  Fail(error::kNotSupported, name);
}

void HeldFolder::ListInBatches(const ListingReceiver& receive) {
  static_cast<void>(receive(List()));
}

}  // namespace trevane
