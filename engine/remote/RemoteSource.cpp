#include "engine/remote/RemoteSource.h"

#include "engine/files/ProviderError.h"
#include "engine/remote/CallTexts.h"

#include <algorithm>
#include <utility>

namespace trevane {

RemoteSource::RemoteSource(const std::shared_ptr<RemoteConnection>& connection, const QString& path,
                           qint64 offset, Open open)
    : object_(connection), path_(path), open_(std::move(open)), offset_(offset) {
  connection->Run(RemoteConnection::Kind::Reading, calltexts::Reading(path_),
                  [number = object_.Number(), open = open_, offset](Workbench& bench) {
                    bench.Keep(number, open(bench, offset));
                  });
  link_ = connection->Link();
}

RemoteSource::~RemoteSource() {
  if (ahead_.pending) {
    ahead_.pending->Call()->Cancel();
  }
}

RemoteSource::Ahead RemoteSource::StartPiece(qint64 most) {
  RemoteConnection& connection = object_.Connection();
  if (link_->IsGivenUp()) {
    link_ = connection.Link();
  }
  const auto piece = std::make_shared<Piece>();
  auto pending = connection.Start(
      link_, calltexts::Reading(path_),
      [number = object_.Number(), open = open_, offset = offset_, most, piece](Workbench& bench) {
        std::shared_ptr<ContentSource> source = bench.Kept<ContentSource>(number);
        if (!source) {
          source = open(bench, offset);
          bench.Keep(number, source);
        }
        piece->bytes = source->Read(most);
        piece->hadWrongSize = piece->bytes.isEmpty() && source->HadWrongSize();
      });
  return {std::move(pending), piece};
}

QByteArray RemoteSource::NextPiece(qint64 most) {
  for (bool isRepeated = false;; isRepeated = true) {
    if (!ahead_.pending) {
      ahead_ = StartPiece(most);
    }
    const Ahead ahead = std::exchange(ahead_, {});
    const auto failure = object_.Connection().Settle(*ahead.pending);
    if (!failure) {
      // Taken, not shared: the thread lets go of its end at any time.
      hadWrongSize_ = ahead.piece->hadWrongSize;
      return std::move(ahead.piece->bytes);
    }
    if (isRepeated || !failure->lineDied) {
      throw failure->error;
    }
  }
}

QByteArray RemoteSource::Read(qint64 most) {
  if (rest_.isEmpty() && !atEnd_) {
    rest_ = NextPiece(most);
    offset_ += rest_.size();
    atEnd_ = rest_.isEmpty();
    if (!atEnd_) {
      ahead_ = StartPiece(most);
    }
  }
  const QByteArray piece = rest_.first(std::min<qint64>(most, rest_.size()));
  rest_.remove(0, piece.size());
  return piece;
}

}  // namespace trevane
