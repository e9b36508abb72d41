#include "engine/files/WholeFile.h"

#include "engine/files/HeldFolder.h"
#include "engine/files/ProviderError.h"
#include "engine/model/ContentSteps.h"

#include <new>

namespace trevane {
namespace {

/// "Not enough memory resources are available to process this command".
constexpr qint32 kNoMemory = error::kWin32Error + 8;

QByteArray Read(ContentSource& source, const QString& path) {
  try {
    return ReadAll(source);
  } catch (const std::bad_alloc&) {
    Fail(kNoMemory, path);
  }
}

SeenItem Put(ContentSink& sink, const QByteArray& content) {
  if (!content.isEmpty()) {
    sink.Write(content);
  }
  return sink.Commit();
}

SinkRequest Replacement(const QByteArray& content) {
  return {.mode = SinkRequest::Mode::Replace, .expectedSize = content.size()};
}

SinkRequest NewFile(const QByteArray& content, const FileTraits& traits) {
  return {.mode = SinkRequest::Mode::New, .expectedSize = content.size(), .traits = traits};
}

}  // namespace

QByteArray ReadFile(FileSystem& files, const QString& path) {
  return Read(*files.OpenSource(path), path);
}

SeenItem WriteFile(FileSystem& files, const QString& path, const QByteArray& content) {
  return Put(*files.OpenSink(path, Replacement(content)), content);
}

SeenItem WriteNewFile(FileSystem& files, const QString& path, const QByteArray& content,
                      const FileTraits& traits) {
  return Put(*files.OpenSink(path, NewFile(content, traits)), content);
}

QByteArray ReadFile(HeldFolder& folder, const QString& name) {
  return Read(*folder.OpenSource(name), name);
}

SeenItem WriteNewFile(HeldFolder& folder, const QString& name, const QByteArray& content,
                      const FileTraits& traits) {
  return Put(*folder.OpenSink(name, NewFile(content, traits), std::nullopt), content);
}

SeenItem ReplaceFile(HeldFolder& folder, const QString& name, const SeenItem& seen,
                     const QByteArray& content) {
  return Put(*folder.OpenSink(name, Replacement(content), seen), content);
}

}  // namespace trevane
