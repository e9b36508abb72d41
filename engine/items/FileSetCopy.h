#pragma once

#include "engine/items/AddressResolver.h"
#include "engine/items/FileAccess.h"
#include "engine/model/IxoFile.h"
#include "engine/transfer/FolderBatch.h"
#include "engine/transfer/HeldItem.h"
#include "engine/transfer/MoveRecord.h"

#include <QHash>
#include <QSet>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace trevane {

/// Copies or moves single files of one folder into another one, in batches. It takes only files that clash
/// with nothing; the result for each is that of a clsIxoFile of its own. Between two controllers both folders
/// are listed once. Within one its own copy is used, and nothing is listed: a file that cannot be copied is
/// left to a clsIxoFile. No member raises an error.
class FileSetCopy final {
 public:
  enum class Scope { BetweenControllers, WithinOne };

  struct Item {
    QString name;
    /// It was copied, and its source deleted where it was to be moved.
    bool done = false;
    /// Its source is known not to be there any more.
    bool gone = false;
    /// It was not copied, and nothing is wrong with it: it has to go alone now, in its place in the order.
    bool isLeft = false;
  };
  struct Outcome {
    std::vector<Item> items;
    /// The first failure: its number, 0 for none, the reason and the file.
    qint32 number = 0;
    QString reason = {};
    QString failedName = {};
  };

  /// How far the batch under way is; as FolderBatch::Observer.
  using Progress = FolderBatch::Progress;
  using Observer = FolderBatch::Observer;
  /// False ends a copy within one controller before the next file.
  using ItemReceiver = std::function<bool(const Item& item)>;

  /// Addresses of folders.
  FileSetCopy(const FileAccess& files, const QString& from, const QString& into, bool move,
              Scope scope = Scope::BetweenControllers);
  FileSetCopy(const FileSetCopy&) = delete;
  FileSetCopy& operator=(const FileSetCopy&) = delete;

  /// Whether both folders could be opened and listed, and are known to be different ones; within one
  /// controller only on disks of this computer. Otherwise each file has to go alone, which tells the reason.
  [[nodiscard]] bool IsOpen() const noexcept { return batch_.has_value(); }
  [[nodiscard]] bool IsBetween(const QString& from, const QString& into) const {
    return from == from_ && into == into_;
  }

  /// Whether the file can go in a batch.
  [[nodiscard]] bool CanTake(const QString& name);
  /// Whether the destination has something of that name, so that there will be a question.
  [[nodiscard]] bool IsTaken(const QString& name) const;
  /// In bytes, as it was listed; nothing where that is not known.
  [[nodiscard]] std::optional<qint64> SizeOf(const QString& name) const;
  /// Whether the batch under way has room for it.
  [[nodiscard]] bool HasRoomFor(const QString& name) const;
  /// Set when opening or adding was cancelled, or a side does not answer: nothing more is begun then.
  [[nodiscard]] const std::optional<RunTimeError>& End() const noexcept { return end_; }
  /// Adds it to the batch under way. False when it could not be looked at: it goes alone, unless End tells
  /// that nothing goes on.
  [[nodiscard]] bool Add(const QString& name);
  [[nodiscard]] bool IsEmpty() const noexcept { return names_.isEmpty(); }
  /// Finishes the batch under way: copies, flushes once, and then deletes each source that is still what it
  /// was. The receiver is called for each file in order, as soon as its source has been deleted. After a
  /// failure that ends all calls no source is deleted any more. Within one controller the receiver is not
  /// called for the first file that could not be copied and those behind it: it is taken from now on. Nor is
  /// it called for those at the end that were not begun because of one that has to go alone: they can go in
  /// another batch, of a copy that is opened anew.
  [[nodiscard]] Outcome Finish(const ItemReceiver& receive, const Observer& observer = {});

 private:
  void Open();
  /// Within one controller: learns what the source is, which the listing tells otherwise.
  void LookAt(const QString& name);
  [[nodiscard]] Outcome FinishWithin(const QStringList& names, const ItemReceiver& receive,
                                     const Observer& observer);
  /// False when it has to go alone.
  [[nodiscard]] bool CopyWithin(const QString& name, Outcome& outcome);
  /// The same where one listing tells all that is known of the sources.
  void DeleteListed(Outcome& outcome);
  [[nodiscard]] Listing ArrivedSources(Outcome& outcome);
  [[nodiscard]] bool ListingIsProof() const;
  void NoteEnd(const RunTimeError& failure);
  /// For a copy: asks anew for what arrived.
  void RequireArrived(Outcome& outcome, const std::vector<ArrivedFile>& files);
  void DeleteSources(Outcome& outcome, const std::function<void()>& tell);
  static void SetFailure(Outcome& outcome, const RunTimeError& failure, const QString& name);

  FileAccess files_;
  QString from_;
  QString into_;
  bool move_;
  Scope scope_;
  AddressResolver source_;
  AddressResolver target_;
  std::optional<HeldItem> heldSource_;
  std::optional<HeldItem> heldTarget_;
  /// The address of a link to a folder was given, which is followed.
  bool targetIsLink_ = false;
  QHash<QString, FileEntry> entries_;
  /// In lower case.
  QSet<QString> taken_;
  std::optional<FolderBatch> batch_;
  std::optional<RunTimeError> end_;
  QStringList names_;
  std::vector<MoveRecord> records_;
};

}  // namespace trevane
