#include "app/clsProfile.h"

#include "platform/AppInfo.h"
#include "platform/PrivateProfile.h"

namespace trevane {
namespace {

// The size that the system is told of a buffer of 200000 characters.
constexpr int kBufferSize = 199999;

// A null text means something of its own to the system's calls; an argument that is merely empty must not.
QString NotNull(const QString& text) {
  return text.isNull() ? QStringLiteral("") : text;
}

}  // namespace

clsProfile::clsProfile()
    : fileName_(appinfo::ProgramFolder() + appinfo::PathSeparator() + appinfo::ExecutableName() +
                QStringLiteral(".ini")) {}

clsProfile::clsProfile(const QString& fileName) : fileName_(fileName) {}

clsProfile::~clsProfile() {
  Flush();
}

QString clsProfile::GetString(const QString& section, const QString& key, const QString& fallback) const {
  return CutText(
      privateprofile::GetString(NotNull(section), NotNull(key), NotNull(fallback), kBufferSize, fileName_),
      0);
}

qint32 clsProfile::GetInt(const QString& section, const QString& key, qint32 fallback) const {
  return static_cast<qint32>(privateprofile::GetInt(NotNull(section), NotNull(key), fallback, fileName_));
}

QStringList clsProfile::GetSectNames() const {
  const QString names = CutText(privateprofile::GetString({}, {}, {}, kBufferSize, fileName_), -1);
  return names.isEmpty() ? QStringList() : names.split(QChar(u'\0'));
}

QStringList clsProfile::NamesInUse(const QStringList& names) {
  const auto end = names.indexOf(QString());
  return end < 0 ? names : names.first(end);
}

bool clsProfile::WriteString(const QString& section, const QString& key, const QString& value) {
  return privateprofile::WriteString(NotNull(section), NotNull(key), NotNull(value), fileName_);
}

bool clsProfile::DeleteKey(const QString& section, const QString& key) {
  return privateprofile::WriteString(NotNull(section), NotNull(key), {}, fileName_);
}

bool clsProfile::DeleteSection(const QString& section) {
  return privateprofile::WriteString(NotNull(section), {}, {}, fileName_);
}

void clsProfile::Flush() {
  privateprofile::WriteString({}, {}, {}, fileName_);
}

QString clsProfile::CutText(const QString& text, qint32 mode) {
  if (mode > 0) {
    return text.left(mode - 1);
  }
  if (mode == 0) {
    const auto nul = text.indexOf(QChar(u'\0'));
    return nul < 0 ? text : text.left(nul);
  }
  qsizetype size = text.size();
  while (size > 0 && text[size - 1] == QChar(u'\0')) {
    --size;
  }
  return text.left(size);
}

}  // namespace trevane
