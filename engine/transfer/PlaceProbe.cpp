#include "engine/transfer/PlaceProbe.h"

#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "engine/files/NameLadder.h"
#include "engine/transfer/OpenedObjects.h"
#include "engine/transfer/OverlapGuard.h"
#include "engine/transfer/TransferSteps.h"

#include <algorithm>

namespace trevane {

namespace {

const QString kNothingShows = QStringLiteral("Nothing shows that both controllers are different places: ");

}  // namespace

PlaceProbe::~PlaceProbe() {
  TakeAway();
}

bool PlaceProbe::AreToldApart(IxoFile& item, IxoFile& folder) {
  return OverlapGuard::AreComparable(item, folder) && item.Identity().has_value() &&
         !folder.FolderIdentities().isEmpty();
}

RunTimeError PlaceProbe::OnePlace(const QString& name) {
  return RunTimeError(error::kInvalidParameter,
                      QStringLiteral("Both controllers lead to the same place: %1").arg(name));
}

RunTimeError PlaceProbe::NothingShows(const QString& why) {
  return RunTimeError(error::kNotSupported, kNothingShows + why);
}

void PlaceProbe::RequireNames(IxoFile& folder, const QString& name) {
  if (!folder.TakesFreshNames()) {
    throw NothingShows(name);
  }
}

void PlaceProbe::Place(const std::shared_ptr<IxoFile>& folder, const QString& target) {
  RequireNames(*folder, target);
  for (NameRung rung = NameRung::Long;;) {
    try {
      PlaceAs(folder, MakeTemporaryName(nameladder::FormOf(rung), target));
      return;
    } catch (const RunTimeError& failure) {
      const NameRung next = nameladder::After(rung, failure);
      if (next == rung || next == NameRung::InPlace) {
        throw RunTimeError(failure.Number(), kNothingShows + failure.Description());
      }
      rung = next;
    }
  }
}

void PlaceProbe::PlaceAs(const std::shared_ptr<IxoFile>& folder, const QString& name) {
  const auto probe = CreateNewFile(*folder, name);
  try {
    static_cast<void>(probe->OpenSink({})->Commit());
  } catch (...) {
    Discard(*probe);
    ReleaseObject(folder, probe);
    throw;
  }
  folder_ = folder;
  probe_ = probe;
  name_ = name;
}

bool PlaceProbe::IsIn(const Listing& entries) const {
  return std::ranges::any_of(entries,
                             [this](const FileEntry& entry) { return EqualIgnoringCase(entry.name, name_); });
}

bool PlaceProbe::IsIn(IxoFile& folder) const {
  return Holds(folder, name_);
}

bool PlaceProbe::Holds(IxoFile& folder, const QString& name) {
  folder.ForgetLearnt();
  const auto found = FindChild(folder, name);
  OpenedObjects opened;
  if (found) {
    opened.Borrow(folder, found);
  }
  return found != nullptr;
}

void PlaceProbe::TakeAway() noexcept {
  if (probe_) {
    Discard(*probe_);
    ReleaseObject(folder_, probe_);
    probe_.reset();
    folder_.reset();
  }
}

}  // namespace trevane
