#include "tests/support/ftp/FtpTestListing.h"
#include "tests/support/ftp/FtpTestSession.h"

#include <QDateTime>

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace trevane::test {
namespace {

const char* const kComplete = "226 Transfer complete.";

}  // namespace

void FtpTestSession::Pasv(const QByteArray& /*argument*/) {
  const quint16 port = opening_.Listen(vices_.refusesData);
  const QByteArray address = vices_.passiveAddress.isEmpty() ? "127,0,0,1" : vices_.passiveAddress;
  Reply("227 Entering Passive Mode (" + address + ',' + QByteArray::number(port / 256) + ',' +
        QByteArray::number(port % 256) + ").");
}

void FtpTestSession::Epsv(const QByteArray& /*argument*/) {
  const quint16 port = opening_.Listen(vices_.refusesData);
  Reply("229 Entering Extended Passive Mode (|||" + QByteArray::number(port) + "|)");
}

void FtpTestSession::Port(const QByteArray& argument) {
  const QByteArrayList numbers = argument.split(',');
  if (vices_.refusesActive || numbers.size() != 6) {
    Reply("500 Illegal PORT command.");
    return;
  }
  opening_.ConnectTo(static_cast<quint16>(numbers[4].toInt() * 256 + numbers[5].toInt()));
  Reply("200 PORT command successful.");
}

void FtpTestSession::Eprt(const QByteArray& argument) {
  const QByteArrayList parts = argument.split('|');
  if (vices_.refusesActive || parts.size() != 5) {
    Reply("500 Illegal EPRT command.");
    return;
  }
  opening_.ConnectTo(static_cast<quint16>(parts[3].toInt()));
  Reply("200 EPRT command successful.");
}

void FtpTestSession::RefuseData() {
  opening_.Forget();
  if (vices_.refusalDelayMs > 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(vices_.refusalDelayMs));
  }
}

bool FtpTestSession::OpenData() {
  std::optional<FtpTestSocket> opened = opening_.Open(control_);
  if (!opened) {
    Reply("425 Can't open data connection.");
    return false;
  }
  data_ = std::move(*opened);
  script_.Count([](FtpTestCounts& counts) {
    ++counts.dataConnections;
    ++counts.roundTrips;
  });
  if (!vices_.leavesOutStart) {
    Reply("150 Opening data connection.");
  }
  if (vices_.endsEarly) {
    Reply(kComplete);
  }
  if (!isProtected_) {
    return true;
  }
  const bool resumes = vices_.reuse != FtpVices::Reuse::Impossible;
  const FtpTestKeys::Context& context = resumes
                                            ? (vices_.upToTls12 ? contexts_->linesUpTo12 : contexts_->lines)
                                            : (vices_.upToTls12 ? contexts_->dataUpTo12 : contexts_->data);
  if (!data_.StartTls(context.get())) {
    EndData("425 TLS negotiation failed on the data channel.");
    return false;
  }
  if (vices_.reuse == FtpVices::Reuse::Demanded && !data_.WasResumed()) {
    EndData(vices_.notReused);
    return false;
  }
  return true;
}

void FtpTestSession::EndData(const QByteArray& reply) {
  data_.Close(vices_.endsTlsAbruptly);
  if (vices_.endDelayMs > 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(vices_.endDelayMs));
  }
  if (!vices_.endsEarly || !reply.startsWith('2')) {
    Reply(reply);
  }
}

bool FtpTestSession::PassBlock() {
  const std::optional<FtpFault> fault = script_.OnBlock();
  if (!fault) {
    return true;
  }
  switch (fault->kind) {
    case FtpFault::Kind::LoseCommand:
    case FtpFault::Kind::LoseAnswer:
      data_.Break();
      Break();
      return false;
    case FtpFault::Kind::Refuse:
      EndData(fault->reply);
      return false;
    case FtpFault::Kind::LoseData:
      data_.Break();
      EndData(fault->reply);
      return false;
    case FtpFault::Kind::DoAndRefuse:
      replaced_ = fault->reply;
      return true;
    case FtpFault::Kind::Stall:
    case FtpFault::Kind::EndlessReply:
      control_.Stall();
      hasEnded_ = true;
      return false;
  }
  return true;
}

void FtpTestSession::SendText(const QByteArray& text) {
  if (!OpenData()) {
    return;
  }
  EndData(data_.Write(text) ? kComplete : "426 Connection closed; transfer aborted.");
}

