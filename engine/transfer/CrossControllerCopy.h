#pragma once

#include "engine/model/ItemObserver.h"
#include "engine/model/IxoFile.h"
#include "engine/transfer/ArrivalCheck.h"
#include "engine/transfer/LeftOutItem.h"
#include "engine/transfer/MadeItems.h"
#include "engine/transfer/OverlapGuard.h"
#include "engine/transfer/PlaceProbe.h"
#include "prompts/ItemQuestions.h"
#include "prompts/UserPrompts.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace trevane {

class OpenedObjects;

/// The result of a copy between two controllers.
enum class Arrival {
  /// It ended with an error, or never began; a part of it may have been copied.
  Failed,
  /// Everything under the source has been verified at the destination.
  Everything,
  /// Something was skipped by the user or left out.
  Skipped,
  /// The user ended it.
  Cancelled
};

/// Copies a file, or a folder with everything below it, into a folder of another controller. The target of a
/// folder is listed once, and names are worked on in order. Small files without a clash, and after "Yes All"
/// those that replace a file, gather in batches; a batch is finished and verified before a question, before a
/// folder below and at the folder's end, so that what stands before a question has arrived when it is asked.
/// Large files and those that were asked for go alone, piece by piece; at its end the folder is listed anew
/// to see that all has arrived. Memory does not depend on sizes. Depth costs no stack. Objects are released
/// as soon as their item is done. Every failure is a RunTimeError: items copied before it stay, and nothing
/// is left of the item that failed. A link is copied as a link or left out, and no link at the destination is
/// written through, whenever it appears there.
class CrossControllerCopy {
 public:
  /// Called before each item within a folder, and while a file is copied; false ends the copy. Nothing is
  /// left of a file that was not finished.
  using ItemObserver = trevane::ItemObserver;
  /// Gives the folder that holds the source. It is asked for only where nothing else tells both sides apart.
  using FolderFinder = std::function<std::shared_ptr<IxoFile>()>;

  CrossControllerCopy(UserPrompts& prompts, ItemObserver observer);
  ~CrossControllerCopy();
  CrossControllerCopy(const CrossControllerCopy&) = delete;
  CrossControllerCopy& operator=(const CrossControllerCopy&) = delete;

  /// It is for a move: the caller compares all that arrived anew before it deletes the source. It is not
  /// asked for twice then, as long as nothing was left out.
  void ComparedByCaller() noexcept { isCompared_ = true; }

  /// Copies `source` into `folder`, a folder of another controller, under `name`. An item onto itself, and a
  /// folder into itself or below, fails before anything is written; where the file systems have no
  /// identities, a file of a fresh name shows it. Where nothing shows it a file that is built beside the old
  /// one is copied all the same, because that is safe; a move then leaves its source, and LeftOut tells so.
  void Run(const std::shared_ptr<IxoFile>& source, const std::shared_ptr<IxoFile>& folder,
           const QString& name, const FolderFinder& sourceFolder = {});

  [[nodiscard]] Arrival Outcome() const noexcept { return outcome_; }
  /// The number of files and folders that this copy has written.
  [[nodiscard]] qint64 ArrivedItems() const noexcept { return arrived_; }
  /// Not counting those that the user has skipped; also of a copy that failed.
  [[nodiscard]] const LeftOutItems& LeftOut() const noexcept { return leftOut_; }

 private:
  struct Level;
  enum class Gathering {
    Gathered,
    /// It has to go alone.
    GoesAlone,
    /// The batch has left files that stand before it.
    Later
  };

