#include "engine/providers/ftp/FtpNameRules.h"

#include <algorithm>

namespace trevane::ftp {
namespace {

constexpr qsizetype kShortBase = 8;
constexpr qsizetype kShortExtension = 3;
constexpr qsizetype kShort = kShortBase + 1 + kShortExtension;
constexpr qsizetype kNever = std::numeric_limits<qsizetype>::max();

qsizetype BaseOf(const QByteArray& name) {
  const qsizetype dot = name.lastIndexOf('.');
  return dot < 0 ? name.size() : dot;
}

QByteArray ExtensionOf(const QByteArray& name) {
  return name.sliced(std::min(BaseOf(name) + 1, name.size()));
}

/// Letters and digits that every device has, and one dot at most, inside.
bool IsPlain(const QByteArray& name) {
  return !name.startsWith('.') && name.count('.') <= 1 && std::all_of(name.begin(), name.end(), [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '.';
  });
}

bool IsShort(const QByteArray& name) {
  return BaseOf(name) <= kShortBase && ExtensionOf(name).size() <= kShortExtension;
}

QByteArray Without(QByteArray name, char c) {
  return name.replace(c, "");
}

}  // namespace

void NameRules::Refused(const QByteArray& name) {
  if (IsPlain(name)) {
    const QByteArray extension = ExtensionOf(name);
    if (IsShort(name)) {
      if (!extension.isEmpty()) {
        extensions_.insert(extension.toLower());
      }
    } else if (extension.size() <= kShortExtension || name.size() > kShort) {
      tooLong_ = std::min(tooLong_, name.size());
    } else if (BaseOf(name) <= kShortBase) {
      tooLongExtension_ = std::min(tooLongExtension_, extension.size());
    }
    return;
  }
  if (name.contains(' ') && IsPlain(Without(name, ' ')) && IsShort(name)) {
    refusesBlanks_ = true;
  } else if (name.startsWith('.') && IsPlain(name.sliced(1)) && IsShort(name.sliced(1))) {
    refusesLeadingDots_ = true;
  }
}

void NameRules::Seen(const QByteArray& name) {
  refusesBlanks_ = refusesBlanks_ && !name.contains(' ');
  refusesLeadingDots_ = refusesLeadingDots_ && !name.startsWith('.');
  if (name.size() >= tooLong_) {
    tooLong_ = kNever;
  }
  const QByteArray extension = ExtensionOf(name);
  if (extension.size() >= tooLongExtension_) {
    tooLongExtension_ = kNever;
  }
  if (!extensions_.isEmpty()) {
    extensions_.remove(extension.toLower());
  }
}

QString NameRules::Objection(const QByteArray& name) const {
  if (refusesBlanks_ && name.contains(' ')) {
    return QStringLiteral("The controller takes no names with blanks");
  }
  if (refusesLeadingDots_ && name.startsWith('.')) {
    return QStringLiteral("The controller takes no names that begin with a dot");
  }
  if (name.size() >= tooLong_) {
    return QStringLiteral("The controller has refused a name of %1 characters, and this one has %2")
        .arg(tooLong_)
        .arg(name.size());
  }
  const QByteArray extension = ExtensionOf(name);
  if (extension.size() >= tooLongExtension_) {
    return QStringLiteral("The controller takes no extensions of %1 characters").arg(extension.size());
  }
  if (extensions_.contains(extension.toLower())) {
    return QStringLiteral("The controller takes no new files with the extension %1")
        .arg(QString::fromLatin1(extension));
  }
  return {};
}

}  // namespace trevane::ftp
