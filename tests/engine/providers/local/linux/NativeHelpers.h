#pragma once

#include "tests/engine/providers/local/LocalWorld.h"

#include <functional>
#include <vector>

namespace trevane::test {

/// How a child process that ran `work` ended.
enum class ChildEnd { Finished, Failed, Killed, CannotTrace };

/// Runs `work` in a child process that is killed at its `call`th stop at a system call (entry and return both
/// count, from 1). Finished when it came to its end before.
[[nodiscard]] ChildEnd RunKilledAt(int call, const std::function<void()>& work);

/// Runs `work` in a child process and `interrupt` here while the child stands at its `call`th stop.
[[nodiscard]] ChildEnd RunInterruptedAt(int call, const std::function<void()>& work,
                                        const std::function<void()>& interrupt);

/// How many system calls `work` makes, seen from outside; -1 when it cannot be traced.
[[nodiscard]] int CountSystemCalls(const std::function<void()>& work);

/// The numbers of the system calls that `work` makes, in order; empty when it cannot be traced.
[[nodiscard]] std::vector<long> SystemCallsOf(const std::function<void()>& work);

/// Runs `work` in a child process of a user without rights; answers the error number it failed with, 0 when
/// it did not. Only the super-user can ask for this.
[[nodiscard]] qint32 ErrorAsNobody(const std::function<void()>& work);

}  // namespace trevane::test
