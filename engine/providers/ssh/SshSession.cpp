#include "engine/providers/ssh/SshSession.h"

#include "engine/files/ProviderError.h"
#include "engine/providers/ssh/SshAlgorithms.h"

#include <QProcess>

#include <chrono>
#include <utility>

namespace trevane {
namespace {

const QString kDisconnect = QStringLiteral("Received SSH_MSG_DISCONNECT: ");

std::chrono::milliseconds TimeOutOf(const SftpSettings& settings) {
  return std::chrono::seconds(settings.timeout);
}

}  // namespace

SshSession::SshSession(const SftpSettings& settings, std::shared_ptr<CallControl> control)
    : settings_(settings), line_(std::move(control), TimeOutOf(settings)), session_(ssh_new()) {
  if (!session_) {
    throw RunTimeError(error::kWin32Error + 8, QStringLiteral("The system has no memory left"));
  }
}

SshSession::~SshSession() {
  // What the library still sends does not wait; the line itself ends with its last name.
  event_.reset();
  if (ssh_is_connected(Raw()) != 0) {
    // It leaves a socket open that it did not make.
    const socket_t socket = ssh_get_fd(Raw());
    ssh_disconnect(Raw());
    if (socket != SSH_INVALID_SOCKET) {
      net::Close(static_cast<net::Socket>(socket));
    }
  }
}

QString SshSession::Name() const {
  const bool isAddress = settings_.host.contains(u':');
  return QStringLiteral("%1:%2")
      .arg(isAddress ? u'[' + settings_.host + u']' : settings_.host)
      .arg(settings_.port);
}

QString SshSession::LibraryText() const {
  return QString::fromUtf8(ssh_get_error(Raw())).trimmed();
}

void SshSession::NoteLastWords() {
  if (ssh_is_connected(Raw()) != 0 || !lastWords_.isEmpty()) {
    return;
  }
  // "Received SSH_MSG_DISCONNECT: 2:Too many authentication failures"
  const QString text = LibraryText();
  const qsizetype colon = text.indexOf(u':', kDisconnect.size());
  if (text.startsWith(kDisconnect) && colon > 0) {
    lastWords_ = text.sliced(colon + 1).trimmed();
  }
}

SshKey SshSession::HostKey() const {
  ssh_key key = nullptr;
  if (ssh_get_server_publickey(Raw(), &key) != SSH_OK) {
    Fail(providererror::kGeneralFailure, QStringLiteral("The server has shown no host key"), Name());
  }
  return SshKey(key);
}

void SshSession::Connect(const QByteArrayList& knownTypes) {
  line_.Connect(settings_.host, settings_.port);
  const auto set = [this](ssh_options_e option, const void* value) { ssh_options_set(Raw(), option, value); };
  // Neither the settings nor the known hosts of the user's other programs: this program reads them itself.
  const bool processConfig = false;
  set(SSH_OPTIONS_PROCESS_CONFIG, &processConfig);
  const QByteArray nothing = QProcess::nullDevice().toLocal8Bit();
  set(SSH_OPTIONS_KNOWNHOSTS, nothing.constData());
  set(SSH_OPTIONS_GLOBAL_KNOWNHOSTS, nothing.constData());
  set(SSH_OPTIONS_SSH_DIR, nothing.constData());
  set(SSH_OPTIONS_HOST, settings_.host.toUtf8().constData());
  const unsigned int port = settings_.port;
  set(SSH_OPTIONS_PORT, &port);
  // Without it the library would take the name of this computer's user.
  if (ssh_options_set(Raw(), SSH_OPTIONS_USER, settings_.user.toUtf8().constData()) != SSH_OK) {
    Fail(error::kInvalidParameter,
         QStringLiteral("The name of the user cannot be used: %1").arg(settings_.user), Name());
  }
  sshalgorithms::Offer(Raw(), settings_.oldAlgorithms, knownTypes);
  // The library closes its own name of the socket whenever it likes; ours stays valid for waiting.
  const auto socket = static_cast<socket_t>(net::Duplicate(line_.Handle()));
  if (socket == SSH_INVALID_SOCKET) {
    throw RunTimeError(error::kWin32Error + 8, QStringLiteral("The system has no further sockets"));
  }
  set(SSH_OPTIONS_FD, &socket);
  ssh_set_blocking(Raw(), 0);
  if (Run(SSH_AGAIN, [this] { return ssh_connect(Raw()); }) != SSH_OK) {
    ThrowConnectFailure();
  }
  // The library makes it wait.
  net::Prepare(line_.Handle());
  event_.reset(ssh_event_new());
  if (!event_ || ssh_event_add_session(event_.get(), Raw()) != SSH_OK) {
    throw RunTimeError(error::kWin32Error + 8, QStringLiteral("The system has no memory left"));
  }
}

void SshSession::ThrowConnectFailure() const {
  const QString text = LibraryText();
  const QString algorithms = sshalgorithms::NothingInCommonText(text, settings_.oldAlgorithms);
  if (!algorithms.isEmpty()) {
    Fail(error::kNotSupported, algorithms, Name());
  }
  const QString words = ServersLastWords();
  if (!words.isEmpty()) {
    Fail(kNoSessionLeft, QStringLiteral("The server has ended the connection: \"%1\"").arg(words), Name());
  }
  if (ssh_get_serverbanner(Raw()) == nullptr) {
    Fail(
        kNoSessionLeft,
        QStringLiteral("The connection was closed without a greeting: no SSH server listens there, or it has "
                       "no session left"),
        Name());
  }
  if (text.contains(QStringLiteral("No version of SSH protocol"))) {
    Fail(error::kNotSupported, QStringLiteral("The server does not speak version 2 of SSH"), Name());
  }
  if (text.startsWith(QStringLiteral("Socket error"))) {
    Fail(kNoSessionLeft,
         QStringLiteral(
             "The server has closed the connection while keys were exchanged. It may have no session "
             "left"),
         Name());
  }
  Fail(providererror::kGeneralFailure, QStringLiteral("The exchange of keys has failed: %1").arg(text),
       Name());
}

void SshSession::WaitForServer() {
  line_.Wait((ssh_get_poll_flags(Raw()) & SSH_WRITE_PENDING) != 0);
}

bool SshSession::Pump() {
  const bool wasThere = ssh_event_dopoll(event_.get(), 0) == SSH_OK;
  NoteLastWords();
  return wasThere;
}

}  // namespace trevane
