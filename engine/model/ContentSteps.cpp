#include "engine/model/ContentSteps.h"

#include "engine/model/BatchWatch.h"

namespace trevane {

QByteArray BytesSource::Read(qint64 most) {
  const QByteArray piece = content_.mid(at_, most);
  at_ += piece.size();
  return piece;
}

QByteArray ReadAll(ContentSource& source) {
  QByteArray all = source.Read(content::kLargestPiece);
  for (QByteArray piece = all; !piece.isEmpty();) {
    piece = source.Read(content::kLargestPiece);
    all += piece;
  }
  return all;
}

std::optional<QByteArray> ReadUpTo(ContentSource& source, qint64 most) {
  QByteArray all;
  for (;;) {
    // One byte more shows that there are more.
    const QByteArray piece = source.Read(std::min(content::kLargestPiece, most - all.size() + 1));
    if (piece.isEmpty()) {
      return all;
    }
    if (all.size() + piece.size() > most) {
      return std::nullopt;
    }
    all += piece;
  }
}

qint64 SizeOf(ContentSource& source) {
  qint64 size = 0;
  for (;;) {
    const qsizetype piece = source.Read(content::kSmallestPiece).size();
    if (piece == 0) {
      return size;
    }
    size += piece;
  }
}

bool IsSameContent(ContentSource& left, ContentSource& right) {
  QByteArray fromLeft;
  QByteArray fromRight;
  for (;;) {
    if (fromLeft.isEmpty()) {
      fromLeft = left.Read(content::kSmallestPiece);
    }
    if (fromRight.isEmpty()) {
      fromRight = right.Read(content::kSmallestPiece);
    }
    if (fromLeft.isEmpty() || fromRight.isEmpty()) {
      return fromLeft.isEmpty() && fromRight.isEmpty();
    }
    // The two may cut their pieces differently.
    const qsizetype common = std::min(fromLeft.size(), fromRight.size());
    if (QByteArrayView(fromLeft).first(common) != QByteArrayView(fromRight).first(common)) {
      return false;
    }
    fromLeft.remove(0, common);
    fromRight.remove(0, common);
  }
}

std::vector<ReadResult> ReadOneByOne(
    const QStringList& names, const std::function<std::unique_ptr<ContentSource>(const QString&)>& open) {
  std::vector<ReadResult> results(static_cast<size_t>(names.size()));
  qint64 room = content::kMostBytes;
  for (qsizetype i = 0; i < names.size(); ++i) {
    ReadResult& result = results[static_cast<size_t>(i)];
    try {
      const std::unique_ptr<ContentSource> source = open(names[i]);
      result.traits = source->Traits();
      result.content = ReadUpTo(*source, room);
      result.isTooLarge = !result.content;
      if (result.content) {
        room -= result.content->size();
        BatchWatch::FileDone(result.content->size());
      }
    } catch (const RunTimeError& failure) {
      result.failure = failure;
      break;
    }
  }
  return results;
}

std::vector<WriteResult> WriteOneByOne(
    const std::vector<NewContent>& files,
    const std::function<std::unique_ptr<ContentSink>(const NewContent&)>& open) {
  std::vector<WriteResult> results(files.size());
  for (size_t i = 0; i < files.size(); ++i) {
    try {
      const std::unique_ptr<ContentSink> sink = open(files[i]);
      if (!files[i].content.isEmpty()) {
        sink->Write(files[i].content);
      }
      results[i].item = sink->Commit();
      BatchWatch::FileDone(files[i].content.size());
    } catch (const RunTimeError& failure) {
      results[i].failure = failure;
      break;
    }
  }
  return results;
}

}  // namespace trevane
