#pragma once

#include "engine/model/ItemObserver.h"
#include "engine/transfer/LeftOutItem.h"
#include "engine/transfer/OpenedObjects.h"
#include "prompts/UserPrompts.h"

#include <QString>
#include <QStringList>

#include <memory>

namespace trevane {

/// What became of a copy between two controllers.
enum class Arrival {
  /// It ended with an error, or never began; some of it may have arrived.
  Failed,
  /// Everything under the source is known to stand at the destination.
  Everything,
  /// Something was skipped: by the user, or because it was a link to a folder or to nothing.
  Skipped,
  /// The user ended it.
  Cancelled
};

/// Copies a file, or a folder with everything below it, into a folder of another controller, item by item: a
/// file's content crosses whole, in one value. What is opened is released at once. Every failure is a
/// RunTimeError; what arrived before it stays, and an item that was created for what failed is gone again. No
/// link at the destination is written through, whenever it appears there.
class CrossControllerCopy {
 public:
  /// Called with the name of each item within a folder before it is copied; false ends the copy.
  using ItemObserver = trevane::ItemObserver;

  CrossControllerCopy(UserPrompts& prompts, ItemObserver observer)
      : prompts_(prompts), observer_(std::move(observer)) {}
  CrossControllerCopy(const CrossControllerCopy&) = delete;
  CrossControllerCopy& operator=(const CrossControllerCopy&) = delete;

  /// Copies `source` into `folder`, a folder of another controller, under `name`. An item onto itself, and a
  /// folder into itself or below, fails before anything is written.
  void Run(const std::shared_ptr<IxoFile>& source, const std::shared_ptr<IxoFile>& folder,
           const QString& name);

  [[nodiscard]] Arrival Outcome() const noexcept { return outcome_; }
  /// How many files and folders stand at the destination because of this copy.
  [[nodiscard]] qint64 ArrivedItems() const noexcept { return arrived_; }
  /// Not counting those that the user has skipped; also of a copy that failed.
  [[nodiscard]] const LeftOutItems& LeftOut() const noexcept { return leftOut_; }

 private:
  void RefuseBelowItself(IxoFile& source, IxoFile& folder);
  void CopyItem(const std::shared_ptr<IxoFile>& source, const std::shared_ptr<IxoFile>& folder,
                const QString& name, int& answer, OpenedObjects& opened);
  void CopyFile(IxoFile& source, const std::shared_ptr<IxoFile>& existing,
                const std::shared_ptr<IxoFile>& folder, const QString& name, OpenedObjects& opened);
  void CopyChildren(const std::shared_ptr<IxoFile>& source, const std::shared_ptr<IxoFile>& target,
                    int& answer);
  void Skip(Arrival how);
  void LeaveOut(const QString& name, const QString& reason);

  UserPrompts& prompts_;
  ItemObserver observer_;
  Arrival outcome_ = Arrival::Failed;
  qint64 arrived_ = 0;
  LeftOutItems leftOut_;
  /// Of the folder that the copy goes into, all above it, and the one that the copy itself made or fills:
  /// none of them is ever walked as a source.
  QStringList targetIdentities_;
  bool madeTop_ = false;
};

}  // namespace trevane
