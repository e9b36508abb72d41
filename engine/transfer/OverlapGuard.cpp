#include "engine/transfer/OverlapGuard.h"

#include "base/RunTimeError.h"

#include <utility>

namespace trevane {

namespace {

[[noreturn]] void Refuse(const QString& path) {
  throw RunTimeError(error::kInvalidParameter,
                     QStringLiteral("An item cannot be copied onto or into itself: %1").arg(path));
}

}  // namespace

void OverlapGuard::Begin(IxoFile& source, IxoFile& destination) {
  destinations_.clear();
  hasFilled_ = false;
  if ((source.Attribute() & attribute::kFolder) == 0) {
    return;
  }
  destinations_ = destination.FolderIdentities();
  const auto identity = source.Identity();
  if (identity && destinations_.contains(*identity)) {
    Refuse(destination.Path() + destination.Name());
  }
}

void OverlapGuard::RefuseDestination(IxoFile& folder, const QString& name) const {
  if (destinations_.isEmpty()) {
    return;
  }
  const auto identity = folder.Identity();
  if (identity && destinations_.contains(*identity)) {
    Refuse(name);
  }
}

void OverlapGuard::RefuseSame(IxoFile& source, IxoFile& existing, const QString& name) {
  const auto identity = source.Identity();
  if (identity && existing.Identity() == identity) {
    Refuse(name);
  }
}

void OverlapGuard::AddFilled(IxoFile& folder) {
  if (std::exchange(hasFilled_, true)) {
    return;
  }
  if (const auto identity = folder.Identity()) {
    destinations_.append(*identity);
  }
}

}  // namespace trevane
