#include "views/addresses/TypedPath.h"

#include "platform/NameCodec.h"

#include <QByteArray>

#include <algorithm>

namespace trevane {

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView kOpeningQuotes = u"\"'\u201C\u2018\u201E";
constexpr QStringView kClosingQuotes = u"\"'\u201D\u2019\u201C";
constexpr QStringView kFileScheme = u"file:";

QString WithoutLeadingBlanks(const QString& text) {
  const auto first = std::find_if_not(text.begin(), text.end(), [](QChar unit) { return unit.isSpace(); });
  return text.mid(first - text.begin());
}

/// Only for this machine: another one's files have no path here.
QString PathOfFileUrl(const QString& url) {
  QString path = url.mid(kFileScheme.size());
  if (path.startsWith(u"//")) {
    const qsizetype end = path.indexOf(u'/', 2);
    const QString host = path.mid(2, end < 0 ? -1 : end - 2);
    if (!host.isEmpty() && host.compare(u"localhost", Qt::CaseInsensitive) != 0)
      return {};
    path = end < 0 ? QString() : path.mid(end);
  }
  // A name need not be valid text, and its bytes are encoded one by one.
  path = DecodeBytes(QByteArray::fromPercentEncoding(EncodeText(path)));
  return path.startsWith(u'/') && BeginsWithDrive(QStringView(path).mid(1)) ? path.mid(1) : path;
}

bool BeginsWithHome(const QString& path) {
  return path.startsWith(u'~') && (path.size() == 1 || path[1] == u'/' || path[1] == u'\\');
}

}  // namespace

QString WithoutQuotes(const QString& text) {
  QString inside = WithoutLeadingBlanks(text);
  // No address begins with a quote, but a name may end with one.
  if (!inside.isEmpty() && kOpeningQuotes.contains(inside.front())) {
    inside = text.trimmed().mid(1);
    if (!inside.isEmpty() && kClosingQuotes.contains(inside.back()))
      inside.chop(1);
    inside = WithoutLeadingBlanks(inside);
  }
  return inside;
}

bool BeginsWithDrive(QStringView path) {
  return path.size() >= 2 && path[1] == u':' && path[0].isLetter();
}

QString TypedPath(const QString& text, const QString& home) {
  QString path = WithoutQuotes(text).trimmed();
  if (path.startsWith(kFileScheme, Qt::CaseInsensitive))
    path = PathOfFileUrl(path);
  else if (BeginsWithHome(path))
    path = home + path.mid(1).replace(u'\\', u'/');
  if (!path.startsWith(u'/') && !BeginsWithDrive(path))
    return {};
  if (path.startsWith(u'/'))
    return QDir::cleanPath(path);
  path.replace(u'/', u'\\');
  while (path.endsWith(u'\\'))
    path.chop(1);
  return path;
}

}  // namespace trevane
