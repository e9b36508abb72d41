#include "engine/files/StagedInPlace.h"

#include "engine/files/ProviderError.h"
#include "engine/files/RawPutBack.h"

namespace trevane {

void StagedInPlace::Put(StagedPrivateFile& content) {
  if (request_.mode == SinkRequest::Mode::New) {
    PutNew(content);
    return;
  }
  const std::optional<SeenItem> old = place_.files.Find(path_);
  if (!old) {
    PutNew(content);
    return;
  }
  // A link, which has come meanwhile, would be written through.
  constexpr qint32 kOthers = attribute::kDevice | attribute::kLink;
  if (old->entry.IsFolder() || (old->entry.attributes & kOthers) != 0) {
    Fail(error::kAccessDenied, path_);
  }
  PutOver(*old, content);
}

void StagedInPlace::Store(StagedPrivateFile& content, RawFiles::Creation creation) {
  const std::unique_ptr<RawWriter> writer =
      place_.files.Store(path_, creation, request_.traits.permissions.has_value());
  isOpened_ = true;
  const std::unique_ptr<ContentSource> source = content.OpenSource();
  for (;;) {
    const QByteArray piece = source->Read(content::kSmallestPiece);
    if (piece.isEmpty()) {
      break;
    }
    writer->Write(piece);
  }
  writer->Close();
}

bool StagedInPlace::Holds(StagedPrivateFile& content) {
  return content.IsEqual(*place_.files.OpenSource(path_));
}

void StagedInPlace::PutNew(StagedPrivateFile& content) {
  const bool exclusive = place_.files.Capabilities().exclusiveCreate;
  if (!exclusive && place_.files.Find(path_)) {
    Fail(error::kExists, path_);
  }
  try {
    Store(content, exclusive ? RawFiles::Creation::New : RawFiles::Creation::Overwrite);
    if (!Holds(content)) {
      Fail(providererror::kChanged, path_);
    }
  } catch (const RunTimeError& failure) {
    if (failure.Number() == error::kExists && !isOpened_) {
      throw;
    }
    try {
      TakeAway();
    } catch (const RunTimeError&) {
      throw RunTimeError(failure.Number(),
                         failure.Description() + QStringLiteral(". A part of the new content may be there"));
    }
    throw;
  } catch (...) {
    TakeAway();
    throw;
  }
}

void StagedInPlace::TakeAway() {
  const RawPutBack putBack(place_.files);
  if (!isOpened_) {
    // The server may have made the file and lost its answer. One that holds anything is another program's.
    const std::optional<SeenItem> item = place_.files.Find(path_);
    if (!item || item->entry.IsFolder() || item->entry.size > 0 ||
        !place_.files.OpenSource(path_)->Read(1).isEmpty()) {
      return;
    }
  }
  try {
    place_.files.Remove(path_);
  } catch (const RunTimeError& failure) {
    if (failure.Number() != error::kNotFound && place_.files.Find(path_)) {
      throw;
    }
  }
}

void StagedInPlace::PutOver(const SeenItem& old, StagedPrivateFile& content) {
  StagedPrivateFile kept(place_.privateFolder, old.entry.size);
  const std::unique_ptr<ContentSource> source = place_.files.OpenSource(path_);
  for (;;) {
    const QByteArray piece = source->Read(content::kSmallestPiece);
    if (piece.isEmpty()) {
      break;
    }
    kept.Append(piece);
  }
  if (kept.Size() < old.entry.size) {
    Fail(providererror::kChanged, QStringLiteral("The old content could not be read to its end"), path_);
  }
  if (content.IsEqual(*kept.OpenSource())) {
    return;
  }
  // It stays, whatever happens, until one of the contents was read back.
  const QString keptAt = kept.Keep();
  const auto whereabouts = [&keptAt] {
    return QStringLiteral(". The old content is in the file %1 of this computer").arg(keptAt);
  };
  try {
    Store(content, RawFiles::Creation::Overwrite);
    if (!Holds(content)) {
      Fail(providererror::kChanged, QStringLiteral("The new content did not arrive as it was sent"), path_);
    }
  } catch (const RunTimeError& failure) {
    if (IsPutBack(kept)) {
      kept.Release();
      throw;
    }
    throw RunTimeError(failure.Number(), failure.Description() + whereabouts());
  } catch (...) {
    if (IsPutBack(kept)) {
      kept.Release();
      throw;
    }
    throw RunTimeError(-1, QStringLiteral("The new content could not be written: ") + path_ + whereabouts());
  }
  kept.Release();
}

bool StagedInPlace::IsPutBack(StagedPrivateFile& old) noexcept {
  const RawPutBack putBack(place_.files);
  try {
    // A refused file was not touched.
    if (!isOpened_ && Holds(old)) {
      return true;
    }
    Store(old, RawFiles::Creation::Overwrite);
    return Holds(old);
  } catch (...) {
    return false;
  }
}

}  // namespace trevane
