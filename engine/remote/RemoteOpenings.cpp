#include "engine/remote/RemoteOpenings.h"

#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"
#include "engine/remote/NestedCall.h"

#include <algorithm>

namespace trevane {
namespace {

constexpr qsizetype kMostAtOnce = 8;

const QString kConnecting = QStringLiteral("Connecting");

}  // namespace

struct RemoteOpenings::Part {
  /// The worker writes it before the call is done.
  struct Answer {
    std::optional<FileSystemCapabilities> capabilities;
    std::optional<Root> root;
  };

  std::shared_ptr<RemoteConnection> connection;
  QString root = {};
  /// Null before it was begun.
  std::shared_ptr<RemoteConnection::Pending> pending = nullptr;
  std::shared_ptr<Answer> answer = nullptr;
  /// It could not even be begun.
  std::optional<RunTimeError> failure = std::nullopt;
};

RemoteOpenings::RemoteOpenings(RemoteContext& context, const std::vector<Wanted>& wanted)
    : context_(context) {
  parts_.reserve(wanted.size());
  for (const Wanted& each : wanted) {
    parts_.push_back({std::make_shared<RemoteConnection>(context, each.opening), each.root});
  }
}

RemoteOpenings::~RemoteOpenings() = default;

bool RemoteOpenings::IsOver(const Part& part) {
  return part.failure || (part.pending && part.pending->Call()->IsOver());
}

void RemoteOpenings::Look(FileSystem& files, const QString& text, std::optional<Root>& root) {
  try {
    const QString path = providerpath::Join(providerpath::Split(files.PathFromText(text)));
    if (!path.isEmpty()) {
      root = Root{path, files.Find(path)};
    }
  } catch (const RunTimeError& failure) {
    if (failure.Number() == error::kCancelled) {
      throw;
    }
    // The one who opens it is told why.
  }
}

void RemoteOpenings::BeginPart(Part& part) {
  part.answer = std::make_shared<Part::Answer>();
  try {
    part.pending =
        part.connection->StartPart(part.connection->Link(), {kConnecting, QString()}, [&part](RunningCall&) {
          return RemoteConnection::Task([answer = part.answer, root = part.root](Workbench& bench) {
            answer->capabilities = bench.Files().Capabilities();
            Look(bench.Files(), root, answer->root);
          });
        });
  } catch (const RunTimeError& failure) {
    part.failure = failure;
  }
}

void RemoteOpenings::Begin() {
  auto running = std::count_if(parts_.begin(), parts_.begin() + static_cast<std::ptrdiff_t>(next_),
                               [](const Part& part) { return !IsOver(part); });
  for (; next_ < parts_.size() && running < kMostAtOnce && !isCancelled_; ++next_) {
    BeginPart(parts_[next_]);
    running += IsOver(parts_[next_]) ? 0 : 1;
  }
}

void RemoteOpenings::Wait(const Part& part) {
  RunningCall call(context_.queue, part.connection->Name(), kConnecting);
  call.SetTurn([this, &part, &call](qint64 now) {
    for (const Part& each : parts_) {
      if (each.pending) {
        each.pending->Call()->Advance(now);
      }
    }
    Begin();
    if (part.pending) {
      call.Tell(part.pending->Call()->Told());
    }
    // A connection that comes later is thrown away, so that nobody has to wait whether it does.
    return isCancelled_ || IsOver(part);
  });
  const std::shared_ptr<void> cancel = call.OnCancel([this] { Cancel(); });
  context_.waiter.Wait(call);
}

RemoteOpenings::Opened RemoteOpenings::Take(size_t position) {
  Part& part = parts_.at(position);
  if (context_.waiter.IsWaiting()) {
    RefuseNestedCall(kConnecting, part.connection->Name());
  }
  Begin();
  if (!isCancelled_ && !IsOver(part)) {
    Wait(part);
  }
  if (part.failure) {
    throw RunTimeError(*part.failure);
  }
  if (!IsOver(part)) {
    throw RunTimeError(error::kCancelled, QStringLiteral("Cancelled"));
  }
  if (const auto failure = part.connection->Result(*part.pending)) {
    throw RunTimeError(failure->error);
  }
  return {std::make_shared<RemoteFileSystem>(part.connection, *part.answer->capabilities), part.answer->root};
}

void RemoteOpenings::Cancel() {
  isCancelled_ = true;
  for (const Part& part : parts_) {
    if (part.pending && !IsOver(part)) {
      part.pending->Call()->Cancel();
    }
  }
}

}  // namespace trevane
