#pragma once

#include "engine/providers/sftp/SftpChannel.h"
#include "engine/providers/sftp/SftpConnector.h"

#include <QString>

#include <functional>
#include <memory>
#include <utility>

#include <sys/types.h>

namespace trevane {
class CallControl;
}

namespace trevane::test {

/// OpenSSH's sftp-server; empty where it was not fetched (see CONTRIBUTING.md).
[[nodiscard]] QString SftpServerProgram();

/// What a skipped test says.
[[nodiscard]] QString NoSftpServerText();

/// A channel to a program on this computer; the destructor ends it.
class PipeChannel final : public SftpChannel {
 public:
  explicit PipeChannel(const QString& program, std::shared_ptr<CallControl> control = {});
  ~PipeChannel() override;
  PipeChannel(const PipeChannel&) = delete;
  PipeChannel& operator=(const PipeChannel&) = delete;

  [[nodiscard]] QByteArray Exchange(QByteArray& unsent) override;
  [[nodiscard]] QByteArray Poll(QByteArray& unsent) override;
  void BeginPutBack() noexcept override { ++putBacks_; }
  void EndPutBack() noexcept override { --putBacks_; }

 private:
  /// The bytes that have come; false when neither has happened.
  [[nodiscard]] bool TryBoth(QByteArray& unsent, QByteArray& received);

  int socket_ = -1;
  pid_t server_ = -1;
  int wakeRead_ = -1;
  int wakeWrite_ = -1;
  int putBacks_ = 0;
  std::shared_ptr<CallControl> control_;
  std::shared_ptr<void> wake_;
};

/// Connects to a new sftp-server each time.
class PipeConnector : public SftpConnector {
 public:
  explicit PipeConnector(std::shared_ptr<CallControl> control = {}) : control_(std::move(control)) {}

  /// Puts a channel around each pipe.
  using Wrap = std::function<std::unique_ptr<SftpChannel>(std::unique_ptr<SftpChannel>)>;
  explicit PipeConnector(Wrap wrap, std::shared_ptr<CallControl> control = {})
      : wrap_(std::move(wrap)), control_(std::move(control)) {}

  [[nodiscard]] std::unique_ptr<SftpChannel> Connect() override {
    ++connections_;
    std::unique_ptr<SftpChannel> pipe = std::make_unique<PipeChannel>(SftpServerProgram(), control_);
    return wrap_ ? wrap_(std::move(pipe)) : std::move(pipe);
  }
  [[nodiscard]] bool ConnectsWithoutQuestion() const override { return true; }
  [[nodiscard]] QString ServerKey() const override { return QStringLiteral("pipe"); }
  [[nodiscard]] QStringList Details() const override { return {QStringLiteral("Server: a pipe")}; }
  [[nodiscard]] QString Notice() const override { return {}; }

  [[nodiscard]] int Connections() const noexcept { return connections_; }

 private:
  Wrap wrap_;
  std::shared_ptr<CallControl> control_;
  int connections_ = 0;
};

}  // namespace trevane::test
