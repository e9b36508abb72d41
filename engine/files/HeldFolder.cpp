#include "engine/files/HeldFolder.h"

#include "engine/files/ProviderError.h"
#include "engine/model/ContentSteps.h"

namespace trevane {

std::unique_ptr<ContentSource> HeldFolder::OpenSource(const QString& name, qint64 offset) {
  return std::make_unique<BytesSource>(Read(name), offset);
}

std::unique_ptr<ContentSink> HeldFolder::OpenSink(const QString& name, const SinkRequest& request,
                                                  const std::optional<SeenItem>& seen) {
  return std::make_unique<CollectingSink>([this, name, request, seen](const QByteArray& content) {
    if (seen) {
      Replace(name, *seen, content);
    } else {
      static_cast<void>(WriteNew(name, content, request.traits));
    }
    std::optional<SeenItem> placed = Find(name);
    if (!placed) {
      Fail(error::kNotFound, name);
    }
    return *std::move(placed);
  });
}

std::vector<ReadResult> HeldFolder::ReadMany(const QStringList& names) {
  return ReadOneByOne(names, [this](const QString& name) { return OpenSource(name); });
}

std::vector<WriteResult> HeldFolder::WriteMany(const std::vector<NewContent>& files) {
  return WriteOneByOne(
      files, [this](const NewContent& file) { return OpenSink(file.name, file.request, std::nullopt); });
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
