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

NameRung After(NameRung rung, const RunTimeError& failure) {
  if (rung == NameRung::InPlace) {
    return rung;
  }
  switch (failure.Number()) {
    case error::kNotSupported:
      return NameRung::InPlace;
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

NameRung LearntNaming::FirstRung(const QString& server) const {
  const std::lock_guard lock(mutex_);
  return known_.value(server).first;
}

bool LearntNaming::IsProved(const QString& server) const {
  const std::lock_guard lock(mutex_);
  return known_.value(server).isProved;
}

void LearntNaming::Accept(const QString& server, NameRung rung) {
  const std::lock_guard lock(mutex_);
  known_[server] = {.first = rung, .isProved = true};
}

void LearntNaming::Doubt(const QString& server) {
  const std::lock_guard lock(mutex_);
  known_[server].isProved = false;
}

}  // namespace trevane
