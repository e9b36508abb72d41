#include "engine/providers/sftp/SftpTreeRemover.h"

#include "engine/files/ProviderError.h"
#include "engine/model/ItemName.h"
#include "engine/providers/sftp/SftpErrors.h"
#include "engine/providers/sftp/SftpFolderReader.h"
#include "engine/providers/sftp/SftpUnflushed.h"

#include <algorithm>
#include <deque>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

namespace trevane::sftp {
namespace {

constexpr std::size_t kAtOnce = 64;

bool IsOwnFolder(const FileEntry& entry) {
  return entry.IsFolder() && !entry.IsLink();
}

class TreeRemover {
 public:
  TreeRemover(Server& server, const ItemObserver& observer)
      : server_(server), line_(server.Line({})), observer_(observer) {}

  void Run(const Place& top) {
    Enter(top);
    while (!levels_.empty()) {
      if (levels_.back().folders.empty()) {
        Leave();
        continue;
      }
      const FileEntry next = std::move(levels_.back().folders.back());
      levels_.back().folders.pop_back();
      ReportProgress(next);
      Enter(ChildOf(levels_.back().folder, next.name));
    }
  }

 private:
  struct Removal {
    Place place;
    bool isFolder = false;
    Request request;
  };
  struct Level {
    Place folder;
    std::vector<FileEntry> folders;
    std::deque<Removal> under;
    /// As ItemProgress names it; empty without an observer.
    QString shownPath;
  };

  [[nodiscard]] Place ChildOf(const Place& folder, const QString& name) const {
    Place child;
    child.text = folder.text + u'\\' + name;
    child.folder = folder.path;
    child.path = folder.path + '/' + server_.NamesOf().ToServer(name, child.text);
    child.name = name;
    return child;
  }

  void ReportProgress(const FileEntry& item) {
    if (observer_ && !observer_({.name = item.name,
                                 .folder = levels_.back().shownPath,
                                 .files = files_,
                                 .filesKnown = filesKnown_})) {
      Fail(error::kCancelled, levels_.back().folder.text + u'\\' + item.name);
    }
  }

  /// Removes what is no folder of a folder's own, and remembers the rest.
  void Enter(const Place& folder) {
    Listing listing;
    try {
      if (!List(folder, listing)) {
        return;
      }
    } catch (const RunTimeError& failure) {
      // An empty folder can be deleted even if it may not be read.
      if (failure.Number() != error::kAccessDenied || !line_->RemoveFolder(folder.path).Status().IsOk()) {
        throw;
      }
      return;
    }
    QString shownPath;
    if (observer_) {
      shownPath = levels_.empty() ? folder.name : levels_.back().shownPath + u'\\' + folder.name;
    }
    for (const FileEntry& item : listing) {
      // It would lead out of the tree.
      if (!IsValidItemName(item.name)) {
        Fail(error::kInvalidName, folder.text + u'\\' + item.name);
      }
    }
    levels_.push_back({folder, {}, {}, std::move(shownPath)});
    filesKnown_ += std::count_if(listing.begin(), listing.end(),
                                 [](const FileEntry& item) { return !IsOwnFolder(item); });
    for (FileEntry& item : listing) {
      if (IsOwnFolder(item)) {
        levels_.back().folders.push_back(std::move(item));
        continue;
      }
      ReportProgress(item);
      Send(ChildOf(folder, item.name), false);
      ++files_;
    }
  }

  /// False when it has vanished. Nothing of it is removed unless it is still a folder of its own.
  [[nodiscard]] bool List(const Place& folder, Listing& listing) {
    line_->SetSubject(folder.text);
    Request look = line_->Lstat(folder.path);
    // The listing may have come through a link that took the folder's place in between.
    Request lookBehind;
    std::optional<RunTimeError> refused;
    try {
      ReadFolder(
          server_, folder,
          [&listing](Listing&& entries) {
            listing.insert(listing.end(), std::make_move_iterator(entries.begin()),
                           std::make_move_iterator(entries.end()));
            return true;
          },
          &lookBehind);
    } catch (const RunTimeError& failure) {
      refused = failure;
    }
    if (!IsStillFolder(look, folder)) {
      return false;
    }
    if (refused) {
      throw *refused;
    }
    return IsStillFolder(lookBehind, folder);
  }

  /// False when it has vanished.
  [[nodiscard]] static bool IsStillFolder(Request& look, const Place& folder) {
    const std::optional<Attributes> own = Server::TakeLook(look, folder);
    if (own && !own->IsFolder()) {
      Fail(providererror::kChanged, folder.text);
    }
    return own.has_value();
  }

  void Send(Place place, bool isFolder) {
    std::deque<Removal>& under = levels_.back().under;
    while (under.size() >= kAtOnce) {
      Confirm(under);
    }
    Request request = isFolder ? line_->RemoveFolder(place.path) : line_->Remove(place.path);
    under.push_back({std::move(place), isFolder, std::move(request)});
  }

  void Confirm(std::deque<Removal>& under) {
    Removal removal = std::move(under.front());
    under.pop_front();
    Confirm(removal);
  }

  void Confirm(Removal& removal) {
    line_->SetSubject(removal.place.text);
    const StatusAnswer removed = removal.request.Status();
    if (removed.IsOk() || NumberOf(removed) == error::kNotFound) {
      return;
    }
    if (removal.isFolder && NumberOf(removed) == providererror::kGeneralFailure) {
      ReadFolder(server_, removal.place, [&](Listing&& entries) {
        if (!entries.empty()) {
          Fail(error::kDirectoryNotEmpty, removal.place.text);
        }
        return true;
      });
    }
    throw StatusError(removed, removal.place.text);
  }

  /// All in it has been sent for removal: it is removed when that is confirmed.
  void Leave() {
    while (!levels_.back().under.empty()) {
      Confirm(levels_.back().under);
    }
    Place folder = std::move(levels_.back().folder);
    levels_.pop_back();
    if (!levels_.empty()) {
      Send(std::move(folder), true);
      return;
    }
    Removal last{folder, true, line_->RemoveFolder(folder.path)};
    Confirm(last);
  }

  Server& server_;
  const std::shared_ptr<Session> line_;
  const ItemObserver& observer_;
  /// What a level holds is never copied.
  std::deque<Level> levels_;
  qint64 files_ = 0;
  qint64 filesKnown_ = 0;
};

}  // namespace

void RemoveTree(Server& server, const Place& top, const ItemObserver& observer) {
  if (top.IsTop()) {
    Fail(error::kAccessDenied, top.text);
  }
  const std::optional<Attributes> own = server.Look(top);
  if (!own) {
    Fail(error::kNotFound, top.text);
  }
  server.ForgetCanonical();
  server.Written().Remove(top.path);
  if (own->IsFolder()) {
    TreeRemover(server, observer).Run(top);
    return;
  }
  const StatusAnswer removed = server.Line(top.text)->Remove(top.path).Status();
  if (!removed.IsOk()) {
    throw StatusError(removed, top.text);
  }
}

}  // namespace trevane::sftp
