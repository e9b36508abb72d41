#include "platform/AppInfo.h"

#include "base/NameCodec.h"

#include <array>
#include <climits>

#include <pwd.h>
#include <unistd.h>

namespace trevane::appinfo {
namespace {

QByteArray ExecutablePath() {
  std::array<char, PATH_MAX> path{};
  const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
  QByteArray bytes(path.data(), length < 0 ? 0 : length);
  // The kernel adds this when an update has replaced the file of the running program.
  constexpr char kDeleted[] = " (deleted)";
  if (bytes.endsWith(kDeleted) && ::access(bytes.constData(), F_OK) != 0) {
    bytes.chop(sizeof kDeleted - 1);
  }
  return bytes;
}

// A folder of the XDG base directories (freedesktop.org, version 0.8); relative ones count as not set.
QString UserFolder(const char* variable, const char* belowHome) {
  constexpr char kOwn[] = "/trevane";
  const QByteArray named = qgetenv(variable);
  if (named.startsWith('/')) {
    return DecodeBytes(named + kOwn);
  }
  QByteArray home = qgetenv("HOME");
  if (!home.startsWith('/')) {
    const passwd* user = ::getpwuid(::getuid());
    home = user != nullptr ? QByteArray(user->pw_dir) : QByteArray();
  }
  return home.startsWith('/') ? DecodeBytes(home + belowHome + kOwn) : QString();
}

}  // namespace

QString ProgramFolder() {
  const QByteArray path = ExecutablePath();
  const auto slash = path.lastIndexOf('/');
  return slash <= 0 ? QStringLiteral("/") : DecodeBytes(path.first(slash));
}

QString ExecutableName() {
  const QByteArray path = ExecutablePath();
  const QString name = DecodeBytes(path.sliced(path.lastIndexOf('/') + 1));
  const auto dot = name.lastIndexOf(u'.');
  return dot > 0 ? name.first(dot) : name;
}

std::optional<QString> CommandLine() {
  return std::nullopt;
}

QStringList Arguments(int count, char** values) {
  QStringList arguments;
  for (int i = 1; i < count; ++i) {
    arguments += DecodeBytes(values[i]);
  }
  return arguments;
}

QString Version() {
  return QStringLiteral(TREVANE_VERSION);
}

QString PathSeparator() {
  return QStringLiteral("/");
}

QString UserSettingsFolder() {
  return UserFolder("XDG_CONFIG_HOME", "/.config");
}

QString UserStateFolder() {
  return UserFolder("XDG_STATE_HOME", "/.local/state");
}

}  // namespace trevane::appinfo
