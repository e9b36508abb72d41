#pragma once

#include "engine/providers/memory/MemoryFileSystem.h"
#include "engine/remote/RemoteContext.h"
#include "engine/remote/RemoteFileSystem.h"
#include "tests/support/ScriptedPrompts.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/ScriptedWaiter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>

namespace trevane::test {

/// A slow controller over a file system in memory, and the window's side with a clock that the test moves.
struct RemoteWorld {
  explicit RemoteWorld(const ScriptedOptions& options = {})
      : memory(std::make_shared<MemoryFileSystem>()),
        server(std::make_shared<ScriptedServer>(memory, options)) {}
  ~RemoteWorld() {
    server->Release();
    EXPECT_TRUE(context.controllers->StopAll(std::chrono::seconds(20)));
  }
  RemoteWorld(const RemoteWorld&) = delete;
  RemoteWorld& operator=(const RemoteWorld&) = delete;

  [[nodiscard]] std::unique_ptr<RemoteFileSystem> Connect() {
    auto files = std::make_unique<RemoteFileSystem>(context, Opening());
    server->ClearCalls();
    return files;
  }
  [[nodiscard]] RemoteConnection::Opening Opening() {
    return {QStringLiteral("Robot"), server->AsProvider(QStringLiteral("Scripted")).open, {}};
  }

  std::shared_ptr<MemoryFileSystem> memory;
  std::shared_ptr<ScriptedServer> server;
  WindowQueue queue;
  ScriptedWaiter waiter;
  ScriptedPrompts prompts;
  RemoteContext context{queue, waiter, &prompts};
};

/// The error that `work` fails with; 0 and no text where it succeeds.
inline RunTimeError FailureOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const RunTimeError& failure) {
    return failure;
  }
  return {0, QString()};
}

}  // namespace trevane::test
