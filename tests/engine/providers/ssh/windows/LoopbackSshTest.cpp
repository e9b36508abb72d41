// libssh as it is built for Windows, against the sshd that test.sh starts beside Wine.

#include <QByteArray>

#include <gtest/gtest.h>

#include <memory>

#include <libssh/libssh.h>

namespace trevane {
namespace {

template <auto Free>
struct Freed {
  template <typename T>
  void operator()(T* object) const {
    Free(object);
  }
};
using Session = std::unique_ptr<ssh_session_struct, Freed<ssh_free>>;
using Key = std::unique_ptr<ssh_key_struct, Freed<ssh_key_free>>;
using Channel = std::unique_ptr<ssh_channel_struct, Freed<ssh_channel_free>>;

/// Wine shows the whole machine as drive Z:.
QByteArray FileOf(const char* variable) {
  return "Z:" + qgetenv(variable);
}

class LoopbackSshTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { ASSERT_EQ(ssh_init(), SSH_OK); }
  static void TearDownTestSuite() { ssh_finalize(); }

  void SetUp() override {
    if (!qEnvironmentVariableIsSet("TREVANE_SSHD_PORT")) {
      GTEST_SKIP() << "no sshd here: test.sh starts one";
    }
    session_.reset(ssh_new());
    const QByteArray user = qgetenv("TREVANE_SSHD_USER");
    const QByteArray knownHosts = FileOf("TREVANE_SSHD_KNOWN_HOSTS");
    const unsigned int port = qEnvironmentVariableIntValue("TREVANE_SSHD_PORT");
    const bool ignored = false;
    ssh_options_set(session_.get(), SSH_OPTIONS_PROCESS_CONFIG, &ignored);
    ssh_options_set(session_.get(), SSH_OPTIONS_HOST, "127.0.0.1");
    ssh_options_set(session_.get(), SSH_OPTIONS_PORT, &port);
    ssh_options_set(session_.get(), SSH_OPTIONS_USER, user.constData());
    ssh_options_set(session_.get(), SSH_OPTIONS_KNOWNHOSTS, knownHosts.constData());
    ssh_options_set(session_.get(), SSH_OPTIONS_GLOBAL_KNOWNHOSTS, knownHosts.constData());
    ASSERT_EQ(ssh_connect(session_.get()), SSH_OK) << ssh_get_error(session_.get());
  }

  void LogOn() const {
    ssh_key key = nullptr;
    ASSERT_EQ(
        ssh_pki_import_privkey_file(FileOf("TREVANE_SSHD_KEY").constData(), nullptr, nullptr, nullptr, &key),
        SSH_OK);
    const Key owned(key);
    ASSERT_EQ(ssh_userauth_publickey(session_.get(), nullptr, key), SSH_AUTH_SUCCESS)
        << ssh_get_error(session_.get());
  }

  Session session_;
};

TEST_F(LoopbackSshTest, KnowsTheHostFromTheFile) {
  EXPECT_EQ(ssh_session_is_known_server(session_.get()), SSH_KNOWN_HOSTS_OK) << ssh_get_error(session_.get());
}

TEST_F(LoopbackSshTest, LogsOnWithTheKeyAndTheSftpServerAnswers) {
  LogOn();
  const Channel channel(ssh_channel_new(session_.get()));
  ASSERT_EQ(ssh_channel_open_session(channel.get()), SSH_OK) << ssh_get_error(session_.get());
  ASSERT_EQ(ssh_channel_request_sftp(channel.get()), SSH_OK) << ssh_get_error(session_.get());

  const QByteArray init("\0\0\0\5\1\0\0\0\3", 9);
  ASSERT_EQ(ssh_channel_write(channel.get(), init.constData(), init.size()), init.size());
  QByteArray answer(9, '\0');
  ASSERT_EQ(ssh_channel_read_timeout(channel.get(), answer.data(), answer.size(), 0, 10'000), answer.size());
  EXPECT_EQ(answer.mid(4), QByteArray("\2\0\0\0\3", 5)) << "the answer with the server's version, 3";
}

TEST_F(LoopbackSshTest, IsRefusedWithAnotherKey) {
  ssh_key key = nullptr;
  ASSERT_EQ(ssh_pki_generate(SSH_KEYTYPE_ED25519, 0, &key), SSH_OK);
  const Key owned(key);
  EXPECT_EQ(ssh_userauth_publickey(session_.get(), nullptr, key), SSH_AUTH_DENIED);
}

}  // namespace
}  // namespace trevane
