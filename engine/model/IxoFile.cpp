#include "engine/model/IxoFile.h"

#include "base/RunTimeError.h"
#include "engine/model/ContentSteps.h"
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

FileEntry EntryOf(IxoFile& file, const QString& name) {
  FileEntry entry;
  entry.name = name;
  entry.attributes = file.Attribute();
  entry.leadsNowhere = entry.IsLink() && file.LeadsNowhere();
  entry.size = entry.IsFolder() ? 0 : file.Size64();
  entry.created = DateIn(file.DateCreated());
  entry.accessed = DateIn(file.DateLastAccessed());
  entry.modified = DateIn(file.DateLastModified());
  return entry;
}

FileEntry EntryOf(IxoFiles& files, const QString& name) {
  const std::shared_ptr<IxoFile> child = files.Item(name);
  if (!child) {
    throw RunTimeError(0, ItemNotFoundText(name));
  }
  const ChildRelease release(files, *child);
  return EntryOf(*child, name);
}

QByteArray ContentOf(IxoFile& file) {
  const Variant value = file.Value();
  const auto* content = std::get_if<QByteArray>(&value);
  if (content == nullptr) {
    throw RunTimeError(kReadFault, QStringLiteral("The file could not be read: %1").arg(file.Name()));
  }
  return *content;
}

std::shared_ptr<IxoFile> RequireChild(std::shared_ptr<IxoFile> child, const QString& name) {
  if (!child) {
    throw RunTimeError(0, QStringLiteral("The item could not be opened: %1").arg(name));
  }
  return child;
}

/// These keep the child open that they read or write.
class ChildSource final : public ContentSource {
 public:
  explicit ChildSource(std::shared_ptr<IxoFile> child)
      : child_(std::move(child)), source_(child_->OpenSource()) {}
  [[nodiscard]] QByteArray Read(qint64 most) override { return source_->Read(most); }

 private:
  std::shared_ptr<IxoFile> child_;
  std::unique_ptr<ContentSource> source_;
};

class ChildSink final : public ContentSink {
 public:
  ChildSink(std::shared_ptr<IxoFile> child, const SinkRequest& request)
      : child_(std::move(child)), sink_(child_->OpenSink(request)) {}
  void Write(const QByteArray& piece) override { sink_->Write(piece); }
  [[nodiscard]] SeenItem Commit() override { return sink_->Commit(); }

 private:
  std::shared_ptr<IxoFile> child_;
  std::unique_ptr<ContentSink> sink_;
};

}  // namespace

std::unique_ptr<ContentSource> IxoFile::OpenSource(qint64 offset) {
  return std::make_unique<BytesSource>(ContentOf(*this), offset);
}

std::unique_ptr<ContentSink> IxoFile::OpenSink(const SinkRequest& request) {
  return std::make_unique<CollectingSink>([this, traits = request.traits](const QByteArray& content) {
    PutNewValue(content, traits);
    return SeenItem{EntryOf(*this, Name()), std::nullopt};
  });
}

std::vector<ReadResult> IxoFile::ReadMany(const QStringList& names) {
  return ReadOneByOne(names, [this](const QString& name) {
    return std::make_unique<ChildSource>(RequireChild(OpenFile(name, QString()), name));
  });
}

std::vector<WriteResult> IxoFile::WriteMany(const std::vector<NewContent>& files) {
  return WriteOneByOne(files, [this](const NewContent& file) {
    return std::make_unique<ChildSink>(RequireChild(CreateNewFile(file.name), file.name), file.request);
  });
}

void IxoFile::CreateLink(const QString& name, const QString& text) {
  Q_UNUSED(text);
  throw RunTimeError(error::kNotSupported, QStringLiteral("There are no links here: %1").arg(name));
}

void IxoFile::ListInBatches(const ListingReceiver& receive) {
  static_cast<void>(receive(List()));
}

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
