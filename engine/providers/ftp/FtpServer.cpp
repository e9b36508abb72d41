#include "engine/providers/ftp/FtpServer.h"

#include "base/ForeignText.h"
#include "engine/files/ProviderPath.h"
#include "engine/model/ItemName.h"
#include "engine/providers/ftp/FtpErrors.h"
#include "engine/remote/CallControl.h"

#include <QUtf8StringView>

#include <algorithm>
#include <exception>
#include <utility>

namespace trevane::ftp {
namespace {

/// Of a path with characters that a text cannot show as they are.
constexpr qsizetype kLongestShown = 300;

bool IsAscii(const QByteArray& bytes) {
  return std::none_of(bytes.begin(), bytes.end(),
                      [](char c) { return (static_cast<unsigned char>(c) & 0x80U) != 0; });
}

}  // namespace

Server::Server(std::unique_ptr<FtpConnector> connector, const FtpSettings& settings,
               std::shared_ptr<CallControl> control, std::shared_ptr<AbandonedItems> abandoned)
    : connector_(std::move(connector)),
      host_(QStringLiteral("%1@%2:%3").arg(settings.user, settings.host).arg(settings.port)),
      names_(settings.encoding),
      control_(std::move(control)),
      isUtf8_(settings.encoding.isEmpty()),
      abandoned_(std::move(abandoned)) {
  Connect();
  can_.Offered(line_->Features());
  if (settings.tls != FtpSettings::Tls::Off) {
    // Such a line was seen to break under an answer of more than a mebibyte.
    can_.statusLists = Seen::Refused;
  }
  FindTop(settings.drive);
  RemoveAbandoned();
}

Server::~Server() = default;

void Server::Connect() {
  if (transfer_ != nullptr) {
    std::exchange(transfer_, nullptr)->Lose();
  }
  line_.reset();
  rules_ = {};
  toldUtf8_ = false;
  // What a cancelled call has changed is restored all the same.
  line_ = putBacks_ > 0 ? connector_->ConnectToPutBack() : connector_->Connect();
  serverKey_ = connector_->ServerKey();
  for (int i = 0; i < putBacks_; ++i) {
    line_->BeginPutBack();
  }
  if (!top_.isEmpty()) {
    RemoveAbandoned();
  }
}

FtpDialogue& Server::Line() {
  if (line_ && line_->IsBroken() && putBacks_ > 0 && !connector_->ConnectsWithoutQuestion()) {
    Fail(kConnectionLost, QString());
  }
  if (!HasLine()) {
    Connect();
  }
  if (transfer_ != nullptr) {
    std::exchange(transfer_, nullptr)->MakeWay();
  }
  // What was to be removed at once may have cost the new one, too.
  if (!HasLine()) {
    Fail(kConnectionLost, QString());
  }
  TellUtf8();
  return *line_;
}

void Server::TellUtf8() {
  if (needsUtf8_ && !toldUtf8_ && can_.utf8 == Seen::Unknown) {
    toldUtf8_ = true;
    if (!line_->Command("OPTS UTF8 ON").IsDone()) {
      // It cannot be switched.
      can_.utf8 = Seen::Refused;
    }
  }
}

bool Server::LacksUtf8(const ParsedListing& listing) {
  if (!isUtf8_ || toldUtf8_ || can_.utf8 != Seen::Unknown) {
    return false;
  }
  bool speaksIt = false;
  for (const ListedItem& item : listing.items) {
    // In the place of letters that the server's own encoding lacks.
    if (item.name.contains('?') || !QUtf8StringView(item.name).isValidUtf8()) {
      return true;
    }
    speaksIt = speaksIt || !IsAscii(item.name);
  }
  if (speaksIt) {
    can_.utf8 = Seen::Works;
  }
  return false;
}

void Server::Vacate(const Transfer& transfer) noexcept {
  if (transfer_ == &transfer) {
    transfer_ = nullptr;
  }
}

bool Server::TakesTogether() {
  if (can_.together != Seen::Unknown) {
    return can_.together == Seen::Works;
  }
  FtpDialogue& line = Line();
  try {
    can_.together = line.TakesTogether() ? Seen::Works : Seen::Refused;
  } catch (const RunTimeError& failure) {
    if (failure.Number() != kConnectionLost && failure.Number() != error::kTimeOut) {
      throw;
    }
    can_.together = Seen::Refused;
  }
  return can_.together == Seen::Works;
}

LearntNaming& Server::Naming() {
  static LearntNaming naming;
  return naming;
}

QString Server::Key() const {
  return QStringLiteral("ftp ") + serverKey_ + u' ' + host_;
}

void Server::FindTop(const QString& drive) {
  const auto use = [this](QByteArray path) {
    separator_ = path.contains('\\') && !path.contains('/') ? '\\' : '/';
    // A drive keeps its separator: "MC:/".
    while (path.size() > 1 && path.endsWith(separator_) && path[path.size() - 2] != ':') {
      path.chop(1);
    }
    top_ = std::move(path);
  };
  if (!drive.isEmpty()) {
    use(names_.ToServer(drive, drive));
    const Reply entered = Line().Command("CWD " + top_);
    if (!entered.IsDone()) {
      const qint32 number = NumberOf(entered);
      throw ReplyError(entered, number == providererror::kGeneralFailure ? error::kNotFound : number, drive);
    }
    return;
  }
  const QByteArray start = line_->Start();
  use("/");
  if (start.isEmpty() || start == "/") {
    return;
  }
  try {
    if (!ReadFolder(At(QString())).items.empty()) {
      return;
    }
  } catch (const RunTimeError& failure) {
    // Another time it might be listed, and all paths would lead elsewhere.
    const qint32 number = failure.Number();
    const bool isPassing = number == kNoData || number == kInUse || number == providererror::kDeviceIo ||
                           number == error::kDiskFull || number == kConnectionLost;
    if (isPassing || !HasLine() || number == error::kCancelled) {
      throw;
    }
  }
  use(start);
}

Place Server::At(const QString& path) {
  const QStringList pieces = providerpath::Split(path);
  Place place;
  place.text = providerpath::Join(pieces);
  place.path = top_;
  place.folder = top_;
  for (const QString& piece : pieces) {
    if (!IsValidItemName(piece)) {
      Fail(error::kInvalidName, place.text);
    }
    place.folder = place.path;
    place.ownName = names_.ToServer(piece, place.text);
    if (place.ownName.contains('\r') || place.ownName.contains('\n')) {
      Fail(error::kInvalidName, QStringLiteral("A name with a line break cannot be told to an FTP server"),
           ForeignLine(place.text, kLongestShown));
    }
    place.path = PathIn(place.folder, place.ownName);
    place.name = piece;
  }
  needsUtf8_ = needsUtf8_ || (isUtf8_ && !IsAscii(place.path));
  return place;
}

void Server::RequireFits(const Place& place) const {
  const QString objection = rules_.Objection(place.ownName);
  if (!objection.isEmpty()) {
    Fail(error::kInvalidName, objection, place.text);
  }
}

void Server::RequireTransferable(const QByteArray& path, const QString& text) {
  constexpr unsigned char kFirstPrintable = 0x20;
  if (std::any_of(path.begin(), path.end(),
                  [](char each) { return static_cast<unsigned char>(each) < kFirstPrintable; })) {
    Fail(error::kInvalidName,
         QStringLiteral("A file with control characters in its path cannot be transferred over FTP"),
         ForeignLine(text, kLongestShown));
  }
}

Place Server::Above(const Place& place) {
  return At(place.text.first(std::max<qsizetype>(place.text.lastIndexOf(u'\\'), 0)));
}

QByteArray Server::PathIn(const QByteArray& folder, const QByteArray& name) const {
  const bool isDrive = folder == top_ && folder.endsWith(':');
  return isDrive || folder.endsWith(separator_) ? folder + name : folder + separator_ + name;
}

std::optional<QString> Server::TextOf(const QByteArray& path) const {
  if (!path.startsWith(top_)) {
    return std::nullopt;
  }
  QByteArray below = path.sliced(top_.size());
  if (!below.isEmpty() && !top_.endsWith(separator_) && !below.startsWith(separator_)) {
    return std::nullopt;
  }
  if (separator_ != '/') {
    below.replace(separator_, '/');
  }
  return names_.PathFromServer(below);
}

void Server::BeginPutBack() noexcept {
  ++putBacks_;
  if (line_) {
    line_->BeginPutBack();
  }
}

void Server::EndPutBack() noexcept {
  --putBacks_;
  if (line_) {
    line_->EndPutBack();
  }
}

void Server::RemoveAbandoned() noexcept {
  for (QString& path : abandoned_->Take()) {
    if (!HasLine()) {
      abandoned_->Add(path);
      continue;
    }
    try {
      const Place place = At(path);
      if (HasLine() && line_->Command("DELE " + place.path).IsDone()) {
        continue;
      }
      if (HasLine() && !Look(place)) {
        continue;
      }
    } catch (const std::exception&) {
      // It is told.
    }
    leftovers_.push_back({std::move(path), false});
  }
}

std::vector<Leftover> Server::TakeLeftovers() {
  if (!abandoned_->IsEmpty()) {
    try {
      static_cast<void>(Line());
      RemoveAbandoned();
    } catch (const RunTimeError&) {
      // They are told.
    }
    for (QString& path : abandoned_->Take()) {
      leftovers_.push_back({std::move(path), false});
    }
  }
  return std::exchange(leftovers_, {});
}

void Server::ForgetLearnt() {
  links_.clear();
  recentFolder_.clear();
}

qint64 Server::Idle(qint64 milliseconds) noexcept {
  constexpr qint64 kClosed = 60000;
  constexpr qint64 kAlive = 30000;
  if (!HasLine()) {
    return 0;
  }
  try {
    if (connector_->ConnectsWithoutQuestion()) {
      if (milliseconds < kClosed) {
        return kClosed;
      }
      if (transfer_ == nullptr) {
        line_.reset();
        return 0;
      }
    }
    if (milliseconds >= kAlive && transfer_ == nullptr) {
      if (can_.noop == Seen::Refused) {
        return 0;
      }
      const Reply reply = line_->Command("NOOP");
      Learn(can_.noop, reply.IsDone(), reply.IsUnknownCommand());
    }
  } catch (...) {
    // The next call finds out.
    return 0;
  }
  return milliseconds + kAlive;
}

}  // namespace trevane::ftp