void FtpTestSession::List(const QByteArray& argument) {
  QByteArray shown = argument;
  if (shown.startsWith('-')) {
    const qsizetype blank = shown.indexOf(' ');
    shown = blank < 0 ? QByteArray() : shown.sliced(blank + 1);
  }
  if (vices_.listCutsAtBlank) {
    shown = shown.split(' ').first();
  }
  const QByteArray path = tree_.Followed(PathOf(shown));
  const std::optional<FtpTestItem> item = tree_.Find(path);
  FtpVices::Odd odd = FtpVices::Odd::Tells;
  if (!item) {
    odd = vices_.listOfMissing == FtpVices::Odd::Tells ? FtpVices::Odd::Refuses : vices_.listOfMissing;
  } else if (!item->IsFolder()) {
    odd = vices_.listOfFile;
  }
  if (vices_.listTakesNoPath && !shown.isEmpty()) {
    odd = FtpVices::Odd::EmptyDone;
  }
  if (odd == FtpVices::Odd::Refuses) {
    RefuseData();
    ReplyMissing(shown);
    return;
  }
  QByteArray text;
  if (odd == FtpVices::Odd::Tells && item->IsFolder()) {
    for (const FtpTestItem& child : tree_.ChildrenOf(path)) {
      text += ftplisting::LineOf(Shown(child), vices_);
    }
  } else if (odd == FtpVices::Odd::Tells) {
    FtpTestItem one = *item;
    one.name = shown;
    text = ftplisting::LineOf(one, vices_);
  }
  SendText(text);
}

void FtpTestSession::Nlst(const QByteArray& argument) {
  QByteArray text;
  for (const FtpTestItem& child : tree_.ChildrenOf(PathOf(argument))) {
    text += child.name + "\r\n";
  }
  SendText(text);
}

void FtpTestSession::Mlsd(const QByteArray& argument) {
  const QByteArray path = PathOf(argument);
  const std::optional<FtpTestItem> item = tree_.Find(path);
  if (!item || !item->IsFolder()) {
    RefuseData();
    if (item) {
      Reply("501 " + argument + ": Not a directory");
    } else {
      ReplyMissing(argument);
    }
    return;
  }
  FtpTestItem own = *item;
  own.name = ".";
  QByteArray text = ftplisting::FactsOf(own, vices_).replace("type=dir", "type=cdir") + "\r\n";
  for (const FtpTestItem& child : tree_.ChildrenOf(path)) {
    text += ftplisting::FactsOf(Shown(child), vices_) + "\r\n";
  }
  SendText(text);
}

void FtpTestSession::Retr(const QByteArray& argument) {
  const std::optional<FtpTestItem> item = tree_.Find(tree_.Followed(PathOf(argument)));
  if (!item || item->IsFolder()) {
    RefuseData();
    Reply(item ? "550 " + argument + ": Not a regular file" : "550 Failed to open file.");
    return;
  }
  QByteArray content = item->make ? item->make() : item->content;
  content.remove(0, std::exchange(offset_, 0));
  if (!isBinary_) {
    content.replace("\n", "\r\n");
  }
  if (!OpenData()) {
    return;
  }
  for (qsizetype sent = 0; sent < content.size(); sent += vices_.block) {
    if (!PassBlock()) {
      return;
    }
    if (!data_.Write(content.mid(sent, vices_.block))) {
      EndData("426 Connection closed; transfer aborted.");
      return;
    }
  }
  EndData(kComplete);
}

void FtpTestSession::Stor(const QByteArray& argument) {
  Store(argument, false);
}

void FtpTestSession::Appe(const QByteArray& argument) {
  Store(argument, true);
}

void FtpTestSession::Store(const QByteArray& argument, bool appends) {
  const QByteArray path = PathOf(argument);
  const std::optional<FtpTestItem> old = tree_.Find(path);
  const std::optional<FtpTestItem> parent = tree_.Find(FtpTestTree::ParentOf(path));
  const qint64 offset = std::exchange(offset_, 0);
  if (!parent || !parent->IsFolder() || (old && old->IsFolder())) {
    RefuseData();
    Reply("553 Could not create file.");
    return;
  }
  if (!TakesName(path) || !MayWrite(path)) {
    opening_.Forget();
    return;
  }
  if (old && vices_.refusesOverwriting) {
    RefuseData();
    Reply("553 " + argument + ": File exists");
    return;
  }
  if (!OpenData()) {
    return;
  }
  if (!old) {
    tree_.AddFile(path, {});
  }
  tree_.Change(path, [&](FtpTestItem& item) {
    item.content.truncate(appends ? item.content.size() : std::min<qint64>(offset, item.content.size()));
    item.modified = QDateTime::currentMSecsSinceEpoch();
  });
  for (bool hasMore = true; hasMore;) {
    QByteArray block;
    while (block.size() < vices_.block && hasMore) {
      hasMore = data_.Read(block, vices_.block - block.size()) == FtpTestSocket::Result::Done;
    }
    if (!block.isEmpty() && !TakeBlock(path, block)) {
      return;
    }
  }
  EndData(kComplete);
}

bool FtpTestSession::TakeBlock(const QByteArray& path, const QByteArray& block) {
  if (!PassBlock()) {
    return false;
  }
  const qint64 fits = script_.TakeRoom(block.size());
  tree_.Change(path, [&](FtpTestItem& item) { item.content += block.first(fits); });
  if (fits < block.size()) {
    data_.Break();
    EndData(vices_.full);
    return false;
  }
  return true;
}

}  // namespace trevane::test
