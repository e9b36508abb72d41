#include "views/list/FileTypes.h"

#include "base/LowerCase.h"
#include "platform/ShellIcons.h"
#include "views/ImageList.h"
#include "views/addresses/ImageKeys.h"

#include <QIcon>
#include <QImage>

namespace trevane {
namespace {

QString UpToFirstNul(const QString& text) {
  const qsizetype end = text.indexOf(QChar(u'\0'));
  return end < 0 ? text : text.left(end);
}

}  // namespace

FileTypes::FileTypes(ShellIcons& shellIcons, ImageList& images) : shellIcons_(shellIcons), images_(images) {
  records_.push_back({0, imagekey::kDefaultFile, {}, QStringLiteral("File")});
}

const FileTypeRecord& FileTypes::GetFileType(const QString& name) {
  const qsizetype dot = name.lastIndexOf(u'.');
  const QStringView extension = dot < 0 ? QStringView() : QStringView(name).mid(dot + 1);
  // Looked up for every file that is listed: without making a text.
  const size_t hash = HashIgnoringCase(extension);
  const quint32 known =
      byExtension_.Find(hash, [&](quint32 i) { return EqualIgnoringCase(extensions_[i].first, extension); });
  if (known != KeyIndex::kNone) {
    return *extensions_[known].second;
  }
  const QString probe = u'.' + extension.toString().toUpper();
  const std::optional<ShellFileInfo> info = shellIcons_.ForExtension(probe);
  const FileTypeRecord* record = &records_.front();
  const QString key = info ? ImageKeyOf(info->icon) : QString();
  // An icon that the theme lacks leaves the name of the type; a picture that is none leaves nothing.
  if (info && (!key.isEmpty() || !info->icon.themeNames.isEmpty())) {
    const QString typeName = UpToFirstNul(info->typeName);
    record = &Add(key.isEmpty() ? imagekey::kDefaultFile : key, {},
                  typeName.isEmpty() ? probe + QStringLiteral(" file") : typeName);
  }
  byExtension_.Insert(hash, static_cast<quint32>(extensions_.size()));
  extensions_.emplace_back(extension.toString(), record);
  return *record;
}

const FileTypeRecord& FileTypes::GetFolderImages() {
  if (folder_ != nullptr) {
    return *folder_;
  }
  const std::optional<ShellFileInfo> closed = shellIcons_.ForFolder(false);
  const std::optional<ShellFileInfo> open = shellIcons_.ForFolder(true);
  if (!closed || !open) {
    folder_ = &Add(imagekey::kFolderClosed, imagekey::kFolderOpen, QStringLiteral("Folder File"));
    return *folder_;
  }
  const QString closedKey = ImageKeyOf(closed->icon);
  const QString openKey = ImageKeyOf(open->icon);
  const QString typeName = UpToFirstNul(closed->typeName);
  // Half a pair would mix two styles of pictures.
  const bool both = !closedKey.isEmpty() && !openKey.isEmpty();
  folder_ = &Add(both ? closedKey : imagekey::kFolderClosed, both ? openKey : imagekey::kFolderOpen,
                 typeName.isEmpty() ? QStringLiteral("Folder File") : typeName);
  return *folder_;
}

const FileTypeRecord& FileTypes::Record(quint32 id) const {
  return id < records_.size() ? records_[id] : records_.front();
}

QString FileTypes::ImageKeyOf(const ShellIcon& icon) {
  const QString key = SystemIconKey(icon.index);
  if (images_.Contains(key)) {
    return key;
  }
  if (icon.themeNames.isEmpty()) {
    const qint64 bytes = qint64{4} * icon.width * icon.height;
    if (icon.width <= 0 || icon.height <= 0 || icon.pixels.size() != bytes) {
      return {};
    }
    // The bytes belong to the caller's array; the list keeps a picture of its own.
    const QImage picture(reinterpret_cast<const uchar*>(icon.pixels.constData()), icon.width, icon.height,
                         icon.width * 4, QImage::Format_ARGB32_Premultiplied);
    images_.Add(key, picture);
    return key;
  }
  for (const QString& name : icon.themeNames) {
    const QIcon found = QIcon::fromTheme(name);
    // A theme may list an icon that it cannot draw.
    if (!found.isNull() && !found.pixmap(ImageList::kSize).isNull()) {
      images_.AddIcon(key, found);
      return key;
    }
  }
  return {};
}

const FileTypeRecord& FileTypes::Add(const QString& imageKey, const QString& openImageKey,
                                     const QString& typeName) {
  records_.push_back({static_cast<quint32>(records_.size()), imageKey, openImageKey, typeName});
  return records_.back();
}

}  // namespace trevane
