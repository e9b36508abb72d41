#include "tests/support/SshTestServer.h"

#include "engine/providers/ssh/HostKeyText.h"
#include "engine/providers/ssh/SshHandles.h"
#include "tests/support/Sshd.h"

#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <utility>

#include <fcntl.h>
#include <libssh/callbacks.h>
#include <libssh/server.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace trevane::test {
namespace {

/// Milliseconds between two looks at whether the server is to end.
constexpr int kTurn = 50;

/// The program that serves the files, with a socket as its input and output; -1 where it cannot be started.
int StartSftpServer(int theirs) {
  const QByteArray program = QFile::encodeName(Sshd::Program(QStringLiteral("usr/lib/openssh/sftp-server")));
  posix_spawn_file_actions_t actions{};
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, theirs, STDIN_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, theirs, STDOUT_FILENO);
  std::array<char*, 2> arguments{const_cast<char*>(program.constData()), nullptr};
  pid_t process = -1;
  if (::posix_spawn(&process, program.constData(), &actions, nullptr, arguments.data(), environ) != 0) {
    process = -1;
  }
  ::posix_spawn_file_actions_destroy(&actions);
  return process;
}

}  // namespace

struct SshTestServer::Keys {
  SshKey host;
  SshKey user;
};

/// One connection, in a thread of its own.
class SshTestServer::Client final {
 public:
  Client(SshTestServer& server, int line) : server_(server), options_(server.options_), line_(line) {}
  ~Client() {
    if (files_ >= 0) {
      ::close(files_);
    }
    if (filesProcess_ > 0) {
      ::kill(filesProcess_, SIGKILL);
      ::waitpid(filesProcess_, nullptr, 0);
    }
  }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  void Serve() {
    ssh_bind const bind = ssh_bind_new();
    const bool processConfig = false;
    ssh_bind_options_set(bind, SSH_BIND_OPTIONS_PROCESS_CONFIG, &processConfig);
    ssh_bind_options_set(bind, SSH_BIND_OPTIONS_IMPORT_KEY, ssh_key_dup(server_.keys_->host.get()));
    session_.reset(ssh_new());
    // The session closes the line.
    if (ssh_bind_accept_fd(bind, session_.get(), line_) == SSH_OK) {
      SetCallbacks();
      if (ssh_handle_key_exchange(session_.get()) == SSH_OK) {
        Talk();
      }
    }
    event_.reset();
    ssh_disconnect(session_.get());
    session_.reset();
    ssh_bind_free(bind);
  }

 private:
  void SetCallbacks() {
    ssh_callbacks_init(&callbacks_);
    callbacks_.userdata = this;
    // This function always answers; the callback for messages need not.
    if (options_.wrong == Options::Wrong::IsRefused || options_.wrong == Options::Wrong::IsRefusedAndEnds) {
      callbacks_.auth_password_function = [](ssh_session, const char* user, const char* password,
                                             void* self) {
        return static_cast<Client*>(self)->JudgePassword(user, password);
      };
    }
    callbacks_.auth_pubkey_function = [](ssh_session, const char* user, ssh_key key, char state, void* self) {
      return static_cast<Client*>(self)->JudgeKey(user, key, state);
    };
    callbacks_.channel_open_request_session_function = [](ssh_session, void* self) {
      return static_cast<Client*>(self)->OpenChannel();
    };
    ssh_set_server_callbacks(session_.get(), &callbacks_);
    ssh_set_message_callback(
        session_.get(),
        [](ssh_session, ssh_message message, void* self) {
          return static_cast<Client*>(self)->Judge(message);
        },
        this);
    SetMethods(options_.publicKey.isEmpty() ? 0 : SSH_AUTH_METHOD_PUBLICKEY, !options_.wantsBoth);
  }

  void SetMethods(unsigned int methods, bool others) {
    if (others && !options_.password.isEmpty()) {
      methods |= SSH_AUTH_METHOD_PASSWORD;
    }
    if (others && !options_.questions.empty()) {
      methods |= SSH_AUTH_METHOD_INTERACTIVE;
    }
    ssh_set_auth_methods(session_.get(), static_cast<int>(methods));
  }

