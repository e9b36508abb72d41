#include "engine/providers/curl/HandshakeGate.h"

#include <gtest/gtest.h>

#include <memory>

#include <openssl/bio.h>
#include <openssl/ssl.h>

namespace trevane::curl {
namespace {

struct ContextEnd {
  void operator()(SSL_CTX* context) const noexcept { SSL_CTX_free(context); }
};
struct ConnectionEnd {
  void operator()(SSL* connection) const noexcept { SSL_free(connection); }
};
struct BioEnd {
  void operator()(BIO* bio) const noexcept { BIO_free(bio); }
};

/// TLS of a data connection in a client, with a pipe in memory in place of the socket.
class HandshakeGateTest : public ::testing::Test {
 protected:
  HandshakeGateTest() {
    gate_.Guard(context_.get());
    connection_.reset(SSL_new(context_.get()));
    BIO* here = nullptr;
    BIO* there = nullptr;
    EXPECT_EQ(BIO_new_bio_pair(&here, 0, &there, 0), 1);
    server_.reset(there);
    SSL_set_bio(connection_.get(), here, here);
  }

  /// What SSL_get_error tells of one more attempt.
  int Attempt() { return SSL_get_error(connection_.get(), SSL_connect(connection_.get())); }
  [[nodiscard]] bool HasSent() const { return BIO_ctrl_pending(server_.get()) > 0; }
  void EndData() { BIO_shutdown_wr(server_.get()); }

  HandshakeGate gate_;
  std::unique_ptr<SSL_CTX, ContextEnd> context_{SSL_CTX_new(TLS_client_method())};
  std::unique_ptr<SSL, ConnectionEnd> connection_;
  std::unique_ptr<BIO, BioEnd> server_;
};

TEST_F(HandshakeGateTest, TlsBeginsBehindTheCommand) {
  for (const char* const before : {"EPSV\r\n", "TYPE A\r\n", "REST 5\r\n"}) {
    gate_.NoteSent(before);
    EXPECT_EQ(Attempt(), SSL_ERROR_WANT_WRITE) << before;
    EXPECT_FALSE(HasSent()) << before;
  }
  gate_.NoteSent("MLSD /folder\r\n");
  EXPECT_EQ(Attempt(), SSL_ERROR_WANT_READ);
  EXPECT_TRUE(HasSent());
  EXPECT_FALSE(gate_.HoldsEnd());
}

TEST_F(HandshakeGateTest, AnEarlyEndOfDataLooksSilent) {
  gate_.NoteSent("RETR /file\r\n");
  EXPECT_EQ(Attempt(), SSL_ERROR_WANT_READ);
  EndData();
  EXPECT_EQ(Attempt(), SSL_ERROR_WANT_READ);
  EXPECT_TRUE(gate_.HoldsEnd());
  // Once the transfer has begun it is a failure.
  gate_.NoteBegun();
  const int failure = Attempt();
  EXPECT_NE(failure, SSL_ERROR_WANT_READ);
  EXPECT_NE(failure, SSL_ERROR_NONE);
}

TEST_F(HandshakeGateTest, EachTransferBeginsAnew) {
  gate_.NoteSent("RETR /file\r\n");
  gate_.NoteBegun();
  gate_.Close();
  EXPECT_EQ(Attempt(), SSL_ERROR_WANT_WRITE);
  EXPECT_FALSE(HasSent());
}

TEST_F(HandshakeGateTest, ASecondOpeningLosesTheStep) {
  gate_.NoteSent("EPSV\r\n");
  // Nobody listened there.
  gate_.NoteSent("PASV\r\n");
  EXPECT_FALSE(gate_.HasLostStep());
  gate_.NoteSent("STOR /file\r\n");
  gate_.NoteSent("PASV\r\n");
  EXPECT_TRUE(gate_.HasLostStep());
  gate_.Close();
  EXPECT_FALSE(gate_.HasLostStep());
}

}  // namespace
}  // namespace trevane::curl
