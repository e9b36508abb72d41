#pragma once

#include "engine/fetched/FetchedRecord.h"
#include "engine/fetched/LocalContent.h"

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QStringList>

#include <memory>

namespace trevane {

class FetchedFolder;

/// One fetched file: where it is, and whether it was changed on this computer. It makes no call of the
/// engine.
class FetchedFile final {
 public:
  /// Milliseconds without a write, after which the writing program is taken to be done.
  static constexpr qint64 kQuiet = 1000;
  /// Bytes that may be read at once at the end of the program.
  static constexpr qint64 kMostAtOnce = 64 * 1024 * 1024;

  FetchedFile(std::shared_ptr<FetchedFolder> folder, QString item, FetchedRecord record);
  FetchedFile(const FetchedFile&) = delete;
  FetchedFile& operator=(const FetchedFile&) = delete;

  [[nodiscard]] const FetchedRecord& Record() const noexcept { return record_; }
  [[nodiscard]] QString Path() const;
  [[nodiscard]] QString FolderPath() const;

  /// Both sides have the same content now: `record` is written beside the file. Fails with a RunTimeError.
  void Renew(const FetchedRecord& record);
  /// As Renew after it was put back. Where the record cannot be written, a later run of the program offers
  /// what is there already.
  void WasPutBack(const FetchedRecord& record);
  /// The file was put there as its record describes it.
  void WasFetched();

  /// The file was written to at `now`. Times are milliseconds of any one clock.
  void NoteWrite(qint64 now);
  /// The same for something in its folder, which may be it.
  void NoteWriteBeside(qint64 now);
  /// Looks whether it was written to, and after a while whether its content is another one. True while it is
  /// read for that and wants to go on.
  bool Advance(qint64 now);

  /// The same at once, where the file is not too large for that.
  void LookNow();

  /// Its content is known to be another one than the controller's was.
  [[nodiscard]] bool IsChanged() const { return !current_.isEmpty() && current_ != record_.hash; }
  /// Nothing shows that it was written to since its content was known to be the controller's.
  [[nodiscard]] bool IsUntouched() const;
  /// It is there, and is not known to be the controller's.
  [[nodiscard]] bool MayBeChanged() const { return StampOf(Path()).exists && !IsUntouched(); }
  /// The user is to be asked whether it is put back.
  [[nodiscard]] bool IsToBeAsked() const {
    return lastWrite_ < 0 && IsChanged() && !asked_.contains(current_) && !waits_;
  }
  /// SHA-256 of the content when it was looked at last; empty where there is none.
  [[nodiscard]] const QByteArray& Content() const noexcept { return current_; }
  /// The user was asked about this content: not again, until it is offered.
  void WasAsked(const QByteArray& content) {
    asked_.insert(content);
    isOffered_ = false;
  }

  /// An earlier run of the program has left it: it is offered when its controller is connected.
  void Recovered(qint64 now);
  [[nodiscard]] bool IsRecovered() const noexcept { return isRecovered_; }
  /// It is in use again.
  void TakeOver() noexcept { isRecovered_ = false; }
  /// Its controller was connected: a change that was not put back is asked about once more.
  void Offer();
  [[nodiscard]] bool IsOffered() const noexcept { return isOffered_; }

  /// It was looked at to the end.
  [[nodiscard]] bool IsSettled() const noexcept { return lastWrite_ < 0; }

  /// What programs have put beside it, which may be edits that are not saved yet.
  [[nodiscard]] QStringList Beside() const;
  /// Its content is the controller's; it is read for that, unless it is too large.
  [[nodiscard]] bool IsCertainlyUnchanged() const;

  /// Removes what is on the disk. False when it holds anything that nobody has elsewhere, or a program shows
  /// that it has the file open: all of it stays.
  bool RemoveUnlessChanged();

 private:
  std::shared_ptr<FetchedFolder> folder_;
  QString item_;
  FetchedRecord record_;
  /// As it was when it was looked at last.
  LocalStamp seen_;
  /// -1 after it was looked at.
  qint64 lastWrite_ = -1;
  std::unique_ptr<LocalHash> looking_;
  QByteArray current_;
  /// The contents that the user was asked about since both sides had the same one.
  QSet<QByteArray> asked_;
  bool isRecovered_ = false;
  bool waits_ = false;
  bool isOffered_ = false;
};

}  // namespace trevane