  void Talk() {
    if (!options_.banner.isEmpty()) {
      ssh_string const text = ssh_string_from_char(options_.banner.constData());
      ssh_send_issue_banner(session_.get(), text);
      ssh_string_free(text);
    }
    event_.reset(ssh_event_new());
    ssh_event_add_session(event_.get(), session_.get());
    const bool isTooMany = server_.open_ > options_.mostSessions;
    while (!server_.isEnding_ && !hasEnded_ && ssh_is_connected(session_.get()) != 0) {
      if (ssh_event_dopoll(event_.get(), isWritingErrors_ ? 0 : kTurn) == SSH_ERROR) {
        break;
      }
      if (wasWrong_ && options_.wrong != Options::Wrong::IsRefused) {
        End(options_.wrong == Options::Wrong::EndsSilently ? nullptr : "Too many authentication failures");
      }
      if (isWritingErrors_) {
        const QByteArray text(64 * 1024, 'x');
        ssh_channel_write_stderr(channel_, text.constData(), static_cast<uint32_t>(text.size()));
      }
      if (isTooMany && wantsService_) {
        // What was sent before must have left: the last words wait for nothing.
        ssh_event_dopoll(event_.get(), kTurn);
        End("Too many sessions");
      }
      if (isEndingChannel_) {
        ssh_channel_write_stderr(channel_, options_.lastText.constData(),
                                 static_cast<uint32_t>(options_.lastText.size()));
        ssh_channel_close(channel_);
        isEndingChannel_ = false;
      }
    }
    if (files_ >= 0) {
      ssh_event_remove_fd(event_.get(), files_);
    }
  }

  void End(const char* words) {
    hasEnded_ = true;
    if (words == nullptr) {
      ssh_silent_disconnect(session_.get());
      return;
    }
    ssh_session_set_disconnect_message(session_.get(), words);
    ssh_disconnect(session_.get());
  }

  static int Judged(bool isRight) { return isRight ? SSH_AUTH_SUCCESS : SSH_AUTH_DENIED; }

  int JudgePassword(const char* user, const char* password) {
    ++server_.passwords_;
    const bool isOffered = !options_.password.isEmpty() && (!options_.wantsBoth || hasKey_);
    const bool isRight = isOffered && options_.user == user && options_.password == password;
    wasWrong_ = !isRight;
    if (wasWrong_ && options_.wrong == Options::Wrong::IsRefusedAndEnds) {
      SendRefusalAndEndTogether();
    }
    return Judged(isRight);
  }

  /// A client that sees the refusal alone has good reason to ask its user again.
  void SendRefusalAndEndTogether() const {
    const int yes = 1;
    ::setsockopt(line_, IPPROTO_TCP, TCP_CORK, &yes, sizeof yes);
  }

  int JudgeKey(const char* user, ssh_key key, char state) {
    const bool isSigned = state == SSH_PUBLICKEY_STATE_VALID;
    ++(isSigned ? server_.signatures_ : server_.offeredKeys_);
    const bool isRight = server_.keys_->user && options_.user == user &&
                         ssh_key_cmp(key, server_.keys_->user.get(), SSH_KEY_CMP_PUBLIC) == 0 &&
                         (isSigned || state == SSH_PUBLICKEY_STATE_NONE);
    if (isRight && isSigned && options_.wantsBoth) {
      hasKey_ = true;
      SetMethods(0, true);
      return SSH_AUTH_PARTIAL;
    }
    return Judged(isRight);
  }

