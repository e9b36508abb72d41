#pragma once

#include "engine/model/ItemObserver.h"
#include "engine/transfer/LeftOutItem.h"
#include "engine/transfer/OpenedObjects.h"
#include "engine/transfer/OverlapGuard.h"
#include "prompts/ItemQuestions.h"
#include "prompts/UserPrompts.h"

#include <QString>

#include <memory>

namespace trevane {

/// The result of a copy between two controllers.
enum class Arrival {
  /// It ended with an error, or never began; a part of it may have been copied.
  Failed,
  /// Everything under the source has been verified at the destination.
  Everything,
  /// Something was skipped: by the user, or because it was a link to a folder or to nothing.
  Skipped,
  /// The user ended it.
  Cancelled
};

/// Copies a file, or a folder with everything below it, into a folder of another controller, item by item.
/// The content of a file is read and written as one value. Objects are released as soon as their item is
/// done. Every failure is a RunTimeError: items copied before it stay, and the item that failed is removed
/// again. No link at the destination is written through, whenever it appears there.
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
  /// The number of files and folders that this copy has written.
  [[nodiscard]] qint64 ArrivedItems() const noexcept { return arrived_; }
  /// Not counting those that the user has skipped; also of a copy that failed.
  [[nodiscard]] const LeftOutItems& LeftOut() const noexcept { return leftOut_; }

 private:
  void CopyItem(const std::shared_ptr<IxoFile>& source, const std::shared_ptr<IxoFile>& folder,
                const QString& name, ItemAnswer& answer, OpenedObjects& opened);
  void CopyFile(IxoFile& source, const std::shared_ptr<IxoFile>& existing,
                const std::shared_ptr<IxoFile>& folder, const QString& name, OpenedObjects& opened);
  void CopyChildren(const std::shared_ptr<IxoFile>& source, const std::shared_ptr<IxoFile>& target,
                    ItemAnswer& answer);
  void Skip(Arrival how);
  void LeaveOut(const QString& name, const QString& reason);

  UserPrompts& prompts_;
  ItemObserver observer_;
  Arrival outcome_ = Arrival::Failed;
  qint64 arrived_ = 0;
  LeftOutItems leftOut_;
  OverlapGuard overlap_;
};

}  // namespace trevane
