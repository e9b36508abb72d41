#include "engine/files/StagedSink.h"

#include "engine/files/ProviderError.h"
#include "engine/files/RawPutBack.h"
#include "engine/files/StagedInPlace.h"
#include "engine/files/StagedPlacement.h"
#include "engine/model/BatchWatch.h"

#include <algorithm>
#include <utility>

namespace trevane {

namespace {

/// Names other than its own can be tried for a file.
bool IsLadder(const RawFiles& files) {
  const RawCapabilities can = files.Capabilities();
  return can.canRename && can.temporaryNames;
}

}  // namespace

StagedSink::StagedSink(StagedPlace place, QString path, const SinkRequest& request)
    : place_(std::move(place)),
      path_(std::move(path)),
      folder_(path_.first(path_.lastIndexOf(u'\\') + 1)),
      request_(request) {}

StagedSink::~StagedSink() {
  Discard();
}

void StagedSink::Discard() noexcept {
  const RawPutBack putBack(place_.files);
  writer_.reset();
  if (built_.isEmpty()) {
    return;
  }
  const QString built = std::exchange(built_, QString());
  try {
    place_.files.Remove(built);
    return;
  } catch (const RunTimeError& failure) {
    if (failure.Number() == error::kNotFound) {
      return;
    }
  } catch (...) {
    // Told below as well: it may be there.
  }
  try {
    if (place_.leaveBehind) {
      place_.leaveBehind(built);
    }
  } catch (...) {
    // Its name tells what it is when the folder is searched.
  }
}

void StagedSink::Open() {
  if (isOpen_) {
    return;
  }
  isOpen_ = true;
  FindTraits();
  rung_ = IsLadder(place_.files) ? place_.learnt.FirstRung(place_.server, folder_) : NameRung::InPlace;
  if (rung_ == NameRung::InPlace || !place_.learnt.IsProved(place_.server, folder_)) {
    try {
      copy_ = std::make_unique<StagedPrivateFile>(place_.privateFolder, request_.expectedSize);
    } catch (const RunTimeError&) {
      if (rung_ == NameRung::InPlace) {
        throw;
      }
    }
  }
  try {
    BeginRung();
  } catch (const RunTimeError& failure) {
    LeaveRung(failure);
  }
}

void StagedSink::BeginRung() {
  if (rung_ == NameRung::InPlace) {
    return;
  }
  constexpr int kTries = 100;
  const QString name = path_.sliced(folder_.size());
  for (int i = 0;; ++i) {
    const QString built = folder_ + MakeTemporaryName(nameladder::FormOf(rung_), name);
    // Nobody else makes such names: it need not be looked first.
    try {
      built_ = built;
      writer_ = place_.files.Store(built, RawFiles::Creation::New, traits_.permissions.has_value());
      return;
    } catch (const RunTimeError& failure) {
      if (failure.Number() != error::kExists || i == kTries) {
        throw;
      }
      built_.clear();
    }
  }
}

void StagedSink::LeaveRung(const RunTimeError& failure) {
  RunTimeError last = failure;
  for (;;) {
    const NameRung next = nameladder::After(rung_, last);
    if (next == rung_) {
      throw ToldOf(last, built_, path_);
    }
    place_.learnt.Doubt(place_.server, folder_);
    isOfServer_ = isOfServer_ && nameladder::IsOfName(last);
    if (!copy_ && written_ > 0) {
      throw ToldOf(last, built_, path_);
    }
    Discard();
    rung_ = next;
    try {
      if (!copy_) {
        copy_ = std::make_unique<StagedPrivateFile>(place_.privateFolder, request_.expectedSize);
      }
      BeginRung();
      if (writer_) {
        const std::unique_ptr<ContentSource> source = copy_->OpenSource();
        for (;;) {
          const QByteArray piece = source->Read(content::kSmallestPiece);
          if (piece.isEmpty()) {
            break;
          }
          writer_->Write(piece);
        }
      }
      return;
    } catch (const RunTimeError& again) {
      last = again;
    }
  }
}

void StagedSink::Write(const QByteArray& piece) {
  Open();
  if (copy_) {
    try {
      copy_->Append(piece);
    } catch (const RunTimeError&) {
      if (rung_ == NameRung::InPlace) {
        throw;
      }
      // Without it a refusal from here on is a failure.
      copy_.reset();
    }
  }
  written_ += piece.size();
  if (!writer_) {
    return;
  }
  try {
    writer_->Write(piece);
  } catch (const RunTimeError& failure) {
    LeaveRung(failure);
  }
}

std::optional<QString> StagedSink::TemporaryName() const {
  if (built_.isEmpty()) {
    return std::nullopt;
  }
  return built_.sliced(built_.lastIndexOf(u'\\') + 1);
}

void StagedSink::FindTraits() {
  traits_ = request_.traits;
  if (request_.mode == SinkRequest::Mode::Replace && place_.files.Capabilities().traits &&
      place_.files.Find(path_)) {
    traits_ = {.permissions = place_.files.Traits(path_).permissions, .modified = request_.traits.modified};
  }
}

void StagedSink::SetTraits(const QString& path) {
  if (!place_.files.Capabilities().traits) {
    return;
  }
  try {
    place_.files.SetTraits(path, traits_);
  } catch (const RunTimeError& failure) {
    if (failure.Number() != error::kAccessDenied && failure.Number() != error::kNotSupported) {
      throw;
    }
    // As far as the server has them.
  }
}

void StagedSink::FinishRung() {
  while (writer_) {
    try {
      writer_->Close();
      writer_.reset();
    } catch (const RunTimeError& failure) {
      LeaveRung(failure);
    }
  }
}

void StagedSink::GiveName() {
  if (rung_ == NameRung::InPlace) {
    StagedInPlace(place_, path_, request_).Put(*copy_);
    SetTraits(path_);
    return;
  }
  SetTraits(built_);
  StagedPlacement(place_, rung_, written_).Put(built_, path_, request_.mode);
  placedFrom_ = std::exchange(built_, QString());
}

void StagedSink::Place() {
  Open();
  FinishRung();
  // A failure from here on, such as a file that is in use, says nothing of temporary names.
  GiveName();
  if (IsLadder(place_.files)) {
    place_.learnt.Accept(place_.server, folder_, rung_, isOfServer_);
  }
}

SeenItem StagedSink::Commit() {
  Place();
  std::optional<SeenItem> placed = place_.files.Find(path_);
  const bool isOther = !placed || (placed->entry.size >= 0 && placed->entry.size != written_);
  if (isOther && !placedFrom_.isEmpty() && place_.files.Find(placedFrom_)) {
    built_ = placedFrom_;
    Fail(providererror::kGeneralFailure,
         QStringLiteral("The server tells that the new content got its name, but it did not"), path_);
  }
  if (!placed) {
    Fail(error::kNotFound, path_);
  }
  return *std::move(placed);
}

std::vector<WriteResult> WriteManyStaged(const StagedPlace& place, const std::vector<NewContent>& files) {
  std::vector<WriteResult> results(files.size());
  QStringList placed;
  for (std::size_t i = 0; i < files.size(); ++i) {
    try {
      StagedSink sink(place, files[i].name, files[i].request);
      sink.Write(files[i].content);
      sink.Place();
      placed.append(files[i].name);
      BatchWatch::FileDone(files[i].content.size());
    } catch (const RunTimeError& failure) {
      results[i].failure = failure;
      break;
    }
  }
  if (placed.isEmpty()) {
    return results;
  }
  try {
    std::vector<std::optional<SeenItem>> found = place.files.FindMany(placed);
    for (std::size_t i = 0; i < found.size(); ++i) {
      if (found[i]) {
        results[i].item = std::move(found[i]);
      } else {
        results[i].failure = ProviderError(error::kNotFound, files[i].name);
      }
    }
  } catch (const RunTimeError& failure) {
    for (qsizetype i = 0; i < placed.size(); ++i) {
      results[static_cast<std::size_t>(i)].failure = failure;
    }
  }
  return results;
}

RunTimeError ToldOf(const RunTimeError& failure, const QString& built, const QString& path) {
  const QString& text = failure.Description();
  if (built.isEmpty() || !text.endsWith(built)) {
    return failure;
  }
  return {failure.Number(), text.first(text.size() - built.size()) + path};
}

void CreateFolderStaged(RawFiles& files, const QString& path) {
  if (!files.Capabilities().folders) {
    Fail(error::kNotSupported, QStringLiteral("This controller has no folders"), path);
  }
  if (files.Find(path)) {
    Fail(error::kExists, path);
  }
  files.CreateFolder(path);
}

}  // namespace trevane
