#include "app/settings/clsProfile.h"

#include "app/settings/OldFiles.h"
#include "platform/AppInfo.h"
#include "platform/PrivateProfile.h"

namespace trevane {
namespace {

// The size passed to the system for a buffer of 200000 characters.
constexpr int kBufferSize = 199999;

// A null text means something of its own to the system's calls; an argument that is merely empty must not.
QString NotNull(const QString& text) {
  return text.isNull() ? QStringLiteral("") : text;
}

/// A file in an older encoding of the system's is about to be replaced by one in UTF-8: it stays under a name
/// that nothing has, unless it does so already.
void KeepOldEncoding(const QString& fileName) {
  const ownfile::Content file = ownfile::Read(fileName);
  if (file.state != ownfile::State::Read || !oldfiles::IsInOldEncoding(file.bytes)) {
    return;
  }
  oldfiles::ForEachName(fileName, [&](const QString& old) {
    if (ownfile::Exists(old)) {
      return ownfile::Read(old).bytes == file.bytes;
    }
    // A copy that fails does not prevent the saving: nothing is lost on the way to UTF-8.
    static_cast<void>(ownfile::Replace(old, file.bytes, {.isPrivate = true}));
    return true;
  });
}

}  // namespace

clsProfile::clsProfile()
    : fileName_(appinfo::ProgramFolder() + appinfo::PathSeparator() + appinfo::ExecutableName() +
                QStringLiteral(".ini")) {}

clsProfile::clsProfile(const QString& fileName) : fileName_(fileName) {}

clsProfile::~clsProfile() {
  Flush();
}

void clsProfile::SetFileName(const QString& fileName) {
  fileName_ = fileName;
  held_.reset();
}

ownfile::Content clsProfile::Hold() {
  ownfile::Content file = ownfile::Read(fileName_);
  HoldText(file.bytes);
  file.bytes.clear();
  return file;
}

void clsProfile::HoldText(const QByteArray& text) {
  held_.emplace(privateprofile::ToUtf8(text));
}

QByteArray clsProfile::HeldText() const {
  return held_ ? held_->Bytes() : QByteArray();
}

void clsProfile::HoldAnew() {
  held_.emplace();
}

ownfile::Outcome clsProfile::PutInPlace(const ownfile::ReplaceOptions& options) {
  if (!held_) {
    return {};
  }
  KeepOldEncoding(fileName_);
  return ownfile::Replace(fileName_, held_->Bytes(), options);
}

QString clsProfile::Ask(const QString& section, const QString& key, const QString& fallback) const {
  return held_ ? held_->GetString(section, key, fallback, kBufferSize)
               : privateprofile::GetString(section, key, fallback, kBufferSize, fileName_);
}

bool clsProfile::Write(const QString& section, const QString& key, const QString& value) {
  if (!held_) {
    return privateprofile::WriteString(section, key, value, fileName_);
  }
  held_->WriteString(section, key, value);
  return true;
}

QString clsProfile::GetString(const QString& section, const QString& key, const QString& fallback) const {
  return CutText(Ask(NotNull(section), NotNull(key), NotNull(fallback)), 0);
}

qint32 clsProfile::GetInt(const QString& section, const QString& key, qint32 fallback) const {
  return static_cast<qint32>(
      held_ ? held_->GetInt(NotNull(section), NotNull(key), fallback)
            : privateprofile::GetInt(NotNull(section), NotNull(key), fallback, fileName_));
}

QStringList clsProfile::GetSectNames() const {
  const QString names = CutText(Ask({}, {}, {}), -1);
  return names.isEmpty() ? QStringList() : names.split(QChar(u'\0'));
}

QStringList clsProfile::NamesInUse(const QStringList& names) {
  const auto end = names.indexOf(QString());
  return end < 0 ? names : names.first(end);
}

bool clsProfile::WriteString(const QString& section, const QString& key, const QString& value) {
  return Write(NotNull(section), NotNull(key), NotNull(value));
}

bool clsProfile::DeleteKey(const QString& section, const QString& key) {
  return Write(NotNull(section), NotNull(key), {});
}

bool clsProfile::DeleteSection(const QString& section) {
  return Write(NotNull(section), {}, {});
}

void clsProfile::Flush() {
  if (!held_) {
    privateprofile::WriteString({}, {}, {}, fileName_);
  }
}

QString clsProfile::Quoted(const QString& value) {
  if (value.isEmpty()) {
    return value;
  }
  // On Windows every character up to the blank counts as one.
  const auto isBlank = [](QChar unit) { return unit.unicode() <= u' '; };
  const QChar first = value.front();
  const QChar last = value.back();
  const bool isInQuotes = value.size() > 1 && first == last && (first == u'"' || first == u'\'');
  return isBlank(first) || isBlank(last) || isInQuotes ? u'"' + value + u'"' : value;
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
