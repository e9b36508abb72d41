#include "engine/providers/certificates/CertificateCheck.h"

#include "engine/providers/certificates/SystemCertificates.h"

#include <QDate>
#include <QFile>
#include <QStringList>
#include <QTime>
#include <QTimeZone>
#include <QUrl>

#include <algorithm>
#include <array>
#include <ctime>
#include <exception>
#include <new>
#include <utility>

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>
#include <openssl/x509v3.h>

namespace trevane {
namespace {

struct BioEnd {
  void operator()(BIO* bio) const noexcept { BIO_free(bio); }
};
struct CertificateEnd {
  void operator()(X509* certificate) const noexcept { X509_free(certificate); }
};
struct NamesEnd {
  void operator()(GENERAL_NAMES* names) const noexcept { GENERAL_NAMES_free(names); }
};
using Bio = std::unique_ptr<BIO, BioEnd>;
using Certificate = std::unique_ptr<X509, CertificateEnd>;

/// Where the object of a check stands in a context of OpenSSL.
int Place() {
  static const int place = SSL_CTX_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
  return place;
}

QByteArray FingerprintOf(X509* certificate) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
  unsigned int size = 0;
  if (X509_digest(certificate, EVP_sha256(), bytes.data(), &size) != 1) {
    return {};
  }
  return {reinterpret_cast<const char*>(bytes.data()), qsizetype(size)};
}

QString TextOf(const X509_NAME* name) {
  const Bio bio(BIO_new(BIO_s_mem()));
  if (!bio) {
    return {};
  }
  X509_NAME_print_ex(bio.get(), name, 0, XN_FLAG_ONELINE & ~static_cast<unsigned long>(ASN1_STRFLGS_ESC_MSB));
  char* bytes = nullptr;
  const long size = BIO_get_mem_data(bio.get(), &bytes);
  return QString::fromUtf8(bytes, size).simplified();
}

QDateTime DateOf(const ASN1_TIME* time) {
  std::tm parts{};
  if (ASN1_TIME_to_tm(time, &parts) != 1) {
    return {};
  }
  constexpr int kFirstYear = 1900;
  return {QDate(parts.tm_year + kFirstYear, parts.tm_mon + 1, parts.tm_mday),
          QTime(parts.tm_hour, parts.tm_min, parts.tm_sec), QTimeZone::utc()};
}

/// The hosts that a certificate names.
QStringList HostsOf(X509* certificate) {
  QStringList hosts;
  const std::unique_ptr<GENERAL_NAMES, NamesEnd> names(
      static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr)));
  for (int i = 0; i < sk_GENERAL_NAME_num(names.get()); ++i) {
    const GENERAL_NAME* const name = sk_GENERAL_NAME_value(names.get(), i);
    if (name->type == GEN_DNS) {
      hosts << QString::fromLatin1(reinterpret_cast<const char*>(ASN1_STRING_get0_data(name->d.dNSName)),
                                   ASN1_STRING_length(name->d.dNSName));
    } else if (name->type == GEN_IPADD) {
      const unsigned char* const bytes = ASN1_STRING_get0_data(name->d.iPAddress);
      constexpr int kBytesOfIpv4 = 4;
      if (ASN1_STRING_length(name->d.iPAddress) == kBytesOfIpv4) {
        hosts << QStringLiteral("%1.%2.%3.%4").arg(bytes[0]).arg(bytes[1]).arg(bytes[2]).arg(bytes[3]);
      }
    }
  }
  if (hosts.isEmpty()) {
    std::array<char, 256> name{};
    if (X509_NAME_get_text_by_NID(X509_get_subject_name(certificate), NID_commonName, name.data(),
                                  static_cast<int>(name.size())) > 0) {
      hosts << QString::fromUtf8(name.data());
    }
  }
  return hosts;
}

QString ReasonOfChain(int failure) {
  switch (failure) {
    case X509_V_OK:
    // The dates and the host are told from the certificate itself.
    case X509_V_ERR_CERT_HAS_EXPIRED:
    case X509_V_ERR_CERT_NOT_YET_VALID:
    case X509_V_ERR_HOSTNAME_MISMATCH:
    case X509_V_ERR_IP_ADDRESS_MISMATCH:
      return {};
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
      return QStringLiteral("it is signed by itself");
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
      return QStringLiteral("its issuer is not trusted on this computer");
    case X509_V_ERR_CERT_REVOKED:
      return QStringLiteral("it has been revoked");
    default:
      return QStringLiteral("it cannot be verified (%1)")
          .arg(QString::fromLatin1(X509_verify_cert_error_string(failure)));
  }
}

}  // namespace

CertificateCheck::CertificateCheck(QString host, const QString& caFile, QByteArray trustedFingerprint)
    : host_(std::move(host)), trusted_(std::move(trustedFingerprint)), store_(X509_STORE_new()) {
  if (!store_) {
    throw std::bad_alloc();
  }
  AddSystemCertificates(store_.get());
  // A device's own certificate may stand in CaFile, without the one that has signed it.
  X509_STORE_set_flags(store_.get(), X509_V_FLAG_PARTIAL_CHAIN | X509_V_FLAG_TRUSTED_FIRST);
  if (!caFile.isEmpty()) {
    ReadCaFile(caFile);
  }
}

