#pragma once

#include "engine/remote/RunningCall.h"

#include <QScopedValueRollback>

#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace trevane {

/// Hands items over from a controller's thread to a receiver on the window's, in order, as long as their call
/// is waited for. The receiver's false cancels the call.
template <class Item>
class Delivery final : public std::enable_shared_from_this<Delivery<Item>> {
 public:
  using Receiver = std::function<bool(Item&& item)>;

  /// `latestAlone`: of the items that the receiver has not seen yet only the latest is kept. `receive` must
  /// live until Close.
  Delivery(RunningCall& call, const Receiver& receive, bool latestAlone)
      : poster_(call.Queue().Posting()), call_(&call), receive_(&receive), latestAlone_(latestAlone) {}
  Delivery(const Delivery&) = delete;
  Delivery& operator=(const Delivery&) = delete;

  /// The worker.
  void Put(Item&& item) {
    {
      const std::lock_guard lock(mutex_);
      if (latestAlone_) {
        items_.clear();
      }
      items_.push_back(std::move(item));
      if (isPosted_) {
        return;
      }
      isPosted_ = true;
    }
    poster_->Post([self = this->shared_from_this()] { self->Deliver(); });
  }

  /// The window's thread.
  void Deliver() {
    // The receiver may let events run.
    if (isDelivering_) {
      return;
    }
    const QScopedValueRollback delivering(isDelivering_, true);
    for (;;) {
      std::optional<Item> item;
      {
        const std::lock_guard lock(mutex_);
        isPosted_ = false;
        if (items_.empty()) {
          return;
        }
        item = std::move(items_.front());
        items_.pop_front();
      }
      if (receive_ == nullptr || ended_) {
        continue;
      }
      try {
        ended_ = !(*receive_)(*std::move(item));
      } catch (...) {
        thrown_ = std::current_exception();
        ended_ = true;
      }
      if (ended_ && call_ != nullptr) {
        call_->Cancel();
      }
    }
  }

  /// The window's thread, when the call is over: hands over what is left, where `deliverRest`, and nothing
  /// from here on. Throws what the receiver has thrown.
  void Close(bool deliverRest) {
    call_ = nullptr;
    if (deliverRest) {
      Deliver();
    }
    receive_ = nullptr;
    if (thrown_) {
      std::rethrow_exception(std::exchange(thrown_, nullptr));
    }
  }

  /// The receiver has returned false.
  [[nodiscard]] bool HasEnded() const noexcept { return ended_; }

 private:
  const std::shared_ptr<WindowQueue::Poster> poster_;
  std::mutex mutex_;
  std::deque<Item> items_;
  bool isPosted_ = false;

  // The window's thread's alone.
  RunningCall* call_;
  const Receiver* receive_;
  const bool latestAlone_;
  bool isDelivering_ = false;
  bool ended_ = false;
  std::exception_ptr thrown_;
};

}  // namespace trevane
