#pragma once

#include <QLatin1StringView>
#include <QString>

#include <array>

namespace trevane {

/// The values that the program keeps in its settings file and in workspace files.
enum class StoredValue {
  WindowState,
  WindowWidth,
  WindowHeight,
  RememberedName,
  RememberedProvider,
  RememberedMachine,
  RememberedOption,
  RememberedRoot,
  WorkspaceName,
  WorkspaceProvider,
  WorkspaceMachine,
  WorkspaceOption,
  WorkspaceRoot,
};

/// Where a value is kept. Every key is spelt here and nowhere else.
struct StoredValueRow {
  StoredValue id;
  /// For a remembered controller, the text before its number; empty if the section is named after the
  /// controller.
  QLatin1StringView section;
  QLatin1StringView key;
  /// The default of a missing value. A missing value of the window leaves the window as it is.
  QLatin1StringView fallback;
};

/// In the order in which they are written.
inline constexpr std::array kStoredValues{
    StoredValueRow{StoredValue::WindowState, QLatin1StringView("Form"), QLatin1StringView("WindowState"), {}},
    StoredValueRow{StoredValue::WindowWidth, QLatin1StringView("Form"), QLatin1StringView("Width"), {}},
    StoredValueRow{StoredValue::WindowHeight, QLatin1StringView("Form"), QLatin1StringView("Height"), {}},
    StoredValueRow{StoredValue::RememberedName, QLatin1StringView("Controller"),
                   QLatin1StringView("ControllerName"), QLatin1StringView("")},
    StoredValueRow{StoredValue::RememberedProvider, QLatin1StringView("Controller"),
                   QLatin1StringView("ProviderName"), QLatin1StringView("")},
    StoredValueRow{StoredValue::RememberedMachine, QLatin1StringView("Controller"),
                   QLatin1StringView("MachineName"), QLatin1StringView("")},
    StoredValueRow{StoredValue::RememberedOption, QLatin1StringView("Controller"),
                   QLatin1StringView("Option"), QLatin1StringView("")},
    StoredValueRow{StoredValue::RememberedRoot, QLatin1StringView("Controller"), QLatin1StringView("Root"),
                   QLatin1StringView("/")},
    StoredValueRow{StoredValue::WorkspaceName, {}, QLatin1StringView("CtrlName"), QLatin1StringView("")},
    StoredValueRow{StoredValue::WorkspaceProvider, {}, QLatin1StringView("Provider"), QLatin1StringView("")},
    StoredValueRow{StoredValue::WorkspaceMachine, {}, QLatin1StringView("Machine"), QLatin1StringView("")},
    StoredValueRow{StoredValue::WorkspaceOption, {}, QLatin1StringView("Option"), QLatin1StringView("")},
    StoredValueRow{StoredValue::WorkspaceRoot, {}, QLatin1StringView("Root"), QLatin1StringView("/")},
};

/// The row of a value: the table has one for each, in the order of the ids.
[[nodiscard]] constexpr const StoredValueRow& RowOf(StoredValue id) {
  return kStoredValues[static_cast<size_t>(id)];
}

namespace detail {
constexpr bool IsInOrder() {
  for (size_t i = 0; i < kStoredValues.size(); ++i) {
    if (kStoredValues[i].id != static_cast<StoredValue>(i)) {
      return false;
    }
  }
  return true;
}
static_assert(IsInOrder());
static_assert(kStoredValues.size() == static_cast<size_t>(StoredValue::WorkspaceRoot) + 1);
}  // namespace detail

}  // namespace trevane
