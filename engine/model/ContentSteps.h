#pragma once

#include "engine/model/Content.h"

#include <QStringList>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace trevane {

/// A source of bytes that are in memory already.
class BytesSource final : public ContentSource {
 public:
  explicit BytesSource(QByteArray content, qint64 offset = 0)
      : content_(std::move(content)), at_(std::min<qint64>(offset, content_.size())) {}

  [[nodiscard]] QByteArray Read(qint64 most) override;

 private:
  QByteArray content_;
  qint64 at_;
};

/// A sink that collects the whole content and writes it by one call, which returns what stands there then.
class CollectingSink final : public ContentSink {
 public:
  using Put = std::function<SeenItem(const QByteArray& content)>;

  explicit CollectingSink(Put put) : put_(std::move(put)) {}

  void Write(const QByteArray& piece) override { content_ += piece; }
  [[nodiscard]] SeenItem Commit() override { return put_(content_); }

 private:
  Put put_;
  QByteArray content_;
};

/// All that is left in the source.
[[nodiscard]] QByteArray ReadAll(ContentSource& source);

/// All that is left in the source; nothing where that is more than `most` bytes, which are read for it.
[[nodiscard]] std::optional<QByteArray> ReadUpTo(ContentSource& source, qint64 most);

/// The number of bytes that are left in the source, which are read for it.
[[nodiscard]] qint64 SizeOf(ContentSource& source);

/// Whether both give the same bytes. Only a piece of each is in memory.
[[nodiscard]] bool IsSameContent(ContentSource& left, ContentSource& right);

/// One file after the other; after a failure none is begun. All contents together have at most
/// content::kMostBytes.
[[nodiscard]] std::vector<ReadResult> ReadOneByOne(
    const QStringList& names, const std::function<std::unique_ptr<ContentSource>(const QString&)>& open);
[[nodiscard]] std::vector<WriteResult> WriteOneByOne(
    const std::vector<NewContent>& files,
    const std::function<std::unique_ptr<ContentSink>(const NewContent&)>& open);

}  // namespace trevane
