#include "engine/transfer/PlaceProbe.h"

#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "engine/transfer/OpenedObjects.h"
#include "engine/transfer/TransferSteps.h"

#include <QRandomGenerator>

#include <algorithm>

namespace trevane {

namespace {

/// It fits also where names have eight characters and three more.
QString FreshName() {
  return QStringLiteral("TRV%1.TMP")
      .arg(QRandomGenerator::global()->bounded(0x100000U), 5, 16, QLatin1Char('0'))
      .toUpper();
}

}  // namespace

PlaceProbe::~PlaceProbe() {
  TakeAway();
}

bool PlaceProbe::AreToldApart(IxoFile& item, IxoFile& folder) {
  return item.Identity().has_value() && !folder.FolderIdentities().isEmpty();
}

RunTimeError PlaceProbe::OnePlace(const QString& name) {
  return RunTimeError(error::kInvalidParameter,
                      QStringLiteral("Both controllers lead to the same place: %1").arg(name));
}

void PlaceProbe::Place(const std::shared_ptr<IxoFile>& folder) {
  const QString name = FreshName();
  const auto probe = CreateNewFile(*folder, name);
  try {
    static_cast<void>(probe->OpenSink({})->Commit());
  } catch (const RunTimeError& failure) {
    Discard(*probe);
    ReleaseObject(folder, probe);
    throw RunTimeError(
        failure.Number(),
        QStringLiteral("Nothing shows that both controllers are different places: ") + failure.Description());
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
