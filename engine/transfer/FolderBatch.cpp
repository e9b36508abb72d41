#include "engine/transfer/FolderBatch.h"

#include "engine/transfer/OpenedObjects.h"
#include "engine/transfer/TransferSteps.h"

#include <QHash>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <utility>

namespace trevane {

namespace {

constexpr qint32 kWriteFault = error::kWin32Error + 29;

void Fail(FolderBatch::Result& result, const QString& name, const RunTimeError& failure) {
  if (!result.failure) {
    result.failure = failure;
    result.failedName = name;
  }
}

bool IsPlainFile(const FileEntry& entry) {
  return !entry.IsFolder() && !entry.IsLink();
}

}  // namespace

bool FolderBatch::CanHold(const FileEntry& file) noexcept {
  return file.size >= 0 && file.size <= content::kMostBytes && IsPlainFile(file);
}

bool FolderBatch::HasRoomFor(const FileEntry& file) const noexcept {
  return Count() < content::kMostFiles && bytes_ + file.size <= content::kMostBytes;
}

void FolderBatch::Add(const FileEntry& file, const QString& newName,
                      const std::optional<FileEntry>& replaced) {
  files_.push_back({file, newName, replaced});
  bytes_ += file.size;
}

FolderBatch::Result FolderBatch::Finish(const std::function<bool()>& isEnding, const Observer& observer) {
  finished_ = std::exchange(files_, {});
  bytes_ = 0;
  Result result;
  result.arrived.assign(finished_.size(), false);
  result.left.assign(finished_.size(), Left::No);
  if (!finished_.empty()) {
    try {
      Copy(result, isEnding, observer);
    } catch (const RunTimeError& failure) {
      result.failure = failure;
      result.failedName = finished_.front().entry.name;
    }
  }
  return result;
}

FileTraits FolderBatch::TraitsAfter(const FileEntry& file) {
  FileTraits traits = source_->TraitsOf(file);
  // A copy with a later date than that of its content would be taken for up to date. The listing is older
  // than the content.
  if (file.modified.IsPresent() && traits.modified.IsPresent() &&
      std::abs(traits.modified.msecs - file.modified.msecs) > source_->DateStep()) {
    traits.modified = file.modified;
  }
  return traits;
}

std::vector<FolderBatch::Sent> FolderBatch::Read(Result& result, std::vector<NewContent>& contents,
                                                 const BatchWatch::Receiver& watch) {
  QStringList names;
  for (const File& file : finished_) {
    names.append(file.entry.name);
  }
  std::vector<ReadResult> read;
  {
    const BatchWatch watched(watch);
    read = source_->ReadMany(names);
  }
  read.resize(finished_.size());
  std::vector<Sent> sent;
  for (size_t i = 0; i < finished_.size(); ++i) {
    const auto& [entry, newName, replaced] = finished_[i];
    // Only what stands before a file that cannot be read is written: nothing new begins after a failure.
    try {
      if (read[i].failure) {
        throw *read[i].failure;
      }
      if (!read[i].content || read[i].content->size() != entry.size) {
        result.left[i] = Left::Alone;
        continue;
      }
      SinkRequest request;
      request.expectedSize = entry.size;
      request.traits = read[i].traits ? *read[i].traits : TraitsAfter(entry);
      if (replaced) {
        request.mode = SinkRequest::Mode::Replace;
        FileTraits date;
        date.modified = request.traits.modified;
        request.traits = date;
      }
      contents.push_back({newName, *std::exchange(read[i].content, std::nullopt), request});
      sent.push_back({i});
    } catch (const RunTimeError& failure) {
      Fail(result, entry.name, failure);
      break;
    }
  }
  return sent;
}

std::vector<std::optional<SeenItem>> FolderBatch::LookAt(const QStringList& names) {
  std::vector<std::optional<SeenItem>> there(static_cast<size_t>(names.size()));
  QHash<QString, FileEntry> listed;
  const bool listingTellsAll = target_->ListingTellsAll();
  if (listingTellsAll) {
    for (const FileEntry& entry : target_->List()) {
      listed.insert(entry.name, entry);
    }
  }
  for (size_t i = 0; i < there.size(); ++i) {
    const QString& name = names[static_cast<qsizetype>(i)];
    if (const auto entry = listed.constFind(name); entry != listed.cend()) {
      there[i] = SeenItem{*entry, std::nullopt};
      continue;
    }
    // It may be listed under another spelling.
    const auto child = FindChild(*target_, name);
    if (!child) {
      continue;
    }
    OpenedObjects opened;
    opened.Remember(target_, child);
    FileEntry entry;
    entry.name = name;
    entry.attributes = child->Attribute();
    entry.size = child->Size64();
    entry.modified = DateIn(child->DateLastModified());
    there[i] = SeenItem{entry, std::nullopt};
  }
  return there;
}

void FolderBatch::FindPlaced(const std::vector<NewContent>& contents, std::vector<Sent>& sent,
                             const RunTimeError& failure) {
  QStringList names;
  for (const NewContent& content : contents) {
    names.append(content.name);
  }
  const std::vector<std::optional<SeenItem>> there = LookAt(names);
  QStringList likely;
  std::vector<size_t> places;
  for (size_t i = 0; i < sent.size(); ++i) {
    if (there[i] && IsPlainFile(there[i]->entry) && there[i]->entry.size == contents[i].content.size()) {
      likely.append(contents[i].name);
      places.push_back(i);
    } else {
      sent[i].failure = failure;
    }
  }
  // Something else of that size may have been there, or have come meanwhile.
  const std::vector<ReadResult> read =
      likely.isEmpty() ? std::vector<ReadResult>() : target_->ReadMany(likely);
  for (size_t k = 0; k < places.size(); ++k) {
    const size_t i = places[k];
    if (k < read.size() && read[k].content == contents[i].content) {
      sent[i].placed = there[i];
    } else {
      sent[i].failure = failure;
    }
  }
}

void FolderBatch::Write(const std::vector<NewContent>& contents, std::vector<Sent>& sent,
                        const std::function<bool()>& isEnding, const BatchWatch::Receiver& watch) {
  std::optional<RunTimeError> failure;
  try {
    const BatchWatch watched(watch);
    std::vector<WriteResult> written = target_->WriteMany(contents);
    written.resize(contents.size());
    for (size_t i = 0; i < sent.size(); ++i) {
      sent[i].placed = std::move(written[i].item);
      sent[i].failure = std::move(written[i].failure);
    }
    return;
  } catch (const RunTimeError& notWritten) {
    failure = notWritten;
  }
  for (Sent& file : sent) {
    file.placed.reset();
    file.failure = failure;
  }
  // After Cancel the line may still be there.
  const bool ends = EndsCalls(*failure) && failure->Number() != error::kCancelled;
  if (ends || isEnding() || target_->HasLostLine()) {
    return;
  }
  try {
    for (Sent& file : sent) {
      file.failure.reset();
    }
    FindPlaced(contents, sent, *failure);
  } catch (const RunTimeError&) {
    for (Sent& file : sent) {
      file.placed.reset();
      file.failure = failure;
    }
  }
}

void FolderBatch::RequireReplaced(const std::vector<NewContent>& contents, std::vector<Sent>& sent) {
  QStringList names;
  std::vector<size_t> places;
  for (size_t i = 0; i < sent.size(); ++i) {
    if (sent[i].placed && finished_[sent[i].file].replaced) {
      names.append(contents[i].name);
      places.push_back(i);
    }
  }
  if (names.isEmpty()) {
    return;
  }
  try {
    if (!target_->SeesArrivals()) {
      RequireReplaced(contents, sent, names, places);
    }
  } catch (const RunTimeError& failure) {
    for (const size_t place : places) {
      sent[place].failure = failure;
    }
  }
}

void FolderBatch::RequireReplaced(const std::vector<NewContent>& contents, std::vector<Sent>& sent,
                                  const QStringList& names, const std::vector<size_t>& places) {
  const std::vector<std::optional<SeenItem>> there = LookAt(names);
  QStringList doubtful;
  std::vector<size_t> unsure;
  for (size_t k = 0; k < places.size(); ++k) {
    Sent& file = sent[places[k]];
    const FileEntry& before = *finished_[file.file].replaced;
    const qint64 size = contents[places[k]].content.size();
    if (!there[k] || !IsPlainFile(there[k]->entry)) {
      file.failure = ItemNotFound(contents[places[k]].name);
    } else if (there[k]->entry.size >= 0 && there[k]->entry.size != size) {
      file.failure = NotArrived(contents[places[k]].name, there[k]->entry.size, size);
    } else if (before.size < 0 || before.size == size) {
      // Of two contents of one length the date may tell nothing.
      const Date old = before.modified;
      const Date now = there[k]->entry.modified;
      const bool isNewer = old.IsPresent() && now.IsPresent() && now.msecs > old.msecs;
      if (!isNewer && IsSameDate(old, now, target_->DateStep())) {
        doubtful.append(contents[places[k]].name);
        unsure.push_back(places[k]);
      }
    }
  }
  const std::vector<ReadResult> read =
      doubtful.isEmpty() ? std::vector<ReadResult>() : target_->ReadMany(doubtful);
  for (size_t k = 0; k < unsure.size(); ++k) {
    const NewContent& content = contents[unsure[k]];
    Sent& file = sent[unsure[k]];
    if (k >= read.size() || read[k].content != content.content) {
      const bool couldNotBeRead = k < read.size() && read[k].failure;
      file.failure =
          couldNotBeRead
              ? *read[k].failure
              : RunTimeError(kWriteFault,
                             QStringLiteral("The old content is still there: %1").arg(content.name));
    }
  }
}

void FolderBatch::RequireArrived(const NewContent& content, const Sent& sent) {
  if (sent.failure) {
    throw NotCreated(*sent.failure);
  }
  try {
    trevane::RequireArrived(*target_, content.name, *sent.placed, content.content.size());
  } catch (const RunTimeError&) {
    if (content.request.mode == SinkRequest::Mode::New) {
      RemovePlaced(target_, content.name, sent.placed->entry.size, sent.placed->entry.modified);
    }
    throw;
  }
}

void FolderBatch::Copy(Result& result, const std::function<bool()>& isEnding, const Observer& observer) {
  Progress progress;
  std::vector<NewContent> contents;
  const auto tell = [&](qint64 done, const auto& nameOf) {
    progress.name = nameOf(static_cast<size_t>(done - 1));
    observer(progress);
  };
  BatchWatch::Receiver onRead;
  BatchWatch::Receiver onWritten;
  if (observer) {
    onRead = [&](const BatchStep& step) {
      progress.filesRead = std::min<qint64>(progress.filesRead + step.files, std::ssize(finished_));
      progress.bytesRead += step.bytes;
      tell(progress.filesRead, [this](size_t at) { return finished_[at].entry.name; });
    };
    onWritten = [&](const BatchStep& step) {
      progress.filesWritten = std::min<qint64>(progress.filesWritten + step.files, std::ssize(contents));
      progress.bytesWritten += step.bytes;
      tell(progress.filesWritten, [&contents](size_t at) { return contents[at].name; });
    };
  }
  std::vector<Sent> sent = Read(result, contents, onRead);
  if (contents.empty()) {
    return;
  }
  Write(contents, sent, isEnding, onWritten);
  RequireReplaced(contents, sent);
  std::optional<RunTimeError> failure;
  QString failedName;
  bool isAnyAlone = false;
  for (size_t i = 0; i < sent.size(); ++i) {
    const File& file = finished_[sent[i].file];
    if (sent[i].failure ? sent[i].failure->Number() == error::kExists : !sent[i].placed) {
      // The first one that is left goes alone in any case, so that the others get on.
      result.left[sent[i].file] = sent[i].failure || !isAnyAlone ? Left::Alone : Left::Behind;
      isAnyAlone = true;
      continue;
    }
    try {
      RequireArrived(contents[i], sent[i]);
      result.arrived[sent[i].file] = true;
      result.files.push_back({contents[i].name, contents[i].content.size(), sent[i].placed->entry.modified,
                              !file.replaced.has_value()});
    } catch (const RunTimeError& notArrived) {
      if (!failure) {
        failure = notArrived;
        failedName = file.entry.name;
      }
    }
  }
  if (failure) {
    // It stands before one that could not be read.
    result.failure.reset();
    Fail(result, failedName, *failure);
  }
}

}  // namespace trevane
