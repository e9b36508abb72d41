#pragma once

#include "engine/model/IxoFile.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace trevane {

/// Keeps a copy from copying an item onto itself, or a folder into itself or below, whatever addresses they
/// were reached by. It compares identities; where there are none, or those of both sides are not comparable,
/// it refuses nothing. What it refuses fails with error::kInvalidParameter.
class OverlapGuard final {
 public:
  /// Whether equal identities are one item, and different ones are two.
  [[nodiscard]] static bool AreComparable(IxoFile& one, IxoFile& other);
  /// Where identities hint that `destination` is the folder `source` or below it: the names that lead from
  /// the source to it.
  [[nodiscard]] static std::optional<QStringList> HintedWay(IxoFile& source, IxoFile& destination);

  /// Before anything is written: refuses a folder that is `destination` or holds it.
  void Begin(IxoFile& source, IxoFile& destination);
  /// Refuses a folder below the source that is the destination, holds it, or is the copy itself.
  void RefuseDestination(IxoFile& folder, const QString& name) const;
  /// Refuses an existing item that is the source: the copy would replace its own source.
  static void RefuseSame(IxoFile& source, IxoFile& existing, const QString& name);
  /// The copy fills this folder. Only the first one of a copy counts: the others are below it.
  void AddFilled(IxoFile& folder);

 private:
  /// Of the destination, of all folders above it, and of the top folder that the copy fills.
  QStringList destinations_;
  bool isComparable_ = false;
  bool hasFilled_ = false;
};

}  // namespace trevane
