#pragma once

#include <QString>

#include <functional>

namespace trevane {

/// An engine call that was made while another one is waited for. It is refused with providererror::kBusy; a
/// mistake of the program, which tests turn into a failure.
using NestedCallHandler = std::function<void(const QString& what)>;

/// The window's thread. Returns the handler that was set before; none is set at first.
NestedCallHandler SetNestedCallHandler(NestedCallHandler handler);

/// Calls the handler, then fails with providererror::kBusy.
[[noreturn]] void RefuseNestedCall(const QString& what, const QString& path);

}  // namespace trevane
