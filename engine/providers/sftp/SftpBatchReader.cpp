#include "engine/providers/sftp/SftpBatchReader.h"

#include "engine/files/ProviderError.h"
#include "engine/model/BatchWatch.h"
#include "engine/model/ContentSteps.h"
#include "engine/providers/sftp/SftpErrors.h"
#include "engine/providers/sftp/SftpItem.h"
#include "engine/providers/sftp/SftpSource.h"

#include <algorithm>
#include <deque>
#include <limits>
#include <optional>
#include <utility>

namespace trevane::sftp {
namespace {

/// Of one file of a batch, which is small.
constexpr std::size_t kBlocks = 1024;

class BatchReader {
 public:
  BatchReader(Server& server, const QStringList& paths)
      : server_(server),
        paths_(paths),
        results_(static_cast<std::size_t>(paths.size())),
        failedAt_(results_.size()) {
    for (std::size_t i = 0; i < results_.size(); ++i) {
      waiting_.push_back(i);
    }
  }

  std::vector<ReadResult> Run() {
    while (!waiting_.empty()) {
      ReadSome();
    }
    // Behind the first failure nothing was begun, as far as the caller knows.
    for (std::size_t i = failedAt_ + 1; i < results_.size(); ++i) {
      results_[i] = {};
    }
    return std::move(results_);
  }

 private:
  struct File {
    std::size_t at = 0;
    Place place;
    Request asked;
    Attributes item;
    OpenHandle handle;
    std::optional<BlockReader> blocks;
  };

  /// As the server tells it.
  [[nodiscard]] static qint64 SizeOf(const File& file) {
    constexpr auto kMost = static_cast<quint64>(std::numeric_limits<qint64>::max());
    return static_cast<qint64>(std::min(file.item.size.value_or(0), kMost));
  }

  /// Does `step` for each file that has no failure yet.
  template <class Step>
  void ForEach(std::vector<File>& files, const Step& step) {
    for (File& file : files) {
      ReadResult& result = results_[file.at];
      if (file.at >= failedAt_ || result.isTooLarge) {
        continue;
      }
      try {
        static_cast<void>(server_.Line(paths_[static_cast<qsizetype>(file.at)]));
        step(file, result);
      } catch (const RunTimeError& failure) {
        result = {std::nullopt, failure};
        failedAt_ = file.at;
        std::erase_if(waiting_, [&](std::size_t at) { return at > failedAt_; });
      }
    }
  }

  void ReadSome() {
    std::vector<File> files = TakeSome();
    ForEach(files, [this](File& file, ReadResult&) {
      file.place = server_.At(paths_[static_cast<qsizetype>(file.at)]);
      file.asked = server_.Line(file.place.text)->Stat(file.place.path);
    });
    ForEach(files, [this](File& file, ReadResult& result) { Open(file, result); });
    int open = 0;
    ForEach(files, [&](File& file, ReadResult&) { open += TakeHandle(file, open) ? 1 : 0; });
    ForEach(files, [this](File& file, ReadResult& result) {
      if (file.blocks) {
        TakeAll(file, result);
        file.blocks.reset();
        file.handle.Reset();
      }
    });
  }

  [[nodiscard]] std::vector<File> TakeSome() {
    const Session& line = *server_.Line({});
    const int most =
        std::clamp(line.Bounds().handles - line.OpenHandles(), 1, static_cast<int>(content::kMostFiles));
    std::vector<File> files;
    while (!waiting_.empty() && files.size() < static_cast<std::size_t>(most)) {
      files.emplace_back().at = waiting_.front();
      waiting_.pop_front();
    }
    return files;
  }

  void Open(File& file, ReadResult& result) {
    const std::optional<Attributes> item = Server::TakeLook(file.asked, file.place);
    if (!item) {
      Fail(error::kNotFound, file.place.text);
    }
    file.item = *item;
    RequireContent(file.item, file.place.text);
    const qint64 size = SizeOf(file);
    if (size > room_) {
      result.isTooLarge = true;
      return;
    }
    room_ -= size;
    result.traits = TraitsOf(file.item);
    file.asked = server_.Line(file.place.text)->Open(file.place.path, openflag::kRead);
  }

  /// False where the file waits for another turn.
  [[nodiscard]] bool TakeHandle(File& file, int open) {
    const std::shared_ptr<Session>& line = server_.Line(file.place.text);
    Outcome<HandleAnswer> opened = file.asked.Handle();
    if (opened) {
      file.handle = OpenHandle(line, opened->handle);
      file.blocks.emplace(*line, opened->handle, 0, file.item.size.value_or(0), kBlocks);
      file.blocks->Ask();
      return true;
    }
    const qint32 number = NumberOf(opened.status);
    // Servers have no number for too many open files: it is tried once more with fewer.
    const bool isOfNumber = number == kTooManyOpenFiles || number == providererror::kGeneralFailure;
    if (!isOfNumber || open == 0) {
      throw StatusError(opened.status, file.place.text);
    }
    if (!isLimited_) {
      isLimited_ = true;
      line->LimitHandles();
    }
    results_[file.at].traits.reset();
    room_ += SizeOf(file);
    waiting_.push_back(file.at);
    return false;
  }

  /// Reads no more than one block beyond the size that the file had: it may have no end.
  void TakeAll(File& file, ReadResult& result) {
    const qint64 size = SizeOf(file);
    const qint64 most = size + std::min<qint64>(room_, Limits::kBlock);
    // Not null: an empty file has been read, too.
    QByteArray content("");
    for (;;) {
      const QByteArray block = file.blocks->Take(file.place.text);
      if (block.isEmpty()) {
        break;
      }
      if (content.size() + block.size() > most) {
        result.isTooLarge = true;
        result.traits.reset();
        room_ += size;
        return;
      }
      content += block;
    }
    room_ -= std::max<qint64>(content.size() - size, 0);
    BatchWatch::FileDone(content.size());
    result.content = std::move(content);
  }

  Server& server_;
  const QStringList& paths_;
  std::vector<ReadResult> results_;
  std::deque<std::size_t> waiting_;
  /// The first file that failed; behind the last where none has.
  std::size_t failedAt_;
  /// For the contents of all files that are read, by the sizes that they have now.
  qint64 room_ = content::kMostBytes;
  bool isLimited_ = false;
};

}  // namespace

std::vector<ReadResult> ReadBatch(Server& server, const QStringList& paths) {
  return BatchReader(server, paths).Run();
}

}  // namespace trevane::sftp
