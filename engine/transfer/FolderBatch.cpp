#include "engine/transfer/FolderBatch.h"

#include "engine/transfer/OpenedObjects.h"
#include "engine/transfer/TransferSteps.h"

#include <cstdlib>
#include <utility>

namespace trevane {

bool FolderBatch::CanHold(const FileEntry& file) noexcept {
  return file.size >= 0 && file.size <= content::kMostBytes && !file.IsLink() && !file.IsFolder();
}

bool FolderBatch::HasRoomFor(const FileEntry& file) const noexcept {
  return Count() < content::kMostFiles && bytes_ + file.size <= content::kMostBytes;
}

void FolderBatch::Add(const FileEntry& file, const QString& newName) {
  files_.push_back({file, newName});
  bytes_ += file.size;
}

FolderBatch::Result FolderBatch::Finish() {
  const std::vector<File> files = std::exchange(files_, {});
  bytes_ = 0;
  Result result;
  result.arrived.assign(files.size(), false);
  if (!files.empty()) {
    try {
      Copy(files, result);
    } catch (const RunTimeError& failure) {
      result.failure = failure;
      result.failedName = files.front().entry.name;
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

void FolderBatch::Copy(const std::vector<File>& files, Result& result) {
  const auto fail = [&](size_t at, const RunTimeError& failure) {
    if (!result.failure) {
      result.failure = failure;
      result.failedName = files[at].entry.name;
    }
  };
  QStringList names;
  for (const File& file : files) {
    names.append(file.entry.name);
  }
  std::vector<ReadResult> read = source_->ReadMany(names);
  read.resize(files.size());
  std::vector<NewContent> contents;
  for (size_t i = 0; i < files.size(); ++i) {
    // Only what stands before a file that cannot be read is written: nothing new begins after a failure.
    try {
      if (read[i].failure) {
        throw *read[i].failure;
      }
      const FileEntry& entry = files[i].entry;
      RequireRead(read[i].content ? read[i].content->size() : -1, read[i].content ? entry.size : 0,
                  entry.name);
      SinkRequest request;
      request.expectedSize = read[i].content->size();
      request.traits = read[i].traits ? *read[i].traits : TraitsAfter(files[i].entry);
      contents.push_back({files[i].newName, *std::exchange(read[i].content, std::nullopt), request});
    } catch (const RunTimeError& failure) {
      fail(i, failure);
      break;
    }
  }
  if (contents.empty()) {
    return;
  }
  std::vector<WriteResult> written = target_->WriteMany(contents);
  written.resize(contents.size());
  std::optional<RunTimeError> failure;
  size_t failedAt = 0;
  for (size_t i = 0; i < contents.size(); ++i) {
    try {
      if (written[i].failure) {
        throw NotCreated(*written[i].failure);
      }
      if (!written[i].item) {
        // Not begun, because of one before it.
        throw RunTimeError(-1, QStringLiteral("The item could not be created: %1").arg(contents[i].name));
      }
      try {
        RequireArrived(*target_, contents[i].name, *written[i].item, contents[i].content.size());
      } catch (const RunTimeError&) {
        RemovePlaced(target_, contents[i].name, written[i].item->entry.size, written[i].item->entry.modified);
        throw;
      }
      result.arrived[i] = true;
      result.files.push_back(
          {contents[i].name, contents[i].content.size(), written[i].item->entry.modified, true});
    } catch (const RunTimeError& notArrived) {
      if (!failure) {
        failure = notArrived;
        failedAt = i;
      }
    }
  }
  if (failure) {
    // It stands before one that could not be read.
    result.failure.reset();
    fail(failedAt, *failure);
  }
}

}  // namespace trevane
