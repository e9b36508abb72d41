#pragma once

#include "engine/remote/RemoteConnection.h"

#include <functional>
#include <vector>

/// The calls that give many results, for a file system and a held folder alike. The work holds nothing but
/// values.
namespace trevane::remotebatches {

/// Hands the batches to `receive` on the window's thread as they come. Over a second connection what was
/// handed over already is left out.
void List(RemoteConnection& connection, const RemoteConnection::Purpose& purpose,
          const ListingReceiver& receive,
          const std::function<void(Workbench& bench, const ListingReceiver& receiver)>& work);

/// What a dying line kept from being read is read once more over a new connection.
[[nodiscard]] std::vector<ReadResult> Read(
    RemoteConnection& connection, const RemoteConnection::Purpose& purpose, const QStringList& names,
    const std::function<std::vector<ReadResult>(Workbench& bench, const QStringList& some)>& work);

/// Never repeated.
[[nodiscard]] std::vector<WriteResult> Write(
    RemoteConnection& connection, const RemoteConnection::Purpose& purpose,
    const std::function<std::vector<WriteResult>(Workbench& bench)>& work);

/// Runs a long operation whose observer sees, on the window's thread, the latest item.
void Observe(RemoteConnection& connection, const RemoteConnection::Purpose& purpose,
             const ItemObserver& observer,
             const std::function<void(Workbench& bench, const ItemObserver& observer)>& work);

}  // namespace trevane::remotebatches
