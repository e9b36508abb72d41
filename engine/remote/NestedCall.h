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

/// Lives while a receiver or an observer runs within a call of the engine, and while a command lets events
/// run: no other call may be made then. They may stand in one another. The window's thread's alone.
class WithinCall final {
 public:
  WithinCall() noexcept { ++count_; }
  ~WithinCall() { --count_; }
  WithinCall(const WithinCall&) = delete;
  WithinCall& operator=(const WithinCall&) = delete;

  [[nodiscard]] static bool IsAny() noexcept { return count_ > 0; }

 private:
  static inline int count_ = 0;
};

/// As RefuseNestedCall, where WithinCall::IsAny.
inline void RequireOutsideOfCalls(const QString& path) {
  if (WithinCall::IsAny()) {
    RefuseNestedCall(path, path);
  }
}

}  // namespace trevane
