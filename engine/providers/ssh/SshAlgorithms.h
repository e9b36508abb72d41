#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QString>
#include <QStringList>

#include <libssh/libssh.h>

namespace trevane::sshalgorithms {

/// Sets what is offered to the server: the fast ciphers first, the old ones behind all others and only with
/// `old`, the host keys of `knownTypes` before others.
void Offer(ssh_session session, bool old, const QByteArrayList& knownTypes);

/// The algorithms for host keys that prove a key of such a type ("ssh-rsa").
[[nodiscard]] QByteArrayList OfKeyType(const QByteArray& type, bool old);

/// Of the algorithms that the connected session uses those that are only offered on request.
[[nodiscard]] QStringList OldInUse(ssh_session session);

/// The sentences for the library's text of a failed key exchange, where both sides have nothing in common;
/// empty for other failures.
[[nodiscard]] QString NothingInCommonText(const QString& libraryText, bool old);

}  // namespace trevane::sshalgorithms
