#include "engine/providers/sftp/SftpSession.h"

#include "base/ForeignText.h"
#include "base/NameCodec.h"
#include "engine/providers/sftp/SftpErrors.h"
#include "engine/remote/CallControl.h"

#include <algorithm>

namespace trevane::sftp {
namespace {

constexpr quint32 kVersion = 3;
/// So much may wait to be sent before a request is sent at once.
constexpr qsizetype kUnsent = 128 * 1024;
/// The smallest block, in bytes, and the most handles that a server is believed.
constexpr quint64 kSmallest = 512;
constexpr quint64 kMostHandles = 1024;

QByteArray Number(quint32 number) {
  return PacketWriter(PacketType::Init).Number32(number).Take().last(sizeof(quint32));
}

}  // namespace

Request::~Request() {
  if (session_ != nullptr) {
    session_->Forget(id_);
  }
}

Request& Request::operator=(Request&& other) noexcept {
  if (this != &other) {
    if (session_ != nullptr) {
      session_->Forget(id_);
    }
    session_ = std::exchange(other.session_, nullptr);
    id_ = other.id_;
  }
  return *this;
}

bool Request::IsAnswered() const noexcept {
  return session_ == nullptr || session_->HasAnswer(id_);
}

Answer Request::Wait() {
  Answer answer = session_->Await(id_);
  return answer;
}

void Request::RefuseKind() {
  session_->Break(kConnectionLost, QStringLiteral("The server sent an answer of another kind"));
}

StatusAnswer Request::Status() {
  Answer answer = Wait();
  auto* const status = std::get_if<StatusAnswer>(&answer.content);
  if (status == nullptr) {
    RefuseKind();
  }
  session_ = nullptr;
  return std::move(*status);
}

template <class Value>
Outcome<Value> Request::Take() {
  Answer answer = Wait();
  if (auto* const value = std::get_if<Value>(&answer.content)) {
    session_ = nullptr;
    return {std::move(*value)};
  }
  auto* const status = std::get_if<StatusAnswer>(&answer.content);
  // A success without what was asked for is none.
  if (status == nullptr || status->IsOk()) {
    RefuseKind();
  }
  session_ = nullptr;
  return {std::nullopt, std::move(*status)};
}

template Outcome<HandleAnswer> Request::Take();
template Outcome<DataAnswer> Request::Take();
template Outcome<NameAnswer> Request::Take();
template Outcome<Attributes> Request::Take();
template Outcome<ExtendedAnswer> Request::Take();

Session::Session(std::unique_ptr<SftpChannel> channel, std::shared_ptr<CallControl> control)
    : channel_(std::move(channel)), control_(std::move(control)) {
  Greet();
  Request limits;
  if (offers_.limits) {
    limits = SendExtended("limits@openssh.com", {});
  }
  Request start = RealPath(".");
  if (limits.IsUnderWay()) {
    LearnLimits(limits);
  }
  const Outcome<NameAnswer> names = start.Names();
  start_ = names && !names->names.empty() ? names->names.front().name : QByteArray("/");
}

void Session::Greet() {
  constexpr qsizetype kShown = 100;
  unsent_ = PacketWriter(PacketType::Init).Number32(kVersion).Take();
  QByteArray first;
  for (;;) {
    const QByteArray bytes = channel_->Exchange(unsent_);
    first += bytes.first(std::min(bytes.size(), std::max<qsizetype>(0, kShown - first.size())));
    stream_.Append(bytes);
    const std::optional<QByteArrayView> packet = stream_.Next();
    if (!packet && !stream_.IsBroken()) {
      continue;
    }
    const std::optional<VersionAnswer> version = packet ? ParseVersion(*packet) : std::nullopt;
    if (!version) {
      throw RunTimeError(error::kNotSupported, QStringLiteral("The server does not speak SFTP. It sent: %1")
                                                   .arg(ForeignLine(DecodeBytes(first), kShown)));
    }
    if (version->version < kVersion) {
      throw RunTimeError(
          error::kNotSupported,
          QStringLiteral("The server speaks SFTP version %1 only, not 3").arg(version->version));
    }
    const auto offers = [&](const char* name, const char* data) {
      return std::any_of(version->extensions.begin(), version->extensions.end(), [&](const auto& extension) {
        return extension.first == name && extension.second == data;
      });
    };
    offers_ = {.posixRename = offers("posix-rename@openssh.com", "1"),
               .hardLink = offers("hardlink@openssh.com", "1"),
               .fsync = offers("fsync@openssh.com", "1"),
               .statvfs = offers("statvfs@openssh.com", "2"),
               .limits = offers("limits@openssh.com", "1"),
               .ownerNames = offers("users-groups-by-id@openssh.com", "1")};
    return;
  }
}

void Session::LearnLimits(Request& request) {
  const Outcome<ExtendedAnswer> answer = request.Extended();
  if (!answer) {
    return;
  }
  PacketFields fields(answer->bytes);
  static_cast<void>(fields.Number64());
  const quint64 readMost = fields.Number64().value_or(0);
  const quint64 writeMost = fields.Number64().value_or(0);
  const quint64 handles = fields.Number64().value_or(0);
  // Larger blocks make a line no faster, and 0 means that there is no limit.
  const auto block = [](quint64 most) {
    return most == 0 ? Limits::kBlock
                     : static_cast<quint32>(std::clamp<quint64>(most, kSmallest, Limits::kBlock));
  };
  limits_ = {.readBlock = block(readMost),
             .writeBlock = block(writeMost),
             .handles = static_cast<int>(handles == 0 ? kMostHandles : std::min(handles, kMostHandles))};
}

PacketWriter Session::Begin(PacketType type) {
  do {
    ++lastId_;
  } while (pending_.contains(lastId_));
  return {type, lastId_};
}

Request Session::Send(PacketWriter& packet) {
  if (broken_) {
    Throw(*broken_);
  }
  unsent_ += packet.Take();
  pending_.insert(lastId_, {});
  Request request(*this, lastId_);
  if (unsent_.size() > kUnsent) {
    Flush();
  }
  return request;
}

Request Session::SendPath(PacketType type, const QByteArray& path) {
  return Send(Begin(type).Bytes(path));
}

Request Session::SendExtended(const char* name, const QByteArray& argument) {
  PacketWriter packet = Begin(PacketType::Extended);
  packet.Bytes(name);
  if (!argument.isNull()) {
    packet.Bytes(argument);
  }
  return Send(packet);
}

Request Session::Open(const QByteArray& path, quint32 flags, const Attributes& attributes) {
  return Send(Begin(PacketType::Open).Bytes(path).Number32(flags).Add(attributes));
}

Request Session::Read(const QByteArray& handle, quint64 offset, quint32 length) {
  return Send(Begin(PacketType::Read).Bytes(handle).Number64(offset).Number32(length));
}

Request Session::Write(const QByteArray& handle, quint64 offset, QByteArrayView bytes) {
  return Send(Begin(PacketType::Write).Bytes(handle).Number64(offset).Bytes(bytes));
}

Request Session::SetItem(const QByteArray& handle, const Attributes& attributes) {
  return Send(Begin(PacketType::FsetStat).Bytes(handle).Add(attributes));
}

Request Session::SetStat(const QByteArray& path, const Attributes& attributes) {
  return Send(Begin(PacketType::SetStat).Bytes(path).Add(attributes));
}

Request Session::MakeFolder(const QByteArray& path, const Attributes& attributes) {
  return Send(Begin(PacketType::MkDir).Bytes(path).Add(attributes));
}

Request Session::MakeLink(const QByteArray& path, const QByteArray& target) {
  // The draft has them the other way round, and OpenSSH's order has become the usual one.
  return Send(Begin(PacketType::SymLink).Bytes(target).Bytes(path));
}

Request Session::Rename(const QByteArray& from, const QByteArray& to) {
  return Send(Begin(PacketType::Rename).Bytes(from).Bytes(to));
}

Request Session::PosixRename(const QByteArray& from, const QByteArray& to) {
  return Send(Begin(PacketType::Extended).Bytes("posix-rename@openssh.com").Bytes(from).Bytes(to));
}

Request Session::HardLink(const QByteArray& from, const QByteArray& to) {
  return Send(Begin(PacketType::Extended).Bytes("hardlink@openssh.com").Bytes(from).Bytes(to));
}

Request Session::OwnerNames(quint32 user, quint32 group) {
  return Send(Begin(PacketType::Extended)
                  .Bytes("users-groups-by-id@openssh.com")
                  .Bytes(Number(user))
                  .Bytes(Number(group)));
}

void Session::Drop(const QByteArray& handle) noexcept {
  --opened_;
  if (broken_) {
    return;
  }
  try {
    static_cast<void>(Close(handle));
    Flush();
  } catch (...) {
    // The server closes it with the connection.
  }
}

void Session::Flush() noexcept {
  if (broken_) {
    return;
  }
  try {
    Take(channel_->Poll(unsent_));
  } catch (const RunTimeError& failure) {
    if (failure.Number() != error::kCancelled && !broken_) {
      broken_ = failure;
    }
  } catch (...) {
    broken_ = ProviderError(kConnectionLost, {});
  }
}

void Session::BeginPutBack() noexcept {
  ++putBacks_;
  channel_->BeginPutBack();
}

void Session::EndPutBack() noexcept {
  // A line that was made within it knows nothing of its beginning.
  if (putBacks_ == 0) {
    return;
  }
  channel_->EndPutBack();
  --putBacks_;
}

Answer Session::Await(quint32 id) {
  for (;;) {
    const auto found = pending_.find(id);
    if (found != pending_.end() && found->answer) {
      Answer answer = *std::move(found->answer);
      pending_.erase(found);
      return answer;
    }
    Exchange();
  }
}

bool Session::HasAnswer(quint32 id) const noexcept {
  const auto found = pending_.constFind(id);
  return found != pending_.cend() && found->answer.has_value();
}

void Session::Forget(quint32 id) noexcept {
  const auto found = pending_.find(id);
  if (found == pending_.end()) {
    return;
  }
  if (!found->answer) {
    found->isDropped = true;
    return;
  }
  const Answer answer = *std::move(found->answer);
  pending_.erase(found);
  if (const auto* const handle = std::get_if<HandleAnswer>(&answer.content)) {
    CountOpened();
    Drop(handle->handle);
  }
}

void Session::Exchange() {
  if (broken_) {
    Throw(*broken_);
  }
  if (putBacks_ == 0 && control_ && control_->IsCancelled()) {
    Fail(error::kCancelled, subject_);
  }
  QByteArray bytes;
  try {
    bytes = channel_->Exchange(unsent_);
  } catch (const RunTimeError& failure) {
    if (failure.Number() != error::kCancelled) {
      broken_ = failure;
    }
    Throw(failure);
  }
  Take(bytes);
}

void Session::Take(const QByteArray& bytes) {
  if (bytes.isEmpty()) {
    return;
  }
  stream_.Append(bytes);
  while (const std::optional<QByteArrayView> packet = stream_.Next()) {
    std::optional<Answer> answer = ParseAnswer(*packet);
    if (!answer) {
      Break(kConnectionLost, QStringLiteral("The server sent a packet that cannot be read"));
    }
    Dispatch(*std::move(answer));
  }
  if (stream_.IsBroken()) {
    Break(kConnectionLost, QStringLiteral("The server sent a packet that cannot be read"));
  }
}

void Session::Dispatch(Answer&& answer) {
  const auto found = pending_.find(answer.id);
  if (found == pending_.end() || found->answer) {
    Break(kConnectionLost, QStringLiteral("The server answered a request that was not made"));
  }
  if (!found->isDropped) {
    found->answer = std::move(answer);
    return;
  }
  pending_.erase(found);
  if (const auto* const handle = std::get_if<HandleAnswer>(&answer.content)) {
    static_cast<void>(Close(handle->handle));
  }
}

void Session::Break(qint32 number, const QString& sentence) {
  broken_ = RunTimeError(number, sentence);
  Throw(*broken_);
}

void Session::Throw(const RunTimeError& failure) const {
  if (subject_.isEmpty()) {
    throw failure;
  }
  throw RunTimeError(failure.Number(), failure.Description() + QStringLiteral(": ") + subject_);
}

OpenHandle& OpenHandle::operator=(OpenHandle&& other) noexcept {
  if (this != &other) {
    Reset();
    session_ = std::move(other.session_);
    handle_ = std::move(other.handle_);
  }
  return *this;
}

Request OpenHandle::Close() {
  Request closing = session_->Close(handle_);
  session_->CountClosed();
  session_.reset();
  return closing;
}

void OpenHandle::Reset() noexcept {
  if (const std::shared_ptr<Session> session = std::move(session_)) {
    session->Drop(handle_);
  }
}

}  // namespace trevane::sftp
