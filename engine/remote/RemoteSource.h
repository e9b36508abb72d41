#pragma once

#include "engine/remote/RemoteObject.h"

#include <functional>
#include <memory>

namespace trevane {

/// A source that is read on its controller's thread, one piece ahead. When the line dies it goes on over the
/// next connection.
class RemoteSource final : public ContentSource {
 public:
  /// Opens the content on the thread, from an offset on. Holds nothing but values.
  using Open = std::function<std::shared_ptr<ContentSource>(Workbench& bench, qint64 offset)>;

  /// Opens it and waits for that.
  RemoteSource(const std::shared_ptr<RemoteConnection>& connection, const QString& path, qint64 offset,
               Open open);
  ~RemoteSource() override;

  [[nodiscard]] QByteArray Read(qint64 most) override;
  [[nodiscard]] bool HadWrongSize() const override { return hadWrongSize_; }

 private:
  struct Piece {
    QByteArray bytes;
    bool hadWrongSize = false;
  };
  struct Ahead {
    std::shared_ptr<RemoteConnection::Pending> pending;
    std::shared_ptr<Piece> piece;
  };

  /// Puts the reading of the next piece into the thread's queue.
  [[nodiscard]] Ahead StartPiece(qint64 most);
  [[nodiscard]] QByteArray NextPiece(qint64 most);

  RemoteObject object_;
  const QString path_;
  const Open open_;
  /// Where the next piece begins.
  qint64 offset_;
  /// What was read beyond what was asked for.
  QByteArray rest_;
  Ahead ahead_;
  /// The connection over which it is open.
  std::shared_ptr<ControllerLink> link_;
  bool atEnd_ = false;
  bool hadWrongSize_ = false;
};

}  // namespace trevane
