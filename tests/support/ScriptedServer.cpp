#include "tests/support/ScriptedServer.h"

#include "engine/files/ProviderError.h"
#include "engine/remote/CallControl.h"
#include "engine/remote/RunningCall.h"
#include "tests/support/ScriptedFileSystem.h"

#include <algorithm>
#include <utility>

namespace trevane::test {

namespace {

constexpr qint32 kLineDied = error::kWin32Error + 64;

}  // namespace

Provider ScriptedServer::AsProvider(const QString& name) {
  return {
      name,
      [self = shared_from_this()](const FileSystemRequest& request) { return self->Open(request.control); },
      true};
}

std::shared_ptr<FileSystem> ScriptedServer::Open(std::shared_ptr<CallControl> control) {
  auto line = std::make_shared<Line>();
  line->control = std::move(control);
  std::unique_lock lock(mutex_);
  ++openings_;
  calledOn_.push_back(std::this_thread::get_id());
  if (const auto hearing = std::exchange(hangAtOpening_, std::nullopt)) {
    Hang(lock, *line, *hearing, QStringLiteral("Open"));
  }
  if (questionOfOpening_ && line->control) {
    const Question question = questionOfOpening_;
    lock.unlock();
    AskInOpening(*line, question);
    lock.lock();
  }
  if (refusedOpening_ != 0) {
    Fail(refusedOpening_, QStringLiteral("the controller"));
  }
  ++liveConnections_;
  return std::make_shared<ScriptedFileSystem>(shared_from_this(), std::move(line));
}

void ScriptedServer::HangAt(int call, Hearing hearing) {
  const std::lock_guard lock(mutex_);
  calls_.clear();
  hangAt_ = call;
  hearing_ = hearing;
}

void ScriptedServer::HangAtOpening(Hearing hearing) {
  const std::lock_guard lock(mutex_);
  hangAtOpening_ = hearing;
}

void ScriptedServer::HangAtBatch(int batch) {
  const std::lock_guard lock(mutex_);
  hangAtBatch_ = batch;
}

void ScriptedServer::BeforeBatch(Line& line, int batch) {
  std::unique_lock lock(mutex_);
  if (batch == hangAtBatch_) {
    Hang(lock, line, Hearing::ObeysCancel, QStringLiteral("Batch"));
  }
}

void ScriptedServer::DropAt(int call, Drop drop) {
  const std::lock_guard lock(mutex_);
  calls_.clear();
  dropAt_ = call;
  drop_ = drop;
}

void ScriptedServer::RefuseOpening(qint32 number) {
  const std::lock_guard lock(mutex_);
  refusedOpening_ = number;
}

void ScriptedServer::AskAt(int call, Question question) {
  const std::lock_guard lock(mutex_);
  calls_.clear();
  askAt_ = call;
  question_ = std::move(question);
  answered_.reset();
}

void ScriptedServer::AskAtOpening(Question question) {
  const std::lock_guard lock(mutex_);
  questionOfOpening_ = std::move(question);
}

void ScriptedServer::AskInOpening(Line& line, const Question& question) {
  std::optional<RunTimeError> failure;
  const bool answered = line.control->AskUser([&](UserPrompts& prompts) {
    try {
      question(prompts);
    } catch (const RunTimeError& thrown) {
      failure = thrown;
    }
  });
  if (!answered) {
    Fail(error::kCancelled, QStringLiteral("Open"));
  }
  if (failure) {
    throw *failure;
  }
}

void ScriptedServer::SetDelay(std::chrono::milliseconds delay) {
  const std::lock_guard lock(mutex_);
  delay_ = delay;
}

void ScriptedServer::SetNotice(const QString& notice) {
  const std::lock_guard lock(mutex_);
  notice_ = notice;
}

void ScriptedServer::SetDetails(const QString& path, const QStringList& lines) {
  const std::lock_guard lock(mutex_);
  details_[path] = lines;
}

QString ScriptedServer::Notice() {
  const std::lock_guard lock(mutex_);
  return notice_;
}

QStringList ScriptedServer::DetailsOf(const QString& path) {
  const std::lock_guard lock(mutex_);
  const auto known = details_.find(path);
  return known == details_.end() ? QStringList() : known->second;
}

void ScriptedServer::Release() {
  const std::lock_guard lock(mutex_);
  ++released_;
  // A worker may take its time to wake.
  hanging_ = 0;
  changed_.notify_all();
}

bool ScriptedServer::IsHanging() {
  const std::lock_guard lock(mutex_);
  return hanging_ > 0;
}

void ScriptedServer::WaitUntilHanging() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return hanging_ > 0; });
}

bool ScriptedServer::WaitUntilHanging(const RunningCall& call) {
  // The end of a call wakes nobody here.
  constexpr std::chrono::milliseconds kLook(1);
  std::unique_lock lock(mutex_);
  while (hanging_ == 0 && !call.IsDone()) {
    changed_.wait_for(lock, kLook);
  }
  return hanging_ > 0;
}

int ScriptedServer::RoundTrips() {
  const std::lock_guard lock(mutex_);
  return static_cast<int>(calls_.size());
}

QStringList ScriptedServer::Calls() {
  const std::lock_guard lock(mutex_);
  return calls_;
}

