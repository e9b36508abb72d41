#pragma once

#include <QString>

namespace trevane {

/// Something that a program which was killed in the middle of a copy has left under a temporary name.
struct Leftover {
  /// As the controller writes paths.
  QString path;
  /// It was this program's own beyond doubt, and old, and has been taken away.
  bool removed = false;
  friend bool operator==(const Leftover&, const Leftover&) = default;
};

}  // namespace trevane
