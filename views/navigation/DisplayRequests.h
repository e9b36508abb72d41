#pragma once

#include <QString>

#include <optional>
#include <utility>

namespace trevane {

/// Requests to a running display: to end, and to display another node after it.
class DisplayRequests final {
 public:
  /// A display begins.
  void Begin() noexcept { cancelled_ = false; }
  /// The running display is to end, with nothing after it.
  void Cancel() {
    cancelled_ = true;
    next_.reset();
  }
  /// The running display is to end, and the node at the address is to be displayed then.
  void DisplayNext(const QString& address) {
    cancelled_ = true;
    next_ = address;
  }

  [[nodiscard]] bool IsCancelled() const noexcept { return cancelled_; }
  [[nodiscard]] const std::optional<QString>& Next() const noexcept { return next_; }
  [[nodiscard]] std::optional<QString> TakeNext() { return std::exchange(next_, std::nullopt); }

 private:
  bool cancelled_ = false;
  std::optional<QString> next_;
};

}  // namespace trevane
