#include "engine/fetched/FetchedFolder.h"

#include "base/RunTimeError.h"
#include "platform/OwnFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <algorithm>

namespace trevane {

namespace {

const QString kBegin = QStringLiteral("run-");
const QString kLock = QStringLiteral(".lock");
const QString kRecord = QStringLiteral(".record");
const QString kPart = QStringLiteral(".part");
constexpr int kAttempts = 10;
constexpr QDir::Filters kAll = QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System;

QString RandomName(int words) {
  QString name;
  for (int i = 0; i < words; ++i) {
    name += QString::number(QRandomGenerator::system()->generate(), 16).rightJustified(8, u'0');
  }
  return name;
}

/// Copies of an earlier content. Swap files and the like hold edits that are nowhere else, and locks show
/// that a program has more of them in its memory.
bool IsCopyOfAnEditor(const QString& entry, const QString& name) {
  return entry == name + u'~' || entry == name + QStringLiteral(".bak");
}

}  // namespace

std::unique_ptr<FetchedFolder> FetchedFolder::Make(const QString& place) {
  if (ownfile::MakePrivateFolder(place)) {
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
      const QString path = place + u'/' + kBegin + RandomName(4);
      // The lock comes first: nobody takes the folder for an abandoned one.
      std::unique_ptr<HeldLock> lock = HeldLock::Take(path + kLock);
      if (lock && ownfile::MakeNewPrivateFolder(path)) {
        return std::unique_ptr<FetchedFolder>(new FetchedFolder(path, std::move(lock)));
      }
      if (lock) {
        lock->RemoveAtEnd();
      }
    }
  }
  throw RunTimeError(
      error::kAccessDenied,
      QStringLiteral("No folder for it can be made in %1").arg(QDir::toNativeSeparators(place)));
}

std::vector<std::unique_ptr<FetchedFolder>> FetchedFolder::TakeAbandoned(const QString& place) {
  QStringList names;
  for (QString name : QDir(place).entryList({kBegin + u'*'}, kAll)) {
    if (name.endsWith(kLock)) {
      name.chop(kLock.size());
    }
    names.append(name);
  }
  names.removeDuplicates();
  std::vector<std::unique_ptr<FetchedFolder>> abandoned;
  for (const QString& name : names) {
    const QString path = place + u'/' + name;
    std::unique_ptr<HeldLock> lock = HeldLock::Take(path + kLock);
    if (!lock) {
      continue;
    }
    const QFileInfo folder(path);
    if (folder.isDir() && !folder.isSymLink()) {
      abandoned.push_back(std::unique_ptr<FetchedFolder>(new FetchedFolder(path, std::move(lock))));
    } else {
      lock->RemoveAtEnd();
    }
  }
  return abandoned;
}

QStringList FetchedFolder::Items() const {
  QStringList items;
  for (QString name : QDir(path_).entryList(kAll)) {
    for (const QString& end : {kRecord, kPart}) {
      if (name.endsWith(end)) {
        name.chop(end.size());
      }
    }
    items.append(name);
  }
  items.removeDuplicates();
  return items;
}

QString FetchedFolder::NewItem() const {
  const QStringList taken = Items();
  QString item = RandomName(1);
  while (taken.contains(item)) {
    item = RandomName(1);
  }
  return item;
}

QStringList FetchedFolder::Beside(const QString& item, const QString& name) const {
  QStringList beside = QDir(FolderOf(item)).entryList(kAll);
  beside.removeIf([&](const QString& entry) { return entry == name || IsCopyOfAnEditor(entry, name); });
  return beside;
}

bool FetchedFolder::RemoveItem(const QString& item, const QString& name) const {
  const QDir folder(FolderOf(item));
  if (!Beside(item, name).isEmpty()) {
    return false;
  }
  QFile::remove(PartOf(item));
  if (folder.exists()) {
    for (const QString& entry : folder.entryList(kAll)) {
      QFile::remove(folder.filePath(entry));
    }
    if (!QDir().rmdir(folder.path())) {
      return false;
    }
  }
  QFile::remove(RecordOf(item));
  return true;
}

bool FetchedFolder::RemoveIfEmpty() {
  if (!QDir().rmdir(path_)) {
    return false;
  }
  lock_->RemoveAtEnd();
  return true;
}

}  // namespace trevane
