#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>

namespace trevane {

class UserPrompts;

/// A question of a controller's thread on its way to the user.
class WorkerQuestion final {
 public:
  using Question = std::function<void(UserPrompts& prompts)>;

  /// `question` must live until Wait returns.
  explicit WorkerQuestion(const Question& question) : question_(question) {}
  WorkerQuestion(const WorkerQuestion&) = delete;
  WorkerQuestion& operator=(const WorkerQuestion&) = delete;

  /// Any thread: nobody waits for the answer any more. One that stands before the user already is answered
  /// there.
  void Withdraw();
  /// The worker: true when it was answered, false when it was withdrawn before it was asked.
  [[nodiscard]] bool Wait();

  // The window's thread.

  [[nodiscard]] bool IsWithdrawn();
  /// A question that throws is withdrawn; what it has thrown goes on.
  void Run(UserPrompts& prompts);

 private:
  enum class State { Waiting, Running, Answered, Withdrawn };

  const Question& question_;
  std::mutex mutex_;
  std::condition_variable changed_;
  State state_ = State::Waiting;
};

}  // namespace trevane
