#include "platform/AppInfo.h"

#include "platform/NameCodec.h"

#include <array>
#include <climits>

#include <unistd.h>

namespace trevane::appinfo {
namespace {

QByteArray ExecutablePath() {
  std::array<char, PATH_MAX> path{};
  const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
  QByteArray bytes(path.data(), length < 0 ? 0 : length);
  // What the kernel adds when an update has replaced the file of the running program.
  constexpr char kDeleted[] = " (deleted)";
  if (bytes.endsWith(kDeleted) && ::access(bytes.constData(), F_OK) != 0) {
    bytes.chop(sizeof kDeleted - 1);
  }
  return bytes;
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

}  // namespace trevane::appinfo
