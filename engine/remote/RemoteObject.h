#pragma once

#include "engine/remote/RemoteConnection.h"

#include <memory>
#include <utility>

namespace trevane {

/// The window's side of an object that lives on a controller's thread and ends there.
class RemoteObject final {
 public:
  explicit RemoteObject(std::shared_ptr<RemoteConnection> connection)
      : connection_(std::move(connection)), number_(connection_->NewNumber()) {}
  ~RemoteObject() { connection_->Drop(number_); }
  RemoteObject(const RemoteObject&) = delete;
  RemoteObject& operator=(const RemoteObject&) = delete;

  [[nodiscard]] RemoteConnection& Connection() const noexcept { return *connection_; }
  [[nodiscard]] const std::shared_ptr<RemoteConnection>& SharedConnection() const noexcept {
    return connection_;
  }
  [[nodiscard]] quint64 Number() const noexcept { return number_; }

 private:
  const std::shared_ptr<RemoteConnection> connection_;
  const quint64 number_;
};

}  // namespace trevane
