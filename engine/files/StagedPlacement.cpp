#include "engine/files/StagedPlacement.h"

#include "engine/files/ProviderError.h"
#include "engine/files/RawPutBack.h"

namespace trevane {
namespace {

/// The failure, and what stands where after it.
[[noreturn]] void FailWith(const RunTimeError& failure, const QString& whereabouts) {
  throw RunTimeError(failure.Number(), failure.Description() + QStringLiteral(". ") + whereabouts);
}

/// Of what is being handled: whatever was raised, an old content that has lost its name is told.
RunTimeError CurrentFailure(const QString& path) {
  try {
    throw;
  } catch (const RunTimeError& failure) {
    return failure;
  } catch (...) {
    return RunTimeError(-1, QStringLiteral("The new content could not get its name: ") + path);
  }
}

QString OldContentAt(const QString& aside) {
  return QStringLiteral("The old content is under %1").arg(aside);
}

}  // namespace

void StagedPlacement::Put(const QString& built, const QString& path, SinkRequest::Mode mode) {
  if (mode == SinkRequest::Mode::New) {
    PutNew(built, path);
    return;
  }
  const std::optional<SeenItem> old = place_.files.Find(path);
  if (!old) {
    PutNew(built, path);
    return;
  }
  const bool isDevice = (old->entry.attributes & attribute::kDevice) != 0;
  if (old->entry.IsFolder() || isDevice) {
    Fail(error::kAccessDenied, path);
  }
  if (!place_.files.Capabilities().renameReplaces) {
    PutWithAside(built, path);
    return;
  }
  try {
    RenameSurely(built, path);
  } catch (const RunTimeError&) {
    // A server may show only now that it does not replace.
    if (place_.files.Capabilities().renameReplaces || IsThere(path) != true || IsThere(built) != true) {
      throw;
    }
    PutWithAside(built, path);
  }
}

std::optional<bool> StagedPlacement::IsThere(const QString& path) {
  const RawPutBack putBack(place_.files);
  try {
    return place_.files.Find(path).has_value();
  } catch (...) {
    return std::nullopt;
  }
}

void StagedPlacement::RenameSurely(const QString& from, const QString& to) {
  try {
    place_.files.Rename(from, to);
  } catch (...) {
    if (IsThere(from) != false || IsThere(to) != true) {
      throw;
    }
  }
}

void StagedPlacement::PutNew(const QString& built, const QString& path) {
  if (!place_.files.Capabilities().renameRefuses && place_.files.Find(path)) {
    Fail(error::kExists, path);
  }
  RenameSurely(built, path);
}

void StagedPlacement::PutWithAside(const QString& built, const QString& path) {
  const qsizetype nameAt = path.lastIndexOf(u'\\') + 1;
  const QString aside = path.first(nameAt) + MakeAsideName(nameladder::FormOf(rung_), path.sliced(nameAt));
  try {
    RenameSurely(path, aside);
  } catch (...) {
    const std::optional<bool> stands = IsThere(path);
    if (stands == true) {
      throw;
    }
    FailWith(CurrentFailure(path),
             stands.has_value()
                 ? OldContentAt(aside)
                 : QStringLiteral("The old content has its name still, or is under %1").arg(aside));
  }
  try {
    RenameSurely(built, path);
  } catch (...) {
    PutBack(aside, path, CurrentFailure(path));
  }
  // The new content has its name: what follows is only cleaning up, and a cancel comes too late for it.
  const RawPutBack putBack(place_.files);
  std::optional<SeenItem> placed;
  try {
    placed = place_.files.Find(path);
  } catch (...) {
    FailWith(CurrentFailure(path), OldContentAt(aside));
  }
  if (!placed) {
    PutBack(aside, path, ProviderError(providererror::kChanged, path));
  }
  if (placed->entry.size >= 0 && placed->entry.size != written_) {
    // It may be a file that another program has just put there: it stays, whatever it is.
    FailWith(ProviderError(providererror::kChanged, path), OldContentAt(aside));
  }
  try {
    place_.files.Remove(aside);
  } catch (...) {
    if (IsThere(aside) != false && place_.leaveBehind) {
      place_.leaveBehind(aside);
    }
  }
}

void StagedPlacement::PutBack(const QString& aside, const QString& path, const RunTimeError& failure) {
  const RawPutBack putBack(place_.files);
  // Another program may have made a file of that name, which is not replaced.
  if (IsThere(path) != false) {
    FailWith(failure, OldContentAt(aside));
  }
  try {
    RenameSurely(aside, path);
  } catch (...) {
    FailWith(failure, OldContentAt(aside));
  }
  throw failure;
}

}  // namespace trevane
