#include "engine/providers/sftp/SftpUnflushed.h"

#include "engine/providers/sftp/SftpErrors.h"

#include <algorithm>
#include <utility>

namespace trevane::sftp {
namespace {

constexpr std::size_t kMost = 4096;
constexpr int kAtOnce = 64;

QByteArray Below(const QByteArray& path) {
  return path.endsWith('/') ? path : path + '/';
}

}  // namespace

void Unflushed::Add(Server& server, const QByteArray& path) {
  paths_.insert(path);
  if (paths_.size() > kMost) {
    Flush(server, server.At({}));
  }
}

std::vector<QByteArray> Unflushed::TakeBelow(const QByteArray& path) {
  std::vector<QByteArray> taken;
  if (paths_.erase(path) != 0) {
    taken.push_back(path);
  }
  const QByteArray below = Below(path);
  const auto first = paths_.lower_bound(below);
  auto last = first;
  while (last != paths_.end() && last->startsWith(below)) {
    ++last;
  }
  taken.insert(taken.end(), first, last);
  paths_.erase(first, last);
  return taken;
}

void Unflushed::Move(const QByteArray& from, const QByteArray& to) {
  Remove(to);
  for (const QByteArray& path : TakeBelow(from)) {
    paths_.insert(to + path.sliced(from.size()));
  }
}

void Unflushed::Remove(const QByteArray& path) {
  if (!paths_.empty()) {
    static_cast<void>(TakeBelow(path));
  }
}

void Unflushed::Flush(Server& server, const Place& place) {
  const std::shared_ptr<Session> line = server.Line(place.text);
  if (!line->Offers().fsync) {
    paths_.clear();
    return;
  }
  std::vector<QByteArray> paths = TakeBelow(place.path);
  std::set<QByteArray> folders{place.folder};
  for (const QByteArray& path : paths) {
    folders.insert(path.first(std::max<qsizetype>(path.lastIndexOf('/'), 1)));
  }
  // Names are stored with their folder: as far as the server opens one.
  const std::size_t files = paths.size();
  paths.insert(paths.end(), folders.begin(), folders.end());
  const auto atOnce = static_cast<std::size_t>(std::min(kAtOnce, line->Bounds().handles));
  for (std::size_t first = 0; first < paths.size(); first += atOnce) {
    const std::size_t last = std::min(first + atOnce, paths.size());
    std::vector<Request> opening;
    for (std::size_t i = first; i < last; ++i) {
      opening.push_back(line->Open(paths[i], openflag::kRead));
    }
    std::vector<std::pair<OpenHandle, Request>> flushing(last - first);
    for (std::size_t i = first; i < last; ++i) {
      Outcome<HandleAnswer> opened = opening[i - first].Handle();
      if (opened) {
        auto& [handle, request] = flushing[i - first];
        handle = OpenHandle(line, opened->handle);
        request = line->Fsync(handle.Get());
      } else if (i < files && NumberOf(opened.status) != error::kNotFound) {
        throw StatusError(opened.status, server.NamesOf().PathFromServer(paths[i]));
      }
    }
    for (std::size_t i = first; i < last; ++i) {
      Request& request = flushing[i - first].second;
      if (!request.IsUnderWay()) {
        continue;
      }
      const StatusAnswer flushed = request.Status();
      if (!flushed.IsOk() && i < files) {
        throw server.StoringError(flushed, server.At(server.NamesOf().PathFromServer(paths[i])));
      }
    }
  }
}

}  // namespace trevane::sftp
