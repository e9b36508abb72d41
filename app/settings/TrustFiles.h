#pragma once

#include <QString>
#include <QStringList>

namespace trevane {

/// The files of trusted certificates: those beside the two places of the settings file (`own` may be empty),
/// with ".trust" behind its name. The first one is to be written; the others are only read, since an earlier
/// run may have had another place.
[[nodiscard]] QStringList TrustFiles(const QString& beside, const QString& own);

}  // namespace trevane
