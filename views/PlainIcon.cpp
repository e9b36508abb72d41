#include "views/PlainIcon.h"

#include <QIconEngine>
#include <QPainter>
#include <QPixmap>

#include <utility>

namespace trevane {
namespace {

class PlainIconEngine final : public QIconEngine {
 public:
  PlainIconEngine(QIcon icon, double opacity) : icon_(std::move(icon)), opacity_(opacity) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
    const double before = painter->opacity();
    painter->setOpacity(before * opacity_);
    icon_.paint(painter, rect, Qt::AlignCenter, Plain(mode), state);
    painter->setOpacity(before);
  }

  QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state, qreal scale) override {
    QPixmap pixmap(size * scale);
    pixmap.setDevicePixelRatio(scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    paint(&painter, QRect(QPoint(), size), mode, state);
    return pixmap;
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    return scaledPixmap(size, mode, state, 1);
  }

  QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    return icon_.actualSize(size, Plain(mode), state);
  }

  QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) override {
    return icon_.availableSizes(Plain(mode), state);
  }

  [[nodiscard]] QIconEngine* clone() const override { return new PlainIconEngine(icon_, opacity_); }

 private:
  static QIcon::Mode Plain(QIcon::Mode mode) { return mode == QIcon::Selected ? QIcon::Normal : mode; }

  QIcon icon_;
  double opacity_;
};

}  // namespace

QIcon PlainIcon(const QIcon& icon, double opacity) {
  return icon.isNull() ? icon : QIcon(new PlainIconEngine(icon, opacity));
}

}  // namespace trevane
