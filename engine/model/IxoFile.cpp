#include "engine/model/IxoFile.h"

#include "base/RunTimeError.h"
#include "engine/model/BatchWatch.h"
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

/// Takes back a new file that failed; a second failure cannot be reported.
void Discard(IxoFile& made) noexcept {
  for (int attempt = 0; attempt < 2 && !made.HasLostLine(); ++attempt) {
    try {
      made.TakeBack();
      return;
    } catch (const std::exception&) {
      continue;
    }
  }
}

SeenItem WriteChild(IxoFile& child, const NewContent& file) {
  const std::unique_ptr<ContentSink> sink = child.OpenSink(file.request);
  if (!file.content.isEmpty()) {
    sink->Write(file.content);
  }
  return sink->Commit();
}

/// The file that is to be replaced; null where none is there any more. A link would be written through.
std::shared_ptr<IxoFile> ChildToReplace(IxoFile& folder, const QString& name) {
  std::shared_ptr<IxoFile> child;
  try {
    child = RequireChild(folder.OpenFile(name, QString()), name);
  } catch (const RunTimeError& failure) {
    if (failure.Number() != error::kNotFound) {
      throw;
    }
    return nullptr;
  }
  return child;
}

SeenItem ReplaceChild(IxoFile& child, const NewContent& file) {
  if ((child.Attribute() & (attribute::kFolder | attribute::kLink)) != 0) {
    throw RunTimeError(error::kExists,
                       QStringLiteral("An item of another kind has that name: %1").arg(file.name));
  }
  return WriteChild(child, file);
}

SeenItem WriteNewChild(IxoFile& child, const NewContent& file) {
  try {
    return WriteChild(child, file);
  } catch (...) {
    Discard(child);
    throw;
  }
}

std::shared_ptr<IxoFiles> RequireFiles(IxoFile& folder) {
  std::shared_ptr<IxoFiles> files = folder.Files();
  if (!files) {
    throw RunTimeError(0, QStringLiteral("The folder could not be read: %1").arg(folder.Name()));
  }
  return files;
}

}  // namespace

std::unique_ptr<ContentSource> IxoFile::OpenSource(qint64 offset) {
  return std::make_unique<BytesSource>(ContentOf(*this), offset);
}

std::unique_ptr<ContentSink> IxoFile::OpenSink(const SinkRequest& request) {
  // The sink keeps the file alive.
  const auto put = [this, self = weak_from_this().lock(),
                    traits = request.traits](const QByteArray& content) {
    PutNewValue(content, traits);
    return SeenItem{EntryOf(*this, Name()), std::nullopt};
  };
  return std::make_unique<CollectingSink>(put);
}

std::vector<ReadResult> IxoFile::ReadMany(const QStringList& names) {
  std::vector<ReadResult> results(static_cast<size_t>(names.size()));
  qint64 room = content::kMostBytes;
  for (qsizetype i = 0; i < names.size(); ++i) {
    ReadResult& result = results[static_cast<size_t>(i)];
    try {
      const std::shared_ptr<IxoFiles> files = RequireFiles(*this);
      const std::shared_ptr<IxoFile> child = RequireChild(OpenFile(names[i], QString()), names[i]);
      const ChildRelease release(*files, *child);
      result.content = ReadUpTo(*child->OpenSource(), room);
      result.isTooLarge = !result.content;
      if (result.content) {
        room -= result.content->size();
        BatchWatch::FileDone(result.content->size());
      }
    } catch (const RunTimeError& failure) {
      result.failure = failure;
      break;
    }
  }
  return results;
}

std::vector<WriteResult> IxoFile::WriteMany(const std::vector<NewContent>& files) {
  std::vector<WriteResult> results(files.size());
  for (size_t i = 0; i < files.size(); ++i) {
    try {
      const std::shared_ptr<IxoFiles> children = RequireFiles(*this);
      const bool replaces = files[i].request.mode == SinkRequest::Mode::Replace;
      if (const auto existing = replaces ? ChildToReplace(*this, files[i].name) : nullptr) {
        const ChildRelease release(*children, *existing);
        results[i].item = ReplaceChild(*existing, files[i]);
      } else {
        const std::shared_ptr<IxoFile> child = RequireChild(CreateNewFile(files[i].name), files[i].name);
        const ChildRelease release(*children, *child);
        results[i].item = WriteNewChild(*child, files[i]);
      }
      BatchWatch::FileDone(files[i].content.size());
    } catch (const RunTimeError& failure) {
      results[i].failure = failure;
      break;
    }
  }
  return results;
}

FileTraits IxoFile::TraitsOf(const FileEntry& child) {
  const std::shared_ptr<IxoFiles> children = RequireFiles(*this);
  const std::shared_ptr<IxoFile> file = RequireChild(OpenFile(child.name, QString()), child.name);
  const ChildRelease release(*children, *file);
  FileTraits traits = file->Traits();
  if (!traits.modified.IsPresent()) {
    traits.modified = child.modified;
  }
  return traits;
}

void IxoFile::CreateLink(const QString& name, const QString& text) {
  Q_UNUSED(text);
  throw RunTimeError(error::kNotSupported, QStringLiteral("There are no links here: %1").arg(name));
}

void IxoFile::DeleteSeen(const Listing& children) {
  Q_UNUSED(children);
  throw RunTimeError(error::kNotSupported,
                     QStringLiteral("Items cannot be told apart by a listing here: %1").arg(Name()));
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
  const std::shared_ptr<IxoFiles> files = RequireFiles(*this);
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
