#pragma once

#include "engine/providers/curl/CurlFailures.h"

#include <QtGlobal>

#include <functional>
#include <memory>

namespace trevane {

class CallControl;

/// A server that takes no further client at present: many have room for one alone, and notice late that the
/// last one has left.
namespace busyserver {

inline constexpr qint32 kNoRoom = curl::kServerBusy;

/// Milliseconds: for how long it is tried, and how long is waited between two tries.
struct Patience {
  int whole = 5000;
  int pause = 1000;
};

/// Runs `connect` until it fails with anything but kNoRoom, and tells the user that it is tried again; the
/// last failure is passed on. error::kCancelled at once when the running call is cancelled. `control` may be
/// null.
void ConnectWhenFree(const std::function<void()>& connect, const Patience& patience, CallControl* control);

}  // namespace busyserver

}  // namespace trevane
