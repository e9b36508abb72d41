#include "platform/linux/MountTable.h"

#include <QByteArrayList>
#include <QHash>

namespace trevane {
namespace {

QByteArray DecodeOctal(const QByteArray& field) {
  if (!field.contains('\\')) {
    return field;
  }
  QByteArray decoded;
  const auto isOctal = [](char digit) { return digit >= '0' && digit <= '7'; };
  for (qsizetype i = 0; i < field.size(); ++i) {
    if (field[i] == '\\' && i + 3 < field.size() && isOctal(field[i + 1]) && isOctal(field[i + 2]) &&
        isOctal(field[i + 3])) {
      decoded +=
          static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 + (field[i + 3] - '0'));
      i += 3;
    } else {
      decoded += field[i];
    }
  }
  return decoded;
}

class Visibility {
 public:
  explicit Visibility(const std::vector<Mount>& mounts) : mounts_(mounts) {
    for (qsizetype i = 0; i < qsizetype(mounts.size()); ++i) {
      byId_.insert(mounts[size_t(i)].id, i);
      children_[mounts[size_t(i)].parent].append(i);
    }
  }

  [[nodiscard]] bool IsHidden(qsizetype index, int depth = 0) const {
    const Mount& mount = mounts_[size_t(index)];
    // On the same folder as its parent it is what covers the parent, whatever covers that elsewhere.
    for (const qsizetype child : children_.value(mount.id)) {
      if (child != index && mounts_[size_t(child)].point == mount.point) {
        return true;
      }
    }
    // A later mount on a folder between the parent and this one.
    for (const qsizetype sibling : children_.value(mount.parent)) {
      const QByteArray& point = mounts_[size_t(sibling)].point;
      const auto parent = byId_.constFind(mount.parent);
      const bool coversParent = parent != byId_.constEnd() && point == mounts_[size_t(*parent)].point;
      if (sibling > index && !coversParent && IsAtOrBelow(mount.point, point)) {
        return true;
      }
    }
    const auto parent = byId_.constFind(mount.parent);
    // The bound is against a table whose parents run in a circle.
    return parent != byId_.constEnd() && *parent != index && depth < 1000 &&
           mounts_[size_t(*parent)].point != mount.point && IsHidden(*parent, depth + 1);
  }

 private:
  const std::vector<Mount>& mounts_;
  QHash<int, qsizetype> byId_;
  QHash<int, QList<qsizetype>> children_;
};

}  // namespace

std::vector<Mount> ParseMountTable(const QByteArray& table) {
  std::vector<Mount> mounts;
  for (const QByteArray& line : table.split('\n')) {
    // id parent major:minor root point options [optional...] - type source options
    const QByteArrayList fields = line.split(' ');
    const auto dash = fields.indexOf("-", 6);
    if (dash < 0 || fields.size() < dash + 3) {
      continue;
    }
    Mount mount;
    mount.id = fields[0].toInt();
    mount.parent = fields[1].toInt();
    mount.device = fields[2];
    mount.root = DecodeOctal(fields[3]);
    mount.point = DecodeOctal(fields[4]);
    mount.type = fields[dash + 1];
    mount.source = DecodeOctal(fields[dash + 2]);
    if (mount.device.contains(':') && mount.point.startsWith('/')) {
      mounts.push_back(mount);
    }
  }
  return mounts;
}

std::vector<Mount> VisibleMounts(const std::vector<Mount>& mounts) {
  const Visibility visibility(mounts);
  std::vector<Mount> visible;
  for (size_t i = 0; i < mounts.size(); ++i) {
    if (!visibility.IsHidden(qsizetype(i))) {
      visible.push_back(mounts[i]);
    }
  }
  return visible;
}

bool IsAtOrBelow(const QByteArray& path, const QByteArray& folder) {
  return folder == "/" || path == folder || path.startsWith(folder + '/');
}

}  // namespace trevane
