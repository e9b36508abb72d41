#include "engine/remote/ConnectionControl.h"

#include "engine/remote/QuestionDesk.h"
#include "engine/remote/RemoteContext.h"

#include <QScopeGuard>

#include <utility>

namespace trevane {

ConnectionControl::ConnectionControl(RemoteContext& context)
    : queue_(&context.queue),
      prompts_(context.prompts),
      poster_(context.queue.Posting()),
      desk_(context.questions),
      connection_(std::make_shared<RunningCall>(context.queue, QString(), QString())) {}

void ConnectionControl::Add(const std::shared_ptr<RunningCall>& call) {
  const std::lock_guard lock(mutex_);
  open_.push_back(call);
}

void ConnectionControl::Begin(const std::shared_ptr<RunningCall>& call) {
  const std::lock_guard lock(mutex_);
  current_ = call;
}

void ConnectionControl::End(const std::shared_ptr<RunningCall>& call) {
  const std::lock_guard lock(mutex_);
  current_ = nullptr;
  std::erase(open_, call);
}

void ConnectionControl::CancelAll() {
  std::vector<std::shared_ptr<RunningCall>> calls;
  {
    const std::lock_guard lock(mutex_);
    calls = open_;
  }
  for (const std::shared_ptr<RunningCall>& call : calls) {
    call->Cancel();
  }
}

void ConnectionControl::GiveUp() {
  connection_->Cancel();
  CancelAll();
}

std::shared_ptr<RunningCall> ConnectionControl::Current() const {
  const std::lock_guard lock(mutex_);
  return current_;
}

bool ConnectionControl::IsCancelled() const {
  const std::shared_ptr<RunningCall> call = Current();
  return connection_->IsCancelled() || (call && call->IsCancelled());
}

std::shared_ptr<void> ConnectionControl::OnCancel(std::function<void()> wake) {
  const std::shared_ptr<RunningCall> call = Current();
  return (call ? call : connection_)->OnCancel(std::move(wake));
}

void ConnectionControl::Alive() {
  const std::lock_guard lock(mutex_);
  for (const std::shared_ptr<RunningCall>& call : open_) {
    call->Alive();
  }
}

void ConnectionControl::Tell(const QString& what) {
  const std::lock_guard lock(mutex_);
  // Those that stand behind wait for the same.
  for (const std::shared_ptr<RunningCall>& call : open_) {
    call->Tell(what);
  }
}

bool ConnectionControl::AskUser(const std::function<void(UserPrompts& prompts)>& question) {
  const std::shared_ptr<RunningCall> call = Current();
  if (prompts_ == nullptr || !call || call->IsCancelled()) {
    return false;
  }
  const auto asked = std::make_shared<WorkerQuestion>(question);
  call->BeginQuestion();
  const auto end = qScopeGuard([&call] { call->EndQuestion(); });
  const std::shared_ptr<void> withdrawal = call->OnCancel([asked] { asked->Withdraw(); });
  poster_->Post([asked, desk = desk_, queue = queue_, prompts = prompts_] {
    desk->RunInTurn(asked, *queue, *prompts);
  });
  return asked->Wait() && !call->IsCancelled();
}

}  // namespace trevane
