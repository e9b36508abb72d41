#pragma once

#include "tests/support/ftp/FtpTestContexts.h"
#include "tests/support/ftp/FtpTestData.h"
#include "tests/support/ftp/FtpTestScript.h"
#include "tests/support/ftp/FtpTestSocket.h"
#include "tests/support/ftp/FtpTestTree.h"
#include "tests/support/ftp/FtpVices.h"

#include <QByteArray>
#include <QHash>

#include <memory>
#include <optional>

namespace trevane::test {

/// One client of the scripted server, in a thread of its own.
class FtpTestSession final {
 public:
  /// `place`: which of the clients of now it is, from 1.
  FtpTestSession(FtpTestScript& script, FtpTestTree& tree, std::shared_ptr<FtpTestContexts> contexts,
                 FtpTestSocket control, int stop, int place);
  ~FtpTestSession() = default;
  FtpTestSession(const FtpTestSession&) = delete;
  FtpTestSession& operator=(const FtpTestSession&) = delete;

  /// Until the client or the server ends.
  void Run();

 private:
  using Handler = void (FtpTestSession::*)(const QByteArray& argument);
  [[nodiscard]] static const QHash<QByteArray, Handler>& Handlers();

  // The control connection
  void Greet();
  [[nodiscard]] std::optional<QByteArray> NextLine();
  void Perform(const QByteArray& line);
  /// Whether the command goes on.
  [[nodiscard]] bool Suffer(const FtpFault& fault);
  void Dispatch(const QByteArray& name, const QByteArray& argument);
  void Reply(const QByteArray& line);
  void SendRaw(const QByteArray& lines);
  /// Its place is free before its line ends: a client that sees the end can come again at once.
  void Leave();
  void Break();

  // Log-on
  void User(const QByteArray& argument);
  void Pass(const QByteArray& argument);
  void Acct(const QByteArray& argument);
  void LogOn();
  void Auth(const QByteArray& argument);
  void Pbsz(const QByteArray& argument);
  void Prot(const QByteArray& argument);
  void Quit(const QByteArray& argument);

  // What the server is
  void Feat(const QByteArray& argument);
  void Syst(const QByteArray& argument);
  void Done(const QByteArray& argument);
  void Opts(const QByteArray& argument);
  void Type(const QByteArray& argument);
  void Rest(const QByteArray& argument);

  // Files without data
  void Pwd(const QByteArray& argument);
  void Cwd(const QByteArray& argument);
  void Cdup(const QByteArray& argument);
  void Size(const QByteArray& argument);
  void Mdtm(const QByteArray& argument);
  void Mfmt(const QByteArray& argument);
  void Mlst(const QByteArray& argument);
  void Dele(const QByteArray& argument);
  void Mkd(const QByteArray& argument);
  void Rmd(const QByteArray& argument);
  void Rnfr(const QByteArray& argument);
  void Rnto(const QByteArray& argument);
  void Site(const QByteArray& argument);

  // Data
  void Pasv(const QByteArray& argument);
  void Epsv(const QByteArray& argument);
  void Port(const QByteArray& argument);
  void Eprt(const QByteArray& argument);
  void List(const QByteArray& argument);
  void Nlst(const QByteArray& argument);
  void Mlsd(const QByteArray& argument);
  void Retr(const QByteArray& argument);
  void Stor(const QByteArray& argument);
  void Appe(const QByteArray& argument);
  void Store(const QByteArray& argument, bool appends);
  /// False where it was answered that there is none.
  [[nodiscard]] bool OpenData();
  /// Whether the transfer goes on; else it has ended.
  [[nodiscard]] bool PassBlock();
  /// With what came over the data connection so far kept.
  [[nodiscard]] bool TakeBlock(const QByteArray& path, const QByteArray& block);
  /// Ends a data connection that is not used; the reply follows.
  void RefuseData();
  void EndData(const QByteArray& reply);
  void SendText(const QByteArray& text);

  /// The path in the tree of what the client names.
  [[nodiscard]] QByteArray PathOf(const QByteArray& argument) const;
  [[nodiscard]] bool IsDriveTop(const QByteArray& path) const;
  /// A name that the server takes for something new; else it was answered.
  [[nodiscard]] bool TakesName(const QByteArray& path);
  /// This client may write such a file; else it was answered.
  [[nodiscard]] bool MayWrite(const QByteArray& path);
  void ReplyMissing(const QByteArray& argument);
  /// A name of the tree as this client is shown it.
  [[nodiscard]] FtpTestItem Shown(const FtpTestItem& item) const;

  FtpTestScript& script_;
  FtpTestTree& tree_;
  const std::shared_ptr<FtpTestContexts> contexts_;
  FtpTestSocket control_;
  const int place_;
  FtpTestData opening_;
  FtpTestSocket data_;
  /// As they are at the command that is carried out.
  FtpVices vices_;
  QByteArray unread_;
  QByteArray userName_;
  FtpTestUser user_;
  bool isLoggedOn_ = false;
  bool wantsAccount_ = false;
  bool isProtected_ = false;
  bool isBinary_ = false;
  bool isToldUtf8_ = false;
  QByteArray folder_ = "/";
  QByteArray renamed_;
  qint64 offset_ = 0;
  /// In place of the answer.
  std::optional<QByteArray> replaced_;
  bool isMute_ = false;
  bool hasLeft_ = false;
  bool hasEnded_ = false;
};

}  // namespace trevane::test
