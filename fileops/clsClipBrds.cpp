#include "fileops/clsClipBrds.h"

#include "base/LowerCase.h"
#include "base/RunTimeError.h"

#include <algorithm>

namespace trevane {

qsizetype clsClipBrds::PositionOfKey(const QString& key) const {
  if (key.isEmpty()) {
    return -1;
  }
  const auto found = std::find_if(keys_.begin(), keys_.end(), [&key](const QString& candidate) {
    return !candidate.isEmpty() && EqualIgnoringCase(candidate, key);
  });
  return found == keys_.end() ? -1 : found - keys_.begin();
}

void clsClipBrds::Add(const clsClipBrd& entry, const QString& key) {
  if (PositionOfKey(key) >= 0) {
    throw RunTimeError(error::kKeyAlreadyThere, QStringLiteral("The key is there already: '%1'").arg(key));
  }
  entries_.push_back(entry);
  keys_.push_back(key);
}

const clsClipBrd& clsClipBrds::Item(const Variant& index) const {
  if (const auto* key = std::get_if<QString>(&index)) {
    const qsizetype position = PositionOfKey(*key);
    if (position < 0) {
      throw RunTimeError(error::kNoSuchKey, QStringLiteral("There is no such key: '%1'").arg(*key));
    }
    return entries_[static_cast<size_t>(position)];
  }
  const qint32 position = IntegerIn(index).value_or(0);
  if (position < 1 || position > Count()) {
    throw RunTimeError(error::kOutOfRange, QStringLiteral("There is no entry %1").arg(position));
  }
  return entries_[static_cast<size_t>(position - 1)];
}

void clsClipBrds::Clear() {
  entries_.clear();
  keys_.clear();
}

}  // namespace trevane
