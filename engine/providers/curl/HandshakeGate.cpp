#include "engine/providers/curl/HandshakeGate.h"

#include <algorithm>
#include <array>
#include <memory>

#include <openssl/bio.h>

namespace trevane::curl {
namespace {

struct MethodEnd {
  void operator()(BIO_METHOD* method) const noexcept { BIO_meth_free(method); }
};

/// Where the gate stands in a context of OpenSSL.
int Place() {
  static const int place = SSL_CTX_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
  return place;
}

int Kind() {
  static const int kind = BIO_get_new_index() | BIO_TYPE_FILTER;
  return kind;
}

bool BeginsWithAny(QByteArrayView command, const auto& verbs) {
  return std::any_of(verbs.begin(), verbs.end(),
                     [&](QByteArrayView verb) { return command.startsWith(verb); });
}

}  // namespace

void HandshakeGate::Guard(SSL_CTX* context) {
  SSL_CTX_set_ex_data(context, Place(), this);
  SSL_CTX_set_info_callback(context, OnState);
  // The library describes each message of TLS to nobody.
  SSL_CTX_set_msg_callback(context, nullptr);
}

void HandshakeGate::Close() noexcept {
  isSent_ = hasBegun_ = holdsEnd_ = hasLostStep_ = false;
}

void HandshakeGate::NoteSent(QByteArrayView command) noexcept {
  static constexpr std::array<QByteArrayView, 4> kOpening{"EPSV", "PASV", "EPRT ", "PORT "};
  static constexpr std::array<QByteArrayView, 3> kBefore{"TYPE ", "REST ", "SIZE "};
  if (BeginsWithAny(command, kOpening)) {
    hasLostStep_ = hasLostStep_ || isSent_;
  } else if (!BeginsWithAny(command, kBefore)) {
    isSent_ = true;
  }
}

void HandshakeGate::OnState(const SSL* connection, int where, int /*value*/) noexcept {
  if ((where & SSL_CB_HANDSHAKE_START) == 0) {
    return;
  }
  auto* const gate = static_cast<HandshakeGate*>(SSL_CTX_get_ex_data(SSL_get_SSL_CTX(connection), Place()));
  if (gate != nullptr && BIO_method_type(SSL_get_rbio(connection)) != Kind()) {
    // It is const since most callers only look.
    gate->StandIn(const_cast<SSL*>(connection));
  }
}

void HandshakeGate::StandIn(SSL* connection) noexcept {
  BIO* const socket = SSL_get_rbio(connection);
  BIO* const filter = Method() == nullptr ? nullptr : BIO_new(Method());
  if (filter == nullptr) {
    return;
  }
  BIO_set_data(filter, this);
  // One reference of the filter's own, and one of the filter's for each direction.
  BIO_up_ref(socket);
  BIO_push(filter, socket);
  BIO_up_ref(filter);
  SSL_set0_rbio(connection, filter);
  SSL_set0_wbio(connection, filter);
}

const BIO_METHOD* HandshakeGate::Method() {
  static const std::unique_ptr<BIO_METHOD, MethodEnd> method = [] {
    std::unique_ptr<BIO_METHOD, MethodEnd> made(BIO_meth_new(Kind(), "data connection"));
    if (made) {
      BIO_meth_set_read(made.get(), Read);
      BIO_meth_set_write(made.get(), Write);
      BIO_meth_set_ctrl(made.get(), Control);
      BIO_meth_set_create(made.get(), Create);
    }
    return made;
  }();
  return method.get();
}

int HandshakeGate::Create(BIO* self) noexcept {
  BIO_set_init(self, 1);
  return 1;
}

int HandshakeGate::Read(BIO* self, char* bytes, int most) noexcept {
  auto& gate = *static_cast<HandshakeGate*>(BIO_get_data(self));
  BIO_clear_retry_flags(self);
  const int got = BIO_read(BIO_next(self), bytes, most);
  BIO_copy_next_retry(self);
  if (got <= 0 && BIO_should_retry(self) == 0 && !gate.hasBegun_) {
    gate.holdsEnd_ = true;
    BIO_set_retry_read(self);
    return -1;
  }
  return got;
}

int HandshakeGate::Write(BIO* self, const char* bytes, int count) noexcept {
  auto& gate = *static_cast<HandshakeGate*>(BIO_get_data(self));
  BIO_clear_retry_flags(self);
  if (!gate.isSent_) {
    BIO_set_retry_write(self);
    return -1;
  }
  const int written = BIO_write(BIO_next(self), bytes, count);
  BIO_copy_next_retry(self);
  if (written <= 0 && BIO_should_retry(self) == 0 && !gate.hasBegun_) {
    gate.holdsEnd_ = true;
    BIO_set_retry_write(self);
    return -1;
  }
  return written;
}

long HandshakeGate::Control(BIO* self, int command, long number, void* pointer) noexcept {
  BIO* const socket = BIO_next(self);
  // A copy would have no gate.
  return socket == nullptr || command == BIO_CTRL_DUP ? 0 : BIO_ctrl(socket, command, number, pointer);
}

}  // namespace trevane::curl
