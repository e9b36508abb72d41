#include "tests/support/ftp/FtpTestTree.h"

#include <utility>

namespace trevane::test {
namespace {

bool IsBelow(const QByteArray& path, const QByteArray& folder) {
  return folder == "/" ? path != "/" : path.startsWith(folder + '/');
}

}  // namespace

FtpTestTree::FtpTestTree() {
  Clear();
}

QByteArray FtpTestTree::Clean(const QByteArray& path) {
  QByteArrayList names;
  for (const QByteArray& name : path.split('/')) {
    if (name == "..") {
      if (!names.isEmpty()) {
        names.removeLast();
      }
    } else if (!name.isEmpty() && name != ".") {
      names.append(name);
    }
  }
  return '/' + names.join('/');
}

QByteArray FtpTestTree::ParentOf(const QByteArray& path) {
  const qsizetype at = path.lastIndexOf('/');
  return at <= 0 ? QByteArray("/") : path.first(at);
}

QByteArray FtpTestTree::NameOf(const QByteArray& path) {
  return path.sliced(path.lastIndexOf('/') + 1);
}

void FtpTestTree::Put(const QByteArray& path, FtpTestItem item) {
  const QByteArray clean = Clean(path);
  if (clean != "/" && items_.find(ParentOf(clean)) == items_.end()) {
    FtpTestItem folder;
    folder.kind = FtpTestItem::Kind::Folder;
    folder.mode = 0755;
    Put(ParentOf(clean), folder);
  }
  item.name = NameOf(clean);
  const auto old = items_.find(clean);
  item.id = old == items_.end() ? ++lastId_ : old->second.id;
  items_[clean] = std::move(item);
}

void FtpTestTree::Add(const QByteArray& path, const FtpTestItem& item) {
  const std::lock_guard lock(mutex_);
  Put(path, item);
}

void FtpTestTree::AddFile(const QByteArray& path, const QByteArray& content) {
  FtpTestItem item;
  item.content = content;
  Add(path, item);
}

void FtpTestTree::AddFolder(const QByteArray& path) {
  FtpTestItem item;
  item.kind = FtpTestItem::Kind::Folder;
  item.mode = 0755;
  Add(path, item);
}

void FtpTestTree::Clear() {
  const std::lock_guard lock(mutex_);
  items_.clear();
  FtpTestItem top;
  top.kind = FtpTestItem::Kind::Folder;
  top.mode = 0755;
  Put("/", top);
}

std::optional<FtpTestItem> FtpTestTree::Find(const QByteArray& path) const {
  const std::lock_guard lock(mutex_);
  const auto found = items_.find(Clean(path));
  return found == items_.end() ? std::nullopt : std::optional(found->second);
}

QByteArray FtpTestTree::Followed(const QByteArray& path) const {
  QByteArray at = "/";
  for (const QByteArray& name : Clean(path).split('/')) {
    const QByteArray folder = at;
    at = Clean(folder + '/' + name);
    const std::optional<FtpTestItem> item = Find(at);
    if (item && item->kind == FtpTestItem::Kind::Link) {
      at = Clean(item->target.startsWith('/') ? item->target : folder + '/' + item->target);
    }
  }
  return at;
}

QByteArray FtpTestTree::ContentOf(const QByteArray& path) const {
  const std::optional<FtpTestItem> item = Find(path);
  return item && item->kind == FtpTestItem::Kind::File ? item->content : QByteArray("<none>");
}

std::vector<FtpTestItem> FtpTestTree::ChildrenOf(const QByteArray& folder) const {
  const std::lock_guard lock(mutex_);
  const QByteArray clean = Clean(folder);
  std::vector<FtpTestItem> children;
  for (const auto& [path, item] : items_) {
    if (path != "/" && ParentOf(path) == clean) {
      children.push_back(item);
    }
  }
  return children;
}

QByteArrayList FtpTestTree::Paths() const {
  const std::lock_guard lock(mutex_);
  QByteArrayList paths;
  paths.reserve(static_cast<qsizetype>(items_.size()));
  for (const auto& [path, item] : items_) {
    if (path != "/") {
      paths.append(item.IsFolder() ? path + '/' : path);
    }
  }
  return paths;
}

bool FtpTestTree::Change(const QByteArray& path, const std::function<void(FtpTestItem& item)>& change) {
  const std::lock_guard lock(mutex_);
  const auto found = items_.find(Clean(path));
  if (found == items_.end()) {
    return false;
  }
  change(found->second);
  return true;
}

bool FtpTestTree::Remove(const QByteArray& path) {
  const std::lock_guard lock(mutex_);
  const QByteArray clean = Clean(path);
  const bool wasThere = items_.erase(clean) != 0;
  std::erase_if(items_, [&](const auto& entry) { return IsBelow(entry.first, clean); });
  return wasThere;
}

bool FtpTestTree::Rename(const QByteArray& from, const QByteArray& to) {
  const std::lock_guard lock(mutex_);
  const QByteArray old = Clean(from);
  const QByteArray now = Clean(to);
  if (old == now || items_.find(old) == items_.end()) {
    return old == now;
  }
  std::map<QByteArray, FtpTestItem> moved;
  for (auto entry = items_.begin(); entry != items_.end();) {
    if (entry->first == old || IsBelow(entry->first, old)) {
      moved[now + entry->first.sliced(old.size())] = std::move(entry->second);
      entry = items_.erase(entry);
    } else if (entry->first == now || IsBelow(entry->first, now)) {
      entry = items_.erase(entry);
    } else {
      ++entry;
    }
  }
  moved[now].name = NameOf(now);
  items_.merge(moved);
  return true;
}

}  // namespace trevane::test
