#include "engine/files/ProviderPath.h"

#include "engine/files/ProviderError.h"
#include "engine/model/ItemName.h"

#include <utility>

namespace trevane::providerpath {

bool IsDriveName(const QString& piece) {
  if (piece.size() != 2 || piece[1] != u':') {
    return false;
  }
  const char16_t letter = piece[0].unicode();
  return (letter >= u'A' && letter <= u'Z') || (letter >= u'a' && letter <= u'z');
}

QStringList Split(const QString& path) {
  const auto isSeparator = [&path](qsizetype at) { return path[at] == u'/' || path[at] == u'\\'; };
  QStringList pieces;
  qsizetype begin = 0;
  while (begin < path.size() && isSeparator(begin)) {
    ++begin;
  }
  while (begin < path.size()) {
    qsizetype end = begin;
    while (end < path.size() && !isSeparator(end)) {
      ++end;
    }
    QString piece = path.sliced(begin, end - begin);
    if (!IsValidItemName(piece)) {
      Fail(error::kInvalidName, path);
    }
    pieces.append(std::move(piece));
    begin = end + 1;
  }
  return pieces;
}

bool IsShare(const QString& path) {
  return path.startsWith(QLatin1StringView("\\\\"));
}

QString Join(const QStringList& pieces) {
  return pieces.join(u'\\');
}

QString Child(const QString& folder, const QString& name) {
  if (folder.isEmpty()) {
    return name;
  }
  // Made for every item of every operation: in one piece.
  QString path;
  path.reserve(folder.size() + 1 + name.size());
  path += folder;
  path += u'\\';
  path += name;
  return path;
}

QString BelowStart(const QString& start, const QString& text) {
  if (text == u'~' || text == u'.') {
    return start;
  }
  QString below = text;
  if (below.startsWith(QStringLiteral("~/")) || below.startsWith(QStringLiteral("~\\")) ||
      below.startsWith(QStringLiteral("./")) || below.startsWith(QStringLiteral(".\\"))) {
    below.remove(0, 2);
  }
  return below.isEmpty() ? start : Child(start, below);
}

}  // namespace trevane::providerpath
