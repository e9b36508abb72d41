#include "platform/Secret.h"

#include "platform/LockedMemory.h"

#include <QStringEncoder>

#include <algorithm>
#include <memory>

namespace trevane {

class Secret::Store final {
 public:
  explicit Store(std::size_t size) : size_(size), bytes_(static_cast<char*>(AllocateLocked(size + 1))) {}
  ~Store() {
    WipeBytes(bytes_, size_ + 1);
    FreeLocked(bytes_, size_ + 1);
  }
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  [[nodiscard]] char* Data() noexcept { return bytes_; }
  [[nodiscard]] std::size_t Size() const noexcept { return size_; }
  void Shorten(std::size_t size) noexcept {
    WipeBytes(bytes_ + size, size_ - size);
    used_ = size;
  }
  [[nodiscard]] std::size_t Used() const noexcept { return used_; }

 private:
  const std::size_t size_;
  std::size_t used_ = size_;
  char* const bytes_;
};

Secret::Secret() : Secret(QByteArrayView()) {}

Secret::Secret(QByteArrayView utf8) : store_(std::make_shared<Store>(std::size_t(utf8.size()))) {
  std::copy(utf8.begin(), utf8.end(), store_->Data());
}

Secret::Secret(QStringView text) {
  // Straight into the locked bytes: a QByteArray between would stay behind.
  QStringEncoder encoder(QStringEncoder::Utf8);
  store_ = std::make_shared<Store>(std::size_t(encoder.requiredSpace(text.size())));
  const char* end = encoder.appendToBuffer(store_->Data(), text);
  store_->Shorten(std::size_t(end - store_->Data()));
}

QByteArrayView Secret::Bytes() const noexcept {
  return {store_->Data(), qsizetype(store_->Used())};
}

void WipeBytes(void* start, std::size_t bytes) noexcept {
  volatile char* at = static_cast<volatile char*>(start);
  while (bytes-- > 0) {
    *at++ = 0;
  }
}

}  // namespace trevane
