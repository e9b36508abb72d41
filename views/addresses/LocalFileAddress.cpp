#include "views/addresses/LocalFileAddress.h"

#include "views/addresses/Addresses.h"

namespace trevane {

namespace {

constexpr char16_t kBackslashCarrier = 0xF05C;
/// The bytes of that character as they appear when a name really holds it.
constexpr QChar kCarrierBytes[] = {QChar(0xDCEF), QChar(0xDC81), QChar(0xDC9C)};

bool IsBackslashSystem(const Volume& volume) {
  return volume.rootPath.endsWith(u'\\');
}

/// The path as the drive's system writes it.
QString NativeForm(const Volume& volume, QString path) {
  if (IsBackslashSystem(volume)) {
    path.replace(u'/', u'\\');
  }
  return path;
}

bool Holds(const Volume& volume, const QString& path) {
  if (volume.rootPath.isEmpty() || path.isEmpty()) {
    return false;
  }
  // The root itself may be named without its separator.
  const QString whole = path + volume.rootPath.back();
  return IsBackslashSystem(volume) ? StartsWithIgnoringCase(whole, volume.rootPath)
                                   : whole.startsWith(volume.rootPath);
}

/// The path below a network drive of a path that names its share; null when it is not on that share.
QString BelowShare(const Volume& volume, const QString& path) {
  if (volume.share.isEmpty() || !StartsWithIgnoringCase(path, volume.share)) {
    return {};
  }
  const QString rest = path.mid(volume.share.size());
  // A share whose name only begins alike is another one.
  return rest.isEmpty() || rest.startsWith(u'\\') ? u'\\' + rest.mid(1) : QString();
}

QString AddressOn(const Volume& volume, const QString& rest) {
  const QString drive = kLocalAddressPrefix.toString() + volume.name;
  return rest.isEmpty() ? drive : JoinAddress(drive, rest);
}

}  // namespace

QString AddressOfLocalFile(const std::vector<Volume>& volumes, const QString& path) {
  const Volume* best = nullptr;
  for (const Volume& volume : volumes) {
    if (Holds(volume, NativeForm(volume, path)) &&
        (!best || best->rootPath.size() < volume.rootPath.size())) {
      best = &volume;
    }
  }
  if (!best) {
    const Volume* mapped = nullptr;
    for (const Volume& volume : volumes) {
      if (!BelowShare(volume, path).isNull() && (!mapped || mapped->share.size() < volume.share.size())) {
        mapped = &volume;
      }
    }
    return mapped ? AddressOn(*mapped, BelowShare(*mapped, path).mid(1)) : QString();
  }
  QString rest = NativeForm(*best, path).mid(best->rootPath.size());
  if (!IsBackslashSystem(*best)) {
    rest.replace(QChar(kBackslashCarrier), QString(kCarrierBytes, 3));
    rest.replace(u'\\', QChar(kBackslashCarrier));
    rest.replace(u'/', u'\\');
  }
  return AddressOn(*best, rest);
}

}  // namespace trevane
