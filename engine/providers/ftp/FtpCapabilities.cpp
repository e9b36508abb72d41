#include "engine/providers/ftp/FtpCapabilities.h"

namespace trevane::ftp {

void Capabilities::Offered(const QByteArrayList& features) {
  for (const QByteArray& line : features) {
    const QByteArray feature = line.trimmed().toUpper();
    const QByteArray word = feature.split(' ').first();
    if (word == "MLST" || word == "MLSD") {
      mlsd = Seen::Unknown;
      mlst = Seen::Unknown;
    } else if (word == "MFMT") {
      mfmt = Seen::Unknown;
    } else if (word == "UTF8") {
      utf8 = Seen::Unknown;
    } else if (word == "MDTM") {
      // Not all that take a date say so.
      mdtmSets = Seen::Unknown;
    }
  }
}

void Learn(Seen& what, bool isDone, bool isUnknownCommand) noexcept {
  if (isDone) {
    what = Seen::Works;
  } else if (isUnknownCommand && what == Seen::Unknown) {
    what = Seen::Refused;
  }
}

}  // namespace trevane::ftp
