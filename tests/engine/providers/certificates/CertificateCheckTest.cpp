#include "engine/providers/certificates/CertificateCheck.h"

#include <QDateTime>
#include <QString>

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

namespace trevane::test {
namespace {

struct End {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
  void operator()(X509* certificate) const { X509_free(certificate); }
  void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
  void operator()(SSL* connection) const { SSL_free(connection); }
};

/// What a server shows.
struct Shown {
  std::string hosts = "DNS:cell.test, IP:10.1.2.3";
  long secondsFrom = -100000;
  long secondsUntil = 100000;
};

/// A server with such a certificate, at the other end of a pipe in memory.
class Pipe final {
 public:
  explicit Pipe(const Shown& shown) : key_(EVP_EC_gen("P-256")), certificate_(X509_new()) {
    X509_set_version(certificate_.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate_.get()), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate_.get()), shown.secondsFrom);
    X509_gmtime_adj(X509_getm_notAfter(certificate_.get()), shown.secondsUntil);
    X509_set_pubkey(certificate_.get(), key_.get());
    X509_NAME* const name = X509_get_subject_name(certificate_.get());
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, reinterpret_cast<const unsigned char*>("cell"), -1,
                               -1, 0);
    X509_set_issuer_name(certificate_.get(), name);
    if (!shown.hosts.empty()) {
      X509_EXTENSION* const hosts =
          X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, shown.hosts.c_str());
      X509_add_ext(certificate_.get(), hosts, -1);
      X509_EXTENSION_free(hosts);
    }
    X509_sign(certificate_.get(), key_.get(), EVP_sha256());
  }

  /// Whether the client goes on after it has seen the certificate.
  [[nodiscard]] bool Passes(CertificateCheck& check) const {
    const std::unique_ptr<SSL_CTX, End> clients(SSL_CTX_new(TLS_client_method()));
    const std::unique_ptr<SSL_CTX, End> servers(SSL_CTX_new(TLS_server_method()));
    SSL_CTX_use_certificate(servers.get(), certificate_.get());
    SSL_CTX_use_PrivateKey(servers.get(), key_.get());
    SSL_CTX_set_verify(clients.get(), SSL_VERIFY_PEER, nullptr);
    check.Install(clients.get());
    const std::unique_ptr<SSL, End> client(SSL_new(clients.get()));
    const std::unique_ptr<SSL, End> server(SSL_new(servers.get()));
    BIO* ofClient = nullptr;
    BIO* ofServer = nullptr;
    BIO_new_bio_pair(&ofClient, 0, &ofServer, 0);
    SSL_set_bio(client.get(), ofClient, ofClient);
    SSL_set_bio(server.get(), ofServer, ofServer);
    SSL_set_connect_state(client.get());
    SSL_set_accept_state(server.get());
    for (int i = 0; i < 20; ++i) {
      const int done = SSL_do_handshake(client.get());
      const bool waits = done != 1 && SSL_get_error(client.get(), done) == SSL_ERROR_WANT_READ;
      if (!waits) {
        return done == 1;
      }
      static_cast<void>(SSL_do_handshake(server.get()));
    }
    return false;
  }

  [[nodiscard]] QString ReasonFor(const QString& host) const {
    CertificateCheck check(host, {}, {});
    EXPECT_FALSE(Passes(check));
    EXPECT_TRUE(check.Refusal().contains(check.Shown().reason));
    return check.Shown().reason;
  }

 private:
  const std::unique_ptr<EVP_PKEY, End> key_;
  const std::unique_ptr<X509, End> certificate_;
};

TEST(CertificateCheckTest, TellsThatItHasExpired) {
  const QString day = QDateTime::currentDateTimeUtc().addSecs(-864000).toString(QStringLiteral("yyyy-MM-dd"));
  EXPECT_EQ(Pipe({.secondsFrom = -8640000, .secondsUntil = -864000}).ReasonFor(QStringLiteral("cell.test")),
            QStringLiteral("it is signed by itself; it has expired on %1").arg(day));
}

TEST(CertificateCheckTest, TellsThatItIsNotYetValid) {
  const QString day = QDateTime::currentDateTimeUtc().addSecs(864000).toString(QStringLiteral("yyyy-MM-dd"));
  EXPECT_EQ(Pipe({.secondsFrom = 864000, .secondsUntil = 8640000}).ReasonFor(QStringLiteral("cell.test")),
            QStringLiteral("it is signed by itself; it is valid only from %1 on").arg(day));
}

TEST(CertificateCheckTest, TellsThatItIsForAnotherHost) {
  EXPECT_EQ(Pipe({}).ReasonFor(QStringLiteral("other.test")),
            QStringLiteral("it is signed by itself; it is for another host: cell.test, 10.1.2.3"));
  EXPECT_EQ(Pipe({}).ReasonFor(QStringLiteral("10.1.2.4")),
            QStringLiteral("it is signed by itself; it is for another host: cell.test, 10.1.2.3"));
  EXPECT_EQ(Pipe({.hosts = ""}).ReasonFor(QStringLiteral("other.test")),
            QStringLiteral("it is signed by itself; it is for another host: cell"));
}

TEST(CertificateCheckTest, KnowsItsHostByNameAndAddress) {
  EXPECT_EQ(Pipe({}).ReasonFor(QStringLiteral("cell.test")), QStringLiteral("it is signed by itself"));
  EXPECT_EQ(Pipe({}).ReasonFor(QStringLiteral("10.1.2.3")), QStringLiteral("it is signed by itself"));
}

TEST(CertificateCheckTest, TheOneThatIsTrustedMayBeExpired) {
  const Pipe pipe({.hosts = "DNS:other.test", .secondsFrom = -8640000, .secondsUntil = -864000});
  CertificateCheck first(QStringLiteral("cell.test"), {}, {});
  ASSERT_FALSE(pipe.Passes(first));
  CertificateCheck again(QStringLiteral("cell.test"), {}, first.Shown().fingerprint);
  EXPECT_TRUE(pipe.Passes(again));
  EXPECT_TRUE(again.InUse().startsWith(QStringLiteral("TLSv1.3, "))) << again.InUse().toStdString();
}

TEST(CertificateCheckTest, ADataConnectionShowsNoOtherOne) {
  const Pipe control({});
  const Pipe data({});
  CertificateCheck first(QStringLiteral("cell.test"), {}, {});
  ASSERT_FALSE(control.Passes(first));
  CertificateCheck check(QStringLiteral("cell.test"), {}, first.Shown().fingerprint);
  EXPECT_TRUE(control.Passes(check));
  EXPECT_TRUE(control.Passes(check));
  EXPECT_FALSE(data.Passes(check));
  EXPECT_TRUE(check.Refusal().contains(QStringLiteral("another certificate")))
      << check.Refusal().toStdString();
}

}  // namespace
}  // namespace trevane::test
