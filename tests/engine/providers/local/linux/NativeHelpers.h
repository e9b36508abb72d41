#pragma once

#include "tests/engine/providers/local/LocalWorld.h"

#include <functional>
#include <vector>

namespace trevane::test {

/// How a child process that ran `work` ended.
enum class ChildEnd { Finished, Failed, Killed, CannotTrace };

/// Runs `work` in a child process that is killed at its `call`th stop at a system call (entry and return both
/// count, from 1). Finished when it ended before.
[[nodiscard]] ChildEnd RunKilledAt(int call, const std::function<void()>& work);

/// Runs `work` in a child process and `interrupt` here while the child is stopped for the `call`th time.
[[nodiscard]] ChildEnd RunInterruptedAt(int call, const std::function<void()>& work,
                                        const std::function<void()>& interrupt);

/// How many system calls `work` makes, seen from outside; -1 when it cannot be traced.
[[nodiscard]] int CountSystemCalls(const std::function<void()>& work);

/// The numbers of the system calls that `work` makes, in order; empty when it cannot be traced.
[[nodiscard]] std::vector<long> SystemCallsOf(const std::function<void()>& work);

/// Runs `work` in a child process of a user without rights; returns the error number it failed with, or 0.
/// Only for the super-user.
[[nodiscard]] qint32 ErrorAsNobody(const std::function<void()>& work);

}  // namespace trevane::test
