#include "engine/providers/ssh/TcpConnection.h"

#include "engine/files/ProviderError.h"
#include "engine/providers/ssh/WakeUp.h"
#include "engine/remote/CallControl.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

namespace trevane::net {
namespace {

using Clock = std::chrono::steady_clock;

/// How long an address may be silent before the next one is tried beside it.
constexpr std::chrono::milliseconds kStep(250);
/// The longest wait without looking at the clock: as long as a limit of its own runs, a silence is none for
/// the window.
constexpr std::chrono::milliseconds kBeat(1000);

[[noreturn]] void Throw(const NetFailure& failure, const QString& host) {
  Fail(failure.number, failure.reason, host);
}

}  // namespace

/// An address that is being connected.
struct TcpConnection::Attempt {
  Socket socket = kNoSocket;
  QString address;
};

/// Those that are under way at once; all but the one that is taken are closed.
class TcpConnection::Attempts final {
 public:
  Attempts() = default;
  ~Attempts() {
    for (const Attempt& each : open_) {
      Close(each.socket);
    }
  }
  Attempts(const Attempts&) = delete;
  Attempts& operator=(const Attempts&) = delete;

  void Begin(const net::Address& address) {
    const Socket socket = StartConnecting(address, failure_);
    if (socket != kNoSocket) {
      open_.push_back({socket, address.text});
    }
  }

  [[nodiscard]] std::vector<Watched> ToWatch() const {
    std::vector<Watched> watched;
    for (const Attempt& each : open_) {
      watched.push_back({each.socket, true});
    }
    return watched;
  }

  /// The first one that is connected.
  [[nodiscard]] std::optional<Attempt> Take(const std::vector<Watched>& watched) {
    for (const Watched& each : watched) {
      const auto found = std::find_if(open_.begin(), open_.end(), [&each](const Attempt& attempt) {
        return attempt.socket == each.socket;
      });
      if (!each.isReady || found == open_.end()) {
        continue;
      }
      const Attempt attempt = *found;
      open_.erase(found);
      const NetFailure failure = ConnectFailure(attempt.socket);
      if (!failure) {
        return attempt;
      }
      failure_ = failure;
      Close(attempt.socket);
    }
    return std::nullopt;
  }

  [[nodiscard]] bool IsEmpty() const noexcept { return open_.empty(); }
  /// The last one.
  [[nodiscard]] const NetFailure& Failure() const noexcept { return failure_; }

 private:
  std::vector<Attempt> open_;
  NetFailure failure_;
};

TcpConnection::TcpConnection(std::shared_ptr<CallControl> control, Milliseconds longest)
    : control_(std::move(control)), longest_(longest), wake_(std::make_shared<WakeUp>()) {
  if (!wake_->IsMade()) {
    throw RunTimeError(error::kWin32Error + 8, QStringLiteral("The system has no further sockets"));
  }
}

TcpConnection::~TcpConnection() {
  if (socket_ != kNoSocket) {
    Close(socket_);
  }
}

void TcpConnection::RequireNotCancelled() const {
  if (control_ && putBacks_ == 0 && control_->IsCancelled()) {
    throw RunTimeError(error::kCancelled, QStringLiteral("Cancelled"));
  }
}

void TcpConnection::Alive() const {
  if (control_) {
    control_->Alive();
  }
}

std::shared_ptr<void> TcpConnection::ShutdownOnCancel(Socket socket) const {
  return control_ ? control_->OnCancel([socket] { Shutdown(socket); }) : nullptr;
}

void TcpConnection::WaitFor(std::vector<Watched>& watched, Clock::time_point end) {
  const std::shared_ptr<void> cancel =
      control_ && putBacks_ == 0 ? control_->OnCancel([wake = wake_] { wake->Set(); }) : nullptr;
  watched.push_back({wake_->Waiting()});
  for (;;) {
    RequireNotCancelled();
    const auto left = std::chrono::ceil<Milliseconds>(end - Clock::now());
    if (left.count() <= 0) {
      break;
    }
    net::Wait(watched, std::min(left, kBeat));
    if (std::any_of(watched.begin(), watched.end(), [](const Watched& each) { return each.isReady; })) {
      break;
    }
    Alive();
  }
  if (watched.back().isReady) {
    wake_->Clear();
  }
  watched.pop_back();
  RequireNotCancelled();
}

void TcpConnection::Wait(bool writing) {
  const Clock::time_point end = Clock::now() + longest_;
  std::vector<Watched> watched{{socket_, writing}};
  while (Clock::now() < end) {
    WaitFor(watched, end);
    if (watched.front().isReady) {
      Alive();
      return;
    }
  }
  Fail(error::kTimeOut,
       QStringLiteral("The controller has not answered for %1 s").arg(longest_.count() / 1000), place_);
}

Resolved TcpConnection::ResolveHost(const QString& host, quint16 port, Clock::time_point end) {
  // No system ends this call early: its thread is left behind where nobody waits any more.
  struct Answer {
    std::mutex mutex;
    std::optional<Resolved> resolved;
  };
  const auto answer = std::make_shared<Answer>();
  try {
    std::thread([answer, host, port, wake = wake_] {
      Resolved resolved = Resolve(host, port);
      {
        const std::lock_guard lock(answer->mutex);
        answer->resolved = std::move(resolved);
      }
      wake->Set();
    }).detach();
  } catch (const std::system_error&) {
    throw RunTimeError(error::kWin32Error + 8, QStringLiteral("The system has no further thread"));
  }
  while (Clock::now() < end) {
    std::vector<Watched> nothing;
    WaitFor(nothing, end);
    const std::lock_guard lock(answer->mutex);
    if (answer->resolved) {
      return *std::move(answer->resolved);
    }
  }
  return {{}, {error::kTimeOut, QStringLiteral("The name of the host was not found in time")}};
}

void TcpConnection::Connect(const QString& host, quint16 port) {
  const Clock::time_point end = Clock::now() + longest_;
  const Resolved resolved = ResolveHost(host, port, end);
  if (resolved.failure) {
    Throw(resolved.failure, host);
  }
  place_ = QStringLiteral("%1, port %2").arg(host).arg(port);
  Attempts attempts;
  size_t next = 0;
  while (Clock::now() < end) {
    if (next < resolved.addresses.size()) {
      attempts.Begin(resolved.addresses[next++]);
    }
    const bool isLast = next == resolved.addresses.size();
    if (attempts.IsEmpty() && isLast) {
      Throw(attempts.Failure() ? attempts.Failure() : NetFailure{kUnknownHost, ReasonOf(kUnknownHost)},
            place_);
    }
    std::vector<Watched> watched = attempts.ToWatch();
    if (!watched.empty()) {
      WaitFor(watched, isLast ? end : std::min(end, Clock::now() + kStep));
    }
    if (const std::optional<Attempt> connected = attempts.Take(watched)) {
      socket_ = connected->socket;
      address_ = connected->address;
      Alive();
      return;
    }
  }
  Throw({error::kTimeOut, ReasonOf(error::kTimeOut)}, place_);
}

}  // namespace trevane::net
