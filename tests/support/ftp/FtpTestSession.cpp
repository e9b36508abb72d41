#include "tests/support/ftp/FtpTestSession.h"

#include <chrono>
#include <thread>
#include <utility>

namespace trevane::test {
namespace {

/// Longer lines end the session.
constexpr qsizetype kLongestLine = 65536;

/// Before the log-on nothing else is taken.
bool IsOfLogOn(const QByteArray& name) {
  static const QByteArrayList kNames{"USER", "PASS", "ACCT", "AUTH", "PBSZ", "PROT",
                                     "FEAT", "QUIT", "OPTS", "HELP", "SYST"};
  return kNames.contains(name);
}

}  // namespace

FtpTestSession::FtpTestSession(FtpTestScript& script, FtpTestTree& tree,
                               std::shared_ptr<FtpTestContexts> contexts, FtpTestSocket control, int stop,
                               int place)
    : script_(script),
      tree_(tree),
      contexts_(std::move(contexts)),
      control_(std::move(control)),
      place_(place),
      opening_(stop),
      vices_(script.Vices()) {}

const QHash<QByteArray, FtpTestSession::Handler>& FtpTestSession::Handlers() {
  using S = FtpTestSession;
  static const QHash<QByteArray, Handler> kHandlers{
      {"USER", &S::User}, {"PASS", &S::Pass}, {"ACCT", &S::Acct}, {"AUTH", &S::Auth}, {"PBSZ", &S::Pbsz},
      {"PROT", &S::Prot}, {"QUIT", &S::Quit}, {"FEAT", &S::Feat}, {"SYST", &S::Syst}, {"NOOP", &S::Done},
      {"OPTS", &S::Opts}, {"ALLO", &S::Done}, {"MODE", &S::Done}, {"STRU", &S::Done}, {"ABOR", &S::Done},
      {"HELP", &S::Done}, {"TYPE", &S::Type}, {"REST", &S::Rest}, {"PWD", &S::Pwd},   {"XPWD", &S::Pwd},
      {"CWD", &S::Cwd},   {"CDUP", &S::Cdup}, {"SIZE", &S::Size}, {"MDTM", &S::Mdtm}, {"MFMT", &S::Mfmt},
      {"MLST", &S::Mlst}, {"DELE", &S::Dele}, {"MKD", &S::Mkd},   {"XMKD", &S::Mkd},  {"RMD", &S::Rmd},
      {"XRMD", &S::Rmd},  {"RNFR", &S::Rnfr}, {"RNTO", &S::Rnto}, {"SITE", &S::Site}, {"PASV", &S::Pasv},
      {"EPSV", &S::Epsv}, {"PORT", &S::Port}, {"EPRT", &S::Eprt}, {"LIST", &S::List}, {"NLST", &S::Nlst},
      {"MLSD", &S::Mlsd}, {"RETR", &S::Retr}, {"STOR", &S::Stor}, {"APPE", &S::Appe}};
  return kHandlers;
}

void FtpTestSession::Run() {
  Greet();
  while (!hasEnded_) {
    const std::optional<QByteArray> line = NextLine();
    if (!line) {
      if (const QByteArray words = script_.Vices().lastWords; !words.isEmpty()) {
        SendRaw(words);
      }
      break;
    }
    vices_ = script_.Vices();
    if (vices_.closesPipelined && !unread_.isEmpty()) {
      Break();
      break;
    }
    if (vices_.delayMs > 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(vices_.delayMs));
    }
    Perform(*line);
  }
  Leave();
  control_.Close(vices_.endsTlsAbruptly);
}

void FtpTestSession::Leave() {
  if (!std::exchange(hasLeft_, true)) {
    script_.Count([](FtpTestCounts& counts) { --counts.clients; });
  }
}

void FtpTestSession::Break() {
  Leave();
  control_.Break();
  hasEnded_ = true;
}

void FtpTestSession::Greet() {
  if (vices_.tls == FtpVices::Tls::Implicit &&
      !control_.StartTls((vices_.upToTls12 ? contexts_->linesUpTo12 : contexts_->lines).get())) {
    hasEnded_ = true;
    return;
  }
  isProtected_ = vices_.tls == FtpVices::Tls::Implicit && !vices_.refusesProtection;
  if (place_ > vices_.mostClients && !vices_.tooMany.startsWith("530")) {
    SendRaw(vices_.tooMany);
    hasEnded_ = true;
    return;
  }
  SendRaw(vices_.greeting);
}

