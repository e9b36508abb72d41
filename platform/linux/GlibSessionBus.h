#pragma once

#include <QLibrary>

namespace trevane {

/// GLib's own connection to the session's bus, which all libraries over GLib share: among them the one that
/// keeps secrets. Left to itself it ends the process when the bus ends, and with it work that is nowhere else
/// yet. As long as an object of this class is there, it does not.
class GlibSessionBus final {
 public:
  /// Connects where nobody has; blocks as long as the bus does not answer. Does nothing where there is no
  /// GLib or no bus. Any thread's.
  GlibSessionBus();
  ~GlibSessionBus();
  GlibSessionBus(const GlibSessionBus&) = delete;
  GlibSessionBus& operator=(const GlibSessionBus&) = delete;

 private:
  QLibrary library_;
  void* connection_ = nullptr;
};

}  // namespace trevane