void ScriptedServer::ClearCalls() {
  const std::lock_guard lock(mutex_);
  calls_.clear();
}

int ScriptedServer::Openings() {
  const std::lock_guard lock(mutex_);
  return openings_;
}

std::vector<std::thread::id> ScriptedServer::EndedOn() {
  const std::lock_guard lock(mutex_);
  return endedOn_;
}

std::vector<std::thread::id> ScriptedServer::CalledOn() {
  const std::lock_guard lock(mutex_);
  return calledOn_;
}

std::optional<bool> ScriptedServer::Answered() {
  const std::lock_guard lock(mutex_);
  return answered_;
}

int ScriptedServer::LiveConnections() {
  const std::lock_guard lock(mutex_);
  return liveConnections_;
}

void ScriptedServer::Hang(std::unique_lock<std::mutex>& lock, Line& line, Hearing hearing,
                          const QString& call) {
  const int before = released_;
  const std::shared_ptr<CallControl> control = hearing != Hearing::Deaf ? line.control : nullptr;
  std::shared_ptr<void> wake;
  if (control) {
    lock.unlock();
    wake = control->OnCancel([this] {
      const std::lock_guard locked(mutex_);
      changed_.notify_all();
    });
    lock.lock();
  }
  if (released_ == before) {
    ++hanging_;
    changed_.notify_all();
    changed_.wait(lock, [&] { return released_ != before || (control && control->IsCancelled()); });
    hanging_ -= released_ == before ? 1 : 0;
  }
  lock.unlock();
  wake.reset();
  const bool isCancelled = control && control->IsCancelled();
  lock.lock();
  if (isCancelled && hearing == Hearing::ClosesTheLine) {
    line.isDead = true;
    Fail(error::kWin32Error + 64, call);
  }
  if (isCancelled) {
    Fail(error::kCancelled, call);
  }
}

void ScriptedServer::RoundTrip(Line& line, const QString& call,
                               const std::function<void(FileSystem& behind)>& work) {
  std::unique_lock lock(mutex_);
  calls_.append(call);
  calledOn_.push_back(std::this_thread::get_id());
  const int number = static_cast<int>(calls_.size());
  if (number == dropAt_ && drop_ == Drop::BeforeTheCall) {
    dropAt_ = 0;
    line.isDead = true;
  }
  if (line.isDead) {
    Fail(kLineDied, call);
  }
  if (number == hangAt_) {
    hangAt_ = 0;
    Hang(lock, line, hearing_, call);
  }
  const auto delay = delay_.value_or(options_.delay);
  if (delay.count() > 0) {
    std::shared_ptr<void> wake;
    lock.unlock();
    if (line.control) {
      wake = line.control->OnCancel([this] {
        const std::lock_guard locked(mutex_);
        changed_.notify_all();
      });
    }
    lock.lock();
    changed_.wait_for(lock, delay, [&line] { return line.control && line.control->IsCancelled(); });
    lock.unlock();
    wake.reset();
    lock.lock();
    if (line.control && line.control->IsCancelled()) {
      Fail(error::kCancelled, call);
    }
  }
  if (number == askAt_ && line.control) {
    askAt_ = 0;
    const Question question = question_;
    lock.unlock();
    const bool answered = line.control->AskUser(question);
    lock.lock();
    answered_ = answered;
    if (!answered) {
      Fail(error::kCancelled, call);
    }
  }
  const bool dropsAfter = number == dropAt_ && drop_ == Drop::AfterTheCall;
  lock.unlock();
  {
    const std::lock_guard behind(behindMutex_);
    work(*behind_);
  }
  lock.lock();
  if (dropsAfter) {
    dropAt_ = 0;
    line.isDead = true;
    Fail(kLineDied, call);
  }
  lock.unlock();
  if (line.control) {
    line.control->Alive();
  }
}

void ScriptedServer::Free(const std::function<void(FileSystem& behind)>& work) {
  const std::lock_guard behind(behindMutex_);
  work(*behind_);
}

void ScriptedServer::Ended() {
  const std::lock_guard lock(mutex_);
  endedOn_.push_back(std::this_thread::get_id());
}

FileEntry ScriptedServer::Shown(FileEntry entry) const {
  for (Date* date : {&entry.created, &entry.accessed, &entry.modified}) {
    if (!options_.dates) {
      *date = Date();
    } else if (options_.dateStep > 0 && date->IsPresent()) {
      date->msecs -= ((date->msecs % options_.dateStep) + options_.dateStep) % options_.dateStep;
    }
  }
  return entry;
}

FileEntry ScriptedServer::Listed(FileEntry entry) const {
  if (!options_.listsTargets && entry.IsLink()) {
    entry.attributes = attribute::kLink | attribute::kArchive;
    entry.leadsNowhere = false;
    entry.size = -1;
  }
  return Shown(std::move(entry));
}

std::optional<FileIdentity> ScriptedServer::IdentityOf(const QString& path) const {
  if (options_.identities != ScriptedOptions::Identities::Texts) {
    return std::nullopt;
  }
  FileIdentity identity;
  identity.text = QStringLiteral("scripted %1|").arg(reinterpret_cast<quintptr>(this), 0, 16) + path;
  return identity;
}

}  // namespace trevane::test
