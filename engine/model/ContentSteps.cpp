#include "engine/model/ContentSteps.h"

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

std::vector<ReadResult> ReadOneByOne(
    const QStringList& names, const std::function<std::unique_ptr<ContentSource>(const QString&)>& open) {
  std::vector<ReadResult> results(static_cast<size_t>(names.size()));
  for (qsizetype i = 0; i < names.size(); ++i) {
    ReadResult& result = results[static_cast<size_t>(i)];
    try {
      result.content = ReadAll(*open(names[i]));
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
    } catch (const RunTimeError& failure) {
      results[i].failure = failure;
      break;
    }
  }
  return results;
}

}  // namespace trevane
