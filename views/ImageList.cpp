#include "views/ImageList.h"

#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "views/addresses/ImageKeys.h"

#include <QFile>
#include <QPainter>
#include <QPixmap>

#include <algorithm>

namespace trevane {
namespace {

QImage WithMaskApplied(const QImage& picture) {
  QImage masked = picture.convertToFormat(QImage::Format_ARGB32);
  for (int y = 0; y < masked.height(); ++y) {
    auto* line = reinterpret_cast<QRgb*>(masked.scanLine(y));
    for (int x = 0; x < masked.width(); ++x) {
      if (line[x] == ImageList::kMaskColor) {
        line[x] = qRgba(0, 0, 0, 0);
      }
    }
  }
  return masked;
}

/// A sheet of paper with a folded corner.
QPixmap DrawnSheet(int size) {
  QPixmap pixmap(size, size);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(size / 16.0, size / 16.0);
  painter.setPen(QColor(0x60, 0x68, 0x70));
  painter.setBrush(Qt::white);
  painter.drawPolygon(QPolygonF({{3.5, 1.5}, {9.5, 1.5}, {12.5, 4.5}, {12.5, 14.5}, {3.5, 14.5}}));
  painter.drawPolyline(QPolygonF({{9.5, 1.5}, {9.5, 4.5}, {12.5, 4.5}}));
  return pixmap;
}

}  // namespace

ImageList::ImageList(const QString& resourcePrefix) : resourcePrefix_(resourcePrefix) {}

int ImageList::SizeFor(const QFontMetrics& metrics) {
  return std::max(kSize, metrics.height() - metrics.height() % 2);
}

void ImageList::Add(const QString& key, const QImage& picture) {
  AddIcon(key, QIcon(QPixmap::fromImage(WithMaskApplied(picture))));
}

void ImageList::AddIcon(const QString& key, const QIcon& icon) {
  if (Contains(key)) {
    throw RunTimeError(error::kKeyAlreadyThere, QStringLiteral("The image key \"%1\" is taken.").arg(key));
  }
  icons_.insert(key, icon);
}

bool ImageList::Contains(const QString& key) const {
  return !Find(key).isNull();
}

QIcon ImageList::Icon(const QString& key) const {
  if (key.isEmpty()) {
    return {};
  }
  const QIcon icon = Find(key);
  return icon.isNull() ? DefaultIcon() : icon;
}

QIcon ImageList::Find(const QString& key) const {
  const auto known = icons_.constFind(key);
  if (known != icons_.constEnd()) {
    return *known;
  }
  QIcon icon;
  for (const int size : kResourceSizes) {
    const QString file =
        resourcePrefix_ + LowerCase(key) + u'-' + QString::number(size) + QStringLiteral(".png");
    if (QFile::exists(file)) {
      icon.addFile(file, QSize(size, size));
    }
  }
  icons_.insert(key, icon);
  return icon;
}

QIcon ImageList::DefaultIcon() const {
  const QIcon own = Find(imagekey::kDefaultFile);
  if (!own.isNull()) {
    return own;
  }
  if (drawn_.isNull()) {
    for (const int size : kResourceSizes) {
      drawn_.addPixmap(DrawnSheet(size));
    }
  }
  return drawn_;
}

}  // namespace trevane
