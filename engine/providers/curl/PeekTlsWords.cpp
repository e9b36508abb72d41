#include "engine/providers/curl/PeekTlsWords.h"

#include <array>

#include <openssl/bio.h>
#include <openssl/err.h>

namespace trevane::curl {
namespace {

/// A way of its own to the socket: that of the library works within the library's calls only.
class OwnWay final {
 public:
  OwnWay(SSL* tls, Socket socket) : tls_(tls), reads_(SSL_get_rbio(tls)), writes_(SSL_get_wbio(tls)) {
    BIO* const own = BIO_new_socket(static_cast<int>(socket), BIO_NOCLOSE);
    if (own == nullptr || reads_ == nullptr || writes_ == nullptr) {
      BIO_free(own);
      return;
    }
    isOpen_ = true;
    BIO_up_ref(reads_);
    BIO_up_ref(writes_);
    BIO_up_ref(own);
    SSL_set0_rbio(tls_, own);
    SSL_set0_wbio(tls_, own);
  }
  ~OwnWay() {
    if (isOpen_) {
      SSL_set0_rbio(tls_, reads_);
      SSL_set0_wbio(tls_, writes_);
    }
  }
  OwnWay(const OwnWay&) = delete;
  OwnWay& operator=(const OwnWay&) = delete;

  [[nodiscard]] bool IsOpen() const noexcept { return isOpen_; }

 private:
  SSL* tls_;
  BIO* reads_;
  BIO* writes_;
  bool isOpen_ = false;
};

}  // namespace

QByteArray PeekTlsWords(SSL* tls, Socket socket, std::chrono::milliseconds longest) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + longest;
  const OwnWay way(tls, socket);
  if (!way.IsOpen()) {
    return {};
  }
  for (;;) {
    std::array<char, 4096> bytes{};
    ERR_clear_error();
    const int got = SSL_peek(tls, bytes.data(), static_cast<int>(bytes.size()));
    if (got > 0) {
      return {bytes.data(), got};
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    const bool mayCome = SSL_get_error(tls, got) == SSL_ERROR_WANT_READ;
    ERR_clear_error();
    if (!mayCome || left.count() <= 0 || !AwaitBytes(socket, left)) {
      return {};
    }
  }
}

}  // namespace trevane::curl
