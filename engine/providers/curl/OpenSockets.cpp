#include "engine/providers/curl/OpenSockets.h"

namespace trevane::curl {

void OpenSockets::Add(Socket socket) {
  const std::lock_guard lock(mutex_);
  open_.push_back(socket);
}

void OpenSockets::Remove(Socket socket) {
  const std::lock_guard lock(mutex_);
  std::erase(open_, socket);
}

void OpenSockets::KeepOnly(Socket socket) {
  const std::lock_guard lock(mutex_);
  std::erase_if(open_, [socket](Socket each) { return each != socket; });
}

void OpenSockets::ShutdownAll() {
  const std::lock_guard lock(mutex_);
  for (const Socket each : open_) {
    Shutdown(each);
  }
}

void OpenSockets::EndOthersAtOnce(Socket socket) {
  const std::lock_guard lock(mutex_);
  for (const Socket each : open_) {
    if (each != socket) {
      EndAtOnce(each);
    }
  }
}

}  // namespace trevane::curl
