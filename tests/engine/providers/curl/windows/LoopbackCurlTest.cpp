// curl as it is built for Windows, against a server in this program.

#include "tests/engine/providers/curl/windows/LoopbackFtp.h"

#include <QByteArray>
#include <QByteArrayList>

#include <gtest/gtest.h>

#include <memory>

#include <curl/curl.h>

namespace trevane::test {
namespace {

class LoopbackCurlTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { ASSERT_EQ(curl_global_init(CURL_GLOBAL_DEFAULT), CURLE_OK); }
  static void TearDownTestSuite() { curl_global_cleanup(); }

  CURLcode Get(const LoopbackFtp& server) {
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> request(curl_easy_init(), &curl_easy_cleanup);
    CURL* const handle = request.get();
    curl_easy_setopt(handle, CURLOPT_URL, server.Url().c_str());
    curl_easy_setopt(handle, CURLOPT_USERNAME, "somebody");
    curl_easy_setopt(handle, CURLOPT_PASSWORD, "something");
    curl_easy_setopt(handle, CURLOPT_TIMEOUT, 60L);
    if (server.Url().starts_with("ftps")) {
      // The data stay without TLS, which this server does not have for them.
      curl_easy_setopt(handle, CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_CONTROL));
    }
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &LoopbackCurlTest::Take);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &received_);
    return curl_easy_perform(handle);
  }

  QByteArray received_;

 private:
  static size_t Take(const char* bytes, size_t size, size_t count, void* received) {
    static_cast<QByteArray*>(received)->append(bytes, static_cast<qsizetype>(size * count));
    return size * count;
  }
};

TEST_F(LoopbackCurlTest, SpeaksFtpWithOpenSslAndLooksForHostsAside) {
  const curl_version_info_data* const info = curl_version_info(CURLVERSION_NOW);
  QByteArrayList protocols;
  for (const char* const* protocol = info->protocols; *protocol != nullptr; ++protocol) {
    protocols.append(*protocol);
  }
  EXPECT_EQ(protocols, (QByteArrayList{"ftp", "ftps", "http", "https"}));
  EXPECT_TRUE(QByteArray(info->ssl_version).startsWith("OpenSSL/3.")) << info->ssl_version;
  EXPECT_NE(info->features & CURL_VERSION_ASYNCHDNS, 0) << "a host that is looked for would block";
  EXPECT_NE(info->features & CURL_VERSION_THREADSAFE, 0);
  EXPECT_NE(info->features & CURL_VERSION_IPV6, 0);
}

TEST_F(LoopbackCurlTest, ReadsAFile) {
  const QByteArray content(300'000, 'x');
  const LoopbackFtp server(LoopbackFtp::Tls::None, content);
  EXPECT_EQ(Get(server), CURLE_OK);
  EXPECT_EQ(received_, content);
}

TEST_F(LoopbackCurlTest, TrustsNoCertificateByItself) {
  const LoopbackFtp server(LoopbackFtp::Tls::Implicit, "x");
  EXPECT_EQ(Get(server), CURLE_PEER_FAILED_VERIFICATION);
  EXPECT_EQ(received_, QByteArray());
}

}  // namespace
}  // namespace trevane::test
