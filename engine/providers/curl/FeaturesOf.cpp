#include "engine/providers/curl/FeaturesOf.h"

#include <QByteArray>

#include <utility>

namespace trevane::curl {

QByteArrayList FeaturesOf(const ftp::Reply& reply) {
  constexpr int kFeatures = 211;
  QByteArrayList features;
  if (reply.code != kFeatures) {
    return features;
  }
  QByteArrayList lines = reply.text.split('\n');
  if (lines.size() > 2) {
    // The first one and the last one are words around them.
    lines.removeFirst();
    lines.removeLast();
    for (const QByteArray& line : std::as_const(lines)) {
      if (const QByteArray feature = line.trimmed(); !feature.isEmpty()) {
        features << feature;
      }
    }
  }
  return features;
}

}  // namespace trevane::curl
