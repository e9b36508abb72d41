#include "engine/remote/RemoteSink.h"

#include "engine/files/ProviderError.h"
#include "engine/remote/CallTexts.h"

#include <utility>

namespace trevane {

RemoteSink::RemoteSink(const std::shared_ptr<RemoteConnection>& connection, const QString& path,
                       const Open& open)
    : object_(connection), path_(path), told_(std::make_shared<Told>()) {
  connection->Run(RemoteConnection::Kind::Writing, calltexts::Writing(path_),
                  [number = object_.Number(), open, told = told_](Workbench& bench) {
                    const std::shared_ptr<ContentSink> sink = open(bench);
                    told->temporaryName = sink->TemporaryName();
                    bench.Keep(number, sink);
                  });
  link_ = connection->Link();
}

RemoteSink::~RemoteSink() {
  if (piece_) {
    piece_->Call()->Cancel();
  }
}

void RemoteSink::SettlePiece() const {
  if (failure_) {
    throw *failure_;
  }
  if (const auto piece = std::exchange(piece_, nullptr)) {
    if (const auto failure = object_.Connection().Settle(*piece)) {
      failure_ = failure->error;
      throw failure->error;
    }
  }
}

std::shared_ptr<RemoteConnection::Pending> RemoteSink::Start(
    const std::function<void(ContentSink& sink, Told& told)>& work) {
  return object_.Connection().Start(
      link_, calltexts::Writing(path_),
      [number = object_.Number(), path = path_, told = told_, work](Workbench& bench) {
        const std::shared_ptr<ContentSink> sink = bench.Kept<ContentSink>(number);
        if (!sink) {
          Fail(error::kWin32Error + 64, path);
        }
        work(*sink, *told);
      });
}

void RemoteSink::Write(const QByteArray& piece) {
  SettlePiece();
  piece_ = Start([piece](ContentSink& sink, Told& told) {
    sink.Write(piece);
    told.temporaryName = sink.TemporaryName();
  });
}

std::optional<QString> RemoteSink::TemporaryName() const {
  SettlePiece();
  return told_->temporaryName;
}

SeenItem RemoteSink::Commit() {
  SettlePiece();
  piece_ = Start([](ContentSink& sink, Told& told) { told.placed = sink.Commit(); });
  SettlePiece();
  return *told_->placed;
}

}  // namespace trevane
