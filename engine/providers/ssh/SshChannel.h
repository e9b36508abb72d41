#pragma once

#include "engine/providers/sftp/SftpChannel.h"
#include "engine/providers/ssh/SshSession.h"

#include <QByteArray>

#include <memory>

namespace trevane {

/// The SFTP server's channel of a session that is logged on.
class SshChannel final : public SftpChannel {
 public:
  /// Opens it. Fails with the reason, among them that the server has no SFTP.
  explicit SshChannel(std::unique_ptr<SshSession> session);
  ~SshChannel() override;

  [[nodiscard]] QByteArray Exchange(QByteArray& unsent) override;
  [[nodiscard]] QByteArray Poll(QByteArray& unsent) override;
  void BeginPutBack() noexcept override { session_->Line().BeginPutBack(); }
  void EndPutBack() noexcept override { session_->Line().EndPutBack(); }
  void KeepAlive() override;

 private:
  void Open();
  [[noreturn]] void ThrowOpenFailure() const;
  [[noreturn]] void ThrowLost() const;
  /// True when something has gone.
  bool Send(QByteArray& unsent);
  [[nodiscard]] QByteArray Take();
  void TakeErrorText();

  const std::unique_ptr<SshSession> session_;
  ssh_channel channel_ = nullptr;
  const std::unique_ptr<char[]> buffer_;
  /// What the server's program has written for people.
  QByteArray errorText_;
};

}  // namespace trevane
