#pragma once

#include "platform/OwnFile.h"

#include <QRandomGenerator>

#include <algorithm>
#include <utility>

/// The part of ownfile that is the same on every system: texts, names and the order of the steps.
namespace trevane::ownfile::steps {

inline const QString kNoPlainFile = QStringLiteral("It is no plain file");
inline const QString kTooLarge = QStringLiteral("It is larger than 16 MB");

[[nodiscard]] inline Outcome Failure(const QString& reason) {
  return {.done = false, .reason = reason};
}

/// Calls `make` with one name of a new file after the other until it answers true.
template <typename Make>
void TryNewNames(const Make& make) {
  constexpr quint32 kNames = 0xFFFF;
  const quint32 first = QRandomGenerator::global()->generate() % kNames;
  for (quint32 i = 0; i < kNames; ++i) {
    if (make(QStringLiteral("RLX%1.tmp").arg(QString::number((first + i) % kNames + 1, 16).toUpper()))) {
      return;
    }
  }
}

/// Reads an open file of about `size` bytes whole. `read` reads at most so many bytes from a position on: how
/// many, 0 at the end, below 0 when it fails, and `reason` gives the reason.
template <typename ReadPiece, typename Reason>
Content ReadWhole(qint64 size, const ReadPiece& read, const Reason& reason) {
  if (size > kLargestFile) {
    return {.reason = kTooLarge};
  }
  // One byte more than the file has, so that its end is seen without growing.
  QByteArray bytes(static_cast<qsizetype>(size) + 1, Qt::Uninitialized);
  qsizetype done = 0;
  while (true) {
    const qint64 got = read(bytes.data() + done, bytes.size() - done, done);
    if (got < 0) {
      return {.reason = reason()};
    }
    done += static_cast<qsizetype>(got);
    if (done > kLargestFile) {
      return {.reason = kTooLarge};
    }
    if (got == 0) {
      bytes.truncate(done);
      return {.state = State::Read, .bytes = std::move(bytes)};
    }
    if (done == bytes.size()) {
      bytes.resize(std::min<qsizetype>(done * 2, kLargestFile + 1));
    }
  }
}

/// Writes an open file where it is: its space is reserved first, and after a failure its old content is put
/// back. `File` has IsOpen, Read, Reserve, Put and Reason.
template <typename File>
Outcome WriteInPlace(File& file, const QByteArray& bytes) {
  if (!file.IsOpen()) {
    return Failure(file.Reason());
  }
  const Content old = file.Read();
  if (old.state != State::Read) {
    return Failure(old.reason);
  }
  if (!file.Reserve(old.bytes.size(), bytes.size())) {
    return Failure(file.Reason());
  }
  if (file.Put(bytes)) {
    return {.done = true};
  }
  Outcome failure = Failure(file.Reason());
  if (!file.Put(old.bytes)) {
    failure.reason += QStringLiteral("; the old content could not be put back");
  }
  return failure;
}

}  // namespace trevane::ownfile::steps
