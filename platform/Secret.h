#pragma once

#include <QByteArrayView>
#include <QStringView>

#include <memory>

namespace trevane {

/// A password or passphrase. Its bytes stand in pages of their own, locked against swapping where the system
/// allows, and are overwritten when the last copy ends: copies share them. Never null inside; the empty
/// secret is one like any other.
class Secret final {
 public:
  Secret();
  /// Copies the bytes, which are UTF-8; the caller overwrites its own.
  explicit Secret(QByteArrayView utf8);
  explicit Secret(QStringView text);

  /// UTF-8, followed by a NUL that is not counted.
  [[nodiscard]] QByteArrayView Bytes() const noexcept;
  [[nodiscard]] const char* CString() const noexcept { return Bytes().data(); }

  friend bool operator==(const Secret& left, const Secret& right) noexcept {
    return left.Bytes() == right.Bytes();
  }

 private:
  class Store;
  std::shared_ptr<Store> store_;
};

/// Overwrites bytes in a way that no compiler leaves out.
void WipeBytes(void* start, std::size_t bytes) noexcept;

}  // namespace trevane
