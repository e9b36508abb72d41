#pragma once

#include <QString>

namespace trevane {

/// An item under a temporary name, left by a program that was killed during a copy.
struct Leftover {
  /// As the controller writes paths.
  QString path;
  /// It was old and certainly this program's own, and has been deleted.
  bool removed = false;
  friend bool operator==(const Leftover&, const Leftover&) = default;
};

}  // namespace trevane
