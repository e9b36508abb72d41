#pragma once

#include "engine/model/Content.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

namespace trevane {

/// What a simple server does with names.
struct RawCapabilities {
  /// Rename puts a file in the place of another one, in one step. Where it must be tried to know that, this
  /// is false after a rename that was refused, which has changed nothing then.
  bool renameReplaces = false;
  /// Rename surely refuses a name that is taken. Where it does not, it is looked first, right before.
  bool renameRefuses = false;
  bool canRename = true;
  /// RawFiles::Store for a new file surely refuses a name that is taken. Where it does not, it is looked
  /// first, right before.
  bool exclusiveCreate = false;
  /// Files can have other names than those that the server knows already.
  bool temporaryNames = true;
  bool folders = true;
  /// RawFiles::Traits and SetTraits do something.
  bool traits = false;
};

/// Stores the content of one file, piece by piece. Destroyed without Close it breaks off, and part of the
/// content may stand there.
class RawWriter {
 public:
  RawWriter() = default;
  virtual ~RawWriter() = default;
  RawWriter(const RawWriter&) = delete;
  RawWriter& operator=(const RawWriter&) = delete;

  virtual void Write(const QByteArray& piece) = 0;
  /// Returns when the server has confirmed the whole content.
  virtual void Close() = 0;
};

/// The primitive operations of a server, each about one path and without any promise of its own: StagedSink
/// makes the promises of FileSystem::OpenSink of them. Paths are those of FileSystem, with all links
/// followed. Every failure is a RunTimeError whose text names the path; after one the work may be done or
/// not.
class RawFiles {
 public:
  enum class Creation {
    /// What has the name is overwritten from its beginning.
    Overwrite,
    /// As RawCapabilities::exclusiveCreate tells.
    New
  };

  RawFiles() = default;
  virtual ~RawFiles() = default;
  RawFiles(const RawFiles&) = delete;
  RawFiles& operator=(const RawFiles&) = delete;

  [[nodiscard]] virtual RawCapabilities Capabilities() const = 0;
  /// Asked of the server each time; nothing when it is missing.
  [[nodiscard]] virtual std::optional<SeenItem> Find(const QString& path) = 0;
  /// As Find for each of the files, as they are now. One listing may serve all. The default asks one by one.
  [[nodiscard]] virtual std::vector<std::optional<SeenItem>> FindMany(const QStringList& paths) {
    std::vector<std::optional<SeenItem>> found;
    for (const QString& path : paths) {
      found.push_back(Find(path));
    }
    return found;
  }
  [[nodiscard]] virtual std::unique_ptr<ContentSource> OpenSource(const QString& path) = 0;
  /// Opens a file under that name for its new content. A refused name fails here where the server tells so at
  /// once. A private new file can be opened by nobody else until SetTraits, where the server has users.
  [[nodiscard]] virtual std::unique_ptr<RawWriter> Store(const QString& path, Creation creation,
                                                         bool isPrivate) = 0;
  /// As RawCapabilities tells where `to` is taken.
  virtual void Rename(const QString& from, const QString& to) = 0;
  /// Removes a file.
  virtual void Remove(const QString& path) = 0;
  virtual void CreateFolder(const QString& path) = 0;

  /// Until EndPutBack calls restore what a failed one has changed, or take away what it has left. A provider
  /// carries them out although the user has cancelled: a content may have no other copy. They nest. The
  /// defaults are for servers whose calls cannot be cancelled. See RawPutBack.
  virtual void BeginPutBack() noexcept {}
  virtual void EndPutBack() noexcept {}

  [[nodiscard]] virtual FileTraits Traits(const QString& /*path*/) { return {}; }
  virtual void SetTraits(const QString& /*path*/, const FileTraits& /*traits*/) {}
};

}  // namespace trevane