std::optional<QByteArray> FtpTestSession::NextLine() {
  bool hasWaited = false;
  for (;;) {
    const qsizetype end = unread_.indexOf('\n');
    if (end >= 0 && (hasWaited || !vices_.answersOncePerSegment)) {
      QByteArray line = unread_.first(end);
      unread_.remove(0, end + 1);
      if (vices_.dropsPipelined) {
        unread_.clear();
      }
      if (line.endsWith('\r')) {
        line.chop(1);
      }
      if (hasWaited) {
        script_.Count([](FtpTestCounts& counts) { ++counts.roundTrips; });
      }
      return line;
    }
    if (unread_.size() > kLongestLine) {
      return {};
    }
    hasWaited = true;
    const int idle = vices_.idleMs > 0 ? vices_.idleMs : -1;
    const FtpTestSocket::Result result = control_.Read(unread_, 4096, idle);
    if (result == FtpTestSocket::Result::TimedOut && !vices_.endsIdleSilently) {
      SendRaw("421 Timeout");
    }
    if (result != FtpTestSocket::Result::Done) {
      return {};
    }
  }
}

void FtpTestSession::Perform(const QByteArray& received) {
  QByteArray line = received;
  if (vices_.longestCommand > 0 && line.size() + 2 > vices_.longestCommand) {
    if (!vices_.cutsLongCommands) {
      script_.Count([](FtpTestCounts& counts) { counts.lines.append("(too long)"); });
      Reply("500 Command line too long");
      return;
    }
    line.truncate(vices_.longestCommand - 2);
  }
  const qsizetype blank = line.indexOf(' ');
  const QByteArray name = (blank < 0 ? line : line.first(blank)).toUpper();
  const QByteArray argument = blank < 0 ? QByteArray() : line.sliced(blank + 1);
  const std::optional<FtpFault> fault = script_.OnCommand(name, argument);
  if (fault && !Suffer(*fault)) {
    return;
  }
  Dispatch(name, argument);
  data_.Close(vices_.endsTlsAbruptly);
  if (isMute_) {
    Break();
  }
  replaced_.reset();
}

bool FtpTestSession::Suffer(const FtpFault& fault) {
  switch (fault.kind) {
    case FtpFault::Kind::LoseCommand:
    case FtpFault::Kind::LoseData:
      Break();
      return false;
    case FtpFault::Kind::LoseAnswer:
      isMute_ = true;
      return true;
    case FtpFault::Kind::Refuse:
      SendRaw(fault.reply);
      hasEnded_ = fault.reply.startsWith("421") || fault.reply.startsWith("221");
      return false;
    case FtpFault::Kind::DoAndRefuse:
      replaced_ = fault.reply;
      return true;
    case FtpFault::Kind::Stall:
      control_.Stall();
      hasEnded_ = true;
      return false;
    case FtpFault::Kind::EndlessReply:
      while (control_.Write(QByteArray("220-There is always more to tell.\r\n").repeated(100))) {
      }
      hasEnded_ = true;
      return false;
  }
  return true;
}

void FtpTestSession::Dispatch(const QByteArray& name, const QByteArray& argument) {
  const Handler handler = vices_.missing.contains(name) ? nullptr : Handlers().value(name, nullptr);
  if (handler == nullptr) {
    Reply(vices_.unknown);
    return;
  }
  if (!isLoggedOn_ && !IsOfLogOn(name)) {
    Reply("530 Please log in with USER and PASS.");
    return;
  }
  if (name != "RNTO" && name != "NOOP" && vices_.insistsOnRename && !renamed_.isEmpty()) {
    Reply("501 Bad sequence of commands");
    return;
  }
  if (name != "RNTO") {
    renamed_.clear();
  }
  (this->*handler)(argument);
  if (name != "REST" && name != "PASV" && name != "EPSV" && name != "TYPE" && name != "PORT" &&
      name != "EPRT") {
    offset_ = 0;
  }
}

void FtpTestSession::Reply(const QByteArray& line) {
  const bool isLast = !line.startsWith('1');
  if (isMute_ && isLast) {
    return;
  }
  if (replaced_ && isLast) {
    SendRaw(*replaced_);
    return;
  }
  if (vices_.repliesInManyLines && !line.contains('\n')) {
    const QByteArray code = line.first(3);
    SendRaw(code + "-First of all\r\n 500 is no code here\r\n" + line);
    return;
  }
  SendRaw(line);
}

void FtpTestSession::SendRaw(const QByteArray& lines) {
  if (!control_.Write(lines + "\r\n")) {
    hasEnded_ = true;
  }
}

void FtpTestSession::User(const QByteArray& argument) {
  isLoggedOn_ = false;
  if (vices_.demandsTls && !control_.IsOverTls()) {
    Reply("530 TLS is required.");
    return;
  }
  if (place_ > vices_.mostClients) {
    Reply(vices_.tooMany);
    return;
  }
  userName_ = argument;
  if (vices_.asksNoPassword) {
    LogOn();
    return;
  }
  Reply("331 Please specify the password.");
}

