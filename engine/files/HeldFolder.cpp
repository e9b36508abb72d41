#include "engine/files/HeldFolder.h"

#include "engine/files/ProviderError.h"
#include "engine/model/ContentSteps.h"

namespace trevane {

std::vector<ReadResult> HeldFolder::ReadMany(const QStringList& names) {
  return ReadOneByOne(names, [this](const QString& name) { return OpenSource(name); });
}

std::vector<WriteResult> HeldFolder::WriteMany(const std::vector<NewContent>& files) {
  return WriteOneByOne(
      files, [this](const NewContent& file) { return OpenSink(file.name, file.request, std::nullopt); });
}

std::shared_ptr<HeldFolder> HeldFolder::EnterSeen(const QString& name, const SeenItem& seen) {
  Q_UNUSED(seen);
  return Enter(name);
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
