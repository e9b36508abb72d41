#include "app/settings/TrustFiles.h"

#include "platform/OwnFile.h"

namespace trevane {

QStringList TrustFiles(const QString& beside, const QString& own) {
  const QString end = QStringLiteral(".trust");
  if (own.isEmpty()) {
    return {beside + end};
  }
  return ownfile::IsWritable(beside + end) ? QStringList{beside + end, own + end}
                                           : QStringList{own + end, beside + end};
}

}  // namespace trevane
