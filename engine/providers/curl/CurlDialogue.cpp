#include "engine/providers/curl/CurlDialogue.h"

#include "engine/providers/curl/CurlDownload.h"
#include "engine/providers/curl/CurlLine.h"
#include "engine/providers/curl/CurlUpload.h"
#include "engine/providers/curl/OneLine.h"
#include "engine/remote/CallControl.h"

#include <algorithm>
#include <utility>

namespace trevane {
namespace {

/// Commands whose answer depends on the kind of transfers.
bool CountsBytes(const QByteArray& command) {
  const QByteArray verb = command.split(' ').first().toUpper();
  return verb == "SIZE" || verb == "REST" || verb == "XCRC" || verb == "XMD5" || verb == "HASH";
}

}  // namespace

CurlDialogue::CurlDialogue(const FtpSettings& settings, const FtpLogOn& logOn,
                           std::shared_ptr<CallControl> control)
    : line_(std::make_shared<curl::CurlLine>(settings, logOn, std::move(control))) {}

CurlDialogue::~CurlDialogue() = default;

ftp::Reply CurlDialogue::Command(const QByteArray& command) {
  if (CountsBytes(command)) {
    line_->RequireBinary();
  }
  return line_->Ask(command);
}

std::vector<ftp::Reply> CurlDialogue::Commands(const QByteArrayList& commands) {
  // Nothing is sent where one of them cannot be.
  for (const QByteArray& command : commands) {
    curl::RequireOneLine(command);
  }
  std::vector<ftp::Reply> replies;
  replies.reserve(size_t(commands.size()));
  for (const QByteArray& command : commands) {
    replies.push_back(Command(command));
    if (replies.back().code >= 400) {
      break;
    }
  }
  return replies;
}

bool CurlDialogue::TakesTogether() {
  return line_->TakesTogether();
}

std::vector<ftp::Reply> CurlDialogue::Together(const QByteArrayList& commands) {
  for (const QByteArray& command : commands) {
    curl::RequireOneLine(command);
  }
  if (line_->Certificates() != nullptr) {
    return FtpDialogue::Together(commands);
  }
  if (std::any_of(commands.begin(), commands.end(), CountsBytes)) {
    line_->RequireBinary();
  }
  return line_->AskTogether(commands);
}

FtpDialogue::Text CurlDialogue::ReadText(const QByteArray& command, qint64 most) {
  Text text;
  curl::CurlDownload download(line_);
  download.BeginText(command);
  if (download.Await()) {
    for (;;) {
      const QByteArray piece = download.Read(most + 1);
      if (piece.isEmpty()) {
        break;
      }
      text.bytes += piece;
      if (text.bytes.size() > most) {
        text.bytes.truncate(most);
        text.isTooLarge = true;
        return text;
      }
    }
  }
  text.reply = download.Finish();
  // The library does so on all systems but Windows.
  text.bytes.replace("\r\n", "\n");
  return text;
}

std::unique_ptr<FtpDownload> CurlDialogue::Retrieve(const QByteArray& path, qint64 offset,
                                                    ftp::Reply& refusal) {
  line_->RequireFree();
  if (offset > 0 && !line_->KnowsRestart()) {
    // Within the transfer a refusal would end the connection.
    refusal = Command("REST " + QByteArray::number(offset));
    if (refusal.code >= 400) {
      return nullptr;
    }
    line_->NoteRestart();
  }
  auto download = std::make_unique<curl::CurlDownload>(line_);
  download->BeginFile(path, offset);
  if (!download->Await()) {
    refusal = download->Finish();
    return nullptr;
  }
  return download;
}

std::unique_ptr<FtpUpload> CurlDialogue::Store(const QByteArray& path) {
  return std::make_unique<curl::CurlUpload>(line_, path);
}

const QByteArrayList& CurlDialogue::Features() const {
  return line_->Features();
}

const QByteArray& CurlDialogue::Start() const {
  return line_->Start();
}

bool CurlDialogue::IsBroken() const noexcept {
  return line_->IsBroken() || line_->HasEnded();
}

void CurlDialogue::BeginPutBack() noexcept {
  line_->BeginPutBack();
}

void CurlDialogue::EndPutBack() noexcept {
  line_->EndPutBack();
}

const QByteArray& CurlDialogue::Greeting() const {
  return line_->Greeting();
}

QString CurlDialogue::TlsInUse() const {
  return line_->Certificates() == nullptr ? QString() : line_->Certificates()->InUse();
}

const ShownCertificate& CurlDialogue::Certificate() const {
  static const ShownCertificate none;
  return line_->Certificates() == nullptr ? none : line_->Certificates()->Shown();
}

QString CurlDialogue::Address() const {
  return line_->Address();
}

}  // namespace trevane
