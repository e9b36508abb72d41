#include "engine/substitute/FilePath.h"

#include "engine/model/RunTimeError.h"

namespace trevane::filepath {

namespace {

[[noreturn]] void RefuseName(const QString& text) {
  throw RunTimeError(error::kInvalidName, QStringLiteral("The name is not valid: '%1'").arg(text));
}

}  // namespace

bool IsName(QStringView name) noexcept {
  if (name.isEmpty() || name == u"." || name == u"..") {
    return false;
  }
  for (const QChar character : name) {
    if (character == u'/' || character == u'\\' || character.isNull()) {
      return false;
    }
  }
  return true;
}

void RequireName(const QString& name) {
  if (!IsName(name)) {
    RefuseName(name);
  }
}

QStringList Split(const QString& path) {
  QStringList pieces;
  qsizetype begin = 0;
  while (begin < path.size() && (path[begin] == u'/' || path[begin] == u'\\')) {
    ++begin;
  }
  while (begin < path.size()) {
    qsizetype end = begin;
    while (end < path.size() && path[end] != u'/' && path[end] != u'\\') {
      ++end;
    }
    const QString piece = path.mid(begin, end - begin);
    if (!IsName(piece)) {
      RefuseName(path);
    }
    pieces.append(piece);
    begin = end + 1;
  }
  return pieces;
}

QString Join(const QString& folder, const QString& name) {
  return folder.isEmpty() ? name : folder + u'\\' + name;
}

bool IsDriveName(QStringView name) noexcept {
  return name.size() == 2 && name[1] == u':' && name[0].unicode() < 0x80 && name[0].isLetter();
}

}  // namespace trevane::filepath
