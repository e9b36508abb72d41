#include "engine/remote/RemoteConnection.h"

#include "engine/files/ProviderError.h"
#include "engine/remote/NestedCall.h"

#include <exception>

namespace trevane {
namespace {

/// What a provider reports when its connection is of no use any more.
bool IsOfDeadLine(qint32 number) {
  return number == error::kWin32Error + 64 || number == error::kTimeOut || number == error::kDeviceNotReady;
}

}  // namespace

RemoteConnection::RemoteConnection(RemoteContext& context, Opening opening)
    : context_(context), opening_(std::move(opening)) {}

RemoteConnection::~RemoteConnection() {
  if (link_) {
    GiveUp(*link_);
  }
}

void RemoteConnection::RequireNotWaiting(const Purpose& purpose) const {
  if (context_.waiter.IsWaiting()) {
    RefuseNestedCall(purpose.what, purpose.path);
  }
}

std::shared_ptr<ControllerLink> RemoteConnection::Link() {
  if (context_.controllers->AreStopped()) {
    Fail(error::kCancelled, opening_.name);
  }
  if (!link_ || link_->IsGivenUp()) {
    auto control = std::make_shared<ConnectionControl>(context_);
    FileSystemRequest request = opening_.request;
    request.control = control;
    link_ = std::make_shared<ControllerLink>(*context_.controllers, control,
                                             [open = opening_.open, request] { return open(request); });
    context_.controllers->Add(link_);
    hasLostLine_ = false;
  }
  return link_;
}

void RemoteConnection::GiveUp(ControllerLink& link) {
  link.GiveUp();
  if (link_.get() == &link) {
    link_.reset();
    hasLostLine_ = true;
  }
}

void RemoteConnection::Drop(quint64 number) {
  if (IsConnected()) {
    link_->Thread().Post([number](Workbench& bench) { bench.Drop(number); });
  }
}

bool RemoteConnection::GiveUpAfter(const RunTimeError& failure) {
  if (!IsOfDeadLine(failure.Number())) {
    return false;
  }
  if (link_) {
    GiveUp(*link_);
  }
  return true;
}

std::shared_ptr<RemoteConnection::Pending> RemoteConnection::Start(
    const std::shared_ptr<ControllerLink>& link, const Purpose& purpose, Task task) {
  return Start(link, purpose, [&task](RunningCall&) { return std::move(task); });
}

std::shared_ptr<RemoteConnection::Pending> RemoteConnection::Start(
    const std::shared_ptr<ControllerLink>& link, const Purpose& purpose,
    const std::function<Task(RunningCall& call)>& begin) {
  RequireNotWaiting(purpose);
  return StartPart(link, purpose, begin);
}

std::shared_ptr<RemoteConnection::Pending> RemoteConnection::StartPart(
    const std::shared_ptr<ControllerLink>& link, const Purpose& purpose,
    const std::function<Task(RunningCall& call)>& begin) {
  const auto pending = std::make_shared<Pending>();
  pending->call_ = std::make_shared<RunningCall>(
      context_.queue, opening_.name, purpose.isOfTop ? purpose.what + u' ' + opening_.name : purpose.what);
  pending->link_ = link;
  pending->purpose_ = purpose;
  if (purpose.writes && opening_.tellsNoWriting) {
    pending->call_->CountNoSilence();
  }
  link->Control()->Add(pending->call_);
  // The task must not hold the link: its thread would then end itself.
  auto ending = std::make_shared<Ending>();
  pending->ending_ = ending;
  link->Thread().Post([call = pending->call_, control = link->Control(), ending,
                       task = begin(*pending->call_)](Workbench& bench) {
    control->Begin(call);
    try {
      if (call->IsCancelled()) {
        ending->failure = RunTimeError(error::kCancelled, QString());
      } else {
        task(bench);
      }
    } catch (const RunTimeError& error) {
      ending->failure = error;
    } catch (const std::exception& error) {
      ending->failure = RunTimeError(providererror::kGeneralFailure, QString::fromLocal8Bit(error.what()));
    }
    ending->isOfOpening = bench.FilesIfOpen() == nullptr;
    control->End(call);
    call->Finish();
  });
  return pending;
}

std::optional<RemoteConnection::Failure> RemoteConnection::Settle(Pending& pending) {
  RunningCall& call = *pending.call_;
  if (!call.IsOver() && !pending.link_->IsGivenUp()) {
    RequireNotWaiting(pending.purpose_);
    // Also what stands before it in the thread's queue.
    const std::shared_ptr<void> others =
        call.OnCancel([control = pending.link_->Control()] { control->CancelAll(); });
    context_.waiter.Wait(call);
  }
  return Result(pending);
}

std::optional<RemoteConnection::Failure> RemoteConnection::Result(Pending& pending) {
  const RunningCall& call = *pending.call_;
  const QString& path = pending.purpose_.path;
  if (!call.IsOver()) {
    // Another call found out that the line died.
    return Failure{ProviderError(error::kWin32Error + 64, path), true};
  }
  const std::optional<RunTimeError> failure = call.IsAbandoned()
                                                  ? std::optional(RunTimeError(error::kCancelled, QString()))
                                                  : pending.ending_->failure;
  // A thread that was abandoned may still write it.
  const bool isOfOpening = !call.IsAbandoned() && pending.ending_->isOfOpening;
  if (call.IsAbandoned()) {
    GiveUp(*pending.link_);
  }
  isSilent_ = call.IsTimedOut() && failure;
  if (isSilent_) {
    GiveUp(*pending.link_);
    const QString text =
        QStringLiteral("The %1 %2 has not answered for 10 seconds").arg(opening_.noun, opening_.name);
    return Failure{RunTimeError(error::kTimeOut, path.isEmpty() ? text : text + QStringLiteral(": ") + path),
                   true, isOfOpening};
  }
  if (call.IsCancelled() && !call.IsTimedOut()) {
    // A provider may have no other way to end a call than to close its line.
    if (failure && IsOfDeadLine(failure->Number())) {
      GiveUp(*pending.link_);
    }
    return Failure{RunTimeError(error::kCancelled, path.isEmpty()
                                                       ? QStringLiteral("Cancelled")
                                                       : QStringLiteral("Cancelled: %1").arg(path))};
  }
  if (failure && IsOfDeadLine(failure->Number())) {
    GiveUp(*pending.link_);
    return Failure{*failure, true, isOfOpening};
  }
  return failure ? std::optional(Failure{*failure}) : std::nullopt;
}

void RemoteConnection::RunTask(Kind kind, const Purpose& purpose,
                               const std::function<Task(RunningCall& call)>& begin) {
  const bool wasSilent = isSilent_;
  for (bool isRepeated = false;; isRepeated = true) {
    RequireNotWaiting(purpose);
    const std::shared_ptr<Pending> pending = Start(Link(), purpose, begin);
    const std::optional<Failure> failure = Settle(*pending);
    if (!failure) {
      return;
    }
    // After two silences in a row a third one is not worth its seconds.
    const bool isSilentAgain = wasSilent && isSilent_;
    // What has just failed to connect is not tried once more either: the user would wait twice as long.
    const bool isInVain = isSilentAgain || failure->isOfOpening;
    if (isRepeated || kind == Kind::Writing || !failure->lineDied || isInVain) {
      throw failure->error;
    }
  }
}

}  // namespace trevane
