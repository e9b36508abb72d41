#include "engine/files/NameLadder.h"

#include "engine/files/ProviderError.h"

namespace trevane {

namespace nameladder {

TemporaryForm FormOf(NameRung rung) {
  switch (rung) {
    case NameRung::Short:
      return TemporaryForm::Short;
    case NameRung::OwnExtension:
      return TemporaryForm::OwnExtension;
    case NameRung::Long:
    case NameRung::InPlace:
      break;
  }
  return TemporaryForm::Long;
}

bool IsOfName(const RunTimeError& failure) {
  return failure.Number() == error::kInvalidName;
}

NameRung After(NameRung rung, const RunTimeError& failure) {
  if (rung == NameRung::InPlace) {
    return rung;
  }
  switch (failure.Number()) {
    case error::kNotSupported:
    case error::kAccessDenied:
    case error::kInvalidName:
    case error::kInvalidParameter:
    case providererror::kNameTooLong:
      return static_cast<NameRung>(static_cast<int>(rung) + 1);
    default:
      return rung;
  }
}

}  // namespace nameladder

LearntNaming::Known LearntNaming::KnownOf(const QString& server, const QString& folder) const {
  const auto odd = folders_.constFind({server, folder});
  return odd != folders_.cend() ? *odd : servers_.value(server);
}

NameRung LearntNaming::FirstRung(const QString& server, const QString& folder) const {
  const std::lock_guard lock(mutex_);
  return KnownOf(server, folder).first;
}

bool LearntNaming::IsProved(const QString& server, const QString& folder) const {
  const std::lock_guard lock(mutex_);
  return KnownOf(server, folder).isProved;
}

void LearntNaming::Accept(const QString& server, const QString& folder, NameRung rung, bool isOfServer) {
  const std::lock_guard lock(mutex_);
  const Known now{.first = rung, .isProved = true};
  const auto odd = folders_.find({server, folder});
  if (odd != folders_.end()) {
    *odd = now;
  } else if (rung == NameRung::InPlace || (rung != servers_.value(server).first && !isOfServer)) {
    folders_.insert({server, folder}, now);
  } else {
    servers_[server] = now;
  }
}

void LearntNaming::Doubt(const QString& server, const QString& folder) {
  const std::lock_guard lock(mutex_);
  const auto odd = folders_.find({server, folder});
  (odd != folders_.end() ? *odd : servers_[server]).isProved = false;
}

}  // namespace trevane