  /// `wasTaken`: another program took the name of the new file while its content was copied.
  void CopyItem(const std::shared_ptr<IxoFile>& source, const std::shared_ptr<IxoFile>& folder,
                const QString& name, OpenedObjects&& opened, bool wasTaken = false);
  void CopyLinkItem(IxoFile& source, const std::shared_ptr<IxoFile>& folder, const QString& name);
  /// Asks the user. When it may not the item is skipped.
  [[nodiscard]] bool MayReplace(IxoFile& source, IxoFile& folder, const QString& name);
  void CopyFile(IxoFile& source, const std::shared_ptr<IxoFile>& existing,
                const std::shared_ptr<IxoFile>& folder, const QString& name, OpenedObjects& opened);
  void EnterFolder(const std::shared_ptr<IxoFile>& source, const std::shared_ptr<IxoFile>& existing,
                   const std::shared_ptr<IxoFile>& folder, const QString& name, OpenedObjects&& opened);
  /// Makes a folder that no listing has told of, without looking for it first, and enters it. False where
  /// something has its name, or the engine looks itself: nothing has been done then.
  [[nodiscard]] bool CopyNewFolder(const std::shared_ptr<IxoFile>& source,
                                   const std::shared_ptr<IxoFile>& folder, const QString& name,
                                   OpenedObjects& opened);
  /// `traits` are those of a new folder; nothing for one that was there.
  void FillFolder(const std::shared_ptr<IxoFile>& source, const std::shared_ptr<IxoFile>& target,
                  const QString& name, OpenedObjects&& opened, const std::optional<FileTraits>& traits);
  void CopyBelow();
  /// Copies or gathers the next entry of the level, or leaves it to be the next one again.
  void CopyNext(Level& level, const FileEntry& entry);
  /// Copies an item that is looked at anew on both sides.
  void CopyAlone(Level& level, const FileEntry& entry);
  /// Gathers a file that nothing is in the way of, or that replaces one without a question.
  [[nodiscard]] Gathering Gather(Level& level, const FileEntry& entry);
  /// Both are one file, under two names or on two controllers.
  [[nodiscard]] static bool IsSameFile(Level& level, const QString& name);
  /// False where files were left, which come before the next entry now, and after Cancel.
  [[nodiscard]] bool FinishBatch(Level& level);
  void LearnTarget(Level& level);
  void NoteArrived(const ArrivedFile& file);
  /// At the end of a folder: asks anew for what was copied into it.
  void RequireArrived(Level& level);
  void ReadFolder(Level& level, bool isNew);
  /// The probe, before anything below a folder of the source is listed.
  void PlaceInTop();
  /// Identities that are not comparable hint that both are one place: fails then, before anything is written
  /// or asked, unless a file of a fresh name shows that they are not. The first is for a folder, the second
  /// for an item that has the name of the source.
  void RefuseHintedFolder(const std::shared_ptr<IxoFile>& source, const std::shared_ptr<IxoFile>& folder,
                          const QString& name);
  void RefuseHinted(IxoFile& source, IxoFile& existing, const std::shared_ptr<IxoFile>& folder,
                    const QString& name);
  /// Fails unless a file of a fresh name in `folder` is not in `from`, which is null, with the reason, where
  /// it cannot be asked.
  void RequireApart(const std::shared_ptr<IxoFile>& folder, const std::shared_ptr<IxoFile>& from,
                    const QString& name, QString reason);
  /// The folder that holds the source; null, and the reason, where it cannot be opened.
  [[nodiscard]] std::shared_ptr<IxoFile> SourceFolder(QString& reason) const;
  /// Whether `name`, which was made at the destination, or the probe where there is none, is in `folder`.
  /// Nothing, and the reason, where that cannot be asked.
  [[nodiscard]] std::optional<bool> IsIn(IxoFile& folder, const std::optional<QString>& name,
                                         QString& reason) const;
  /// Takes away what this copy has made, and nothing else.
  void TakeBackMade() noexcept;
  [[nodiscard]] QString FolderBelowTop() const;
  /// Takes a folder away again that this copy has made, where it is empty.
  void RemoveIfNew(const std::shared_ptr<IxoFile>& folder, bool isNew) noexcept;
  /// After a question the rest of a folder is listed anew, once, instead of asking for each of its items.
  void RefreshEntries(Level& level);
  [[nodiscard]] bool MayGoOn(const QString& name, qint64 bytes, qint64 size, qint64 filesOfBatch = 0);
  void Skip(Arrival how);
  void LeaveOut(const QString& name, const QString& reason, bool isCopied = false);
  void TellWrongSize(const ArrivedFile& file);

  UserPrompts& prompts_;
  ItemObserver observer_;
  FolderFinder sourceFolder_;
  Arrival outcome_ = Arrival::Failed;
  qint64 arrived_ = 0;
  LeftOutItems leftOut_;
  OverlapGuard overlap_;
  ItemAnswer answer_ = ItemAnswer::Yes;
  /// How many questions were asked: what was learnt before the last one may have changed.
  int questions_ = 0;
  /// Identities do not tell whether both sides are one place.
  bool needsProof_ = false;
  bool isCompared_ = false;
  PlaceProbe probe_;
  /// Kept only while a probe may still be found.
  MadeItems made_;
  /// From the top to the folder that is worked in.
  std::vector<std::unique_ptr<Level>> levels_;
  qint64 files_ = 0;
  qint64 filesKnown_ = 0;
};

}  // namespace trevane
