#include "engine/providers/curl/ControlExchange.h"

#include "engine/providers/curl/LineFailures.h"
#include "engine/providers/curl/LineWatch.h"
#include "engine/providers/curl/ReplyReader.h"

#include <QByteArray>
#include <QString>

#include <algorithm>

namespace trevane::curl {
namespace {

using namespace std::chrono_literals;

using Clock = std::chrono::steady_clock;

/// A server that takes several commands at once answers the second one right behind the first.
constexpr std::chrono::milliseconds kNextAnswer = 1000ms;
constexpr int kPathTold = 257;

/// To a command without effect, which a server may not know.
bool IsOfNothing(const ftp::Reply& reply) {
  return (reply.code >= 200 && reply.code <= 202) || reply.code == 250 || reply.IsUnknownCommand();
}

/// To the question for the system.
bool IsOfSystem(const ftp::Reply& reply) {
  constexpr int kSystemTold = 215;
  return reply.code == kSystemTold || reply.IsUnknownCommand();
}

}  // namespace

ControlExchange::ControlExchange(CURLM* multi, Socket socket, const FtpSettings& settings,
                                 ReplyReader& replies, LineWatch& watch) noexcept
    : multi_(multi),
      socket_(socket),
      settings_(settings),
      replies_(replies),
      watch_(watch),
      words_(socket, replies) {}

ControlExchange::Answer ControlExchange::Probe() {
  words_.Say({QByteArrayLiteral("NOOP"), QByteArrayLiteral("PWD")});
  static_cast<void>(Await(1));
  const bool takesBoth = Await(2, kNextAnswer);
  if (!takesBoth) {
    // The answer to a third one, of another kind, shows whether the second one was read at all.
    words_.Say({QByteArrayLiteral("SYST")});
    static_cast<void>(Await(2));
  }
  const std::vector<ftp::Reply>& replies = replies_.Replies();
  const bool isLate = !takesBoth && replies[1].code == kPathTold;
  if (isLate && !Await(3, kNextAnswer)) {
    return Answer::Late;
  }
  const bool isInStep = IsOfNothing(replies[0]) &&
                        (takesBoth ? replies[1].code == kPathTold : IsOfSystem(replies.back())) &&
                        replies.size() == (isLate ? 3U : 2U) && !words_.HasPart();
  if (!isInStep) {
    FailLost(settings_, QStringLiteral("The server answers other commands than it was asked (%1)")
                            .arg(WordsOf(replies.back())));
  }
  return takesBoth ? Answer::EachCommand : Answer::FirstOnly;
}

std::vector<ftp::Reply> ControlExchange::Ask(const QByteArrayList& commands) {
  words_.Say(commands);
  static_cast<void>(Await(std::size_t(commands.size())));
  std::vector<ftp::Reply> replies = replies_.Replies();
  const bool isInStep =
      replies.size() == std::size_t(commands.size()) && !words_.HasPart() &&
      std::none_of(replies.begin(), replies.end(), [](const ftp::Reply& reply) { return reply.code < 200; });
  if (!isInStep) {
    FailLost(settings_, QStringLiteral("The server has answered more often than it was asked (%1)")
                            .arg(WordsOf(replies.back())));
  }
  return replies;
}

bool ControlExchange::Await(std::size_t count, std::optional<Milliseconds> most) {
  watch_.BeginCommand();
  // Not an optional: the compiler cannot see that it is read only where it is set.
  const Clock::time_point end = most ? Clock::now() + *most : Clock::time_point::max();
  for (;;) {
    const ControlWords::State state = words_.Exchange();
    if (state == ControlWords::State::Moved) {
      watch_.Touch();
    }
    RequireNotEnded(settings_, replies_);
    if (replies_.Replies().size() >= count) {
      return true;
    }
    watch_.RequireGoesOn();
    if (state == ControlWords::State::Ended) {
      FailLost(settings_, QStringLiteral("The connection was lost"));
    }
    Milliseconds longest = watch_.Beat();
    if (most) {
      const auto left = std::chrono::ceil<Milliseconds>(end - Clock::now());
      if (left.count() <= 0) {
        return false;
      }
      longest = std::min(longest, left);
    }
    curl_waitfd waiting{curl_socket_t(socket_),
                        short(CURL_WAIT_POLLIN | (words_.HasToSend() ? CURL_WAIT_POLLOUT : 0)), 0};
    curl_multi_poll(multi_, &waiting, 1, int(longest.count()), nullptr);
    watch_.TellAlive();
  }
}

}  // namespace trevane::curl
