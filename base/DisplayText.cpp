#include "base/DisplayText.h"

#include "base/ShownText.h"

namespace trevane {
namespace {

constexpr char16_t kControlPictures = 0x2400;
constexpr char16_t kPictureOfDelete = 0x2421;
constexpr char16_t kPictureOfNewLine = 0x2424;

/// The character shown for a code unit: most often itself.
char16_t Shown(char16_t unit) noexcept {
  if (unit < 0x20) {
    return static_cast<char16_t>(kControlPictures + unit);
  }
  if (unit == 0x7F) {
    return kPictureOfDelete;
  }
  // Next line, line separator and paragraph separator break lines, too.
  if (unit == 0x85 || unit == 0x2028 || unit == 0x2029) {
    return kPictureOfNewLine;
  }
  return unit;
}

}  // namespace

QString DisplayText(const QString& name) {
  QString shown = WithReadableNames(name);
  const char16_t* units = QStringView(shown).utf16();
  qsizetype i = 0;
  while (i < shown.size() && Shown(units[i]) == units[i]) {
    ++i;
  }
  if (i == shown.size()) {
    return shown;
  }
  for (QChar* out = shown.data(); i < shown.size(); ++i) {
    out[i] = QChar(Shown(out[i].unicode()));
  }
  return shown;
}

}  // namespace trevane
