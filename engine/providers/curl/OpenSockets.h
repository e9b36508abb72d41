#pragma once

#include "engine/providers/curl/SocketCalls.h"

#include <mutex>
#include <vector>

namespace trevane::curl {

/// The sockets of one line, so that another thread can end every wait on them. Any thread's.
class OpenSockets final {
 public:
  void Add(Socket socket);
  /// Before it is closed.
  void Remove(Socket socket);
  /// All but this one are known to be closed.
  void KeepOnly(Socket socket);
  void ShutdownAll();
  /// All but the given one.
  void EndOthersAtOnce(Socket socket);

 private:
  std::mutex mutex_;
  std::vector<Socket> open_;
};

}  // namespace trevane::curl
