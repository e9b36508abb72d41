#pragma once

#include "base/LowerCase.h"
#include "engine/files/FileSystem.h"
#include "engine/remote/NestedCall.h"
#include "engine/substitute/FolderReference.h"

#include <QString>
#include <QStringList>

#include <memory>

namespace trevane {

/// Shared by all objects of one controller: its file system, and a revision that grows with each change made
/// through the controller, so that all that was known before a change is asked anew.
class FileSystemSession {
 public:
  FileSystemSession(std::shared_ptr<FileSystem> fileSystem, const QString& provider)
      : fileSystem_(std::move(fileSystem)), capabilities_(fileSystem_->Capabilities()), provider_(provider) {}
  FileSystemSession(const FileSystemSession&) = delete;
  FileSystemSession& operator=(const FileSystemSession&) = delete;

  /// Fails with providererror::kBusy within a receiver or an observer of another call.
  [[nodiscard]] FileSystem& Files() {
    RequireOutsideOfCalls(provider_);
    return *fileSystem_;
  }
  [[nodiscard]] const FileSystemCapabilities& Capabilities() const noexcept { return capabilities_; }
  [[nodiscard]] Qt::CaseSensitivity NameCase() const noexcept {
    return capabilities_.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
  }
  /// Whether both name the same item, as far as the case of letters is concerned.
  [[nodiscard]] bool IsSameName(const QString& left, const QString& right) const noexcept {
    return capabilities_.caseSensitive ? left == right : EqualIgnoringCase(left, right);
  }
  [[nodiscard]] const QString& Provider() const noexcept { return provider_; }
  [[nodiscard]] quint64 Revision() const noexcept { return revision_; }
  /// All that is known is asked anew from here on.
  void ForgetLearnt() {
    ++revision_;
    Files().ForgetLearnt();
  }

  /// Lives during each call that changes something. The revision grows when it ends, also by an error: a call
  /// that failed may have done a part of its work.
  class Change {
   public:
    explicit Change(FileSystemSession& session) : session_(session) {}
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;
    ~Change() { ++session_.revision_; }

   private:
    FileSystemSession& session_;
  };

  /// The file system's path for a path of a caller. Where the top holds drives, a path that starts with none
  /// starts at the first. One that starts with "\\" is on a share, and fails
  /// with error::kNotSupported where the file system knows none.
  [[nodiscard]] QString ToPath(const QString& enginePath);

  /// The empty path, a drive or a share: it is never created, moved or deleted.
  [[nodiscard]] bool IsTop(const QString& path) const;

  /// The entry of an item, also of a top. Its name is the file system's own spelling. Fails with
  /// error::kNotFound.
  [[nodiscard]] FileEntry Stat(const QString& path);
  /// Nothing for an item that is missing.
  [[nodiscard]] std::optional<FileEntry> Find(const QString& path);

  /// The child of a folder that is no top and holds none. Its identity is known of a held folder alone.
  [[nodiscard]] std::optional<SeenItem> Find(const FolderReference& folder, const QString& name);

  /// The children of a folder without names that could not be opened again; those are added to `refused`.
  [[nodiscard]] Listing List(const QString& path, QStringList* refused = nullptr);
  [[nodiscard]] Listing List(const FolderReference& folder, QStringList& refused);
  /// As List, in batches, of which none is empty. Names that come twice are passed on.
  void ListInBatches(const FolderReference& folder, QStringList& refused, const ListingReceiver& receive);

 private:
  void Spell(FileEntry& entry, const QString& asked) const;

  std::shared_ptr<FileSystem> fileSystem_;
  FileSystemCapabilities capabilities_;
  QString provider_;
  quint64 revision_ = 1;
};

}  // namespace trevane
