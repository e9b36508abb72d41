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

bool OverlapGuard::AreComparable(IxoFile& one, IxoFile& other) {
  const QString scope = one.IdentityScope();
  return !scope.isEmpty() && scope == other.IdentityScope();
}

std::optional<QStringList> OverlapGuard::HintedWay(IxoFile& source, IxoFile& destination) {
  const auto identity = source.Identity();
  const QStringList holding = identity ? destination.FolderIdentities() : QStringList();
  qsizetype at = identity ? holding.indexOf(*identity) : -1;
  if (at < 0) {
    return std::nullopt;
  }
  QStringList names;
  for (; at > 0; --at) {
    // The identity of a path goes on where that of the folder ends.
    QString name = holding[at - 1].mid(holding[at].size());
    if (name.startsWith(u'/') || name.startsWith(u'\\')) {
      name.remove(0, 1);
    }
    names.append(name);
  }
  return names;
}

void OverlapGuard::Begin(IxoFile& source, IxoFile& destination) {
  destinations_.clear();
  hasFilled_ = false;
  isComparable_ = AreComparable(source, destination);
  if (!isComparable_ || (source.Attribute() & attribute::kFolder) == 0) {
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
  if (identity && existing.Identity() == identity && AreComparable(source, existing)) {
    Refuse(name);
  }
}

void OverlapGuard::AddFilled(IxoFile& folder) {
  if (!isComparable_ || std::exchange(hasFilled_, true)) {
    return;
  }
  if (const auto identity = folder.Identity()) {
    destinations_.append(*identity);
  }
}

}  // namespace trevane
