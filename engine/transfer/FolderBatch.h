#pragma once

#include "base/RunTimeError.h"
#include "engine/model/BatchWatch.h"
#include "engine/model/IxoFile.h"
#include "engine/transfer/ArrivalCheck.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace trevane {

/// Files of one source folder that are copied together into a folder of another controller. Nothing has their
/// names there, or a file that is to be replaced.
class FolderBatch final {
 public:
  /// A file that was not copied, although nothing is wrong with it.
  enum class Left : quint8 {
    /// It was copied, or failed.
    No,
    /// It grew or shrank since it was listed, or something took its name meanwhile: it has to go alone, which
    /// looks at it anew.
    Alone,
    /// It was not begun because of one before it, which is left alone: it can go in another batch.
    Behind
  };

  struct Result {
    /// For each file in the order in which they were added: it was copied and verified.
    std::vector<bool> arrived;
    /// For each file.
    std::vector<Left> left;
    /// The first failure, and the file that it belongs to. Nothing is left of a file that failed.
    std::optional<RunTimeError> failure;
    QString failedName;
    /// Those that arrived.
    std::vector<ArrivedFile> files;
  };

  /// How far a batch is.
  struct Progress {
    /// The file that was done last, where they are done in order.
    QString name;
    qint64 filesRead = 0;
    qint64 filesWritten = 0;
    qint64 bytesRead = 0;
    qint64 bytesWritten = 0;
  };
  /// Called for each file that was read, and then for each that was written. It calls nothing of the engine,
  /// and throws nothing.
  using Observer = std::function<void(const Progress& progress)>;

  FolderBatch(std::shared_ptr<IxoFile> source, std::shared_ptr<IxoFile> target)
      : source_(std::move(source)), target_(std::move(target)) {}

  /// Files that are larger, or whose size is not known, are copied alone.
  [[nodiscard]] static bool CanHold(const FileEntry& file) noexcept;
  /// Whether there is room for it still.
  [[nodiscard]] bool HasRoomFor(const FileEntry& file) const noexcept;
  /// `replaced` is the file that has the name, as it was listed.
  void Add(const FileEntry& file, const QString& newName, const std::optional<FileEntry>& replaced = {});
  [[nodiscard]] bool IsEmpty() const noexcept { return files_.empty(); }
  [[nodiscard]] qsizetype Count() const noexcept { return static_cast<qsizetype>(files_.size()); }

  /// Copies what was added, and is empty then. Files that stand before one that failed, and others of the
  /// batch that were done with it, have arrived. When the writing fails as a whole while `isEnding`, the
  /// target is asked nothing more: the program would have to wait for it.
  [[nodiscard]] Result Finish(const std::function<bool()>& isEnding, const Observer& observer = {});
  /// What was added, in the same order, until the next Add.
  [[nodiscard]] FileEntry Finished(size_t at) const { return finished_[at].entry; }
  [[nodiscard]] std::optional<FileEntry> Replaced(size_t at) const { return finished_[at].replaced; }

 private:
  struct File {
    FileEntry entry;
    QString newName;
    std::optional<FileEntry> replaced;
  };
  /// A file of the batch whose content was read.
  struct Sent {
    size_t file;
    /// What WriteMany has told of it.
    std::optional<SeenItem> placed = {};
    std::optional<RunTimeError> failure = {};
  };

  void Copy(Result& result, const std::function<bool()>& isEnding, const Observer& observer);
  /// Fills `contents` with what can be written, and tells their files.
  [[nodiscard]] std::vector<Sent> Read(Result& result, std::vector<NewContent>& contents,
                                       const BatchWatch::Receiver& watch);
  void Write(const std::vector<NewContent>& contents, std::vector<Sent>& sent,
             const std::function<bool()>& isEnding, const BatchWatch::Receiver& watch);
  /// The writing failed as a whole: looks which files stand there with the content that was sent.
  void FindPlaced(const std::vector<NewContent>& contents, std::vector<Sent>& sent,
                  const RunTimeError& failure);
  /// Fails each replaced file whose old content is still there.
  void RequireReplaced(const std::vector<NewContent>& contents, std::vector<Sent>& sent);
  void RequireReplaced(const std::vector<NewContent>& contents, std::vector<Sent>& sent,
                       const QStringList& names, const std::vector<size_t>& places);
  void RequireArrived(const NewContent& content, const Sent& sent);
  /// The files of the target as they are now, by name.
  [[nodiscard]] std::vector<std::optional<SeenItem>> LookAt(const QStringList& names);
  /// Asked after the content was read.
  [[nodiscard]] FileTraits TraitsAfter(const FileEntry& file);

  std::shared_ptr<IxoFile> source_;
  std::shared_ptr<IxoFile> target_;
  std::vector<File> files_;
  std::vector<File> finished_;
  qint64 bytes_ = 0;
};

}  // namespace trevane
