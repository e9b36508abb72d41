#include "engine/providers/sftp/SftpServer.h"

#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"
#include "engine/model/ItemName.h"
#include "engine/providers/sftp/SftpErrors.h"
#include "engine/providers/sftp/SftpItem.h"
#include "engine/providers/sftp/SftpUnflushed.h"

#include <utility>

namespace trevane::sftp {

Server::Server(std::unique_ptr<SftpConnector> connector, const SftpSettings& settings,
               std::shared_ptr<CallControl> control)
    : connector_(std::move(connector)),
      host_(QStringLiteral("%1@%2:%3").arg(settings.user, settings.host).arg(settings.port)),
      names_(settings.encoding),
      control_(std::move(control)),
      unflushed_(std::make_unique<Unflushed>()) {
  clock_.start();
  Connect();
}

Server::~Server() = default;

void Server::Connect() {
  line_ = std::make_shared<Session>(connector_->Connect(), control_);
  serverKey_ = connector_->ServerKey();
  canonical_.clear();
}

const std::shared_ptr<Session>& Server::Line(const QString& subject) {
  if (!line_) {
    Connect();
  }
  line_->SetSubject(subject);
  return line_;
}

LearntNaming& Server::Naming() {
  static LearntNaming naming;
  return naming;
}

QString Server::Key() const {
  return serverKey_ + u' ' + host_;
}

Place Server::At(const QString& path) const {
  const QStringList pieces = providerpath::Split(path);
  Place place;
  place.text = providerpath::Join(pieces);
  for (const QString& piece : pieces) {
    if (!IsValidItemName(piece)) {
      Fail(error::kInvalidName, place.text);
    }
    place.folder = place.path.isEmpty() ? QByteArray("/") : place.path;
    place.path += '/' + names_.ToServer(piece, place.text);
    place.name = piece;
  }
  if (place.path.isEmpty()) {
    place.path = "/";
    place.folder = "/";
  }
  return place;
}

std::optional<Attributes> Server::TakeLook(Request& request, const Place& place) {
  const Outcome<Attributes> item = request.Item();
  if (item) {
    return *item;
  }
  if (NumberOf(item.status) == error::kNotFound) {
    return std::nullopt;
  }
  throw StatusError(item.status, place.text);
}

std::optional<Attributes> Server::Look(const Place& place) {
  Request request = Line(place.text)->Lstat(place.path);
  return TakeLook(request, place);
}

std::optional<Attributes> Server::Follow(const Place& place) {
  Request request = Line(place.text)->Stat(place.path);
  return TakeLook(request, place);
}

FileEntry Server::EntryAt(const Place& place, const Attributes& own) {
  if (!own.IsLink()) {
    return EntryOf(place.name, own, std::nullopt, false);
  }
  Outcome<Attributes> target = Line(place.text)->Stat(place.path).Item();
  const bool leadsNowhere = !target && NumberOf(target.status) == error::kNotFound;
  return EntryOf(place.name, own, target.value, leadsNowhere);
}

Request Server::AskCanonical(const QByteArray& folder) {
  constexpr qint64 kFresh = 2000;
  const auto known = canonical_.constFind(folder);
  if (known != canonical_.cend() && clock_.elapsed() - known->at < kFresh) {
    return {};
  }
  canonical_.remove(folder);
  return line_->RealPath(folder);
}

QByteArray Server::TakeCanonical(Request& request, const QByteArray& folder, const QString& text) {
  if (!request.IsUnderWay()) {
    const auto known = canonical_.constFind(folder);
    if (known != canonical_.cend()) {
      return known->path;
    }
    request = line_->RealPath(folder);
  }
  const Outcome<NameAnswer> names = request.Names();
  if (!names) {
    throw StatusError(names.status, text);
  }
  if (names->names.empty() || !names->names.front().name.startsWith('/')) {
    Fail(providererror::kGeneralFailure, text);
  }
  const QByteArray& path = names->names.front().name;
  Remember(folder, path);
  return path;
}

void Server::LearnCanonical(Request& request, const QByteArray& folder) {
  if (!request.IsUnderWay()) {
    return;
  }
  const Outcome<NameAnswer> names = request.Names();
  if (names && !names->names.empty() && names->names.front().name.startsWith('/')) {
    Remember(folder, names->names.front().name);
  }
}

void Server::Remember(const QByteArray& folder, const QByteArray& canonical) {
  constexpr qsizetype kMost = 1000;
  if (canonical_.size() >= kMost) {
    canonical_.clear();
  }
  canonical_.insert(folder, {canonical, clock_.elapsed()});
}

QByteArray Server::Canonical(const QByteArray& folder, const QString& text) {
  static_cast<void>(Line(text));
  Request request = AskCanonical(folder);
  return TakeCanonical(request, folder, text);
}

FileIdentity Server::IdentityOf(const QByteArray& canonicalFolder, const QByteArray& name) const {
  QByteArray path = canonicalFolder;
  if (!name.isEmpty()) {
    path += path.endsWith('/') ? name : '/' + name;
  }
  FileIdentity identity;
  identity.text = serverKey_ + u':' + names_.PathFromServer(path);
  return identity;
}

std::optional<Server::Space> Server::SpaceAt(const QByteArray& path) {
  if (!line_ || !line_->Offers().statvfs) {
    return std::nullopt;
  }
  const Outcome<ExtendedAnswer> answer = line_->Statvfs(path).Extended();
  if (!answer) {
    return std::nullopt;
  }
  PacketFields fields(answer->bytes);
  quint64 values[9] = {};
  for (quint64& value : values) {
    const std::optional<quint64> field = fields.Number64();
    if (!field) {
      return std::nullopt;
    }
    value = *field;
  }
  // Block size, fragment size, blocks, free ones, free ones for users, three of items, device.
  const quint64 unit = values[1] != 0 ? values[1] : values[0];
  return Space{.free = values[4] * unit, .all = values[2] * unit, .device = values[8]};
}

RunTimeError Server::StoringError(const StatusAnswer& answer, const Place& place) {
  constexpr quint64 kNothing = 64 * 1024;
  if (NumberOf(answer) == providererror::kGeneralFailure) {
    const PutBack uncancelled(line_.get());
    const std::optional<Space> space = SpaceAt(place.folder);
    if (space && space->free < kNothing) {
      return ProviderError(error::kDiskFull, place.text);
    }
  }
  return StatusError(answer, place.text);
}

qint64 Server::Idle(qint64 milliseconds) noexcept {
  constexpr qint64 kClosed = 60000;
  constexpr qint64 kAlive = 30000;
  if (!line_ || line_->IsBroken()) {
    return 0;
  }
  try {
    line_->Flush();
    if (connector_->ConnectsWithoutQuestion()) {
      if (milliseconds < kClosed) {
        return kClosed;
      }
      if (line_->OpenHandles() == 0) {
        line_.reset();
        return 0;
      }
    }
    if (milliseconds >= kAlive) {
      line_->KeepAlive();
    }
  } catch (...) {
    // The next call finds out.
    return 0;
  }
  return milliseconds + kAlive;
}

}  // namespace trevane::sftp
