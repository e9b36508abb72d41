#include "tests/support/ftp/FtpTestListing.h"
#include "tests/support/ftp/FtpTestSession.h"

#include <QDateTime>

#include <algorithm>

namespace trevane::test {
namespace {

constexpr qsizetype kShortStem = 8;
constexpr qsizetype kShortExtension = 3;

QByteArray ExtensionOf(const QByteArray& name) {
  const qsizetype dot = name.lastIndexOf('.');
  return dot < 0 ? QByteArray() : name.sliced(dot + 1);
}

bool IsShort(const QByteArray& name) {
  const QByteArrayList parts = name.split('.');
  const auto isPlain = [](const QByteArray& part) {
    return std::all_of(part.begin(), part.end(), [](char one) {
      return (one >= '0' && one <= '9') || (one >= 'A' && one <= 'Z') || (one >= 'a' && one <= 'z') ||
             QByteArrayView("_-$~").contains(one);
    });
  };
  return parts.size() <= 2 && !parts[0].isEmpty() && parts[0].size() <= kShortStem &&
         parts.value(1).size() <= kShortExtension && std::all_of(parts.begin(), parts.end(), isPlain);
}

}  // namespace

QByteArray FtpTestSession::PathOf(const QByteArray& argument) const {
  const QByteArray named =
      vices_.latin1UntilTold && !isToldUtf8_ ? QString::fromLatin1(argument).toUtf8() : argument;
  const QByteArray shown = FtpTestTree::Clean(named.startsWith('/') ? named : folder_ + '/' + named);
  return FtpTestTree::Clean(user_.drive + '/' + (vices_.capitalNames ? shown.toUpper() : shown));
}

FtpTestItem FtpTestSession::Shown(const FtpTestItem& item) const {
  FtpTestItem shown = item;
  if (vices_.latin1UntilTold && !isToldUtf8_) {
    shown.name = QString::fromUtf8(item.name).toLatin1();
  }
  return shown;
}

bool FtpTestSession::IsDriveTop(const QByteArray& path) const {
  return path == FtpTestTree::Clean(user_.drive);
}

bool FtpTestSession::TakesName(const QByteArray& path) {
  const QByteArray name = FtpTestTree::NameOf(path);
  const bool isTaken = tree_.Find(path).has_value();
  const bool isBad = (vices_.shortNames && !IsShort(name)) || (vices_.refusesBlanks && name.contains(' ')) ||
                     (vices_.longestExtension > 0 && ExtensionOf(name).size() > vices_.longestExtension) ||
                     (vices_.longestName > 0 && name.size() > vices_.longestName) ||
                     (vices_.refusesNewNames && !isTaken) || (vices_.refusesDotNames && name.startsWith('.'));
  if (isBad) {
    Reply(vices_.badName);
  }
  return !isBad;
}

bool FtpTestSession::MayWrite(const QByteArray& path) {
  const std::optional<FtpTestItem> item = tree_.Find(path);
  const QByteArray extension = ExtensionOf(FtpTestTree::NameOf(path)).toUpper();
  const bool isRight = user_.mayWrite && !(item && item->isReadOnly) &&
                       (user_.writable.isEmpty() || (item && item->IsFolder()) ||
                        std::any_of(user_.writable.begin(), user_.writable.end(),
                                    [&](const QByteArray& each) { return each.toUpper() == extension; }));
  if (!isRight) {
    Reply("550 Permission denied.");
  }
  return isRight;
}

void FtpTestSession::ReplyMissing(const QByteArray& argument) {
  Reply("550 " + argument + ": No such file or directory");
}

void FtpTestSession::Pwd(const QByteArray& /*argument*/) {
  QByteArray shown = folder_;
  shown.replace('"', "\"\"");
  Reply("257 \"" + shown + "\" is the current directory");
}

void FtpTestSession::Cwd(const QByteArray& argument) {
  const std::optional<FtpTestItem> item = tree_.Find(tree_.Followed(PathOf(argument)));
  if (!item || !item->IsFolder()) {
    Reply("550 Failed to change directory.");
    return;
  }
  folder_ = FtpTestTree::Clean(argument.startsWith('/') ? argument : folder_ + '/' + argument);
  Reply("250 Directory successfully changed.");
}

void FtpTestSession::Cdup(const QByteArray& /*argument*/) {
  Cwd("..");
}

void FtpTestSession::Size(const QByteArray& argument) {
  const std::optional<FtpTestItem> item = tree_.Find(tree_.Followed(PathOf(argument)));
  if (!item) {
    ReplyMissing(argument);
  } else if (item->IsFolder() || ftplisting::SizeOf(*item) < 0) {
    Reply("550 Could not get file size.");
  } else {
    Reply("213 " + QByteArray::number(ftplisting::SizeOf(*item)));
  }
}

void FtpTestSession::Mdtm(const QByteArray& argument) {
  const std::optional<FtpTestItem> item = tree_.Find(PathOf(argument));
  if (!item) {
    ReplyMissing(argument);
    return;
  }
  Reply("213 " + ftplisting::TimeValue(item->modified));
}

void FtpTestSession::Mfmt(const QByteArray& argument) {
  const qsizetype blank = argument.indexOf(' ');
  const QByteArray path = argument.sliced(blank + 1);
  QDateTime time = QDateTime::fromString(QString::fromLatin1(argument.first(std::max<qsizetype>(blank, 0))),
                                         QStringLiteral("yyyyMMddHHmmss"));
  time.setTimeSpec(Qt::UTC);
  if (!time.isValid()) {
    Reply("501 That is no time");
  } else if (MayWrite(PathOf(path))) {
    if (tree_.Change(PathOf(path), [&](FtpTestItem& item) { item.modified = time.toMSecsSinceEpoch(); })) {
      Reply("213 Modify=" + argument);
    } else {
      ReplyMissing(path);
    }
  }
}

void FtpTestSession::Mlst(const QByteArray& argument) {
  std::optional<FtpTestItem> item = tree_.Find(PathOf(argument));
  if (!item) {
    ReplyMissing(argument);
    return;
  }
  item->name = argument.isEmpty() ? folder_ : argument;
  Reply("250-Listing\r\n " + ftplisting::FactsOf(*item, vices_) + "\r\n250 End");
}

void FtpTestSession::Dele(const QByteArray& argument) {
  const QByteArray path = PathOf(argument);
  const std::optional<FtpTestItem> item = tree_.Find(path);
  if (!item) {
    ReplyMissing(argument);
  } else if (item->IsFolder()) {
    Reply("550 " + argument + ": Is a directory");
  } else if (MayWrite(path)) {
    tree_.Remove(path);
    Reply("250 Delete operation successful.");
  }
}

void FtpTestSession::Mkd(const QByteArray& argument) {
  const QByteArray path = PathOf(argument);
  const std::optional<FtpTestItem> parent = tree_.Find(FtpTestTree::ParentOf(path));
  if (tree_.Find(path)) {
    Reply("550 " + argument + ": File exists");
  } else if (!parent || !parent->IsFolder()) {
    ReplyMissing(argument);
  } else if (!user_.mayWrite) {
    Reply("550 Permission denied.");
  } else if (TakesName(path)) {
    tree_.AddFolder(path);
    tree_.Change(path, [](FtpTestItem& item) { item.modified = QDateTime::currentMSecsSinceEpoch(); });
    Reply("257 \"" + argument + "\" created");
  }
}

void FtpTestSession::Rmd(const QByteArray& argument) {
  const QByteArray path = PathOf(argument);
  const std::optional<FtpTestItem> item = tree_.Find(path);
  if (!item) {
    ReplyMissing(argument);
  } else if (!item->IsFolder()) {
    Reply("550 " + argument + ": Not a directory");
  } else if (!tree_.ChildrenOf(path).empty()) {
    Reply("550 " + argument + ": Directory not empty");
  } else if (IsDriveTop(path)) {
    Reply("550 Permission denied.");
  } else if (MayWrite(path)) {
    tree_.Remove(path);
    Reply("250 Remove directory operation successful.");
  }
}

void FtpTestSession::Rnfr(const QByteArray& argument) {
  const QByteArray path = PathOf(argument);
  if (!tree_.Find(path)) {
    ReplyMissing(argument);
  } else if (MayWrite(path)) {
    renamed_ = path;
    Reply("350 Ready for RNTO.");
  }
}

void FtpTestSession::Rnto(const QByteArray& argument) {
  const QByteArray from = std::exchange(renamed_, {});
  const QByteArray to = PathOf(argument);
  if (from.isEmpty()) {
    Reply("503 RNFR required first.");
    return;
  }
  const std::optional<FtpTestItem> old = tree_.Find(to);
  const std::optional<FtpTestItem> parent = tree_.Find(FtpTestTree::ParentOf(to));
  const bool isOther = old && from != to;
  if (!parent || !parent->IsFolder()) {
    ReplyMissing(argument);
  } else if (to.startsWith(from + '/')) {
    Reply("550 Rename failed: a folder into itself");
  } else if (isOther && vices_.renameOnto == FtpVices::Onto::RefusesMisleading) {
    Reply("550 Requested action not taken: file unavailable");
  } else if (isOther && (vices_.renameOnto == FtpVices::Onto::Refuses || old->IsFolder())) {
    Reply("553 " + argument + ": File exists");
  } else if (TakesName(to) && MayWrite(to)) {
    tree_.Rename(from, to);
    Reply("250 Rename successful.");
  }
}

void FtpTestSession::Site(const QByteArray& argument) {
  const QByteArrayList words = argument.split(' ');
  if (words.size() < 3 || words[0].toUpper() != "CHMOD") {
    Reply("500 Unknown SITE command.");
    return;
  }
  const QByteArray path = words.sliced(2).join(' ');
  const quint32 mode = words[1].toUInt(nullptr, 8);
  if (!MayWrite(PathOf(path))) {
    return;
  }
  if (tree_.Change(PathOf(path), [&](FtpTestItem& item) { item.mode = mode; })) {
    Reply("200 SITE CHMOD command ok.");
  } else {
    ReplyMissing(path);
  }
}

}  // namespace trevane::test