void CertificateCheck::ReadCaFile(const QString& path) {
  constexpr qint64 kMostBytes = qint64(16) * 1024 * 1024;
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) {
    throw RunTimeError(error::kInvalidParameter,
                       QStringLiteral("CaFile cannot be read (%1): %2").arg(file.errorString(), path));
  }
  const QByteArray content = file.read(kMostBytes);
  const Bio bio(BIO_new_mem_buf(content.constData(), static_cast<int>(content.size())));
  int count = 0;
  while (bio) {
    const Certificate each(PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr));
    if (!each) {
      break;
    }
    X509_STORE_add_cert(store_.get(), each.get());
    ++count;
  }
  if (count == 0) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(content.constData());
    const Certificate each(d2i_X509(nullptr, &bytes, static_cast<long>(content.size())));
    if (!each) {
      throw RunTimeError(error::kInvalidParameter,
                         QStringLiteral("CaFile holds no certificate: %1").arg(path));
    }
    X509_STORE_add_cert(store_.get(), each.get());
  }
}

void CertificateCheck::Install(SSL_CTX* context) {
  SSL_CTX_set1_cert_store(context, store_.get());
  SSL_CTX_set_cert_verify_callback(context, Verify, this);
  SSL_CTX_set_ex_data(context, Place(), this);
  SSL_CTX_set_info_callback(context, NoteState);
  // Many servers end a data connection without the last message of TLS: their reply tells whether all came.
  SSL_CTX_set_options(context, SSL_OP_IGNORE_UNEXPECTED_EOF);
}

void CertificateCheck::NoteState(const SSL* connection, int where, int /*value*/) noexcept {
  if ((where & SSL_CB_HANDSHAKE_DONE) == 0) {
    return;
  }
  auto* const self =
      static_cast<CertificateCheck*>(SSL_CTX_get_ex_data(SSL_get_SSL_CTX(connection), Place()));
  if (self != nullptr && self->inUse_.isEmpty()) {
    self->inUse_ = QStringLiteral("%1, %2").arg(QString::fromLatin1(SSL_get_version(connection)),
                                                QString::fromLatin1(SSL_get_cipher_name(connection)));
  }
}

int CertificateCheck::Verify(X509_STORE_CTX* chain, void* self) noexcept {
  try {
    if (static_cast<CertificateCheck*>(self)->IsTrusted(chain)) {
      X509_STORE_CTX_set_error(chain, X509_V_OK);
      return 1;
    }
  } catch (const std::exception&) {
    // Nothing may pass through the library; what cannot be checked is not trusted.
  }
  if (X509_STORE_CTX_get_error(chain) == X509_V_OK) {
    X509_STORE_CTX_set_error(chain, X509_V_ERR_APPLICATION_VERIFICATION);
  }
  return 0;
}

bool CertificateCheck::IsTrusted(X509_STORE_CTX* chain) {
  X509* const certificate = X509_STORE_CTX_get0_cert(chain);
  const QByteArray fingerprint = certificate == nullptr ? QByteArray() : FingerprintOf(certificate);
  if (fingerprint.isEmpty()) {
    refusal_ = QStringLiteral("The server has shown no certificate that can be read");
    return false;
  }
  if (!shown_.fingerprint.isEmpty()) {
    if (fingerprint == shown_.fingerprint) {
      return true;
    }
    refusal_ = QStringLiteral(
        "A data connection has shown another certificate than the connection that was logged on");
    return false;
  }
  shown_ = {fingerprint,
            TextOf(X509_get_subject_name(certificate)),
            TextOf(X509_get_issuer_name(certificate)),
            DateOf(X509_get0_notBefore(certificate)),
            DateOf(X509_get0_notAfter(certificate)),
            ReasonAgainst(chain, certificate)};
  if (!trusted_.isEmpty()) {
    if (fingerprint == trusted_) {
      return true;
    }
    refusal_ = QStringLiteral("The server shows another certificate than the one that is trusted for it");
    return false;
  }
  if (shown_.reason.isEmpty()) {
    return true;
  }
  refusal_ = QStringLiteral("The certificate of the server is not trusted: %1").arg(shown_.reason);
  return false;
}

QString CertificateCheck::ReasonAgainst(X509_STORE_CTX* chain, X509* certificate) const {
  QStringList reasons;
  const bool isVerified = X509_verify_cert(chain) == 1;
  const int failure = X509_STORE_CTX_get_error(chain);
  const QString ofChain = ReasonOfChain(failure);
  if (!ofChain.isEmpty()) {
    reasons << ofChain;
  }
  const QDateTime now = QDateTime::currentDateTimeUtc();
  if (shown_.fingerprint.isEmpty()) {
    const QDateTime from = DateOf(X509_get0_notBefore(certificate));
    const QDateTime until = DateOf(X509_get0_notAfter(certificate));
    const QString day = QStringLiteral("yyyy-MM-dd");
    if (until.isValid() && until < now) {
      reasons << QStringLiteral("it has expired on %1").arg(until.toString(day));
    } else if (from.isValid() && from > now) {
      reasons << QStringLiteral("it is valid only from %1 on").arg(from.toString(day));
    }
  }
  const QByteArray host = QUrl::toAce(host_).isEmpty() ? host_.toUtf8() : QUrl::toAce(host_);
  if (X509_check_ip_asc(certificate, host.constData(), 0) != 1 &&
      X509_check_host(certificate, host.constData(), static_cast<size_t>(host.size()), 0, nullptr) != 1) {
    const QStringList hosts = HostsOf(certificate);
    reasons << (hosts.isEmpty()
                    ? QStringLiteral("it names no host")
                    : QStringLiteral("it is for another host: %1").arg(hosts.join(QStringLiteral(", "))));
  }
  if (reasons.isEmpty() && !isVerified) {
    reasons << QStringLiteral("it cannot be verified (%1)")
                   .arg(QString::fromLatin1(X509_verify_cert_error_string(failure)));
  }
  return reasons.join(QStringLiteral("; "));
}

}  // namespace trevane
