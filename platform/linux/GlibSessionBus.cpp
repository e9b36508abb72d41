#include "platform/linux/GlibSessionBus.h"

#include <QString>

namespace trevane {
namespace {

// As GLib declares them. Its headers are not needed where the program is built, nor is GLib where it runs.
constexpr int kSessionBus = 2;
using GetBus = void* (*)(int kind, void* cancellable, void** error);
using SetExitOnClose = void (*)(void* connection, int exits);
using Unref = void (*)(void* object);

}  // namespace

GlibSessionBus::GlibSessionBus() : library_(QStringLiteral("gio-2.0"), 0) {
  // What has been loaded stays: the connection has threads of its own.
  library_.setLoadHints(QLibrary::PreventUnloadHint);
  const auto getBus = reinterpret_cast<GetBus>(library_.resolve("g_bus_get_sync"));
  const auto setExitOnClose =
      reinterpret_cast<SetExitOnClose>(library_.resolve("g_dbus_connection_set_exit_on_close"));
  if (getBus == nullptr || setExitOnClose == nullptr) {
    return;
  }
  connection_ = getBus(kSessionBus, nullptr, nullptr);
  if (connection_ != nullptr) {
    setExitOnClose(connection_, 0);
  }
}

GlibSessionBus::~GlibSessionBus() {
  // Another user may have it still, and the next one would be given it as it is.
  if (const auto unref = reinterpret_cast<Unref>(library_.resolve("g_object_unref"));
      connection_ != nullptr && unref != nullptr) {
    unref(connection_);
  }
}

}  // namespace trevane
