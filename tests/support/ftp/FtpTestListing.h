#pragma once

#include "tests/support/ftp/FtpTestTree.h"
#include "tests/support/ftp/FtpVices.h"

#include <QByteArray>

namespace trevane::test::ftplisting {

/// A line of LIST, with its end.
[[nodiscard]] QByteArray LineOf(const FtpTestItem& item, const FtpVices& vices);
/// The facts of MLSD and MLST with the name, without the end of a line.
[[nodiscard]] QByteArray FactsOf(const FtpTestItem& item, const FtpVices& vices);
/// "20240131120000" of milliseconds since 1970 UTC.
[[nodiscard]] QByteArray TimeValue(qint64 modified);
/// The size as LIST, MLSD and SIZE show it; -1 for none.
[[nodiscard]] qint64 SizeOf(const FtpTestItem& item);

}  // namespace trevane::test::ftplisting
