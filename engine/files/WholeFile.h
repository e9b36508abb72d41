#pragma once

#include "engine/files/FileSystem.h"

#include <QByteArray>
#include <QString>

namespace trevane {

class HeldFolder;

/// Whole contents as one value, for small files. Every failure is a RunTimeError, also one for want of
/// memory.

[[nodiscard]] QByteArray ReadFile(FileSystem& files, const QString& path);
/// Replaces the content or makes the file, as a sink of SinkRequest::Mode::Replace. Returns what stands there
/// then, as ContentSink::Commit does.
SeenItem WriteFile(FileSystem& files, const QString& path, const QByteArray& content);
/// Fails with error::kExists when anything has that name, and leaves it alone.
SeenItem WriteNewFile(FileSystem& files, const QString& path, const QByteArray& content,
                      const FileTraits& traits = {});

[[nodiscard]] QByteArray ReadFile(HeldFolder& folder, const QString& name);
SeenItem WriteNewFile(HeldFolder& folder, const QString& name, const QByteArray& content,
                      const FileTraits& traits = {});
/// Replaces the content of a file that was seen. Fails with providererror::kChanged when another item has its
/// name now.
SeenItem ReplaceFile(HeldFolder& folder, const QString& name, const SeenItem& seen,
                     const QByteArray& content);

}  // namespace trevane
