#include "engine/remote/OpenSideBySide.h"

#include "engine/files/ProviderError.h"
#include "engine/remote/NestedCall.h"

#include <algorithm>
#include <utility>

namespace trevane {
namespace {

constexpr qsizetype kMostAtOnce = 8;

struct Part {
  std::shared_ptr<RemoteConnection> connection;
  std::shared_ptr<RemoteConnection::Pending> pending;
  std::shared_ptr<std::optional<FileSystemCapabilities>> capabilities;
  /// It could not even be begun.
  std::optional<RunTimeError> failure;
};

void Begin(Part& part, RunningCall& all) {
  part.capabilities = std::make_shared<std::optional<FileSystemCapabilities>>();
  try {
    part.pending = part.connection->StartPart(
        part.connection->Link(), {QStringLiteral("Connecting"), QString()}, [&part](RunningCall&) {
          return RemoteConnection::Task([capabilities = part.capabilities](Workbench& bench) {
            *capabilities = bench.Files().Capabilities();
          });
        });
    all.AddPart(part.pending->Call());
  } catch (const RunTimeError& failure) {
    part.failure = failure;
  }
}

OpenedRemote ResultOf(Part& part) {
  if (part.failure) {
    return {nullptr, part.failure};
  }
  if (!part.pending) {
    return {nullptr, RunTimeError(error::kCancelled, QStringLiteral("Cancelled"))};
  }
  if (const auto failure = part.connection->Result(*part.pending)) {
    return {nullptr, failure->error};
  }
  return {std::make_shared<RemoteFileSystem>(part.connection, **part.capabilities), std::nullopt};
}

}  // namespace

std::vector<OpenedRemote> OpenSideBySide(RemoteContext& context,
                                         const std::vector<RemoteConnection::Opening>& openings) {
  if (openings.empty()) {
    return {};
  }
  if (context.waiter.IsWaiting()) {
    RefuseNestedCall(QStringLiteral("Connecting"), openings.front().name);
  }
  std::vector<Part> parts;
  for (const RemoteConnection::Opening& opening : openings) {
    parts.push_back({std::make_shared<RemoteConnection>(context, opening), nullptr, nullptr, std::nullopt});
  }
  QStringList names;
  for (const RemoteConnection::Opening& opening : openings) {
    names.append(opening.name);
  }
  RunningCall all(context.queue, names.join(QStringLiteral(", ")), QStringLiteral("Connecting"));
  size_t next = 0;
  all.SetTurn([&] {
    const auto& running = all.Parts();
    while (next < parts.size() && !all.IsCancelled() &&
           std::count_if(running.begin(), running.end(), [](const auto& call) { return !call->IsOver(); }) <
               kMostAtOnce) {
      Begin(parts[next++], all);
    }
  });
  context.waiter.Wait(all);
  std::vector<OpenedRemote> results;
  for (Part& part : parts) {
    results.push_back(ResultOf(part));
  }
  return results;
}

}  // namespace trevane
