#include "platform/TypedPath.h"

#include "base/NameCodec.h"
#include "platform/AppInfo.h"

#include <QByteArray>
#include <QDir>
#include <QStringList>

#include <algorithm>

namespace trevane::typedpath {
namespace {

constexpr QStringView kOpeningQuotes = u"\"'\u201C\u2018\u201E";
constexpr QStringView kClosingQuotes = u"\"'\u201D\u2019\u201C";
constexpr QLatin1StringView kShareStart("\\\\");

bool IsSeparator(QChar unit) {
  return unit == u'/' || unit == u'\\';
}

bool SlashSeparates() {
  return appinfo::PathSeparator() == u"/";
}

bool BeginsWithDrive(QStringView path) {
  return path.size() >= 2 && path[1] == u':' && path[0].isLetter();
}

QString WithoutLeadingBlanks(const QString& text) {
  const auto first = std::find_if_not(text.begin(), text.end(), [](QChar unit) { return unit.isSpace(); });
  return text.mid(first - text.begin());
}

/// The path of a link to a file: "file:///home/x", "file:///C:/x", "file://server/share/x".
QString FromLink(const QString& text) {
  constexpr QLatin1StringView kScheme("file:");
  if (!text.startsWith(kScheme, Qt::CaseInsensitive)) {
    return text;
  }
  QString path = text.mid(kScheme.size());
  if (path.startsWith(QLatin1StringView("//"))) {
    const qsizetype end = path.indexOf(u'/', 2);
    const QString host = path.mid(2, end < 0 ? -1 : end - 2);
    if (host.isEmpty() || host.compare(QLatin1StringView("localhost"), Qt::CaseInsensitive) == 0) {
      path = end < 0 ? QString() : path.mid(end);
    } else {
      path = kShareStart + path.mid(2);
    }
  }
  // A name need not be valid text, and its bytes are encoded one by one.
  path = DecodeBytes(QByteArray::fromPercentEncoding(EncodeText(path)));
  return path.startsWith(u'/') && BeginsWithDrive(QStringView(path).mid(1)) ? path.mid(1) : path;
}

QString WithHome(const QString& text) {
  if (text.startsWith(u'~') && (text.size() == 1 || IsSeparator(text[1]))) {
    return QDir::homePath() + text.mid(1).replace(u'\\', u'/');
  }
  return text;
}

/// A variable that is not set stays as it is written.
QString WithVariables(const QString& text) {
  if (SlashSeparates()) {
    return text;
  }
  QString result;
  qsizetype at = 0;
  for (;;) {
    const qsizetype begin = text.indexOf(u'%', at);
    const qsizetype end = begin < 0 ? -1 : text.indexOf(u'%', begin + 1);
    if (end < 0) {
      return result + text.mid(at);
    }
    const QString value = qEnvironmentVariable(EncodeText(text.mid(begin + 1, end - begin - 1)).constData());
    if (value.isEmpty()) {
      result += text.mid(at, end - at);
      at = end;
    } else {
      result += text.mid(at, begin - at) + value;
      at = end + 1;
    }
  }
}

QString WithoutLiteralPrefix(const QString& text) {
  constexpr QLatin1StringView kServers("UNC\\");
  QString path = text;
  path.replace(u'/', u'\\');
  if (!path.startsWith(QLatin1StringView("\\\\?\\"))) {
    return text;
  }
  path = path.mid(4);
  if (path.startsWith(kServers, Qt::CaseInsensitive)) {
    return kShareStart + path.mid(kServers.size());
  }
  return BeginsWithDrive(path) ? path : text;
}

QString Cleaned(const QString& text) {
  const bool fromSlash = SlashSeparates() && text.startsWith(u'/');
  const QChar separator = fromSlash ? u'/' : u'\\';
  QString path = text;
  if (!fromSlash) {
    path.replace(u'/', separator);
  }
  QString start;
  // The pieces that ".." does not lead out of: server and share, or the drive.
  qsizetype floor = 0;
  if (!fromSlash && path.startsWith(kShareStart)) {
    start = kShareStart;
    floor = 2;
  } else if (path.startsWith(separator)) {
    start = separator;
  } else {
    floor = 1;
  }
  QStringList pieces;
  for (const QString& piece : path.split(separator, Qt::SkipEmptyParts)) {
    if (piece == u"..") {
      if (pieces.size() > floor) {
        pieces.removeLast();
      }
    } else if (piece != u".") {
      pieces.append(piece);
    }
  }
  return start + pieces.join(separator);
}

}  // namespace

QString Unquoted(const QString& text) {
  QString path = WithoutLeadingBlanks(text);
  // No path begins with a quote, but a name may end with one.
  if (!path.isEmpty() && kOpeningQuotes.contains(path.front())) {
    path = text.trimmed().mid(1);
    if (!path.isEmpty() && kClosingQuotes.contains(path.back())) {
      path.chop(1);
    }
    path = WithoutLeadingBlanks(path);
  }
  return path;
}

QString Understand(const QString& text) {
  return Cleaned(WithoutLiteralPrefix(WithVariables(WithHome(FromLink(Unquoted(text))))));
}

bool IsShare(const QString& path) {
  return path.startsWith(kShareStart);
}

}  // namespace trevane::typedpath
