#include "tests/engine/providers/ftp/FakeFtpServer.h"

#include "engine/files/ProviderError.h"
#include "engine/files/TemporaryName.h"
#include "engine/providers/ftp/FtpFileSystem.h"

#include <QDateTime>
#include <QLocale>

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace trevane::test {
namespace {

using ftp::Reply;
using Kind = FakeFtpItem::Kind;

QByteArray ParentOf(const QByteArray& path) {
  const qsizetype at = path.lastIndexOf('/');
  return at <= 0 ? QByteArray("/") : path.first(at);
}

QByteArray NameOf(const QByteArray& path) {
  return path.sliced(path.lastIndexOf('/') + 1);
}

QByteArray Joined(const QByteArray& folder, const QByteArray& name) {
  return name.startsWith('/') ? name : (folder == "/" ? folder : folder + '/') + name;
}

class FakeFtpDialogue;

/// What all dialogues of a connector do at each call.
class Gate {
 public:
  explicit Gate(FakeFtpServer& server) : server_(server) {}

  /// Runs `work` unless a fault comes first. What it returns is the reply.
  Reply Pass(const std::function<Reply()>& work) {
    if (isBroken) {
      Fail(error::kWin32Error + 64, QString());
    }
    const bool isFault = server_.calls++ == server_.faultAt;
    if (!isFault) {
      return Answered(work);
    }
    switch (server_.fault.kind) {
      case FakeFtpFault::Kind::LoseBefore:
        isBroken = true;
        Fail(error::kWin32Error + 64, QString());
      case FakeFtpFault::Kind::LoseAfter:
        static_cast<void>(work());
        isBroken = true;
        Fail(error::kWin32Error + 64, QString());
      case FakeFtpFault::Kind::Cancel:
        if (server_.putBacks > 0) {
          return work();
        }
        isBroken = true;
        Fail(error::kCancelled, QString());
      case FakeFtpFault::Kind::EndAfter:
        server_.endsLine = true;
        return Answered(work);
      case FakeFtpFault::Kind::Refuse:
        break;
    }
    return {server_.fault.reply.first(3).toInt(), server_.fault.reply.sliced(4)};
  }

  bool isBroken = false;
  bool isBusy = false;

 private:
  Reply Answered(const std::function<Reply()>& work) {
    Reply reply = work();
    isBroken = std::exchange(server_.endsLine, false);
    return reply;
  }

  FakeFtpServer& server_;
};

class FakeDownload final : public FtpDownload {
 public:
  FakeDownload(std::shared_ptr<Gate> gate, QByteArray content)
      : gate_(std::move(gate)), content_(std::move(content)) {
    gate_->isBusy = true;
  }
  ~FakeDownload() override { gate_->isBusy = false; }
  FakeDownload(const FakeDownload&) = delete;
  FakeDownload& operator=(const FakeDownload&) = delete;

  QByteArray Read(qint64 most) override {
    QByteArray piece;
    static_cast<void>(gate_->Pass([&] {
      piece = content_.sliced(at_, std::min<qint64>(most, content_.size() - at_));
      at_ += piece.size();
      return Reply{226};
    }));
    return piece;
  }
  Reply Finish() override {
    gate_->isBusy = false;
    return gate_->Pass([] { return Reply{226, "Done"}; });
  }

 private:
  std::shared_ptr<Gate> gate_;
  QByteArray content_;
  qint64 at_ = 0;
};

class FakeUpload final : public FtpUpload {
 public:
  FakeUpload(std::shared_ptr<Gate> gate, FakeFtpServer& server, QByteArray path, Reply refusal)
      : gate_(std::move(gate)),
        server_(server),
        path_(std::move(path)),
        refusal_(std::move(refusal)),
        wasRefused_(refusal_.code != 0) {
    gate_->isBusy = true;
  }
  ~FakeUpload() override { gate_->isBusy = false; }
  FakeUpload(const FakeUpload&) = delete;
  FakeUpload& operator=(const FakeUpload&) = delete;

  bool WasRefused() const override { return wasRefused_; }

  void Write(const QByteArray& piece) override {
    static_cast<void>(gate_->Pass([&] {
      Append(piece);
      return Reply{226};
    }));
  }
  Reply Finish() override {
    gate_->isBusy = false;
    return gate_->Pass([&]() -> Reply {
      if (refusal_.code != 0) {
        return refusal_;
      }
      QByteArray& content = server_.items[path_].content;
      content.chop(std::min<qsizetype>(server_.vices.loses, content.size()));
      return {226, "Done"};
    });
  }

 private:
  void Append(QByteArrayView piece) {
    if (refusal_.code != 0) {
      return;
    }
    if (server_.vices.room >= 0 && piece.size() > server_.vices.room) {
      piece = piece.first(server_.vices.room);
      refusal_ = {452, "Insufficient storage space"};
    }
    if (server_.vices.room >= 0) {
      server_.vices.room -= piece.size();
    }
    server_.items[path_].content += piece;
  }

  std::shared_ptr<Gate> gate_;
  FakeFtpServer& server_;
  QByteArray path_;
  Reply refusal_;
  const bool wasRefused_;
};

class FakeFtpDialogue final : public FtpDialogue {
 public:
  explicit FakeFtpDialogue(FakeFtpServer& server)
      : server_(server), gate_(std::make_shared<Gate>(server)), cwd_(server.vices.start) {
    server_.putBacks = 0;
  }

  Reply Command(const QByteArray& command) override {
    RequireIdle();
    return gate_->Pass([&] {
      server_.log += command;
      if (server_.before) {
        server_.before(command);
      }
      return Answer(command);
    });
  }

  std::vector<Reply> Commands(const QByteArrayList& commands) override {
    std::vector<Reply> replies;
    for (const QByteArray& command : commands) {
      replies.push_back(Command(command));
      if (replies.back().code >= 400) {
        break;
      }
    }
    return replies;
  }

  bool TakesTogether() override { return server_.vices.takesTogether; }

  std::vector<Reply> Together(const QByteArrayList& commands) override {
    EXPECT_TRUE(server_.vices.takesTogether);
    server_.segments += commands;
    std::vector<Reply> replies;
    try {
      for (const QByteArray& command : commands) {
        replies.push_back(Command(command));
      }
    } catch (const RunTimeError&) {
      // The server has all of them when an answer is lost.
      const auto sent = static_cast<qsizetype>(replies.size()) + 1;
      if (server_.fault.kind == FakeFtpFault::Kind::LoseAfter && sent < commands.size()) {
        for (const QByteArray& command : commands.sliced(sent)) {
          server_.log += command;
          static_cast<void>(Answer(command));
        }
      }
      throw;
    }
    return replies;
  }

  Text ReadText(const QByteArray& command, qint64 /*most*/) override {
    RequireIdle();
    Text text;
    text.reply = gate_->Pass([&] {
      server_.log += command;
      if (server_.before) {
        server_.before(command);
      }
      return List(command, text.bytes);
    });
    if (!text.reply.IsDone()) {
      text.bytes.clear();
    }
    return text;
  }

  std::unique_ptr<FtpDownload> Retrieve(const QByteArray& path, qint64 offset, Reply& refusal) override {
    RequireIdle();
    QByteArray content;
    refusal = gate_->Pass([&]() -> Reply {
      server_.log += "RETR " + path;
      if (offset > 0 && IsMissing("REST")) {
        return {502, "Unknown command"};
      }
      const std::optional<QByteArray> at = server_.Resolve(path, true);
      if (!at) {
        return {550, "No such file or directory"};
      }
      const FakeFtpItem& item = server_.items.at(*at);
      if (item.kind != Kind::File) {
        return {550, "Not a plain file"};
      }
      content = item.make ? item.make() : item.content;
      content.chop(std::min<qsizetype>(server_.vices.sendsLess, content.size()));
      content.remove(0, offset);
      return {150, "Coming"};
    });
    if (refusal.code >= 400) {
      return nullptr;
    }
    return std::make_unique<FakeDownload>(gate_, content);
  }

  std::unique_ptr<FtpUpload> Store(const QByteArray& path) override {
    RequireIdle();
    Reply refusal = gate_->Pass([&]() -> Reply {
      server_.log += "STOR " + path;
      if (server_.before) {
        server_.before("STOR " + path);
      }
      const std::optional<QByteArray> parent = server_.Resolve(ParentOf(path), true);
      if (!parent || server_.items.at(*parent).kind != Kind::Folder) {
        return {550, "No such file or directory"};
      }
      const std::optional<QByteArray> there = server_.Resolve(path, true);
      if (there && server_.items.at(*there).kind == Kind::Folder) {
        return {550, "Is a directory"};
      }
      if (!there && (server_.RefusesName(path) || server_.vices.refusesNewNames)) {
        return {553, "File name not allowed"};
      }
      if (there && server_.vices.refusesToOverwrite) {
        return {550, "Permission denied"};
      }
      FakeFtpItem& item = server_.items[there.value_or(Joined(*parent, NameOf(path)))];
      if (server_.vices.room >= 0) {
        server_.vices.room += item.content.size();
      }
      item = FakeFtpItem{};
      return {};
    });
    const std::optional<QByteArray> there = server_.Resolve(path, true);
    return std::make_unique<FakeUpload>(gate_, server_, there.value_or(path), refusal);
  }

  const QByteArrayList& Features() const override { return server_.vices.features; }
  const QByteArray& Start() const override { return server_.vices.start; }
  bool IsBroken() const noexcept override { return gate_->isBroken; }
  void BeginPutBack() noexcept override { ++server_.putBacks; }
  void EndPutBack() noexcept override { --server_.putBacks; }

 private:
  void RequireIdle() const {
    if (gate_->isBusy) {
      Fail(providererror::kBusy, QString());
    }
  }

  [[nodiscard]] bool IsMissing(const QByteArray& word) const { return server_.vices.missing.contains(word); }

  /// What the facts of an item are told of; null for what they leave out.
  [[nodiscard]] const FakeFtpItem* FactsAbout(const QByteArray& path, bool isOne) const {
    using Follows = FakeFtpVices::Follows;
    const FakeFtpItem& item = server_.items.at(path);
    const Follows follow = server_.vices.factsFollow;
    if (item.kind != Kind::Link || follow == Follows::Nothing || (follow == Follows::InOneItem && !isOne)) {
      return &item;
    }
    const std::optional<QByteArray> target = server_.Resolve(path, true);
    return target ? &server_.items.at(*target) : nullptr;
  }

  [[nodiscard]] QByteArray FactsOf(const FakeFtpItem& item) const {
    QByteArray facts;
    switch (item.kind) {
      case Kind::File:
        facts = "type=file;size=" + QByteArray::number(item.shownSize.value_or(item.content.size())) + ';';
        break;
      case Kind::Folder:
        facts = "type=dir;";
        break;
      case Kind::Link:
        facts = "type=OS.unix=slink:" + item.target + ';';
        break;
    }
    facts += "modify=" + QDateTime::fromMSecsSinceEpoch(item.modified, Qt::UTC)
                             .toString(QStringLiteral("yyyyMMddHHmmss"))
                             .toLatin1();
    if (server_.vices.tellsModes) {
      facts += ";UNIX.mode=0" + QByteArray::number(item.mode, 8);
    }
    if (server_.vices.tellsUnique) {
      facts += ";unique=" + QByteArray::number(item.id);
    }
    return facts + ';';
  }

  [[nodiscard]] QByteArray LineOf(const QByteArray& name, const FakeFtpItem& item) const {
    const QLocale english(QLocale::C);
    const QDateTime date =
        server_.vices.zoneIsOwn
            ? QDateTime::fromMSecsSinceEpoch(item.modified)
            : QDateTime::fromMSecsSinceEpoch(item.modified + qint64{server_.vices.zone} * 60000, Qt::UTC);
    const qint64 size = item.shownSize.value_or(item.content.size());
    if (server_.vices.listInDosForm) {
      const QByteArray what = item.kind == Kind::Folder ? QByteArray("       <DIR>         ")
                                                        : QByteArray::number(size).rightJustified(21);
      return english.toString(date, QStringLiteral("MM-dd-yy  hh:mmAP")).toLatin1() + what + ' ' + name +
             "\r\n";
    }
    const char kind = item.kind == Kind::Folder ? 'd' : item.kind == Kind::Link ? 'l' : '-';
    QByteArray line = QByteArray(1, kind) + (item.kind == Kind::Folder ? "rwxr-xr-x" : "rw-r--r--") +
                      "   1 joe      users    " + QByteArray::number(size).rightJustified(9) + ' ' +
                      english.toString(date, QStringLiteral("MMM dd hh:mm")).toLatin1() + ' ' + name;
    if (item.kind == Kind::Link) {
      line += " -> " + item.target;
    }
    return line + "\r\n";
  }

  Reply List(const QByteArray& command, QByteArray& bytes) {
    const qsizetype blank = command.indexOf(' ');
    const QByteArray word = blank < 0 ? command : command.first(blank);
    QByteArray path = blank < 0 ? QByteArray() : command.sliced(blank + 1);
    if (IsMissing(word)) {
      return {500, "Unknown command"};
    }
    bool showsAll = word == "MLSD";
    if (word == "LIST" && (path == "-a" || path.startsWith("-a "))) {
      if (server_.vices.takesOptionForName) {
        return {550, "-a: No such file or directory"};
      }
      showsAll = true;
      path = path.sliced(std::min<qsizetype>(3, path.size()));
    }
    if (server_.vices.listsNothingByPath && word == "LIST" && !path.isEmpty()) {
      return {226, "Done"};
    }
    const std::optional<QByteArray> at = server_.Resolve(path.isEmpty() ? cwd_ : Joined(cwd_, path), true);
    if (!at) {
      return server_.vices.listsMissingAsEmpty ? Reply{226, "Done"} : Reply{550, "No such file or directory"};
    }
    const FakeFtpItem& folder = server_.items.at(*at);
    if (folder.kind != Kind::Folder) {
      if (word == "MLSD") {
        return {501, path + " is not a directory"};
      }
      bytes = LineOf(path, folder);
      return {226, "Done"};
    }
    int children = 0;
    if (showsAll && word == "MLSD") {
      bytes += "type=cdir;modify=20240101000000; " + *at + "\r\n";
    } else if (showsAll) {
      bytes += LineOf(".", folder) + LineOf("..", folder);
    }
    for (const auto& [path, item] : server_.items) {
      if (path == "/" || ParentOf(path) != *at) {
        continue;
      }
      ++children;
      const QByteArray name = NameOf(path);
      if (!showsAll && name.startsWith('.') && !server_.vices.listInDosForm) {
        continue;
      }
      const bool isLeftOut = server_.vices.linesLeaveOutDots && (item.target == "." || item.target == "..");
      if (word == "MLSD") {
        const FakeFtpItem* const told = FactsAbout(path, false);
        bytes += told != nullptr ? FactsOf(*told) + ' ' + name + "\r\n" : QByteArray();
      } else if (!isLeftOut) {
        bytes += LineOf(name, item);
      }
    }
    for (const QByteArray& line : server_.vices.garbage) {
      bytes += line + "\r\n";
    }
    if (children == 0 && server_.vices.refusesEmptyFolders) {
      return {550, "No files found"};
    }
    return {226, "Done"};
  }

  Reply Status(const QByteArray& path) {
    if (!server_.vices.status) {
      return {502, "Unknown command"};
    }
    QByteArray bytes;
    const Reply listed = List("LIST -a " + path, bytes);
    bytes.replace("\r\n", "\n");
    return server_.vices.status(listed.IsDone() ? Reply{213, "Status follows:\n" + bytes + "End of status"}
                                                : listed);
  }

  Reply Answer(const QByteArray& command) {
    const qsizetype blank = command.indexOf(' ');
    const QByteArray word = blank < 0 ? command : command.first(blank);
    const QByteArray path = blank < 0 ? QByteArray() : command.sliced(blank + 1);
    if (IsMissing(word)) {
      return {500, "Unknown command"};
    }
    if (word == "NOOP") {
      return {200, "OK"};
    }
    if (word == "STAT") {
      return Status(path);
    }
    if (server_.vices.insistsOnRename && !renamed_.isEmpty() && word != "RNTO") {
      return {501, "Bad sequence of commands"};
    }
    const QByteArray renamed = std::exchange(renamed_, {});
    if (word == "RNTO") {
      return Rename(renamed, path);
    }
    if (word == "MKD") {
      return MakeFolder(path);
    }
    if (word == "MFMT") {
      const std::optional<QByteArray> at = server_.Resolve(path.sliced(15), true);
      if (!at) {
        return {550, "No such file or directory"};
      }
      QDateTime date =
          QDateTime::fromString(QString::fromLatin1(path.first(14)), QStringLiteral("yyyyMMddHHmmss"));
      date.setTimeSpec(Qt::UTC);
      server_.items[*at].modified = date.toMSecsSinceEpoch();
      return {213, "Modify=" + path};
    }
    if (word == "SITE") {
      const QByteArrayList words = path.split(' ');
      const std::optional<QByteArray> at =
          server_.Resolve(path.sliced(words[0].size() + words[1].size() + 2), true);
      if (words[0] != "CHMOD" || !at) {
        return {550, "No such file or directory"};
      }
      server_.items[*at].mode = words[1].toUInt(nullptr, 8);
      return {200, "OK"};
    }
    const bool isOfName = word == "DELE" || word == "RNFR" || word == "RMD" || word == "MLST";
    const std::optional<QByteArray> at = server_.Resolve(Joined(cwd_, path), !isOfName);
    if (!at && word == "MLST" && !server_.vices.missingFacts.isEmpty()) {
      return {550, server_.vices.missingFacts};
    }
    if (!at) {
      return {550, path + ": No such file or directory"};
    }
    const FakeFtpItem& item = server_.items.at(*at);
    if (word == "CWD") {
      if (item.kind != Kind::Folder) {
        return {550, path + ": Not a directory"};
      }
      cwd_ = *at;
      return {250, "OK"};
    }
    if (word == "MLST") {
      const FakeFtpItem* const told = FactsAbout(*at, true);
      return told != nullptr ? Reply{250, "Listing\n " + FactsOf(*told) + ' ' + path + "\nEnd"}
                             : Reply{550, path + ": No such file or directory"};
    }
    if (word == "SIZE") {
      return item.kind == Kind::File
                 ? Reply{213, QByteArray::number(item.shownSize.value_or(item.content.size()))}
                 : Reply{550, "Not a plain file"};
    }
    if (word == "MDTM") {
      return {213, QDateTime::fromMSecsSinceEpoch(item.modified, Qt::UTC)
                       .toString(QStringLiteral("yyyyMMddHHmmss"))
                       .toLatin1()};
    }
    if (word == "RNFR") {
      renamed_ = *at;
      return {350, "Ready"};
    }
    if (word == "DELE") {
      if (item.kind == Kind::Folder) {
        return {550, "Is a directory"};
      }
      server_.items.erase(*at);
      return {250, "OK"};
    }
    if (word == "RMD") {
      if (item.kind != Kind::Folder) {
        return {550, "Not a directory"};
      }
      const bool isEmpty = std::none_of(server_.items.begin(), server_.items.end(), [&](const auto& other) {
        return other.first != "/" && ParentOf(other.first) == *at;
      });
      if (!isEmpty) {
        return {550, "Cannot remove"};
      }
      server_.items.erase(*at);
      return {250, "OK"};
    }
    return {500, "Unknown command"};
  }

  Reply MakeFolder(const QByteArray& path) {
    if (server_.Resolve(path, false)) {
      return {550, "Cannot make it"};
    }
    const std::optional<QByteArray> parent = server_.Resolve(ParentOf(path), true);
    if (!parent) {
      return {550, "No such file or directory"};
    }
    if (server_.RefusesName(path)) {
      return {553, "File name not allowed"};
    }
    server_.items[Joined(*parent, NameOf(path))] = {.kind = Kind::Folder};
    return {257, "Made"};
  }

  Reply Rename(const QByteArray& from, const QByteArray& path) {
    if (from.isEmpty()) {
      return {503, "RNFR first"};
    }
    const std::optional<QByteArray> parent = server_.Resolve(ParentOf(path), true);
    if (!parent) {
      return {550, "No such file or directory"};
    }
    if (server_.RefusesName(path)) {
      return {553, "File name not allowed"};
    }
    const std::optional<QByteArray> there = server_.Resolve(path, false);
    const bool isSame = there == from;
    int& left = server_.vices.trueRenames;
    if (left == 0 || (there && !isSame && server_.vices.replacesInWordsOnly)) {
      return {250, "OK"};
    }
    left = std::max(left - 1, -1);
    if (there && !isSame) {
      if (!server_.vices.renameReplaces || server_.items.at(*there).kind == Kind::Folder) {
        return {550, "Cannot rename"};
      }
      server_.items.erase(*there);
    }
    const QByteArray to = Joined(*parent, NameOf(path));
    std::map<QByteArray, FakeFtpItem> moved;
    for (auto it = server_.items.begin(); it != server_.items.end();) {
      if (it->first == from || it->first.startsWith(from + '/')) {
        moved[to + it->first.sliced(from.size())] = it->second;
        it = server_.items.erase(it);
      } else {
        ++it;
      }
    }
    server_.items.merge(moved);
    return {250, "OK"};
  }

  FakeFtpServer& server_;
  std::shared_ptr<Gate> gate_;
  QByteArray cwd_;
  QByteArray renamed_;
};

class FakeConnector final : public FtpConnector {
 public:
  explicit FakeConnector(FakeFtpServer& server) : server_(server) {}

  std::unique_ptr<FtpDialogue> Connect() override {
    if (server_.isGone) {
      Fail(error::kWin32Error + 1225, QString());
    }
    ++server_.connected;
    return std::make_unique<FakeFtpDialogue>(server_);
  }
  bool ConnectsWithoutQuestion() const override { return !server_.asksUser; }
  QString ServerKey() const override { return QStringLiteral("fake"); }
  QStringList Details() const override { return {QStringLiteral("A server in memory")}; }
  QString Notice() const override { return QStringLiteral("Nothing is encrypted"); }

 private:
  FakeFtpServer& server_;
};

}  // namespace

int FakeFtpItem::NextId() {
  static int last = 0;
  return ++last;
}

FakeFtpServer::FakeFtpServer() {
  AddFolder("/");
}

void FakeFtpServer::AddFile(const QByteArray& path, const QByteArray& content) {
  items[path] = {.content = content};
}

void FakeFtpServer::AddFolder(const QByteArray& path) {
  items[path] = {.kind = Kind::Folder, .mode = 0755};
}

void FakeFtpServer::AddLink(const QByteArray& path, const QByteArray& target) {
  items[path] = {.kind = Kind::Link, .mode = 0777, .target = target};
}

QStringList FakeFtpServer::Tree() const {
  QStringList lines;
  for (const auto& [path, item] : items) {
    if (path == "/") {
      continue;
    }
    QString shown = QString::fromUtf8(path);
    const QString name = QString::fromUtf8(NameOf(path));
    if (IsTemporaryName(name)) {
      shown = shown.chopped(name.size()) + QStringLiteral("<temporary>");
    }
    switch (item.kind) {
      case Kind::File:
        lines += shown + u'=' + QString::fromUtf8(item.content);
        break;
      case Kind::Folder:
        lines += shown + u'/';
        break;
      case Kind::Link:
        lines += shown + QStringLiteral("->") + QString::fromUtf8(item.target);
        break;
    }
  }
  lines.sort();
  return lines;
}

QByteArray FakeFtpServer::ContentOf(const QByteArray& path) const {
  const auto found = items.find(path);
  return found == items.end() ? QByteArray("<none>") : found->second.content;
}

int FakeFtpServer::Count(const QByteArray& command) const {
  return static_cast<int>(std::count_if(log.begin(), log.end(), [&](const QByteArray& line) {
    return line == command || line.startsWith(command + ' ');
  }));
}

std::optional<QByteArray> FakeFtpServer::Resolve(const QByteArray& path, bool followLast) const {
  constexpr int kMostLinks = 10;
  QByteArray at = "/";
  QByteArrayList names = path.split('/');
  for (int links = 0; !names.isEmpty();) {
    const QByteArray name = names.takeFirst();
    if (name.isEmpty() || name == ".") {
      continue;
    }
    if (name == "..") {
      at = ParentOf(at);
      continue;
    }
    auto found = items.find(Joined(at, name));
    if (found == items.end() && vices.caseInsensitive) {
      found = std::find_if(items.begin(), items.end(), [&](const auto& item) {
        return item.first.toLower() == Joined(at, name).toLower();
      });
    }
    if (found == items.end()) {
      return std::nullopt;
    }
    if (found->second.kind == Kind::Link && (followLast || !names.isEmpty())) {
      if (++links > kMostLinks) {
        return std::nullopt;
      }
      names = found->second.target.split('/') + names;
      if (found->second.target.startsWith('/')) {
        at = "/";
      }
      continue;
    }
    at = found->first;
  }
  return at;
}

bool FakeFtpServer::RefusesName(const QByteArray& path) const {
  const QByteArray name = NameOf(path);
  return (vices.longestName > 0 && name.size() > vices.longestName) ||
         (vices.refusesDotNames && name.startsWith('.'));
}

std::shared_ptr<FileSystem> FakeFtpServer::Open(const FtpSettings& settings,
                                                const std::shared_ptr<ftp::AbandonedItems>& abandoned) {
  return OpenFtpFileSystem(std::make_unique<FakeConnector>(*this), settings, nullptr, abandoned);
}

std::string NameOf(FakeFtpFault::Kind kind) {
  switch (kind) {
    case FakeFtpFault::Kind::LoseBefore:
      return "LoseBefore";
    case FakeFtpFault::Kind::LoseAfter:
      return "LoseAfter";
    case FakeFtpFault::Kind::Cancel:
      return "Cancel";
    case FakeFtpFault::Kind::EndAfter:
      return "EndAfter";
    case FakeFtpFault::Kind::Refuse:
      break;
  }
  return "Refuse";
}

}  // namespace trevane::test