  /// 0 where it was answered, 1 for the default.
  int Judge(ssh_message message) {
    if (ssh_message_type(message) == SSH_REQUEST_SERVICE) {
      wantsService_ = true;
      return server_.open_ > options_.mostSessions ? 0 : 1;
    }
    if (ssh_message_type(message) == SSH_REQUEST_AUTH &&
        ssh_message_subtype(message) == static_cast<int>(SSH_AUTH_METHOD_PASSWORD)) {
      return JudgePasswordOf(message);
    }
    if (ssh_message_type(message) != SSH_REQUEST_AUTH ||
        ssh_message_subtype(message) != static_cast<int>(SSH_AUTH_METHOD_INTERACTIVE) ||
        options_.questions.empty()) {
      return 1;
    }
    if (ssh_message_auth_kbdint_is_response(message) == 0) {
      repeats_ = 0;
      AskAll(message, options_.questions);
      return 0;
    }
    if (wasAsked_) {
      // The answer to the request without questions.
      wasAsked_ = false;
      ssh_message_auth_reply_success(message, 0);
      return 0;
    }
    ++server_.answers_;
    if (!AreRight()) {
      AnswerWrong(message);
      return 0;
    }
    if (asked_ == &options_.questions && !options_.laterQuestions.empty()) {
      AskAll(message, options_.laterQuestions);
      return 0;
    }
    wasAsked_ = true;
    ssh_message_auth_interactive_request(message, "", "", 0, nullptr, nullptr);
    return 0;
  }

  int JudgePasswordOf(ssh_message message) {
// What the library has not replaced: the server judges passwords by message.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    const int judged = JudgePassword(ssh_message_auth_user(message), ssh_message_auth_password(message));
#pragma GCC diagnostic pop
    if (judged == SSH_AUTH_SUCCESS) {
      ssh_message_auth_reply_success(message, 0);
    }
    return 0;
  }

  void AnswerWrong(ssh_message message) {
    if (repeats_++ < options_.mostRepeats) {
      AskAll(message, *asked_);
      return;
    }
    wasWrong_ = true;
    if (options_.wrong == Options::Wrong::IsRefused || options_.wrong == Options::Wrong::IsRefusedAndEnds) {
      ssh_message_reply_default(message);
    }
  }

  void AskAll(ssh_message message, const std::vector<Options::Question>& questions) {
    asked_ = &questions;
    std::vector<const char*> prompts;
    std::vector<char> shown;
    for (const Options::Question& each : questions) {
      prompts.push_back(each.prompt.constData());
      shown.push_back(each.isShown ? 1 : 0);
    }
    wasAsked_ = false;
    ssh_message_auth_interactive_request(message, "", options_.instruction.constData(),
                                         static_cast<unsigned int>(prompts.size()), prompts.data(),
                                         shown.data());
  }

  [[nodiscard]] bool AreRight() {
    const int count = ssh_userauth_kbdint_getnanswers(session_.get());
    if (count != static_cast<int>(asked_->size())) {
      return false;
    }
    for (unsigned int i = 0; i < asked_->size(); ++i) {
      if ((*asked_)[i].answer != ssh_userauth_kbdint_getanswer(session_.get(), i)) {
        return false;
      }
    }
    return true;
  }

  ssh_channel OpenChannel() {
    channel_ = ssh_channel_new(session_.get());
    ssh_callbacks_init(&channelCallbacks_);
    channelCallbacks_.userdata = this;
    channelCallbacks_.channel_subsystem_request_function = [](ssh_session, ssh_channel, const char*,
                                                              void* self) {
      return static_cast<Client*>(self)->StartFiles();
    };
    channelCallbacks_.channel_data_function = [](ssh_session, ssh_channel, void* data, uint32_t size, int,
                                                 void* self) {
      return static_cast<Client*>(self)->ToFiles(static_cast<const char*>(data), size);
    };
    ssh_set_channel_callbacks(channel_, &channelCallbacks_);
    return channel_;
  }

