#pragma once

#include "base/Variant.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace trevane {

/// Where a fetched file belongs, and the content that both sides had last. It stands in a small file beside
/// the fetched one, so that a later run of the program knows it, too. It holds no secret.
struct FetchedRecord {
  /// The texts with which the controller was connected.
  QString provider = {};
  QString machine = {};
  QString option = {};
  QString root = {};
  /// Tells the machine that answered there from all others; empty where nothing does.
  QString server = {};
  /// The name of the controller, for people.
  QString controller = {};
  /// The pieces of the address below the controller, with "\" between them.
  QString below = {};
  /// The whole path on the controller.
  QString path = {};
  /// The name on this computer.
  QString name = {};
  /// Of the file on the controller: bytes, and its date, where it has one.
  qint64 size = -1;
  Date modified = {};
  /// SHA-256 of the content.
  QByteArray hash = {};

  friend bool operator==(const FetchedRecord&, const FetchedRecord&) = default;
};

[[nodiscard]] QByteArray WriteFetchedRecord(const FetchedRecord& record);
/// Nothing for what is no whole record.
[[nodiscard]] std::optional<FetchedRecord> ReadFetchedRecord(const QByteArray& bytes);

}  // namespace trevane
