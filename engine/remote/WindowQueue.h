#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace trevane {

/// The work that controllers' threads hand over to the window's thread, in order: entries of a listing,
/// progress, questions. One for the whole program. Threads hold a Poster, which may outlive it: what is
/// posted then never runs.
class WindowQueue final {
 public:
  using Work = std::function<void()>;

  /// The end that threads hold.
  class Poster final {
   public:
    Poster();
    ~Poster();
    Poster(const Poster&) = delete;
    Poster& operator=(const Poster&) = delete;

    /// From any thread. `work` throws nothing.
    void Post(Work work);
    /// From any thread: wakes the window's thread without work.
    void Wake();

   private:
    friend class WindowQueue;
    struct State;
    const std::unique_ptr<State> state_;
  };

  WindowQueue() : poster_(std::make_shared<Poster>()) {}
  ~WindowQueue();
  WindowQueue(const WindowQueue&) = delete;
  WindowQueue& operator=(const WindowQueue&) = delete;

  void Post(Work work);
  void Wake() { poster_->Wake(); }
  [[nodiscard]] const std::shared_ptr<Poster>& Posting() const noexcept { return poster_; }

  /// The window's thread. Runs what was posted, also what is posted meanwhile; work that lets events run may
  /// call this again. True when there was any.
  bool RunPosted();
  /// Something waits to be run.
  [[nodiscard]] bool HasPosted();
  /// The window's thread. Returns when something was posted or woken since the last call, or after `longest`.
  void WaitFor(std::chrono::milliseconds longest);
  /// Called on any thread for each Post and Wake while it is set, to wake an event loop. Null for none.
  void SetWaker(Work waker);

  // The window's thread, around each question to the user that is opened for a worker: in that time no
  // silence is counted, of no call.

  void BeginQuestion() {
    if (opener_) {
      opener_();
    }
    ++openQuestions_;
  }
  void EndQuestion() noexcept {
    --openQuestions_;
    ++endedQuestions_;
  }
  /// Called before each of them. Null for none.
  void SetQuestionOpener(Work opener) { opener_ = std::move(opener); }
  [[nodiscard]] int OpenQuestions() const noexcept { return openQuestions_; }
  [[nodiscard]] int EndedQuestions() const noexcept { return endedQuestions_; }

 private:
  const std::shared_ptr<Poster> poster_;
  Work opener_;
  int openQuestions_ = 0;
  int endedQuestions_ = 0;
};

}  // namespace trevane