  int StartFiles() {
    if (options_.subsystem == Options::Subsystem::Refused) {
      return 1;
    }
    if (options_.subsystem == Options::Subsystem::EndsAtOnce) {
      isEndingChannel_ = true;
      return 0;
    }
    if (options_.subsystem == Options::Subsystem::WritesErrorsWithoutEnd) {
      isWritingErrors_ = true;
      return 0;
    }
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
      return 1;
    }
    files_ = ends[0];
    filesProcess_ = StartSftpServer(ends[1]);
    ::close(ends[1]);
    ssh_event_add_fd(
        event_.get(), files_, POLLIN,
        [](socket_t, int, void* self) { return static_cast<Client*>(self)->FromFiles(); }, this);
    return filesProcess_ > 0 ? 0 : 1;
  }

  int ToFiles(const char* data, uint32_t size) const {
    for (uint32_t put = 0; put < size;) {
      const ssize_t now = ::send(files_, data + put, size - put, MSG_NOSIGNAL);
      if (now <= 0) {
        break;
      }
      put += static_cast<uint32_t>(now);
    }
    return static_cast<int>(size);
  }

  int FromFiles() {
    std::array<char, 65536> bytes{};
    const ssize_t size = ::read(files_, bytes.data(), bytes.size());
    if (size <= 0) {
      isEndingChannel_ = true;
      return -1;
    }
    ssh_channel_write(channel_, bytes.data(), static_cast<uint32_t>(size));
    return 0;
  }

  SshTestServer& server_;
  const Options& options_;
  const int line_;
  SshSessionHandle session_;
  SshEventHandle event_;
  ssh_server_callbacks_struct callbacks_{};
  ssh_channel_callbacks_struct channelCallbacks_{};
  ssh_channel channel_ = nullptr;
  int files_ = -1;
  pid_t filesProcess_ = -1;
  bool wantsService_ = false;
  bool hasKey_ = false;
  bool wasAsked_ = false;
  bool hasEnded_ = false;
  bool isEndingChannel_ = false;
  bool isWritingErrors_ = false;
  bool wasWrong_ = false;
  int repeats_ = 0;
  /// The questions that were asked last.
  const std::vector<Options::Question>* asked_ = nullptr;
};

SshTestServer::SshTestServer(Options options)
    : options_(std::move(options)), keys_(std::make_unique<Keys>()) {
  ssh_key key = nullptr;
  EXPECT_EQ(ssh_pki_generate(SSH_KEYTYPE_ED25519, 0, &key), SSH_OK);
  keys_->host.reset(key);
  if (!options_.publicKey.isEmpty()) {
    const QByteArrayList words = options_.publicKey.split(' ');
    ssh_key user = nullptr;
    EXPECT_EQ(ssh_pki_import_pubkey_base64(words.value(1).trimmed().constData(),
                                           ssh_key_type_from_name(words.value(0).constData()), &user),
              SSH_OK);
    keys_->user.reset(user);
  }
  listening_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  EXPECT_EQ(::bind(listening_, reinterpret_cast<const sockaddr*>(&address), size), 0);
  EXPECT_EQ(::listen(listening_, SOMAXCONN), 0);
  EXPECT_EQ(::getsockname(listening_, reinterpret_cast<sockaddr*>(&address), &size), 0);
  port_ = ntohs(address.sin_port);
  hostLine_ = "[127.0.0.1]:" + QByteArray::number(port_) + ' ' + KeyTypeOf(key) + ' ' + Base64Of(key) + '\n';
  accepting_ = std::thread([this] { Accept(); });
}

SshTestServer::~SshTestServer() {
  isEnding_ = true;
  ::shutdown(listening_, SHUT_RDWR);
  accepting_.join();
  ::close(listening_);
  DropAll();
  for (std::thread& thread : threads_) {
    thread.join();
  }
  for (const int line : lines_) {
    ::close(line);
  }
}

void SshTestServer::DropAll() {
  const std::lock_guard lock(mutex_);
  for (const int line : lines_) {
    ::shutdown(line, SHUT_RDWR);
  }
}

void SshTestServer::Accept() {
  while (!isEnding_) {
    const int line = ::accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC);
    if (line < 0) {
      continue;
    }
    ++sessions_;
    if (open_ >= options_.mostSessions && !options_.endsWithWords) {
      ::close(line);
      continue;
    }
    ++open_;
    const std::lock_guard lock(mutex_);
    // A name of our own: the session closes its own one.
    const int own = ::fcntl(line, F_DUPFD_CLOEXEC, 0);
    lines_.push_back(own);
    threads_.emplace_back([this, line, own] {
      Client(*this, line).Serve();
      ::shutdown(own, SHUT_RDWR);
      --open_;
    });
  }
}

}  // namespace trevane::test
