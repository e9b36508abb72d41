#pragma once

#include "engine/model/ItemObserver.h"
#include "engine/model/IxoFile.h"
#include "engine/transfer/ArrivalCheck.h"

#include <QString>

#include <functional>
#include <memory>

namespace trevane {

/// Copies the content of one file to another controller, piece by piece, and verifies it. Every failure is a
/// RunTimeError: nothing is left of a new file then, and an old one has its old content. The pieces' observer
/// answers false to end it, which fails with error::kCancelled.
class FileTransfer final {
 public:
  using PieceObserver = std::function<bool(qint64 bytes, qint64 size)>;
  /// Called with the name under which the new content is built beside an existing file, before it takes the
  /// place of the old; nothing where there is no such name, and then nothing has been written. What it raises
  /// ends the copy.
  using PlaceCheck = std::function<void(const std::optional<QString>& temporaryName)>;

  FileTransfer(IxoFile& source, const QString& name, PieceObserver observer)
      : source_(source), name_(name), observer_(std::move(observer)) {}
  FileTransfer(const FileTransfer&) = delete;
  FileTransfer& operator=(const FileTransfer&) = delete;

  /// `created` was created in `folder` and has no content yet.
  ArrivedFile CopyTo(IxoFile& created, IxoFile& folder);
  /// A file of `folder`, which keeps its permissions.
  ArrivedFile Replace(IxoFile& existing, IxoFile& folder, const PlaceCheck& check);

 private:
  /// The traits that the copy of a file keeps.
  [[nodiscard]] FileTraits Traits();
  /// Returns the number of bytes.
  qint64 Pump(ContentSource& from, ContentSink& to);
  [[nodiscard]] QByteArray NextPiece(ContentSource& from) const;

  IxoFile& source_;
  QString name_;
  PieceObserver observer_;
  /// Failures while this is set are those of the destination.
  bool writing_ = false;
};

}  // namespace trevane
