#pragma once

#include "base/RunTimeError.h"
#include "engine/model/FileTraits.h"
#include "engine/model/SeenItem.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace trevane {

namespace content {
/// The sizes of pieces, in bytes: smaller ones cost calls, larger ones memory and a late Cancel.
inline constexpr qint64 kSmallestPiece = 256 * 1024;
inline constexpr qint64 kLargestPiece = 1024 * 1024;
/// The limits of one batch of files.
inline constexpr qsizetype kMostFiles = 64;
inline constexpr qint64 kMostBytes = 8 * 1024 * 1024;
}  // namespace content

/// Reads the content of a file from front to back; the destructor closes it. Every failure is a RunTimeError.
class ContentSource {
 public:
  ContentSource() = default;
  virtual ~ContentSource() = default;
  ContentSource(const ContentSource&) = delete;
  ContentSource& operator=(const ContentSource&) = delete;

  /// The next bytes, at most `most`, which is above 0. Fewer do not mean the end; none do.
  [[nodiscard]] virtual QByteArray Read(qint64 most) = 0;

  /// The traits of the file as it was when it was opened, where they cost no further look-up; nothing
  /// otherwise.
  [[nodiscard]] virtual std::optional<FileTraits> Traits() { return std::nullopt; }

  /// At the end: the file system tells another size than the content has. All of it has come, which was made
  /// sure of, but its source is not to be deleted. The default knows no such files.
  [[nodiscard]] virtual bool HadWrongSize() const { return false; }
};

/// Builds the new content of a file beside the old one. Destroyed without Commit it leaves nothing, and the
/// old content stays. Every failure is a RunTimeError, after which only the destructor may be called.
class ContentSink {
 public:
  ContentSink() = default;
  virtual ~ContentSink() = default;
  ContentSink(const ContentSink&) = delete;
  ContentSink& operator=(const ContentSink&) = delete;

  /// Appends a piece. It may be written later: a failure can be that of an earlier piece.
  virtual void Write(const QByteArray& piece) = 0;

  /// The name, in the file's folder, under which the content is built until Commit; it exists from the first
  /// piece on, also an empty one. Where another path leads to it, both folders are one. Nothing where there
  /// is no such item, which is the default: the content is collected elsewhere or written in place.
  [[nodiscard]] virtual std::optional<QString> TemporaryName() const { return std::nullopt; }

  /// Puts the content in place in one step, where the file system can, and returns the item that stands there
  /// then. The file system was asked for it after the file had its name. Fails with error::kExists where a
  /// new file was to be made and anything has its name by then.
  [[nodiscard]] virtual SeenItem Commit() = 0;
};

/// How a sink is opened.
struct SinkRequest {
  enum class Mode {
    /// Anything that has the name is left alone, and Commit fails with error::kExists.
    New,
    /// A file of that name is replaced and keeps its permissions; a missing one is made.
    Replace
  };
  Mode mode = Mode::New;
  /// Bytes; -1 when it is not known. Only for reserving space: another number of bytes is no failure.
  qint64 expectedSize = -1;
  /// For a new file all of them, for a replaced one its date, as far as the file system has such.
  FileTraits traits = {};
};

/// The result for one file of a batch. Neither content nor failure: it was not begun, because one before it
/// failed, or it is too large.
struct ReadResult {
  std::optional<QByteArray> content;
  std::optional<RunTimeError> failure;
  /// As ContentSource::Traits.
  std::optional<FileTraits> traits = {};
  /// With the files before it, it has more than content::kMostBytes by now, or it has far more bytes than the
  /// file system told of it: it was not read to its end, and those behind it were.
  bool isTooLarge = false;
};

/// A file of a batch that is to be written. With SinkRequest::Mode::Replace a folder looks anew at what has
/// the name, right before it writes: a folder or a link there fails with error::kExists and is left alone,
/// and a file that is missing by then is made as a new one. By a path alone nothing is looked at.
struct NewContent {
  /// Of the file in its folder; for FileSystem::WriteMany its path.
  QString name;
  QByteArray content = {};
  SinkRequest request = {};
};

/// The result for one file of a batch: what stands there now, as ContentSink::Commit returns it. Neither item
/// nor failure: it was not begun, because one before it failed.
struct WriteResult {
  std::optional<SeenItem> item;
  std::optional<RunTimeError> failure;
};

/// Takes the entries of a listing as they come. False ends the listing, which then returns without an error.
using ListingReceiver = std::function<bool(Listing&& entries)>;

}  // namespace trevane
