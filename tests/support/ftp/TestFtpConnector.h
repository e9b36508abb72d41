#pragma once

#include "engine/providers/curl/CurlDialogue.h"
#include "engine/providers/ftp/FtpConnector.h"
#include "engine/providers/ftp/FtpSettings.h"
#include "engine/remote/CallControl.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <utility>

namespace trevane::test {

/// Connects to a server of a test and asks nobody anything.
class TestFtpConnector final : public FtpConnector {
 public:
  /// Puts something in front of each dialogue.
  using Wrap = std::function<std::unique_ptr<FtpDialogue>(std::unique_ptr<FtpDialogue> dialogue)>;

  TestFtpConnector(FtpSettings settings, FtpLogOn logOn, std::shared_ptr<CallControl> control = {},
                   Wrap wrap = {})
      : settings_(std::move(settings)),
        logOn_(std::move(logOn)),
        control_(std::move(control)),
        wrap_(std::move(wrap)) {}

  [[nodiscard]] std::unique_ptr<FtpDialogue> Connect() override {
    std::unique_ptr<FtpDialogue> dialogue = std::make_unique<CurlDialogue>(settings_, logOn_, control_);
    return wrap_ ? wrap_(std::move(dialogue)) : std::move(dialogue);
  }
  [[nodiscard]] bool ConnectsWithoutQuestion() const override { return true; }
  /// Another one for each object: what one test teaches of a server is no matter of the next.
  [[nodiscard]] QString ServerKey() const override {
    return QStringLiteral("%1:%2 %3")
        .arg(settings_.host)
        .arg(settings_.port)
        .arg(reinterpret_cast<quintptr>(this));
  }
  [[nodiscard]] QStringList Details() const override { return {}; }
  [[nodiscard]] QString Notice() const override { return {}; }

 private:
  FtpSettings settings_;
  FtpLogOn logOn_;
  std::shared_ptr<CallControl> control_;
  Wrap wrap_;
};

}  // namespace trevane::test
