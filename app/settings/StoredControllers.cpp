#include "app/settings/StoredControllers.h"

#include "app/settings/StoredValues.h"
#include "app/settings/clsProfile.h"

namespace trevane {

namespace {

struct Field {
  StoredValue inSettings;
  StoredValue inWorkspace;
  const QString& (clsIxoCtrl::*value)() const noexcept;
  void (clsIxoCtrl::*setValue)(const QString&);

  [[nodiscard]] const StoredValueRow& Row(ControllerFile file) const {
    return RowOf(file == ControllerFile::Settings ? inSettings : inWorkspace);
  }
};

constexpr Field kFields[] = {
    {StoredValue::RememberedName, StoredValue::WorkspaceName, &clsIxoCtrl::CtrlName,
     &clsIxoCtrl::SetCtrlName},
    {StoredValue::RememberedProvider, StoredValue::WorkspaceProvider, &clsIxoCtrl::ProvName,
     &clsIxoCtrl::SetProvName},
    {StoredValue::RememberedMachine, StoredValue::WorkspaceMachine, &clsIxoCtrl::MachineName,
     &clsIxoCtrl::SetMachineName},
    {StoredValue::RememberedOption, StoredValue::WorkspaceOption, &clsIxoCtrl::CtrlOption,
     &clsIxoCtrl::SetCtrlOption},
    {StoredValue::RememberedRoot, StoredValue::WorkspaceRoot, &clsIxoCtrl::Root, &clsIxoCtrl::SetRoot},
};

}  // namespace

clsIxoCtrl ReadController(const clsProfile& profile, const QString& section, ControllerFile file) {
  clsIxoCtrl controller;
  for (const Field& field : kFields) {
    const StoredValueRow& row = field.Row(file);
    (controller.*field.setValue)(profile.GetString(section, row.key, row.fallback));
  }
  return controller;
}

void WriteController(clsProfile& profile, const QString& section, ControllerFile file,
                     const clsIxoCtrl& controller) {
  for (const Field& field : kFields) {
    profile.WriteString(section, field.Row(file).key, clsProfile::Quoted((controller.*field.value)()));
  }
}

}  // namespace trevane
