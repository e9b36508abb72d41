#include "engine/remote/RemoteControllers.h"

#include "engine/remote/ControllerLink.h"

namespace trevane {

void RemoteControllers::Count::Begin() {
  const std::lock_guard lock(mutex_);
  ++running_;
}

void RemoteControllers::Count::End() {
  const std::lock_guard lock(mutex_);
  --running_;
  changed_.notify_all();
}

bool RemoteControllers::Count::WaitForNone(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, limit, [this] { return running_ == 0; });
}

void RemoteControllers::Add(const std::shared_ptr<ControllerLink>& link) {
  std::erase_if(links_, [](const auto& each) { return each.expired(); });
  links_.push_back(link);
}

bool RemoteControllers::StopAll(std::chrono::milliseconds limit) {
  stopped_ = true;
  for (const std::weak_ptr<ControllerLink>& each : links_) {
    if (const auto link = each.lock()) {
      link->GiveUp();
    }
  }
  links_.clear();
  return running_->WaitForNone(limit);
}

}  // namespace trevane
