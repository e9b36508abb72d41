#include "tests/support/ftp/FtpTestKeys.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

namespace trevane::test {
namespace {

void AddExtension(X509* certificate, int kind, const char* value) {
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
  X509_EXTENSION* const extension = X509V3_EXT_conf_nid(nullptr, &context, kind, value);
  ASSERT_NE(extension, nullptr);
  X509_add_ext(certificate, extension, -1);
  X509_EXTENSION_free(extension);
}

QByteArray PemOf(const std::function<int(BIO* out)>& write) {
  BIO* const out = BIO_new(BIO_s_mem());
  EXPECT_EQ(write(out), 1);
  char* data = nullptr;
  const long size = BIO_get_mem_data(out, &data);
  QByteArray text(data, size);
  BIO_free(out);
  return text;
}

}  // namespace

FtpTestKeys::FtpTestKeys() : key_(EVP_EC_gen("P-256")), certificate_(X509_new()) {
  X509_set_version(certificate_, 2);
  std::array<unsigned char, 8> serial{};
  RAND_bytes(serial.data(), static_cast<int>(serial.size()));
  // A number above 0.
  serial[0] = static_cast<unsigned char>((serial[0] & 0x3F) | 0x40);
  BIGNUM* const number = BN_bin2bn(serial.data(), static_cast<int>(serial.size()), nullptr);
  BN_to_ASN1_INTEGER(number, X509_get_serialNumber(certificate_));
  BN_free(number);
  constexpr long kDay = 86400;
  X509_gmtime_adj(X509_getm_notBefore(certificate_), -kDay);
  X509_gmtime_adj(X509_getm_notAfter(certificate_), 30 * kDay);
  X509_set_pubkey(certificate_, key_);
  X509_NAME* const name = X509_get_subject_name(certificate_);
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("localhost"),
                             -1, -1, 0);
  X509_set_issuer_name(certificate_, name);
  AddExtension(certificate_, NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1");
  AddExtension(certificate_, NID_basic_constraints, "critical,CA:TRUE");
  EXPECT_GT(X509_sign(certificate_, key_, EVP_sha256()), 0);
}

FtpTestKeys::~FtpTestKeys() {
  X509_free(certificate_);
  EVP_PKEY_free(key_);
}

FtpTestKeys::Context FtpTestKeys::MakeContext(bool upToTls12, bool hasSessions) const {
  Context context(SSL_CTX_new(TLS_server_method()));
  SSL_CTX_use_certificate(context.get(), certificate_);
  SSL_CTX_use_PrivateKey(context.get(), key_);
  if (upToTls12) {
    SSL_CTX_set_max_proto_version(context.get(), TLS1_2_VERSION);
  }
  // A client that ends without a sign is no failure of the server.
  SSL_CTX_set_options(context.get(), SSL_OP_IGNORE_UNEXPECTED_EOF);
  if (hasSessions) {
    constexpr std::array<unsigned char, 4> kPlace{'t', 'e', 's', 't'};
    SSL_CTX_set_session_id_context(context.get(), kPlace.data(), static_cast<unsigned int>(kPlace.size()));
  } else {
    SSL_CTX_set_session_cache_mode(context.get(), SSL_SESS_CACHE_OFF);
    SSL_CTX_set_options(context.get(), SSL_OP_NO_TICKET);
    SSL_CTX_set_num_tickets(context.get(), 0);
  }
  return context;
}

QByteArray FtpTestKeys::Fingerprint() const {
  QByteArray bytes(EVP_MAX_MD_SIZE, '\0');
  unsigned int size = 0;
  X509_digest(certificate_, EVP_sha256(), reinterpret_cast<unsigned char*>(bytes.data()), &size);
  return bytes.first(size);
}

QByteArray FtpTestKeys::CertificatePem() const {
  return PemOf([this](BIO* out) { return PEM_write_bio_X509(out, certificate_); });
}

QByteArray FtpTestKeys::KeyPem() const {
  return PemOf([this](BIO* out) {
    return PEM_write_bio_PrivateKey(out, key_, nullptr, nullptr, 0, nullptr, nullptr);
  });
}

}  // namespace trevane::test
