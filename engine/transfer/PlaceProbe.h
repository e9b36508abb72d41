#pragma once

#include "engine/model/IxoFile.h"

#include <QString>

#include <memory>

namespace trevane {

/// Shows whether two folders of different controllers are one place where no identity tells: a file of a
/// fresh name in one of them is looked for in the other.
class PlaceProbe final {
 public:
  PlaceProbe() = default;
  ~PlaceProbe();
  PlaceProbe(const PlaceProbe&) = delete;
  PlaceProbe& operator=(const PlaceProbe&) = delete;

  /// Whether identities tell that both are different places, or would tell that they are one.
  [[nodiscard]] static bool AreToldApart(IxoFile& item, IxoFile& folder);
  /// Whether a name that was made on the other side is in this folder; asked anew.
  [[nodiscard]] static bool Holds(IxoFile& folder, const QString& name);
  [[nodiscard]] static RunTimeError OnePlace(const QString& name);

  /// `why` names the item, or the reason.
  [[nodiscard]] static RunTimeError NothingShows(const QString& why);

  /// Fails where no file of a fresh name can stand in `folder`, so that nothing can show it for `name`.
  static void RequireNames(IxoFile& folder, const QString& name);

  /// Makes the file in `folder`, under the clearest temporary name that is taken there. `target` has an
  /// extension that is taken. When that fails nothing can show that the two are different.
  void Place(const std::shared_ptr<IxoFile>& folder, const QString& target = {});
  [[nodiscard]] bool IsPlaced() const noexcept { return probe_ != nullptr; }
  [[nodiscard]] bool IsIn(const Listing& entries) const;
  [[nodiscard]] bool IsIn(IxoFile& folder) const;
  /// Deletes it. A failure is tried once more.
  void TakeAway() noexcept;

 private:
  void PlaceAs(const std::shared_ptr<IxoFile>& folder, const QString& name);

  std::shared_ptr<IxoFile> folder_;
  std::shared_ptr<IxoFile> probe_;
  QString name_;
};

}  // namespace trevane
