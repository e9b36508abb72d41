#include "views/bars/FileFilter.h"

#include "base/LowerCase.h"
#include "views/addresses/NodeTags.h"

#include <QStringList>

#include <algorithm>

namespace trevane {

void FileFilter::SetText(const QString& text) {
  if (text == text_) {
    return;
  }
  text_ = text;
  patterns_.clear();
  problem_.clear();
  for (const QString& piece : text.split(u';')) {
    const Wildcard& pattern = patterns_.emplace_back(LowerCase(piece));
    if (!pattern.IsWellFormed() && problem_.isEmpty()) {
      problem_ = QStringLiteral("The pattern \"%1\" matches no file. ").arg(piece) + pattern.Problem();
    }
  }
}

bool FileFilter::IsFilteredOut(const QString& fileName, qint32 currentTag) const {
  if (!on_ || IsWorkspace(currentTag) || IsMyComputer(currentTag)) {
    return false;
  }
  const QString name = LowerCase(fileName);
  const bool matched = std::any_of(patterns_.begin(), patterns_.end(),
                                   [&](const Wildcard& pattern) { return pattern.Matches(name); });
  return matched == (mode_ == FilterMode::Exclude);
}

}  // namespace trevane
