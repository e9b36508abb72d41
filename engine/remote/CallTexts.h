#pragma once

#include "engine/remote/RemoteConnection.h"

/// What calls are for, as people say it while they wait.
namespace trevane::calltexts {

[[nodiscard]] inline RemoteConnection::Purpose Of(const QString& verb, const QString& path) {
  const QString name = path.mid(path.lastIndexOf(u'\\') + 1);
  RemoteConnection::Purpose purpose{verb, path};
  purpose.isOfTop = name.isEmpty();
  if (!purpose.isOfTop) {
    purpose.what += u' ' + name;
  }
  return purpose;
}

[[nodiscard]] inline RemoteConnection::Purpose Reading(const QString& path) {
  return Of(QStringLiteral("Reading"), path);
}

[[nodiscard]] inline RemoteConnection::Purpose Writing(const QString& path) {
  RemoteConnection::Purpose purpose = Of(QStringLiteral("Writing"), path);
  purpose.writes = true;
  return purpose;
}

[[nodiscard]] inline RemoteConnection::Purpose Deleting(const QString& path) {
  RemoteConnection::Purpose purpose = Of(QStringLiteral("Deleting"), path);
  purpose.writes = true;
  return purpose;
}

}  // namespace trevane::calltexts
