#pragma once

#include "engine/controllers/EngineSession.h"
#include "engine/files/Provider.h"
#include "engine/items/FileAccess.h"
#include "engine/remote/BlockingRemote.h"
#include "tests/support/FailingEngine.h"
#include "tests/support/FakeVolumes.h"
#include "tests/support/ScriptedPrompts.h"
#include "views/addresses/DriveTable.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

namespace trevane::test {

/// A session over the providers of a test, with drives and scripted answers: what every world of the tests is
/// built on. Every engine call passes through `engine`.
struct SessionWorld {
  SessionWorld() = default;
  SessionWorld(const SessionWorld&) = delete;
  SessionWorld& operator=(const SessionWorld&) = delete;

  /// Opens the engine over `providers`. If the first of them can open a file system, it becomes the local
  /// controller, registered as the program does it.
  /// Slow ones use `context` where one is given.
  void Open(ProviderTable providers, RemoteContext* context = nullptr);
  /// Connects a controller and registers it, without a node.
  std::shared_ptr<clsIxoCtrl> Register(const QString& name, const QString& provider, const QString& root = {},
                                       const QString& option = {});

  /// What ends on the controllers' threads has ended when this returns; no call can follow.
  void StopThreads() { EXPECT_TRUE(remote.Context().controllers->StopAll(std::chrono::seconds(60))); }

  /// For providers that are slow.
  BlockingRemote remote;
  FakeVolumes volumes;
  DriveTable drives{volumes};
  ScriptedPrompts prompts;
  std::shared_ptr<FailingEngine> engine;
  EngineSession session;
  FileAccess files{session, drives, prompts};
};

/// A provider that opens the same file system whenever it is asked.
[[nodiscard]] Provider ProviderOf(const QString& name, std::shared_ptr<FileSystem> fileSystem);

}  // namespace trevane::test
