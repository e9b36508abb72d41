#pragma once

#include "engine/remote/RemoteObject.h"

#include <functional>
#include <memory>
#include <optional>

namespace trevane {

/// A sink that is written on its controller's thread, one piece behind. No step of it is ever repeated.
class RemoteSink final : public ContentSink {
 public:
  /// Opens the sink on the thread. Holds nothing but values.
  using Open = std::function<std::shared_ptr<ContentSink>(Workbench& bench)>;

  /// Opens it and waits for that.
  RemoteSink(const std::shared_ptr<RemoteConnection>& connection, const QString& path, const Open& open);
  ~RemoteSink() override;

  void Write(const QByteArray& piece) override;
  [[nodiscard]] std::optional<QString> TemporaryName() const override;
  [[nodiscard]] SeenItem Commit() override;

 private:
  /// The thread writes it; the window's side reads it between two calls.
  struct Told {
    std::optional<QString> temporaryName;
    std::optional<SeenItem> placed;
  };

  /// Waits for the piece that is being written.
  void SettlePiece() const;
  [[nodiscard]] std::shared_ptr<RemoteConnection::Pending> Start(
      const std::function<void(ContentSink& sink, Told& told)>& work);

  RemoteObject object_;
  const QString path_;
  std::shared_ptr<ControllerLink> link_;
  const std::shared_ptr<Told> told_;
  mutable std::shared_ptr<RemoteConnection::Pending> piece_;
  mutable std::optional<RunTimeError> failure_;
};

}  // namespace trevane
