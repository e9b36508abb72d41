#pragma once

#include "engine/files/StagedPrivateFile.h"
#include "engine/model/Content.h"
#include "engine/providers/ftp/FtpServer.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QString>

#include <memory>
#include <optional>

namespace trevane::ftp {

/// A file that is read from front to back. Where another call needs the line meanwhile, the rest is kept on
/// this computer.
class Source final : public ContentSource, private Transfer {
 public:
  /// Folders and devices are refused without being opened. `seen` is the item where it was listed already.
  Source(std::shared_ptr<Server> server, const Place& place, qint64 offset,
         const std::optional<ListedItem>& seen = {});
  ~Source() override;
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  [[nodiscard]] QByteArray Read(qint64 most) override;
  [[nodiscard]] std::optional<FileTraits> Traits() override;
  [[nodiscard]] bool HadWrongSize() const override { return hadWrongSize_; }

 private:
  void MakeWay() noexcept override;
  void Lose() noexcept override;

  void Begin();
  /// The next bytes from the line; none at the end, which is checked then.
  [[nodiscard]] QByteArray ReadLine(qint64 most);
  void CheckEnd();
  /// Fails unless the file has the same content once more.
  void ReadOnceMore();

  std::shared_ptr<Server> server_;
  const Place place_;
  const qint64 offset_;
  std::optional<ListedItem> item_;
  /// Of the whole file; -1 where it is not known.
  qint64 size_ = -1;
  /// What those who look at the listing take for its size; -1 where it is not known.
  qint64 shownSize_ = -1;
  std::unique_ptr<FtpDownload> download_;
  qint64 received_ = 0;
  /// Bytes in front that the server could not leave out.
  qint64 toSkip_ = 0;
  QCryptographicHash hash_{QCryptographicHash::Sha256};
  bool isAtEnd_ = false;
  bool hadWrongSize_ = false;
  /// What was read so that the line is free: first the bytes, then the file.
  QByteArray rest_;
  std::unique_ptr<StagedPrivateFile> kept_;
  std::unique_ptr<ContentSource> keptSource_;
  std::optional<RunTimeError> failure_;
};

}  // namespace trevane::ftp
