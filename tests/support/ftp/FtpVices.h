#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QMap>
#include <QtGlobal>

namespace trevane::test {

/// What one log-on to the scripted server may do.
struct FtpTestUser {
  QByteArray password = {};
  /// The folder of the tree that it sees as its top.
  QByteArray drive = "/";
  /// Extensions without a dot of the files that it may write; empty: all of them.
  QByteArrayList writable = {};
  bool mayWrite = true;
};

/// How the scripted server differs from a good one. Any of them can be combined. Replies are whole lines
/// without the end of a line.
struct FtpVices {
  // Greeting and log-on
  QByteArray greeting = "220 Controller ready";
  /// More clients than these get `tooMany`: as their greeting, and where that is a 530 in answer to USER.
  int mostClients = 1000;
  QByteArray tooMany = "421 Too many users";
  QMap<QByteArray, FtpTestUser> users = {{"joe", {.password = "secret"}}};
  QByteArray wrongLogOn = "530 Login incorrect.";
  /// USER alone logs on.
  bool asksNoPassword = false;
  /// Demanded after the password, where it is not empty.
  QByteArray account = {};
  /// The folder after the log-on, as the client sees it.
  QByteArray start = "/";

  // Commands
  /// "MLSD", "FEAT", "EPSV" and so on are unknown.
  QByteArrayList missing = {};
  QByteArray unknown = "500 Unknown command";
  /// Closes the line of a client that sends a command before the answer to the one before.
  bool closesPipelined = false;
  /// Never sees what follows the first line of a segment.
  bool dropsPipelined = false;
  /// Looks for a further line only when a segment comes, so that it stays behind.
  bool answersOncePerSegment = false;
  /// Characters with the end of the line; 0: no limit. Longer ones are refused, or cut without a word.
  int longestCommand = 0;
  bool cutsLongCommands = false;
  /// A client that sends nothing for so long is sent away, with 421 or without a word; 0: never.
  int idleMs = 0;
  bool endsIdleSilently = false;
  /// What clients are told that are sent away; empty: nothing.
  QByteArray lastWords = {};
  /// All replies have three lines.
  bool repliesInManyLines = false;
  /// Before every answer.
  int delayMs = 0;

  // Names
  /// Eight characters, a dot and three; letters, digits and "_-$~" only.
  bool shortNames = false;
  /// Names are made capital letters, and found in either case.
  bool capitalNames = false;
  bool refusesBlanks = false;
  /// 0: no limit.
  int longestExtension = 0;
  int longestName = 0;
  /// Files can only be stored under names that exist.
  bool refusesNewNames = false;
  /// Names that begin with a dot are refused.
  bool refusesDotNames = false;
  QByteArray badName = "553 File name not allowed";
  /// Told by FEAT; names are bytes all the same.
  bool tellsUtf8 = true;
  /// Names are Latin-1 until the client asks for UTF-8, as which the tree has them.
  bool latin1UntilTold = false;

  // Rename, replace
  /// After RNFR it takes nothing but RNTO.
  bool insistsOnRename = false;
  enum class Onto { Replaces, Refuses, RefusesMisleading };
  Onto renameOnto = Onto::Replaces;
  /// STOR onto a file that exists is refused.
  bool refusesOverwriting = false;
  /// Bytes that still fit; -1: no limit. Half a file stays.
  qint64 room = -1;
  QByteArray full = "452 Insufficient storage space";

  // Listings
  enum class List { NineColumns, EightColumns, Dos };
  List list = List::NineColumns;
  enum class Dates { Minutes, Days };
  Dates dates = Dates::Minutes;
  /// What its clock shows in listings is ahead of UTC.
  int zoneMinutes = 0;
  enum class Odd { Tells, Refuses, EmptyDone };
  Odd listOfFile = Odd::Tells;
  /// Tells means Refuses here.
  Odd listOfMissing = Odd::Refuses;
  /// Of a path with blanks only what is before the first one is read.
  bool listCutsAtBlank = false;
  /// LIST with any path answers nothing.
  bool listTakesNoPath = false;
  bool tellsUnique = true;

  // Data connections
  bool refusesData = false;
  /// "10,0,0,1" stands in the answer to PASV; empty: the right address.
  QByteArray passiveAddress = {};
  bool refusesActive = false;
  /// 226 is sent with the 150, before the data.
  bool endsEarly = false;
  /// Between the end of the data and the 226.
  int endDelayMs = 0;
  /// Between the end of a data connection that is not used and the reply that refuses its transfer.
  int refusalDelayMs = 0;
  bool leavesOutStart = false;
  /// Bytes that are sent or read at once.
  int block = 16384;

  // TLS
  enum class Tls { Off, Explicit, Implicit };
  Tls tls = Tls::Off;
  bool demandsTls = false;
  bool upToTls12 = false;
  /// Data connections must resume the session of the control connection, or cannot.
  enum class Reuse { Allowed, Demanded, Impossible };
  Reuse reuse = Reuse::Allowed;
  QByteArray notReused = "522 SSL connection failed: session reuse required";
  /// TLS ends without the sign that it ends.
  bool endsTlsAbruptly = false;
  /// Data go in the clear only.
  bool refusesProtection = false;
};

/// What happens at one command of many, or at one block of a file.
struct FtpFault {
  enum class Kind {
    /// The line is lost before the work.
    LoseCommand,
    /// The work is done, and the line is lost with the answer.
    LoseAnswer,
    /// `reply` and no work. At a block: the transfer ends there with this reply.
    Refuse,
    /// The work is done, and `reply` is the answer all the same.
    DoAndRefuse,
    /// No answer, ever.
    Stall,
    /// The data connection is lost, and `reply` told. At a command as LoseCommand.
    LoseData,
    /// Lines without an end. At a block as Stall.
    EndlessReply
  };

  Kind kind = Kind::LoseCommand;
  /// Whole lines without the end of the last one; sent as they are, so that garbage is possible.
  QByteArray reply = {};
};

}  // namespace trevane::test
