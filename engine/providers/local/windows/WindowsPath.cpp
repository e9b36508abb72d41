#include "engine/providers/local/windows/WindowsPath.h"

#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"
#include "engine/providers/local/windows/Win32Errors.h"
#include "platform/Volumes.h"
#include "platform/windows/WindowsText.h"

#include <algorithm>

#include <windows.h>

namespace trevane::local {
namespace {

constexpr qint32 kNoNetworkPath = error::kWin32Error + 53;  // ERROR_BAD_NETPATH

const Volume* FindVolume(const Volumes& volumes, const QString& drive) {
  const auto& current = volumes.Current();
  const auto found = std::find_if(current.begin(), current.end(), [&drive](const Volume& volume) {
    return volume.name.compare(drive, Qt::CaseInsensitive) == 0;
  });
  return found == current.end() ? nullptr : &*found;
}

QString RootOf(const Volume& volume) {
  const QString root = windowstext::LiteralPath(volume.rootPath);
  return root.endsWith(u'\\') ? root : root + u'\\';
}

bool IsDeviceName(const QString& name) {
  QString base = name.left(name.indexOf(u'.')).toUpper();
  while (base.endsWith(u' ')) {
    base.chop(1);
  }
  static const QStringList devices = {
      QStringLiteral("CON"), QStringLiteral("PRN"),    QStringLiteral("AUX"),
      QStringLiteral("NUL"), QStringLiteral("CONIN$"), QStringLiteral("CONOUT$"),
  };
  if (devices.contains(base)) {
    return true;
  }
  // COM1 to COM9 and LPT1 to LPT9, with raised digits as well.
  constexpr QStringView kDigits = u"123456789\u00B9\u00B2\u00B3";
  return base.size() == 4 &&
         (base.startsWith(QLatin1StringView("COM")) || base.startsWith(QLatin1StringView("LPT"))) &&
         kDigits.contains(base[3]);
}

}  // namespace

QString WindowsPath::Parent() const {
  return names.size() <= 1 ? root : whole.left(whole.lastIndexOf(u'\\'));
}

QString WindowsPath::ParentText() const {
  return names.isEmpty() ? text : text.left(text.lastIndexOf(u'\\'));
}

QString WindowsPath::Plain() const {
  if (whole.startsWith(QLatin1StringView("\\\\?\\UNC\\"))) {
    return u'\\' + whole.sliced(7);
  }
  return whole.startsWith(QLatin1StringView("\\\\?\\")) ? whole.sliced(4) : whole;
}

WindowsPath ResolvePath(const Volumes& volumes, const QString& path) {
  WindowsPath resolved;
  resolved.names = providerpath::Split(path);
  if (resolved.names.isEmpty()) {
    return resolved;
  }
  const Volume* volume = nullptr;
  Volume share;
  if (providerpath::IsShare(path)) {
    const QStringList start = resolved.names.first(std::min<qsizetype>(2, resolved.names.size()));
    if (start.size() < 2 || std::any_of(start.begin(), start.end(), IsPattern)) {
      Fail(error::kInvalidName, path);
    }
    share.name = QLatin1StringView("\\\\") + start.join(u'\\');
    share.rootPath = share.name + u'\\';
    resolved.names = resolved.names.mid(2);
    volume = &share;
  } else if (providerpath::IsDriveName(resolved.names.first())) {
    volume = FindVolume(volumes, resolved.names.takeFirst());
  } else if (!volumes.Current().empty()) {
    volume = &volumes.Current().front();
  }
  if (volume == nullptr) {
    Fail(error::kNotFound, path);
  }
  // The text behind a ":" names a further stream of the file, which is no item of its own.
  for (const QString& name : resolved.names) {
    if (name.contains(u':')) {
      Fail(error::kInvalidName, QStringLiteral("The name holds a character that is reserved on Windows"),
           path);
    }
  }
  resolved.drive = volume->name;
  resolved.root = RootOf(*volume);
  resolved.text = volume->name;
  resolved.whole = resolved.root;
  if (!resolved.names.isEmpty()) {
    const QString below = resolved.names.join(u'\\');
    resolved.text += u'\\' + below;
    resolved.whole += below;
  }
  return resolved;
}

WindowsPath ResolveItem(const Volumes& volumes, const QString& path, qint32 refusal) {
  WindowsPath native = ResolvePath(volumes, path);
  if (native.IsTopOrDrive()) {
    Fail(refusal, native.IsTop() ? path : native.text);
  }
  return native;
}

QString Below(const QString& folder, const QString& name) {
  return folder.endsWith(u'\\') ? folder + name : folder + u'\\' + name;
}

QStringList PathsUpwards(const QString& path) {
  constexpr QLatin1StringView kShares("\\\\?\\UNC\\");
  constexpr qsizetype kPrefix = 4;  // "\\?\"
  // The root is "C:\" or, of a share, its server and name: no folder is above it.
  qsizetype rootEnd = path.indexOf(u'\\', kPrefix) + 1;
  if (path.startsWith(kShares)) {
    const qsizetype share = path.indexOf(u'\\', kShares.size()) + 1;
    const qsizetype below = share == 0 ? -1 : path.indexOf(u'\\', share);
    rootEnd = below < 0 ? path.size() : below + 1;
  }
  QStringList paths;
  QString at = path.size() > rootEnd && path.endsWith(u'\\') ? path.chopped(1) : path;
  while (at.size() > rootEnd) {
    paths += at;
    at.truncate(at.lastIndexOf(u'\\'));
  }
  paths += path.left(rootEnd);
  return paths;
}

void RequireNewName(const QString& name, const QString& text) {
  constexpr QStringView kReserved = u"<>:\"/\\|?*";
  const bool bad = std::any_of(name.begin(), name.end(),
                               [&](QChar unit) { return unit.unicode() < 0x20 || kReserved.contains(unit); });
  if (bad) {
    Fail(error::kInvalidName, QStringLiteral("The name holds a character that is reserved on Windows"), text);
  }
  if (name.endsWith(u'.') || name.endsWith(u' ')) {
    Fail(error::kInvalidName, QStringLiteral("The name ends with a dot or a blank"), text);
  }
  if (IsDeviceName(name)) {
    Fail(error::kInvalidName, QStringLiteral("The name is that of a device"), text);
  }
}

bool IsPattern(const QString& name) {
  constexpr QStringView kWildcards = u"*?<>\"";
  return std::any_of(name.begin(), name.end(), [&](QChar unit) { return kWildcards.contains(unit); });
}

void FailAt(quint32 code, const WindowsPath& path) {
  if (NumberOfWin32(code) == error::kNotFound &&
      GetFileAttributesW(windowstext::Wide(path.root)) == INVALID_FILE_ATTRIBUTES) {
    if (path.IsShare()) {
      Fail(kNoNetworkPath, QStringLiteral("The share cannot be reached"), path.text);
    }
    Fail(error::kDeviceNotReady, path.text);
  }
  FailWin32(code, path.text);
}

}  // namespace trevane::local