void FtpTestSession::Pass(const QByteArray& argument) {
  const auto user = vices_.users.constFind(userName_);
  const bool isRight =
      user != vices_.users.constEnd() && (user->password == argument || userName_ == "anonymous");
  if (!isRight) {
    Reply(vices_.wrongLogOn);
    hasEnded_ = vices_.wrongLogOn.startsWith("421");
    return;
  }
  if (!vices_.account.isEmpty()) {
    wantsAccount_ = true;
    Reply("332 Need account for login.");
    return;
  }
  LogOn();
}

void FtpTestSession::Acct(const QByteArray& argument) {
  if (!wantsAccount_ || argument != vices_.account) {
    Reply("530 Account refused.");
    return;
  }
  LogOn();
}

void FtpTestSession::LogOn() {
  isLoggedOn_ = true;
  wantsAccount_ = false;
  user_ = vices_.users.value(userName_);
  folder_ = vices_.start;
  script_.Count([](FtpTestCounts& counts) { ++counts.logOns; });
  Reply("230 Login successful.");
}

void FtpTestSession::Auth(const QByteArray& argument) {
  if (vices_.tls != FtpVices::Tls::Explicit || control_.IsOverTls()) {
    Reply("500 AUTH not understood");
    return;
  }
  if (argument.toUpper() != "TLS" && argument.toUpper() != "SSL") {
    Reply("504 Unknown AUTH type");
    return;
  }
  Reply("234 Proceed with negotiation.");
  // What came in the clear behind the command must not be taken for protected.
  unread_.clear();
  if (!control_.StartTls((vices_.upToTls12 ? contexts_->linesUpTo12 : contexts_->lines).get())) {
    hasEnded_ = true;
  }
}

void FtpTestSession::Pbsz(const QByteArray& /*argument*/) {
  Reply(control_.IsOverTls() ? "200 PBSZ set to 0." : "503 Bad sequence of commands");
}

void FtpTestSession::Prot(const QByteArray& argument) {
  const QByteArray level = argument.toUpper();
  if (!control_.IsOverTls()) {
    Reply("503 Bad sequence of commands");
  } else if (level == "C" || (level == "P" && !vices_.refusesProtection)) {
    isProtected_ = level == "P";
    Reply("200 Protection set.");
  } else {
    Reply("536 Protection level not supported");
  }
}

void FtpTestSession::Quit(const QByteArray& /*argument*/) {
  Reply("221 Goodbye.");
  hasEnded_ = true;
}

void FtpTestSession::Feat(const QByteArray& /*argument*/) {
  QByteArray lines = "211-Features:\r\n";
  const auto tell = [&](const QByteArray& name, const QByteArray& line) {
    if (!vices_.missing.contains(name)) {
      lines += ' ' + line + "\r\n";
    }
  };
  tell("EPRT", "EPRT");
  tell("EPSV", "EPSV");
  tell("MDTM", "MDTM");
  tell("MFMT", "MFMT");
  if (!vices_.missing.contains("MLSD")) {
    tell("MLST", vices_.tellsUnique ? "MLST type*;size*;modify*;perm*;UNIX.mode*;unique*;"
                                    : "MLST type*;size*;modify*;perm*;UNIX.mode*;");
  }
  tell("REST", "REST STREAM");
  tell("SIZE", "SIZE");
  if (vices_.tls == FtpVices::Tls::Explicit) {
    lines += " AUTH TLS\r\n PBSZ\r\n PROT\r\n";
  }
  if (vices_.tellsUtf8) {
    lines += " UTF8\r\n";
  }
  Reply(lines + "211 End");
}

void FtpTestSession::Syst(const QByteArray& /*argument*/) {
  Reply(vices_.list == FtpVices::List::Dos ? "215 Windows_NT" : "215 UNIX Type: L8");
}

void FtpTestSession::Done(const QByteArray& /*argument*/) {
  Reply("200 OK");
}

void FtpTestSession::Opts(const QByteArray& argument) {
  isToldUtf8_ = isToldUtf8_ || argument.toUpper() == "UTF8 ON";
  Reply("200 OK");
}

void FtpTestSession::Type(const QByteArray& argument) {
  isBinary_ = argument.toUpper().startsWith('I');
  Reply(isBinary_ ? "200 Switching to Binary mode." : "200 Switching to ASCII mode.");
}

void FtpTestSession::Rest(const QByteArray& argument) {
  offset_ = argument.toLongLong();
  Reply("350 Restart position accepted (" + QByteArray::number(offset_) + ").");
}

}  // namespace trevane::test
